#include "ChannelTables.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "FileMgr.h"
#include "FileUtil.h"
#include "ModelCompare.h"
#include "TempDir.h"

namespace {

// Unsigned numbers are written as jsoncpp's unsigned kind while parsed text gives the signed
// one, and Json::Value's equality tells the kinds apart: compare the written text instead.
std::string styled(const Json::Value& v) {
    return v.toStyledString();
}

ChannelTableEntry makeEntry(int id, const std::string& prefix) {
    ChannelTableEntry e;
    e.id = id;
    e.nameInput = prefix + " in " + std::to_string(id);
    e.nameOutput = prefix + " out " + std::to_string(id);
    e.blocked = id % 3 == 0;
    e.input.session = 1000000000000ULL + static_cast<uint64_t>(id);
    e.input.stream = 2000000000000ULL + static_cast<uint64_t>(id);
    e.input.streamHwId = static_cast<uint32_t>(id * 2);
    e.input.name = prefix + "-rx";
    e.input.streamName = prefix + "-rx-" + std::to_string(id);
    e.input.state.setValue(id % 3);
    e.input.remoteSid = id == 1 ? 18446744073709551615ULL : static_cast<uint64_t>(id) * 7;
    e.input.type.setValue(1 + id % 3);
    e.input.redundantType = id % 2 == 0 ? "2022-7" : "none";
    e.output.session = 3000000000000ULL + static_cast<uint64_t>(id);
    e.output.stream = static_cast<uint64_t>(id);
    e.output.streamHwId = 4294967295u - static_cast<uint32_t>(id);
    e.output.name = prefix + "-tx";
    e.output.streamName = prefix + "-tx-" + std::to_string(id);
    e.output.state.setValue((id + 1) % 3);
    e.output.remoteSid = static_cast<uint64_t>(id) * 11;
    e.output.type.setValue(1 + (id + 1) % 3);
    e.output.redundantType = "red-" + std::to_string(id);
    e.mediaType.setValue(id % 4);
    e.mediaType.setName(id % 4 == 0 ? "audio" : "other");
    e.capabilities.setValue(id % 3);
    e.capabilities.setName(id % 3 == 0 ? "inout" : "in");
    return e;
}

ChannelTable makeTable(DaifType::DaifType_en kind, int rows, const std::string& prefix) {
    ChannelTable t;
    t.type.setValueAndName(kind);
    for (int i = 0; i < rows; ++i) {
        t.entries.push_back(makeEntry(i, prefix));
    }
    return t;
}

std::vector<int> ids(const ChannelTable& t) {
    std::vector<int> out;
    for (const ChannelTableEntry& e : t.entries) {
        out.push_back(e.id);
    }
    return out;
}

}  // namespace

TEST(ChannelTable, DefaultTableSerializesTypeOnly) {
    ChannelTable t;
    EXPECT_TRUE(t.entries.empty());
    Json::Value out;
    t.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"type": 12, "string": "auto"})"));
    EXPECT_FALSE(out.isMember("channels"));
}

TEST(ChannelTable, SerializeKeepsOtherMembers) {
    ChannelTable t = makeTable(DaifType::DAIF_AES3, 1, "aes");
    Json::Value out;
    out["kept"] = 1;
    t.Serialize(out);
    EXPECT_EQ(out["kept"].asInt(), 1);
    EXPECT_EQ(out["type"].asInt(), 4);
    EXPECT_EQ(out["string"].asString(), "aes3");
    ASSERT_EQ(out["channels"].size(), 1u);
}

TEST(ChannelTables, EmptySetSerializesToNothing) {
    ChannelTables set;
    Json::Value null;
    set.Serialize(null);
    EXPECT_TRUE(null.isNull());
    EXPECT_FALSE(null.isArray());
    Json::Value object = parseJson(R"({"kept": true})");
    set.Serialize(object);
    EXPECT_EQ(object, parseJson(R"({"kept": true})"));
}

TEST(ChannelTables, OneTableOfTwoEntriesSerializesInInsertionOrder) {
    ChannelTables set;
    ChannelTable t;
    t.type.setValueAndName(DaifType::DAIF_MADI);
    t.entries.push_back(makeEntry(5, "first"));
    t.entries.push_back(makeEntry(2, "second"));
    set.tables.push_back(t);
    Json::Value out;
    set.Serialize(out);
    ASSERT_TRUE(out.isArray());
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0u]["type"].asInt(), 3);
    EXPECT_EQ(out[0u]["string"].asString(), "madi");
    const Json::Value& channels = out[0u]["channels"];
    ASSERT_TRUE(channels.isArray());
    ASSERT_EQ(channels.size(), 2u);
    Json::Value first;
    makeEntry(5, "first").Serialize(first);
    Json::Value second;
    makeEntry(2, "second").Serialize(second);
    EXPECT_EQ(channels[0u], first);
    EXPECT_EQ(channels[1u], second);
}

TEST(ChannelTables, SerializeOverLongerArrayLeavesStaleElements) {
    ChannelTables set;
    set.tables.push_back(makeTable(DaifType::DAIF_TDM, 0, "x"));
    set.tables.push_back(makeTable(DaifType::DAIF_I2S, 0, "y"));
    Json::Value out = parseJson(R"([{}, {}, 3, 4, 5])");
    set.Serialize(out);
    EXPECT_EQ(out, parseJson(R"([{"type": 0, "string": "tdm"}, {"type": 1, "string": "i2s"},
                                 3, 4, 5])"));
}

TEST(ChannelTable, DeserializeOfBareObjectGivesAutoAndAddsNullMembers) {
    ChannelTable t;
    Json::Value in = parseJson(R"({"other": 1})");
    t.Deserialize(in);
    EXPECT_EQ(t.type.getValue(), 12);
    EXPECT_EQ(t.type.getName(), "auto");
    EXPECT_TRUE(t.entries.empty());
    ASSERT_TRUE(in.isMember("channels"));
    EXPECT_TRUE(in["channels"].isNull());
    EXPECT_EQ(in, parseJson(R"({"other": 1, "string": null, "channels": null})"));
}

TEST(ChannelTable, DeserializeTakesTheNumberWhenNoNameIsGiven) {
    ChannelTable t;
    Json::Value in = parseJson(R"({"type": 6})");
    t.Deserialize(in);
    EXPECT_EQ(t.type.getValue(), 6);
    EXPECT_EQ(t.type.getName(), "sdi-audio");
}

TEST(ChannelTable, NameInCapitalsIsResolvedAndNumberIgnored) {
    ChannelTable t;
    Json::Value in = parseJson(R"({"type": 4, "string": "AES10"})");
    t.Deserialize(in);
    EXPECT_EQ(t.type.getValue(), 3);
    EXPECT_EQ(t.type.getName(), "madi");
}

TEST(ChannelTable, EmptyNameCountsAsPresentAndKeepsTheNumber) {
    ChannelTable fresh;
    Json::Value in = parseJson(R"({"type": 4, "string": ""})");
    fresh.Deserialize(in);
    EXPECT_EQ(fresh.type.getValue(), 12);
    EXPECT_EQ(fresh.type.getName(), "");

    ChannelTable madi;
    madi.type.setValueAndName(DaifType::DAIF_MADI);
    Json::Value again = parseJson(R"({"type": 4, "string": ""})");
    madi.Deserialize(again);
    EXPECT_EQ(madi.type.getValue(), 3);
    EXPECT_EQ(madi.type.getName(), "");
}

TEST(ChannelTable, DeserializingTwiceDoublesTheRows) {
    Json::Value doc;
    makeTable(DaifType::DAIF_MADI, 3, "m").Serialize(doc);
    ChannelTable t;
    t.Deserialize(doc);
    t.Deserialize(doc);
    EXPECT_EQ(ids(t), (std::vector<int>{0, 1, 2, 0, 1, 2}));
}

TEST(ChannelTable, DeserializeAppendsToHeldRows) {
    ChannelTable t = makeTable(DaifType::DAIF_MADI, 2, "held");
    Json::Value doc = parseJson(R"({"string": "tdm", "channels": [{"id": 40}]})");
    t.Deserialize(doc);
    EXPECT_EQ(ids(t), (std::vector<int>{0, 1, 40}));
    EXPECT_EQ(t.type.getValue(), 0);
    EXPECT_EQ(t.entries.front().nameInput, "held in 0");
    EXPECT_EQ(t.entries.back().mediaType.getValue(), 3);
}

TEST(ChannelTable, BadRowThrowsAfterEarlierRowsWereAppended) {
    ChannelTable t;
    Json::Value doc = parseJson(R"({"channels": [{"id": 1}, {"id": 2}, {"id": [3]}]})");
    EXPECT_THROW(t.Deserialize(doc), Json::LogicError);
    EXPECT_EQ(ids(t), (std::vector<int>{1, 2}));
}

TEST(ChannelTable, ChannelsObjectThrows) {
    ChannelTable t;
    Json::Value doc = parseJson(R"({"channels": {"id": 1}})");
    EXPECT_THROW(t.Deserialize(doc), Json::LogicError);
    EXPECT_TRUE(t.entries.empty());
}

TEST(ChannelTables, DeserializingTwiceDoublesTheTables) {
    ChannelTables source;
    source.tables.push_back(makeTable(DaifType::DAIF_MADI, 2, "m"));
    source.tables.push_back(makeTable(DaifType::DAIF_AES3, 1, "a"));
    Json::Value doc;
    source.Serialize(doc);
    ChannelTables set;
    set.Deserialize(doc);
    set.Deserialize(doc);
    ASSERT_EQ(set.tables.size(), 4u);
    const int kinds[] = {3, 4, 3, 4};
    int i = 0;
    for (const ChannelTable& t : set.tables) {
        EXPECT_EQ(t.type.getValue(), kinds[i]) << i;
        EXPECT_EQ(t.entries.size(), kinds[i] == 3 ? 2u : 1u) << i;
        ++i;
    }
}

TEST(ChannelTables, NullReadsAsNoTablesAndObjectThrows) {
    ChannelTables set;
    Json::Value null;
    set.Deserialize(null);
    EXPECT_TRUE(set.tables.empty());
    Json::Value object = parseJson(R"({"type": 3})");
    EXPECT_THROW(set.Deserialize(object), Json::LogicError);
    EXPECT_TRUE(set.tables.empty());
}

TEST(ChannelTables, BadTableThrowsAfterEarlierTablesWereAppended) {
    ChannelTables set;
    Json::Value doc = parseJson(R"([{"type": 3}, {"channels": {"x": 1}}])");
    EXPECT_THROW(set.Deserialize(doc), Json::LogicError);
    ASSERT_EQ(set.tables.size(), 1u);
    EXPECT_EQ(set.tables.front().type.getValue(), 3);
}

TEST(ChannelTables, CopyIsDeep) {
    ChannelTables a;
    a.tables.push_back(makeTable(DaifType::DAIF_MADI, 2, "m"));
    ChannelTables b = a;
    b.tables.front().entries.front().nameInput = "changed";
    b.tables.front().type.setValueAndName(DaifType::DAIF_TDM);
    EXPECT_EQ(a.tables.front().entries.front().nameInput, "m in 0");
    EXPECT_EQ(a.tables.front().type.getValue(), 3);
}

TEST(ChannelTables, RoundTripThroughAFileReproducesEveryTable) {
    ChannelTables source;
    source.tables.push_back(makeTable(DaifType::DAIF_MADI, 64, "MADI"));
    source.tables.push_back(makeTable(DaifType::DAIF_SDI_AUDIO, 16, "SDI"));
    Json::Value doc;
    source.Serialize(doc);

    TempDir dir;
    const std::string path = dir.file("channel-tables.json");
    FileMgr files;
    ASSERT_EQ(files.storeLocalCfg(path, doc), 0);
    Json::Value loaded;
    ASSERT_EQ(files.loadLocalCfg(path, loaded), 0);
    EXPECT_EQ(styled(loaded), styled(doc));

    ChannelTables back;
    back.Deserialize(loaded);
    ASSERT_EQ(back.tables.size(), 2u);
    EXPECT_EQ(back.tables.front().entries.size(), 64u);
    EXPECT_EQ(back.tables.back().entries.size(), 16u);
    EXPECT_EQ(back.tables.front().type.getName(), "madi");
    EXPECT_EQ(back.tables.back().type.getName(), "sdi-audio");
    EXPECT_EQ(back.tables.front().entries.front().input.remoteSid, 0u);
    EXPECT_EQ(std::next(back.tables.front().entries.begin())->input.remoteSid,
              18446744073709551615ULL);
    auto original = source.tables.begin();
    for (const ChannelTable& table : back.tables) {
        SCOPED_TRACE(table.type.getName());
        expectSameTable(table, *original++);
    }
}
