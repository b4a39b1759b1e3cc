#include "SessionStreamList.h"

SessionStreamBasics::SessionStreamBasics() : session(0), stream(0), streamHwId(0), remoteSid(0) {}

void SessionStreamBasics::Serialize(Json::Value& root) const {
    root["stream"] = Json::Value(static_cast<Json::UInt64>(stream));
    root["stream-hw-id"] = Json::Value(static_cast<Json::UInt>(streamHwId));
    root["session"] = Json::Value(static_cast<Json::UInt64>(session));
    root["name"] = Json::Value(name);
    root["stream-name"] = Json::Value(streamName);
    root["remote-sid"] = Json::Value(static_cast<Json::UInt64>(remoteSid));
    root["remote-sid-str"] =
        Json::Value(std::to_string(static_cast<unsigned long long>(remoteSid)));
    root["redundant-type"] = Json::Value(redundantType);
    root["type"] = Json::Value(type.getName());
    root["state"] = Json::Value(state.getName());
}

void SessionStreamBasics::Deserialize(Json::Value& root) {
    const Json::Value zero(static_cast<Json::UInt64>(0));
    stream = root.get("stream", zero).asUInt64();
    streamHwId = static_cast<uint32_t>(root.get("stream-hw-id", zero).asUInt64());
    session = root.get("session", zero).asUInt64();
    name = root.get("name", "").asString();
    streamName = root.get("stream-name", "").asString();
    remoteSid = root.get("remote-sid", zero).asUInt64();
    redundantType = root.get("redundant-type", "none").asString();
    type.setName(root.get("type", "").asString());
    state.setName(root.get("state", "").asString());
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
        streams.push_back(record);
    }
}
