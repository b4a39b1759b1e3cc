#include "EthBasicInfo.h"

#include <arpa/inet.h>
#include <netinet/in.h>

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

// Parses the dotted text under key into field (host byte order). A text that is not an
// IPv4 address, a missing member included, leaves field as it was.
void readAddress(const Json::Value& root, const char* key, std::uint32_t& field) {
    const std::string text = root.get(key, "").asString();
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        Logger::log(Logger::logError, "ERR::Error parsing IP '%s': invalid IP address",
                    text.c_str());
        return;
    }
    field = ntohl(address.s_addr);
}

void writeBandwidth(Json::Value& object, const EthBandwidthInfo::Bandwidth& bandwidth) {
    object["rx_bandwidth_bps"] = Json::Value(Json::UInt64{bandwidth.rxBandwidthBps});
    object["tx_bandwidth_bps"] = Json::Value(Json::UInt64{bandwidth.txBandwidthBps});
}

EthBandwidthInfo::Bandwidth readBandwidth(const Json::Value& object) {
    EthBandwidthInfo::Bandwidth bandwidth{};
    bandwidth.rxBandwidthBps = object.get("rx_bandwidth_bps", 0).asUInt64();
    bandwidth.txBandwidthBps = object.get("tx_bandwidth_bps", 0).asUInt64();
    return bandwidth;
}

// The arrays hold two interfaces; a larger count would reach past them.
std::uint32_t clampedCount(std::uint32_t count) {
    return count < EthBandwidthInfo::kMaxInterfaces ? count : EthBandwidthInfo::kMaxInterfaces;
}

}  // namespace

EthBasicInfo::EthBasicInfo() : ipv4(0), networkMask(0), linkup(false), ifid(0) {}

void EthBasicInfo::Serialize(Json::Value& root) const {
    root["eth-name"] = Json::Value(ethName);
    root["mac"] = Json::Value(mac);
    root["linkup"] = Json::Value(linkup);
    root["ifid"] = Json::Value(Json::UInt{ifid});
    root["ipv4"] = Json::Value(dottedText(ipv4));
    root["network-mask"] = Json::Value(dottedText(networkMask));
    sfp.Serialize(root["sfp"]);
}

void EthBasicInfo::Deserialize(Json::Value& root) {
    ethName = root.get("eth-name", "").asString();
    mac = root.get("mac", "").asString();
    linkup = root.get("linkup", false).asBool();
    ifid = root.get("ifid", 0).asUInt();
    readAddress(root, "ipv4", ipv4);
    readAddress(root, "network-mask", networkMask);
    sfp.Deserialize(root["sfp"]);
}

EthBandwidthInfo::EthBandwidthInfo() : cpuBandwidth(), linkBandwidth(), ethCount(0) {}

void EthBandwidthInfo::Serialize(Json::Value& root) const {
    const std::uint32_t count = clampedCount(ethCount);
    root["ethCount"] = Json::Value(Json::UInt{count});
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        writeBandwidth(root["cpuBandwidth"][i], cpuBandwidth[i]);
        writeBandwidth(root["linkBandwidth"][i], linkBandwidth[i]);
    }
}

void EthBandwidthInfo::Deserialize(Json::Value& root) {
    ethCount = clampedCount(root.get("ethCount", 0).asUInt());
    for (Json::ArrayIndex i = 0; i < ethCount; ++i) {
        cpuBandwidth[i] = readBandwidth(root["cpuBandwidth"][i]);
        linkBandwidth[i] = readBandwidth(root["linkBandwidth"][i]);
    }
}
