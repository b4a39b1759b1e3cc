#include "TarvikInfo.h"

#include <gtest/gtest.h>

#include "FileUtil.h"
#include "LogCapture.h"

namespace {

const char* const kUnknownDaughterCard = R"({"id": -1, "current": -1, "voltage": -1,
    "rev": -1, "io-id": -1, "variant": -1, "issue": -1})";

// Distinct values, so that a key read into or written from the wrong field shows.
DaughterBoard someDaughterBoard() {
    DaughterBoard board;
    board.id = 7;
    board.current = 1200;
    board.voltage = 3300;
    board.rev = 2;
    board.ioId = 41;
    board.variant = 5;
    board.issue = 3;
    return board;
}

const char* const kSomeDaughterBoard = R"({"id": 7, "current": 1200, "voltage": 3300,
    "rev": 2, "io-id": 41, "variant": 5, "issue": 3})";

TarvikInfo someTarvik() {
    TarvikInfo info;
    info.fanSpeed = 4200;
    info.slotNumber = 9;
    info.voltage = 12000;
    info.current = 850;
    info.boardType = 17;
    info.rearModuleId1 = 101;
    info.rearModuleId2 = 102;
    info.boardRev = 4;
    info.baseIoId = 55;
    info.baseRevIssue = 6;
    info.daughterCard = someDaughterBoard();
    return info;
}

const char* const kSomeTarvik = R"({"fan-speed": 4200, "slot-number": 9, "voltage": 12000,
    "current": 850, "board-type": 17, "rear-module-id-1": 101, "rear-module-id-2": 102,
    "board-rev": 4, "base-io-id": 55, "base-rev-issue": 6,
    "daughter-card": {"id": 7, "current": 1200, "voltage": 3300, "rev": 2, "io-id": 41,
                      "variant": 5, "issue": 3}})";

void expectUnknown(const DaughterBoard& board) {
    EXPECT_EQ(board.id, -1);
    EXPECT_EQ(board.current, -1);
    EXPECT_EQ(board.voltage, -1);
    EXPECT_EQ(board.rev, -1);
    EXPECT_EQ(board.ioId, -1);
    EXPECT_EQ(board.variant, -1);
    EXPECT_EQ(board.issue, -1);
}

void expectTopLevelUnknown(const TarvikInfo& info) {
    EXPECT_EQ(info.fanSpeed, -1);
    EXPECT_EQ(info.slotNumber, -1);
    EXPECT_EQ(info.voltage, -1);
    EXPECT_EQ(info.current, -1);
    EXPECT_EQ(info.boardType, -1);
    EXPECT_EQ(info.rearModuleId1, -1);
    EXPECT_EQ(info.rearModuleId2, -1);
    EXPECT_EQ(info.boardRev, -1);
    EXPECT_EQ(info.baseIoId, -1);
    EXPECT_EQ(info.baseRevIssue, -1);
}

void expectSomeDaughterBoard(const DaughterBoard& board) {
    EXPECT_EQ(board.id, 7);
    EXPECT_EQ(board.current, 1200);
    EXPECT_EQ(board.voltage, 3300);
    EXPECT_EQ(board.rev, 2);
    EXPECT_EQ(board.ioId, 41);
    EXPECT_EQ(board.variant, 5);
    EXPECT_EQ(board.issue, 3);
}

}  // namespace

// --- SystemTemperature -----------------------------------------------------------------------

TEST(SystemTemperature, DefaultIs65535) {
    EXPECT_EQ(SystemTemperature().fpga, 65535);
}

TEST(SystemTemperature, SerializeSetsFpgaAndKeepsOtherKeys) {
    SystemTemperature t;
    t.fpga = 48;
    Json::Value out;
    out["keep"] = true;
    t.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"keep": true, "fpga": 48})"));
}

TEST(SystemTemperature, DeserializeOfEmptyObjectGives65535) {
    SystemTemperature t;
    t.fpga = 48;
    Json::Value in(Json::objectValue);
    t.Deserialize(in);
    EXPECT_EQ(t.fpga, 65535);
    Json::Value given = parseJson(R"({"fpga": -5})");
    t.Deserialize(given);
    EXPECT_EQ(t.fpga, -5);
}

// --- FanSpeed --------------------------------------------------------------------------------

TEST(FanSpeed, DefaultIsMinusOne) {
    EXPECT_EQ(FanSpeed().main, -1);
}

TEST(FanSpeed, RoundTripAndEmptyObject) {
    FanSpeed fan;
    fan.main = 3100;
    Json::Value out;
    fan.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"main": 3100})"));
    FanSpeed back;
    back.Deserialize(out);
    EXPECT_EQ(back.main, 3100);
    Json::Value empty(Json::objectValue);
    back.Deserialize(empty);
    EXPECT_EQ(back.main, -1);
}

// --- DaughterBoard ---------------------------------------------------------------------------

TEST(DaughterBoard, DefaultsAreMinusOne) {
    expectUnknown(DaughterBoard());
}

TEST(DaughterBoard, SerializeWritesSevenMembersIntoTheGivenObject) {
    Json::Value out;
    out["keep"] = 1;
    someDaughterBoard().Serialize(out);
    Json::Value expected = parseJson(kSomeDaughterBoard);
    expected["keep"] = 1;
    EXPECT_EQ(out, expected);
}

TEST(DaughterBoard, DeserializeReadsEachMemberIntoItsField) {
    DaughterBoard board;
    Json::Value in = parseJson(kSomeDaughterBoard);
    board.Deserialize(in);
    expectSomeDaughterBoard(board);
}

TEST(DaughterBoard, DeserializeOfEmptyObjectGivesMinusOne) {
    DaughterBoard board = someDaughterBoard();
    Json::Value in(Json::objectValue);
    board.Deserialize(in);
    expectUnknown(board);
}

// --- TarvikInfo ------------------------------------------------------------------------------

TEST(TarvikInfo, SerializedAfterConstructionGivesTenUnknownsAndUnknownDaughterCard) {
    Json::Value out;
    TarvikInfo().Serialize(out);
    Json::Value expected = parseJson(R"({"fan-speed": -1, "slot-number": -1, "voltage": -1,
        "current": -1, "board-type": -1, "rear-module-id-1": -1, "rear-module-id-2": -1,
        "board-rev": -1, "base-io-id": -1, "base-rev-issue": -1})");
    expected["daughter-card"] = parseJson(kUnknownDaughterCard);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(out.size(), 11u);
    EXPECT_EQ(out["daughter-card"].size(), 7u);
}

TEST(TarvikInfo, SerializeWritesEveryFieldUnderItsKey) {
    Json::Value out;
    out["keep"] = "x";
    someTarvik().Serialize(out);
    Json::Value expected = parseJson(kSomeTarvik);
    expected["keep"] = "x";
    EXPECT_EQ(out, expected);
}

TEST(TarvikInfo, DeserializeReadsEveryFieldFromItsKey) {
    TarvikInfo info;
    Json::Value in = parseJson(kSomeTarvik);
    info.Deserialize(in);
    EXPECT_EQ(info.fanSpeed, 4200);
    EXPECT_EQ(info.slotNumber, 9);
    EXPECT_EQ(info.voltage, 12000);
    EXPECT_EQ(info.current, 850);
    EXPECT_EQ(info.boardType, 17);
    EXPECT_EQ(info.rearModuleId1, 101);
    EXPECT_EQ(info.rearModuleId2, 102);
    EXPECT_EQ(info.boardRev, 4);
    EXPECT_EQ(info.baseIoId, 55);
    EXPECT_EQ(info.baseRevIssue, 6);
    expectSomeDaughterBoard(info.daughterCard);
}

TEST(TarvikInfo, DeserializeWithoutDaughterCardGivesUnknownsAndAddsNullMember) {
    TarvikInfo info = someTarvik();
    Json::Value in = parseJson(R"({"slot-number": 3})");
    info.Deserialize(in);
    EXPECT_EQ(info.slotNumber, 3);
    EXPECT_EQ(info.fanSpeed, -1);
    EXPECT_EQ(info.baseRevIssue, -1);
    expectUnknown(info.daughterCard);
    ASSERT_TRUE(in.isMember("daughter-card"));
    EXPECT_TRUE(in["daughter-card"].isNull());
    EXPECT_EQ(in.size(), 2u);
}

TEST(TarvikInfo, DeserializeOfEmptyObjectGivesAllUnknown) {
    TarvikInfo info = someTarvik();
    Json::Value in(Json::objectValue);
    info.Deserialize(in);
    expectTopLevelUnknown(info);
    expectUnknown(info.daughterCard);
}

TEST(TarvikInfo, DaughterCardIsWhatDaughterBoardWritesAlone) {
    const TarvikInfo info = someTarvik();
    Json::Value whole;
    info.Serialize(whole);
    Json::Value alone;
    info.daughterCard.Serialize(alone);
    EXPECT_EQ(whole["daughter-card"], alone);
    EXPECT_EQ(whole["daughter-card"].toStyledString(), alone.toStyledString());

    Json::Value unknownWhole;
    TarvikInfo().Serialize(unknownWhole);
    Json::Value unknownAlone;
    DaughterBoard().Serialize(unknownAlone);
    EXPECT_EQ(unknownWhole["daughter-card"], unknownAlone);
}

TEST(TarvikInfo, SerializeReplacesAStaleDaughterCard) {
    Json::Value out = parseJson(R"({"daughter-card": {"stale": 1}})");
    someTarvik().Serialize(out);
    EXPECT_EQ(out["daughter-card"], parseJson(kSomeDaughterBoard));
}

TEST(TarvikInfo, WrongJsonTypeRaisesJsonException) {
    TarvikInfo info;
    Json::Value text = parseJson(R"({"voltage": "high"})");
    EXPECT_THROW(info.Deserialize(text), Json::LogicError);
    Json::Value card = parseJson(R"({"daughter-card": [1, 2]})");
    EXPECT_THROW(info.Deserialize(card), Json::LogicError);
}

// --- CpuLoadAverage --------------------------------------------------------------------------

TEST(CpuLoadAverage, DefaultsAreMinusOne) {
    CpuLoadAverage load;
    EXPECT_DOUBLE_EQ(load.loadAverage1min, -1.0);
    EXPECT_DOUBLE_EQ(load.loadAverage5min, -1.0);
    EXPECT_DOUBLE_EQ(load.loadAverage15min, -1.0);
}

TEST(CpuLoadAverage, SerializeWritesThreeDoubles) {
    CpuLoadAverage load;
    load.loadAverage1min = 0.5;
    load.loadAverage5min = 1.25;
    load.loadAverage15min = 2.0;
    Json::Value out;
    load.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"load-average-1min": 0.5, "load-average-5min": 1.25,
        "load-average-15min": 2.0})"));
    EXPECT_TRUE(out["load-average-15min"].isDouble());
    EXPECT_EQ(out["load-average-15min"].type(), Json::realValue);
}

TEST(CpuLoadAverage, DeserializeOfEmptyObjectGivesMinusOneThreeTimes) {
    CpuLoadAverage load;
    load.loadAverage1min = 3.0;
    load.loadAverage5min = 3.0;
    load.loadAverage15min = 3.0;
    Json::Value in(Json::objectValue);
    load.Deserialize(in);
    EXPECT_DOUBLE_EQ(load.loadAverage1min, -1.0);
    EXPECT_DOUBLE_EQ(load.loadAverage5min, -1.0);
    EXPECT_DOUBLE_EQ(load.loadAverage15min, -1.0);
}

TEST(CpuLoadAverage, DeserializeReadsEachKeyAndWidensIntegers) {
    CpuLoadAverage load;
    Json::Value in = parseJson(R"({"load-average-1min": 0.75, "load-average-5min": 2,
        "load-average-15min": 1.5})");
    load.Deserialize(in);
    EXPECT_DOUBLE_EQ(load.loadAverage1min, 0.75);
    EXPECT_DOUBLE_EQ(load.loadAverage5min, 2.0);
    EXPECT_DOUBLE_EQ(load.loadAverage15min, 1.5);
}

// --- SystemError -----------------------------------------------------------------------------

TEST(SystemError, DefaultsAreMinusOneAndEmpty) {
    SystemError error;
    EXPECT_EQ(error.code, -1);
    EXPECT_EQ(error.description, "");
}

TEST(SystemError, RoundTripKeepsCodeAndDescription) {
    SystemError error;
    error.code = 12;
    error.description = "PTP not locked";
    Json::Value out;
    error.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"code": 12, "description": "PTP not locked"})"));
    SystemError back;
    back.Deserialize(out);
    EXPECT_EQ(back.code, 12);
    EXPECT_EQ(back.description, "PTP not locked");
}

TEST(SystemError, DeserializeOfEmptyObjectGivesMinusOneAndEmptyText) {
    SystemError error;
    error.code = 4;
    error.description = "old";
    Json::Value in(Json::objectValue);
    error.Deserialize(in);
    EXPECT_EQ(error.code, -1);
    EXPECT_EQ(error.description, "");
}

TEST(HardwareRecords, NothingIsLogged) {
    LogCapture log;
    Json::Value in(Json::objectValue);
    SystemTemperature().Serialize(in);
    TarvikInfo info;
    info.Deserialize(in);
    info.Serialize(in);
    CpuLoadAverage load;
    load.Deserialize(in);
    SystemError error;
    error.Deserialize(in);
    EXPECT_TRUE(log.lines().empty());
}
