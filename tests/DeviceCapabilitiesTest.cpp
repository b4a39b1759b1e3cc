#include "DeviceCapabilities.h"

#include <gtest/gtest.h>

#include "FileUtil.h"

namespace {

DeviceCapabilities allFour() {
    DeviceCapabilities caps;
    caps.numMediaIpInterfaces = 4;
    caps.sendersAudio = 4;
    caps.sendersVideo = 4;
    caps.sendersAncillary = 4;
    caps.receiversAudio = 4;
    caps.receiversVideo = 4;
    caps.receiversAncillary = 4;
    return caps;
}

// Distinct counts, so that a count written or read under the wrong key shows.
DeviceCapabilities someCapabilities() {
    DeviceCapabilities caps;
    caps.numMediaIpInterfaces = 2;
    caps.sendersAudio = 64;
    caps.sendersVideo = 8;
    caps.sendersAncillary = 9;
    caps.receiversAudio = 128;
    caps.receiversVideo = 16;
    caps.receiversAncillary = 17;
    return caps;
}

const char* const kSomeCapabilities = R"({"deviceCapabilities": {"numMediaIpInterfaces": 2,
    "sendersStreamCount": {"audio": 64, "video": 8, "ancillary": 9},
    "receiversStreamCount": {"audio": 128, "video": 16, "ancillary": 17}}})";

void expectCounts(const DeviceCapabilities& caps, int interfaces, int sAudio, int sVideo, int sAnc,
                  int rAudio, int rVideo, int rAnc) {
    EXPECT_EQ(caps.numMediaIpInterfaces, interfaces);
    EXPECT_EQ(caps.sendersAudio, sAudio);
    EXPECT_EQ(caps.sendersVideo, sVideo);
    EXPECT_EQ(caps.sendersAncillary, sAnc);
    EXPECT_EQ(caps.receiversAudio, rAudio);
    EXPECT_EQ(caps.receiversVideo, rVideo);
    EXPECT_EQ(caps.receiversAncillary, rAnc);
}

}  // namespace

// --- DeviceCapabilities ----------------------------------------------------------------------

TEST(DeviceCapabilities, DefaultsAreZero) {
    expectCounts(DeviceCapabilities(), 0, 0, 0, 0, 0, 0, 0);
}

TEST(DeviceCapabilities, DefaultSerializesToZerosUnderItsOwnWrapper) {
    Json::Value parent;
    parent["keep"] = "x";
    DeviceCapabilities().Serialize(parent);
    EXPECT_EQ(parent, parseJson(R"({"keep": "x", "deviceCapabilities": {
        "numMediaIpInterfaces": 0,
        "sendersStreamCount": {"audio": 0, "video": 0, "ancillary": 0},
        "receiversStreamCount": {"audio": 0, "video": 0, "ancillary": 0}}})"));
}

TEST(DeviceCapabilities, SerializeWritesEachCountUnderItsKey) {
    Json::Value parent;
    someCapabilities().Serialize(parent);
    EXPECT_EQ(parent, parseJson(kSomeCapabilities));
}

TEST(DeviceCapabilities, DeserializeReadsEachCountFromItsKey) {
    DeviceCapabilities caps;
    Json::Value parent = parseJson(kSomeCapabilities);
    caps.Deserialize(parent);
    expectCounts(caps, 2, 64, 8, 9, 128, 16, 17);
}

TEST(DeviceCapabilities, ParentWithoutCapabilitiesLeavesEveryFieldAsItWas) {
    DeviceCapabilities caps = someCapabilities();
    Json::Value parent = parseJson(R"({"other": 1})");
    caps.Deserialize(parent);
    expectCounts(caps, 2, 64, 8, 9, 128, 16, 17);
    EXPECT_EQ(parent, parseJson(R"({"other": 1})"));  // nothing added

    Json::Value empty(Json::objectValue);
    caps.Deserialize(empty);
    expectCounts(caps, 2, 64, 8, 9, 128, 16, 17);
}

TEST(DeviceCapabilities, EmptyCapabilitiesZeroTheInterfacesAndKeepTheCounts) {
    DeviceCapabilities caps = allFour();
    Json::Value parent = parseJson(R"({"deviceCapabilities": {}})");
    caps.Deserialize(parent);
    expectCounts(caps, 0, 4, 4, 4, 4, 4, 4);
}

TEST(DeviceCapabilities, NullCapabilitiesCountAsPresent) {
    DeviceCapabilities caps = allFour();
    Json::Value parent = parseJson(R"({"deviceCapabilities": null})");
    caps.Deserialize(parent);
    expectCounts(caps, 0, 4, 4, 4, 4, 4, 4);
}

TEST(DeviceCapabilities, SendersWithoutReceiversReadOnlyTheSenders) {
    DeviceCapabilities caps = allFour();
    Json::Value parent = parseJson(R"({"deviceCapabilities": {"numMediaIpInterfaces": 1,
        "sendersStreamCount": {"audio": 32, "ancillary": 2}}})");
    caps.Deserialize(parent);
    expectCounts(caps, 1, 32, 0, 2, 4, 4, 4);
}

TEST(DeviceCapabilities, ReceiversWithoutSendersReadOnlyTheReceivers) {
    DeviceCapabilities caps = allFour();
    Json::Value parent = parseJson(R"({"deviceCapabilities": {"numMediaIpInterfaces": 3,
        "receiversStreamCount": {"video": 6}}})");
    caps.Deserialize(parent);
    expectCounts(caps, 3, 4, 4, 4, 0, 6, 0);
}

TEST(DeviceCapabilities, WrongJsonTypeRaisesJsonException) {
    DeviceCapabilities caps;
    Json::Value wrapper = parseJson(R"({"deviceCapabilities": [1]})");
    EXPECT_THROW(caps.Deserialize(wrapper), Json::LogicError);
    Json::Value count = parseJson(R"({"deviceCapabilities": {"numMediaIpInterfaces": "two"}})");
    EXPECT_THROW(caps.Deserialize(count), Json::LogicError);
}

// --- ProcessBasicInfo ------------------------------------------------------------------------

TEST(ProcessBasicInfo, DefaultSerializesToEmptyPortAndZero) {
    Json::Value out;
    out["keep"] = 1;
    ProcessBasicInfo().Serialize(out);
    EXPECT_EQ(out.toStyledString(),
              parseJson(R"({"keep": 1, "eth-port": "", "tpc-port": 0})").toStyledString());
    EXPECT_EQ(out["tpc-port"].type(), Json::uintValue);
}

TEST(ProcessBasicInfo, RoundTripKeepsBothPorts) {
    ProcessBasicInfo process;
    process.ethPort = "eth1";
    process.tpcPort = 4000000000u;
    Json::Value out;
    process.Serialize(out);
    EXPECT_EQ(out["eth-port"], "eth1");
    EXPECT_EQ(out["tpc-port"].asUInt(), 4000000000u);
    ProcessBasicInfo back;
    back.Deserialize(out);
    EXPECT_EQ(back.ethPort, "eth1");
    EXPECT_EQ(back.tpcPort, 4000000000u);
}

TEST(ProcessBasicInfo, DeserializeOfEmptyOrNullGivesEmptyPortAndZero) {
    ProcessBasicInfo process;
    process.ethPort = "eth0";
    process.tpcPort = 554;
    Json::Value empty(Json::objectValue);
    process.Deserialize(empty);
    EXPECT_EQ(process.ethPort, "");
    EXPECT_EQ(process.tpcPort, 0u);

    process.ethPort = "eth0";
    process.tpcPort = 554;
    Json::Value null;
    process.Deserialize(null);
    EXPECT_EQ(process.ethPort, "");
    EXPECT_EQ(process.tpcPort, 0u);
}

TEST(ProcessBasicInfo, NegativePortRaisesJsonException) {
    ProcessBasicInfo process;
    Json::Value in = parseJson(R"({"tpc-port": -1})");
    EXPECT_THROW(process.Deserialize(in), Json::LogicError);
}
