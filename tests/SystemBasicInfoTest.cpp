#include "SystemBasicInfo.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "FileMgr.h"
#include "FileUtil.h"
#include "LogCapture.h"
#include "TempDir.h"

namespace {

// Same JSON text: integers compare equal whether jsoncpp holds them signed or unsigned.
std::string text(const Json::Value& value) {
    return value.toStyledString();
}

const char* const kDefaultDocument = R"({
    "fw-version": "", "fw-date": "", "product": "", "bitstream": "",
    "chipid-name": "", "chipid-version": "", "serial-number": "",
    "madi-lock": false,
    "rtsp": {"eth-port": "", "tpc-port": 0},
    "advertisement": {"eth-port": "", "tpc-port": 0},
    "temperature": {"fpga": 65535},
    "fan-speed": {"main": -1},
    "cpu-loadavg": {"load-average-1min": -1.0, "load-average-5min": -1.0,
                    "load-average-15min": -1.0},
    "deviceCapabilities": {"numMediaIpInterfaces": 0,
        "sendersStreamCount": {"audio": 0, "video": 0, "ancillary": 0},
        "receiversStreamCount": {"audio": 0, "video": 0, "ancillary": 0}}})";

const char* const kUnknownProductInfo = R"({"fan-speed": -1, "slot-number": -1,
    "voltage": -1, "current": -1, "board-type": -1, "rear-module-id-1": -1,
    "rear-module-id-2": -1, "board-rev": -1, "base-io-id": -1, "base-rev-issue": -1,
    "daughter-card": {"id": -1, "current": -1, "voltage": -1, "rev": -1, "io-id": -1,
                      "variant": -1, "issue": -1}})";

EthBasicInfo port(const std::string& name, std::uint32_t ipv4, std::uint32_t ifid) {
    EthBasicInfo eth;
    eth.ethName = name;
    eth.ipv4 = ipv4;
    eth.networkMask = 0xFFFFFF00;
    eth.mac = "00:1b:21:3a:4f:" + std::to_string(10 + ifid);
    eth.linkup = ifid % 2 == 1;
    eth.ifid = ifid;
    eth.sfp.present = true;
    eth.sfp.vendorName = "FINISAR CORP.";
    eth.sfp.partNumber = "FTLX8574D3BCL";
    eth.sfp.serialNumber = "ARF0K2" + std::to_string(ifid);
    eth.sfp.revision = "A";
    eth.sfp.connector = "LC";
    eth.sfp.wavelength = 850;
    eth.sfp.temperature = 41.5 + ifid;
    eth.sfp.supplyVoltage = 3.3;
    eth.sfp.txPower = -2.5;
    eth.sfp.rxPower = -3.1;
    return eth;
}

SystemError error(int code, const std::string& description) {
    SystemError e;
    e.code = code;
    e.description = description;
    return e;
}

// A whole board as the monitoring daemon reports it.
SystemBasicInfo fullBoard() {
    SystemBasicInfo info;
    info.fwVersion = "2.4.1";
    info.fwDate = "2024-03-18";
    info.product = "TARVIK";
    info.bitstream = "tarvik_top_v37.bit";
    info.serialNumber = "TRV-00421";
    info.eth.push_back(port("eth1", 0xC0A8010A, 1));  // 192.168.1.10
    info.eth.push_back(port("eth2", 0x0A141E28, 2));  // 10.20.30.40
    info.rtsp.ethPort = "eth1";
    info.rtsp.tpcPort = 554;
    info.advertisement.ethPort = "eth2";
    info.advertisement.tpcPort = 5353;
    info.chipidVersion = "1.2";
    info.chipidName = "ZEL-X1";
    info.temperature.fpga = 58;
    info.fanSpeed.main = 4200;
    info.madiLock = true;
    info.deviceCapabilities.numMediaIpInterfaces = 2;
    info.deviceCapabilities.sendersAudio = 64;
    info.deviceCapabilities.sendersVideo = 8;
    info.deviceCapabilities.sendersAncillary = 9;
    info.deviceCapabilities.receiversAudio = 128;
    info.deviceCapabilities.receiversVideo = 16;
    info.deviceCapabilities.receiversAncillary = 17;
    info.productInfo.fanSpeed = 3900;
    info.productInfo.slotNumber = 4;
    info.productInfo.voltage = 12000;
    info.productInfo.current = 850;
    info.productInfo.boardType = 17;
    info.productInfo.rearModuleId1 = 101;
    info.productInfo.rearModuleId2 = 102;
    info.productInfo.boardRev = 3;
    info.productInfo.baseIoId = 55;
    info.productInfo.baseRevIssue = 6;
    info.productInfo.daughterCard.id = 7;
    info.productInfo.daughterCard.current = 1200;
    info.productInfo.daughterCard.voltage = 3300;
    info.productInfo.daughterCard.rev = 2;
    info.productInfo.daughterCard.ioId = 41;
    info.productInfo.daughterCard.variant = 5;
    info.productInfo.daughterCard.issue = 1;
    info.cpuLoadavg.loadAverage1min = 0.52;
    info.cpuLoadavg.loadAverage5min = 1.25;
    info.cpuLoadavg.loadAverage15min = 0.75;
    info.errors.push_back(error(3, "PTP not locked"));
    info.errors.push_back(error(17, "SFP eth2 rx power low"));
    info.errors.push_back(error(42, "fan speed below limit"));
    return info;
}

void expectUnknownProductInfo(const TarvikInfo& info) {
    Json::Value out;
    info.Serialize(out);
    EXPECT_EQ(out, parseJson(kUnknownProductInfo));
}

std::vector<std::string> names(const std::list<EthBasicInfo>& eth) {
    std::vector<std::string> result;
    for (const EthBasicInfo& e : eth) {
        result.push_back(e.ethName);
    }
    return result;
}

}  // namespace

TEST(SystemBasicInfo, DefaultsAreEmptyAndUnknown) {
    SystemBasicInfo info;
    EXPECT_EQ(info.fwVersion, "");
    EXPECT_EQ(info.serialNumber, "");
    EXPECT_TRUE(info.eth.empty());
    EXPECT_TRUE(info.errors.empty());
    EXPECT_FALSE(info.madiLock);
    EXPECT_EQ(info.temperature.fpga, 65535);
    EXPECT_EQ(info.fanSpeed.main, -1);
    EXPECT_EQ(info.productInfo.slotNumber, -1);
    EXPECT_DOUBLE_EQ(info.cpuLoadavg.loadAverage15min, -1.0);
    EXPECT_EQ(info.deviceCapabilities.numMediaIpInterfaces, 0);
    EXPECT_EQ(info.rtsp.tpcPort, 0u);
}

TEST(SystemBasicInfo, DefaultSerializesWithoutListsAndProductInfo) {
    Json::Value out;
    SystemBasicInfo().Serialize(out);
    EXPECT_EQ(text(out), text(parseJson(kDefaultDocument)));
    EXPECT_FALSE(out.isMember("eth"));
    EXPECT_FALSE(out.isMember("errors"));
    EXPECT_FALSE(out.isMember("product-info"));
    EXPECT_EQ(out["cpu-loadavg"]["load-average-1min"].type(), Json::realValue);
}

TEST(SystemBasicInfo, TarvikGainsProductInfoOfUnknowns) {
    SystemBasicInfo info;
    info.product = "TARVIK";
    Json::Value out;
    info.Serialize(out);
    Json::Value expected = parseJson(kDefaultDocument);
    expected["product"] = "TARVIK";
    expected["product-info"] = parseJson(kUnknownProductInfo);
    EXPECT_EQ(text(out), text(expected));
    EXPECT_EQ(out["product-info"].size(), 11u);
    EXPECT_EQ(out["product-info"]["daughter-card"].size(), 7u);
}

TEST(SystemBasicInfo, ProductNameOtherThanExactlyTarvikWritesNoProductInfo) {
    for (const char* name : {"tarvik", "Tarvik", "TARVIK ", "", "OTHER"}) {
        SystemBasicInfo info;
        info.product = name;
        info.productInfo.slotNumber = 4;
        Json::Value out;
        info.Serialize(out);
        EXPECT_FALSE(out.isMember("product-info")) << name;
        EXPECT_EQ(out["product"], name);
    }
}

TEST(SystemBasicInfo, SerializeKeepsOtherKeysOfTheTarget) {
    Json::Value out;
    out["owner"] = "monitor";
    SystemBasicInfo().Serialize(out);
    Json::Value expected = parseJson(kDefaultDocument);
    expected["owner"] = "monitor";
    EXPECT_EQ(text(out), text(expected));
}

TEST(SystemBasicInfo, SerializeWritesListsInOrderThroughTheRecords) {
    const SystemBasicInfo info = fullBoard();
    Json::Value out;
    info.Serialize(out);
    ASSERT_EQ(out["eth"].size(), 2u);
    Json::Value firstPort;
    info.eth.front().Serialize(firstPort);
    EXPECT_EQ(out["eth"][0], firstPort);
    EXPECT_EQ(out["eth"][1]["ipv4"], "10.20.30.40");
    EXPECT_EQ(out["eth"][1]["sfp"]["serial-number"], "ARF0K22");
    EXPECT_EQ(out["errors"], parseJson(R"([{"code": 3, "description": "PTP not locked"},
        {"code": 17, "description": "SFP eth2 rx power low"},
        {"code": 42, "description": "fan speed below limit"}])"));
    EXPECT_EQ(text(out["rtsp"]), text(parseJson(R"({"eth-port": "eth1", "tpc-port": 554})")));
    EXPECT_EQ(text(out["advertisement"]),
              text(parseJson(R"({"eth-port": "eth2", "tpc-port": 5353})")));
    EXPECT_EQ(out["temperature"], parseJson(R"({"fpga": 58})"));
    EXPECT_EQ(out["fan-speed"], parseJson(R"({"main": 4200})"));
    EXPECT_EQ(out["madi-lock"], true);
    EXPECT_EQ(out["serial-number"], "TRV-00421");
    EXPECT_EQ(out["chipid-name"], "ZEL-X1");
    EXPECT_EQ(out["chipid-version"], "1.2");
    EXPECT_EQ(out["deviceCapabilities"]["receiversStreamCount"]["ancillary"], 17);
    EXPECT_EQ(out["product-info"]["daughter-card"]["io-id"], 41);
    EXPECT_EQ(out["product-info"]["slot-number"], 4);
}

TEST(SystemBasicInfo, DeserializeOfEmptyObjectGivesReadingDefaults) {
    LogCapture log;
    SystemBasicInfo info = fullBoard();
    Json::Value in(Json::objectValue);
    info.Deserialize(in);
    EXPECT_EQ(info.fwVersion, "");
    EXPECT_EQ(info.fwDate, "");
    EXPECT_EQ(info.product, "");
    EXPECT_EQ(info.bitstream, "");
    EXPECT_EQ(info.chipidName, "");
    EXPECT_EQ(info.chipidVersion, "");
    EXPECT_EQ(info.serialNumber, "NA");
    EXPECT_FALSE(info.madiLock);
    EXPECT_TRUE(info.eth.empty());
    EXPECT_TRUE(info.errors.empty());
    EXPECT_EQ(info.rtsp.ethPort, "");
    EXPECT_EQ(info.rtsp.tpcPort, 0u);
    EXPECT_EQ(info.advertisement.ethPort, "");
    EXPECT_EQ(info.advertisement.tpcPort, 0u);
    EXPECT_EQ(info.temperature.fpga, 65535);
    EXPECT_EQ(info.fanSpeed.main, -1);
    EXPECT_DOUBLE_EQ(info.cpuLoadavg.loadAverage1min, -1.0);
    EXPECT_DOUBLE_EQ(info.cpuLoadavg.loadAverage5min, -1.0);
    EXPECT_DOUBLE_EQ(info.cpuLoadavg.loadAverage15min, -1.0);
    expectUnknownProductInfo(info.productInfo);
    EXPECT_EQ(info.deviceCapabilities.sendersAudio, 64);  // absent: kept
    EXPECT_EQ(info.deviceCapabilities.numMediaIpInterfaces, 2);
    EXPECT_TRUE(log.lines().empty());
}

TEST(SystemBasicInfo, DeserializeAddsNullMembersForTheMissingObjects) {
    SystemBasicInfo info;
    Json::Value in = parseJson(R"({"product": "TARVIK"})");
    info.Deserialize(in);
    // The main-board record reaches on into its own "daughter-card" the same way.
    EXPECT_EQ(in, parseJson(R"({"product": "TARVIK", "rtsp": null, "advertisement": null,
        "eth": null, "temperature": null, "fan-speed": null,
        "product-info": {"daughter-card": null}, "cpu-loadavg": null, "errors": null})"));
}

TEST(SystemBasicInfo, ThreeEthernetElementsReplaceFiveInterfaces) {
    SystemBasicInfo info;
    for (int i = 0; i < 5; ++i) {
        info.eth.push_back(port("old" + std::to_string(i), 0x0A000001, 9));
    }
    Json::Value in = parseJson(R"({"eth": [
        {"eth-name": "eth3", "ipv4": "10.0.0.3", "network-mask": "255.0.0.0", "ifid": 3},
        {"eth-name": "eth1", "ipv4": "10.0.0.1", "network-mask": "255.0.0.0", "ifid": 1},
        {"eth-name": "eth2", "ipv4": "10.0.0.2", "network-mask": "255.0.0.0", "ifid": 2}]})");
    info.Deserialize(in);
    EXPECT_EQ(names(info.eth), (std::vector<std::string>{"eth3", "eth1", "eth2"}));
    EXPECT_EQ(info.eth.front().ipv4, 0x0A000003u);
    EXPECT_EQ(info.eth.back().ifid, 2u);
    EXPECT_FALSE(info.eth.back().sfp.present);  // each element starts from a fresh record
}

TEST(SystemBasicInfo, ErrorsAreReplacedWithDefaultsForMissingMembers) {
    SystemBasicInfo info = fullBoard();
    Json::Value in = parseJson(R"({"errors": [{"code": 8}, {"description": "no code"}]})");
    info.Deserialize(in);
    ASSERT_EQ(info.errors.size(), 2u);
    EXPECT_EQ(info.errors.front().code, 8);
    EXPECT_EQ(info.errors.front().description, "");
    EXPECT_EQ(info.errors.back().code, -1);
    EXPECT_EQ(info.errors.back().description, "no code");
}

TEST(SystemBasicInfo, EthernetElementWithoutAddressesLogsBoth) {
    LogCapture log;
    SystemBasicInfo info;
    Json::Value in = parseJson(R"({"eth": [{"eth-name": "eth0"}]})");
    info.Deserialize(in);
    ASSERT_EQ(info.eth.size(), 1u);
    EXPECT_EQ(info.eth.front().ipv4, 0u);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, "ERR::Error parsing IP '': invalid IP address"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, "ERR::Error parsing IP '': invalid IP address"));
}

TEST(SystemBasicInfo, RoundTripOfOtherProductResetsTheMainBoardRecord) {
    SystemBasicInfo info = fullBoard();
    info.product = "OTHER";
    Json::Value out;
    info.Serialize(out);
    info.Deserialize(out);
    EXPECT_EQ(info.product, "OTHER");
    expectUnknownProductInfo(info.productInfo);
    EXPECT_EQ(info.fanSpeed.main, 4200);  // the rest came back
    EXPECT_EQ(info.errors.size(), 3u);
}

TEST(SystemBasicInfo, RoundTripOfTarvikKeepsTheMainBoardRecord) {
    SystemBasicInfo info = fullBoard();
    Json::Value out;
    info.Serialize(out);
    SystemBasicInfo back;
    back.Deserialize(out);
    EXPECT_EQ(back.productInfo.boardType, 17);
    EXPECT_EQ(back.productInfo.daughterCard.ioId, 41);
}

TEST(SystemBasicInfo, PartialCapabilitiesKeepTheMissingCounts) {
    SystemBasicInfo info = fullBoard();
    Json::Value in = parseJson(R"({"deviceCapabilities": {"numMediaIpInterfaces": 1}})");
    info.Deserialize(in);
    EXPECT_EQ(info.deviceCapabilities.numMediaIpInterfaces, 1);
    EXPECT_EQ(info.deviceCapabilities.sendersVideo, 8);
    EXPECT_EQ(info.deviceCapabilities.receiversAudio, 128);
}

TEST(SystemBasicInfo, FullBoardSurvivesStoreLoadAndReadIntoADefaultRecord) {
    TempDir dir;
    const std::string path = dir.file("system.json");
    Json::Value written;
    fullBoard().Serialize(written);
    const std::string firstText = written.toStyledString();

    FileMgr files;
    ASSERT_EQ(files.storeLocalCfg(path, written), 0);
    EXPECT_EQ(readFile(path), firstText);
    Json::Value loaded;
    ASSERT_EQ(files.loadLocalCfg(path, loaded), 0);

    LogCapture log;
    SystemBasicInfo back;
    back.Deserialize(loaded);
    Json::Value again;
    back.Serialize(again);
    EXPECT_EQ(again.toStyledString(), firstText);
    EXPECT_TRUE(log.lines().empty());

    EXPECT_EQ(back.serialNumber, "TRV-00421");
    EXPECT_EQ(names(back.eth), (std::vector<std::string>{"eth1", "eth2"}));
    EXPECT_EQ(std::next(back.eth.begin())->ipv4, 0x0A141E28u);
    EXPECT_DOUBLE_EQ(back.eth.front().sfp.supplyVoltage, 3.3);
    EXPECT_DOUBLE_EQ(back.cpuLoadavg.loadAverage1min, 0.52);
    EXPECT_EQ(back.errors.back().description, "fan speed below limit");
    EXPECT_EQ(back.advertisement.tpcPort, 5353u);
}

TEST(SystemBasicInfo, WrongJsonTypeRaisesJsonException) {
    SystemBasicInfo info;
    Json::Value temperature = parseJson(R"({"temperature": 58})");
    EXPECT_THROW(info.Deserialize(temperature), Json::LogicError);
    Json::Value eth = parseJson(R"({"eth": {"eth-name": "eth0"}})");
    EXPECT_THROW(info.Deserialize(eth), Json::LogicError);
}

TEST(SystemBasicInfo, ScalarWhereAListBelongsReadsAsEmpty) {
    SystemBasicInfo info = fullBoard();
    Json::Value in = parseJson(R"({"eth": "none", "errors": 3})");
    info.Deserialize(in);
    EXPECT_TRUE(info.eth.empty());
    EXPECT_TRUE(info.errors.empty());
}

TEST(SystemBasicInfo, ListsWrittenOverALongerArrayLeaveItsLaterElements) {
    SystemBasicInfo info;
    info.eth.push_back(port("eth0", 0x0A000001, 1));
    info.errors.push_back(error(5, "link lost"));
    Json::Value out = parseJson(R"({
        "eth": [{"eth-name": "old0"}, {"eth-name": "old1"}, "stale"],
        "errors": [{"code": 1}, {"code": 2, "description": "old"}, 7]})");
    info.Serialize(out);
    ASSERT_EQ(out["eth"].size(), 3u);
    EXPECT_EQ(out["eth"][0]["eth-name"], "eth0");
    EXPECT_EQ(out["eth"][0]["ipv4"], "10.0.0.1");
    EXPECT_EQ(out["eth"][1], parseJson(R"({"eth-name": "old1"})"));
    EXPECT_EQ(out["eth"][2], "stale");
    EXPECT_EQ(out["errors"], parseJson(R"([{"code": 5, "description": "link lost"},
        {"code": 2, "description": "old"}, 7])"));
}

TEST(SystemBasicInfo, ListElementsKeepMembersTheirRecordsDoNotWrite) {
    SystemBasicInfo info;
    info.eth.push_back(port("eth0", 0x0A000001, 1));
    info.errors.push_back(error(5, "link lost"));
    Json::Value out = parseJson(R"({
        "eth": [{"eth-name": "old0", "vlan": 12, "sfp": {"lane": 2}}],
        "errors": [{"code": 1, "raised-at": "12:00"}]})");
    info.Serialize(out);
    EXPECT_EQ(out["eth"][0]["eth-name"], "eth0");
    EXPECT_EQ(out["eth"][0]["vlan"], 12);
    EXPECT_EQ(out["eth"][0]["sfp"]["lane"], 2);
    EXPECT_EQ(out["eth"][0]["sfp"]["present"], info.eth.front().sfp.present);
    EXPECT_EQ(out["errors"],
              parseJson(R"([{"code": 5, "description": "link lost", "raised-at": "12:00"}])"));
}

TEST(SystemBasicInfo, EmptyListsLeaveAnExistingArrayAlone) {
    SystemBasicInfo info;
    Json::Value out = parseJson(R"({"eth": [{"eth-name": "old0"}], "errors": [3]})");
    info.Serialize(out);
    EXPECT_EQ(out["eth"], parseJson(R"([{"eth-name": "old0"}])"));
    EXPECT_EQ(out["errors"], parseJson("[3]"));
}

TEST(SystemBasicInfo, ReadingTheListsStillReplacesThem) {
    LogCapture log;
    SystemBasicInfo info = fullBoard();
    Json::Value in = parseJson(R"({"eth": [{"eth-name": "eth7"}], "errors": [{"code": 9}]})");
    info.Deserialize(in);
    EXPECT_EQ(names(info.eth), (std::vector<std::string>{"eth7"}));
    ASSERT_EQ(info.errors.size(), 1u);
    EXPECT_EQ(info.errors.front().code, 9);
}
