#include "EthBasicInfo.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <thread>

#include "FileUtil.h"
#include "LogCapture.h"

// POSIX lets inet_ntoa return one buffer shared by every thread of the process; glibc's
// happens to be per thread. This stand-in, which the dynamic linker prefers for the library
// too, shares one buffer and yields while it is filled, so that a writer that relied on
// inet_ntoa would hand one thread the other's text.
extern "C" char* inet_ntoa(struct in_addr in) __THROW {
    static char shared[INET_ADDRSTRLEN];
    const auto* bytes = reinterpret_cast<const unsigned char*>(&in.s_addr);
    std::snprintf(shared, sizeof shared, "%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
    std::this_thread::yield();
    return shared;
}

namespace {

// Same JSON text: integers compare equal whether jsoncpp holds them signed or unsigned.
std::string text(const Json::Value& value) {
    return value.toStyledString();
}

std::string ipError(const std::string& given) {
    return "ERR::Error parsing IP '" + given + "': invalid IP address";
}

// A record as a board reports it.
EthBasicInfo boardPort() {
    EthBasicInfo eth;
    eth.ethName = "eth1";
    eth.ipv4 = 0xC0A8010A;         // 192.168.1.10
    eth.networkMask = 0xFFFFFF00;  // 255.255.255.0
    eth.mac = "00:1b:21:3a:4f:5c";
    eth.linkup = true;
    eth.ifid = 3;
    eth.sfp.present = true;
    eth.sfp.vendorName = "FINISAR CORP.";
    eth.sfp.wavelength = 850;
    return eth;
}

// Reads a document whose "ipv4" is given and whose mask is valid, into a record whose
// address was 10.0.0.1.
EthBasicInfo readAddress(const Json::Value& ipv4) {
    Json::Value in;
    in["ipv4"] = ipv4;
    in["network-mask"] = "255.255.0.0";
    EthBasicInfo eth;
    eth.ipv4 = 0x0A000001;
    eth.Deserialize(in);
    return eth;
}

}  // namespace

TEST(EthBasicInfo, DefaultsAreEmptyAndZero) {
    EthBasicInfo eth;
    EXPECT_EQ(eth.ethName, "");
    EXPECT_EQ(eth.ipv4, 0u);
    EXPECT_EQ(eth.networkMask, 0u);
    EXPECT_EQ(eth.mac, "");
    EXPECT_FALSE(eth.linkup);
    EXPECT_EQ(eth.ifid, 0u);
    EXPECT_FALSE(eth.sfp.present);
    EXPECT_EQ(eth.sfp.wavelength, -1);
}

TEST(EthBasicInfo, SerializeWritesEveryKeyWithTheSfpNested) {
    Json::Value out;
    out["keep"] = "me";
    boardPort().Serialize(out);
    Json::Value sfp;
    boardPort().sfp.Serialize(sfp);
    Json::Value expected = parseJson(R"({"keep": "me", "eth-name": "eth1",
        "mac": "00:1b:21:3a:4f:5c", "linkup": true, "ifid": 3, "ipv4": "192.168.1.10",
        "network-mask": "255.255.255.0"})");
    expected["sfp"] = sfp;
    EXPECT_EQ(text(out), text(expected));
    EXPECT_EQ(out["ifid"].type(), Json::uintValue);
    EXPECT_EQ(out["sfp"]["vendor-name"], "FINISAR CORP.");
}

TEST(EthBasicInfo, AddressZeroSerializesAsAllZeroText) {
    EthBasicInfo eth;
    Json::Value out;
    eth.Serialize(out);
    EXPECT_EQ(out["ipv4"], "0.0.0.0");
    EXPECT_EQ(out["network-mask"], "0.0.0.0");
}

TEST(EthBasicInfo, AddressIsHeldInHostByteOrder) {
    Json::Value in = parseJson(R"({"ipv4": "192.168.1.10", "network-mask": "255.255.240.0"})");
    EthBasicInfo eth;
    eth.Deserialize(in);
    EXPECT_EQ(eth.ipv4, 0xC0A8010Au);
    EXPECT_EQ(eth.networkMask, 0xFFFFF000u);

    eth.ipv4 = 0x0A141E28;
    eth.networkMask = 0xFF000000;
    Json::Value out;
    eth.Serialize(out);
    EXPECT_EQ(out["ipv4"], "10.20.30.40");
    EXPECT_EQ(out["network-mask"], "255.0.0.0");
}

struct ValidAddress {
    const char* text;
    std::uint32_t hostOrder;
};

void PrintTo(const ValidAddress& address, std::ostream* os) {
    *os << address.text;
}

class EthValidAddress : public testing::TestWithParam<ValidAddress> {};

TEST_P(EthValidAddress, ParsesIntoBothFieldsAndWritesTheSameText) {
    LogCapture log;
    Json::Value in;
    in["ipv4"] = GetParam().text;
    in["network-mask"] = GetParam().text;
    EthBasicInfo eth;
    eth.ipv4 = 0x01020304;
    eth.networkMask = 0x01020304;
    eth.Deserialize(in);
    EXPECT_EQ(eth.ipv4, GetParam().hostOrder);
    EXPECT_EQ(eth.networkMask, GetParam().hostOrder);
    EXPECT_TRUE(log.lines().empty());

    Json::Value out;
    eth.Serialize(out);
    EXPECT_EQ(out["ipv4"], GetParam().text);
    EXPECT_EQ(out["network-mask"], GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Texts, EthValidAddress,
                         testing::Values(ValidAddress{"0.0.0.0", 0x00000000},
                                         ValidAddress{"255.255.255.255", 0xFFFFFFFF},
                                         ValidAddress{"192.168.1.10", 0xC0A8010A}));

struct BadAddress {
    const char* name;
    Json::Value given;
    const char* loggedText;
};

void PrintTo(const BadAddress& address, std::ostream* os) {
    *os << address.name;
}

class EthBadAddress : public testing::TestWithParam<BadAddress> {};

TEST_P(EthBadAddress, AddressKeepsItsValueAndTheTextIsLogged) {
    LogCapture log;
    const EthBasicInfo eth = readAddress(GetParam().given);
    EXPECT_EQ(eth.ipv4, 0x0A000001u);
    EXPECT_EQ(eth.networkMask, 0xFFFF0000u);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, ipError(GetParam().loggedText)));
}

TEST_P(EthBadAddress, MaskKeepsItsValueAndTheTextIsLogged) {
    LogCapture log;
    Json::Value in;
    in["ipv4"] = "172.16.0.9";
    in["network-mask"] = GetParam().given;
    EthBasicInfo eth;
    eth.networkMask = 0xFFFFFFF0;
    eth.Deserialize(in);
    EXPECT_EQ(eth.ipv4, 0xAC100009u);
    EXPECT_EQ(eth.networkMask, 0xFFFFFFF0u);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, ipError(GetParam().loggedText)));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, EthBadAddress,
    testing::Values(BadAddress{"OctetAbove255", Json::Value("10.0.0.300"), "10.0.0.300"},
                    BadAddress{"ThreeOctets", Json::Value("1.2.3"), "1.2.3"},
                    BadAddress{"Empty", Json::Value(""), ""},
                    // jsoncpp turns a number into its decimal text, which is no address.
                    BadAddress{"Number", Json::Value(167772161), "167772161"},
                    BadAddress{"Null", Json::Value(), ""}),
    [](const testing::TestParamInfo<BadAddress>& info) { return info.param.name; });

TEST(EthBasicInfo, MissingAddressAndMaskKeepTheirValuesAndLogTwice) {
    LogCapture log;
    Json::Value in = parseJson(R"({"eth-name": "eth0"})");
    EthBasicInfo eth;
    eth.ipv4 = 0x0A000001;
    eth.networkMask = 0xFF000000;
    eth.Deserialize(in);
    EXPECT_EQ(eth.ethName, "eth0");
    EXPECT_EQ(eth.ipv4, 0x0A000001u);
    EXPECT_EQ(eth.networkMask, 0xFF000000u);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, ipError("")));
    EXPECT_EQ(lines[1], logLine(Logger::logError, ipError("")));
}

TEST(EthBasicInfo, DeserializeOfEmptyObjectGivesDefaultsAndAddsNullSfp) {
    LogCapture log;
    EthBasicInfo eth = boardPort();
    eth.ipv4 = 0;
    eth.networkMask = 0;
    Json::Value in(Json::objectValue);
    eth.Deserialize(in);
    EXPECT_EQ(eth.ethName, "");
    EXPECT_EQ(eth.mac, "");
    EXPECT_FALSE(eth.linkup);
    EXPECT_EQ(eth.ifid, 0u);
    EXPECT_EQ(eth.ipv4, 0u);
    EXPECT_EQ(eth.networkMask, 0u);
    EXPECT_FALSE(eth.sfp.present);
    EXPECT_EQ(eth.sfp.vendorName, "");
    EXPECT_EQ(eth.sfp.wavelength, -1);
    ASSERT_TRUE(in.isMember("sfp"));
    EXPECT_TRUE(in["sfp"].isNull());
    EXPECT_EQ(in.size(), 1u);
}

TEST(EthBasicInfo, RoundTripReproducesEveryFieldSilently) {
    LogCapture log;
    Json::Value out;
    boardPort().Serialize(out);
    EthBasicInfo back;
    back.Deserialize(out);
    EXPECT_EQ(back.ethName, "eth1");
    EXPECT_EQ(back.ipv4, 0xC0A8010Au);
    EXPECT_EQ(back.networkMask, 0xFFFFFF00u);
    EXPECT_EQ(back.mac, "00:1b:21:3a:4f:5c");
    EXPECT_TRUE(back.linkup);
    EXPECT_EQ(back.ifid, 3u);
    EXPECT_TRUE(back.sfp.present);
    EXPECT_EQ(back.sfp.vendorName, "FINISAR CORP.");
    EXPECT_EQ(back.sfp.wavelength, 850);
    EXPECT_TRUE(log.lines().empty());
}

TEST(EthBasicInfo, TwoThreadsWritingTwoRecordsEachGetTheirOwnText) {
    EthBasicInfo first = boardPort();
    EthBasicInfo second = boardPort();
    second.ipv4 = 0x0A141E28;         // 10.20.30.40
    second.networkMask = 0xFF000000;  // 255.0.0.0
    std::atomic<bool> go{false};
    auto writeMany = [&go](const EthBasicInfo& eth, const char* ipv4, const char* mask) {
        while (!go.load()) {
            std::this_thread::yield();
        }
        int wrong = 0;
        for (int i = 0; i < 20000; ++i) {
            Json::Value out;
            eth.Serialize(out);
            if (out["ipv4"] != ipv4 || out["network-mask"] != mask) {
                ++wrong;
            }
        }
        return wrong;
    };
    int firstWrong = -1;
    int secondWrong = -1;
    std::thread a([&] { firstWrong = writeMany(first, "192.168.1.10", "255.255.255.0"); });
    std::thread b([&] { secondWrong = writeMany(second, "10.20.30.40", "255.0.0.0"); });
    go = true;
    a.join();
    b.join();
    EXPECT_EQ(firstWrong, 0);
    EXPECT_EQ(secondWrong, 0);
}

TEST(EthBasicInfo, WrongJsonTypeRaisesJsonException) {
    EthBasicInfo eth;
    Json::Value address = parseJson(R"({"ipv4": {"a": 1}})");
    EXPECT_THROW(eth.Deserialize(address), Json::LogicError);
    Json::Value sfp = parseJson(R"({"ipv4": "1.2.3.4", "network-mask": "1.2.3.4", "sfp": 5})");
    EXPECT_THROW(eth.Deserialize(sfp), Json::LogicError);
    Json::Value ifid = parseJson(R"({"ifid": -1})");
    EXPECT_THROW(eth.Deserialize(ifid), Json::LogicError);
}

// ---------------------------------------------------------------------------------------------

namespace {

EthBandwidthInfo twoInterfaces() {
    EthBandwidthInfo bw;
    bw.ethCount = 2;
    bw.cpuBandwidth[0] = {1000, 2000};
    bw.cpuBandwidth[1] = {3000, 4000};
    bw.linkBandwidth[0] = {10000000000ull, 20000000000ull};
    bw.linkBandwidth[1] = {std::numeric_limits<std::uint64_t>::max(), 5};
    return bw;
}

// A document describing n interfaces, entry i holding 100*i+1 .. 100*i+4.
Json::Value documentOf(unsigned count, unsigned entries) {
    Json::Value in;
    in["ethCount"] = count;
    for (Json::ArrayIndex i = 0; i < entries; ++i) {
        in["cpuBandwidth"][i]["rx_bandwidth_bps"] = 100 * i + 1;
        in["cpuBandwidth"][i]["tx_bandwidth_bps"] = 100 * i + 2;
        in["linkBandwidth"][i]["rx_bandwidth_bps"] = 100 * i + 3;
        in["linkBandwidth"][i]["tx_bandwidth_bps"] = 100 * i + 4;
    }
    return in;
}

}  // namespace

TEST(EthBandwidthInfo, DefaultsAreZero) {
    EthBandwidthInfo bw;
    EXPECT_EQ(bw.ethCount, 0u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(bw.cpuBandwidth[i].rxBandwidthBps, 0u);
        EXPECT_EQ(bw.cpuBandwidth[i].txBandwidthBps, 0u);
        EXPECT_EQ(bw.linkBandwidth[i].rxBandwidthBps, 0u);
        EXPECT_EQ(bw.linkBandwidth[i].txBandwidthBps, 0u);
    }
}

TEST(EthBandwidthInfo, CountZeroSerializesOnlyTheCount) {
    EthBandwidthInfo bw = twoInterfaces();
    bw.ethCount = 0;
    Json::Value out;
    bw.Serialize(out);
    EXPECT_EQ(text(out), text(parseJson(R"({"ethCount": 0})")));
    EXPECT_EQ(out["ethCount"].type(), Json::uintValue);
}

TEST(EthBandwidthInfo, SerializeWritesOneEntryPerInterface) {
    EthBandwidthInfo bw = twoInterfaces();
    bw.ethCount = 1;
    Json::Value out;
    bw.Serialize(out);
    EXPECT_EQ(text(out), text(parseJson(R"({"ethCount": 1,
        "cpuBandwidth": [{"rx_bandwidth_bps": 1000, "tx_bandwidth_bps": 2000}],
        "linkBandwidth": [{"rx_bandwidth_bps": 10000000000, "tx_bandwidth_bps": 20000000000}]})")));
    EXPECT_EQ(out["cpuBandwidth"][0]["rx_bandwidth_bps"].type(), Json::uintValue);
}

TEST(EthBandwidthInfo, RoundTripOfTwoInterfacesKeepsFull64BitValues) {
    Json::Value out;
    twoInterfaces().Serialize(out);
    EthBandwidthInfo back;
    back.Deserialize(out);
    EXPECT_EQ(back.ethCount, 2u);
    EXPECT_EQ(back.cpuBandwidth[0].rxBandwidthBps, 1000u);
    EXPECT_EQ(back.cpuBandwidth[0].txBandwidthBps, 2000u);
    EXPECT_EQ(back.cpuBandwidth[1].rxBandwidthBps, 3000u);
    EXPECT_EQ(back.cpuBandwidth[1].txBandwidthBps, 4000u);
    EXPECT_EQ(back.linkBandwidth[0].rxBandwidthBps, 10000000000ull);
    EXPECT_EQ(back.linkBandwidth[0].txBandwidthBps, 20000000000ull);
    EXPECT_EQ(back.linkBandwidth[1].rxBandwidthBps, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(back.linkBandwidth[1].txBandwidthBps, 5u);
}

TEST(EthBandwidthInfo, CountAboveTwoIsClampedWhenWritten) {
    auto bw = std::make_unique<EthBandwidthInfo>(twoInterfaces());
    bw->ethCount = 5;
    Json::Value out;
    bw->Serialize(out);
    EXPECT_EQ(out["ethCount"].asUInt(), 2u);
    ASSERT_EQ(out["cpuBandwidth"].size(), 2u);
    ASSERT_EQ(out["linkBandwidth"].size(), 2u);
    EXPECT_EQ(out["cpuBandwidth"][1]["tx_bandwidth_bps"].asUInt64(), 4000u);
    EXPECT_EQ(out["linkBandwidth"][1]["tx_bandwidth_bps"].asUInt64(), 5u);
    EXPECT_EQ(bw->ethCount, 5u);  // the record is not changed by writing
}

TEST(EthBandwidthInfo, CountAboveTwoIsClampedWhenRead) {
    Json::Value in = documentOf(7, 7);
    const Json::Value original = in;
    auto bw = std::make_unique<EthBandwidthInfo>();
    bw->Deserialize(in);
    EXPECT_EQ(bw->ethCount, 2u);
    EXPECT_EQ(bw->cpuBandwidth[0].rxBandwidthBps, 1u);
    EXPECT_EQ(bw->cpuBandwidth[0].txBandwidthBps, 2u);
    EXPECT_EQ(bw->linkBandwidth[0].rxBandwidthBps, 3u);
    EXPECT_EQ(bw->linkBandwidth[0].txBandwidthBps, 4u);
    EXPECT_EQ(bw->cpuBandwidth[1].rxBandwidthBps, 101u);
    EXPECT_EQ(bw->cpuBandwidth[1].txBandwidthBps, 102u);
    EXPECT_EQ(bw->linkBandwidth[1].rxBandwidthBps, 103u);
    EXPECT_EQ(bw->linkBandwidth[1].txBandwidthBps, 104u);
    EXPECT_EQ(in, original);  // entries beyond the second are not even looked at
}

TEST(EthBandwidthInfo, LargestCountIsClampedWhenRead) {
    Json::Value in = documentOf(4294967295u, 2);
    auto bw = std::make_unique<EthBandwidthInfo>();
    bw->Deserialize(in);
    EXPECT_EQ(bw->ethCount, 2u);
    EXPECT_EQ(bw->linkBandwidth[1].txBandwidthBps, 104u);
    EXPECT_EQ(in["cpuBandwidth"].size(), 2u);
}

TEST(EthBandwidthInfo, CountZeroReadsNothingElse) {
    EthBandwidthInfo bw = twoInterfaces();
    Json::Value in = documentOf(0, 1);
    bw.Deserialize(in);
    EXPECT_EQ(bw.ethCount, 0u);
    EXPECT_EQ(bw.cpuBandwidth[0].rxBandwidthBps, 1000u);
    EXPECT_EQ(bw.linkBandwidth[1].txBandwidthBps, 5u);

    Json::Value empty(Json::objectValue);
    bw.Deserialize(empty);
    EXPECT_EQ(bw.ethCount, 0u);
    EXPECT_EQ(empty.size(), 0u);
}

TEST(EthBandwidthInfo, MissingArraysReadAsZeroAndAppearAsNulls) {
    EthBandwidthInfo bw = twoInterfaces();
    Json::Value in = parseJson(R"({"ethCount": 1})");
    bw.Deserialize(in);
    EXPECT_EQ(bw.ethCount, 1u);
    EXPECT_EQ(bw.cpuBandwidth[0].rxBandwidthBps, 0u);
    EXPECT_EQ(bw.cpuBandwidth[0].txBandwidthBps, 0u);
    EXPECT_EQ(bw.linkBandwidth[0].rxBandwidthBps, 0u);
    EXPECT_EQ(bw.linkBandwidth[0].txBandwidthBps, 0u);
    EXPECT_EQ(bw.cpuBandwidth[1].rxBandwidthBps, 3000u);  // beyond the count: untouched
    EXPECT_EQ(in, parseJson(R"({"ethCount": 1, "cpuBandwidth": [null], "linkBandwidth": [null]})"));
}

TEST(EthBandwidthInfo, NegativeCountRaisesJsonException) {
    EthBandwidthInfo bw;
    Json::Value in = parseJson(R"({"ethCount": -1})");
    EXPECT_THROW(bw.Deserialize(in), Json::LogicError);
}
