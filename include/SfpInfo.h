#pragma once

#include <json/json.h>

#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// Identification and diagnostics of one SFP module, as read from its EEPROM.
///
/// JSON form, written into the object handed over (keys in this order):
/// ~~~
///   "present"         bool    a module is plugged in
///   "vendor-name"     string  vendor name (SFF-8472 bytes 20-35, trimmed)
///   "part-number"     string  vendor part number
///   "serial-number"   string  vendor serial number
///   "revision"        string  vendor revision
///   "connector"       string  connector type ("LC", "RJ45", ...)
///   "wavelength"      int     laser wavelength in nm; -1 unknown
///   "temperature"     double  module temperature in degrees Celsius; -1.0 unknown
///   "supply-voltage"  double  supply voltage in volts; -1.0 unknown
///   "tx-power"        double  transmit power in dBm; -1.0 unknown
///   "rx-power"        double  receive power in dBm; -1.0 unknown
/// ~~~
/// Reading takes the constructor's value for every missing key.
/// Members that throw: "connector", "part-number", "present", "revision", "rx-power",
/// "serial-number", "supply-voltage", "temperature", "tx-power", "vendor-name", "wavelength".
class ZELCOMMONTYPES_API SfpInfo : public IJsonSerializable {
public:
    /// No module: not present, empty texts, every measurement -1 (unknown).
    SfpInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    bool present;              ///< "present"
    std::string vendorName;    ///< "vendor-name"
    std::string partNumber;    ///< "part-number"
    std::string serialNumber;  ///< "serial-number"
    std::string revision;      ///< "revision"
    std::string connector;     ///< "connector"
    int wavelength;            ///< "wavelength"
    double temperature;        ///< "temperature"
    double supplyVoltage;      ///< "supply-voltage"
    double txPower;            ///< "tx-power"
    double rxPower;            ///< "rx-power"
};
