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
                 zelct::Writer<K>& out) {
    for (std::size_t i = 0; i < N; ++i) {
        out[i] = Json::Value(record.*fields[i].field);
    }
}

// The default is the integer -1, which the conversion widens for the load averages.
template <typename Record, std::size_t N, std::size_t K>
void readFields(Record& record, const Member<Record, int> (&fields)[N], zelct::Reader<K>& in) {
    for (std::size_t i = 0; i < N; ++i) {
        record.*fields[i].field = in.integer(i, kUnknown);
    }
}

template <typename Record, std::size_t N, std::size_t K>
void readFields(Record& record, const Member<Record, double> (&fields)[N], zelct::Reader<K>& in) {
    for (std::size_t i = 0; i < N; ++i) {
        record.*fields[i].field = in.real(i, kUnknown);
    }
}

// The shapes of the records of one member, and their only key.
constexpr std::size_t kOnly = 0;

const zelct::Shape<1>& temperatureShape() {
    static const zelct::Shape<1> shape({"fpga"});
    return shape;
}

const zelct::Shape<1>& fanShape() {
    static const zelct::Shape<1> shape({"main"});
    return shape;
}

constexpr std::size_t kBoardFields = std::size(kTarvikFields);
constexpr std::size_t kDaughterCard = kBoardFields;

const zelct::Shape<std::size(kDaughterBoardFields)>& daughterBoardShape() {
    static const auto shape = zelct::shapeOfRows(kDaughterBoardFields);
    return shape;
}

const zelct::Shape<kBoardFields + 1>& tarvikShape() {
    static const auto shape = zelct::shapeOfRows(kTarvikFields, "daughter-card");
    return shape;
}

const zelct::Shape<std::size(kLoadAverageFields)>& loadAverageShape() {
    static const auto shape = zelct::shapeOfRows(kLoadAverageFields);
    return shape;
}

struct ErrorKey {
    enum : std::size_t { code, description, count };
};

const zelct::Shape<ErrorKey::count>& errorShape() {
    static const zelct::Shape<ErrorKey::count> shape({"code", "description"});
    return shape;
}

}  // namespace

SystemTemperature::SystemTemperature() : fpga(kUnknownTemperature) {}

void SystemTemperature::Serialize(Json::Value& root) const {
    zelct::Writer out(root, temperatureShape());
    out[kOnly] = Json::Value(fpga);
}

void SystemTemperature::Deserialize(Json::Value& root) {
    zelct::Reader in(root, temperatureShape());
    fpga = in.integer(kOnly, kUnknownTemperature);
}

FanSpeed::FanSpeed() : main(kUnknown) {}

void FanSpeed::Serialize(Json::Value& root) const {
    zelct::Writer out(root, fanShape());
    out[kOnly] = Json::Value(main);
}

void FanSpeed::Deserialize(Json::Value& root) {
    zelct::Reader in(root, fanShape());
    main = in.integer(kOnly, kUnknown);
}

DaughterBoard::DaughterBoard() : IJsonSerializable() {
    setAllUnknown(*this, kDaughterBoardFields);
}

void DaughterBoard::Serialize(Json::Value& root) const {
    zelct::Writer out(root, daughterBoardShape());
    writeFields(*this, kDaughterBoardFields, out);
}

void DaughterBoard::Deserialize(Json::Value& root) {
    zelct::Reader in(root, daughterBoardShape());
    readFields(*this, kDaughterBoardFields, in);
}

TarvikInfo::TarvikInfo() : IJsonSerializable() {
    setAllUnknown(*this, kTarvikFields);
}

void TarvikInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, tarvikShape());
    writeFields(*this, kTarvikFields, out);
    out[kDaughterCard] = zelct::written(daughterCard);
}

void TarvikInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, tarvikShape());
    readFields(*this, kTarvikFields, in);
    daughterCard.Deserialize(in.member(kDaughterCard));
}

CpuLoadAverage::CpuLoadAverage() : IJsonSerializable() {
    setAllUnknown(*this, kLoadAverageFields);
}

void CpuLoadAverage::Serialize(Json::Value& root) const {
    zelct::Writer out(root, loadAverageShape());
    writeFields(*this, kLoadAverageFields, out);
}

void CpuLoadAverage::Deserialize(Json::Value& root) {
    zelct::Reader in(root, loadAverageShape());
    readFields(*this, kLoadAverageFields, in);
}

SystemError::SystemError() : code(kUnknown) {}

void SystemError::Serialize(Json::Value& root) const {
    zelct::Writer out(root, errorShape());
    out[ErrorKey::code] = Json::Value(code);
    out[ErrorKey::description] = Json::Value(description);
}

void SystemError::Deserialize(Json::Value& root) {
    zelct::Reader in(root, errorShape());
    code = in.integer(ErrorKey::code, kUnknown);
    description = in.text(ErrorKey::description, "");
}
