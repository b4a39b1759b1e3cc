#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>

#include "DaifType.h"
#include "IJsonSerializable.h"
#include "SessionStreamList.h"
#include "zelCommonTypesExport.h"

// One row of a channel table: a channel of a physical interface with its names, the
// network streams on its input and output side, a blocked flag, its media type and the
// directions it supports.
//
// JSON form:
//   "id"            int
//   "name-input"    string
//   "name"          string  the output name again, part of the format; never read back
//   "name-output"   string  the output name
//   "blocked"       bool
//   "input"         object  a session stream record
//   "output"        object  a session stream record
//   "media-type"    object  {"media-type": 0, "string": "audio"}
//   "capabilities"  object  {"capability": 0, "string": "inout"}
// Names are written up to their first NUL byte.
//
// Reading differs from construction where keys are missing: "id" reads as -1 (a fresh entry
// holds 0) and a missing media type reads as 3 with an empty name (a fresh entry holds 0
// "audio"). Reading reaches "input", "output", "media-type" and "capabilities" through
// the mutable member access, so missing ones are added to the caller's document as null
// members. "name" is never read, so it never throws.
// Members that throw: "blocked", "capabilities", "id", "input", "media-type", "name-input",
// "name-output", "output".
class ZELCOMMONTYPES_API ChannelTableEntry : public IJsonSerializable {
public:
    ChannelTableEntry();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    int id;
    std::string nameInput;
    std::string nameOutput;
    SessionStreamBasics input;
    SessionStreamBasics output;
    bool blocked;
    DaifMediaType mediaType;
    DaifCapabilities capabilities;
};

// How a channel is used at run time, per direction, with the session streams that use it.
// Not serializable. number, inputUsage and outputUsage are left unset by the constructor:
// assign the usage codes before calling usageToString.
class ZELCOMMONTYPES_API ChannelInfo {
public:
    enum ChannelDirection_en : uint32_t {
        CHANNEL_DIRECTION_INPUT = 0,
        CHANNEL_DIRECTION_OUTPUT = 1
    };

    // Every code other than free and used reads as blocked.
    enum ChannelUsage_en : uint32_t {
        CHANNEL_USAGE_FREE = 0,
        CHANNEL_USAGE_USED = 1,
        CHANNEL_USAGE_BLOCKED = 2
    };

    ChannelInfo();
    ~ChannelInfo();

    // Text of the usage code of the direction: input for CHANNEL_DIRECTION_INPUT, output for
    // any other value. "free", "used", or "blocked" for any other code.
    std::string usageToString(ChannelDirection_en direction) const;

    int number;
    ChannelUsage_en inputUsage;
    ChannelUsage_en outputUsage;
    std::string inputName;
    std::string outputName;
    int reference;
    DaifType daifType;
    DaifMediaType mediaType;
    DaifCapabilities capabilities;
    bool enabled;
    State state;
    std::map<uint32_t, SessionStreamBasics> inputSessions;
    std::map<uint32_t, SessionStreamBasics> outputSessions;
};
