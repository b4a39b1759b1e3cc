#pragma once

#include <json/json.h>

#include <cstdint>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

// Error statistics of one channel. The processes that monitor channels derive the concrete
// class: it supplies the constructor that initialises the three fields, the destructor and
// the interface's const Serialize, which stays pure here.
//
// JSON form, written by the non-const Serialize below:
//   "channel-id"      int     the channel number, written signed: 4294967295 is written as -1
//   "error-detected"  bool
//   "error-cnt"       uint64
// That Serialize is neither virtual nor const, so it does not override the interface's:
// it is reached only by a direct call on a non-const ChannelTPCStats (or a derived class
// that does not hide the name), never through an IJsonSerializable reference, where the
// derived class's const Serialize runs instead.
//
// Reading takes 0, false and 0 for missing keys. "channel-id" is written signed and read
// unsigned, so channel numbers above 2147483647 do not read back.
// Members that throw: "channel-id", "error-cnt", "error-detected".
class ZELCT_API ChannelTPCStats : public IJsonSerializable {
public:
    // Redeclared (still pure) beside the non-const one, so the name is overloaded rather than
    // hidden; compilers that warn about hidden virtuals stay quiet and calls resolve alike.
    void Serialize(Json::Value& root) const override = 0;
    void Serialize(Json::Value& root);
    void Deserialize(Json::Value& root) override;

    uint32_t channelId;
    bool errorDetected;
    uint64_t errorCount;
};
