#include "SessionStreamList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "FileUtil.h"
#include "ModelCompare.h"

namespace {

// Unsigned numbers are written as jsoncpp's unsigned kind while parsed text gives the signed
// one, and Json::Value's equality tells the kinds apart: compare the written text instead.
std::string styled(const Json::Value& v) {
    return v.toStyledString();
}

constexpr uint64_t kMax64 = 18446744073709551615ULL;

SessionStreamBasics sample(uint64_t base) {
    SessionStreamBasics r;
    r.session = base + 1;
    r.stream = base + 2;
    r.streamHwId = static_cast<uint32_t>(base + 3);
    r.name = "name-" + std::to_string(base);
    r.streamName = "stream-" + std::to_string(base);
    r.state.setValue(State::STATE_ENABLED);
    r.remoteSid = base + 4;
    r.type.setValue(StreamType::STREAM_VIDEO);
    r.redundantType = "2022-7";
    return r;
}

}  // namespace

TEST(SessionStreamBasics, FreshRecordHoldsZerosAndEmptyTexts) {
    SessionStreamBasics r;
    EXPECT_EQ(r.session, 0u);
    EXPECT_EQ(r.stream, 0u);
    EXPECT_EQ(r.streamHwId, 0u);
    EXPECT_EQ(r.name, "");
    EXPECT_EQ(r.streamName, "");
    EXPECT_EQ(r.state.getValue(), 0);
    EXPECT_EQ(r.remoteSid, 0u);
    EXPECT_EQ(r.type.getValue(), 0);
    EXPECT_EQ(r.redundantType, "");
}

TEST(SessionStreamBasics, FreshRecordSerializesEveryKey) {
    SessionStreamBasics r;
    Json::Value out;
    r.Serialize(out);
    EXPECT_EQ(styled(out),
              styled(parseJson(R"({"stream": 0, "stream-hw-id": 0, "session": 0, "name": "",
                                 "stream-name": "", "remote-sid": 0, "remote-sid-str": "0",
                                 "redundant-type": "", "type": "undefined",
                                 "state": "Disabled"})")));
}

TEST(SessionStreamBasics, SerializeWritesFilledRecordAndKeepsOtherKeys) {
    SessionStreamBasics r = sample(100);
    Json::Value out;
    out["other"] = 5;
    r.Serialize(out);
    EXPECT_EQ(styled(out),
              styled(parseJson(R"({"other": 5, "stream": 102, "stream-hw-id": 103, "session": 101,
                                 "name": "name-100", "stream-name": "stream-100",
                                 "remote-sid": 104, "remote-sid-str": "104",
                                 "redundant-type": "2022-7", "type": "video",
                                 "state": "Enabled"})")));
    EXPECT_TRUE(out["stream-hw-id"].isUInt());
}

TEST(SessionStreamBasics, LargestRemoteSessionIdIsWrittenAsDecimalText) {
    SessionStreamBasics r;
    r.remoteSid = kMax64;
    Json::Value out;
    r.Serialize(out);
    EXPECT_EQ(out["remote-sid-str"].asString(), "18446744073709551615");
    EXPECT_EQ(out["remote-sid"].asUInt64(), kMax64);
}

TEST(SessionStreamBasics, LargestIdsSurviveARoundTrip) {
    SessionStreamBasics r = sample(0);
    r.session = kMax64;
    r.stream = kMax64 - 1;
    r.remoteSid = kMax64;
    r.streamHwId = 4294967295u;
    Json::Value out;
    r.Serialize(out);
    Json::Value reparsed = parseJson(out.toStyledString());
    SessionStreamBasics back;
    back.Deserialize(reparsed);
    expectSameStream(back, r);
}

TEST(SessionStreamBasics, RemoteSidStrIsNeverRead) {
    SessionStreamBasics r;
    Json::Value onlyText = parseJson(R"({"remote-sid-str": "42"})");
    r.Deserialize(onlyText);
    EXPECT_EQ(r.remoteSid, 0u);
    Json::Value both = parseJson(R"({"remote-sid": 5, "remote-sid-str": "42"})");
    r.Deserialize(both);
    EXPECT_EQ(r.remoteSid, 5u);
}

TEST(SessionStreamBasics, HardwareIdKeepsItsLowThirtyTwoBits) {
    SessionStreamBasics r;
    Json::Value in = parseJson(R"({"stream-hw-id": 4294967303})");
    r.Deserialize(in);
    EXPECT_EQ(r.streamHwId, 7u);
}

TEST(SessionStreamBasics, ReadingTestTypeIntoFreshRecordLeavesItUndefined) {
    SessionStreamBasics r;
    Json::Value in = parseJson(R"({"type": "test"})");
    r.Deserialize(in);
    EXPECT_EQ(r.type.getValue(), 0);
    Json::Value out;
    r.Serialize(out);
    EXPECT_EQ(out["type"].asString(), "undefined");
}

TEST(SessionStreamBasics, UnknownTypeTextKeepsTheType) {
    SessionStreamBasics r;
    r.type.setValue(StreamType::STREAM_ANCILLARY);
    for (const std::string& text : {std::string(R"({"type": "test"})"),
                                    std::string(R"({"type": "Audio"})"), std::string("{}")}) {
        Json::Value in = parseJson(text);
        r.Deserialize(in);
        EXPECT_EQ(r.type.getValue(), 3) << text;
    }
    Json::Value audio = parseJson(R"({"type": "audio"})");
    r.Deserialize(audio);
    EXPECT_EQ(r.type.getValue(), 1);
}

TEST(SessionStreamBasics, WritesEveryTypeAndStateName) {
    const std::pair<int, const char*> types[] = {{1, "audio"}, {2, "video"},     {3, "ancillary"},
                                                 {4, "test"},  {0, "undefined"}, {9, "undefined"}};
    for (const auto& row : types) {
        SessionStreamBasics r;
        r.type.setValue(row.first);
        Json::Value out;
        r.Serialize(out);
        EXPECT_EQ(out["type"].asString(), row.second) << row.first;
    }
    const std::pair<int, const char*> states[] = {
        {0, "Disabled"}, {1, "Enabled"}, {2, "Paused"}, {3, "Undefined"}, {-1, "Undefined"}};
    for (const auto& row : states) {
        SessionStreamBasics r;
        r.state.setValue(row.first);
        Json::Value out;
        r.Serialize(out);
        EXPECT_EQ(out["state"].asString(), row.second) << row.first;
    }
}

TEST(SessionStreamBasics, StateReadsExactNamesAndFallsToDisabled) {
    const std::pair<const char*, int> rows[] = {{R"({"state": "Enabled"})", 1},
                                                {R"({"state": "Paused"})", 2},
                                                {R"({"state": "Disabled"})", 0},
                                                {R"({"state": "enabled"})", 0},
                                                {"{}", 0}};
    for (const auto& row : rows) {
        SessionStreamBasics r;
        r.state.setValue(State::STATE_PAUSED);
        Json::Value in = parseJson(row.first);
        r.Deserialize(in);
        EXPECT_EQ(r.state.getValue(), row.second) << row.first;
    }
}

TEST(SessionStreamBasics, EmptyObjectReadsRedundantTypeAsNone) {
    SessionStreamBasics fresh;
    EXPECT_EQ(fresh.redundantType, "");
    SessionStreamBasics r = sample(7);
    Json::Value in(Json::objectValue);
    r.Deserialize(in);
    EXPECT_EQ(r.redundantType, "none");
    EXPECT_EQ(r.session, 0u);
    EXPECT_EQ(r.stream, 0u);
    EXPECT_EQ(r.streamHwId, 0u);
    EXPECT_EQ(r.name, "");
    EXPECT_EQ(r.streamName, "");
    EXPECT_EQ(r.remoteSid, 0u);
    EXPECT_EQ(r.state.getValue(), 0);
    EXPECT_EQ(r.type.getValue(), 2);  // no type text: the type stays
    EXPECT_TRUE(in.empty());
}

TEST(SessionStreamBasics, NullReadsLikeEmptyObject) {
    SessionStreamBasics r = sample(7);
    Json::Value in;
    r.Deserialize(in);
    EXPECT_EQ(r.redundantType, "none");
    EXPECT_EQ(r.session, 0u);
}

TEST(SessionStreamBasics, UnconvertibleMemberThrowsAfterEarlierMembersWereRead) {
    SessionStreamBasics r = sample(7);
    Json::Value in = parseJson(R"({"stream": 9, "stream-hw-id": 4, "session": -1})");
    EXPECT_THROW(r.Deserialize(in), Json::LogicError);
    EXPECT_EQ(r.stream, 9u);
    EXPECT_EQ(r.streamHwId, 4u);
    EXPECT_EQ(r.session, 8u);
    EXPECT_EQ(r.name, "name-7");
}

TEST(SessionStreamList, EmptyListWritesNothing) {
    SessionStreamList list;
    Json::Value null;
    list.Serialize(null);
    EXPECT_TRUE(null.isNull());
    Json::Value array = parseJson("[1, 2]");
    list.Serialize(array);
    EXPECT_EQ(array, parseJson("[1, 2]"));
}

TEST(SessionStreamList, SerializeWritesRecordsInOrder) {
    SessionStreamList list;
    list.add(sample(10));
    list.add(sample(20));
    Json::Value out;
    list.Serialize(out);
    ASSERT_TRUE(out.isArray());
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0u]["session"].asUInt64(), 11u);
    EXPECT_EQ(out[1u]["session"].asUInt64(), 21u);
    EXPECT_EQ(out[1u]["name"].asString(), "name-20");
}

TEST(SessionStreamList, SerializeOverLongerArrayLeavesStaleElements) {
    SessionStreamList list;
    list.add(sample(10));
    Json::Value out = parseJson(R"([{}, "b", "c"])");
    list.Serialize(out);
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0u]["stream"].asUInt64(), 12u);
    EXPECT_EQ(out[1u], Json::Value("b"));
    EXPECT_EQ(out[2u], Json::Value("c"));
}

TEST(SessionStreamList, DeserializingTheSameArrayTwiceAppendsAgain) {
    SessionStreamList source;
    source.add(sample(10));
    source.add(sample(20));
    source.add(sample(30));
    Json::Value doc;
    source.Serialize(doc);

    SessionStreamList list;
    list.Deserialize(doc);
    list.Deserialize(doc);
    ASSERT_EQ(list.getList().size(), 6u);
    const uint64_t expected[] = {11, 21, 31, 11, 21, 31};
    size_t i = 0;
    for (const SessionStreamBasics& r : list.getList()) {
        EXPECT_EQ(r.session, expected[i]) << i;
        ++i;
    }
}

TEST(SessionStreamList, RoundTripReproducesEveryRecord) {
    SessionStreamList source;
    source.add(sample(10));
    SessionStreamBasics second = sample(kMax64 - 10);
    second.state.setValue(State::STATE_PAUSED);
    second.type.setValue(StreamType::STREAM_AUDIO);
    source.add(second);
    Json::Value doc;
    source.Serialize(doc);
    SessionStreamList back;
    back.Deserialize(doc);
    ASSERT_EQ(back.getList().size(), 2u);
    expectSameStream(back.getList().front(), source.getList().front());
    expectSameStream(back.getList().back(), source.getList().back());
}

TEST(SessionStreamList, ScalarReadsNothingAndObjectThrows) {
    SessionStreamList list;
    Json::Value text("abc");
    list.Deserialize(text);
    EXPECT_TRUE(list.getList().empty());
    Json::Value object = parseJson(R"({"session": 1})");
    EXPECT_THROW(list.Deserialize(object), Json::LogicError);
}
