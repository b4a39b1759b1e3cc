#pragma once

// Field-by-field comparisons of channel model records, shared by the round-trip tests.
#include <gtest/gtest.h>

#include <string>

#include "ChannelTableEntry.h"
#include "ChannelTables.h"
#include "SessionStreamList.h"

inline void expectSameStream(const SessionStreamBasics& a, const SessionStreamBasics& b) {
    EXPECT_EQ(a.session, b.session);
    EXPECT_EQ(a.stream, b.stream);
    EXPECT_EQ(a.streamHwId, b.streamHwId);
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.streamName, b.streamName);
    EXPECT_EQ(a.state.getValue(), b.state.getValue());
    EXPECT_EQ(a.remoteSid, b.remoteSid);
    EXPECT_EQ(a.type.getValue(), b.type.getValue());
    EXPECT_EQ(a.redundantType, b.redundantType);
}

inline void expectSameEntry(const ChannelTableEntry& a, const ChannelTableEntry& b) {
    EXPECT_EQ(a.id, b.id);
    EXPECT_EQ(a.nameInput, b.nameInput);
    EXPECT_EQ(a.nameOutput, b.nameOutput);
    expectSameStream(a.input, b.input);
    expectSameStream(a.output, b.output);
    EXPECT_EQ(a.blocked, b.blocked);
    EXPECT_EQ(a.mediaType.getValue(), b.mediaType.getValue());
    EXPECT_EQ(a.mediaType.getName(), b.mediaType.getName());
    EXPECT_EQ(a.capabilities.getValue(), b.capabilities.getValue());
    EXPECT_EQ(a.capabilities.getName(), b.capabilities.getName());
}

inline void expectSameTable(const ChannelTable& a, const ChannelTable& b) {
    EXPECT_EQ(a.type.getValue(), b.type.getValue());
    EXPECT_EQ(a.type.getName(), b.type.getName());
    ASSERT_EQ(a.entries.size(), b.entries.size());
    auto ia = a.entries.begin();
    for (auto ib = b.entries.begin(); ib != b.entries.end(); ++ia, ++ib) {
        SCOPED_TRACE("entry " + std::to_string(ib->id));
        expectSameEntry(*ia, *ib);
    }
}
