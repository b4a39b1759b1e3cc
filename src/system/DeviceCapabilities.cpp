#include "DeviceCapabilities.h"

#include "../common/JsonMember.h"

namespace {

// The stream counts of one direction, in the order they are written.
struct StreamCounts {
    int& audio;
    int& video;
    int& ancillary;
};

struct CountKey {
    enum : std::size_t { audio, video, ancillary, count };
};

const zelct::Shape<CountKey::count>& countsShape() {
    static const zelct::Shape<CountKey::count> shape({"audio", "video", "ancillary"});
    return shape;
}

struct CapabilityKey {
    enum : std::size_t { numMediaIpInterfaces, senders, receivers, count };
};

const zelct::Shape<CapabilityKey::count>& capabilitiesShape() {
    static const zelct::Shape<CapabilityKey::count> shape(
        {"numMediaIpInterfaces", "sendersStreamCount", "receiversStreamCount"});
    return shape;
}

// The wrapper is the one member the capabilities write into the parent's object.
constexpr std::size_t kWrapper = 0;

const zelct::Shape<1>& parentShape() {
    static const zelct::Shape<1> shape({"deviceCapabilities"});
    return shape;
}

struct ProcessKey {
    enum : std::size_t { ethPort, tpcPort, count };
};

const zelct::Shape<ProcessKey::count>& processShape() {
    static const zelct::Shape<ProcessKey::count> shape({"eth-port", "tpc-port"});
    return shape;
}

Json::Value countsObject(int audio, int video, int ancillary) {
    Json::Value counts(Json::objectValue);
    zelct::Writer out(counts, countsShape());
    out[CountKey::audio] = Json::Value(audio);
    out[CountKey::video] = Json::Value(video);
    out[CountKey::ancillary] = Json::Value(ancillary);
    return counts;
}

void readCounts(Json::Value& counts, const StreamCounts& into) {
    zelct::Reader in(counts, countsShape());
    into.audio = in.integer(CountKey::audio, 0);
    into.video = in.integer(CountKey::video, 0);
    into.ancillary = in.integer(CountKey::ancillary, 0);
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
    out[CapabilityKey::numMediaIpInterfaces] = Json::Value(numMediaIpInterfaces);
    out[CapabilityKey::senders] = countsObject(sendersAudio, sendersVideo, sendersAncillary);
    out[CapabilityKey::receivers] =
        countsObject(receiversAudio, receiversVideo, receiversAncillary);
    zelct::Writer parent(root, parentShape());
    parent[kWrapper] = std::move(capabilities);
}

// An absent sender or receiver object keeps the counts a caller already holds, while an
// absent interface number reads as 0; callers rely on both.
void DeviceCapabilities::Deserialize(Json::Value& root) {
    zelct::Reader parent(root, parentShape());
    if (!parent.has(kWrapper)) {
        return;
    }
    zelct::Reader in(parent.member(kWrapper), capabilitiesShape());
    numMediaIpInterfaces = in.integer(CapabilityKey::numMediaIpInterfaces, 0);
    if (in.has(CapabilityKey::senders)) {
        readCounts(in.member(CapabilityKey::senders),
                   StreamCounts{sendersAudio, sendersVideo, sendersAncillary});
    }
    if (!in.has(CapabilityKey::receivers)) {
        return;
    }
    readCounts(in.member(CapabilityKey::receivers),
               StreamCounts{receiversAudio, receiversVideo, receiversAncillary});
}

ProcessBasicInfo::ProcessBasicInfo() : tpcPort(0) {}

void ProcessBasicInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, processShape());
    out[ProcessKey::ethPort] = Json::Value(ethPort);
    out[ProcessKey::tpcPort] = Json::Value(Json::UInt{tpcPort});
}

void ProcessBasicInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, processShape());
    ethPort = in.text(ProcessKey::ethPort, "");
    tpcPort = in.uinteger(ProcessKey::tpcPort, 0);
}
