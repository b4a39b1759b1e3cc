#include "FileMgr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "FileUtil.h"
#include "LogCapture.h"
#include "TempDir.h"

namespace {

const char* const kLoadSignature = "int FileMgr::loadLocalCfg(const string&, Json::Value&)";

std::string checkLine(int code) {
    return std::string("ERR::CHK(") + kLoadSignature + ")::55 Error Code " + std::to_string(code);
}

}  // namespace

class FileMgrTest : public testing::Test {
protected:
    TempDir dir;
    LogCapture log;
    FileMgr files;
};

TEST_F(FileMgrTest, LoadFileContentOfMissingPathReturns17AndKeepsContent) {
    const std::string path = dir.file("missing.json");
    std::string content = "previous";
    EXPECT_EQ(files.loadFileContent(path, content), -17);
    EXPECT_EQ(content, "previous");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logError, "ERR::path '" + path + "' error opening file"));
}

TEST_F(FileMgrTest, LoadLocalCfgOfMissingPathReturns17AndKeepsRoot) {
    const std::string path = dir.file("missing.json");
    Json::Value root;
    root["kept"] = 1;
    EXPECT_EQ(files.loadLocalCfg(path, root), -17);
    EXPECT_EQ(root, parseJson(R"({"kept": 1})"));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, "ERR::path '" + path + "' error opening file"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, checkLine(-17)));
}

TEST_F(FileMgrTest, LoadFileContentReadsWholeTextAndLogsItsLength) {
    const std::string path = dir.file("a.json");
    writeFile(path, "{\"a\": 1}\n");
    std::string content = "old";
    EXPECT_EQ(files.loadFileContent(path, content), 0);
    EXPECT_EQ(content, "{\"a\": 1}\n");
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '9'"));
}

TEST_F(FileMgrTest, EmptyFileLogsFreadFailureAndFailsToParse) {
    const std::string path = dir.file("empty.json");
    writeFile(path, "");
    std::string content = "old";
    EXPECT_EQ(files.loadFileContent(path, content), 0);
    EXPECT_EQ(content, "");
    auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, "ERR::fread failed"));
    EXPECT_EQ(lines[1], logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '0'"));

    log.clear();
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root), -13);
    lines = log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, "ERR::fread failed"));
    EXPECT_EQ(lines[2], logLine(Logger::logError, "ERR::Error parsing Json ''"));
    EXPECT_EQ(lines[3].first, Logger::logError);
    EXPECT_EQ(lines[3].second.rfind("ERR::Error: '", 0), 0u) << lines[3].second;
}

TEST_F(FileMgrTest, NulByteEndsTheContent) {
    const std::string path = dir.file("nul.json");
    writeFile(path, std::string("{\"a\": 1}\0garbage", 16));
    std::string content;
    EXPECT_EQ(files.loadFileContent(path, content), 0);
    EXPECT_EQ(content, "{\"a\": 1}");
    EXPECT_EQ(log.lines().back(),
              logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '8'"));

    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root), 0);
    EXPECT_EQ(root, parseJson(R"({"a": 1})"));
}

TEST_F(FileMgrTest, MalformedJsonReturns13WithBothErrorLines) {
    const std::string path = dir.file("bad.json");
    writeFile(path, "{\"a\": }");
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root), -13);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], logLine(Logger::logError, "ERR::Error parsing Json '{\"a\": }'"));
    EXPECT_EQ(lines[2].first, Logger::logError);
    EXPECT_EQ(lines[2].second.rfind("ERR::Error: '", 0), 0u);
    EXPECT_GT(lines[2].second.size(), std::strlen("ERR::Error: ''"));
}

TEST_F(FileMgrTest, TopLevelArrayAndNumberAreAccepted) {
    const std::string arrayPath = dir.file("array.json");
    writeFile(arrayPath, "[1, 2, 3]");
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(arrayPath, root), 0);
    EXPECT_EQ(root, parseJson("[1, 2, 3]"));

    const std::string numberPath = dir.file("number.json");
    writeFile(numberPath, "42");
    Json::Value number;
    EXPECT_EQ(files.loadLocalCfg(numberPath, number), 0);
    EXPECT_TRUE(number.isInt());
    EXPECT_EQ(number.asInt(), 42);
}

TEST_F(FileMgrTest, StoreIntoMissingDirectoryReturns43WithErrno2) {
    const std::string path = dir.file("no/such/dir/x.json");
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg(path, root), -43);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0],
              logLine(Logger::logError,
                      "ERR::Saving JSON to file '" + path +
                          ":' failed to open file errno='2' ('No such file or directory')"));
}

TEST_F(FileMgrTest, StoreIntoFullDeviceReturns41) {
    Json::Value root;
    root["a"] = std::string(100000, 'x');  // more than the stream buffers, so the write fails
    EXPECT_EQ(files.storeLocalCfg("/dev/full", root), -41);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], logLine(Logger::logError,
                                "ERR::Saving JSON to file '/dev/full:' failed to write file "
                                "errno='28' ('No space left on device')"));
}

TEST_F(FileMgrTest, StoreWritesStyledTextAndLogsNothing) {
    const std::string path = dir.file("out.json");
    Json::Value root;
    root["b"] = "text";
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg(path, root), 0);
    EXPECT_EQ(readFile(path), root.toStyledString());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FileMgrTest, StoreReplacesALongerFileCompletely) {
    const std::string path = dir.file("out.json");
    writeFile(path, std::string(4096, 'z'));
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg(path, root), 0);
    EXPECT_EQ(readFile(path), "{\n\t\"a\" : 1\n}\n");
}

TEST_F(FileMgrTest, StoreThenLoadGivesTheSameValue) {
    const std::string path = dir.file("round.json");
    Json::Value root = parseJson(
        R"({"s": "x", "n": -5, "u": 18446744073709551615, "d": 1.5, "b": false, "a": [1, {}], "o": null})");
    EXPECT_EQ(files.storeLocalCfg(path, root), 0);
    Json::Value back;
    EXPECT_EQ(files.loadLocalCfg(path, back), 0);
    EXPECT_EQ(back, root);
    EXPECT_EQ(back["u"].asUInt64(), 18446744073709551615ull);
}
