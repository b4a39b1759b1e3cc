#include "TarvikInfo.h"

#include <cstddef>

namespace {

// Every reading that is not known is -1.
constexpr int kUnknown = -1;
constexpr int kUnknownTemperature = 65535;

template <typename Record>
struct IntField {
    const char* key;
    int Record::*field;
};

// Written and read in this order.
// clang-format off
constexpr IntField<DaughterBoard> kDaughterBoardFields[] = {
    {"id", &DaughterBoard::id},
    {"current", &DaughterBoard::current},
    {"voltage", &DaughterBoard::voltage},
    {"rev", &DaughterBoard::rev},
    {"io-id", &DaughterBoard::ioId},
    {"variant", &DaughterBoard::variant},
    {"issue", &DaughterBoard::issue},
};
// clang-format on

// Written and read in this order; "daughter-card" follows them.
constexpr IntField<TarvikInfo> kTarvikFields[] = {
    {"fan-speed", &TarvikInfo::fanSpeed},
    {"slot-number", &TarvikInfo::slotNumber},
    {"voltage", &TarvikInfo::voltage},
    {"current", &TarvikInfo::current},
    {"board-type", &TarvikInfo::boardType},
    {"rear-module-id-1", &TarvikInfo::rearModuleId1},
    {"rear-module-id-2", &TarvikInfo::rearModuleId2},
    {"board-rev", &TarvikInfo::boardRev},
    {"base-io-id", &TarvikInfo::baseIoId},
    {"base-rev-issue", &TarvikInfo::baseRevIssue},
};

struct DoubleField {
    const char* key;
    double CpuLoadAverage::*field;
};

constexpr DoubleField kLoadAverageFields[] = {
    {"load-average-1min", &CpuLoadAverage::loadAverage1min},
    {"load-average-5min", &CpuLoadAverage::loadAverage5min},
    {"load-average-15min", &CpuLoadAverage::loadAverage15min},
};

template <typename Record, std::size_t N>
void setAllUnknown(Record& record, const IntField<Record> (&fields)[N]) {
    for (const auto& f : fields) {
        record.*f.field = kUnknown;
    }
}

template <typename Record, std::size_t N>
void writeInts(const Record& record, const IntField<Record> (&fields)[N], Json::Value& root) {
    for (const auto& f : fields) {
        root[f.key] = Json::Value(record.*f.field);
    }
}

template <typename Record, std::size_t N>
void readInts(Record& record, const IntField<Record> (&fields)[N], const Json::Value& root) {
    for (const auto& f : fields) {
        record.*f.field = root.get(f.key, kUnknown).asInt();
    }
}

}  // namespace

SystemTemperature::SystemTemperature() : fpga(kUnknownTemperature) {}

void SystemTemperature::Serialize(Json::Value& root) const {
    root["fpga"] = Json::Value(fpga);
}

void SystemTemperature::Deserialize(Json::Value& root) {
    fpga = root.get("fpga", kUnknownTemperature).asInt();
}

FanSpeed::FanSpeed() : main(kUnknown) {}

void FanSpeed::Serialize(Json::Value& root) const {
    root["main"] = Json::Value(main);
}

void FanSpeed::Deserialize(Json::Value& root) {
    main = root.get("main", kUnknown).asInt();
}

DaughterBoard::DaughterBoard() : IJsonSerializable() {
    setAllUnknown(*this, kDaughterBoardFields);
}

void DaughterBoard::Serialize(Json::Value& root) const {
    writeInts(*this, kDaughterBoardFields, root);
}

void DaughterBoard::Deserialize(Json::Value& root) {
    readInts(*this, kDaughterBoardFields, root);
}

TarvikInfo::TarvikInfo() : IJsonSerializable() {
    setAllUnknown(*this, kTarvikFields);
}

void TarvikInfo::Serialize(Json::Value& root) const {
    writeInts(*this, kTarvikFields, root);
    Json::Value card(Json::objectValue);
    daughterCard.Serialize(card);
    root["daughter-card"] = card;
}

void TarvikInfo::Deserialize(Json::Value& root) {
    readInts(*this, kTarvikFields, root);
    daughterCard.Deserialize(root["daughter-card"]);
}

CpuLoadAverage::CpuLoadAverage() : IJsonSerializable() {
    for (const auto& f : kLoadAverageFields) {
        this->*f.field = kUnknown;
    }
}

void CpuLoadAverage::Serialize(Json::Value& root) const {
    for (const auto& f : kLoadAverageFields) {
        root[f.key] = Json::Value(this->*f.field);
    }
}

// The default is the integer -1, widened to -1.0 by the conversion.
void CpuLoadAverage::Deserialize(Json::Value& root) {
    for (const auto& f : kLoadAverageFields) {
        this->*f.field = root.get(f.key, kUnknown).asDouble();
    }
}

SystemError::SystemError() : code(kUnknown) {}

void SystemError::Serialize(Json::Value& root) const {
    root["code"] = Json::Value(code);
    root["description"] = Json::Value(description);
}

void SystemError::Deserialize(Json::Value& root) {
    code = root.get("code", kUnknown).asInt();
    description = root.get("description", "").asString();
}
