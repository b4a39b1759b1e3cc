#include "Alarm.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "FileUtil.h"

namespace {

struct ExpectedAlarm {
    int type;
    const char* name;
    const char* severity;
    const char* description;
};

// What an alarm built from each type must carry, written out here on its own so that a
// slip in the library's catalogue shows up as a difference.
// clang-format off
const ExpectedAlarm kExpected[] = {
    {0, "NO_PACKETS_RECEIVED", "warning", "No packets being received"},
    {1, "NETWORK_DELAY_TOO_LARGE", "error", "Network Delay is greater than the link offset. Packets arriving too late to be played."},
    {2, "NETWORK_DELAY_TOO_SMALL", "error", "Network Delay is smaller than the minimum we can handle."},
    {3, "ALARM_TYPE_UNDEFINED", "ok", "Not defined"},
    {4, "SESSION_CONFIG_MISMATCH", "error", "Session paused due to configuration mismatch between session and global config"},
    {5, "INTERFACE_CONFIG_MISMATCH", "error", "Configuration mismatch between current config and input on physical interface"},
    {6, "SYSTEM_CLOCK_FAILURE", "error", "System clock is in failure"},
    {7, "LINK_DOWN", "warning", "Link is down"},
    {8, "REDUNDANT_LINK_DOWN", "warning", "Link is down on redundant interface."},
    {9, "STREAM_OUT_OF_SYNC_WITH_PTP", "error", "Detected that the stream is out of sync with PTP time"},
    {10, "STREAM_PAUSED_PTP_FAILURE", "error", "Stream is paused because PTP is on a failure state"},
    {11, "SESSION_NAME_CONFLICT", "error", "Session advertisement has failed because of a conflicting Session name"},
    {12, "STREAMS_NOT_SOF_ALIGNED", "error", "One or more streams in this session are not SOF aligned"},
    {13, "RTP_ALIGNMENT_FAILURE", "error", "RTP alignment failure"},
    {14, "EXTERNAL_CLOCK_ATTEMPTING_SLAVE", "error", "External System clock attempting Slave"},
    {15, "VIDEO_FORMAT_MISMATCH", "error", "Video Format Mismatch"},
    {16, "OUT_OF_ORDER_PACKETS", "warning", "Out of order packets"},
    {17, "STRAY_PACKETS", "warning", "Stray packets"},
    {18, "PACKETS_DISCARDED_HIGH_BANDWIDTH", "error", "Packets discarded due to high bandwidth usage"},
    {19, "BAD_LINK_OFFSET", "error", "Bad link offset"},
    {20, "VIDEO_PAIR_MISSING", "warning", "Video pair missing"},
    {21, "MISSING_PACKET", "error", "Missing packet"},
    {22, "VIDEO_MISALIGNMENT", "error", "Video misalignment"},
    {23, "ANCILLARY_FRAME_POINTER_OVERFLOW", "warning", "Ancillary packets discarded due to frame pointer overflow"},
    {24, "FRAME_DROP", "error", "Frame drop"},
    {25, "VIDEO_PAIR_MISMATCH", "warning", "Video pair mismatch"},
    {26, "GLOBAL_CHANNEL_COUNT_MISMATCH", "warning", "Global Channel Count Mismatch."},
    {27, "NMOS_MIXED_MODE_UNSUPPORTED", "error", "Mixed mode is not supported by NMOS ISO 5. Using Mixed-Mode while NMOS is enabled will default NMOS to 8 channels per stream."},
    {28, "REBOOT_REQUIRED", "warning", "Board Needs to be rebooted for settings to apply"},
    {29, "ALARM_TYPE_UNDEFINED", "ok", "Not defined"},
    {-1, "ALARM_TYPE_UNDEFINED", "ok", "Not defined"},
    {1000, "ALARM_TYPE_UNDEFINED", "ok", "Not defined"},
};
// clang-format on

Alarm::AlarmType kind(int type) {
    return static_cast<Alarm::AlarmType>(type);
}

AlarmSeverity::AlarmSeverity_en level(int severity) {
    return static_cast<AlarmSeverity::AlarmSeverity_en>(severity);
}

Json::Value severityDocument(const std::string& text) {
    Json::Value doc(Json::objectValue);
    doc["severity"] = text;
    return doc;
}

AlarmSeverity readSeverity(Json::Value doc, AlarmSeverity::AlarmSeverity_en before) {
    AlarmSeverity severity(before);
    severity.Deserialize(doc);
    return severity;
}

}  // namespace

// ---- AlarmSeverity ----

TEST(AlarmSeverity, DefaultIsOk) {
    AlarmSeverity severity;
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_OK);
    EXPECT_EQ(severity.getSeverityStr(), "ok");
}

TEST(AlarmSeverity, EnumeratorsAreNumberedByGravity) {
    EXPECT_EQ(AlarmSeverity::SEVERITY_OK, 0);
    EXPECT_EQ(AlarmSeverity::SEVERITY_WARNING, 1);
    EXPECT_EQ(AlarmSeverity::SEVERITY_ERROR, 2);
    EXPECT_EQ(AlarmSeverity::SEVERITY_CRITICAL, 3);
    EXPECT_EQ(sizeof(AlarmSeverity::AlarmSeverity_en), 4u);
}

TEST(AlarmSeverity, ConstructorStoresAnyValueUnchecked) {
    EXPECT_EQ(AlarmSeverity(AlarmSeverity::SEVERITY_ERROR).getSeverity(), 2);
    EXPECT_EQ(AlarmSeverity(level(7)).getSeverity(), 7);
    EXPECT_EQ(AlarmSeverity(level(-4)).getSeverity(), -4);
}

TEST(AlarmSeverity, TextOfEverySeverity) {
    const struct {
        int value;
        const char* text;
    } rows[] = {{0, "ok"}, {1, "warning"}, {2, "error"}, {3, "critical"}};
    for (const auto& row : rows) {
        EXPECT_EQ(AlarmSeverity(level(row.value)).getSeverityStr(), row.text) << row.value;
        EXPECT_STREQ(AlarmSeverity::nameOf(row.value), row.text) << row.value;
    }
}

TEST(AlarmSeverity, TextOfSeverityOutOfRangeIsOk) {
    EXPECT_EQ(AlarmSeverity(level(7)).getSeverityStr(), "ok");
    for (int value : {-1, 4, 7, 1000}) {
        EXPECT_EQ(AlarmSeverity(level(value)).getSeverityStr(), "ok") << value;
        EXPECT_STREQ(AlarmSeverity::nameOf(value), "ok") << value;
    }
}

TEST(AlarmSeverity, SetSeverityRaisesAndNeverLowers) {
    AlarmSeverity severity(AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(severity.setSeverity(AlarmSeverity::SEVERITY_WARNING), 0);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(severity.setSeverity(AlarmSeverity::SEVERITY_OK), 0);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(severity.setSeverity(AlarmSeverity::SEVERITY_ERROR), 0);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(severity.setSeverity(AlarmSeverity::SEVERITY_CRITICAL), 0);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_CRITICAL);
}

TEST(AlarmSeverity, SetSeverityComparesSigned) {
    AlarmSeverity severity;
    severity.setSeverity(level(-1));
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_OK);
    AlarmSeverity below(level(-3));
    below.setSeverity(AlarmSeverity::SEVERITY_OK);
    EXPECT_EQ(below.getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST(AlarmSeverity, AssignmentCopiesTheValue) {
    AlarmSeverity target(AlarmSeverity::SEVERITY_CRITICAL);
    const AlarmSeverity source(AlarmSeverity::SEVERITY_WARNING);
    AlarmSeverity& result = (target = source);
    EXPECT_EQ(&result, &target);
    // Assignment is not the raise-only setter: it lowers too.
    EXPECT_EQ(target.getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

TEST(AlarmSeverity, SerializeWritesTheTextIntoTheGivenObject) {
    Json::Value out = parseJson(R"({"other": 1, "severity": "stale"})");
    AlarmSeverity(AlarmSeverity::SEVERITY_CRITICAL).Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": 1, "severity": "critical"})"));
}

TEST(AlarmSeverity, SerializeOfOutOfRangeValueWritesOk) {
    Json::Value out;
    AlarmSeverity(level(7)).Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"severity": "ok"})"));
}

TEST(AlarmSeverity, DeserializeMatchesTheTextsExactly) {
    const struct {
        const char* text;
        int value;
    } rows[] = {
        // clang-format off
        {"ok", 0},
        {"warning", 1},
        {"error", 2},
        {"critical", 3},
        {"", 0},
        {"Warning", 0},
        {"ERROR", 0},
        {"critical ", 0},
        {"unknown", 0},
        // clang-format on
    };
    // From both ends of the scale, so that reading is seen to assign, not to raise.
    for (AlarmSeverity::AlarmSeverity_en before :
         {AlarmSeverity::SEVERITY_OK, AlarmSeverity::SEVERITY_CRITICAL}) {
        for (const auto& row : rows) {
            EXPECT_EQ(readSeverity(severityDocument(row.text), before).getSeverity(), row.value)
                << '"' << row.text << "\" from " << before;
        }
    }
}

TEST(AlarmSeverity, DeserializeOfErrorWithCapitalStaysOk) {
    Json::Value in = parseJson(R"({"severity": "Error"})");
    AlarmSeverity severity;
    severity.Deserialize(in);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST(AlarmSeverity, DeserializeWithoutSeverityLowersToOk) {
    Json::Value in(Json::objectValue);
    AlarmSeverity severity(AlarmSeverity::SEVERITY_ERROR);
    severity.Deserialize(in);
    EXPECT_EQ(severity.getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST(AlarmSeverity, DeserializeOfObjectSeverityThrowsLogicError) {
    Json::Value in = parseJson(R"({"severity": {"level": 2}})");
    AlarmSeverity severity;
    EXPECT_THROW(severity.Deserialize(in), Json::LogicError);
}

// ---- Alarm: catalogue ----

TEST(Alarm, EveryTypeTakesItsCatalogueTextAndSeverity) {
    for (const ExpectedAlarm& row : kExpected) {
        const Alarm alarm(kind(row.type));
        EXPECT_EQ(alarm.getType(), row.type);
        EXPECT_EQ(alarm.getDescription(), row.description) << row.type;
        EXPECT_EQ(alarm.getSeverity().getSeverityStr(), row.severity) << row.type;
    }
}

TEST(Alarm, EveryTypeSerializesToItsThreeMembers) {
    for (const ExpectedAlarm& row : kExpected) {
        Json::Value expected(Json::objectValue);
        expected["severity"] = row.severity;
        expected["description"] = row.description;
        expected["type"] = row.type;
        Json::Value out;
        Alarm(kind(row.type)).Serialize(out);
        EXPECT_EQ(out, expected) << out.toStyledString();
        EXPECT_TRUE(out["type"].isInt()) << row.type;
    }
}

TEST(Alarm, TypeNameIsTheEnumeratorOfTheRowThatApplies) {
    for (const ExpectedAlarm& row : kExpected) {
        EXPECT_STREQ(Alarm::typeName(kind(row.type)), row.name) << row.type;
    }
}

TEST(Alarm, CatalogueListsEveryRowInAscendingOrderWithoutType3) {
    std::set<int> seen;
    int previous = -1;
    for (const Alarm::CatalogueRow& row : Alarm::catalogue()) {
        EXPECT_GT(row.type, previous);
        previous = row.type;
        seen.insert(row.type);
        ASSERT_GE(row.type, 0);
        ASSERT_LT(row.type, 30);
        const ExpectedAlarm& expected = kExpected[row.type];
        EXPECT_STREQ(row.name, expected.name) << row.type;
        EXPECT_STREQ(AlarmSeverity::nameOf(row.severity), expected.severity) << row.type;
        EXPECT_STREQ(row.description, expected.description) << row.type;
        EXPECT_EQ(&Alarm::catalogueRow(row.type), &row) << row.type;
    }
    EXPECT_EQ(Alarm::catalogue().size(), 29u);
    EXPECT_EQ(seen.size(), 29u);
    EXPECT_EQ(seen.count(3), 0u);
    EXPECT_EQ(previous, 29);
}

TEST(Alarm, TypesWithoutRowUseTheUndefinedRow) {
    const Alarm::CatalogueRow& fallback = Alarm::catalogueRow(Alarm::ALARM_TYPE_UNDEFINED);
    EXPECT_EQ(fallback.type, 29);
    for (int type : {3, 30, 1000, -1, -1000}) {
        EXPECT_EQ(&Alarm::catalogueRow(kind(type)), &fallback) << type;
    }
}

TEST(Alarm, NoCatalogueRowIsCritical) {
    for (const Alarm::CatalogueRow& row : Alarm::catalogue()) {
        EXPECT_NE(row.severity, AlarmSeverity::SEVERITY_CRITICAL) << row.type;
    }
}

TEST(Alarm, EnumeratorsKeepTheirNumbers) {
    EXPECT_EQ(Alarm::NO_PACKETS_RECEIVED, 0);
    EXPECT_EQ(Alarm::UNASSIGNED_3, 3);
    EXPECT_EQ(Alarm::LINK_DOWN, 7);
    EXPECT_EQ(Alarm::REBOOT_REQUIRED, 28);
    EXPECT_EQ(Alarm::ALARM_TYPE_UNDEFINED, 29);
    EXPECT_EQ(Alarm::ALARM_OFF, 0);
    EXPECT_EQ(Alarm::ALARM_ON, 1);
    EXPECT_EQ(sizeof(Alarm::AlarmType), 4u);
    EXPECT_EQ(sizeof(Alarm::AlarmLevel_e), 4u);
}

TEST(Alarm, TypesWithoutRowReadNotDefinedAndKeepTheirType) {
    for (int type : {3, 29, 1000}) {
        const Alarm alarm(kind(type));
        EXPECT_EQ(alarm.getDescription(), "Not defined") << type;
        EXPECT_EQ(alarm.getSeverity().getSeverityStr(), "ok") << type;
        EXPECT_EQ(alarm.getType(), type);
    }
}

TEST(Alarm, LinkDownSerializesToExactlyThreeMembers) {
    Json::Value out;
    Alarm(Alarm::LINK_DOWN).Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"severity": "warning", "description": "Link is down",
                                 "type": 7})"));
    EXPECT_EQ(out.size(), 3u);
}

// ---- Alarm: fields ----

TEST(Alarm, DefaultIsUndefinedOkAndBlank) {
    const Alarm alarm;
    EXPECT_EQ(alarm.getType(), Alarm::ALARM_TYPE_UNDEFINED);
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_OK);
    // The blank does not consult the catalogue, so not "Not defined".
    EXPECT_EQ(alarm.getDescription(), "");
}

TEST(Alarm, SetSeverityOnlyRaises) {
    Alarm alarm(Alarm::NETWORK_DELAY_TOO_LARGE);
    alarm.setSeverity(AlarmSeverity::SEVERITY_WARNING);
    EXPECT_EQ(alarm.getSeverity().getSeverityStr(), "error");
    alarm.setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_EQ(alarm.getSeverity().getSeverityStr(), "critical");
}

TEST(Alarm, SetTypeChangesNeitherSeverityNorDescription) {
    Alarm alarm(Alarm::LINK_DOWN);
    alarm.setType(Alarm::NETWORK_DELAY_TOO_LARGE);
    EXPECT_EQ(alarm.getType(), Alarm::NETWORK_DELAY_TOO_LARGE);
    EXPECT_EQ(alarm.getDescription(), "Link is down");
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

TEST(Alarm, SetDescriptionReplacesTheText) {
    Alarm alarm(Alarm::LINK_DOWN);
    alarm.setDescription("Port 2 down");
    EXPECT_EQ(alarm.getDescription(), "Port 2 down");
    EXPECT_EQ(alarm.getType(), Alarm::LINK_DOWN);
}

TEST(Alarm, GetSeverityReturnsACopy) {
    const Alarm alarm(Alarm::LINK_DOWN);
    AlarmSeverity copy = alarm.getSeverity();
    copy.setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

TEST(Alarm, CopyCarriesAllThreeFields) {
    Alarm original(Alarm::LINK_DOWN);
    original.setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    original.setDescription("changed");
    const Alarm copied(original);
    Alarm assigned;
    assigned = original;
    for (const Alarm* alarm : {&copied, static_cast<const Alarm*>(&assigned)}) {
        EXPECT_EQ(alarm->getType(), Alarm::LINK_DOWN);
        EXPECT_EQ(alarm->getSeverity().getSeverity(), AlarmSeverity::SEVERITY_CRITICAL);
        EXPECT_EQ(alarm->getDescription(), "changed");
    }
}

// ---- Alarm: JSON ----

TEST(Alarm, SerializeKeepsOtherKeysAndOverwritesItsOwn) {
    Json::Value out = parseJson(R"({"kept": true, "type": 99, "description": "old"})");
    Alarm(Alarm::REBOOT_REQUIRED).Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"kept": true, "type": 28, "severity": "warning",
                                 "description": "Board Needs to be rebooted for settings to apply"})"));
}

TEST(Alarm, SerializeWritesRaisedSeverityAndOwnDescription) {
    Alarm alarm(Alarm::FRAME_DROP);
    alarm.setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    alarm.setDescription("Frame drop on stream 4");
    Json::Value out;
    alarm.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"severity": "critical", "description": "Frame drop on stream 4",
                                 "type": 24})"));
}

TEST(Alarm, DeserializeOfEmptyObjectGivesType0BlankOk) {
    Json::Value in(Json::objectValue);
    Alarm alarm;
    alarm.Deserialize(in);
    EXPECT_EQ(alarm.getType(), 0);
    EXPECT_EQ(alarm.getDescription(), "");
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST(Alarm, DeserializeOfEmptyObjectOverwritesACatalogueAlarm) {
    Json::Value in(Json::objectValue);
    Alarm alarm(Alarm::NETWORK_DELAY_TOO_LARGE);
    alarm.Deserialize(in);
    EXPECT_EQ(alarm.getType(), 0);
    EXPECT_EQ(alarm.getDescription(), "");
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_OK);
}

TEST(Alarm, DeserializeKeepsTheDocumentsTextAndSeverity) {
    Json::Value in =
        parseJson(R"({"type": 7, "severity": "critical", "description": "Port 1 lost carrier"})");
    Alarm alarm;
    alarm.Deserialize(in);
    EXPECT_EQ(alarm.getType(), Alarm::LINK_DOWN);
    EXPECT_EQ(alarm.getDescription(), "Port 1 lost carrier");
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_CRITICAL);
}

TEST(Alarm, DeserializeCanLowerTheSeverity) {
    Json::Value in = parseJson(R"({"type": 1, "severity": "warning", "description": "x"})");
    Alarm alarm(Alarm::NETWORK_DELAY_TOO_LARGE);
    alarm.setSeverity(AlarmSeverity::SEVERITY_CRITICAL);
    alarm.Deserialize(in);
    EXPECT_EQ(alarm.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_WARNING);
}

TEST(Alarm, DeserializeTakesAnyTypeNumber) {
    Json::Value in = parseJson(R"({"type": -5, "severity": "error", "description": "odd"})");
    Alarm alarm;
    alarm.Deserialize(in);
    EXPECT_EQ(alarm.getType(), -5);
}

TEST(Alarm, RoundTripThroughJsonKeepsAllFields) {
    Alarm original(Alarm::STRAY_PACKETS);
    original.setSeverity(AlarmSeverity::SEVERITY_ERROR);
    Json::Value doc;
    original.Serialize(doc);
    Alarm read;
    read.Deserialize(doc);
    EXPECT_EQ(read.getType(), Alarm::STRAY_PACKETS);
    EXPECT_EQ(read.getSeverity().getSeverity(), AlarmSeverity::SEVERITY_ERROR);
    EXPECT_EQ(read.getDescription(), "Stray packets");
}

TEST(Alarm, DeserializeOfUnconvertibleMembersThrowsLogicError) {
    for (const char* text : {R"({"type": "7"})", R"({"type": {"n": 7}})",
                             R"({"description": ["a"]})", R"({"severity": []})"}) {
        Json::Value in = parseJson(text);
        Alarm alarm;
        EXPECT_THROW(alarm.Deserialize(in), Json::LogicError) << text;
    }
}

TEST(Alarm, DeserializeOfNonObjectThrowsLogicError) {
    Json::Value in(5);
    Alarm alarm;
    EXPECT_THROW(alarm.Deserialize(in), Json::LogicError);
}
