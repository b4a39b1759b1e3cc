#include "AlarmManager.h"

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

#include "FileMgr.h"
#include "FileUtil.h"
#include "LogCapture.h"
#include "TempDir.h"

namespace {

Alarm::AlarmType kind(int type) {
    return static_cast<Alarm::AlarmType>(type);
}

Alarm::AlarmLevel_e levelOf(int level) {
    return static_cast<Alarm::AlarmLevel_e>(level);
}

LogCapture::Line status(const std::string& description, const std::string& word) {
    return logLine(Logger::logInfo,
                   "INF::Status: alarm '" + description + "' changed to '" + word + "'");
}

std::vector<int> typesOf(const AlarmManager& manager) {
    std::vector<int> types;
    for (const Alarm& alarm : manager.getAlarmList()) {
        types.push_back(alarm.getType());
    }
    return types;
}

// The one alarm of a list (a copy: the lists of getAlarmList are temporaries).
Alarm only(const std::list<Alarm>& list) {
    EXPECT_EQ(list.size(), 1u);
    return list.empty() ? Alarm() : list.front();
}

void expectSameAlarms(const std::list<Alarm>& actual, const std::list<Alarm>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    auto a = actual.begin();
    for (const Alarm& e : expected) {
        EXPECT_EQ(a->getType(), e.getType());
        EXPECT_EQ(a->getSeverity().getSeverity(), e.getSeverity().getSeverity()) << e.getType();
        EXPECT_EQ(a->getDescription(), e.getDescription()) << e.getType();
        ++a;
    }
}

}  // namespace

class AlarmManagerTest : public testing::Test {
protected:
    LogCapture log;
    AlarmManager manager;
};

// ---- setAlarm ----

TEST_F(AlarmManagerTest, StartsEmptyAndUnchanged) {
    EXPECT_TRUE(manager.getAlarmList().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_FALSE(manager.isAlarmOn(Alarm::LINK_DOWN));
}

TEST_F(AlarmManagerTest, RaisingLinkDownStoresItLogsOnAndFlagsOnce) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    const Alarm stored = only(manager.getAlarmList());
    EXPECT_EQ(stored.getType(), Alarm::LINK_DOWN);
    EXPECT_EQ(stored.getDescription(), "Link is down");
    EXPECT_EQ(stored.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
    EXPECT_TRUE(manager.isAlarmOn(Alarm::LINK_DOWN));
    EXPECT_EQ(log.lines(),
              std::vector<LogCapture::Line>{
                  logLine(Logger::logInfo, "INF::Status: alarm 'Link is down' changed to 'ON'")});
    EXPECT_TRUE(manager.didAlarmListChange());
    EXPECT_FALSE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, RaisingAgainIsSilentAndLeavesTheFlagFalse) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_EQ(typesOf(manager), std::vector<int>{7});
}

TEST_F(AlarmManagerTest, RaisingAgainWithOtherNonZeroLevelIsSilent) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    manager.setAlarm(Alarm::LINK_DOWN, levelOf(2));
    manager.setAlarm(Alarm::LINK_DOWN, levelOf(-1));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_TRUE(manager.isAlarmOn(Alarm::LINK_DOWN));
}

TEST_F(AlarmManagerTest, ClearingARaisedAlarmLogsOffRemovesItAndFlags) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF);
    EXPECT_EQ(log.lines(),
              std::vector<LogCapture::Line>{
                  logLine(Logger::logInfo, "INF::Status: alarm 'Link is down' changed to 'OFF'")});
    EXPECT_FALSE(manager.isAlarmOn(Alarm::LINK_DOWN));
    EXPECT_TRUE(manager.getAlarmList().empty());
    EXPECT_TRUE(manager.didAlarmListChange());
    EXPECT_FALSE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, ClearingAnAbsentAlarmIsSilentAndLeavesAFalseFlag) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_TRUE(manager.getAlarmList().empty());
}

TEST_F(AlarmManagerTest, ClearingAnAbsentAlarmLeavesATrueFlag) {
    manager.setAlarm(Alarm::SYSTEM_CLOCK_FAILURE, Alarm::ALARM_ON);
    log.clear();
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(manager.didAlarmListChange());
    EXPECT_EQ(typesOf(manager), std::vector<int>{6});
}

TEST_F(AlarmManagerTest, RaisingWithLevel2StoresTheAlarmAndLogsOff) {
    manager.setAlarm(Alarm::LINK_DOWN, levelOf(2));
    EXPECT_TRUE(manager.isAlarmOn(Alarm::LINK_DOWN));
    EXPECT_EQ(only(manager.getAlarmList()).getDescription(), "Link is down");
    EXPECT_EQ(log.lines(),
              std::vector<LogCapture::Line>{
                  logLine(Logger::logInfo, "INF::Status: alarm 'Link is down' changed to 'OFF'")});
    EXPECT_TRUE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, RaisingWithNegativeLevelStoresTheAlarmAndLogsOff) {
    manager.setAlarm(Alarm::FRAME_DROP, levelOf(-1));
    EXPECT_TRUE(manager.isAlarmOn(Alarm::FRAME_DROP));
    EXPECT_EQ(log.lines(), std::vector<LogCapture::Line>{status("Frame drop", "OFF")});
}

TEST_F(AlarmManagerTest, ClearingLogsTheStoredDescription) {
    Json::Value in = parseJson(
        R"({"alarms": [{"type": 7, "severity": "error", "description": "Port 3 is down"}]})");
    manager.Deserialize(in);
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF);
    EXPECT_EQ(log.lines(), std::vector<LogCapture::Line>{status("Port 3 is down", "OFF")});
    EXPECT_FALSE(manager.isAlarmOn(Alarm::LINK_DOWN));
}

TEST_F(AlarmManagerTest, SeveralChangesBetweenReadsAreReportedOnce) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::FRAME_DROP, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF);
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{status("Link is down", "ON"),
                                                          status("Frame drop", "ON"),
                                                          status("Link is down", "OFF")}));
    EXPECT_TRUE(manager.didAlarmListChange());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_EQ(typesOf(manager), std::vector<int>{24});
}

TEST_F(AlarmManagerTest, UnknownTypesAreStoredWithTheUndefinedText) {
    manager.setAlarm(kind(1000), Alarm::ALARM_ON);
    manager.setAlarm(Alarm::UNASSIGNED_3, Alarm::ALARM_ON);
    manager.setAlarm(kind(-2), Alarm::ALARM_ON);
    EXPECT_EQ(typesOf(manager), (std::vector<int>{-2, 3, 1000}));
    for (const Alarm& alarm : manager.getAlarmList()) {
        EXPECT_EQ(alarm.getDescription(), "Not defined");
        EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_OK);
    }
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{status("Not defined", "ON"),
                                                          status("Not defined", "ON"),
                                                          status("Not defined", "ON")}));
    EXPECT_TRUE(manager.isAlarmOn(kind(1000)));
    EXPECT_FALSE(manager.isAlarmOn(kind(999)));
}

// ---- setAlarm with a severity ----

TEST_F(AlarmManagerTest, SeverityStepCannotLowerTheCatalogueSeverity) {
    manager.setAlarm(Alarm::NETWORK_DELAY_TOO_LARGE, Alarm::ALARM_ON,
                     AlarmSeverity::SEVERITY_WARNING);
    const Alarm stored = only(manager.getAlarmList());
    EXPECT_EQ(stored.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(log.lines(),
              std::vector<LogCapture::Line>{status(
                  "Network Delay is greater than the link offset. Packets arriving too late to "
                  "be played.",
                  "ON")});
    EXPECT_TRUE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, SeverityStepRaisesWithoutFlagOrLog) {
    manager.setAlarm(Alarm::NETWORK_DELAY_TOO_LARGE, Alarm::ALARM_ON,
                     AlarmSeverity::SEVERITY_WARNING);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    manager.setAlarm(Alarm::NETWORK_DELAY_TOO_LARGE, Alarm::ALARM_ON,
                     AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_EQ(only(manager.getAlarmList()).getSeverity().getSeverity(),
              AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AlarmManagerTest, SeverityStepAppliesToANewlyRaisedAlarm) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON, AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_EQ(only(manager.getAlarmList()).getSeverity().getSeverity(),
              AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_EQ(log.lines(), std::vector<LogCapture::Line>{status("Link is down", "ON")});
}

TEST_F(AlarmManagerTest, ClearingWithASeverityRemovesTheAlarm) {
    manager.setAlarm(Alarm::NETWORK_DELAY_TOO_LARGE, Alarm::ALARM_ON);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    manager.setAlarm(Alarm::NETWORK_DELAY_TOO_LARGE, Alarm::ALARM_OFF,
                     AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_FALSE(manager.isAlarmOn(Alarm::NETWORK_DELAY_TOO_LARGE));
    EXPECT_TRUE(manager.getAlarmList().empty());
    EXPECT_TRUE(manager.didAlarmListChange());
    EXPECT_EQ(log.lines(),
              std::vector<LogCapture::Line>{status(
                  "Network Delay is greater than the link offset. Packets arriving too late to "
                  "be played.",
                  "OFF")});
}

TEST_F(AlarmManagerTest, ClearingAnAbsentAlarmWithASeverityAddsNothing) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_OFF, AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_TRUE(manager.getAlarmList().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_TRUE(log.lines().empty());
}

// ---- getAlarmList ----

TEST_F(AlarmManagerTest, AlarmListIsInAscendingOrderOfType) {
    for (int type : {28, 7, 0, 15}) {
        manager.setAlarm(kind(type), Alarm::ALARM_ON);
    }
    EXPECT_EQ(typesOf(manager), (std::vector<int>{0, 7, 15, 28}));
}

TEST_F(AlarmManagerTest, ChangingTheAlarmListLeavesTheManagerAlone) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    std::list<Alarm> list = manager.getAlarmList();
    list.front().setDescription("edited");
    list.front().setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    list.clear();
    const Alarm stored = only(manager.getAlarmList());
    EXPECT_EQ(stored.getDescription(), "Link is down");
    EXPECT_EQ(stored.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

// ---- Serialize ----

TEST_F(AlarmManagerTest, SerializeOfEmptyManagerWritesNoAlarmsMember) {
    Json::Value out = parseJson(R"({"other": 1})");
    manager.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": 1})"));
    EXPECT_FALSE(out.isMember("alarms"));
}

TEST_F(AlarmManagerTest, SerializeWritesTheAlarmsInAscendingOrder) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::NO_PACKETS_RECEIVED, Alarm::ALARM_ON);
    ASSERT_TRUE(manager.didAlarmListChange());
    log.clear();
    Json::Value out = parseJson(R"({"other": 1})");
    manager.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": 1, "alarms": [
        {"type": 0, "severity": "warning", "description": "No packets being received"},
        {"type": 7, "severity": "warning", "description": "Link is down"}]})"));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, SerializeOverwritesLeadingElementsAndKeepsStaleOnes) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::FRAME_DROP, Alarm::ALARM_ON);
    Json::Value out = parseJson(R"({"alarms": [
        {"type": 1, "severity": "error", "description": "a", "extra": "kept"},
        {"type": 2},
        {"type": 3, "description": "c"},
        "four",
        5]})");
    manager.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"alarms": [
        {"type": 7, "severity": "warning", "description": "Link is down", "extra": "kept"},
        {"type": 24, "severity": "error", "description": "Frame drop"},
        {"type": 3, "description": "c"},
        "four",
        5]})"));
}

// ---- Deserialize ----

TEST_F(AlarmManagerTest, DeserializeStoresEachElementUnderItsType) {
    Json::Value in = parseJson(R"({"alarms": [
        {"type": 15, "severity": "critical", "description": "Format 1080i50 expected"},
        {"type": 0, "severity": "warning", "description": "No packets being received"}]})");
    manager.Deserialize(in);
    EXPECT_EQ(typesOf(manager), (std::vector<int>{0, 15}));
    const Alarm format = manager.getAlarmList().back();
    EXPECT_EQ(format.getDescription(), "Format 1080i50 expected");
    EXPECT_EQ(format.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_TRUE(manager.isAlarmOn(Alarm::VIDEO_FORMAT_MISMATCH));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.didAlarmListChange());
}

TEST_F(AlarmManagerTest, DeserializeKeepsTheFirstOfTwoElementsOfOneType) {
    Json::Value in = parseJson(R"({"alarms": [
        {"type": 5, "severity": "error", "description": "first"},
        {"type": 5, "severity": "critical", "description": "second"}]})");
    manager.Deserialize(in);
    const Alarm stored = only(manager.getAlarmList());
    EXPECT_EQ(stored.getType(), Alarm::INTERFACE_CONFIG_MISMATCH);
    EXPECT_EQ(stored.getDescription(), "first");
    EXPECT_EQ(stored.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_ERROR);
}

TEST_F(AlarmManagerTest, DeserializeMergesIntoHeldAlarmsAndKeepsHeldEntries) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::FRAME_DROP, Alarm::ALARM_ON);
    Json::Value in = parseJson(R"({"alarms": [
        {"type": 7, "severity": "critical", "description": "replacement"},
        {"type": 16, "severity": "warning", "description": "Out of order packets"}]})");
    manager.Deserialize(in);
    EXPECT_EQ(typesOf(manager), (std::vector<int>{7, 16, 24}));
    const Alarm held = manager.getAlarmList().front();
    EXPECT_EQ(held.getDescription(), "Link is down");
    EXPECT_EQ(held.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

TEST_F(AlarmManagerTest, DeserializeLeavesTheFlagAsItWas) {
    Json::Value in = parseJson(R"({"alarms": [{"type": 16}]})");
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.Deserialize(in);
    EXPECT_TRUE(manager.didAlarmListChange());
    Json::Value more = parseJson(R"({"alarms": [{"type": 17}]})");
    manager.Deserialize(more);
    EXPECT_FALSE(manager.didAlarmListChange());
    EXPECT_EQ(typesOf(manager), (std::vector<int>{7, 16, 17}));
}

TEST_F(AlarmManagerTest, DeserializeOfElementWithoutKeysStoresType0Blank) {
    Json::Value in = parseJson(R"({"alarms": [{}]})");
    manager.Deserialize(in);
    const Alarm stored = only(manager.getAlarmList());
    EXPECT_EQ(stored.getType(), 0);
    EXPECT_EQ(stored.getDescription(), "");
    EXPECT_EQ(stored.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST_F(AlarmManagerTest, DeserializeWithoutAlarmsChangesNothingAndAddsNullMember) {
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    Json::Value in = parseJson(R"({"other": 1})");
    manager.Deserialize(in);
    EXPECT_EQ(typesOf(manager), std::vector<int>{7});
    ASSERT_TRUE(in.isMember("alarms"));
    EXPECT_TRUE(in["alarms"].isNull());
    EXPECT_EQ(in["other"], Json::Value(1));
    EXPECT_EQ(in.size(), 2u);
}

TEST_F(AlarmManagerTest, DeserializeOfObjectAlarmsThrowsLogicError) {
    Json::Value in = parseJson(R"({"alarms": {"type": 7}})");
    EXPECT_THROW(manager.Deserialize(in), Json::LogicError);
}

TEST_F(AlarmManagerTest, DeserializeOfUnreadableElementThrowsLogicError) {
    Json::Value in = parseJson(R"({"alarms": ["Link is down"]})");
    EXPECT_THROW(manager.Deserialize(in), Json::LogicError);
}

// ---- the whole round ----

TEST_F(AlarmManagerTest, EveryKindSurvivesAFileRoundTrip) {
    for (int type = Alarm::NO_PACKETS_RECEIVED; type <= Alarm::ALARM_TYPE_UNDEFINED; ++type) {
        manager.setAlarm(kind(type), Alarm::ALARM_ON);
    }
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON, AlarmSeverity::SEVERITY_CRITICAL);
    manager.setAlarm(Alarm::UNASSIGNED_3, Alarm::ALARM_ON, AlarmSeverity::SEVERITY_ERROR);
    const std::list<Alarm> raised = manager.getAlarmList();
    ASSERT_EQ(raised.size(), 30u);

    Json::Value written;
    manager.Serialize(written);
    TempDir dir;
    FileMgr files;
    const std::string path = dir.file("alarms.json");
    ASSERT_EQ(files.storeLocalCfg(path, written), 0);
    Json::Value loaded;
    ASSERT_EQ(files.loadLocalCfg(path, loaded), 0);

    AlarmManager reader;
    reader.Deserialize(loaded);
    expectSameAlarms(reader.getAlarmList(), raised);
    EXPECT_EQ(reader.getAlarmList().front().getDescription(), "No packets being received");
    EXPECT_FALSE(reader.didAlarmListChange());
}
