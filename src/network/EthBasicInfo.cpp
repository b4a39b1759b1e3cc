#include "EthBasicInfo.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include "../common/JsonMember.h"
#include "Logger.h"

namespace {

// Dotted-decimal text of an address held in host byte order, as inet_ntoa prints it. The
// text is built in a buffer on this call's stack: inet_ntoa's buffer may be shared by every
// thread of the process.
std::string dottedText(std::uint32_t hostOrder) {
    in_addr address{};
    address.s_addr = htonl(hostOrder);
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

// Written and read in this order.
struct Key {
    enum : std::size_t { ethName, mac, linkup, ifid, ipv4, networkMask, sfp, count };
    static constexpr const char* names[] = {"eth-name", "mac",          "linkup", "ifid",
                                            "ipv4",     "network-mask", "sfp"};
};

// The arrays are written only for a count above 0.
struct BandwidthKey {
    enum : std::size_t { ethCount, cpuBandwidth, linkBandwidth, count };
    static constexpr const char* names[] = {"ethCount", "cpuBandwidth", "linkBandwidth"};
    static constexpr std::size_t writtenAtTimes[] = {cpuBandwidth, linkBandwidth};
};

struct RateKey {
    enum : std::size_t { rx, tx, count };
    static constexpr const char* names[] = {"rx_bandwidth_bps", "tx_bandwidth_bps"};
};

// Parses the dotted text under key into field (host byte order). A text that is not an
// IPv4 address, a missing member included, leaves field as it was.
template <std::size_t N>
void readAddress(zelcommon::Reader<N>& in, std::size_t key, std::uint32_t& field) {
    const std::string text = in.text(key, "");
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        Logger::log(Logger::logError, "ERR::Error parsing IP '%s': invalid IP address",
                    text.c_str());
        return;
    }
    field = ntohl(address.s_addr);
}

void writeBandwidth(Json::Value& object, const EthBandwidthInfo::Bandwidth& bandwidth) {
    zelcommon::Writer out(object, zelcommon::shapeOf<RateKey>());
    out[RateKey::rx] = Json::Value(Json::UInt64{bandwidth.rxBandwidthBps});
    out[RateKey::tx] = Json::Value(Json::UInt64{bandwidth.txBandwidthBps});
}

EthBandwidthInfo::Bandwidth readBandwidth(Json::Value& object) {
    zelcommon::Reader in(object, zelcommon::shapeOf<RateKey>());
    EthBandwidthInfo::Bandwidth bandwidth{};
    bandwidth.rxBandwidthBps = in.uinteger64(RateKey::rx, 0);
    bandwidth.txBandwidthBps = in.uinteger64(RateKey::tx, 0);
    return bandwidth;
}

// The arrays hold two interfaces; a larger count would reach past them.
std::uint32_t clampedCount(std::uint32_t count) {
    return count < EthBandwidthInfo::kMaxInterfaces ? count : EthBandwidthInfo::kMaxInterfaces;
}

}  // namespace

EthBasicInfo::EthBasicInfo() : ipv4(0), networkMask(0), linkup(false), ifid(0) {}

void EthBasicInfo::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::ethName] = Json::Value(ethName);
    out[Key::mac] = Json::Value(mac);
    out[Key::linkup] = Json::Value(linkup);
    out[Key::ifid] = Json::Value(Json::UInt{ifid});
    out[Key::ipv4] = Json::Value(dottedText(ipv4));
    out[Key::networkMask] = Json::Value(dottedText(networkMask));
    sfp.Serialize(out[Key::sfp]);
}

void EthBasicInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    ethName = in.text(Key::ethName, "");
    mac = in.text(Key::mac, "");
    linkup = in.flag(Key::linkup, false);
    ifid = in.uinteger(Key::ifid, 0);
    readAddress(in, Key::ipv4, ipv4);
    readAddress(in, Key::networkMask, networkMask);
    sfp.Deserialize(in.member(Key::sfp));
}

EthBandwidthInfo::EthBandwidthInfo() : cpuBandwidth(), linkBandwidth(), ethCount(0) {}

void EthBandwidthInfo::Serialize(Json::Value& root) const {
    const std::uint32_t count = clampedCount(ethCount);
    zelcommon::Writer out(root, zelcommon::shapeOf<BandwidthKey>());
    out[BandwidthKey::ethCount] = Json::Value(Json::UInt{count});
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        writeBandwidth(out[BandwidthKey::cpuBandwidth][i], cpuBandwidth[i]);
        writeBandwidth(out[BandwidthKey::linkBandwidth][i], linkBandwidth[i]);
    }
}

void EthBandwidthInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<BandwidthKey>());
    ethCount = clampedCount(in.uinteger(BandwidthKey::ethCount, 0));
    for (Json::ArrayIndex i = 0; i < ethCount; ++i) {
        cpuBandwidth[i] = readBandwidth(in.member(BandwidthKey::cpuBandwidth)[i]);
        linkBandwidth[i] = readBandwidth(in.member(BandwidthKey::linkBandwidth)[i]);
    }
}
