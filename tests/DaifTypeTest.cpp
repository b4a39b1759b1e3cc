#include "DaifType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

#include "FileUtil.h"

namespace {

struct KindRow {
    int kind;
    const char* name;
};

// Every interface kind with the name it is written as.
const KindRow kKinds[] = {
    {0, "tdm"},
    {1, "i2s"},
    {2, "tpi"},
    {3, "madi"},
    {4, "aes3"},
    {5, "sdi-video"},
    {6, "sdi-audio"},
    {7, "sdi-ancillary"},
    {8, "hdmi-video"},
    {9, "hdmi-audio"},
    {10, "hdmi-ancillary"},
    {11, "analog-audio"},
    {12, "auto"},
};

std::string upper(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// Capitalises every other letter: "sdi-audio" -> "SdI-AuDiO".
std::string mixed(std::string s) {
    for (size_t i = 0; i < s.size(); i += 2) {
        s[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(s[i])));
    }
    return s;
}

DaifType readType(const std::string& text, int type = 4) {
    Json::Value in;
    in["string"] = text;
    in["type"] = type;
    DaifType t;
    t.Deserialize(in);
    return t;
}

}  // namespace

TEST(DaifType, DefaultIsAuto) {
    DaifType t;
    EXPECT_EQ(t.getValue(), 12);
    EXPECT_EQ(t.getName(), "auto");
}

TEST(DaifType, NumberToNameTable) {
    for (const KindRow& row : kKinds) {
        EXPECT_STREQ(DaifType::nameOf(row.kind), row.name) << row.kind;
    }
    EXPECT_STREQ(DaifType::nameOf(-1), "");
    EXPECT_STREQ(DaifType::nameOf(13), "");
}

TEST(DaifType, EveryNameInLowerCaseSetsItsKind) {
    for (const KindRow& row : kKinds) {
        DaifType t = readType(row.name);
        EXPECT_EQ(t.getValue(), row.kind) << row.name;
        EXPECT_EQ(t.getName(), row.name);
    }
}

TEST(DaifType, EveryNameInUpperCaseSetsItsKindAndKeepsTheCapitals) {
    for (const KindRow& row : kKinds) {
        DaifType t = readType(upper(row.name));
        EXPECT_EQ(t.getValue(), row.kind) << row.name;
        // tdm and madi are replaced by their canonical name; the others keep their case.
        const bool canonical = row.kind == 0 || row.kind == 3;
        EXPECT_EQ(t.getName(), canonical ? std::string(row.name) : upper(row.name));
    }
}

TEST(DaifType, EveryNameInMixedCaseSetsItsKindAndKeepsTheCase) {
    for (const KindRow& row : kKinds) {
        DaifType t = readType(mixed(row.name));
        EXPECT_EQ(t.getValue(), row.kind) << row.name;
        const bool canonical = row.kind == 0 || row.kind == 3;
        EXPECT_EQ(t.getName(), canonical ? std::string(row.name) : mixed(row.name));
    }
}

TEST(DaifType, AliasesAreReplacedByTheCanonicalName) {
    for (const char* alias : {"i32s", "I32S", "I32s"}) {
        DaifType t = readType(alias);
        EXPECT_EQ(t.getValue(), 0);
        EXPECT_EQ(t.getName(), "tdm");
    }
    for (const char* alias : {"aes10", "AES10", "Aes10"}) {
        DaifType t = readType(alias);
        EXPECT_EQ(t.getValue(), 3);
        EXPECT_EQ(t.getName(), "madi");
    }
}

// The list a tool reads the accepted spellings from is the one the reader tries.
TEST(DaifType, AcceptedNamesAreEveryKindsNameAndTheTwoAliases) {
    std::vector<std::string> accepted;
    for (std::size_t i = 0; DaifType::acceptedName(i) != nullptr; ++i) {
        accepted.emplace_back(DaifType::acceptedName(i));
    }
    EXPECT_EQ(accepted,
              (std::vector<std::string>{"i32s", "tdm", "i2s", "tpi", "madi", "aes10", "aes3",
                                        "sdi-audio", "sdi-video", "sdi-ancillary", "hdmi-audio",
                                        "hdmi-video", "hdmi-ancillary", "analog-audio", "auto"}));
    for (int kind = DaifType::DAIF_TDM; kind <= DaifType::DAIF_AUTO; ++kind) {
        EXPECT_NE(std::find(accepted.begin(), accepted.end(), DaifType::nameOf(kind)),
                  accepted.end())
            << kind;
    }
    for (const std::string& name : accepted) {
        DaifType t;
        t.setValue(99);
        t.setNameAndResolve(name);
        EXPECT_NE(t.getValue(), 99) << name;
    }
}

TEST(DaifType, ReadingTypeAloneSetsNameAndAddsNullString) {
    Json::Value in = parseJson(R"({"type": 3})");
    DaifType t;
    t.Deserialize(in);
    EXPECT_EQ(t.getValue(), 3);
    EXPECT_EQ(t.getName(), "madi");
    ASSERT_TRUE(in.isMember("string"));
    EXPECT_TRUE(in["string"].isNull());
}

TEST(DaifType, ReadingTypeOutOfRangeKeepsNumberWithEmptyName) {
    Json::Value in = parseJson(R"({"type": 40})");
    DaifType t;
    t.Deserialize(in);
    EXPECT_EQ(t.getValue(), 40);
    EXPECT_EQ(t.getName(), "");
}

TEST(DaifType, StringDecidesAndTypeIsIgnored) {
    Json::Value in = parseJson(R"({"string": "AES10", "type": 4})");
    DaifType t;
    t.Deserialize(in);
    EXPECT_EQ(t.getValue(), 3);
    EXPECT_EQ(t.getName(), "madi");
}

TEST(DaifType, UnknownNameKeepsNumberAndText) {
    DaifType t = readType("spdif");
    EXPECT_EQ(t.getValue(), 12);
    EXPECT_EQ(t.getName(), "spdif");

    DaifType madi = readType("madi");
    Json::Value in = parseJson(R"({"string": "optical"})");
    madi.Deserialize(in);
    EXPECT_EQ(madi.getValue(), 3);
    EXPECT_EQ(madi.getName(), "optical");
}

TEST(DaifType, SdiAudioWithCapitalsKeepsCapitals) {
    DaifType t = readType("SDI-Audio");
    EXPECT_EQ(t.getValue(), 6);
    EXPECT_EQ(t.getName(), "SDI-Audio");
}

TEST(DaifType, EmptyObjectGivesAuto) {
    Json::Value in(Json::objectValue);
    DaifType t;
    t.setValueAndName(3);
    t.Deserialize(in);
    EXPECT_EQ(t.getValue(), 12);
    EXPECT_EQ(t.getName(), "auto");
}

TEST(DaifType, EmptyArrayOrObjectStringCountsAsAbsent) {
    for (const char* text : {R"({"string": [], "type": 5})", R"({"string": {}, "type": 5})",
                             R"({"string": null, "type": 5})"}) {
        Json::Value in = parseJson(text);
        DaifType t;
        t.Deserialize(in);
        EXPECT_EQ(t.getValue(), 5) << text;
        EXPECT_EQ(t.getName(), "sdi-video") << text;
    }
}

TEST(DaifType, EmptyTextStringCountsAsPresent) {
    Json::Value in = parseJson(R"({"string": "", "type": 5})");
    DaifType t;
    t.Deserialize(in);
    EXPECT_EQ(t.getValue(), 12);
    EXPECT_EQ(t.getName(), "");
}

TEST(DaifType, SerializeWritesNumberAndName) {
    DaifType t = readType("MADI");
    Json::Value out;
    out["other"] = true;
    t.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": true, "type": 3, "string": "madi"})"));
}

TEST(DaifType, SetNameAndResolveFollowsTheReadingRules) {
    DaifType t;
    t.setNameAndResolve("HDMI-Audio");
    EXPECT_EQ(t.getValue(), 9);
    EXPECT_EQ(t.getName(), "HDMI-Audio");
    t.setNameAndResolve("nothing");
    EXPECT_EQ(t.getValue(), 9);
    EXPECT_EQ(t.getName(), "nothing");
}

TEST(DaifMediaType, DefaultsAndReadDefaultsDiffer) {
    DaifMediaType m;
    EXPECT_EQ(m.getValue(), 0);
    EXPECT_EQ(m.getName(), "audio");
    Json::Value in(Json::objectValue);
    m.Deserialize(in);
    EXPECT_EQ(m.getValue(), 3);
    EXPECT_EQ(m.getName(), "");
}

TEST(DaifMediaType, RoundTrip) {
    DaifMediaType m;
    m.setValue(2);
    m.setName("video");
    Json::Value out;
    m.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"media-type": 2, "string": "video"})"));
    DaifMediaType back;
    back.Deserialize(out);
    EXPECT_EQ(back.getValue(), 2);
    EXPECT_EQ(back.getName(), "video");
}

TEST(DaifCapabilities, DefaultsAndReadDefaults) {
    DaifCapabilities c;
    c.setValue(2);
    c.setName("out");
    Json::Value out;
    c.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"capability": 2, "string": "out"})"));
    Json::Value in(Json::objectValue);
    c.Deserialize(in);
    EXPECT_EQ(c.getValue(), 0);
    EXPECT_EQ(c.getName(), "inout");
    DaifCapabilities fresh;
    EXPECT_EQ(fresh.getValue(), 0);
    EXPECT_EQ(fresh.getName(), "inout");
}

TEST(StreamType, WritesEveryKindName) {
    const std::pair<int, const char*> rows[] = {
        {1, "audio"},     {2, "video"},     {3, "ancillary"}, {4, "test"},
        {0, "undefined"}, {5, "undefined"}, {-1, "undefined"}};
    for (const auto& row : rows) {
        StreamType t;
        t.setValue(row.first);
        Json::Value out;
        t.Serialize(out);
        EXPECT_EQ(out["type"].asString(), row.second) << row.first;
        EXPECT_EQ(t.getName(), row.second);
    }
}

TEST(StreamType, ReadingTestKeepsThePreviousKind) {
    StreamType t;
    t.setValue(StreamType::STREAM_TEST);
    Json::Value out;
    t.Serialize(out);
    EXPECT_EQ(out["type"].asString(), "test");
    StreamType back;
    back.setValue(StreamType::STREAM_VIDEO);
    back.Deserialize(out);
    EXPECT_EQ(back.getValue(), 2);
}

TEST(StreamType, ReadsExactNamesOnly) {
    StreamType t;
    for (const auto& row :
         {std::make_pair("audio", 1), std::make_pair("video", 2), std::make_pair("ancillary", 3),
          std::make_pair("Audio", 3), std::make_pair("", 3)}) {
        Json::Value in;
        in["type"] = row.first;
        t.Deserialize(in);
        EXPECT_EQ(t.getValue(), row.second) << row.first;
    }
}

TEST(State, ReadingLowerCaseEnabledGivesDisabled) {
    State s;
    s.setValue(State::STATE_PAUSED);
    Json::Value in = parseJson(R"({"state": "enabled"})");
    s.Deserialize(in);
    EXPECT_EQ(s.getValue(), 0);
}

TEST(State, ReadsEveryName) {
    State s;
    for (const auto& row :
         {std::make_pair("Enabled", 1), std::make_pair("Paused", 2), std::make_pair("Disabled", 0),
          std::make_pair("", 0), std::make_pair("PAUSED", 0)}) {
        s.setValue(1);
        Json::Value in;
        in["state"] = row.first;
        s.Deserialize(in);
        EXPECT_EQ(s.getValue(), row.second) << row.first;
    }
    s.setValue(2);
    Json::Value empty(Json::objectValue);
    s.Deserialize(empty);
    EXPECT_EQ(s.getValue(), 0);
}

TEST(State, WritesEveryStateName) {
    const std::pair<int, const char*> rows[] = {
        {0, "Disabled"}, {1, "Enabled"}, {2, "Paused"}, {7, "Undefined"}, {-1, "Undefined"}};
    for (const auto& row : rows) {
        State s;
        s.setValue(row.first);
        Json::Value out;
        s.Serialize(out);
        EXPECT_EQ(out, parseJson(std::string(R"({"state": ")") + row.second + "\"}"));
    }
}

TEST(Descriptors, EmptyObjectGivesDocumentedDefaultsAndRaisesNothing) {
    // A fresh document for each: reading a DaifType adds a null "string" member.
    Json::Value in1(Json::objectValue), in2(Json::objectValue), in3(Json::objectValue),
        in4(Json::objectValue), in5(Json::objectValue);
    DaifType t;
    DaifMediaType m;
    DaifCapabilities c;
    StreamType st;
    State s;
    EXPECT_NO_THROW(t.Deserialize(in1));
    EXPECT_NO_THROW(m.Deserialize(in2));
    EXPECT_NO_THROW(c.Deserialize(in3));
    EXPECT_NO_THROW(st.Deserialize(in4));
    EXPECT_NO_THROW(s.Deserialize(in5));
    EXPECT_EQ(t.getValue(), 12);
    EXPECT_EQ(m.getValue(), 3);
    EXPECT_EQ(m.getName(), "");
    EXPECT_EQ(c.getValue(), 0);
    EXPECT_EQ(c.getName(), "inout");
    EXPECT_EQ(st.getValue(), 0);
    EXPECT_EQ(s.getValue(), 0);
}

TEST(Descriptors, WrongJsonTypeRaisesJsonException) {
    Json::Value in = parseJson(R"({"media-type": {"a": 1}})");
    DaifMediaType m;
    EXPECT_THROW(m.Deserialize(in), Json::Exception);
    Json::Value array = parseJson("[1, 2]");
    DaifType t;
    EXPECT_THROW(t.Deserialize(array), Json::Exception);
}
