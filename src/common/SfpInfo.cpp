#include "SfpInfo.h"

#include "JsonMember.h"

SfpInfo::SfpInfo()
    : present(false),
      wavelength(-1),
      temperature(-1.0),
      supplyVoltage(-1.0),
      txPower(-1.0),
      rxPower(-1.0) {}

void SfpInfo::Serialize(Json::Value& root) const {
    static const zelct::ObjectShape shape{
        "present",    "vendor-name", "part-number",    "serial-number", "revision", "connector",
        "wavelength", "temperature", "supply-voltage", "tx-power",      "rx-power"};
    zelct::ShapedObject out(root, shape);
    out["present"] = Json::Value(present);
    out["vendor-name"] = Json::Value(vendorName);
    out["part-number"] = Json::Value(partNumber);
    out["serial-number"] = Json::Value(serialNumber);
    out["revision"] = Json::Value(revision);
    out["connector"] = Json::Value(connector);
    out["wavelength"] = Json::Value(wavelength);
    out["temperature"] = Json::Value(temperature);
    out["supply-voltage"] = Json::Value(supplyVoltage);
    out["tx-power"] = Json::Value(txPower);
    out["rx-power"] = Json::Value(rxPower);
}

void SfpInfo::Deserialize(Json::Value& root) {
    present = root.get("present", false).asBool();
    vendorName = zelct::stringMember(root, "vendor-name", "");
    partNumber = zelct::stringMember(root, "part-number", "");
    serialNumber = zelct::stringMember(root, "serial-number", "");
    revision = zelct::stringMember(root, "revision", "");
    connector = zelct::stringMember(root, "connector", "");
    wavelength = root.get("wavelength", -1).asInt();
    temperature = root.get("temperature", -1.0).asDouble();
    supplyVoltage = root.get("supply-voltage", -1.0).asDouble();
    txPower = root.get("tx-power", -1.0).asDouble();
    rxPower = root.get("rx-power", -1.0).asDouble();
}
