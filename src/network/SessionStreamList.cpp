#include "SessionStreamList.h"

#include "../common/JsonMember.h"

SessionStreamBasics::SessionStreamBasics() : session(0), stream(0), streamHwId(0), remoteSid(0) {}

namespace {

constexpr char kStream[] = "stream";
constexpr char kStreamHwId[] = "stream-hw-id";
constexpr char kSession[] = "session";
constexpr char kName[] = "name";
constexpr char kStreamName[] = "stream-name";
constexpr char kRemoteSid[] = "remote-sid";
constexpr char kRemoteSidStr[] = "remote-sid-str";
constexpr char kRedundantType[] = "redundant-type";
constexpr char kType[] = "type";
constexpr char kState[] = "state";

// Read back in the same order, all but "remote-sid-str". The type and the state write their
// own keys into the record's object, so the keys are theirs as well.
const zelct::Shape<10>& recordShape() {
    static const zelct::Shape<10> shape({kStream, kStreamHwId, kSession, kName, kStreamName,
                                         kRemoteSid, kRemoteSidStr, kRedundantType, kType, kState});
    return shape;
}

}  // namespace

void SessionStreamBasics::Serialize(Json::Value& root) const {
    zelct::Writer out(root, recordShape());
    out[kStream] = Json::Value(static_cast<Json::UInt64>(stream));
    out[kStreamHwId] = Json::Value(static_cast<Json::UInt>(streamHwId));
    out[kSession] = Json::Value(static_cast<Json::UInt64>(session));
    out[kName] = Json::Value(name);
    out[kStreamName] = Json::Value(streamName);
    out[kRemoteSid] = Json::Value(static_cast<Json::UInt64>(remoteSid));
    out[kRemoteSidStr] = Json::Value(std::to_string(static_cast<unsigned long long>(remoteSid)));
    out[kRedundantType] = Json::Value(redundantType);
    out[kType] = Json::Value(type.getName());
    out[kState] = Json::Value(state.getName());
}

void SessionStreamBasics::Deserialize(Json::Value& root) {
    zelct::Reader in(root, recordShape());
    stream = in.uinteger64(kStream, 0);
    streamHwId = static_cast<uint32_t>(in.uinteger64(kStreamHwId, 0));
    session = in.uinteger64(kSession, 0);
    name = in.text(kName, "");
    streamName = in.text(kStreamName, "");
    remoteSid = in.uinteger64(kRemoteSid, 0);
    redundantType = in.text(kRedundantType, "none");
    type.setName(in.text(kType, ""));
    state.setName(in.text(kState, ""));
}

void SessionStreamList::Serialize(Json::Value& root) const {
    zelct::writeElements(streams, root);
}

void SessionStreamList::Deserialize(Json::Value& root) {
    zelct::appendList(root, streams);
}
