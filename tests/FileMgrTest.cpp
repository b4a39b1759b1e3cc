#include "FileMgr.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "FileUtil.h"
#include "LogCapture.h"
#include "TempDir.h"

namespace {

const char* const kLoadSignature = "int FileMgr::loadLocalCfg(const string&, Json::Value&)";

std::string checkLine(int code) {
    return std::string("ERR::CHK(") + kLoadSignature + ")::55 Error Code " + std::to_string(code);
}

unsigned modeOf(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

// A value whose styled text is about 100 kB, far more than any limit used below.
Json::Value bigDocument() {
    Json::Value root;
    root["payload"] = std::string(100000, 'x');
    return root;
}

struct ChildOutcome {
    int result = 0;
    std::vector<LogCapture::Line> lines;
};

// Runs action in a child process whose files may not grow beyond limit bytes, with SIGXFSZ
// ignored so an oversized write fails with EFBIG instead of killing the child: a write that
// fails half-way, as on a full disk or at a power cut. The limit dies with the child. The
// caller's LogCapture must be empty; the child's lines come back through a pipe.
template <typename Action>
ChildOutcome runWithFileSizeLimit(rlim_t limit, const LogCapture& log, Action action) {
    int status = 0;
    const std::string report = textOfChild(
        [&] {
            ::signal(SIGXFSZ, SIG_IGN);
            const struct rlimit fileSize = {limit, limit};
            const int result = ::setrlimit(RLIMIT_FSIZE, &fileSize) == 0 ? action() : 12345;
            std::string lines = std::to_string(result) + "\n";
            for (const auto& line : log.lines()) {
                lines += std::to_string(line.first) + " " + line.second + "\n";
            }
            return lines;
        },
        status);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child status " << status;

    ChildOutcome outcome;
    std::istringstream lines(report);
    std::string line;
    if (std::getline(lines, line)) {
        outcome.result = std::stoi(line);
    }
    while (std::getline(lines, line)) {
        const auto space = line.find(' ');
        outcome.lines.emplace_back(
            static_cast<Logger::logDebugLevel_t>(std::stoi(line.substr(0, space))),
            line.substr(space + 1));
    }
    return outcome;
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

// levels nested arrays ("[[...]]") or objects ("{"a":{"a":...1}}").
std::string nested(int levels, bool objects) {
    std::string text;
    for (int i = 0; i < levels; ++i) {
        text += objects ? "{\"a\":" : "[";
    }
    text += "1";
    for (int i = 0; i < levels; ++i) {
        text += objects ? "}" : "]";
    }
    return text;
}

TEST_F(FileMgrTest, NestingBeyondTheParserLimitReturns13AndKeepsRoot) {
    for (const bool objects : {false, true}) {
        SCOPED_TRACE(objects ? "objects" : "arrays");
        const std::string path = dir.file("deep.json");
        const std::string text = nested(2000, objects);
        writeFile(path, text);
        log.clear();
        Json::Value root = parseJson(R"({"kept": [1, "two"]})");
        int result = 0;
        EXPECT_NO_THROW(result = files.loadLocalCfg(path, root));
        EXPECT_EQ(result, -13);
        EXPECT_EQ(root, parseJson(R"({"kept": [1, "two"]})"));
        const auto lines = log.lines();
        ASSERT_EQ(lines.size(), 3u);
        EXPECT_EQ(lines[1], logLine(Logger::logError, "ERR::Error parsing Json '" + text + "'"));
        EXPECT_EQ(lines[2],
                  logLine(Logger::logError, "ERR::Error: 'Exceeded stackLimit in readValue().'"));
    }
}

TEST_F(FileMgrTest, NestingJustBelowTheParserLimitLoads) {
    for (const bool objects : {false, true}) {
        SCOPED_TRACE(objects ? "objects" : "arrays");
        const std::string path = dir.file("deep.json");
        writeFile(path, nested(999, objects));
        Json::Value root;
        ASSERT_EQ(files.loadLocalCfg(path, root), 0);
        const Json::Value* inner = &root;
        for (int level = 0; level < 999; ++level) {
            inner = objects ? &(*inner)["a"] : &(*inner)[0];
        }
        EXPECT_EQ(*inner, Json::Value(1));
    }
}

TEST_F(FileMgrTest, FailedParseLeavesRootExactlyAsItWas) {
    const std::string path = dir.file("half.json");
    writeFile(path, R"({"serial-number":"x","madi-lock":1e400})");
    Json::Value root = parseJson(R"({"serial-number": "kept", "eth": [{"name": "eth0"}]})");
    const Json::Value before = root;
    EXPECT_EQ(files.loadLocalCfg(path, root), -13);
    EXPECT_EQ(root, before);
    EXPECT_FALSE(root.isMember("madi-lock"));

    Json::Value empty;
    EXPECT_EQ(files.loadLocalCfg(path, empty), -13);
    EXPECT_TRUE(empty.isNull());
}

TEST_F(FileMgrTest, SuccessfulLoadReplacesWhatRootHeld) {
    const std::string path = dir.file("new.json");
    writeFile(path, R"({"b": 2})");
    Json::Value root = parseJson(R"({"a": 1})");
    EXPECT_EQ(files.loadLocalCfg(path, root), 0);
    EXPECT_EQ(root, parseJson(R"({"b": 2})"));
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

// A device is no place for a document: /dev/full would fail the write, /dev/null would
// swallow it and report success.
TEST_F(FileMgrTest, StoreIntoADeviceReturns43WithoutWriting) {
    Json::Value root;
    root["a"] = std::string(100000, 'x');
    for (const std::string device : {"/dev/full", "/dev/null"}) {
        log.clear();
        EXPECT_EQ(files.storeLocalCfg(device, root), -43);
        EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{logLine(
                                   Logger::logError, "ERR::Saving JSON to file '" + device +
                                                         ":' failed to open file errno='22' "
                                                         "('Invalid argument')")}));
    }
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

TEST_F(FileMgrTest, LoadOfDirectoryReturns17AsNotARegularFile) {
    std::string content = "previous";
    EXPECT_EQ(files.loadFileContent(dir.path(), content), -17);
    EXPECT_EQ(content, "previous");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logError, "ERR::path '" + dir.path() + "' is not a regular file"));

    log.clear();
    Json::Value root = parseJson(R"({"kept": 1})");
    EXPECT_EQ(files.loadLocalCfg(dir.path(), root), -17);
    EXPECT_EQ(root, parseJson(R"({"kept": 1})"));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              logLine(Logger::logError, "ERR::path '" + dir.path() + "' is not a regular file"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, checkLine(-17)));
}

// Memory follows the number of values, not the size of the file: the load counts them in the
// text and refuses before the parser builds anything.
TEST_F(FileMgrTest, LoadOfMoreValuesThanTheLimitReturns17BeforeParsing) {
    const std::string path = dir.file("many.json");
    writeFile(path, "[{},{},{},{},{}]");
    Json::Value root = parseJson(R"({"kept": 1})");
    EXPECT_EQ(files.loadLocalCfg(path, root, FileMgr::Limits{FileMgr::kMaxFileSize, 5}), -17);
    EXPECT_EQ(root, parseJson(R"({"kept": 1})"));
    EXPECT_EQ(log.lines(),
              (std::vector<LogCapture::Line>{
                  logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '16'"),
                  logLine(Logger::logError,
                          "ERR::path '" + path + "' holds too many values (6 values, limit 5)"),
                  logLine(Logger::logError, checkLine(-17))}));

    log.clear();
    EXPECT_EQ(files.loadLocalCfg(path, root, FileMgr::Limits{FileMgr::kMaxFileSize, 6}), 0);
    EXPECT_EQ(root, parseJson("[{},{},{},{},{}]"));
}

// Member names, and whatever strings and comments hold, are no values.
TEST_F(FileMgrTest, TheValueCountSkipsNamesStringsAndComments) {
    const std::string path = dir.file("counted.json");
    writeFile(path,
              "{\"a,[{\": \"x]}\\\",\", /* [[[,, */ \"b\" : [1, -2.5e3, true, null] // {{{\n}");
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root, FileMgr::Limits{FileMgr::kMaxFileSize, 7}), 0);
    EXPECT_EQ(root["a,[{"], "x]}\",");
    log.clear();
    EXPECT_EQ(files.loadLocalCfg(path, root, FileMgr::Limits{FileMgr::kMaxFileSize, 6}), -17);
    EXPECT_EQ(log.lines().at(1),
              logLine(Logger::logError,
                      "ERR::path '" + path + "' holds too many values (7 values, limit 6)"));
}

TEST_F(FileMgrTest, TheDefaultLoadRefusesMoreThanAMillionValues) {
    ASSERT_EQ(FileMgr::kMaxValues, 1000000);
    const std::string path = dir.file("million.json");
    // The array and its 999,999 elements: a million values.
    std::string text = "[";
    for (int i = 0; i < 999998; ++i) {
        text += "0,";
    }
    writeFile(path, text + "0]");
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root), 0);
    EXPECT_EQ(root.size(), 999999u);
    writeFile(path, text + "0,0]");
    log.clear();
    EXPECT_EQ(files.loadLocalCfg(path, root), -17);
    EXPECT_EQ(log.lines().at(1),
              logLine(Logger::logError, "ERR::path '" + path +
                                            "' holds too many values (1000001 values, limit "
                                            "1000000)"));
}

TEST_F(FileMgrTest, LoadFileContentTakesTheSizeLimitItIsGiven) {
    const std::string path = dir.file("eleven.json");
    writeFile(path, "[1,2,3,4,5]");
    std::string content = "previous";
    EXPECT_EQ(files.loadFileContent(path, content, FileMgr::Limits{10, FileMgr::kMaxValues}), -17);
    EXPECT_EQ(content, "previous");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogCapture::Line>{logLine(
            Logger::logError, "ERR::path '" + path + "' is too large (11 bytes, limit 10)")}));
    EXPECT_EQ(files.loadFileContent(path, content, FileMgr::Limits{11, FileMgr::kMaxValues}), 0);
    EXPECT_EQ(content, "[1,2,3,4,5]");
}

TEST_F(FileMgrTest, LoadOfFifoWithoutWriterReturns17AtOnce) {
    const std::string path = dir.file("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    ::alarm(20);  // a load that waits for a writer ends the test here instead of hanging
    Json::Value root = parseJson(R"({"kept": 1})");
    const int result = files.loadLocalCfg(path, root);
    ::alarm(0);
    EXPECT_EQ(result, -17);
    EXPECT_EQ(root, parseJson(R"({"kept": 1})"));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              logLine(Logger::logError, "ERR::path '" + path + "' is not a regular file"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, checkLine(-17)));
}

TEST_F(FileMgrTest, LoadOfFifoWithWriterReturns17WithoutReadingIt) {
    const std::string path = dir.file("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int writer = ::open(path.c_str(), O_RDWR);  // keeps a writer, never writes
    ASSERT_GE(writer, 0);
    ::alarm(20);
    std::string content = "previous";
    const int result = files.loadFileContent(path, content);
    ::alarm(0);
    ::close(writer);
    EXPECT_EQ(result, -17);
    EXPECT_EQ(content, "previous");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logError, "ERR::path '" + path + "' is not a regular file"));
}

TEST_F(FileMgrTest, LoadOfCharacterDeviceReturns17) {
    std::string content = "previous";
    EXPECT_EQ(files.loadFileContent("/dev/zero", content), -17);
    EXPECT_EQ(content, "previous");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logError, "ERR::path '/dev/zero' is not a regular file"));
}

TEST_F(FileMgrTest, LoadOfFileLargerThan100MiBReturns17BeforeReading) {
    const std::string path = dir.file("huge.json");
    writeFile(path, "{");
    // Sparse: takes no disk space, reads as NUL bytes.
    ASSERT_EQ(::truncate(path.c_str(), FileMgr::kMaxFileSize + 1), 0);
    EXPECT_EQ(FileMgr::kMaxFileSize, 104857600);

    Json::Value root = parseJson(R"({"kept": 1})");
    EXPECT_EQ(files.loadLocalCfg(path, root), -17);
    EXPECT_EQ(root, parseJson(R"({"kept": 1})"));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              logLine(Logger::logError,
                      "ERR::path '" + path + "' is too large (104857601 bytes, limit 104857600)"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, checkLine(-17)));
}

TEST_F(FileMgrTest, LoadOfFileOfExactly100MiBIsRead) {
    const std::string path = dir.file("limit.json");
    writeFile(path, "[7]");
    ASSERT_EQ(::truncate(path.c_str(), FileMgr::kMaxFileSize), 0);
    std::string content;
    EXPECT_EQ(files.loadFileContent(path, content), 0);
    EXPECT_EQ(content, "[7]");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '3'"));
}

TEST_F(FileMgrTest, FileOfNulBytesOnlyLoadsEmptyAndFailsToParse) {
    const std::string path = dir.file("zeros.json");
    writeFile(path, std::string(64, '\0'));
    std::string content = "old";
    EXPECT_EQ(files.loadFileContent(path, content), 0);
    EXPECT_EQ(content, "");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '0'"));

    log.clear();
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(path, root), -13);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], logLine(Logger::logVerbose, "VBS::path '" + path + "' size loaded '0'"));
    EXPECT_EQ(lines[1], logLine(Logger::logError, "ERR::Error parsing Json ''"));
    EXPECT_EQ(lines[2].first, Logger::logError);
    EXPECT_EQ(lines[2].second.rfind("ERR::Error: '", 0), 0u) << lines[2].second;
}

TEST_F(FileMgrTest, DurableStoreWritesTheSameStyledTextAndLeavesNoTemporary) {
    const std::string plain = dir.file("plain.json");
    const std::string durable = dir.file("durable.json");
    const Json::Value root = parseJson(R"({"b": "text", "a": [1, 2.5, null], "c": {"d": true}})");
    EXPECT_EQ(files.storeLocalCfg(plain, root), 0);
    EXPECT_EQ(files.storeLocalCfgDurable(durable, root), 0);
    EXPECT_EQ(readFile(durable), root.toStyledString());
    EXPECT_EQ(readFile(durable), readFile(plain));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"durable.json", "plain.json"}));
}

TEST_F(FileMgrTest, DurableStoreReplacesALongerFileCompletely) {
    const std::string path = dir.file("out.json");
    writeFile(path, std::string(4096, 'z'));
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), 0);
    EXPECT_EQ(readFile(path), "{\n\t\"a\" : 1\n}\n");
    Json::Value back;
    EXPECT_EQ(files.loadLocalCfg(path, back), 0);
    EXPECT_EQ(back, root);
}

TEST_F(FileMgrTest, DurableStoreOfABareFileNameWritesInTheWorkingFolder) {
    const std::string previous = std::filesystem::current_path().string();
    ASSERT_EQ(::chdir(dir.path().c_str()), 0);
    Json::Value root;
    root["here"] = true;
    const int result = files.storeLocalCfgDurable("bare.json", root);
    ASSERT_EQ(::chdir(previous.c_str()), 0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(dir.file("bare.json")), root.toStyledString());
    EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{"bare.json"});
}

TEST_F(FileMgrTest, DurableStoreIntoMissingDirectoryReturns43WithErrno2) {
    const std::string path = dir.file("no/such/dir/x.json");
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), -43);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0],
              logLine(Logger::logError,
                      "ERR::Saving JSON to file '" + path +
                          ":' failed to open file errno='2' ('No such file or directory')"));
}

TEST_F(FileMgrTest, StoreAndDurableStoreOntoADirectoryBothReturn43) {
    const std::string path = dir.file("taken");
    ASSERT_TRUE(std::filesystem::create_directory(path));
    writeFile(path + "/inside", "kept");
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg(path, root), -43);
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), -43);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, saveLine(path, "open file", EISDIR)));
    EXPECT_EQ(lines[1], lines[0]);
    EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{"taken"});
    EXPECT_EQ(readFile(path + "/inside"), "kept");
}

TEST_F(FileMgrTest, StoreAndDurableStoreOfAnEmptyPathBothReturn43WithErrno2) {
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg("", root), -43);
    EXPECT_EQ(files.storeLocalCfgDurable("", root), -43);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, saveLine("", "open file", ENOENT)));
    EXPECT_EQ(lines[1], lines[0]);
}

// A FIFO without a reader would block the store for ever, one with a reader would take the
// document away; both are refused at once and nothing goes into them.
TEST_F(FileMgrTest, StoreIntoAFifoReturns43AtOnceWithOrWithoutAReader) {
    const std::string path = dir.file("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    Json::Value root;
    root["a"] = 1;
    ::alarm(20);  // a store that waits for a reader ends the test here instead of hanging
    EXPECT_EQ(files.storeLocalCfg(path, root), -43);
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{
                               logLine(Logger::logError, saveLine(path, "open file", ENXIO))}));

    log.clear();
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(files.storeLocalCfg(path, root), -43);
    ::alarm(0);
    char byte = 0;
    EXPECT_LE(::read(reader, &byte, 1), 0);  // nothing was written into it
    ::close(reader);
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{
                               logLine(Logger::logError, saveLine(path, "open file", EINVAL))}));
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
}

TEST_F(FileMgrTest, StoreIntoASocketReturns43) {
    const std::string path = dir.file("socket");
    const int listening = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(listening, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    ASSERT_EQ(::bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfg(path, root), -43);
    ::close(listening);
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{
                               logLine(Logger::logError, saveLine(path, "open file", ENXIO))}));
}

TEST_F(FileMgrTest, DurableStoreLeavesAFifoInPlaceAndReturns43) {
    const std::string path = dir.file("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), -43);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], logLine(Logger::logError, saveLine(path, "open file", EINVAL)));
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
    EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{"fifo"});
}

TEST_F(FileMgrTest, DurableStoreKeepsThePermissionsOfTheReplacedFile) {
    const std::string path = dir.file("secret.json");
    writeFile(path, "{}");
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    Json::Value root;
    root["key"] = "value";
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), 0);
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(readFile(path), root.toStyledString());
}

TEST_F(FileMgrTest, DurableStoreCreatesANewFileWithTheUmaskApplied) {
    const mode_t previous = ::umask(022);
    Json::Value root;
    root["a"] = 1;
    const int shared = files.storeLocalCfgDurable(dir.file("shared.json"), root);
    ::umask(027);
    const int grouped = files.storeLocalCfgDurable(dir.file("grouped.json"), root);
    ::umask(previous);
    EXPECT_EQ(shared, 0);
    EXPECT_EQ(grouped, 0);
    EXPECT_EQ(modeOf(dir.file("shared.json")), 0644u);
    EXPECT_EQ(modeOf(dir.file("grouped.json")), 0640u);
}

TEST_F(FileMgrTest, WriteFailingHalfWayLeavesTheOldFileWhenDurableAndATruncatedOneWhenNot) {
    const std::string durable = dir.file("durable.json");
    const std::string plain = dir.file("plain.json");
    const std::string old = "{\n\t\"version\" : 1\n}\n";
    writeFile(durable, old);
    writeFile(plain, old);
    const std::string text = bigDocument().toStyledString();
    const rlim_t limit = 4096;

    const ChildOutcome kept = runWithFileSizeLimit(
        limit, log, [&] { return files.storeLocalCfgDurable(durable, bigDocument()); });
    EXPECT_EQ(kept.result, -41);
    ASSERT_EQ(kept.lines.size(), 1u);
    EXPECT_EQ(kept.lines[0], logLine(Logger::logError, saveLine(durable, "write file", EFBIG)));
    EXPECT_EQ(readFile(durable), old);
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"durable.json", "plain.json"}));

    const ChildOutcome truncated =
        runWithFileSizeLimit(limit, log, [&] { return files.storeLocalCfg(plain, bigDocument()); });
    EXPECT_EQ(truncated.result, -41);
    ASSERT_EQ(truncated.lines.size(), 1u);
    EXPECT_EQ(truncated.lines[0], logLine(Logger::logError, saveLine(plain, "write file", EFBIG)));
    const std::string left = readFile(plain);
    EXPECT_EQ(left.size(), limit);
    EXPECT_EQ(left, text.substr(0, limit));
    Json::Value root;
    EXPECT_EQ(files.loadLocalCfg(plain, root), -13);
}

TEST_F(FileMgrTest, DurableStoreWithinTheFileSizeLimitSucceeds) {
    const std::string path = dir.file("small.json");
    writeFile(path, "{}");
    Json::Value root;
    root["a"] = 1;
    const ChildOutcome outcome =
        runWithFileSizeLimit(4096, log, [&] { return files.storeLocalCfgDurable(path, root); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.lines.empty());
    EXPECT_EQ(readFile(path), root.toStyledString());
}

TEST(TestSupport, LogCaptureRestoresTheThresholdItFound) {
    const Logger::logDebugLevel_t outer = Logger::getThreshold();
    Logger::setThreshold(Logger::logError);
    {
        LogCapture capture;
        EXPECT_EQ(Logger::getThreshold(), Logger::logVerbose);
    }
    EXPECT_EQ(Logger::getThreshold(), Logger::logError);
    Logger::setThreshold(outer);
}

TEST(TestSupport, TempDirThatCannotBeMadeThrows) {
    const char* previous = std::getenv("TMPDIR");
    const std::string kept = previous != nullptr ? previous : "";
    ::setenv("TMPDIR", "/proc", 1);  // a folder where no one can make a folder
    EXPECT_THROW(TempDir(), std::runtime_error);
    if (previous != nullptr) {
        ::setenv("TMPDIR", kept.c_str(), 1);
    } else {
        ::unsetenv("TMPDIR");
    }
}

TEST_F(FileMgrTest, BothStoresAcceptAFileNameOf250Characters) {
    const std::string path = dir.file(std::string(245, 'n') + ".json");
    Json::Value root;
    root["long"] = true;
    EXPECT_EQ(files.storeLocalCfg(path, root), 0);
    writeFile(path, "{}");
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), 0);
    EXPECT_EQ(readFile(path), root.toStyledString());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{std::string(245, 'n') + ".json"});
}

TEST_F(FileMgrTest, DurableStoreThroughAChainOfLinksReplacesTheFileAndKeepsTheLinks) {
    ASSERT_TRUE(std::filesystem::create_directory(dir.file("real")));
    const std::string file = dir.file("real/config.json");
    writeFile(file, "{}");
    ASSERT_EQ(::symlink("real/config.json", dir.file("inner").c_str()), 0);
    ASSERT_EQ(::symlink("inner", dir.file("outer").c_str()), 0);
    Json::Value root;
    root["through"] = "links";
    EXPECT_EQ(files.storeLocalCfgDurable(dir.file("outer"), root), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(readFile(file), root.toStyledString());
    EXPECT_EQ(std::filesystem::read_symlink(dir.file("outer")).string(), "inner");
    EXPECT_EQ(std::filesystem::read_symlink(dir.file("inner")).string(), "real/config.json");
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"inner", "outer", "real"}));
    EXPECT_EQ(namesIn(dir.file("real")), std::vector<std::string>{"config.json"});
}

TEST_F(FileMgrTest, DurableStoreThroughADanglingLinkCreatesTheFileItNames) {
    ASSERT_EQ(::symlink(dir.file("made.json").c_str(), dir.file("link").c_str()), 0);
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(dir.file("link"), root), 0);
    EXPECT_EQ(readFile(dir.file("made.json")), root.toStyledString());
    EXPECT_EQ(std::filesystem::read_symlink(dir.file("link")).string(), dir.file("made.json"));
}

TEST_F(FileMgrTest, DurableStoreThroughALinkLoopReturns43WithEloop) {
    ASSERT_EQ(::symlink("b", dir.file("a").c_str()), 0);
    ASSERT_EQ(::symlink("a", dir.file("b").c_str()), 0);
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(dir.file("a"), root), -43);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0],
              logLine(Logger::logError, saveLine(dir.file("a"), "open file", ELOOP)));
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"a", "b"}));
}

// A link in a sticky folder that everyone may write to, as /tmp: the store follows it only
// where the kernel's protected_symlinks rule would.
class FileMgrLinkTest : public FileMgrTest {
protected:
    void SetUp() override {
        ASSERT_EQ(::mkdir(shared.c_str(), 0700), 0);
        ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
        writeFile(target, "{}");
        ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
        root["a"] = 1;
    }
    const std::string shared = dir.file("shared");
    const std::string target = dir.file("secret.json");
    const std::string link = shared + "/config.json";
    Json::Value root;
};

TEST_F(FileMgrLinkTest, DurableStoreFollowsItsOwnLinkInAStickyFolder) {
    EXPECT_EQ(files.storeLocalCfgDurable(link, root), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(readFile(target), root.toStyledString());
    EXPECT_EQ(namesIn(shared), std::vector<std::string>{"config.json"});
}

// The attack: another user plants a link in /tmp to a file of this process's user, and
// waits for the store to replace that file through it.
TEST_F(FileMgrLinkTest, DurableStoreRefusesAnotherUsersLinkInAStickyFolderWith43) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs a privileged process to make a link owned by someone else";
    }
    ASSERT_EQ(::lchown(link.c_str(), 65534, 65534), 0);
    EXPECT_EQ(files.storeLocalCfgDurable(link, root), -43);
    EXPECT_EQ(log.lines(), (std::vector<LogCapture::Line>{
                               logLine(Logger::logError, saveLine(link, "open file", EACCES))}));
    EXPECT_EQ(readFile(target), "{}");
    EXPECT_EQ(namesIn(shared), std::vector<std::string>{"config.json"});
    struct stat info {};
    ASSERT_EQ(::lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));

    // Not sticky, or not writable by everyone: the rule does not apply.
    for (const mode_t mode : {0777, 01775}) {
        log.clear();
        writeFile(target, "{}");
        ASSERT_EQ(::chmod(shared.c_str(), mode), 0);
        EXPECT_EQ(files.storeLocalCfgDurable(link, root), 0) << std::oct << mode;
        EXPECT_TRUE(log.lines().empty());
        EXPECT_EQ(readFile(target), root.toStyledString());
    }
}

TEST_F(FileMgrLinkTest, DurableStoreFollowsALinkOfTheStickyFoldersOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs a privileged process to give the folder and the link away";
    }
    ASSERT_EQ(::chown(shared.c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    ASSERT_EQ(::lchown(link.c_str(), 65534, 65534), 0);
    EXPECT_EQ(files.storeLocalCfgDurable(link, root), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(readFile(target), root.toStyledString());
}

TEST_F(FileMgrTest, DurableStoreKeepsOwnerGroupAndSetIdBits) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only a privileged process may give a file to another owner";
    }
    const std::string path = dir.file("owned.json");
    writeFile(path, "{}");
    ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(path.c_str(), 04750), 0);
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), 0);
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 65534u);
    EXPECT_EQ(info.st_gid, 65534u);
    EXPECT_EQ(info.st_mode & 07777, 04750u);
    EXPECT_EQ(readFile(path), root.toStyledString());
}

TEST_F(FileMgrTest, DurableStoreByAnotherUserGoesOnWithItsOwnOwnership) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs a privileged process to set up a file owned by someone else";
    }
    const std::string path = dir.file("theirs.json");
    writeFile(path, "{}");
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chown(dir.path().c_str(), 65534, 65534), 0);
    Json::Value root;
    root["a"] = 1;
    // The child turns into nobody, who may write in the folder but not give files to root.
    const ChildOutcome outcome = runWithFileSizeLimit(RLIM_INFINITY, log, [&] {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0) {
            return 999;
        }
        return files.storeLocalCfgDurable(path, root);
    });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.lines.empty());
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 65534u);
    EXPECT_EQ(info.st_mode & 07777, 0666u);
    EXPECT_EQ(readFile(path), root.toStyledString());
}

TEST_F(FileMgrTest, DurableStoreKeepsExtendedAttributes) {
    const std::string path = dir.file("labelled.json");
    writeFile(path, "{}");
    const std::string label = "kept-label";
    if (::setxattr(path.c_str(), "user.zelct", label.data(), label.size(), 0) != 0) {
        GTEST_SKIP() << "the temporary folder keeps no user attributes: " << std::strerror(errno);
    }
    Json::Value root;
    root["a"] = 1;
    EXPECT_EQ(files.storeLocalCfgDurable(path, root), 0);
    char value[64] = {};
    const ssize_t size = ::getxattr(path.c_str(), "user.zelct", value, sizeof value);
    ASSERT_EQ(size, static_cast<ssize_t>(label.size()));
    EXPECT_EQ(std::string(value, static_cast<size_t>(size)), label);
    EXPECT_EQ(readFile(path), root.toStyledString());
}

// Inputs that broke JSON readers before, kept with the fuzz corpus: each loads with its
// listed result, nothing is thrown, and a failed load leaves root as it was.
TEST_F(FileMgrTest, RegressionCorpusLoadsWithItsListedResults) {
    const std::string folder = ZELCT_FILEMGR_REGRESSION_DIR;
    std::map<std::string, int> expected;
    std::istringstream manifest(readFile(folder + "/expected.txt"));
    std::string line;
    while (std::getline(manifest, line)) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::string::size_type space = line.find(' ');
        expected[line.substr(0, space)] = std::stoi(line.substr(space + 1));
    }
    ASSERT_GE(expected.size(), 20u);
    std::vector<std::string> files_in_folder = namesIn(folder);
    files_in_folder.erase(
        std::remove(files_in_folder.begin(), files_in_folder.end(), "expected.txt"),
        files_in_folder.end());
    std::vector<std::string> listed;
    for (const auto& entry : expected) {
        listed.push_back(entry.first);
    }
    EXPECT_EQ(files_in_folder, listed) << "every file of the corpus has its line in expected.txt";

    const Json::Value sentinel = parseJson(R"({"kept": [1, {"two": 2}]})");
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        Json::Value root = sentinel;
        int result = 1;
        EXPECT_NO_THROW(result = files.loadLocalCfg(folder + "/" + entry.first, root));
        EXPECT_EQ(result, entry.second);
        if (result != 0) {
            EXPECT_EQ(root, sentinel);
        } else {
            EXPECT_NE(root, sentinel);
        }
    }
}
