// The engine of zelct: what it reports about a document, independently of any one class.
// Small classes of this file stand for the reading habits of the library's model classes.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "AlarmManager.h"
#include "Check.h"
#include "DaifType.h"
#include "FileMgr.h"
#include "FileUtil.h"
#include "HiddenState.h"
#include "Input.h"
#include "JsonText.h"
#include "Kinds.h"
#include "OptionChecks.h"
#include "Output.h"
#include "Printer.h"
#include "Report.h"
#include "SessionStreamList.h"
#include "SfpInfo.h"
#include "ShownLog.h"
#include "TempDir.h"

using namespace zelct;

// Allocations left before one fails with std::bad_alloc, as when the machine's memory runs
// out in the middle of a check; negative for none. Only one allocation fails, so what is
// printed about it afterwards can allocate again, as it can after a real failure has unwound.
std::atomic<long> allocationsBeforeFailure{-1};

void* operator new(std::size_t size) {
    if (allocationsBeforeFailure.load() >= 0 && allocationsBeforeFailure.fetch_sub(1) == 0) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

// The library's own nothrow form (std::stable_sort's buffer) would otherwise allocate beside
// the malloc above and be freed by the delete below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// GCC takes the pair for new and free, not knowing that the new above is malloc.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
#pragma GCC diagnostic pop

namespace {

// Reads "ip"; a text it cannot parse is logged and leaves the address 0, which writes as
// "0.0.0.0" (the Ethernet record's habit).
class AddressRecord : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override {
        root["ip"] = address == 1 ? "10.0.0.1" : "0.0.0.0";
    }
    void Deserialize(Json::Value& root) override {
        const std::string text = root.get("ip", "").asString();
        if (text == "10.0.0.1") {
            address = 1;
        } else {
            Logger::log(Logger::logError, "ERR::Error parsing IP '%s'", text.c_str());
        }
    }

private:
    int address = 0;
};

// Reads "format"; an unknown one is forgotten and nothing is written (the video format's
// habit).
class FormatRecord : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override {
        if (!format.empty()) {
            root["format"] = format;
        }
    }
    void Deserialize(Json::Value& root) override {
        const std::string text = root.get("format", "").asString();
        format = text == "1080P50" ? text : "";
    }

private:
    std::string format;
};

// Reads the state and writes it back with the state's own names.
class StateRecord : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override { state.Serialize(root); }
    void Deserialize(Json::Value& root) override { state.Deserialize(root); }

private:
    State state;
};

// Reads the stream type, which keeps its kind on a name it does not know ("test").
class StreamTypeRecord : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override { type.Serialize(root); }
    void Deserialize(Json::Value& root) override { type.Deserialize(root); }

private:
    StreamType type;
};

// Reads "v" of the first four elements of "items" only, and writes "v" of every element it
// holds, 0 beyond the fourth: the same member is read in some elements and not in others.
class FirstFourRecord : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override {
        for (Json::ArrayIndex i = 0; i < count; ++i) {
            root["items"][i]["v"] = i < 4 ? values[i] : 0;
        }
    }
    void Deserialize(Json::Value& root) override {
        count = root["items"].size();
        for (Json::ArrayIndex i = 0; i < count && i < 4; ++i) {
            values[i] = root["items"][i].get("v", 0).asInt();
        }
    }

private:
    Json::ArrayIndex count = 0;
    int values[4] = {0, 0, 0, 0};
};

// A list that reads "v" of each element and writes every element with the length of the list
// beside it: an element read alone is not read as it is among the others.
class CountedList : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override {
        for (Json::ArrayIndex i = 0; i < values.size(); ++i) {
            root[i]["v"] = values[i];
            root[i]["n"] = static_cast<int>(values.size());
        }
    }
    void Deserialize(Json::Value& root) override {
        for (Json::ArrayIndex i = 0; i < root.size(); ++i) {
            values.push_back(root[i].get("v", 0).asInt());
        }
    }

private:
    std::vector<int> values;
};

template <class T>
std::unique_ptr<IJsonSerializable> make() {
    return std::make_unique<T>();
}

const Kind kAddress{"address", TopLevel::Object, "", "", "", &make<AddressRecord>};
const Kind kFormat{"format", TopLevel::Object, "", "", "", &make<FormatRecord>};
const Kind kState{"state", TopLevel::Object, "", "", "", &make<StateRecord>};
const Kind kStreamType{"stream-type", TopLevel::Object, "", "", "", &make<StreamTypeRecord>};
const Kind kSfp{"sfp", TopLevel::Object, "", "", "", &make<SfpInfo>};
const Kind kFirstFour{"first-four", TopLevel::Object, "", "", "", &make<FirstFourRecord>};
const Kind kStreams{"session-streams", TopLevel::Array, "", "", "", &make<SessionStreamList>};
const Kind kAlarms{"alarms", TopLevel::Object, "", "", "", &make<AlarmManager>};
const Kind kCounted{"counted", TopLevel::Array, "", "", "", &make<CountedList>};

std::vector<std::string> texts(const std::vector<Finding>& findings) {
    std::vector<std::string> lines;
    for (const Finding& finding : findings) {
        lines.push_back(findingText(finding));
    }
    return lines;
}

std::vector<std::string> findingsOf(const Kind& kind, const std::string& json) {
    const Json::Value document = parseJson(json);
    return texts(findDifferences(kind, document, readAs(kind, document)));
}

Json::Value sfpDocument() {
    Json::Value document;
    SfpInfo().Serialize(document);
    return document;
}

}  // namespace

class ZelctCheckTest : public testing::Test {
protected:
    void SetUp() override { routeLibraryLog(Logger::logEmergency); }
    void TearDown() override {
        Logger::setSink(nullptr);
        Logger::setThreshold(Logger::logInfo);
    }
};

// ---- JSON text ----

TEST_F(ZelctCheckTest, NumbersAreTheSameWhateverTheirRepresentation) {
    EXPECT_TRUE(sameValue(Json::Value(5), Json::Value(5u)));
    EXPECT_TRUE(sameValue(Json::Value(5), Json::Value(5.0)));
    EXPECT_TRUE(sameValue(parseJson("{\"a\":[1,2.0]}"), parseJson("{\"a\":[1.0,2]}")));
    EXPECT_FALSE(sameValue(Json::Value(-1), Json::Value(4294967295u)));
    EXPECT_FALSE(sameValue(Json::Value(1), Json::Value(true)));
    EXPECT_FALSE(sameValue(Json::Value(2.5), Json::Value(2)));
    EXPECT_FALSE(sameValue(parseJson("{\"a\":1}"), parseJson("{\"a\":1,\"b\":1}")));
}

TEST_F(ZelctCheckTest, CompactJsonQuotesTextAndWritesShortestDoubles) {
    EXPECT_EQ(compactJson(Json::Value("enabled")), "\"enabled\"");
    EXPECT_EQ(compactJson(Json::Value("a\"b\\c\n\x01")), "\"a\\\"b\\\\c\\n\\u0001\"");
    EXPECT_EQ(compactJson(Json::Value(0.1)), "0.1");
    EXPECT_EQ(compactJson(Json::Value(-1.0)), "-1.0");
    EXPECT_EQ(compactJson(Json::Value(256)), "256");
    EXPECT_EQ(compactJson(Json::Value(Json::UInt64{18446744073709551615ull})),
              "18446744073709551615");
    EXPECT_EQ(compactJson(parseJson("{\"b\":[1,true,null],\"a\":{}}")),
              "{\"a\":{},\"b\":[1,true,null]}");
}

TEST_F(ZelctCheckTest, PointerTextEscapesTildeAndSlash) {
    const JsonPath path = {PathStep::element(0), PathStep::member("channels"), PathStep::element(3),
                           PathStep::member("a/b~c")};
    EXPECT_EQ(pointerText(path), "/0/channels/3/a~1b~0c");
    EXPECT_EQ(pointerText({}), "");
}

TEST_F(ZelctCheckTest, RemovingKeepsTheIndexOfLaterElements) {
    const Json::Value document = parseJson("{\"a\":[1,2,3],\"b\":4}");
    EXPECT_EQ(removedAt(document, {PathStep::member("b")}), parseJson("{\"a\":[1,2,3]}"));
    EXPECT_EQ(removedAt(document, {PathStep::member("a"), PathStep::element(2)}),
              parseJson("{\"a\":[1,2],\"b\":4}"));
    EXPECT_EQ(removedAt(document, {PathStep::member("a"), PathStep::element(0)}),
              parseJson("{\"a\":[null,2,3],\"b\":4}"));
    EXPECT_EQ(replacedAt(document, {PathStep::member("a"), PathStep::element(1)}, "x"),
              parseJson("{\"a\":[1,\"x\",3],\"b\":4}"));
}

// ---- reading ----

TEST_F(ZelctCheckTest, ReadingWorksOnACopyAndRecordsTheLog) {
    const Json::Value document = parseJson("{\"ip\":\"10.0.0.300\"}");
    const Reading reading = readAs(kAddress, document);
    EXPECT_FALSE(reading.failed);
    EXPECT_EQ(reading.understood, parseJson("{\"ip\":\"0.0.0.0\"}"));
    ASSERT_EQ(reading.log.size(), 1u);
    EXPECT_EQ(reading.log[0].level, Logger::logError);
    EXPECT_EQ(reading.log[0].text, "ERR::Error parsing IP '10.0.0.300'");
    EXPECT_EQ(document, parseJson("{\"ip\":\"10.0.0.300\"}"));
}

TEST_F(ZelctCheckTest, ReadingThatThrowsIsReportedNotThrown) {
    const Reading reading = readAs(kSfp, parseJson("{\"wavelength\":\"850\"}"));
    EXPECT_TRUE(reading.failed);
    EXPECT_EQ(reading.error, "Value is not convertible to Int.");
    EXPECT_TRUE(reading.understood.isNull());
}

// ---- findings ----

TEST_F(ZelctCheckTest, DocumentWrittenByTheClassHasNoFinding) {
    const Json::Value document = sfpDocument();
    EXPECT_TRUE(findDifferences(kSfp, document, readAs(kSfp, document)).empty());
}

TEST_F(ZelctCheckTest, StateNameInAnotherCaseIsReadAsDisabled) {
    EXPECT_EQ(findingsOf(kState, "{\"state\":\"enabled\"}"),
              std::vector<std::string>{"/state: \"enabled\" read as \"Disabled\""});
}

TEST_F(ZelctCheckTest, StreamTypeTestIsReadAsUndefined) {
    EXPECT_EQ(findingsOf(kStreamType, "{\"type\":\"test\"}"),
              std::vector<std::string>{"/type: \"test\" read as \"undefined\""});
}

TEST_F(ZelctCheckTest, MemberTheClassNeverReadsIsDropped) {
    Json::Value document = sfpDocument();
    document["vendor"] = "FS";
    document["extra"]["a"] = 1;
    const std::vector<Finding> findings = findDifferences(kSfp, document, readAs(kSfp, document));
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].type, Finding::Type::Dropped);
    EXPECT_EQ(findingText(findings[0]), "/extra: dropped (never read)");
    EXPECT_EQ(findingText(findings[1]), "/vendor: dropped (never read)");
    EXPECT_EQ(findings[1].original, Json::Value("FS"));
}

TEST_F(ZelctCheckTest, ValueReadAsAnotherIsChanged) {
    Json::Value document = sfpDocument();
    document["present"] = 1;
    document["wavelength"] = 850.7;
    EXPECT_EQ(
        texts(findDifferences(kSfp, document, readAs(kSfp, document))),
        (std::vector<std::string>{"/present: 1 read as true", "/wavelength: 850.7 read as 850"}));
}

TEST_F(ZelctCheckTest, TextReadOnlyThroughItsLogLineIsStillRead) {
    // Without "ip" the address is the same 0, but the log line names what was read.
    EXPECT_EQ(findingsOf(kAddress, "{\"ip\":\"10.0.0.300\"}"),
              std::vector<std::string>{"/ip: \"10.0.0.300\" read as \"0.0.0.0\""});
}

TEST_F(ZelctCheckTest, ValueReadButAbsentFromWhatIsWrittenIsNotWrittenBack) {
    const Json::Value document = parseJson("{\"format\":\"1080p50\"}");
    const std::vector<Finding> findings =
        findDifferences(kFormat, document, readAs(kFormat, document));
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].type, Finding::Type::NotWrittenBack);
    EXPECT_EQ(findingText(findings[0]), "/format: \"1080p50\" read but not written back");
}

TEST_F(ZelctCheckTest, MissingMembersAreAddedWithTheirDefault) {
    EXPECT_EQ(findingsOf(kAddress, "{}"),
              std::vector<std::string>{"/ip: added with default \"0.0.0.0\""});
}

TEST_F(ZelctCheckTest, EmptyListTheClassDoesNotWriteIsNoFinding) {
    EXPECT_TRUE(findingsOf(kAlarms, "{\"alarms\":[]}").empty());
}

TEST_F(ZelctCheckTest, SetWrittenInItsOwnOrderPairsElementsByContent) {
    AlarmManager manager;
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    manager.setAlarm(Alarm::NO_PACKETS_RECEIVED, Alarm::ALARM_ON);
    Json::Value written;
    manager.Serialize(written);
    Json::Value reversed;
    reversed["alarms"].append(written["alarms"][1]);
    reversed["alarms"].append(written["alarms"][0]);
    EXPECT_TRUE(findDifferences(kAlarms, reversed, readAs(kAlarms, reversed)).empty());

    reversed["alarms"][0]["severity"] = "Error";
    EXPECT_EQ(texts(findDifferences(kAlarms, reversed, readAs(kAlarms, reversed))),
              std::vector<std::string>{"/alarms/0/severity: \"Error\" read as \"ok\""});
}

TEST_F(ZelctCheckTest, SecondAlarmOfOneKindIsReadButNotWrittenBack) {
    EXPECT_EQ(findingsOf(kAlarms,
                         "{\"alarms\":[{\"type\":5,\"severity\":\"error\",\"description\":\"a\"},"
                         "{\"type\":5,\"severity\":\"error\",\"description\":\"b\"}]}"),
              std::vector<std::string>{"/alarms/1: {\"description\":\"b\",\"severity\":\"error\","
                                       "\"type\":5} read but not written back"});
}

TEST_F(ZelctCheckTest, SmallDocumentIsDecidedNodeByNode) {
    Json::Value document;
    for (int i = 0; i < 6; ++i) {
        document["items"][i]["v"] = 1.5;
    }
    EXPECT_EQ(texts(findDifferences(kFirstFour, document, readAs(kFirstFour, document))),
              (std::vector<std::string>{"/items/0/v: 1.5 read as 1", "/items/1/v: 1.5 read as 1",
                                        "/items/2/v: 1.5 read as 1", "/items/3/v: 1.5 read as 1",
                                        "/items/4/v: dropped (never read)",
                                        "/items/5/v: dropped (never read)"}));
}

TEST_F(ZelctCheckTest, LongListGetsOneFindingPerElement) {
    SessionStreamBasics stream;
    stream.type.setValue(StreamType::STREAM_AUDIO);
    Json::Value element;
    stream.Serialize(element);
    element["state"] = "enabled";
    element["note"] = "spare";
    Json::Value document(Json::arrayValue);
    for (int i = 0; i < 50; ++i) {
        document.append(element);
    }
    // Without a budget for exact decisions, answers alike for the same member are reused.
    for (size_t exactWork : {kExactWork, size_t{0}}) {
        const std::vector<Finding> findings =
            findDifferences(kStreams, document, readAs(kStreams, document), exactWork);
        ASSERT_EQ(findings.size(), 100u);
        for (int i = 0; i < 50; ++i) {
            const std::string at = "/" + std::to_string(i);
            EXPECT_EQ(findingText(findings[2 * i]), at + "/note: dropped (never read)");
            EXPECT_EQ(findingText(findings[2 * i + 1]),
                      at + "/state: \"enabled\" read as \"Disabled\"");
        }
    }
}

TEST_F(ZelctCheckTest, OneReadMemberAmongManyDroppedOnesIsFoundExactly) {
    Json::Value document = parseJson("{\"state\":\"enabled\"}");
    for (int i = 0; i < 60; ++i) {
        document["x" + std::to_string(100 + i)] = i;
    }
    // Distinct names share no pattern, so every answer is exact even without a budget.
    for (size_t exactWork : {kExactWork, size_t{0}}) {
        const std::vector<std::string> lines =
            texts(findDifferences(kState, document, readAs(kState, document), exactWork));
        ASSERT_EQ(lines.size(), 61u);
        EXPECT_EQ(lines[0], "/state: \"enabled\" read as \"Disabled\"");
        for (int i = 0; i < 60; ++i) {
            EXPECT_EQ(lines[static_cast<size_t>(i) + 1],
                      "/x" + std::to_string(100 + i) + ": dropped (never read)");
        }
    }
}

TEST_F(ZelctCheckTest, ElementsThatReadOtherwiseAloneAreAskedAboutInTheWholeList) {
    const Json::Value document =
        parseJson("[{\"v\":1,\"n\":3,\"w\":0},{\"v\":2.5,\"n\":3},{\"v\":3,\"n\":3,\"w\":1}]");
    EXPECT_EQ(texts(findDifferences(kCounted, document, readAs(kCounted, document))),
              (std::vector<std::string>{"/0/w: dropped (never read)", "/1/v: 2.5 read as 2",
                                        "/2/w: dropped (never read)"}));
}

// An empty member nothing reads is dropped on store like any other; an empty list the class
// reads as none, as it reads the list's absence, says nothing the reading would miss.
TEST_F(ZelctCheckTest, EmptyMembersThatNothingReadsAreDropped) {
    Json::Value document = parseJson("{\"state\":\"Enabled\"}");
    std::vector<std::string> expected;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "e" + std::to_string(10 + i);
        document[name] = i % 3 == 0   ? Json::Value(Json::arrayValue)
                         : i % 3 == 1 ? Json::Value(Json::objectValue)
                                      : Json::Value();
        expected.push_back("/" + name + ": dropped (never read)");
    }
    EXPECT_EQ(texts(findDifferences(kState, document, readAs(kState, document))), expected);
}

TEST_F(ZelctCheckTest, AnEmptyListTheClassReadsIsNoFinding) {
    const Kind& table = *findKind("channel-table");
    const Json::Value document = parseJson("{\"type\": 3, \"string\": \"madi\", \"channels\": []}");
    EXPECT_TRUE(findDifferences(table, document, readAs(table, document)).empty());
}

// ---- unusable documents ----

TEST_F(ZelctCheckTest, WrongJsonTypeIsLocatedAtTheDeepestNode) {
    const Json::Value document =
        parseJson("{\"alarms\":[{\"type\":7},{\"type\":\"8\",\"severity\":\"warning\"}]}");
    const FailurePlace place = locateFailure(kAlarms, document);
    ASSERT_TRUE(place.found);
    EXPECT_EQ(pointerText(place.path), "/alarms/1/type");
}

TEST_F(ZelctCheckTest, FirstRejectedNodeIsReportedWithItsOwnError) {
    Json::Value document(Json::arrayValue);
    for (int i = 0; i < 100; ++i) {
        SessionStreamBasics().Serialize(document[i]);
    }
    document[40]["session"] = "forty";
    document[70]["linked"] = 1;
    document[70]["name"] = Json::Value(Json::arrayValue);
    const FailurePlace place = locateFailure(kStreams, document);
    ASSERT_TRUE(place.found);
    EXPECT_EQ(pointerText(place.path), "/40/session");
    EXPECT_EQ(place.error, "Value is not convertible to UInt64.");
}

TEST_F(ZelctCheckTest, RejectedElementIsFoundAtEitherEndOfALongList) {
    Json::Value clean;
    SessionStreamBasics().Serialize(clean);
    for (Json::ArrayIndex rejected : {0u, 999u}) {
        Json::Value document(Json::arrayValue);
        for (int i = 0; i < 1000; ++i) {
            document.append(clean);
        }
        document[rejected]["stream"] = "one";
        const FailurePlace place = locateFailure(kStreams, document);
        ASSERT_TRUE(place.found);
        EXPECT_EQ(pointerText(place.path), "/" + std::to_string(rejected) + "/stream");
        EXPECT_EQ(place.error, "Value is not convertible to UInt64.");
    }
}

TEST_F(ZelctCheckTest, DocumentWithAWrongJsonTypeIsUnusable) {
    const Outcome outcome = checkDocument(kSfp, parseJson("{\"wavelength\":\"850\"}"), true);
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem,
              "/wavelength: the library cannot read \"850\" here (Value is not convertible to "
              "Int.)");
    EXPECT_EQ(exitCodeOf(outcome.status), 2);
}

TEST_F(ZelctCheckTest, WrongTopLevelTypeIsUnusableBeforeReading) {
    const Outcome outcome = checkDocument(kSfp, parseJson("[1]"), true);
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem, "the top-level value is an array, expected an object for sfp");
}

TEST_F(ZelctCheckTest, FilesThatCannotBeLoadedCarryTheFileMgrCode) {
    TempDir dir;
    Outcome missing = checkFile(kSfp, dir.file("missing.json"), true);
    EXPECT_EQ(missing.status, Outcome::Status::Unusable);
    EXPECT_EQ(missing.fileMgrCode, -17);
    EXPECT_EQ(missing.problem, "cannot load: No such file or directory (FileMgr code -17)");

    writeFile(dir.file("broken.json"), "{\"present\": tru");
    EXPECT_EQ(checkFile(kSfp, dir.file("broken.json"), true).fileMgrCode, -13);

    const Outcome directory = checkFile(kSfp, dir.path(), true);
    EXPECT_EQ(directory.status, Outcome::Status::Unusable);
    EXPECT_EQ(directory.fileMgrCode, -17);
    EXPECT_EQ(directory.problem, "cannot load: a directory, not a regular file (FileMgr code -17)");
}

TEST_F(ZelctCheckTest, ExitCodesOrderExactFindingsUnusable) {
    EXPECT_EQ(exitCodeOf(Outcome::Status::Exact), 0);
    EXPECT_EQ(exitCodeOf(Outcome::Status::Findings), 1);
    EXPECT_EQ(exitCodeOf(Outcome::Status::Unusable), 2);
}

// ---- report ----

TEST_F(ZelctCheckTest, JsonReportParsesBackWithEveryFinding) {
    const Outcome outcome = checkDocument(kState, parseJson("{\"state\":\"enabled\"}"), true);
    const Json::Value report = parseJson(indentedJson(outcomeJson("state.json", kState, outcome)));
    EXPECT_EQ(report["file"], "state.json");
    EXPECT_EQ(report["kind"], "state");
    EXPECT_EQ(report["result"], "findings");
    EXPECT_EQ(report["exit"], 1);
    ASSERT_EQ(report["findings"].size(), 1u);
    EXPECT_EQ(report["findings"][0]["path"], "/state");
    EXPECT_EQ(report["findings"][0]["finding"], "changed");
    EXPECT_EQ(report["findings"][0]["original"], "enabled");
    EXPECT_EQ(report["findings"][0]["understood"], "Disabled");
}

TEST_F(ZelctCheckTest, JsonReportOfAnUnusableFileNamesThePath) {
    const Outcome outcome = checkDocument(kSfp, parseJson("{\"wavelength\":[]}"), true);
    const Json::Value report = parseJson(indentedJson(outcomeJson("sfp.json", kSfp, outcome)));
    EXPECT_EQ(report["result"], "unusable");
    EXPECT_EQ(report["exit"], 2);
    EXPECT_EQ(report["path"], "/wavelength");
    EXPECT_FALSE(report.isMember("findings"));
}

// ---- findings kept and counted ----

TEST_F(ZelctCheckTest, FindingsPastTheKeptOnesAreCountedInTheirOrder) {
    Json::Value document(Json::arrayValue);
    for (int i = 0; i < 50; ++i) {
        document.append(parseJson("{\"state\":\"enabled\",\"note\":\"spare\"}"));
    }
    const Outcome all = checkDocument(kStreams, document, true);
    const Outcome five = checkDocument(kStreams, document, true, nullptr, 5);
    ASSERT_EQ(five.findings.size(), 5u);
    EXPECT_EQ(five.omitted, all.findings.size() - 5);
    EXPECT_EQ(all.omitted, 0u);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(findingText(five.findings[i]), findingText(all.findings[i]));
    }
    EXPECT_EQ(five.status, Outcome::Status::Findings);

    const Outcome none = checkDocument(kStreams, document, true, nullptr, 0);
    EXPECT_TRUE(none.findings.empty());
    EXPECT_EQ(none.omitted, all.findings.size());
    EXPECT_EQ(none.status, Outcome::Status::Findings);
}

TEST_F(ZelctCheckTest, FindingsBeyondOneBatchAreAnsweredAndCountedAlike) {
    // Every element lacks the ten members a stream writes, and two have a member nothing
    // reads, one in each of the first two batches of findings that wait for their answers.
    const Json::ArrayIndex elements = 6600;
    Json::Value document(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < elements; ++i) {
        Json::Value element(Json::objectValue);
        if (i == 3 || i == elements - 1) {
            element["x"] = 0;
        }
        document.append(std::move(element));
    }
    const Outcome outcome = checkDocument(kStreams, document, true, nullptr, 42);
    ASSERT_EQ(outcome.findings.size(), 42u);
    EXPECT_EQ(findingText(outcome.findings[0]), "/0/name: added with default \"\"");
    EXPECT_EQ(findingText(outcome.findings[39]), "/3/type: added with default \"undefined\"");
    EXPECT_EQ(findingText(outcome.findings[40]), "/3/x: dropped (never read)");
    EXPECT_EQ(findingText(outcome.findings[41]), "/4/name: added with default \"\"");
    EXPECT_EQ(outcome.omitted, 10 * elements + 2 - 42);

    const std::vector<Finding> every =
        findDifferences(kStreams, document, readAs(kStreams, document));
    ASSERT_EQ(every.size(), 10 * elements + 2);
    EXPECT_EQ(findingText(every[10 * elements]), "/6599/type: added with default \"undefined\"");
    EXPECT_EQ(findingText(every[10 * elements + 1]), "/6599/x: dropped (never read)");
}

TEST_F(ZelctCheckTest, AKeptFindingQuotesAValueTakenOutOfTheDocumentWhole) {
    TempDir dir;
    std::string zeros = "0";
    for (int i = 1; i < 100; ++i) {
        zeros += ",0";
    }
    writeFile(dir.file("sfp.json"), "{\"present\": true,\n \"zz\": [" + zeros + "]}");
    const Outcome outcome = checkFile(kSfp, dir.file("sfp.json"), true);
    const auto dropped =
        std::find_if(outcome.findings.begin(), outcome.findings.end(),
                     [](const Finding& f) { return pointerText(f.path) == "/zz"; });
    ASSERT_NE(dropped, outcome.findings.end());
    EXPECT_EQ(dropped->type, Finding::Type::Dropped);
    EXPECT_EQ(dropped->original, parseJson("[" + zeros + "]"));
    EXPECT_EQ(dropped->line, 2);
    EXPECT_EQ(dropped->column, 2);
    EXPECT_EQ(findingText({Finding::Type::NotWrittenBack, dropped->path, dropped->original, {}}),
              "/zz: [...] (100 elements) read but not written back");
}

TEST_F(ZelctCheckTest, ReportsGiveTheNumberOfFindingsNotKept) {
    Outcome outcome = checkDocument(kState, parseJson("{\"state\":\"enabled\"}"), true);
    outcome.omitted = 9999000;
    const Json::Value report = outcomeJson("state.json", kState, outcome);
    EXPECT_EQ(report["omitted"].asLargestUInt(), 9999000u);
    EXPECT_EQ(omittedText(9999000), "... and 9,999,000 more findings like these");
    EXPECT_EQ(omittedText(1), "... and 1 more finding like these");
    EXPECT_EQ(omittedText(999), "... and 999 more findings like these");

    std::ostringstream text;
    std::ostringstream err;
    makePrinter(Format::Text, text, err)->checked("state.json", kState, outcome);
    EXPECT_EQ(text.str(),
              "state.json: /state: \"enabled\" read as \"Disabled\"\n"
              "state.json: ... and 9,999,000 more findings like these\n");

    std::ostringstream github;
    makePrinter(Format::Github, github, err)->checked("state.json", kState, outcome);
    EXPECT_EQ(github.str(),
              "::warning file=state.json,title=zelct state%3A changed::/state: \"enabled\" read "
              "as \"Disabled\"\n"
              "::warning file=state.json,title=zelct state%3A omitted::... and 9,999,000 more "
              "findings like these\n");

    std::ostringstream sarif;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Sarif, sarif, err);
    printer->checked("state.json", kState, outcome);
    printer->finish(1);
    const Json::Value log = parseJson(sarif.str());
    const Json::Value& omitted = log["runs"][0]["properties"]["omittedResults"];
    ASSERT_EQ(omitted.size(), 1u);
    EXPECT_EQ(omitted[0]["uri"], "state.json");
    EXPECT_EQ(omitted[0]["omitted"].asLargestUInt(), 9999000u);
    EXPECT_EQ(log["runs"][0]["results"].size(), 1u);
}

// ---- running out of memory ----

TEST_F(ZelctCheckTest, RunningOutOfMemoryAnywhereInACheckIsNeverTheFilesFault) {
    TempDir dir;
    writeFile(dir.file("sfp.json"), "{\"present\": 1, \"vendor\": \"x\", \"wavelength\": 850.5}");
    const Outcome expected = checkFile(kSfp, dir.file("sfp.json"), true);
    ASSERT_EQ(expected.status, Outcome::Status::Findings);
    // Every allocation of the check in turn fails; the check throws std::bad_alloc, or gives
    // the same verdict when the failure did not matter. jsoncpp's reader reads a number
    // through a string stream, which takes a failed allocation for a text that is no number:
    // those places alone may come out as a parse failure, never as the document's fault.
    long failures = 0;
    long misread = 0;
    for (long allocation = 0;; ++allocation) {
        allocationsBeforeFailure = allocation;
        bool threw = false;
        Outcome outcome;
        try {
            outcome = checkFile(kSfp, dir.file("sfp.json"), true);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        const bool reached = allocationsBeforeFailure.load() < 0;
        allocationsBeforeFailure = -1;
        if (!reached) {
            break;  // the check made fewer allocations than that: every one has failed once
        }
        ++failures;
        if (threw || texts(outcome.findings) == texts(expected.findings)) {
            continue;
        }
        ++misread;
        EXPECT_EQ(outcome.problem.find("bad_alloc"), std::string::npos) << outcome.problem;
        EXPECT_EQ(outcome.problem.find("cannot read"), std::string::npos) << outcome.problem;
    }
    EXPECT_GT(failures, 100);
    EXPECT_LE(misread, 2);
}

TEST_F(ZelctCheckTest, RunningOutOfMemoryIsReportedAsItsOwnCause) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Json, out, err);
    TempDir dir;
    writeFile(dir.file("sfp.json"), "{\"present\": true}");
    const int exit = withinMemory(*printer, "sfp.json", [&] {
        allocationsBeforeFailure = 0;
        checkInput(kSfp, dir.file("sfp.json"), true);
        return 0;
    });
    allocationsBeforeFailure = -1;
    EXPECT_EQ(exit, 2);
    EXPECT_EQ(err.str(), "sfp.json: out of memory\n");
    EXPECT_EQ(printer->finish(exit), 2);
    const Json::Value report = parseJson(out.str());
    EXPECT_EQ(report["error"], "out of memory");
    EXPECT_EQ(report["file"], "sfp.json");
    EXPECT_EQ(report["exit"], 2);
}

// ---- storing what normalize wrote ----

namespace {

// While alive, a file may grow to `bytes` at most: a write past it fails with EFBIG as on a
// full disk, whoever the process runs as. SIGXFSZ, which would end the process, is ignored.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        previous_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, previous_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit saved_{};
    void (*previous_)(int) = nullptr;
};

}  // namespace

TEST_F(ZelctCheckTest, AFailedStoreOverTheInputLeavesTheInputWhole) {
    TempDir dir;
    const std::string input = dir.file("sfp.json");
    const std::string text = "{\"present\": true, \"vendor-name\": \"FS\"}";
    writeFile(input, text);
    Json::Value document;
    SfpInfo().Serialize(document);
    ASSERT_GT(document.toStyledString().size(), 64u);
    {
        // What a plain store in place does on a full disk: the document is cut off.
        FileSizeLimit full(64);
        EXPECT_EQ(FileMgr().storeLocalCfg(dir.file("plain.json"), document), -41);
    }
    EXPECT_EQ(readFile(dir.file("plain.json")).size(), 64u);

    Stored stored;
    {
        FileSizeLimit full(64);
        stored = storeDocument(dir.path() + "/./sfp.json", document);  // the input, otherwise named
    }
    EXPECT_EQ(stored.code, -41);
    EXPECT_EQ(stored.reason, "File too large");
    EXPECT_EQ(readFile(input), text);
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"plain.json", "sfp.json"}));

    stored = storeDocument(dir.path() + "/./sfp.json", document);
    EXPECT_EQ(stored.code, 0);
    EXPECT_EQ(stored.reason, "");
    EXPECT_EQ(readFile(input), document.toStyledString());
}

TEST_F(ZelctCheckTest, AStoreNeverOpensWhatIsAtThePath) {
    // A FIFO put at the path after zelct looked at it: storing must neither wait for a reader
    // nor write into it.
    TempDir dir;
    const std::string fifo = dir.file("out.json");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const Stored stored = storeDocument(fifo, parseJson("{\"a\":1}"));
    EXPECT_EQ(stored.code, -43);
    EXPECT_EQ(stored.reason, "Invalid argument");
    struct stat info {};
    ASSERT_EQ(::stat(fifo.c_str(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
    EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{"out.json"});
}

TEST_F(ZelctCheckTest, TheReasonOfAFailedStoreIsTheOneTheLibraryLogged) {
    EXPECT_EQ(storeFailureReason({{Logger::logError,
                                   "ERR::Saving JSON to file 'a (')b:' failed to open file "
                                   "errno='13' ('Permission denied')"}}),
              "Permission denied");
    EXPECT_EQ(storeFailureReason({{Logger::logError, "ERR::something else ('x')"}}), "");
    EXPECT_EQ(storeFailureReason({}), "");
    const Stored stored = storeDocument("/no-such-folder/x/out.json", Json::Value(1));
    EXPECT_EQ(stored.code, -43);
    EXPECT_EQ(stored.reason, "No such file or directory");
    ASSERT_EQ(stored.log.size(), 1u);
}

// ---- standard input ----

TEST_F(ZelctCheckTest, AClosedStandardInputIsSaidToBeClosed) {
    const int saved = ::dup(STDIN_FILENO);
    ASSERT_GE(saved, 0);
    ::close(STDIN_FILENO);
    std::string error;
    const bool copied = StandardInputFile().copy(error);
    const Outcome outcome = checkInput(kSfp, "-", true);
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
    EXPECT_FALSE(copied);
    EXPECT_EQ(error, "standard input is closed");
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem, "standard input is closed");
    EXPECT_EQ(exitCodeOf(outcome.status), 2);
}

TEST_F(ZelctCheckTest, TheCopyOfStandardInputGoesWithAnInterruptingSignal) {
    for (int signal : {SIGINT, SIGTERM}) {
        TempDir dir;
        int pipe[2];
        ASSERT_EQ(::pipe(pipe), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            // Reads standard input until the test's end of the pipe closes, which it never
            // does before the signal.
            ::dup2(pipe[0], STDIN_FILENO);
            ::close(pipe[0]);
            ::close(pipe[1]);
            ::setenv("TMPDIR", dir.path().c_str(), 1);
            std::string error;
            StandardInputFile().copy(error);
            ::_exit(0);
        }
        ::close(pipe[0]);
        ASSERT_EQ(::write(pipe[1], "{\"present\":", 12), 12);
        for (int wait = 0; wait < 500 && namesIn(dir.path()).empty(); ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_EQ(namesIn(dir.path()).size(), 1u);
        EXPECT_EQ(namesIn(dir.path())[0].compare(0, 12, "zelct-stdin-"), 0);
        ::kill(child, signal);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ::close(pipe[1]);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_TRUE(namesIn(dir.path()).empty()) << signal;
    }
}

// ---- command-line values ----

TEST_F(ZelctCheckTest, ZeroCountsAndAnEmptyVideoFormatAreRefused) {
    CLI::App app;
    unsigned int spp = 7;
    std::string format = "unset";
    app.add_option("--spp", spp)->check(atLeastOne());
    app.add_option("FORMAT", format)->check(namesSomething());
    try {
        app.parse(std::vector<std::string>{"0", "--spp"});  // CLI11 reads them from the back
        ADD_FAILURE() << "0 taken";
    } catch (const CLI::ValidationError& e) {
        EXPECT_STREQ(e.what(), "--spp: must be 1 or more, not 0");
    }
    app.clear();
    try {
        app.parse(std::vector<std::string>{""});
        ADD_FAILURE() << "an empty format taken";
    } catch (const CLI::ValidationError& e) {
        EXPECT_STREQ(e.what(),
                     "FORMAT: an empty name names no format: give its text (1080P59) or its "
                     "number");
    }
    app.clear();
    app.parse(std::vector<std::string>{"1080P59", "1", "--spp"});
    EXPECT_EQ(spp, 1u);
    EXPECT_EQ(format, "1080P59");
}

TEST_F(ZelctCheckTest, EveryKindHasADistinctNameAndAFactory) {
    std::vector<std::string> names;
    for (const Kind& kind : allKinds()) {
        ASSERT_NE(kind.make, nullptr);
        EXPECT_EQ(findKind(kind.name), &kind);
        Json::Value document;
        kind.make()->Serialize(document);
        if (!document.isNull()) {
            EXPECT_TRUE(hasTopLevel(kind, document)) << kind.name;
        }
    }
    EXPECT_EQ(findKind("no-such-kind"), nullptr);
}

// ---- state the reading keeps that the written document does not show ----

TEST(ZelctHiddenState, AChannelKindNoNameMatchesIsKeptBehindTheText) {
    const Kind& channel = *findKind("channel-id");
    for (const char* text : {"sdi", "MADI ", "", "madi\t"}) {
        Json::Value document;
        document["id"] = 5;
        document["type"] = text;
        document["position"] = 1;
        const Outcome outcome = checkDocument(channel, document, true);
        ASSERT_EQ(outcome.findings.size(), 1u) << text;
        const Finding& finding = outcome.findings[0];
        EXPECT_EQ(finding.type, Finding::Type::HiddenState);
        EXPECT_EQ(pointerText(finding.path), "/type");
        EXPECT_EQ(finding.original, text);
        EXPECT_EQ(finding.understood, DaifType::DAIF_AUTO);
    }
    Json::Value sdi;
    sdi["id"] = 5;
    sdi["type"] = "sdi";
    sdi["position"] = 1;
    EXPECT_EQ(findingText(checkDocument(channel, sdi, true).findings[0]),
              "/type: \"sdi\" is no interface kind; the channel keeps kind auto (12) and writes "
              "the text back");
}

TEST(ZelctHiddenState, AKnownKindInAnyCaseHidesNothing) {
    const Kind& channel = *findKind("channel-id");
    for (const char* text : {"sdi-audio", "SDI-Audio", "HDMI-VIDEO", "auto", "i2s"}) {
        Json::Value document;
        document["id"] = 5;
        document["type"] = text;
        document["position"] = 1;
        const Outcome outcome = checkDocument(channel, document, true);
        EXPECT_EQ(outcome.status, Outcome::Status::Exact) << text;
    }
    // A name written back in another form is a change the comparison already shows.
    Json::Value madi;
    madi["id"] = 5;
    madi["type"] = "MADI";
    madi["position"] = 1;
    const Outcome outcome = checkDocument(channel, madi, true);
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(outcome.findings[0].type, Finding::Type::Changed);
}

TEST(ZelctHiddenState, EveryChannelOfAListIsLookedAt) {
    Json::Value list(Json::arrayValue);
    for (const char* text : {"madi", "sdi", "tdm", "hdmi"}) {
        Json::Value channel;
        channel["id"] = static_cast<int>(list.size());
        channel["type"] = text;
        channel["position"] = static_cast<int>(list.size());
        list.append(channel);
    }
    const Outcome outcome = checkDocument(*findKind("channel-list"), list, true);
    std::vector<std::string> places;
    for (const Finding& finding : outcome.findings) {
        EXPECT_EQ(finding.type, Finding::Type::HiddenState);
        places.push_back(pointerText(finding.path));
    }
    EXPECT_EQ(places, (std::vector<std::string>{"/1/type", "/3/type"}));
}

// A channel table writes its kind's number beside the text, so an unknown text shows there:
// with a text, the number given is never read, and 12 is written in its place.
TEST(ZelctHiddenState, ATablesKindIsNoHiddenState) {
    EXPECT_NE(hiddenStateRuleAt(*findKind("channel-id"), "/type"), nullptr);
    EXPECT_EQ(hiddenStateRuleAt(*findKind("channel-table"), "/string"), nullptr);
    Json::Value table;
    table["type"] = 5;
    table["string"] = "sdi";
    const Outcome outcome = checkDocument(*findKind("channel-table"), table, true);
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(outcome.findings[0].type, Finding::Type::Dropped);
    EXPECT_EQ(pointerText(outcome.findings[0].path), "/type");
    EXPECT_EQ(outcome.understood["type"], DaifType::DAIF_AUTO);
}

// ---- many checks at once, beside a daemon's own logging ----

// Eight threads check eight documents at once, each logging its own address error, while
// another thread of the "daemon" logs through the sink it installed: every outcome holds
// exactly the lines of its own reading, and the sink exactly the daemon's.
TEST(ZelctThreads, EightChecksAtOnceKeepTheirOwnLogLinesAndLeaveTheSinkAlone) {
    TempDir dir;
    constexpr int kThreads = 8;
    std::vector<std::string> paths;
    for (int i = 0; i < kThreads; ++i) {
        paths.push_back(dir.file("eth" + std::to_string(i) + ".json"));
        writeFile(paths.back(), "{\"ipv4\": \"10.0.0." + std::to_string(300 + i) + "\"}");
    }
    std::mutex mutex;
    std::vector<std::string> sunk;
    Logger::setThreshold(Logger::logInfo);
    Logger::setSink([&](Logger::logDebugLevel_t, const std::string& line) {
        std::lock_guard<std::mutex> lock(mutex);
        sunk.push_back(line);
    });
    std::atomic<bool> done{false};
    int daemonLines = 0;
    std::thread daemon([&] {
        while (!done.load()) {
            Logger::log(Logger::logInfo, "INF::daemon line %d", daemonLines++);
        }
    });
    std::vector<Outcome> outcomes(kThreads);
    std::vector<std::thread> checkers;
    for (int i = 0; i < kThreads; ++i) {
        checkers.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                outcomes[i] = checkFile(*findKind("eth"), paths[i], true);
            }
        });
    }
    for (std::thread& checker : checkers) {
        checker.join();
    }
    done = true;
    daemon.join();
    Logger::setSink(nullptr);
    for (int i = 0; i < kThreads; ++i) {
        std::vector<std::string> lines;
        for (const LogLine& line : outcomes[i].log) {
            lines.push_back(line.text);
        }
        // The load's own line, then the reading's: the address given, and the mask absent.
        EXPECT_EQ(lines,
                  (std::vector<std::string>{"VBS::path '" + paths[i] + "' size loaded '22'",
                                            "ERR::Error parsing IP '10.0.0." +
                                                std::to_string(300 + i) + "': invalid IP address",
                                            "ERR::Error parsing IP '': invalid IP address"}))
            << i;
        EXPECT_EQ(outcomes[i].status, Outcome::Status::Findings) << i;
    }
    ASSERT_EQ(sunk.size(), static_cast<size_t>(daemonLines));
    for (int n = 0; n < daemonLines; ++n) {
        EXPECT_EQ(sunk[static_cast<size_t>(n)], "INF::daemon line " + std::to_string(n));
    }
}
