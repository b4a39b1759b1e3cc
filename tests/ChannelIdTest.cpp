#include "ChannelId.h"

#include <gtest/gtest.h>

#include <string>

#include "FileUtil.h"

namespace {

ChannelId readChannel(const std::string& text) {
    Json::Value in = parseJson(text);
    return ChannelId(in);
}

void expectChannel(const ChannelId& c, int id, int kind, const std::string& name, int position) {
    EXPECT_EQ(c.getId(), id);
    EXPECT_EQ(c.getType().getValue(), kind);
    EXPECT_EQ(c.getType().getName(), name);
    EXPECT_EQ(c.getPosition(), position);
}

}  // namespace

TEST(ChannelId, BuildingFromNumberGivesAutoAtPositionZero) {
    expectChannel(ChannelId(9), 9, 12, "auto", 0);
}

TEST(ChannelId, BuildingFromNameResolvesTheKind) {
    expectChannel(ChannelId(5, "aes10", 1), 5, 3, "madi", 1);
    expectChannel(ChannelId(5, "I32S", 2), 5, 0, "tdm", 2);
    expectChannel(ChannelId(5, "SDI-Audio", 3), 5, 6, "SDI-Audio", 3);
    expectChannel(ChannelId(5, "hdmi-video", 4), 5, 8, "hdmi-video", 4);
}

TEST(ChannelId, BuildingFromUnknownNameKeepsAutoNumberWithTheText) {
    expectChannel(ChannelId(2, "spdif", 7), 2, 12, "spdif", 7);
}

TEST(ChannelId, BuildingFromIdMinusOneIgnoresTheName) {
    expectChannel(ChannelId(-1, "madi", 0), -1, 12, "auto", 0);
    expectChannel(ChannelId(-1, "spdif", 3), -1, 12, "auto", 3);
}

TEST(ChannelId, BuildingFromDaifTypeRebuildsTheNameFromTheNumber) {
    DaifType given;
    given.setValue(6);
    given.setName("whatever");
    expectChannel(ChannelId(5, given, 1), 5, 6, "sdi-audio", 1);
}

TEST(ChannelId, BuildingFromDaifTypeOutOfRangeKeepsTheNumberWithEmptyName) {
    DaifType given;
    given.setValue(40);
    given.setName("forty");
    expectChannel(ChannelId(5, given, 1), 5, 40, "", 1);
}

TEST(ChannelId, BuildingFromDaifTypeWithIdMinusOneStillTakesTheNumber) {
    DaifType given;
    given.setValueAndName(DaifType::DAIF_AES3);
    expectChannel(ChannelId(-1, given, 4), -1, 4, "aes3", 4);
}

TEST(ChannelId, SettersChangeIdAndPosition) {
    ChannelId c(1, "madi", 2);
    c.setId(42);
    c.setPosition(200);
    expectChannel(c, 42, 3, "madi", 200);
}

TEST(ChannelId, GetTypeReturnsACopy) {
    ChannelId c(1, "madi", 2);
    DaifType copy = c.getType();
    copy.setValueAndName(DaifType::DAIF_TDM);
    EXPECT_EQ(c.getType().getValue(), 3);
    EXPECT_EQ(c.getType().getName(), "madi");
}

TEST(ChannelId, DeserializeOfBareNumberTakesItAsId) {
    expectChannel(readChannel("7"), 7, 12, "auto", 255);
}

TEST(ChannelId, DeserializeOfBareNumberResetsKindAndPosition) {
    ChannelId c(3, "madi", 2);
    Json::Value in(11);
    c.Deserialize(in);
    expectChannel(c, 11, 12, "auto", 255);
}

TEST(ChannelId, DeserializeOfNullTakesItAsChannelZero) {
    Json::Value in;
    expectChannel(ChannelId(in), 0, 12, "auto", 255);
}

TEST(ChannelId, DeserializeOfEmptyObjectGivesReadDefaults) {
    expectChannel(readChannel("{}"), -1, 12, "auto", 255);

    // The missing name reads as "auto", which also resets a known kind.
    ChannelId c(4, "madi", 2);
    Json::Value in(Json::objectValue);
    c.Deserialize(in);
    expectChannel(c, -1, 12, "auto", 255);
}

TEST(ChannelId, DeserializeResolvesAliasAndWritesBackTheCanonicalName) {
    ChannelId c = readChannel(R"({"id": 3, "type": "aes10", "position": 2})");
    expectChannel(c, 3, 3, "madi", 2);
    Json::Value out;
    c.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"id": 3, "type": "madi", "position": 2})"));
}

TEST(ChannelId, DeserializeKeepsTheCaseOfOtherKnownNames) {
    expectChannel(readChannel(R"({"id": 1, "type": "AES3", "position": 0})"), 1, 4, "AES3", 0);
}

TEST(ChannelId, DeserializeOfUnknownNameKeepsThePreviousNumber) {
    ChannelId c(1, "madi", 0);
    Json::Value in = parseJson(R"({"id": 2, "type": "optical", "position": 1})");
    c.Deserialize(in);
    expectChannel(c, 2, 3, "optical", 1);
}

TEST(ChannelId, PositionKeepsItsLowEightBits) {
    expectChannel(readChannel(R"({"id": 1, "position": 256})"), 1, 12, "auto", 0);
    expectChannel(readChannel(R"({"id": 1, "position": 300})"), 1, 12, "auto", 44);
    expectChannel(readChannel(R"({"id": 1, "position": 254})"), 1, 12, "auto", 254);
}

TEST(ChannelId, SerializeWritesNameNotNumberAndKeepsOtherKeys) {
    ChannelId c(6, "SDI-Audio", 9);
    Json::Value out;
    out["other"] = "kept";
    c.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": "kept", "id": 6, "type": "SDI-Audio", "position": 9})"));
    EXPECT_TRUE(out["position"].isInt());
}

TEST(ChannelId, SerializeWritesFullPositionRange) {
    ChannelId c(1);
    c.setPosition(255);
    Json::Value out;
    c.Serialize(out);
    EXPECT_EQ(out["position"].asInt(), 255);
}

TEST(ChannelId, UnconvertibleValuesRaiseJsonExceptions) {
    Json::Value text("seven");
    EXPECT_THROW(ChannelId{text}, Json::LogicError);
    Json::Value array = parseJson("[1]");
    EXPECT_THROW(ChannelId{array}, Json::LogicError);
    Json::Value objectId = parseJson(R"({"id": {}})");
    EXPECT_THROW(ChannelId{objectId}, Json::LogicError);
    Json::Value negativePosition = parseJson(R"({"id": 1, "position": -1})");
    EXPECT_THROW(ChannelId{negativePosition}, Json::LogicError);
}
