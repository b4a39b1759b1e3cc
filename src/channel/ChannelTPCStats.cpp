#include "ChannelTPCStats.h"

void ChannelTPCStats::Serialize(Json::Value& root) {
    root["channel-id"] = Json::Value(static_cast<int>(channelId));
    root["error-detected"] = Json::Value(errorDetected);
    root["error-cnt"] = Json::Value(static_cast<Json::UInt64>(errorCount));
}

void ChannelTPCStats::Deserialize(Json::Value& root) {
    channelId = root.get("channel-id", 0).asUInt();
    errorDetected = root.get("error-detected", false).asBool();
    errorCount = root.get("error-cnt", Json::Value(static_cast<Json::UInt64>(0))).asUInt64();
}
