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
    root["present"] = Json::Value(present);
    root["vendor-name"] = Json::Value(vendorName);
    root["part-number"] = Json::Value(partNumber);
    root["serial-number"] = Json::Value(serialNumber);
    root["revision"] = Json::Value(revision);
    root["connector"] = Json::Value(connector);
    root["wavelength"] = Json::Value(wavelength);
    root["temperature"] = Json::Value(temperature);
    root["supply-voltage"] = Json::Value(supplyVoltage);
    root["tx-power"] = Json::Value(txPower);
    root["rx-power"] = Json::Value(rxPower);
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
