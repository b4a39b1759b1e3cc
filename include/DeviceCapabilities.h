#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// How many media IP interfaces the device has and how many streams of each media kind it
/// can send and receive. Unlike the other records it writes its own wrapper: it is handed
/// the parent object and sets in it
/// ~~~
///   "deviceCapabilities": {
///       "numMediaIpInterfaces": int,
///       "sendersStreamCount":   {"audio": int, "video": int, "ancillary": int},
///       "receiversStreamCount": {"audio": int, "video": int, "ancillary": int}
///   }
/// ~~~
///
/// Reading is deliberately lopsided: without "deviceCapabilities" nothing changes; with it,
/// a missing "numMediaIpInterfaces" reads as 0, whereas a missing "sendersStreamCount" or
/// "receiversStreamCount" leaves its three counts as they were. A count missing inside a
/// present count object reads as 0.
///
/// Members that throw: "deviceCapabilities".
class ZELCOMMONTYPES_API DeviceCapabilities : public IJsonSerializable {
public:
    /// Every count 0.
    DeviceCapabilities();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int numMediaIpInterfaces;  ///< "numMediaIpInterfaces"
    int sendersAudio;          ///< "sendersStreamCount" "audio"
    int sendersVideo;          ///< "sendersStreamCount" "video"
    int sendersAncillary;      ///< "sendersStreamCount" "ancillary"
    int receiversAudio;        ///< "receiversStreamCount" "audio"
    int receiversVideo;        ///< "receiversStreamCount" "video"
    int receiversAncillary;    ///< "receiversStreamCount" "ancillary"
};

/// The Ethernet port and TPC port of one service process. JSON, written into the object
/// handed over:
/// ~~~
///   "eth-port"  string  empty when missing
///   "tpc-port"  uint    0 when missing
/// ~~~
/// Members that throw: "eth-port", "tpc-port".
class ZELCOMMONTYPES_API ProcessBasicInfo : public IJsonSerializable {
public:
    /// Empty Ethernet port, TPC port 0.
    ProcessBasicInfo();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    std::string ethPort;    ///< Ethernet port the process uses ("eth-port").
    std::uint32_t tpcPort;  ///< TPC port ("tpc-port").
};
