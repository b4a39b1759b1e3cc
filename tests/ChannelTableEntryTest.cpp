#include "ChannelTableEntry.h"

#include <gtest/gtest.h>

#include <string>

#include "FileUtil.h"
#include "ModelCompare.h"

namespace {

// Unsigned numbers are written as jsoncpp's unsigned kind while parsed text gives the signed
// one, and Json::Value's equality tells the kinds apart: compare the written text instead.
std::string styled(const Json::Value& v) {
    return v.toStyledString();
}

const char* const kDefaultStream = R"({"stream": 0, "stream-hw-id": 0, "session": 0, "name": "",
    "stream-name": "", "remote-sid": 0, "remote-sid-str": "0", "redundant-type": "",
    "type": "undefined", "state": "Disabled"})";

ChannelTableEntry filledEntry() {
    ChannelTableEntry e;
    e.id = 17;
    e.nameInput = "MADI 1 in";
    e.nameOutput = "MADI 1 out";
    e.input.session = 1001;
    e.input.stream = 1002;
    e.input.streamHwId = 3;
    e.input.name = "rx";
    e.input.streamName = "rx-stream";
    e.input.state.setValue(State::STATE_ENABLED);
    e.input.remoteSid = 18446744073709551615ULL;
    e.input.type.setValue(StreamType::STREAM_AUDIO);
    e.input.redundantType = "2022-7";
    e.output.session = 2001;
    e.output.stream = 2002;
    e.output.streamHwId = 4;
    e.output.name = "tx";
    e.output.streamName = "tx-stream";
    e.output.state.setValue(State::STATE_PAUSED);
    e.output.remoteSid = 77;
    e.output.type.setValue(StreamType::STREAM_ANCILLARY);
    e.output.redundantType = "none";
    e.blocked = true;
    e.mediaType.setValue(2);
    e.mediaType.setName("video");
    e.capabilities.setValue(1);
    e.capabilities.setName("in");
    return e;
}

ChannelInfo infoWithUsage(uint32_t input, uint32_t output) {
    ChannelInfo info;
    info.number = 1;
    info.inputUsage = static_cast<ChannelInfo::ChannelUsage_en>(input);
    info.outputUsage = static_cast<ChannelInfo::ChannelUsage_en>(output);
    return info;
}

std::string usage(const ChannelInfo& info, uint32_t direction) {
    return info.usageToString(static_cast<ChannelInfo::ChannelDirection_en>(direction));
}

}  // namespace

TEST(ChannelTableEntry, ConstructorDefaults) {
    ChannelTableEntry e;
    EXPECT_EQ(e.id, 0);
    EXPECT_EQ(e.nameInput, "");
    EXPECT_EQ(e.nameOutput, "");
    EXPECT_FALSE(e.blocked);
    EXPECT_EQ(e.mediaType.getValue(), 0);
    EXPECT_EQ(e.mediaType.getName(), "audio");
    EXPECT_EQ(e.capabilities.getValue(), 0);
    EXPECT_EQ(e.capabilities.getName(), "inout");
    expectSameStream(e.input, SessionStreamBasics());
    expectSameStream(e.output, SessionStreamBasics());
}

TEST(ChannelTableEntry, DefaultEntrySerializesTheDocumentedForm) {
    ChannelTableEntry e;
    Json::Value out;
    e.Serialize(out);
    Json::Value expected = parseJson(R"({"id": 0, "name-input": "", "name": "", "name-output": "",
        "blocked": false, "media-type": {"media-type": 0, "string": "audio"},
        "capabilities": {"capability": 0, "string": "inout"}})");
    expected["input"] = parseJson(kDefaultStream);
    expected["output"] = parseJson(kDefaultStream);
    EXPECT_EQ(styled(out), styled(expected));
}

TEST(ChannelTableEntry, OutputNameIsWrittenTwiceAndInputNameOnce) {
    ChannelTableEntry e = filledEntry();
    Json::Value out;
    out["kept"] = "yes";
    e.Serialize(out);
    EXPECT_EQ(out["name"].asString(), "MADI 1 out");
    EXPECT_EQ(out["name-output"].asString(), "MADI 1 out");
    EXPECT_EQ(out["name-input"].asString(), "MADI 1 in");
    EXPECT_EQ(out["kept"].asString(), "yes");
    EXPECT_EQ(out["id"], Json::Value(17));
    EXPECT_EQ(out["blocked"], Json::Value(true));
    EXPECT_EQ(out["media-type"], parseJson(R"({"media-type": 2, "string": "video"})"));
    EXPECT_EQ(out["capabilities"], parseJson(R"({"capability": 1, "string": "in"})"));
    EXPECT_EQ(out["input"]["remote-sid-str"].asString(), "18446744073709551615");
    EXPECT_EQ(out["output"]["state"].asString(), "Paused");
    EXPECT_EQ(out.size(), 10u);
}

TEST(ChannelTableEntry, NamesAreWrittenUpToTheirFirstNulByte) {
    ChannelTableEntry e;
    e.nameInput = std::string("in\0put", 6);
    e.nameOutput = std::string("out\0put", 7);
    Json::Value out;
    e.Serialize(out);
    EXPECT_EQ(out["name-input"].asString(), "in");
    EXPECT_EQ(out["name"].asString(), "out");
    EXPECT_EQ(out["name-output"].asString(), "out");
}

TEST(ChannelTableEntry, EmptyObjectGivesReadDefaultsAndAddsFourNullMembers) {
    ChannelTableEntry e = filledEntry();
    Json::Value in(Json::objectValue);
    e.Deserialize(in);
    EXPECT_EQ(e.id, -1);
    EXPECT_EQ(e.nameInput, "");
    EXPECT_EQ(e.nameOutput, "");
    EXPECT_FALSE(e.blocked);
    EXPECT_EQ(e.mediaType.getValue(), 3);
    EXPECT_EQ(e.mediaType.getName(), "");
    EXPECT_EQ(e.capabilities.getValue(), 0);
    EXPECT_EQ(e.capabilities.getName(), "inout");
    // A null stream record reads like an empty one.
    EXPECT_EQ(e.input.session, 0u);
    EXPECT_EQ(e.input.remoteSid, 0u);
    EXPECT_EQ(e.input.redundantType, "none");
    EXPECT_EQ(e.input.state.getValue(), 0);
    EXPECT_EQ(e.input.type.getValue(), StreamType::STREAM_AUDIO);
    EXPECT_EQ(e.output.redundantType, "none");
    EXPECT_EQ(e.output.name, "");

    Json::Value expected(Json::objectValue);
    expected["input"] = Json::Value();
    expected["output"] = Json::Value();
    expected["media-type"] = Json::Value();
    expected["capabilities"] = Json::Value();
    EXPECT_EQ(in, expected);
}

TEST(ChannelTableEntry, NameWithoutNameOutputYieldsEmptyOutputName) {
    ChannelTableEntry e;
    e.nameOutput = "previous";
    Json::Value in = parseJson(R"({"id": 2, "name": "Out 2"})");
    e.Deserialize(in);
    EXPECT_EQ(e.nameOutput, "");
    EXPECT_EQ(e.id, 2);
}

TEST(ChannelTableEntry, SerializeThenDeserializeReproducesEveryField) {
    ChannelTableEntry source = filledEntry();
    Json::Value doc;
    source.Serialize(doc);
    doc["name"] = "ignored on reading";
    ChannelTableEntry back;
    back.Deserialize(doc);
    expectSameEntry(back, source);
}

TEST(ChannelTableEntry, MediaTypeAndCapabilityAreStoredUnchecked) {
    ChannelTableEntry e;
    Json::Value in = parseJson(R"({"media-type": {"media-type": 99, "string": "audio"},
                                  "capabilities": {"capability": -4}})");
    e.Deserialize(in);
    EXPECT_EQ(e.mediaType.getValue(), 99);
    EXPECT_EQ(e.mediaType.getName(), "audio");
    EXPECT_EQ(e.capabilities.getValue(), -4);
    EXPECT_EQ(e.capabilities.getName(), "inout");
}

TEST(ChannelTableEntry, UnconvertibleMemberThrowsAfterEarlierFieldsWereRead) {
    ChannelTableEntry e = filledEntry();
    Json::Value in = parseJson(R"({"id": 4, "name-input": "new in", "name-output": {"a": 1}})");
    EXPECT_THROW(e.Deserialize(in), Json::LogicError);
    EXPECT_EQ(e.id, 4);
    EXPECT_EQ(e.nameInput, "new in");
    EXPECT_EQ(e.nameOutput, "MADI 1 out");
    EXPECT_TRUE(e.blocked);
}

TEST(ChannelTableEntry, CopyIsDeep) {
    ChannelTableEntry a = filledEntry();
    ChannelTableEntry b = a;
    b.input.name = "changed";
    b.mediaType.setName("changed");
    EXPECT_EQ(a.input.name, "rx");
    EXPECT_EQ(a.mediaType.getName(), "video");
}

TEST(ChannelInfo, EnumerationValues) {
    EXPECT_EQ(ChannelInfo::CHANNEL_DIRECTION_INPUT, 0u);
    EXPECT_EQ(ChannelInfo::CHANNEL_DIRECTION_OUTPUT, 1u);
    EXPECT_EQ(ChannelInfo::CHANNEL_USAGE_FREE, 0u);
    EXPECT_EQ(ChannelInfo::CHANNEL_USAGE_USED, 1u);
    EXPECT_EQ(ChannelInfo::CHANNEL_USAGE_BLOCKED, 2u);
    EXPECT_EQ(sizeof(ChannelInfo::ChannelDirection_en), 4u);
    EXPECT_EQ(sizeof(ChannelInfo::ChannelUsage_en), 4u);
}

TEST(ChannelInfo, ConstructorDefaults) {
    ChannelInfo info;
    EXPECT_EQ(info.inputName, "NA");
    EXPECT_EQ(info.outputName, "NA");
    EXPECT_EQ(info.reference, 0);
    EXPECT_EQ(info.daifType.getValue(), 12);
    EXPECT_EQ(info.daifType.getName(), "auto");
    EXPECT_EQ(info.mediaType.getValue(), 0);
    EXPECT_EQ(info.mediaType.getName(), "audio");
    EXPECT_EQ(info.capabilities.getValue(), 0);
    EXPECT_EQ(info.capabilities.getName(), "inout");
    EXPECT_TRUE(info.enabled);
    EXPECT_EQ(info.state.getValue(), 0);
    EXPECT_TRUE(info.inputSessions.empty());
    EXPECT_TRUE(info.outputSessions.empty());
}

TEST(ChannelInfo, UsageToStringOfDocumentedCases) {
    EXPECT_EQ(usage(infoWithUsage(1, 0), 0), "used");
    EXPECT_EQ(usage(infoWithUsage(0, 7), 5), "blocked");
    EXPECT_EQ(usage(infoWithUsage(1, 0), 1), "free");
}

TEST(ChannelInfo, UsageToStringReadsOnlyTheSelectedDirection) {
    ChannelInfo info = infoWithUsage(0, 1);
    EXPECT_EQ(usage(info, ChannelInfo::CHANNEL_DIRECTION_INPUT), "free");
    EXPECT_EQ(usage(info, ChannelInfo::CHANNEL_DIRECTION_OUTPUT), "used");
    EXPECT_EQ(usage(info, 2), "used");
    EXPECT_EQ(usage(info, 4294967295u), "used");
}

TEST(ChannelInfo, EveryCodeOtherThanFreeAndUsedReadsBlocked) {
    for (uint32_t code : {2u, 3u, 100u, 4294967295u}) {
        EXPECT_EQ(usage(infoWithUsage(code, code), 0), "blocked") << code;
        EXPECT_EQ(usage(infoWithUsage(code, code), 1), "blocked") << code;
    }
    EXPECT_EQ(usage(infoWithUsage(0, 0), 0), "free");
    EXPECT_EQ(usage(infoWithUsage(1, 1), 1), "used");
}

TEST(ChannelInfo, SessionMapsHoldRecordsByValueAndCopyDeeply) {
    ChannelInfo info = infoWithUsage(1, 1);
    SessionStreamBasics record;
    record.session = 5;
    info.inputSessions[7] = record;
    info.outputSessions[4294967295u] = record;
    record.session = 6;
    ChannelInfo copy = info;
    copy.inputSessions[7].session = 9;
    EXPECT_EQ(info.inputSessions.at(7).session, 5u);
    EXPECT_EQ(info.outputSessions.at(4294967295u).session, 5u);
    EXPECT_EQ(copy.inputSessions.at(7).session, 9u);
}
