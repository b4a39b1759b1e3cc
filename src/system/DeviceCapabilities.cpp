#include "DeviceCapabilities.h"

#include "../common/JsonMember.h"

namespace {

constexpr char kDeviceCapabilities[] = "deviceCapabilities";
constexpr char kNumMediaIpInterfaces[] = "numMediaIpInterfaces";
constexpr char kSenders[] = "sendersStreamCount";
constexpr char kReceivers[] = "receiversStreamCount";
constexpr char kAudio[] = "audio";
constexpr char kVideo[] = "video";
constexpr char kAncillary[] = "ancillary";
constexpr char kEthPort[] = "eth-port";
constexpr char kTpcPort[] = "tpc-port";

// The stream counts of one direction, in the order they are written.
struct StreamCounts {
    int& audio;
    int& video;
    int& ancillary;
};

const zelct::Shape<3>& countsShape() {
    static const zelct::Shape<3> shape({kAudio, kVideo, kAncillary});
    return shape;
}

const zelct::Shape<3>& capabilitiesShape() {
    static const zelct::Shape<3> shape({kNumMediaIpInterfaces, kSenders, kReceivers});
    return shape;
}

// The wrapper is the one member the capabilities write into the parent's object.
const zelct::Shape<1>& parentShape() {
    static const zelct::Shape<1> shape({kDeviceCapabilities});
    return shape;
}

const zelct::Shape<2>& processShape() {
    static const zelct::Shape<2> shape({kEthPort, kTpcPort});
    return shape;
}

Json::Value countsObject(int audio, int video, int ancillary) {
    Json::Value counts(Json::objectValue);
    zelct::Writer out(counts, countsShape());
    out[kAudio] = Json::Value(audio);
    out[kVideo] = Json::Value(video);
    out[kAncillary] = Json::Value(ancillary);
    return counts;
}

void readCounts(Json::Value& counts, const StreamCounts& into) {
    zelct::Reader in(counts, countsShape());
    into.audio = in.integer(kAudio, 0);
    into.video = in.integer(kVideo, 0);
    into.ancillary = in.integer(kAncillary, 0);
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

// The wrapper is set whole: members an existing "deviceCapabilities" held go.
void DeviceCapabilities::Serialize(Json::Value& root) const {
    Json::Value capabilities(Json::objectValue);
    zelct::Writer out(capabilities, capabilitiesShape());
    out[kNumMediaIpInterfaces] = Json::Value(numMediaIpInterfaces);
    out[kSenders] = countsObject(sendersAudio, sendersVideo, sendersAncillary);
    out[kReceivers] = countsObject(receiversAudio, receiversVideo, receiversAncillary);
    zelct::Writer parent(root, parentShape());
    parent[kDeviceCapabilities] = std::move(capabilities);
}

// An absent sender or receiver object keeps the counts a caller already holds, while an
// absent interface number reads as 0; callers rely on both.
void DeviceCapabilities::Deserialize(Json::Value& root) {
    zelct::Reader parent(root, parentShape());
    if (!parent.has(kDeviceCapabilities)) {
        return;
    }
    zelct::Reader in(parent.member(kDeviceCapabilities), capabilitiesShape());
    numMediaIpInterfaces = in.integer(kNumMediaIpInterfaces, 0);
    if (in.has(kSenders)) {
        readCounts(in.member(kSenders), StreamCounts{sendersAudio, sendersVideo, sendersAncillary});
    }
    if (!in.has(kReceivers)) {
        return;
    }
    readCounts(in.member(kReceivers),
               StreamCounts{receiversAudio, receiversVideo, receiversAncillary});
}

ProcessBasicInfo::ProcessBasicInfo() : tpcPort(0) {}

void ProcessBasicInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, processShape());
    out[kEthPort] = Json::Value(ethPort);
    out[kTpcPort] = Json::Value(Json::UInt{tpcPort});
}

void ProcessBasicInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, processShape());
    ethPort = in.text(kEthPort, "");
    tpcPort = in.uinteger(kTpcPort, 0);
}
