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

constexpr char kEthName[] = "eth-name";
constexpr char kMac[] = "mac";
constexpr char kLinkup[] = "linkup";
constexpr char kIfid[] = "ifid";
constexpr char kIpv4[] = "ipv4";
constexpr char kNetworkMask[] = "network-mask";
constexpr char kSfp[] = "sfp";

constexpr char kEthCount[] = "ethCount";
constexpr char kCpuBandwidth[] = "cpuBandwidth";
constexpr char kLinkBandwidth[] = "linkBandwidth";
constexpr char kRx[] = "rx_bandwidth_bps";
constexpr char kTx[] = "tx_bandwidth_bps";

// Written and read in this order.
const zelct::Shape<7>& interfaceShape() {
    static const zelct::Shape<7> shape({kEthName, kMac, kLinkup, kIfid, kIpv4, kNetworkMask, kSfp});
    return shape;
}

const zelct::Shape<1>& countShape() {
    static const zelct::Shape<1> shape({kEthCount});
    return shape;
}

const zelct::Shape<2>& bandwidthShape() {
    static const zelct::Shape<2> shape({kRx, kTx});
    return shape;
}

// Parses the dotted text under key into field (host byte order). A text that is not an
// IPv4 address, a missing member included, leaves field as it was.
template <std::size_t N>
void readAddress(zelct::Reader<N>& in, const char* key, std::uint32_t& field) {
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
    zelct::Writer out(object, bandwidthShape());
    out[kRx] = Json::Value(Json::UInt64{bandwidth.rxBandwidthBps});
    out[kTx] = Json::Value(Json::UInt64{bandwidth.txBandwidthBps});
}

EthBandwidthInfo::Bandwidth readBandwidth(Json::Value& object) {
    zelct::Reader in(object, bandwidthShape());
    EthBandwidthInfo::Bandwidth bandwidth{};
    bandwidth.rxBandwidthBps = in.uinteger64(kRx, 0);
    bandwidth.txBandwidthBps = in.uinteger64(kTx, 0);
    return bandwidth;
}

// The arrays hold two interfaces; a larger count would reach past them.
std::uint32_t clampedCount(std::uint32_t count) {
    return count < EthBandwidthInfo::kMaxInterfaces ? count : EthBandwidthInfo::kMaxInterfaces;
}

}  // namespace

EthBasicInfo::EthBasicInfo() : ipv4(0), networkMask(0), linkup(false), ifid(0) {}

void EthBasicInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, interfaceShape());
    out[kEthName] = Json::Value(ethName);
    out[kMac] = Json::Value(mac);
    out[kLinkup] = Json::Value(linkup);
    out[kIfid] = Json::Value(Json::UInt{ifid});
    out[kIpv4] = Json::Value(dottedText(ipv4));
    out[kNetworkMask] = Json::Value(dottedText(networkMask));
    sfp.Serialize(out[kSfp]);
}

void EthBasicInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, interfaceShape());
    ethName = in.text(kEthName, "");
    mac = in.text(kMac, "");
    linkup = in.flag(kLinkup, false);
    ifid = in.uinteger(kIfid, 0);
    readAddress(in, kIpv4, ipv4);
    readAddress(in, kNetworkMask, networkMask);
    sfp.Deserialize(in.member(kSfp));
}

EthBandwidthInfo::EthBandwidthInfo() : cpuBandwidth(), linkBandwidth(), ethCount(0) {}

void EthBandwidthInfo::Serialize(Json::Value& root) const {
    const std::uint32_t count = clampedCount(ethCount);
    zelct::Writer out(root, countShape());
    out[kEthCount] = Json::Value(Json::UInt{count});
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        writeBandwidth(root[kCpuBandwidth][i], cpuBandwidth[i]);
        writeBandwidth(root[kLinkBandwidth][i], linkBandwidth[i]);
    }
}

void EthBandwidthInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, countShape());
    ethCount = clampedCount(in.uinteger(kEthCount, 0));
    for (Json::ArrayIndex i = 0; i < ethCount; ++i) {
        cpuBandwidth[i] = readBandwidth(in.member(kCpuBandwidth)[i]);
        linkBandwidth[i] = readBandwidth(in.member(kLinkBandwidth)[i]);
    }
}
