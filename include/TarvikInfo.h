#pragma once

#include <json/json.h>

#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

// Measured and identified pieces of the board. Each record writes its members straight into
// the object it is handed (not into a sub-object of its own) and reads them back with a
// default for every missing member; -1 (65535 for the temperature) means "not known".

/// FPGA temperature. JSON: "fpga" (int), 65535 when unknown or missing.
/// Members that throw: "fpga".
class ZELCOMMONTYPES_API SystemTemperature : public IJsonSerializable {
public:
    /// 65535 (unknown).
    SystemTemperature();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int fpga;  ///< FPGA temperature ("fpga").
};

/// Main fan speed. JSON: "main" (int), -1 when unknown or missing.
/// Members that throw: "main".
class ZELCOMMONTYPES_API FanSpeed : public IJsonSerializable {
public:
    /// -1 (unknown).
    FanSpeed();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int main;  ///< Main fan speed ("main").
};

/// A daughter board. JSON, all int, -1 when unknown or missing, in this order:
///   "id", "current", "voltage", "rev", "io-id", "variant", "issue"
/// (current before voltage here, unlike TarvikInfo's own members).
/// Members that throw: "current", "id", "io-id", "issue", "rev", "variant", "voltage".
class ZELCOMMONTYPES_API DaughterBoard : public IJsonSerializable {
public:
    /// Every field -1 (unknown).
    DaughterBoard();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int id;       ///< "id"
    int current;  ///< "current"
    int voltage;  ///< "voltage"
    int rev;      ///< "rev"
    int ioId;     ///< "io-id"
    int variant;  ///< "variant"
    int issue;    ///< "issue"
};

/// The main board with its processing chip. JSON, all int, -1 when unknown or missing, in
/// this order:
///   "fan-speed", "slot-number", "voltage", "current", "board-type", "rear-module-id-1",
///   "rear-module-id-2", "board-rev", "base-io-id", "base-rev-issue",
/// then "daughter-card", an object in the form DaughterBoard writes. Reading takes
/// "daughter-card" through the non-const member access, so a document without it gains a
/// null "daughter-card" and the daughter board reads as all -1.
/// Members that throw: "base-io-id", "base-rev-issue", "board-rev", "board-type", "current",
/// "daughter-card", "fan-speed", "rear-module-id-1", "rear-module-id-2", "slot-number",
/// "voltage".
class ZELCOMMONTYPES_API TarvikInfo : public IJsonSerializable {
public:
    /// Every field -1 (unknown), the daughter board's too.
    TarvikInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int fanSpeed;                ///< "fan-speed"
    int slotNumber;              ///< "slot-number"
    int voltage;                 ///< "voltage"
    int current;                 ///< "current"
    int boardType;               ///< "board-type"
    int rearModuleId1;           ///< "rear-module-id-1"
    int rearModuleId2;           ///< "rear-module-id-2"
    int boardRev;                ///< "board-rev"
    int baseIoId;                ///< "base-io-id"
    int baseRevIssue;            ///< "base-rev-issue"
    DaughterBoard daughterCard;  ///< "daughter-card"
};

/// CPU load averages. JSON, all double, -1.0 when unknown or missing:
///   "load-average-1min", "load-average-5min", "load-average-15min"
/// An integer in the document is widened to a double.
/// Members that throw: "load-average-15min", "load-average-1min", "load-average-5min".
class ZELCOMMONTYPES_API CpuLoadAverage : public IJsonSerializable {
public:
    /// Every average -1.0 (unknown).
    CpuLoadAverage();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    double loadAverage1min;   ///< "load-average-1min"
    double loadAverage5min;   ///< "load-average-5min"
    double loadAverage15min;  ///< "load-average-15min"
};

/// One current system error. JSON: "code" (int, -1 when missing), "description" (string,
/// empty when missing).
/// Members that throw: "code", "description".
class ZELCOMMONTYPES_API SystemError : public IJsonSerializable {
public:
    /// Code -1, empty description.
    SystemError();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int code;                 ///< "code"
    std::string description;  ///< "description"
};
