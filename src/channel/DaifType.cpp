#include "DaifType.h"

#include "../common/JsonMember.h"

namespace {

constexpr char kType[] = "type";
constexpr char kString[] = "string";
constexpr char kMediaType[] = "media-type";
constexpr char kCapability[] = "capability";
constexpr char kState[] = "state";

// Each written and read in this order.
const zelct::Shape<2>& kindShape() {
    static const zelct::Shape<2> shape({kType, kString});
    return shape;
}

const zelct::Shape<2>& mediaShape() {
    static const zelct::Shape<2> shape({kMediaType, kString});
    return shape;
}

const zelct::Shape<2>& capabilityShape() {
    static const zelct::Shape<2> shape({kCapability, kString});
    return shape;
}

const zelct::Shape<1>& streamShape() {
    static const zelct::Shape<1> shape({kType});
    return shape;
}

const zelct::Shape<1>& stateShape() {
    static const zelct::Shape<1> shape({kState});
    return shape;
}

}  // namespace

void DaifType::Serialize(Json::Value& root) const {
    zelct::Writer out(root, kindShape());
    out[kType] = Json::Value(value);
    out[kString] = Json::Value(name);
}

// A present "string" decides by its text and "type" is not read; an absent, null or empty
// "string" (the access adds a null one) lets "type" decide, default 12.
void DaifType::Deserialize(Json::Value& root) {
    zelct::Reader in(root, kindShape());
    if (in.member(kString).empty()) {
        setValueAndName(in.integer(kType, DAIF_AUTO));
    } else {
        name = in.text(kString, "auto");
    }
    setNameAndResolve(name);
}

void DaifMediaType::Serialize(Json::Value& root) const {
    zelct::Writer out(root, mediaShape());
    out[kMediaType] = Json::Value(value);
    out[kString] = Json::Value(name);
}

void DaifMediaType::Deserialize(Json::Value& root) {
    zelct::Reader in(root, mediaShape());
    value = in.integer(kMediaType, 3);
    name = in.text(kString, "");
}

void DaifCapabilities::Serialize(Json::Value& root) const {
    zelct::Writer out(root, capabilityShape());
    out[kCapability] = Json::Value(value);
    out[kString] = Json::Value(name);
}

void DaifCapabilities::Deserialize(Json::Value& root) {
    zelct::Reader in(root, capabilityShape());
    value = in.integer(kCapability, 0);
    name = in.text(kString, "inout");
}

void StreamType::Serialize(Json::Value& root) const {
    zelct::Writer out(root, streamShape());
    out[kType] = Json::Value(nameOf(value));
}

void StreamType::Deserialize(Json::Value& root) {
    zelct::Reader in(root, streamShape());
    setName(in.text(kType, ""));
}

void State::Serialize(Json::Value& root) const {
    zelct::Writer out(root, stateShape());
    out[kState] = Json::Value(nameOf(value));
}

void State::Deserialize(Json::Value& root) {
    zelct::Reader in(root, stateShape());
    setName(in.text(kState, ""));
}
