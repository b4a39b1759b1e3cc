// The check library as a daemon uses it: documents checked from a text, a file or a loaded
// value, their findings and log lines as data, and checks on many threads at once beside the
// daemon's own log sink.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "DocumentCheck.h"
#include "LogCapture.h"
#include "Logger.h"
#include "TempDir.h"

namespace {

using Line = Logger::Capture::Line;

// A channel id whose type the device reads as another, whose position it clamps and with a
// member it never reads.
const std::string kChannelIdFindings =
    "{\n\t\"id\": 7,\n\t\"type\": \"i32s\",\n\t\"position\": 300,\n\t\"channel\": 7\n}\n";
const std::string kChannelIdClean =
    "{\n\t\"id\": 7,\n\t\"type\": \"aes3\",\n\t\"position\": 2\n}\n";
const std::string kInvalid = "{\n\t\"present\" : tru\n}\n";

std::string loadedLine(const std::string& name, size_t size) {
    return "VBS::path '" + name + "' size loaded '" + std::to_string(size) + "'";
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}

// The three findings of kChannelIdFindings, in the order the check finds them.
void expectChannelIdFindings(const DocumentCheck::Report& report, bool withPositions) {
    ASSERT_EQ(report.status, DocumentCheck::Findings);
    ASSERT_EQ(report.findings.size(), 3u);
    EXPECT_EQ(report.omitted, 0u);

    const DocumentCheck::Finding& channel = report.findings[0];
    EXPECT_EQ(channel.kind, "dropped");
    EXPECT_EQ(channel.pointer, "/channel");
    EXPECT_EQ(channel.original, Json::Value(7));
    EXPECT_TRUE(channel.understood.isNull());
    EXPECT_EQ(channel.message, "dropped (never read)");

    const DocumentCheck::Finding& position = report.findings[1];
    EXPECT_EQ(position.kind, "changed");
    EXPECT_EQ(position.pointer, "/position");
    EXPECT_EQ(position.original, Json::Value(300));
    EXPECT_EQ(position.understood, Json::Value(44));
    EXPECT_EQ(position.message, "300 read as 44");

    const DocumentCheck::Finding& type = report.findings[2];
    EXPECT_EQ(type.kind, "changed");
    EXPECT_EQ(type.pointer, "/type");
    EXPECT_EQ(type.original, Json::Value("i32s"));
    EXPECT_EQ(type.understood, Json::Value("tdm"));
    EXPECT_EQ(type.message, "\"i32s\" read as \"tdm\"");

    const int lines[] = {5, 4, 3};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(report.findings[i].line, withPositions ? lines[i] : 0) << i;
        EXPECT_EQ(report.findings[i].column, withPositions ? 2 : 0) << i;
    }
    EXPECT_EQ(report.understood["position"], Json::Value(44));
    EXPECT_EQ(report.understood["type"], Json::Value("tdm"));
    EXPECT_FALSE(report.understood.isMember("channel"));
}

}  // namespace

TEST(DocumentCheckTest, KindsAreListedAndFoundByName) {
    const std::vector<std::string> names = DocumentCheck::kindNames();
    EXPECT_NE(std::find(names.begin(), names.end(), "channel-tables"), names.end());
    EXPECT_NE(std::find(names.begin(), names.end(), "channel-id"), names.end());
    EXPECT_NE(std::find(names.begin(), names.end(), "sfp"), names.end());
    for (const std::string& name : names) {
        EXPECT_TRUE(DocumentCheck::hasKind(name)) << name;
    }
    EXPECT_FALSE(DocumentCheck::hasKind("channel-tabels"));
    EXPECT_FALSE(DocumentCheck::hasKind(""));
}

TEST(DocumentCheckTest, TextWithFindingsGivesThemAsDataWithTheirPositions) {
    const DocumentCheck::Report report =
        DocumentCheck::checkText("channel-id", kChannelIdFindings, "board/channel.json");
    EXPECT_EQ(report.name, "board/channel.json");
    expectChannelIdFindings(report, true);
    EXPECT_EQ(report.problem, "");
}

TEST(DocumentCheckTest, TextLogLinesNameTheTextNotWhereItWasKept) {
    const DocumentCheck::Report report =
        DocumentCheck::checkText("channel-id", kChannelIdClean, "board/channel.json");
    EXPECT_EQ(report.status, DocumentCheck::Exact);
    EXPECT_TRUE(report.findings.empty());
    const std::vector<Line> expected = {
        {Logger::logVerbose, loadedLine("board/channel.json", kChannelIdClean.size())}};
    EXPECT_EQ(report.log, expected);
}

TEST(DocumentCheckTest, FileIsLoadedAsTheFileStoreLoadsIt) {
    TempDir dir;
    const std::string path = dir.file("channel.json");
    writeFile(path, kChannelIdFindings);
    const DocumentCheck::Report report = DocumentCheck::checkFile("channel-id", path);
    EXPECT_EQ(report.name, path);
    expectChannelIdFindings(report, true);
    const std::vector<Line> expected = {
        {Logger::logVerbose, loadedLine(path, kChannelIdFindings.size())}};
    EXPECT_EQ(report.log, expected);
}

TEST(DocumentCheckTest, LoadedValueHasFindingsWithoutPositions) {
    Json::Value document;
    document["id"] = 7;
    document["type"] = "i32s";
    document["position"] = 300;
    document["channel"] = 7;
    const Json::Value before = document;
    const DocumentCheck::Report report = DocumentCheck::checkValue("channel-id", document);
    expectChannelIdFindings(report, false);
    EXPECT_TRUE(report.log.empty());
    EXPECT_EQ(document, before);
}

TEST(DocumentCheckTest, UnknownKindIsAnUnusableReport) {
    const DocumentCheck::Report report =
        DocumentCheck::checkText("channel-tabels", kChannelIdClean, "x.json");
    EXPECT_EQ(report.status, DocumentCheck::Unusable);
    EXPECT_EQ(report.problem, "no document kind is named 'channel-tabels'");
    EXPECT_TRUE(report.findings.empty());
    EXPECT_TRUE(report.log.empty());
    EXPECT_TRUE(report.understood.isNull());
    EXPECT_EQ(DocumentCheck::checkValue("", Json::Value()).status, DocumentCheck::Unusable);
}

TEST(DocumentCheckTest, InvalidTextIsUnusableWithWhereTheParserStopped) {
    const DocumentCheck::Report report = DocumentCheck::checkText("sfp", kInvalid, "sfp.json");
    EXPECT_EQ(report.status, DocumentCheck::Unusable);
    EXPECT_EQ(report.problem,
              "not valid JSON: Syntax error: value, object or array expected. (FileMgr code -13)");
    EXPECT_EQ(report.problemLine, 2);
    EXPECT_EQ(report.problemColumn, 14);
    EXPECT_EQ(report.problemPointer, "");
    EXPECT_TRUE(report.understood.isNull());
    const std::vector<Line> expected = {
        {Logger::logVerbose, loadedLine("sfp.json", kInvalid.size())},
        {Logger::logError, "ERR::Error parsing Json '" + kInvalid + "'"},
        {Logger::logError,
         "ERR::Error: '* Line 2, Column 14\n  Syntax error: value, object or array expected.\n'"}};
    EXPECT_EQ(report.log, expected);
}

TEST(DocumentCheckTest, WrongTopLevelTypeIsUnusableAtTheDocument) {
    const DocumentCheck::Report report =
        DocumentCheck::checkText("alarms", "[1, 2]\n", "alarms.json");
    EXPECT_EQ(report.status, DocumentCheck::Unusable);
    EXPECT_EQ(report.problem, "the top-level value is an array, expected an object for alarms");
    EXPECT_EQ(report.problemLine, 1);
    EXPECT_EQ(report.problemColumn, 1);
}

TEST(DocumentCheckTest, MissingFileIsUnusable) {
    TempDir dir;
    const DocumentCheck::Report report = DocumentCheck::checkFile("sfp", dir.file("absent.json"));
    EXPECT_EQ(report.status, DocumentCheck::Unusable);
    EXPECT_NE(report.problem.find("(FileMgr code -17)"), std::string::npos) << report.problem;
    EXPECT_FALSE(report.log.empty());
}

// Eight threads check documents of their own at once, while the daemon's sink receives the
// lines the daemon logs and none of theirs.
TEST(DocumentCheckTest, ChecksOnManyThreadsKeepTheirOwnLogLinesBesideTheDaemonsSink) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 5;
    LogCapture daemon;
    std::vector<std::vector<DocumentCheck::Report>> reports(kThreads);
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([&, index] {
            while (!go.load()) {
                std::this_thread::yield();
            }
            const std::string name = "thread-" + std::to_string(index) + ".json";
            const std::string& text = index % 2 == 0 ? kChannelIdFindings : kChannelIdClean;
            for (int round = 0; round < kRounds; ++round) {
                reports[index].push_back(DocumentCheck::checkText("channel-id", text, name));
                Logger::log(Logger::logWarning, "WRN::daemon %d round %d", index, round);
            }
        });
    }
    go.store(true);
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int index = 0; index < kThreads; ++index) {
        const std::string name = "thread-" + std::to_string(index) + ".json";
        const std::string& text = index % 2 == 0 ? kChannelIdFindings : kChannelIdClean;
        ASSERT_EQ(reports[index].size(), static_cast<size_t>(kRounds));
        for (const DocumentCheck::Report& report : reports[index]) {
            EXPECT_EQ(report.name, name);
            const std::vector<Line> expected = {
                {Logger::logVerbose, loadedLine(name, text.size())}};
            EXPECT_EQ(report.log, expected);
            if (index % 2 == 0) {
                expectChannelIdFindings(report, true);
            } else {
                EXPECT_EQ(report.status, DocumentCheck::Exact);
            }
        }
    }
    std::vector<LogCapture::Line> received = daemon.lines();
    std::sort(received.begin(), received.end());
    std::vector<LogCapture::Line> expected;
    for (int index = 0; index < kThreads; ++index) {
        for (int round = 0; round < kRounds; ++round) {
            expected.emplace_back(Logger::logWarning, "WRN::daemon " + std::to_string(index) +
                                                          " round " + std::to_string(round));
        }
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(received, expected);
}
