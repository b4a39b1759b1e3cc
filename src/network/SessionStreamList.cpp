#include "SessionStreamList.h"

#include "../common/JsonMember.h"

SessionStreamBasics::SessionStreamBasics() : session(0), stream(0), streamHwId(0), remoteSid(0) {}

namespace {

// Read back in the same order, all but "remote-sid-str".
const zelct::ObjectShape& recordShape() {
    static const zelct::ObjectShape shape{
        "stream",     "stream-hw-id",   "session",        "name", "stream-name",
        "remote-sid", "remote-sid-str", "redundant-type", "type", "state"};
    return shape;
}

}  // namespace

void SessionStreamBasics::Serialize(Json::Value& root) const {
    zelct::ShapedObject out(root, recordShape());
    out["stream"] = Json::Value(static_cast<Json::UInt64>(stream));
    out["stream-hw-id"] = Json::Value(static_cast<Json::UInt>(streamHwId));
    out["session"] = Json::Value(static_cast<Json::UInt64>(session));
    out["name"] = Json::Value(name);
    out["stream-name"] = Json::Value(streamName);
    out["remote-sid"] = Json::Value(static_cast<Json::UInt64>(remoteSid));
    out["remote-sid-str"] = Json::Value(std::to_string(static_cast<unsigned long long>(remoteSid)));
    out["redundant-type"] = Json::Value(redundantType);
    out["type"] = Json::Value(type.getName());
    out["state"] = Json::Value(state.getName());
}

void SessionStreamBasics::Deserialize(Json::Value& root) {
    zelct::ShapedReader in(root, recordShape());
    stream = zelct::uint64Member(in, "stream", 0);
    streamHwId = static_cast<uint32_t>(zelct::uint64Member(in, "stream-hw-id", 0));
    session = zelct::uint64Member(in, "session", 0);
    name = zelct::stringMember(in, "name", "");
    streamName = zelct::stringMember(in, "stream-name", "");
    remoteSid = zelct::uint64Member(in, "remote-sid", 0);
    redundantType = zelct::stringMember(in, "redundant-type", "none");
    type.setName(zelct::stringMember(in, "type", ""));
    state.setName(zelct::stringMember(in, "state", ""));
}

void SessionStreamList::Serialize(Json::Value& root) const {
    zelct::writeElements(streams, root);
}

void SessionStreamList::Deserialize(Json::Value& root) {
    zelct::appendList(root, streams);
}
