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

constexpr char kPresent[] = "present";
constexpr char kVendorName[] = "vendor-name";
constexpr char kPartNumber[] = "part-number";
constexpr char kSerialNumber[] = "serial-number";
constexpr char kRevision[] = "revision";
constexpr char kConnector[] = "connector";
constexpr char kWavelength[] = "wavelength";
constexpr char kTemperature[] = "temperature";
constexpr char kSupplyVoltage[] = "supply-voltage";
constexpr char kTxPower[] = "tx-power";
constexpr char kRxPower[] = "rx-power";

// Written and read in this order.
const zelct::Shape<11>& moduleShape() {
    static const zelct::Shape<11> shape({kPresent, kVendorName, kPartNumber, kSerialNumber,
                                         kRevision, kConnector, kWavelength, kTemperature,
                                         kSupplyVoltage, kTxPower, kRxPower});
    return shape;
}

}  // namespace

void SfpInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, moduleShape());
    out[kPresent] = Json::Value(present);
    out[kVendorName] = Json::Value(vendorName);
    out[kPartNumber] = Json::Value(partNumber);
    out[kSerialNumber] = Json::Value(serialNumber);
    out[kRevision] = Json::Value(revision);
    out[kConnector] = Json::Value(connector);
    out[kWavelength] = Json::Value(wavelength);
    out[kTemperature] = Json::Value(temperature);
    out[kSupplyVoltage] = Json::Value(supplyVoltage);
    out[kTxPower] = Json::Value(txPower);
    out[kRxPower] = Json::Value(rxPower);
}

void SfpInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, moduleShape());
    present = in.flag(kPresent, false);
    vendorName = in.text(kVendorName, "");
    partNumber = in.text(kPartNumber, "");
    serialNumber = in.text(kSerialNumber, "");
    revision = in.text(kRevision, "");
    connector = in.text(kConnector, "");
    wavelength = in.integer(kWavelength, -1);
    temperature = in.real(kTemperature, -1.0);
    supplyVoltage = in.real(kSupplyVoltage, -1.0);
    txPower = in.real(kTxPower, -1.0);
    rxPower = in.real(kRxPower, -1.0);
}
