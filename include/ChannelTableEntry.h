#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>

#include "DaifType.h"
#include "IJsonSerializable.h"
#include "SessionStreamList.h"
#include "zelCommonTypesExport.h"

/// One row of a channel table: a channel of a physical interface with its names, the
/// network streams on its input and output side, a blocked flag, its media type and the
/// directions it supports.
///
/// JSON form:
/// ~~~
///   "id"            int
///   "name-input"    string
///   "name"          string  the output name again, part of the format; never read back
///   "name-output"   string  the output name
///   "blocked"       bool
///   "input"         object  a session stream record
///   "output"        object  a session stream record
///   "media-type"    object  {"media-type": 0, "string": "audio"}
///   "capabilities"  object  {"capability": 0, "string": "inout"}
/// ~~~
/// Names are written up to their first NUL byte.
///
/// Reading differs from construction where keys are missing: "id" reads as -1 (a fresh entry
/// holds 0) and a missing media type reads as 3 with an empty name (a fresh entry holds 0
/// "audio"). Reading reaches "input", "output", "media-type" and "capabilities" through
/// the mutable member access, so missing ones are added to the caller's document as null
/// members. "name" is never read, so it never throws.
/// Members that throw: "blocked", "capabilities", "id", "input", "media-type", "name-input",
/// "name-output", "output".
class ZELCOMMONTYPES_API ChannelTableEntry : public IJsonSerializable {
public:
    /// Id 0, empty names, not blocked, default stream records, media type 0 "audio",
    /// capabilities 0 "inout".
    ChannelTableEntry();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int id;                         ///< Channel number ("id").
    std::string nameInput;          ///< Name on the input side ("name-input").
    std::string nameOutput;         ///< Name on the output side ("name-output", "name").
    SessionStreamBasics input;      ///< Session stream on the input side ("input").
    SessionStreamBasics output;     ///< Session stream on the output side ("output").
    bool blocked;                   ///< Whether the channel is blocked ("blocked").
    DaifMediaType mediaType;        ///< Media the channel carries ("media-type").
    DaifCapabilities capabilities;  ///< Directions the channel supports ("capabilities").
};

/// How a channel is used at run time, per direction, with the session streams that use it.
/// Not serializable. number, inputUsage and outputUsage are left unset by the constructor:
/// assign the usage codes before calling usageToString.
class ZELCOMMONTYPES_API ChannelInfo {
public:
    /// Side of a channel whose usage usageToString reports.
    enum ChannelDirection_en : uint32_t {
        CHANNEL_DIRECTION_INPUT = 0,  ///< Input side: inputUsage.
        CHANNEL_DIRECTION_OUTPUT = 1  ///< Output side: outputUsage.
    };

    /// Every code other than free and used reads as blocked.
    enum ChannelUsage_en : uint32_t {
        CHANNEL_USAGE_FREE = 0,    ///< "free"
        CHANNEL_USAGE_USED = 1,    ///< "used"
        CHANNEL_USAGE_BLOCKED = 2  ///< "blocked"
    };

    /// Names "NA", reference 0, interface kind 12 "auto", media type 0 "audio", capabilities
    /// 0 "inout", enabled, state Disabled, no sessions; number, inputUsage and outputUsage stay
    /// unset (see the class description).
    ChannelInfo();
    /// Releases the output sessions, then the input sessions, the descriptors and the names.
    ~ChannelInfo();

    /// Text of the usage code of the direction: input for CHANNEL_DIRECTION_INPUT, output for
    /// any other value. "free", "used", or "blocked" for any other code.
    std::string usageToString(ChannelDirection_en direction) const;

    int number;                  ///< Left to the caller: no operation of the library interprets it.
    ChannelUsage_en inputUsage;  ///< Usage of the input side.
    ChannelUsage_en outputUsage;  ///< Usage of the output side.
    std::string inputName;        ///< Name on the input side.
    std::string outputName;       ///< Name on the output side.
    int reference;            ///< Left to the caller: no operation of the library interprets it.
    DaifType daifType;        ///< Kind of physical interface the channel belongs to.
    DaifMediaType mediaType;  ///< Media the channel carries.
    DaifCapabilities capabilities;  ///< Directions the channel supports.
    bool enabled;  ///< Left to the caller: no operation of the library interprets it.
    State state;   ///< State of the channel.
    /// Session streams that use the channel on the input side, under keys the caller
    /// chooses.
    std::map<uint32_t, SessionStreamBasics> inputSessions;
    /// Session streams that use the channel on the output side, under keys the caller
    /// chooses.
    std::map<uint32_t, SessionStreamBasics> outputSessions;
};
