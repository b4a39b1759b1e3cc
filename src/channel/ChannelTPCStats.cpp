#include "ChannelTPCStats.h"

#include "../common/JsonMember.h"

namespace {

// Written and read in this order.
struct Key {
    enum : std::size_t { channelId, errorDetected, errorCnt, count };
    static constexpr const char* names[] = {"channel-id", "error-detected", "error-cnt"};
};

}  // namespace

void ChannelTPCStats::Serialize(Json::Value& root) {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::channelId] = Json::Value(static_cast<int>(channelId));
    out[Key::errorDetected] = Json::Value(errorDetected);
    out[Key::errorCnt] = Json::Value(static_cast<Json::UInt64>(errorCount));
}

void ChannelTPCStats::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    channelId = in.uinteger(Key::channelId, 0);
    errorDetected = in.flag(Key::errorDetected, false);
    errorCount = in.uinteger64(Key::errorCnt, 0);
}
