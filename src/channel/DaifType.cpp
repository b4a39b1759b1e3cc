#include "DaifType.h"

#include "../common/JsonMember.h"

namespace {

// A number and its name, each written and read in this order.
struct PairKey {
    enum : std::size_t { number, name, count };
};

const zelct::Shape<PairKey::count>& kindShape() {
    static const zelct::Shape<PairKey::count> shape({"type", "string"});
    return shape;
}

const zelct::Shape<PairKey::count>& mediaShape() {
    static const zelct::Shape<PairKey::count> shape({"media-type", "string"});
    return shape;
}

const zelct::Shape<PairKey::count>& capabilityShape() {
    static const zelct::Shape<PairKey::count> shape({"capability", "string"});
    return shape;
}

// A name alone.
constexpr std::size_t kName = 0;

const zelct::Shape<1>& streamShape() {
    static const zelct::Shape<1> shape({"type"});
    return shape;
}

const zelct::Shape<1>& stateShape() {
    static const zelct::Shape<1> shape({"state"});
    return shape;
}

void writePair(Json::Value& root, const zelct::Shape<PairKey::count>& shape, int number,
               const std::string& name) {
    zelct::Writer out(root, shape);
    out[PairKey::number] = Json::Value(number);
    out[PairKey::name] = Json::Value(name);
}

// Both are read, the number first, each with its own default.
void readPair(Json::Value& root, const zelct::Shape<PairKey::count>& shape, int& number,
              int numberDefault, std::string& name, const char* nameDefault) {
    zelct::Reader in(root, shape);
    number = in.integer(PairKey::number, numberDefault);
    name = in.text(PairKey::name, nameDefault);
}

void writeName(Json::Value& root, const zelct::Shape<1>& shape, const char* name) {
    zelct::Writer out(root, shape);
    out[kName] = Json::Value(name);
}

std::string readName(Json::Value& root, const zelct::Shape<1>& shape) {
    zelct::Reader in(root, shape);
    return in.text(kName, "");
}

}  // namespace

void DaifType::Serialize(Json::Value& root) const {
    writePair(root, kindShape(), value, name);
}

// A present "string" decides by its text and "type" is not read; an absent, null or empty
// "string" (the access adds a null one) lets "type" decide, default 12.
void DaifType::Deserialize(Json::Value& root) {
    zelct::Reader in(root, kindShape());
    if (in.member(PairKey::name).empty()) {
        setValueAndName(in.integer(PairKey::number, DAIF_AUTO));
    } else {
        name = in.text(PairKey::name, "auto");
    }
    setNameAndResolve(name);
}

void DaifMediaType::Serialize(Json::Value& root) const {
    writePair(root, mediaShape(), value, name);
}

void DaifMediaType::Deserialize(Json::Value& root) {
    readPair(root, mediaShape(), value, 3, name, "");
}

void DaifCapabilities::Serialize(Json::Value& root) const {
    writePair(root, capabilityShape(), value, name);
}

void DaifCapabilities::Deserialize(Json::Value& root) {
    readPair(root, capabilityShape(), value, 0, name, "inout");
}

void StreamType::Serialize(Json::Value& root) const {
    writeName(root, streamShape(), nameOf(value));
}

void StreamType::Deserialize(Json::Value& root) {
    setName(readName(root, streamShape()));
}

void State::Serialize(Json::Value& root) const {
    writeName(root, stateShape(), nameOf(value));
}

void State::Deserialize(Json::Value& root) {
    setName(readName(root, stateShape()));
}
