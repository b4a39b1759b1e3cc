#include "ChannelTPCStats.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "FileUtil.h"

namespace {

// Unsigned numbers are written as jsoncpp's unsigned kind while parsed text gives the signed
// one, and Json::Value's equality tells the kinds apart: compare the written text instead.
std::string styled(const Json::Value& v) {
    return v.toStyledString();
}

// The shape a monitoring process gives the statistics: its own const Serialize, and the
// library's non-const one kept reachable for direct calls.
class MonitoredChannel : public ChannelTPCStats {
public:
    MonitoredChannel(uint32_t channel, bool detected, uint64_t count) {
        channelId = channel;
        errorDetected = detected;
        errorCount = count;
    }

    using ChannelTPCStats::Serialize;
    void Serialize(Json::Value& root) const override {
        root["monitored-channel"] = Json::Value(channelId);
        ++constCalls;
    }

    mutable int constCalls = 0;
};

const uint64_t kMax64 = 18446744073709551615ULL;

}  // namespace

TEST(ChannelTPCStats, IsAbstract) {
    EXPECT_TRUE(std::is_abstract<ChannelTPCStats>::value);
    EXPECT_TRUE((std::is_base_of<IJsonSerializable, ChannelTPCStats>::value));
    EXPECT_FALSE(std::is_abstract<MonitoredChannel>::value);
}

TEST(ChannelTPCStats, SerializingThroughTheInterfaceReachesTheDerivedConstSerialize) {
    MonitoredChannel stats(12, true, 3);
    const IJsonSerializable& object = stats;
    Json::Value out;
    object.Serialize(out);
    EXPECT_EQ(styled(out), styled(parseJson(R"({"monitored-channel": 12})")));
    EXPECT_EQ(stats.constCalls, 1);

    const MonitoredChannel& constStats = stats;
    Json::Value again;
    constStats.Serialize(again);
    EXPECT_EQ(styled(again), styled(parseJson(R"({"monitored-channel": 12})")));
    EXPECT_EQ(stats.constCalls, 2);
}

TEST(ChannelTPCStats, DirectNonConstCallWritesTheThreeKeys) {
    MonitoredChannel stats(12, true, 3);
    Json::Value out;
    out["kept"] = "yes";
    stats.Serialize(out);
    EXPECT_EQ(styled(out),
              styled(parseJson(R"({"kept": "yes", "channel-id": 12, "error-detected": true,
                                 "error-cnt": 3})")));
    EXPECT_EQ(stats.constCalls, 0);

    ChannelTPCStats& base = stats;
    Json::Value viaBase;
    base.Serialize(viaBase);
    EXPECT_EQ(styled(viaBase),
              styled(parseJson(R"({"channel-id": 12, "error-detected": true, "error-cnt": 3})")));
    EXPECT_EQ(stats.constCalls, 0);
}

TEST(ChannelTPCStats, DeserializeIsReachedThroughTheInterface) {
    MonitoredChannel stats(0, false, 0);
    IJsonSerializable& object = stats;
    Json::Value in = parseJson(R"({"channel-id": 9, "error-detected": true, "error-cnt": 41})");
    object.Deserialize(in);
    EXPECT_EQ(stats.channelId, 9u);
    EXPECT_TRUE(stats.errorDetected);
    EXPECT_EQ(stats.errorCount, 41u);
}

TEST(ChannelTPCStats, EmptyObjectGivesZeroFalseZero) {
    MonitoredChannel stats(12, true, 3);
    Json::Value in(Json::objectValue);
    stats.Deserialize(in);
    EXPECT_EQ(stats.channelId, 0u);
    EXPECT_FALSE(stats.errorDetected);
    EXPECT_EQ(stats.errorCount, 0u);
    EXPECT_TRUE(in.empty());
}

TEST(ChannelTPCStats, LargeCountsSurviveSerializeAndDeserialize) {
    for (uint64_t count : {uint64_t{4294967296ULL}, kMax64}) {
        MonitoredChannel stats(1, false, count);
        Json::Value out;
        stats.Serialize(out);
        EXPECT_TRUE(out["error-cnt"].isUInt64());
        Json::Value reparsed = parseJson(out.toStyledString());
        MonitoredChannel back(0, true, 0);
        back.Deserialize(reparsed);
        EXPECT_EQ(back.errorCount, count);
        EXPECT_EQ(back.channelId, 1u);
        EXPECT_FALSE(back.errorDetected);
    }
}

TEST(ChannelTPCStats, LargestSignedChannelNumberSurvives) {
    MonitoredChannel stats(2147483647u, false, 0);
    Json::Value out;
    stats.Serialize(out);
    EXPECT_EQ(out["channel-id"].asInt(), 2147483647);
    MonitoredChannel back(0, false, 0);
    back.Deserialize(out);
    EXPECT_EQ(back.channelId, 2147483647u);
}

TEST(ChannelTPCStats, ChannelNumberAboveSignedRangeIsWrittenNegativeAndNotReadBack) {
    MonitoredChannel stats(4294967295u, true, 5);
    Json::Value out;
    stats.Serialize(out);
    EXPECT_TRUE(out["channel-id"].isInt());
    EXPECT_EQ(out["channel-id"].asInt(), -1);

    MonitoredChannel back(7, false, 8);
    EXPECT_THROW(back.Deserialize(out), Json::LogicError);
    EXPECT_EQ(back.channelId, 7u);
    EXPECT_FALSE(back.errorDetected);
    EXPECT_EQ(back.errorCount, 8u);
}

TEST(ChannelTPCStats, NegativeCountThrowsAfterEarlierFieldsWereRead) {
    MonitoredChannel stats(7, false, 8);
    Json::Value in = parseJson(R"({"channel-id": 3, "error-detected": true, "error-cnt": -2})");
    EXPECT_THROW(stats.Deserialize(in), Json::LogicError);
    EXPECT_EQ(stats.channelId, 3u);
    EXPECT_TRUE(stats.errorDetected);
    EXPECT_EQ(stats.errorCount, 8u);
}
