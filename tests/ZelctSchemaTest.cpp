// The schemas zelct derives from the library, against the catalogues and readers read here
// on their own: a catalogue or reader that changes without the schema following fails here.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Alarm.h"
#include "DaifType.h"
#include "Kinds.h"
#include "Schema.h"
#include "VideoFormat.h"

namespace {

using zelct::findKind;
using zelct::schemaOf;

std::vector<std::string> texts(const Json::Value& array) {
    std::vector<std::string> result;
    for (const Json::Value& item : array) {
        result.push_back(item.asString());
    }
    return result;
}

const Json::Value& schemaFor(const char* kind) {
    static std::map<std::string, Json::Value> cache;
    Json::Value& schema = cache[kind];
    if (schema.isNull()) {
        schema = schemaOf(*findKind(kind));
    }
    return schema;
}

// The state names that the reader gives their own number back for.
std::vector<std::string> stateNamesRead() {
    std::vector<std::string> names;
    for (int value = State::STATE_DISABLED; value <= State::STATE_PAUSED; ++value) {
        State state;
        state.setName(State::nameOf(value));
        if (state.getValue() == value) {
            names.push_back(State::nameOf(value));
        }
    }
    return names;
}

std::vector<std::string> streamTypesRead() {
    std::vector<std::string> names;
    for (int value = StreamType::STREAM_AUDIO; value <= StreamType::STREAM_TEST; ++value) {
        StreamType type;
        type.setName(StreamType::nameOf(value));
        if (type.getValue() == value) {
            names.push_back(StreamType::nameOf(value));
        }
    }
    return names;
}

TEST(ZelctSchema, StateNamesAreThoseTheReaderKnows) {
    const Json::Value& state = schemaFor("session-stream")["properties"]["state"];
    EXPECT_EQ(texts(state["enum"]), stateNamesRead());
    EXPECT_EQ(texts(state["enum"]), (std::vector<std::string>{"Disabled", "Enabled", "Paused"}));
    EXPECT_EQ(state["type"].asString(), "string");
}

TEST(ZelctSchema, StreamTypesLeaveOutTheOneOnlyWritten) {
    const Json::Value& type = schemaFor("session-stream")["properties"]["type"];
    std::vector<std::string> expected = streamTypesRead();
    expected.push_back(StreamType::nameOf(0));  // a fresh stream's kind, kept by the reader
    EXPECT_EQ(texts(type["enum"]), expected);
    EXPECT_EQ(texts(type["enum"]),
              (std::vector<std::string>{"audio", "video", "ancillary", "undefined"}));
}

TEST(ZelctSchema, VideoFormatsAreTheCatalogueTexts) {
    std::vector<std::string> catalogue;
    for (int number = VideoFormat::VIDEO_FORMAT_1080P60;
         number <= VideoFormat::VIDEO_FORMAT_2160P59; ++number) {
        catalogue.push_back(
            VideoFormat(static_cast<VideoFormat::video_format_t>(number)).toString());
    }
    const Json::Value& format = schemaFor("video-format")["properties"]["format"];
    EXPECT_EQ(texts(format["enum"]), catalogue);
    EXPECT_EQ(format["enum"].size(), 29U);
    EXPECT_EQ(format["enum"][0].asString(), "1080P60");
    EXPECT_EQ(format["enum"][19].asString(), "1080I50_295");
}

TEST(ZelctSchema, AlarmSeveritiesAreTheFourNames) {
    std::vector<std::string> names;
    for (int severity = AlarmSeverity::SEVERITY_OK; severity <= AlarmSeverity::SEVERITY_CRITICAL;
         ++severity) {
        names.push_back(AlarmSeverity::nameOf(severity));
    }
    const Json::Value& severity = schemaFor("alarm")["properties"]["severity"];
    EXPECT_EQ(texts(severity["enum"]), names);
    EXPECT_EQ(texts(severity["enum"]),
              (std::vector<std::string>{"ok", "warning", "error", "critical"}));
}

TEST(ZelctSchema, InterfaceKindsRewrittenInAnyCaseAreRefused) {
    // A known kind in another case keeps its spelling, except those the reader replaces by
    // their own name, in every case but that name, and the aliases it replaces in every case.
    const Json::Value& type = schemaFor("channel-id")["properties"]["type"];
    EXPECT_EQ(type["type"].asString(), "string");
    const Json::Value& refused = type["not"]["anyOf"];
    ASSERT_EQ(refused.size(), 4U);
    EXPECT_EQ(refused[0]["pattern"].asString(), "^[tT][dD][mM]$");
    EXPECT_EQ(refused[0]["not"]["const"].asString(), "tdm");
    EXPECT_EQ(refused[1]["pattern"].asString(), "^[mM][aA][dD][iI]$");
    EXPECT_EQ(refused[1]["not"]["const"].asString(), "madi");
    EXPECT_EQ(refused[2]["pattern"].asString(), "^[iI]32[sS]$");
    EXPECT_FALSE(refused[2].isMember("not"));
    EXPECT_EQ(refused[3]["pattern"].asString(), "^[aA][eE][sS]10$");
    EXPECT_FALSE(refused[3].isMember("not"));
    std::vector<std::string> kinds;
    for (int kind = DaifType::DAIF_TDM; kind <= DaifType::DAIF_AUTO; ++kind) {
        kinds.push_back(DaifType::nameOf(kind));
    }
    EXPECT_EQ(texts(type["examples"]), kinds);
    EXPECT_EQ(type["examples"].size(), 13U);
    EXPECT_FALSE(schemaFor("channel-table-entry")["properties"]["name-input"].isMember("examples"));
    DaifType kind;
    kind.setNameAndResolve("MADI");
    EXPECT_EQ(kind.getName(), DaifType::nameOf(DaifType::DAIF_MADI));
    kind.setNameAndResolve("SDI-VIDEO");
    EXPECT_EQ(kind.getName(), "SDI-VIDEO");
    kind.setNameAndResolve("Aes10");
    EXPECT_EQ(kind.getName(), DaifType::nameOf(DaifType::DAIF_MADI));
}

TEST(ZelctSchema, NumberRangesAreWhatTheRecordsStore) {
    const Json::Value& channel = schemaFor("channel-id")["properties"];
    EXPECT_EQ(channel["position"]["type"].asString(), "integer");
    EXPECT_EQ(channel["position"]["minimum"].asInt(), 0);
    EXPECT_EQ(channel["position"]["maximum"].asInt(), 255);
    EXPECT_EQ(channel["id"]["minimum"].asInt64(), -2147483648LL);
    EXPECT_EQ(channel["id"]["maximum"].asInt64(), 2147483647LL);
    const Json::Value& stream = schemaFor("session-stream")["properties"];
    EXPECT_EQ(stream["stream-hw-id"]["maximum"].asUInt64(), 4294967295ULL);
    EXPECT_EQ(stream["stream-hw-id"]["minimum"].asInt(), 0);
    EXPECT_FALSE(stream["remote-sid"].isMember("maximum"));  // all 64 bits are kept
    const Json::Value& sfp = schemaFor("sfp")["properties"];
    EXPECT_EQ(sfp["wavelength"]["type"].asString(), "integer");
    EXPECT_EQ(sfp["temperature"]["type"].asString(), "number");
}

TEST(ZelctSchema, ClampedCountsAndTheArraysTheyCount) {
    const Json::Value& bandwidth = schemaFor("eth-bandwidth")["properties"];
    EXPECT_EQ(bandwidth["ethCount"]["maximum"].asInt(), 2);
    EXPECT_EQ(bandwidth["cpuBandwidth"]["maxItems"].asInt(), 2);
    EXPECT_EQ(bandwidth["linkBandwidth"]["maxItems"].asInt(), 2);
    EXPECT_FALSE(schemaFor("alarms")["properties"]["alarms"].isMember("maxItems"));
}

TEST(ZelctSchema, NameIsACopyOfNameOutput) {
    const Json::Value& entry = schemaFor("channel-table-entry");
    const Json::Value& name = entry["properties"]["name"];
    EXPECT_TRUE(name["readOnly"].asBool());
    EXPECT_TRUE(name["deprecated"].asBool());
    ASSERT_EQ(entry["allOf"].size(), 1U);
    EXPECT_EQ(entry["allOf"][0]["if"]["not"]["required"][0].asString(), "name-output");
    EXPECT_EQ(entry["allOf"][0]["then"]["properties"]["name"]["const"].asString(), "");
}

TEST(ZelctSchema, NeverReadMembersAreFixedOrMarked) {
    const Json::Value& stream = schemaFor("session-stream")["properties"];
    EXPECT_TRUE(stream["remote-sid-str"]["readOnly"].asBool());
    EXPECT_FALSE(stream["remote-sid-str"].isMember("const"));  // follows "remote-sid"
    EXPECT_FALSE(stream["remote-sid"].isMember("readOnly"));
}

TEST(ZelctSchema, MainBoardRecordOnlyForItsProduct) {
    const Json::Value& system = schemaFor("system-info");
    EXPECT_EQ(system["properties"]["product-info"]["$ref"].asString(), "#/$defs/product-info");
    ASSERT_TRUE(system["$defs"].isMember("product-info"));
    ASSERT_EQ(system["allOf"].size(), 1U);
    const Json::Value& rule = system["allOf"][0];
    EXPECT_EQ(rule["if"]["not"]["properties"]["product"]["const"].asString(), "TARVIK");
    EXPECT_FALSE(rule["then"]["properties"]["product-info"].asBool());
}

TEST(ZelctSchema, AddressesAreDottedQuads) {
    const Json::Value& eth = schemaFor("eth")["properties"];
    EXPECT_TRUE(eth["ipv4"].isMember("pattern"));
    EXPECT_TRUE(eth["network-mask"].isMember("pattern"));
    EXPECT_FALSE(eth["eth-name"].isMember("pattern"));
}

TEST(ZelctSchema, EveryKindStandsAloneUnderOneBase) {
    std::set<std::string> ids;
    for (const zelct::Kind& kind : zelct::allKinds()) {
        const Json::Value& schema = schemaFor(kind.name);
        EXPECT_EQ(schema["$schema"].asString(), "https://json-schema.org/draft/2020-12/schema");
        const std::string id = schema["$id"].asString();
        EXPECT_EQ(id, std::string(zelct::kSchemaBase) + kind.name + ".schema.json");
        ids.insert(id);
        EXPECT_EQ(schema["description"].asString().rfind(kind.description, 0), 0U) << kind.name;
        if (kind.topLevel == zelct::TopLevel::Object) {
            EXPECT_TRUE(schema["properties"].isMember("$schema")) << kind.name;
            EXPECT_FALSE(schema["additionalProperties"].asBool()) << kind.name;
        }
        for (const std::string& name : schema["$defs"].getMemberNames()) {
            EXPECT_NE(findKind(name), nullptr) << name;
            EXPECT_FALSE(schema["$defs"][name]["properties"].isMember("$schema")) << name;
        }
    }
    EXPECT_EQ(ids.size(), zelct::allKinds().size());
}

TEST(ZelctSchema, EmptyListsAreWrittenAsNull) {
    const Json::Value& tables = schemaFor("channel-tables");
    ASSERT_TRUE(tables["type"].isArray());
    EXPECT_EQ(texts(tables["type"]), (std::vector<std::string>{"array", "null"}));
    EXPECT_EQ(tables["items"]["$ref"].asString(), "#/$defs/channel-table");
    EXPECT_EQ(schemaFor("alarm")["type"].asString(), "object");
}

}  // namespace

namespace {

TEST(ZelctSchema, AlarmTypesCarryTheCatalogue) {
    const Json::Value& type = schemaFor("alarm")["properties"]["type"];
    std::vector<int> catalogue;
    for (const Alarm::CatalogueRow& row : Alarm::catalogue()) {
        catalogue.push_back(static_cast<int>(row.type));
    }
    std::vector<int> examples;
    for (const Json::Value& example : type["examples"]) {
        examples.push_back(example.asInt());
    }
    EXPECT_EQ(examples, catalogue);
    EXPECT_EQ(examples.size(), 29U);  // 0 to 29 but the unassigned 3
    const std::string text = type["description"].asString();
    EXPECT_NE(text.find("\n7 LINK_DOWN (warning): Link is down\n"), std::string::npos);
    EXPECT_NE(text.find("\n29 ALARM_TYPE_UNDEFINED (ok): Not defined"), std::string::npos);
}

TEST(ZelctSchema, VideoFormatsDescribedByTheirDetails) {
    const Json::Value& format = schemaFor("video-format")["properties"]["format"];
    const std::string text = format["description"].asString();
    EXPECT_NE(text.find("\n1080P60: 1920 x 1080, progressive, 60 fields per second\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\n1080I50: 1920 x 1080, interlaced, 50 fields per second\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 29);
    EXPECT_FALSE(format.isMember("enumDescriptions"));
    EXPECT_EQ(schemaFor("alarm")["properties"]["severity"]["description"].asString().find('\n'),
              std::string::npos);
}

// A member that a rule requires is defined beside it, as strict validators want.
void expectRequiredDefined(const Json::Value& schema, const std::string& where) {
    if (schema.isObject()) {
        for (const Json::Value& name : schema["required"]) {
            EXPECT_TRUE(schema["properties"].isMember(name.asString()))
                << where << ": " << name.asString();
        }
        for (const std::string& member : schema.getMemberNames()) {
            expectRequiredDefined(schema[member], where + "/" + member);
        }
    } else if (schema.isArray()) {
        for (Json::ArrayIndex i = 0; i < schema.size(); ++i) {
            expectRequiredDefined(schema[i], where + "/" + std::to_string(i));
        }
    }
}

TEST(ZelctSchema, EveryRequiredMemberIsDefinedBesideTheList) {
    for (const zelct::Kind& kind : zelct::allKinds()) {
        expectRequiredDefined(schemaFor(kind.name), kind.name);
    }
}

}  // namespace
