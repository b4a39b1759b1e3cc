#pragma once

// Session stream records as a device holds them: several streams per session, 64-bit ids,
// names an operator typed, mostly enabled audio, some redundant.

#include <cstdint>
#include <string>

#include "SessionStreamList.h"

namespace bench {

inline SessionStreamBasics sessionRecord(int i) {
    static const char* const kSessionNames[] = {"Studio A main mix", "OB truck 2 feed",
                                                "Commentary booth", "Stage left stems"};
    SessionStreamBasics record;
    record.session = 0x5A3F2C1900000000ULL + static_cast<std::uint64_t>(i / 8);
    record.stream = 0x5A3F2C1980000000ULL + static_cast<std::uint64_t>(i);
    record.streamHwId = static_cast<std::uint32_t>(i);
    record.name = kSessionNames[(i / 8) % 4];
    record.streamName = "CAM-" + std::to_string(i / 8 + 1) + " audio " + std::to_string(i % 8 + 1);
    record.state.setValue(i % 11 == 0 ? State::STATE_PAUSED : State::STATE_ENABLED);
    record.remoteSid = 14695981039346656037ULL - static_cast<std::uint64_t>(i);
    record.type.setValue(i % 16 == 15 ? StreamType::STREAM_VIDEO : StreamType::STREAM_AUDIO);
    record.redundantType = i % 2 == 0 ? "st2022-7" : "none";
    return record;
}

}  // namespace bench
