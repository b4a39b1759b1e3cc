#include "SessionStreamList.h"

#include <utility>

#include "../common/JsonMember.h"

SessionStreamBasics::SessionStreamBasics() : session(0), stream(0), streamHwId(0), remoteSid(0) {}

void SessionStreamBasics::Serialize(Json::Value& root) const {
    static const zelct::ObjectShape shape{
        "stream",     "stream-hw-id",   "session",        "name", "stream-name",
        "remote-sid", "remote-sid-str", "redundant-type", "type", "state"};
    zelct::ShapedObject out(root, shape);
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
    stream = zelct::uint64Member(root, "stream", 0);
    streamHwId = static_cast<uint32_t>(zelct::uint64Member(root, "stream-hw-id", 0));
    session = zelct::uint64Member(root, "session", 0);
    name = zelct::stringMember(root, "name", "");
    streamName = zelct::stringMember(root, "stream-name", "");
    remoteSid = zelct::uint64Member(root, "remote-sid", 0);
    redundantType = zelct::stringMember(root, "redundant-type", "none");
    type.setName(zelct::stringMember(root, "type", ""));
    state.setName(zelct::stringMember(root, "state", ""));
}

void SessionStreamList::Serialize(Json::Value& root) const {
    Json::ArrayIndex i = 0;
    for (const SessionStreamBasics& record : streams) {
        record.Serialize(root[i++]);
    }
}

void SessionStreamList::Deserialize(Json::Value& root) {
    for (Json::ArrayIndex i = 0; i < root.size(); ++i) {
        SessionStreamBasics record;
        record.Deserialize(root[i]);
        streams.push_back(std::move(record));
    }
}
