#pragma once

#include <json/json.h>

#include <list>
#include <string>

#include "DeviceCapabilities.h"
#include "EthBasicInfo.h"
#include "IJsonSerializable.h"
#include "TarvikInfo.h"
#include "zelCommonTypesExport.h"

/// The board as a whole: firmware, product, bitstream, serial number, chip identity, Ethernet
/// interfaces, two service processes, temperature, fan, MADI lock, capabilities, main-board
/// record, CPU load and current system errors. Callers fill and read the fields directly.
///
/// JSON form, written into the top-level object handed over, in this order:
/// ~~~
///   "fw-version", "fw-date", "product", "bitstream", "chipid-name", "chipid-version",
///   "serial-number"   strings
///   "madi-lock"       bool
///   "eth"             array of EthBasicInfo objects; not written for an empty list
///   "rtsp", "advertisement"   ProcessBasicInfo objects
///   "temperature"     {"fpga": int}
///   "fan-speed"       {"main": int}
///   "cpu-loadavg"     the three load averages of CpuLoadAverage
///   "product-info"    TarvikInfo object; written only when the product is exactly "TARVIK"
///   "errors"          array of {"code": int, "description": string}; not written when empty
///   "deviceCapabilities"  written by DeviceCapabilities itself
/// ~~~
/// Each member but the lists is set whole, replacing what the object held under that key;
/// other keys stay. The lists are written as every list is: element i into element i of an
/// array already there, so elements beyond the list's length and members an element's record
/// does not write stay.
///
/// Reading fills every field, missing members taking their defaults, with two deliberate
/// asymmetries: the serial number reads as "NA" when missing although a new record holds an
/// empty one, and "product-info" is always read, whatever the product, so a record whose
/// product is not "TARVIK" comes back from its own document with a main-board record of -1.
/// Both lists are emptied before they are read. The capabilities keep their values when the
/// document has no "deviceCapabilities". Reading reaches "rtsp", "advertisement", "eth",
/// "temperature", "fan-speed", "product-info", "cpu-loadavg" and "errors" through the
/// non-const member access, so a document that lacks them gains null members of those names.
/// Every Ethernet element is read by EthBasicInfo, which logs an unparsable or missing
/// address or mask.
///
/// "eth" and "errors" are walked by index: a scalar there reads as an empty list, an object
/// with members throws.
/// Members that throw: "advertisement", "bitstream", "chipid-name", "chipid-version",
/// "cpu-loadavg", "deviceCapabilities", "errors", "eth", "fan-speed", "fw-date", "fw-version",
/// "madi-lock", "product", "product-info", "rtsp", "serial-number", "temperature".
class ZELCOMMONTYPES_API SystemBasicInfo : public IJsonSerializable {
public:
    /// Empty texts and lists, MADI not locked, every record as its own constructor leaves it.
    SystemBasicInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    std::string fwVersion;                  ///< "fw-version"
    std::string fwDate;                     ///< "fw-date"
    std::string product;                    ///< "product"
    std::string bitstream;                  ///< "bitstream"
    std::string serialNumber;               ///< "serial-number"
    std::list<EthBasicInfo> eth;            ///< "eth"
    ProcessBasicInfo rtsp;                  ///< "rtsp"
    ProcessBasicInfo advertisement;         ///< "advertisement"
    std::string chipidVersion;              ///< "chipid-version"
    std::string chipidName;                 ///< "chipid-name"
    SystemTemperature temperature;          ///< "temperature"
    FanSpeed fanSpeed;                      ///< "fan-speed"
    bool madiLock;                          ///< "madi-lock"
    DeviceCapabilities deviceCapabilities;  ///< "deviceCapabilities"
    TarvikInfo productInfo;                 ///< "product-info"
    CpuLoadAverage cpuLoadavg;              ///< "cpu-loadavg"
    std::list<SystemError> errors;          ///< "errors"
};
