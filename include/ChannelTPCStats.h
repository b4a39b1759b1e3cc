#pragma once

#include <json/json.h>

#include <cstdint>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// Error statistics of one channel. The processes that monitor channels derive the concrete
/// class: it supplies the constructor that initialises the three fields, the destructor and
/// the interface's const Serialize, which stays pure here.
///
/// JSON form, written by the non-const Serialize below:
/// ~~~
///   "channel-id"      int     the channel number, written signed: 4294967295 is written as -1
///   "error-detected"  bool
///   "error-cnt"       uint64
/// ~~~
/// That Serialize does not override the interface's const one: a call through an
/// IJsonSerializable reference runs the derived class's writer instead.
///
/// Reading takes 0, false and 0 for missing keys. "channel-id" is written signed and read
/// unsigned, so channel numbers above 2147483647 do not read back.
/// Members that throw: "channel-id", "error-cnt", "error-detected".
class ZELCOMMONTYPES_API ChannelTPCStats : public IJsonSerializable {
public:
    /// Declared again beside the non-const one so that neither hides the other.
    void Serialize(Json::Value& root) const override = 0;
    /// Writes the three keys of the JSON form above into root. Reached only through this
    /// class or a class derived from it, never through an IJsonSerializable reference.
    void Serialize(Json::Value& root);
    void Deserialize(Json::Value& root) override;

    uint32_t channelId;   ///< Channel number ("channel-id").
    bool errorDetected;   ///< Whether an error was detected ("error-detected").
    uint64_t errorCount;  ///< Number of errors counted ("error-cnt").
};
