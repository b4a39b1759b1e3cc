#include "SessionStreamList.h"

#include "../common/JsonMember.h"

SessionStreamBasics::SessionStreamBasics() : session(0), stream(0), streamHwId(0), remoteSid(0) {}

namespace {

// Read back in the same order, all but "remote-sid-str". The type and the state are written
// by name into the record's own object.
struct Key {
    enum : std::size_t {
        stream,
        streamHwId,
        session,
        name,
        streamName,
        remoteSid,
        remoteSidStr,
        redundantType,
        type,
        state,
        count
    };
    static constexpr const char* names[] = {
        "stream",     "stream-hw-id",   "session",        "name", "stream-name",
        "remote-sid", "remote-sid-str", "redundant-type", "type", "state"};
};

}  // namespace

void SessionStreamBasics::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::stream] = Json::Value(static_cast<Json::UInt64>(stream));
    out[Key::streamHwId] = Json::Value(static_cast<Json::UInt>(streamHwId));
    out[Key::session] = Json::Value(static_cast<Json::UInt64>(session));
    out[Key::name] = Json::Value(name);
    out[Key::streamName] = Json::Value(streamName);
    out[Key::remoteSid] = Json::Value(static_cast<Json::UInt64>(remoteSid));
    out[Key::remoteSidStr] =
        Json::Value(std::to_string(static_cast<unsigned long long>(remoteSid)));
    out[Key::redundantType] = Json::Value(redundantType);
    out[Key::type] = Json::Value(type.getName());
    out[Key::state] = Json::Value(state.getName());
}

void SessionStreamBasics::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    stream = in.uinteger64(Key::stream, 0);
    streamHwId = static_cast<uint32_t>(in.uinteger64(Key::streamHwId, 0));
    session = in.uinteger64(Key::session, 0);
    name = in.text(Key::name, "");
    streamName = in.text(Key::streamName, "");
    remoteSid = in.uinteger64(Key::remoteSid, 0);
    redundantType = in.text(Key::redundantType, "none");
    type.setName(in.text(Key::type, ""));
    state.setName(in.text(Key::state, ""));
}

void SessionStreamList::Serialize(Json::Value& root) const {
    zelcommon::writeElements(streams, root);
}

void SessionStreamList::Deserialize(Json::Value& root) {
    zelcommon::appendList(root, streams);
}
