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
    static constexpr const char* names[] = {"audio", "video", "ancillary"};
};

struct CapabilityKey {
    enum : std::size_t { numMediaIpInterfaces, senders, receivers, count };
    static constexpr const char* names[] = {"numMediaIpInterfaces", "sendersStreamCount",
                                            "receiversStreamCount"};
};

// The wrapper is the one member the capabilities write into the parent's object.
struct ParentKey {
    enum : std::size_t { wrapper, count };
    static constexpr const char* names[] = {"deviceCapabilities"};
};

struct ProcessKey {
    enum : std::size_t { ethPort, tpcPort, count };
    static constexpr const char* names[] = {"eth-port", "tpc-port"};
};

Json::Value countsObject(int audio, int video, int ancillary) {
    Json::Value counts(Json::objectValue);
    zelcommon::Writer out(counts, zelcommon::shapeOf<CountKey>());
    out[CountKey::audio] = Json::Value(audio);
    out[CountKey::video] = Json::Value(video);
    out[CountKey::ancillary] = Json::Value(ancillary);
    return counts;
}

void readCounts(Json::Value& counts, const StreamCounts& into) {
    zelcommon::Reader in(counts, zelcommon::shapeOf<CountKey>());
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
    zelcommon::Writer out(capabilities, zelcommon::shapeOf<CapabilityKey>());
    out[CapabilityKey::numMediaIpInterfaces] = Json::Value(numMediaIpInterfaces);
    out[CapabilityKey::senders] = countsObject(sendersAudio, sendersVideo, sendersAncillary);
    out[CapabilityKey::receivers] =
        countsObject(receiversAudio, receiversVideo, receiversAncillary);
    zelcommon::Writer parent(root, zelcommon::shapeOf<ParentKey>());
    parent[ParentKey::wrapper] = std::move(capabilities);
}

// An absent sender or receiver object keeps the counts a caller already holds, while an
// absent interface number reads as 0; callers rely on both.
void DeviceCapabilities::Deserialize(Json::Value& root) {
    zelcommon::Reader parent(root, zelcommon::shapeOf<ParentKey>());
    if (!parent.has(ParentKey::wrapper)) {
        return;
    }
    zelcommon::Reader in(parent.member(ParentKey::wrapper), zelcommon::shapeOf<CapabilityKey>());
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
    zelcommon::Writer out(root, zelcommon::shapeOf<ProcessKey>());
    out[ProcessKey::ethPort] = Json::Value(ethPort);
    out[ProcessKey::tpcPort] = Json::Value(Json::UInt{tpcPort});
}

void ProcessBasicInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<ProcessKey>());
    ethPort = in.text(ProcessKey::ethPort, "");
    tpcPort = in.uinteger(ProcessKey::tpcPort, 0);
}
