#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>

#include "IJsonSerializable.h"
#include "SfpInfo.h"
#include "zelCommonTypesExport.h"

/// One Ethernet interface of the device: name, IPv4 address and mask, MAC text, link state,
/// interface index and the SFP module plugged into it.
///
/// JSON form, written into the object handed over (keys in this order):
/// ~~~
///   "eth-name"      string  interface name
///   "mac"           string  MAC address, kept as text
///   "linkup"        bool    link state
///   "ifid"          uint    interface index
///   "ipv4"          string  address in dotted-decimal text ("192.168.1.10")
///   "network-mask"  string  mask in dotted-decimal text ("255.255.255.0")
///   "sfp"           object  the SfpInfo, written into the member in place
/// ~~~
///
/// The address and the mask are held in host byte order. Reading parses each dotted text as
/// an IPv4 address; a text that does not parse (a missing or empty member, a number, which
/// jsoncpp turns into its decimal text, or "10.0.0.300") keeps the previous value and logs
/// ~~~
///   ERR::Error parsing IP '<text>': invalid IP address
/// ~~~
/// Writing formats into a buffer of its own, so records may be written by several threads at
/// once, each on its own record.
///
/// Members that throw: "eth-name", "ifid", "ipv4", "linkup", "mac", "network-mask", "sfp".
class ZELCOMMONTYPES_API EthBasicInfo : public IJsonSerializable {
public:
    /// Empty name and MAC text, address and mask 0, link down, index 0, no SFP module.
    EthBasicInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    std::string ethName;        ///< Interface name ("eth-name").
    std::uint32_t ipv4;         ///< host byte order
    std::uint32_t networkMask;  ///< host byte order
    std::string mac;            ///< MAC address as text ("mac").
    bool linkup;                ///< Link state ("linkup").
    std::uint32_t ifid;         ///< Interface index ("ifid").
    SfpInfo sfp;                ///< SFP module plugged into the interface ("sfp").
};

/// Receive and transmit bandwidth of at most two Ethernet interfaces, as seen by the
/// processor and on the link.
///
/// JSON form, written into the object handed over:
/// ~~~
///   "ethCount"       uint   number of interfaces described, at most 2 (see below)
///   "cpuBandwidth"   array  one object per interface: "rx_bandwidth_bps", "tx_bandwidth_bps"
///   "linkBandwidth"  array  the same shape, for the link
/// ~~~
/// With a count of 0 only "ethCount" is written, and reading stops after it.
///
/// The record has room for two interfaces, and a count above 2 is clamped to 2 on both
/// sides, so that nothing is ever read from or written to beyond the two entries and the
/// document always says how many entries it carries:
///   - Serialize writes "ethCount" as the clamped count and that many entries; the record
///     itself keeps whatever count the caller put in it.
///   - Deserialize stores the clamped count and reads that many entries; entries beyond it
///     in the document are ignored.
/// Reading reaches the arrays and their elements through the non-const member access, so a
/// document that lacks them gains null members and elements.
///
/// The arrays are read only for a count above 0; then each must be an array or null.
/// Members that throw: "cpuBandwidth", "ethCount", "linkBandwidth".
class ZELCOMMONTYPES_API EthBandwidthInfo : public IJsonSerializable {
public:
    /// Bits per second in each direction.
    struct Bandwidth {
        std::uint64_t rxBandwidthBps;  ///< Receive ("rx_bandwidth_bps").
        std::uint64_t txBandwidthBps;  ///< Transmit ("tx_bandwidth_bps").
    };

    /// Interfaces the record has room for; a larger count is clamped to it.
    static constexpr std::uint32_t kMaxInterfaces = 2;

    /// Count 0, every bandwidth 0.
    EthBandwidthInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    Bandwidth cpuBandwidth[kMaxInterfaces];   ///< As seen by the processor ("cpuBandwidth").
    Bandwidth linkBandwidth[kMaxInterfaces];  ///< On the link ("linkBandwidth").
    std::uint32_t ethCount;                   ///< Interfaces described ("ethCount").
};
