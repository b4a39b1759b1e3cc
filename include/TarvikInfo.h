#pragma once

#include <json/json.h>

#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

// Measured and identified pieces of the board. Each record writes its members straight into
// the object it is handed (not into a sub-object of its own) and reads them back with a
// default for every missing member; -1 (65535 for the temperature) means "not known".
//
// Exceptions, common to every record here: reading raises Json::LogicError when the object
// handed over (or "daughter-card" inside a TarvikInfo) is neither an object nor null, when
// an integer member holds text, an array, an object or a number outside the 32-bit signed
// range, when a load average holds text, an array or an object, and when "description" holds
// an array or an object. Nothing else is thrown.

// FPGA temperature. JSON: "fpga" (int), 65535 when unknown or missing.
class ZELCT_API SystemTemperature : public IJsonSerializable {
public:
    SystemTemperature();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int fpga;
};

// Main fan speed. JSON: "main" (int), -1 when unknown or missing.
class ZELCT_API FanSpeed : public IJsonSerializable {
public:
    FanSpeed();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int main;
};

// A daughter board. JSON, all int, -1 when unknown or missing, in this order:
//   "id", "current", "voltage", "rev", "io-id", "variant", "issue"
// (current before voltage here, unlike TarvikInfo's own members).
class ZELCT_API DaughterBoard : public IJsonSerializable {
public:
    DaughterBoard();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int id;
    int current;
    int voltage;
    int rev;
    int ioId;
    int variant;
    int issue;
};

// The main board with its processing chip. JSON, all int, -1 when unknown or missing, in
// this order:
//   "fan-speed", "slot-number", "voltage", "current", "board-type", "rear-module-id-1",
//   "rear-module-id-2", "board-rev", "base-io-id", "base-rev-issue",
// then "daughter-card", an object in the form DaughterBoard writes. Reading takes
// "daughter-card" through the non-const member access, so a document without it gains a
// null "daughter-card" and the daughter board reads as all -1.
class ZELCT_API TarvikInfo : public IJsonSerializable {
public:
    TarvikInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int fanSpeed;
    int slotNumber;
    int voltage;
    int current;
    int boardType;
    int rearModuleId1;
    int rearModuleId2;
    int boardRev;
    int baseIoId;
    int baseRevIssue;
    DaughterBoard daughterCard;
};

// CPU load averages. JSON, all double, -1.0 when unknown or missing:
//   "load-average-1min", "load-average-5min", "load-average-15min"
// An integer in the document is widened to a double.
class ZELCT_API CpuLoadAverage : public IJsonSerializable {
public:
    CpuLoadAverage();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    double loadAverage1min;
    double loadAverage5min;
    double loadAverage15min;
};

// One current system error. JSON: "code" (int, -1 when missing), "description" (string,
// empty when missing).
class ZELCT_API SystemError : public IJsonSerializable {
public:
    SystemError();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int code;
    std::string description;
};
