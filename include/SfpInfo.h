#pragma once

#include <json/json.h>

#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

// Identification and diagnostics of one SFP module, as read from its EEPROM.
//
// JSON form, written into the object handed over (keys in this order):
//   "present"         bool    a module is plugged in
//   "vendor-name"     string  vendor name (SFF-8472 bytes 20-35, trimmed)
//   "part-number"     string  vendor part number
//   "serial-number"   string  vendor serial number
//   "revision"        string  vendor revision
//   "connector"       string  connector type ("LC", "RJ45", ...)
//   "wavelength"      int     laser wavelength in nm; -1 unknown
//   "temperature"     double  module temperature in degrees Celsius; -1.0 unknown
//   "supply-voltage"  double  supply voltage in volts; -1.0 unknown
//   "tx-power"        double  transmit power in dBm; -1.0 unknown
//   "rx-power"        double  receive power in dBm; -1.0 unknown
// Reading takes the constructor's value for every missing key. jsoncpp raises
// Json::LogicError when the value handed over is neither an object nor null, when a text
// member holds an array or an object, when "present" or a double holds text, an array or an
// object, or when "wavelength" holds text, an array, an object or a number outside the
// 32-bit signed range; the members read before it keep their new values. Nothing else is
// thrown.
class ZELCT_API SfpInfo : public IJsonSerializable {
public:
    SfpInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    bool present;
    std::string vendorName;
    std::string partNumber;
    std::string serialNumber;
    std::string revision;
    std::string connector;
    int wavelength;
    double temperature;
    double supplyVoltage;
    double txPower;
    double rxPower;
};
