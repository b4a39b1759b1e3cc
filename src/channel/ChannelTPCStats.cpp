#include "ChannelTPCStats.h"

#include "../common/JsonMember.h"

namespace {

constexpr char kChannelId[] = "channel-id";
constexpr char kErrorDetected[] = "error-detected";
constexpr char kErrorCnt[] = "error-cnt";

// Written and read in this order.
const zelct::Shape<3>& statsShape() {
    static const zelct::Shape<3> shape({kChannelId, kErrorDetected, kErrorCnt});
    return shape;
}

}  // namespace

void ChannelTPCStats::Serialize(Json::Value& root) {
    zelct::Writer out(root, statsShape());
    out[kChannelId] = Json::Value(static_cast<int>(channelId));
    out[kErrorDetected] = Json::Value(errorDetected);
    out[kErrorCnt] = Json::Value(static_cast<Json::UInt64>(errorCount));
}

void ChannelTPCStats::Deserialize(Json::Value& root) {
    zelct::Reader in(root, statsShape());
    channelId = in.uinteger(kChannelId, 0);
    errorDetected = in.flag(kErrorDetected, false);
    errorCount = in.uinteger64(kErrorCnt, 0);
}
