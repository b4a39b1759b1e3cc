#include "ChannelList.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "FileUtil.h"
#include "LogCapture.h"

namespace {

using Lines = std::vector<LogCapture::Line>;

struct Row {
    int id;
    int kind;
    std::string name;
    int position;

    bool operator==(const Row& other) const {
        return id == other.id && kind == other.kind && name == other.name &&
               position == other.position;
    }
};

std::ostream& operator<<(std::ostream& os, const Row& r) {
    return os << "{" << r.id << ", " << r.kind << ", " << r.name << ", " << r.position << "}";
}

std::vector<Row> rows(const ChannelList& list) {
    std::vector<Row> out;
    for (const ChannelId& c : list.getList()) {
        out.push_back({c.getId(), c.getType().getValue(), c.getType().getName(), c.getPosition()});
    }
    return out;
}

const Logger::logDebugLevel_t debug = Logger::logDebug;

}  // namespace

TEST(ChannelList, AddChannelAppendsCopiesInOrderAndKeepsDuplicates) {
    ChannelList list;
    ChannelId a(1, "madi", 0);
    EXPECT_EQ(list.addChannel(a), 0);
    EXPECT_EQ(list.addChannel(ChannelId(2, "aes3", 1)), 0);
    EXPECT_EQ(list.addChannel(a), 0);
    a.setId(99);
    EXPECT_EQ(rows(list),
              (std::vector<Row>{{1, 3, "madi", 0}, {2, 4, "aes3", 1}, {1, 3, "madi", 0}}));
    EXPECT_EQ(list.numChannelEntries(), 3);
}

TEST(ChannelList, RemoveChannelRemovesFirstFullMatchOnly) {
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 0));
    list.addChannel(ChannelId(2, "madi", 1));
    list.addChannel(ChannelId(1, "madi", 0));
    ChannelId target(1, "madi", 0);
    EXPECT_EQ(list.removeChannel(target), 1);
    EXPECT_EQ(rows(list), (std::vector<Row>{{2, 3, "madi", 1}, {1, 3, "madi", 0}}));
}

TEST(ChannelList, RemoveChannelComparesIdPositionAndKindNumber) {
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 0));
    ChannelId otherPosition(1, "madi", 1);
    ChannelId otherKind(1, "aes3", 0);
    ChannelId otherId(2, "madi", 0);
    EXPECT_EQ(list.removeChannel(otherPosition), 0);
    EXPECT_EQ(list.removeChannel(otherKind), 0);
    EXPECT_EQ(list.removeChannel(otherId), 0);
    EXPECT_EQ(list.numChannelEntries(), 1);
    // The kind is compared by number: the name's case does not matter.
    ChannelId sameKindOtherName(1, "AES10", 0);
    EXPECT_EQ(list.removeChannel(sameKindOtherName), 1);
    EXPECT_EQ(list.numChannelEntries(), 0);
}

TEST(ChannelList, RemoveChannelOnEmptyListReturnsZero) {
    ChannelList list;
    ChannelId c(1, "madi", 0);
    EXPECT_EQ(list.removeChannel(c), 0);
}

TEST(ChannelList, RemoveLocalChannelOfOnlyChannelAtPositionLeavesDummy) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(3, "madi", 2));
    ChannelId target(3, "madi", 2);
    EXPECT_EQ(list.removeLocalChannel(target), 1);
    EXPECT_EQ(rows(list), (std::vector<Row>{{-1, 3, "madi", 2}}));
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.numChannelEntries(), 1);
    EXPECT_EQ(list.getStreamSideChannelCount(), 1);
    EXPECT_EQ(log.lines(),
              (Lines{logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - removing channel "
                             "'CH[3] POS [2] Type [madi]'"),
                     logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - did not find another "
                             "channel entry using position '2' - creating dummy entry")}));
}

TEST(ChannelList, DummyTakesTheNameOfTheKindNumber) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(3, "SDI-Audio", 5));
    ChannelId target(3, "sdi-AUDIO", 5);
    EXPECT_EQ(list.removeLocalChannel(target), 1);
    EXPECT_EQ(rows(list), (std::vector<Row>{{-1, 6, "sdi-audio", 5}}));
    // The removal line describes the entry found, in its own case.
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(log.lines()[0], logLine(debug,
                                      "DBG::ChannelList::removeLocalChannel - removing channel "
                                      "'CH[3] POS [5] Type [SDI-Audio]'"));
}

TEST(ChannelList, RemoveLocalChannelSharingPositionAddsNoDummyAndLogsTheOther) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 2));
    list.addChannel(ChannelId(7, "aes3", 3));
    list.addChannel(ChannelId(4, "aes3", 2));
    ChannelId target(1, "madi", 2);
    EXPECT_EQ(list.removeLocalChannel(target), 1);
    EXPECT_EQ(rows(list), (std::vector<Row>{{7, 4, "aes3", 3}, {4, 4, "aes3", 2}}));
    EXPECT_EQ(log.lines(),
              (Lines{logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - removing channel "
                             "'CH[1] POS [2] Type [madi]'"),
                     logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - found another channel "
                             "entry using position '2' ('CH[4] POS [2] Type [aes3]')")}));
}

TEST(ChannelList, RemoveLocalChannelIgnoresPositionButRemoveChannelDoesNot) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(3, "madi", 4));
    ChannelId target(3, "madi", 0);
    EXPECT_EQ(list.removeChannel(target), 0);
    EXPECT_EQ(list.removeLocalChannel(target), 1);
    // The dummy keeps the position of the entry removed, not the argument's.
    EXPECT_EQ(rows(list), (std::vector<Row>{{-1, 3, "madi", 4}}));
    EXPECT_EQ(log.lines(),
              (Lines{logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - removing channel "
                             "'CH[3] POS [4] Type [madi]'"),
                     logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - did not find another "
                             "channel entry using position '4' - creating dummy entry")}));
}

TEST(ChannelList, RemoveLocalChannelTakesTheFirstMatch) {
    ChannelList list;
    list.addChannel(ChannelId(3, "madi", 1));
    list.addChannel(ChannelId(3, "madi", 6));
    ChannelId target(3, "madi", 6);
    EXPECT_EQ(list.removeLocalChannel(target), 1);
    EXPECT_EQ(rows(list), (std::vector<Row>{{3, 3, "madi", 6}, {-1, 3, "madi", 1}}));
}

TEST(ChannelList, RemoveLocalChannelNotFoundLogsTheArgumentAndKeepsTheList) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(3, "madi", 2));
    ChannelId otherKind(3, "aes3", 2);
    EXPECT_EQ(list.removeLocalChannel(otherKind), 0);
    ChannelId otherId(9, "madi", 1);
    EXPECT_EQ(list.removeLocalChannel(otherId), 0);
    EXPECT_EQ(rows(list), (std::vector<Row>{{3, 3, "madi", 2}}));
    EXPECT_EQ(log.lines(),
              (Lines{logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - did not find channel "
                             "'CH[3] POS [2] Type [aes3]' in list"),
                     logLine(debug,
                             "DBG::ChannelList::removeLocalChannel - did not find channel "
                             "'CH[9] POS [1] Type [madi]' in list")}));
}

TEST(ChannelList, RemoveLocalChannelOnEmptyListReturnsZero) {
    LogCapture log;
    ChannelList list;
    ChannelId target(-1, "madi", 0);
    EXPECT_EQ(list.removeLocalChannel(target), 0);
    EXPECT_EQ(list.numChannelEntries(), 0);
    EXPECT_EQ(log.lines(), (Lines{logLine(debug,
                                          "DBG::ChannelList::removeLocalChannel - did not find "
                                          "channel 'CH[-1] POS [0] Type [auto]' in list")}));
}

TEST(ChannelList, IsEmptyIgnoresDummies) {
    ChannelList list;
    EXPECT_TRUE(list.isEmpty());
    list.addChannel(ChannelId(-1, "madi", 0));
    list.addChannel(ChannelId(-1, "madi", 1));
    EXPECT_TRUE(list.isEmpty());
    list.addChannel(ChannelId(0, "madi", 2));
    EXPECT_FALSE(list.isEmpty());
}

TEST(ChannelList, ClearChannelListRemovesEverything) {
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 0));
    list.addChannel(ChannelId(-1, "madi", 1));
    list.clearChannelList();
    EXPECT_EQ(list.numChannelEntries(), 0);
    EXPECT_TRUE(list.getList().empty());
}

TEST(ChannelList, StreamSideChannelCountIsDistinctPositions) {
    ChannelList list;
    EXPECT_EQ(list.getStreamSideChannelCount(), 0);
    for (int position : {5, 0, 1, 0}) {
        list.addChannel(ChannelId(position + 10, "madi", static_cast<unsigned char>(position)));
    }
    EXPECT_EQ(list.getStreamSideChannelCount(), 3);
    list.addChannel(ChannelId(-1, "madi", 9));
    EXPECT_EQ(list.getStreamSideChannelCount(), 4);
    EXPECT_EQ(list.numChannelEntries(), 5);
}

TEST(ChannelList, DumpLogsLabelAndEveryEntry) {
    LogCapture log;
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 0));
    list.addChannel(ChannelId(-1, "AES3", 7));
    list.addChannel(ChannelId(12, "SDI-Audio", 255));
    list.dump("after load");
    const Logger::logDebugLevel_t verbose = Logger::logVerbose;
    EXPECT_EQ(log.lines(),
              (Lines{logLine(verbose, "VBS::Channel list at 'after load'"),
                     logLine(verbose, "VBS::Channel: type 'madi' ID '1' position '0'"),
                     logLine(verbose, "VBS::Channel: type 'auto' ID '-1' position '7'"),
                     logLine(verbose, "VBS::Channel: type 'SDI-Audio' ID '12' position '255'")}));
}

TEST(ChannelList, DumpOfEmptyListLogsTheLabelOnly) {
    LogCapture log;
    ChannelList list;
    list.dump("");
    EXPECT_EQ(log.lines(), (Lines{logLine(Logger::logVerbose, "VBS::Channel list at ''")}));
}

TEST(ChannelList, DeserializeIntoEmptyListNumbersMissingPositions) {
    ChannelList list;
    Json::Value in = parseJson(R"([{"id": 1, "type": "madi"}, {"id": 2, "type": "madi"}])");
    list.Deserialize(in);
    EXPECT_EQ(rows(list), (std::vector<Row>{{1, 3, "madi", 0}, {2, 3, "madi", 1}}));
}

TEST(ChannelList, DeserializeAppendsAndCountsHeldEntriesForMissingPositions) {
    ChannelList list;
    list.addChannel(ChannelId(7, "aes3", 9));
    list.addChannel(ChannelId(8, "aes3", 9));
    list.addChannel(ChannelId(9, "aes3", 9));
    Json::Value in = parseJson(R"([{"id": 1, "type": "madi"}, {"id": 2, "type": "madi"}])");
    list.Deserialize(in);
    EXPECT_EQ(rows(list), (std::vector<Row>{{7, 4, "aes3", 9},
                                            {8, 4, "aes3", 9},
                                            {9, 4, "aes3", 9},
                                            {1, 3, "madi", 3},
                                            {2, 3, "madi", 4}}));
}

TEST(ChannelList, DeserializeKeepsGivenPositionsAndReplacesOnly255) {
    ChannelList list;
    Json::Value in = parseJson(R"([{"id": 1, "position": 6}, {"id": 2, "position": 255},
                                   {"id": 3, "position": 511}, 4])");
    list.Deserialize(in);
    EXPECT_EQ(rows(list),
              (std::vector<Row>{
                  {1, 12, "auto", 6}, {2, 12, "auto", 1}, {3, 12, "auto", 2}, {4, 12, "auto", 3}}));
}

TEST(ChannelList, DeserializedPositionTakesEntryCountInEightBits) {
    ChannelList list;
    for (int i = 0; i < 257; ++i) {
        list.addChannel(ChannelId(i, "madi", 0));
    }
    Json::Value in = parseJson(R"([{"id": 500}])");
    list.Deserialize(in);
    EXPECT_EQ(list.getList().back().getId(), 500);
    EXPECT_EQ(list.getList().back().getPosition(), 1);
}

TEST(ChannelList, DeserializeTwiceAppendsTwice) {
    ChannelList list;
    Json::Value in = parseJson(R"([{"id": 1, "type": "tdm", "position": 0}])");
    list.Deserialize(in);
    list.Deserialize(in);
    EXPECT_EQ(rows(list), (std::vector<Row>{{1, 0, "tdm", 0}, {1, 0, "tdm", 0}}));
}

TEST(ChannelList, DeserializeOfScalarReadsNothingAndOfObjectThrows) {
    ChannelList list;
    Json::Value null;
    Json::Value number(3);
    list.Deserialize(null);
    list.Deserialize(number);
    EXPECT_EQ(list.numChannelEntries(), 0);
    Json::Value object = parseJson(R"({"id": 1})");
    EXPECT_THROW(list.Deserialize(object), Json::LogicError);
}

TEST(ChannelList, BadElementThrowsAfterEarlierElementsWereAppended) {
    ChannelList list;
    Json::Value in = parseJson(R"([{"id": 1}, {"id": [1]}])");
    EXPECT_THROW(list.Deserialize(in), Json::LogicError);
    EXPECT_EQ(rows(list), (std::vector<Row>{{1, 12, "auto", 0}}));
}

TEST(ChannelList, EmptyListSerializesToNothing) {
    ChannelList list;
    Json::Value null;
    list.Serialize(null);
    EXPECT_TRUE(null.isNull());
    Json::Value object = parseJson(R"({"kept": 1})");
    list.Serialize(object);
    EXPECT_EQ(object, parseJson(R"({"kept": 1})"));
}

TEST(ChannelList, SerializeWritesBareArrayInOrder) {
    ChannelList list;
    list.addChannel(ChannelId(1, "aes10", 0));
    list.addChannel(ChannelId(-1, "auto", 3));
    Json::Value out;
    list.Serialize(out);
    EXPECT_EQ(out, parseJson(R"([{"id": 1, "type": "madi", "position": 0},
                                 {"id": -1, "type": "auto", "position": 3}])"));
}

TEST(ChannelList, SerializeOverLongerArrayLeavesStaleElements) {
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 0));
    list.addChannel(ChannelId(2, "madi", 1));
    Json::Value out = parseJson(R"([{"old": 0}, {"old": 1}, "c", "d", "e"])");
    list.Serialize(out);
    EXPECT_EQ(out, parseJson(R"([{"old": 0, "id": 1, "type": "madi", "position": 0},
                                 {"old": 1, "id": 2, "type": "madi", "position": 1},
                                 "c", "d", "e"])"));
}

TEST(ChannelList, SerializeThenDeserializeReproducesTheList) {
    ChannelList list;
    list.addChannel(ChannelId(1, "madi", 4));
    list.addChannel(ChannelId(2, "I32S", 0));
    list.addChannel(ChannelId(-1, "hdmi-audio", 9));
    Json::Value out;
    list.Serialize(out);
    ChannelList back;
    back.Deserialize(out);
    EXPECT_EQ(rows(back), rows(list));
}
