#include "DeviceCapabilities.h"

namespace {

// The stream counts of one direction, in the order they are written.
struct StreamCounts {
    int& audio;
    int& video;
    int& ancillary;
};

Json::Value countsObject(int audio, int video, int ancillary) {
    Json::Value counts(Json::objectValue);
    counts["audio"] = Json::Value(audio);
    counts["video"] = Json::Value(video);
    counts["ancillary"] = Json::Value(ancillary);
    return counts;
}

void readCounts(const Json::Value& counts, const StreamCounts& into) {
    into.audio = counts.get("audio", 0).asInt();
    into.video = counts.get("video", 0).asInt();
    into.ancillary = counts.get("ancillary", 0).asInt();
}

}  // namespace

DeviceCapabilities::DeviceCapabilities()
    : numMediaIpInterfaces(0),
      sendersAudio(0),
      sendersVideo(0),
      sendersAncillary(0),
      receiversAudio(0),
      receiversVideo(0),
      receiversAncillary(0) {}

void DeviceCapabilities::Serialize(Json::Value& root) const {
    Json::Value capabilities(Json::objectValue);
    capabilities["numMediaIpInterfaces"] = Json::Value(numMediaIpInterfaces);
    capabilities["sendersStreamCount"] = countsObject(sendersAudio, sendersVideo, sendersAncillary);
    capabilities["receiversStreamCount"] =
        countsObject(receiversAudio, receiversVideo, receiversAncillary);
    root["deviceCapabilities"] = capabilities;
}

// An absent sender or receiver object keeps the counts a caller already holds, while an
// absent interface number reads as 0; callers rely on both.
void DeviceCapabilities::Deserialize(Json::Value& root) {
    if (!root.isMember("deviceCapabilities")) {
        return;
    }
    const Json::Value& capabilities = root["deviceCapabilities"];
    numMediaIpInterfaces = capabilities.get("numMediaIpInterfaces", 0).asInt();
    if (capabilities.isMember("sendersStreamCount")) {
        readCounts(capabilities["sendersStreamCount"],
                   StreamCounts{sendersAudio, sendersVideo, sendersAncillary});
    }
    if (!capabilities.isMember("receiversStreamCount")) {
        return;
    }
    readCounts(capabilities["receiversStreamCount"],
               StreamCounts{receiversAudio, receiversVideo, receiversAncillary});
}

ProcessBasicInfo::ProcessBasicInfo() : tpcPort(0) {}

void ProcessBasicInfo::Serialize(Json::Value& root) const {
    root["eth-port"] = Json::Value(ethPort);
    root["tpc-port"] = Json::Value(Json::UInt{tpcPort});
}

void ProcessBasicInfo::Deserialize(Json::Value& root) {
    ethPort = root.get("eth-port", "").asString();
    tpcPort = root.get("tpc-port", 0).asUInt();
}
