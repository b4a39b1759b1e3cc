#include "SfpInfo.h"

#include "JsonMember.h"

SfpInfo::SfpInfo()
    : present(false),
      wavelength(-1),
      temperature(-1.0),
      supplyVoltage(-1.0),
      txPower(-1.0),
      rxPower(-1.0) {}

namespace {

// Written and read in this order.
struct Key {
    enum : std::size_t {
        present,
        vendorName,
        partNumber,
        serialNumber,
        revision,
        connector,
        wavelength,
        temperature,
        supplyVoltage,
        txPower,
        rxPower,
        count
    };
    static constexpr const char* names[] = {
        "present",    "vendor-name", "part-number",    "serial-number", "revision", "connector",
        "wavelength", "temperature", "supply-voltage", "tx-power",      "rx-power"};
};

}  // namespace

void SfpInfo::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::present] = Json::Value(present);
    out[Key::vendorName] = Json::Value(vendorName);
    out[Key::partNumber] = Json::Value(partNumber);
    out[Key::serialNumber] = Json::Value(serialNumber);
    out[Key::revision] = Json::Value(revision);
    out[Key::connector] = Json::Value(connector);
    out[Key::wavelength] = Json::Value(wavelength);
    out[Key::temperature] = Json::Value(temperature);
    out[Key::supplyVoltage] = Json::Value(supplyVoltage);
    out[Key::txPower] = Json::Value(txPower);
    out[Key::rxPower] = Json::Value(rxPower);
}

void SfpInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    present = in.flag(Key::present, false);
    vendorName = in.text(Key::vendorName, "");
    partNumber = in.text(Key::partNumber, "");
    serialNumber = in.text(Key::serialNumber, "");
    revision = in.text(Key::revision, "");
    connector = in.text(Key::connector, "");
    wavelength = in.integer(Key::wavelength, -1);
    temperature = in.real(Key::temperature, -1.0);
    supplyVoltage = in.real(Key::supplyVoltage, -1.0);
    txPower = in.real(Key::txPower, -1.0);
    rxPower = in.real(Key::rxPower, -1.0);
}
