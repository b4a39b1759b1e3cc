#include "TarvikInfo.h"

#include <cstddef>
#include <iterator>

#include "../common/JsonMember.h"

namespace {

// Every reading that is not known is -1.
constexpr int kUnknown = -1;
constexpr int kUnknownTemperature = 65535;

template <typename Record, typename Field>
struct Member {
    const char* key;
    Field Record::*field;
};

// Written and read in this order.
// clang-format off
constexpr Member<DaughterBoard, int> kDaughterBoardFields[] = {
    {"id", &DaughterBoard::id},
    {"current", &DaughterBoard::current},
    {"voltage", &DaughterBoard::voltage},
    {"rev", &DaughterBoard::rev},
    {"io-id", &DaughterBoard::ioId},
    {"variant", &DaughterBoard::variant},
    {"issue", &DaughterBoard::issue},
};

// Written and read in this order; "daughter-card", the last key of the shape, follows them.
constexpr Member<TarvikInfo, int> kTarvikFields[] = {
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

constexpr Member<CpuLoadAverage, double> kLoadAverageFields[] = {
    {"load-average-1min", &CpuLoadAverage::loadAverage1min},
    {"load-average-5min", &CpuLoadAverage::loadAverage5min},
    {"load-average-15min", &CpuLoadAverage::loadAverage15min},
};
// clang-format on

template <typename Record, typename Field, std::size_t N>
void setAllUnknown(Record& record, const Member<Record, Field> (&fields)[N]) {
    for (const auto& f : fields) {
        record.*f.field = kUnknown;
    }
}

// Row i of a table is key i of the record's shape.
template <typename Record, typename Field, std::size_t N, std::size_t K>
void writeFields(const Record& record, const Member<Record, Field> (&fields)[N],
                 zelcommon::Writer<K>& out) {
    for (std::size_t i = 0; i < N; ++i) {
        out[i] = Json::Value(record.*fields[i].field);
    }
}

// The default is the integer -1, which the conversion widens for the load averages.
template <typename Record, std::size_t N, std::size_t K>
void readFields(Record& record, const Member<Record, int> (&fields)[N], zelcommon::Reader<K>& in) {
    for (std::size_t i = 0; i < N; ++i) {
        record.*fields[i].field = in.integer(i, kUnknown);
    }
}

template <typename Record, std::size_t N, std::size_t K>
void readFields(Record& record, const Member<Record, double> (&fields)[N],
                zelcommon::Reader<K>& in) {
    for (std::size_t i = 0; i < N; ++i) {
        record.*fields[i].field = in.real(i, kUnknown);
    }
}

struct TemperatureKey {
    enum : std::size_t { fpga, count };
    static constexpr const char* names[] = {"fpga"};
};

struct FanKey {
    enum : std::size_t { main, count };
    static constexpr const char* names[] = {"main"};
};

// The keys of the tables' records: row i is key i.
struct DaughterBoardKey {
    enum : std::size_t { count = std::size(kDaughterBoardFields) };
    static constexpr auto names = zelcommon::keysOfRows(kDaughterBoardFields);
};

struct TarvikKey {
    enum : std::size_t { daughterCard = std::size(kTarvikFields), count };
    static constexpr auto names = zelcommon::keysOfRows(kTarvikFields, "daughter-card");
};

struct LoadAverageKey {
    enum : std::size_t { count = std::size(kLoadAverageFields) };
    static constexpr auto names = zelcommon::keysOfRows(kLoadAverageFields);
};

struct ErrorKey {
    enum : std::size_t { code, description, count };
    static constexpr const char* names[] = {"code", "description"};
};

}  // namespace

SystemTemperature::SystemTemperature() : fpga(kUnknownTemperature) {}

void SystemTemperature::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<TemperatureKey>());
    out[TemperatureKey::fpga] = Json::Value(fpga);
}

void SystemTemperature::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<TemperatureKey>());
    fpga = in.integer(TemperatureKey::fpga, kUnknownTemperature);
}

FanSpeed::FanSpeed() : main(kUnknown) {}

void FanSpeed::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<FanKey>());
    out[FanKey::main] = Json::Value(main);
}

void FanSpeed::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<FanKey>());
    main = in.integer(FanKey::main, kUnknown);
}

DaughterBoard::DaughterBoard() : IJsonSerializable() {
    setAllUnknown(*this, kDaughterBoardFields);
}

void DaughterBoard::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<DaughterBoardKey>());
    writeFields(*this, kDaughterBoardFields, out);
}

void DaughterBoard::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<DaughterBoardKey>());
    readFields(*this, kDaughterBoardFields, in);
}

TarvikInfo::TarvikInfo() : IJsonSerializable() {
    setAllUnknown(*this, kTarvikFields);
}

void TarvikInfo::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<TarvikKey>());
    writeFields(*this, kTarvikFields, out);
    out[TarvikKey::daughterCard] = zelcommon::written(daughterCard);
}

void TarvikInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<TarvikKey>());
    readFields(*this, kTarvikFields, in);
    daughterCard.Deserialize(in.member(TarvikKey::daughterCard));
}

CpuLoadAverage::CpuLoadAverage() : IJsonSerializable() {
    setAllUnknown(*this, kLoadAverageFields);
}

void CpuLoadAverage::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<LoadAverageKey>());
    writeFields(*this, kLoadAverageFields, out);
}

void CpuLoadAverage::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<LoadAverageKey>());
    readFields(*this, kLoadAverageFields, in);
}

SystemError::SystemError() : code(kUnknown) {}

void SystemError::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<ErrorKey>());
    out[ErrorKey::code] = Json::Value(code);
    out[ErrorKey::description] = Json::Value(description);
}

void SystemError::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<ErrorKey>());
    code = in.integer(ErrorKey::code, kUnknown);
    description = in.text(ErrorKey::description, "");
}
