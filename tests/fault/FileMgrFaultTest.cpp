// The file stores and the load under injected faults: every call of open, write, read,
// fsync, close and rename they make (and the folder's open and fsync) is made to fail in
// turn, in a child process with the fault-injection library preloaded, and the file and the
// folder are checked afterwards. Then a child that replaces a file again and again is killed
// at random moments.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "FileMgr.h"
#include "FileUtil.h"
#include "LogCapture.h"
#include "TempDir.h"

extern char** environ;

#ifndef ZELCT_FAULT_EMULATOR
#define ZELCT_FAULT_EMULATOR ""
#endif

namespace {

const char* const kLoadSignature = "int FileMgr::loadLocalCfg(const string&, Json::Value&)";

// The errors a store meets on a full disk, over a quota and on a failing disk.
const int kFailures[] = {ENOSPC, EDQUOT, EIO};

struct Outcome {
    bool ran = false;  // the child reported; else report holds what went wrong
    int result = 0;
    std::vector<std::string> calls;
    std::string trail;
    std::string root;
    std::vector<LogCapture::Line> lines;
    std::string report;
};

// The environment of this process with the additions put in front, so they win.
std::vector<std::string> environmentWith(const std::vector<std::string>& additions) {
    std::vector<std::string> variables = additions;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string entry = *variable;
        const std::string name = entry.substr(0, entry.find('=') + 1);
        const bool replaced = std::any_of(additions.begin(), additions.end(), [&](const auto& a) {
            return a.compare(0, name.size(), name) == 0;
        });
        if (!replaced) {
            variables.push_back(entry);
        }
    }
    return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) {
        pointers.push_back(&text[0]);
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Starts the child with the fault-injection library preloaded; its stdout comes back through
// the descriptor in output.
pid_t startChild(std::vector<std::string> arguments, const std::vector<std::string>& faults,
                 int& output) {
    std::vector<std::string> additions = faults;
    const std::string preload = std::string("LD_PRELOAD=") + ZELCT_FAULT_LIBRARY;
    const std::string emulator = ZELCT_FAULT_EMULATOR;
    if (emulator.empty()) {
        additions.push_back(preload);
    } else {
        // The emulator itself is a program of the build machine: only its guest gets the
        // library.
        std::istringstream words(emulator);
        std::vector<std::string> command{std::istream_iterator<std::string>(words), {}};
        command.insert(command.end(), {"-E", preload, ZELCT_FAULT_CHILD});
        arguments.insert(arguments.begin(), command.begin(), command.end());
    }
    // AddressSanitizer insists on being loaded first; the library calls on to it anyway.
    const char* asan = std::getenv("ASAN_OPTIONS");
    additions.push_back(std::string("ASAN_OPTIONS=") + (asan != nullptr ? asan : "") +
                        ":verify_asan_link_order=0");
    std::vector<std::string> environment = environmentWith(additions);
    if (emulator.empty()) {
        arguments.insert(arguments.begin(), ZELCT_FAULT_CHILD);
    }
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0) {
        return -1;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(channel[1], STDOUT_FILENO);
        ::execvpe(arguments[0].c_str(), pointersTo(arguments).data(),
                  pointersTo(environment).data());
        ::_exit(127);
    }
    ::close(channel[1]);
    output = channel[0];
    return child;
}

std::string readAll(int fd) {
    std::string text;
    char chunk[4096];
    ssize_t got;
    while ((got = ::read(fd, chunk, sizeof chunk)) > 0 || (got < 0 && errno == EINTR)) {
        text.append(chunk, static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    return text;
}

Outcome runChild(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& faults = {}) {
    Outcome outcome;
    int output = -1;
    const pid_t child = startChild(arguments, faults, output);
    if (child < 0) {
        outcome.report = std::string("cannot start the child: ") + std::strerror(errno);
        return outcome;
    }
    outcome.report = readAll(output);
    ::close(output);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        outcome.report += "\nchild status " + std::to_string(status);
        return outcome;
    }
    std::istringstream lines(outcome.report);
    std::string line;
    while (std::getline(lines, line)) {
        const std::string::size_type space = line.find(' ');
        const std::string word = line.substr(0, space);
        const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
        if (word == "result") {
            outcome.result = std::stoi(rest);
            outcome.ran = true;
        } else if (word == "calls") {
            std::istringstream kinds(rest);
            std::string kind;
            while (kinds >> kind) {
                outcome.calls.push_back(kind);
            }
        } else if (word == "trail") {
            outcome.trail = rest;
        } else if (word == "root") {
            outcome.root = rest;
        } else if (word == "log") {
            const std::string::size_type split = rest.find(' ');
            outcome.lines.emplace_back(
                static_cast<Logger::logDebugLevel_t>(std::stoi(rest.substr(0, split))),
                rest.substr(split + 1));
        }
    }
    return outcome;
}

std::vector<std::string> fault(const std::string& call, int nth, const std::string& error) {
    return {"ZELCT_FAULT_CALL=" + call, "ZELCT_FAULT_NTH=" + std::to_string(nth),
            "ZELCT_FAULT_ERRNO=" + error};
}

// The temporaries of the durable store: ".<8 letters or digits>.tmp".
bool isTemporary(const std::string& name) {
    return name.size() == 13 && name[0] == '.' && name.compare(9, 4, ".tmp") == 0 &&
           std::all_of(name.begin() + 1, name.begin() + 9, [](char c) { return std::isalnum(c); });
}

// The n-th call (from 1) of the kind in the sequence, as a position in it.
size_t positionOf(const std::vector<std::string>& calls, const std::string& kind, int n) {
    size_t position = 0;
    for (int seen = 0; position < calls.size(); ++position) {
        if (calls[position] == kind && ++seen == n) {
            break;
        }
    }
    return position;
}

mode_t modeOf(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

// A document whose styled text is some kilobytes, so that a short write leaves a real rest.
Json::Value newDocument() {
    Json::Value root;
    root["serial-number"] = "ZEL-0042";
    for (int i = 0; i < 200; ++i) {
        root["eth"][i]["name"] = "eth" + std::to_string(i);
    }
    return root;
}

const std::string kOldText = "{\n\t\"serial-number\" : \"old\"\n}\n";

std::string compact(const Json::Value& root) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, root);
}

}  // namespace

class FileMgrFaultTest : public testing::Test {
protected:
    void SetUp() override {
        writeFile(path, kOldText);
        const Outcome probe = runChild({"durable", path, "{}"});
        if (!probe.ran) {
            FAIL() << "the fault-injection child did not run: " << probe.report;
        }
        writeFile(path, kOldText);
    }

    // Stores the new document in a child with the fault, and checks what every failure
    // must leave: no temporary beside the file.
    Outcome store(const std::string& how, const std::vector<std::string>& faults = {}) {
        const Outcome outcome = runChild({how, path, compact(newDocument())}, faults);
        EXPECT_TRUE(outcome.ran) << outcome.report;
        EXPECT_EQ(namesIn(dir.path()), std::vector<std::string>{"config.json"});
        return outcome;
    }

    TempDir dir;
    const std::string path = dir.file("config.json");
    const std::string newText = newDocument().toStyledString();
};

TEST_F(FileMgrFaultTest, DurableStoreMakesTheseCallsInThisOrder) {
    const Outcome clean = store("durable");
    EXPECT_EQ(clean.result, 0);
    EXPECT_TRUE(clean.lines.empty());
    EXPECT_EQ(clean.calls, (std::vector<std::string>{"open", "write", "fsync", "close", "rename",
                                                     "diropen", "dirfsync", "close"}));
    EXPECT_EQ(readFile(path), newText);
}

// Before the rename a failure leaves the old file; at the folder's open or fsync the new
// text is in place but not known to be on disk; the folder's close changes nothing.
TEST_F(FileMgrFaultTest, EveryFailingCallOfTheDurableStore) {
    const std::vector<std::string> calls = store("durable").calls;
    ASSERT_FALSE(calls.empty());
    const size_t renamed = positionOf(calls, "rename", 1);
    ASSERT_LT(renamed, calls.size());
    std::map<std::string, int> seen;
    for (const std::string& kind : calls) {
        const int nth = ++seen[kind];
        const bool afterRename = positionOf(calls, kind, nth) > renamed;
        for (const int error : kFailures) {
            SCOPED_TRACE(kind + " #" + std::to_string(nth) + " errno " + std::to_string(error));
            writeFile(path, kOldText);
            const Outcome outcome = store("durable", fault(kind, nth, std::to_string(error)));
            if (afterRename && kind == "close") {
                EXPECT_EQ(outcome.result, 0);
                EXPECT_TRUE(outcome.lines.empty());
                EXPECT_EQ(readFile(path), newText);
                continue;
            }
            const bool creating = kind == "open";
            EXPECT_EQ(outcome.result, creating ? -43 : -41);
            EXPECT_EQ(outcome.lines,
                      (std::vector<LogCapture::Line>{
                          logLine(Logger::logError,
                                  saveLine(path, creating ? "open file" : "write file", error))}));
            EXPECT_EQ(readFile(path), afterRename ? newText : kOldText);
            // The failed call is never made again: an fsync that failed with EIO and then
            // succeeded would claim text on disk that the kernel may have dropped.
            EXPECT_EQ(std::count(outcome.calls.begin(), outcome.calls.end(), kind), nth);
        }
    }
}

// A file system that cannot sync a folder (EINVAL) has nothing more to make durable; the
// file's own fsync failing so is a failed write.
TEST_F(FileMgrFaultTest, DurableStoreTakesAFolderThatCannotBeSyncedAsSynced) {
    Outcome outcome = store("durable", fault("dirfsync", 1, std::to_string(EINVAL)));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.lines.empty());
    EXPECT_EQ(readFile(path), newText);
    EXPECT_EQ(std::count(outcome.calls.begin(), outcome.calls.end(), "dirfsync"), 1);

    writeFile(path, kOldText);
    outcome = store("durable", fault("fsync", 1, std::to_string(EINVAL)));
    EXPECT_EQ(outcome.result, -41);
    EXPECT_EQ(outcome.lines, (std::vector<LogCapture::Line>{
                                 logLine(Logger::logError, saveLine(path, "write file", EINVAL))}));
    EXPECT_EQ(readFile(path), kOldText);
}

// The temporary is nobody else's to open from its first moment: created 0600, given the old
// file's owner and mode, and only then written. Created with a wider mode, a watcher of the
// folder could open it at once and read the text written later.
TEST_F(FileMgrFaultTest, DurableStoreMakesItsTemporaryPrivateUntilItHasTheOldModeThenWrites) {
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    Outcome outcome = store("durable");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.trail.substr(0, outcome.trail.find(" write") + 6),
              "create 0600 fchown fchmod 0640 write");
    EXPECT_EQ(modeOf(path), 0640u);

    // A new file: the mode any new file gets, still before the first write.
    ASSERT_EQ(::unlink(path.c_str()), 0);
    const mode_t mask = ::umask(022);
    ::umask(mask);
    char expected[64];
    std::snprintf(expected, sizeof expected, "create 0600 fchmod %04o write", 0666 & ~mask);
    outcome = store("durable");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.trail.substr(0, outcome.trail.find(" write") + 6), expected);
    EXPECT_EQ(modeOf(path), 0666u & ~mask);
}

TEST_F(FileMgrFaultTest, EveryInterruptedCallOfTheDurableStoreIsRecovered) {
    const std::vector<std::string> calls = store("durable").calls;
    ASSERT_FALSE(calls.empty());
    std::map<std::string, int> seen;
    for (const std::string& kind : calls) {
        const int nth = ++seen[kind];
        SCOPED_TRACE(kind + " #" + std::to_string(nth));
        writeFile(path, kOldText);
        const Outcome outcome = store("durable", fault(kind, nth, std::to_string(EINTR)));
        EXPECT_EQ(outcome.result, 0);
        EXPECT_TRUE(outcome.lines.empty());
        EXPECT_EQ(readFile(path), newText);
        // The interrupted call was made again (a close is not: it has closed).
        EXPECT_EQ(outcome.calls.size(), calls.size() + (kind == "close" ? 0 : 1));
    }
}

TEST_F(FileMgrFaultTest, ShortWritesOfTheDurableStoreAreContinued) {
    const Outcome outcome = store("durable", fault("write", 1, "short"));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.lines.empty());
    EXPECT_EQ(readFile(path), newText);
    EXPECT_EQ(std::count(outcome.calls.begin(), outcome.calls.end(), "write"), 2);
}

// The plain store writes in place: a failed write leaves what reached the file, which is
// some beginning of the new text, and no retry happens on open.
TEST_F(FileMgrFaultTest, EveryFailingCallOfThePlainStore) {
    const Outcome clean = store("plain");
    EXPECT_EQ(clean.result, 0);
    EXPECT_EQ(clean.calls, (std::vector<std::string>{"open", "write", "close"}));
    for (const int error : kFailures) {
        SCOPED_TRACE("errno " + std::to_string(error));
        writeFile(path, kOldText);
        Outcome outcome = store("plain", fault("open", 1, std::to_string(error)));
        EXPECT_EQ(outcome.result, -43);
        EXPECT_EQ(outcome.lines, (std::vector<LogCapture::Line>{logLine(
                                     Logger::logError, saveLine(path, "open file", error))}));
        EXPECT_EQ(readFile(path), kOldText);

        outcome = store("plain", fault("write", 1, std::to_string(error)));
        EXPECT_EQ(outcome.result, -41);
        EXPECT_EQ(outcome.lines, (std::vector<LogCapture::Line>{logLine(
                                     Logger::logError, saveLine(path, "write file", error))}));
        const std::string left = readFile(path);
        EXPECT_LT(left.size(), newText.size());
        EXPECT_EQ(left, newText.substr(0, left.size()));
    }
}

TEST_F(FileMgrFaultTest, PlainStoreRecoversInterruptedAndShortWritesButNotAnInterruptedOpen) {
    for (const std::string& error : {std::to_string(EINTR), std::string("short")}) {
        SCOPED_TRACE(error);
        writeFile(path, kOldText);
        const Outcome outcome = store("plain", fault("write", 1, error));
        EXPECT_EQ(outcome.result, 0);
        EXPECT_TRUE(outcome.lines.empty());
        EXPECT_EQ(readFile(path), newText);
    }
    writeFile(path, kOldText);
    const Outcome outcome = store("plain", fault("open", 1, std::to_string(EINTR)));
    EXPECT_EQ(outcome.result, -43);
    EXPECT_EQ(outcome.lines, (std::vector<LogCapture::Line>{
                                 logLine(Logger::logError, saveLine(path, "open file", EINTR))}));
    EXPECT_EQ(readFile(path), kOldText);
}

TEST_F(FileMgrFaultTest, LoadUnderFaults) {
    writeFile(path, newText);
    const std::string parsed = compact(newDocument());
    const std::string before = R"({"before":"load"})";
    const std::string checkLine =
        std::string("ERR::CHK(") + kLoadSignature + ")::55 Error Code -17";
    const std::string sizeLine = "VBS::path '" + path + "' size loaded '";

    Outcome outcome = runChild({"load", path});
    ASSERT_TRUE(outcome.ran) << outcome.report;
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.calls, (std::vector<std::string>{"open", "read", "close"}));
    EXPECT_EQ(outcome.root, parsed);

    for (const int error : kFailures) {
        SCOPED_TRACE("errno " + std::to_string(error));
        outcome = runChild({"load", path}, fault("open", 1, std::to_string(error)));
        EXPECT_EQ(outcome.result, -17);
        EXPECT_EQ(outcome.root, before);
        EXPECT_EQ(outcome.lines,
                  (std::vector<LogCapture::Line>{
                      logLine(Logger::logError, "ERR::path '" + path + "' error opening file"),
                      logLine(Logger::logError, checkLine)}));

        // A failed read is logged and the load goes on with nothing, which does not parse.
        outcome = runChild({"load", path}, fault("read", 1, std::to_string(error)));
        EXPECT_EQ(outcome.result, -13);
        EXPECT_EQ(outcome.root, before);
        ASSERT_EQ(outcome.lines.size(), 4u);
        EXPECT_EQ(outcome.lines[0], logLine(Logger::logError, "ERR::fread failed"));
        EXPECT_EQ(outcome.lines[1], logLine(Logger::logVerbose, sizeLine + "0'"));
        EXPECT_EQ(outcome.lines[2], logLine(Logger::logError, "ERR::Error parsing Json ''"));

        outcome = runChild({"load", path}, fault("close", 1, std::to_string(error)));
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.root, parsed);
    }
    for (const std::string& error : {std::to_string(EINTR), std::string("short")}) {
        SCOPED_TRACE(error);
        outcome = runChild({"load", path}, fault("read", 1, error));
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.root, parsed);
        EXPECT_EQ(outcome.lines,
                  (std::vector<LogCapture::Line>{logLine(
                      Logger::logVerbose, sizeLine + std::to_string(newText.size()) + "'")}));
    }
}

// A child replaces the file with one document and then the other, again and again, and is
// killed at a chosen moment of that, hundreds of times: after a given number of finished
// stores, at a sweep of offsets over the time one store takes in this very run. The file is
// always one of the two documents, whole. A kill can interrupt one store between creating its
// temporary and renaming it, so each kill may leave at most one temporary (removed before
// the next run), and nothing else. The kills go on until both documents have been left
// behind and kills have landed before and after a rename, within a bound.
TEST_F(FileMgrFaultTest, KilledDurableStoreLeavesTheOldOrTheNewDocumentWhole) {
    // In memory where the system has it: a kill tests the process, not the disk, and
    // hundreds of runs of fsync on a real disk would take minutes.
    const bool inMemory = std::filesystem::is_directory("/dev/shm");
    TempDir crash(inMemory ? "/dev/shm" : std::filesystem::temp_directory_path().string());
    Json::Value first = newDocument();
    Json::Value second = newDocument();
    second["serial-number"] = "ZEL-0043";
    second["eth"].resize(100);
    writeFile(crash.file("a.json"), first.toStyledString());
    writeFile(crash.file("b.json"), second.toStyledString());
    writeFile(crash.file("config.json"), second.toStyledString());

    const int runs = 400;
    int output = -1;
    const pid_t conductor = startChild({"crash", crash.path(), std::to_string(runs)}, {}, output);
    ASSERT_GT(conductor, 0);
    const std::string report = readAll(output);
    ::close(output);
    int status = 0;
    ASSERT_EQ(::waitpid(conductor, &status, 0), conductor);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status << "\n" << report;

    std::istringstream lines(report);
    std::string line;
    int run = 0;
    std::map<std::string, int> left;
    int temporaries = 0;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        int number = -1;
        std::string which;
        std::string side;
        fields >> number >> which >> side;
        EXPECT_EQ(number, run);
        EXPECT_TRUE(which == "a" || which == "b") << line;
        EXPECT_TRUE(side == "before" || side == "after") << line;
        int temporary = 0;
        std::string name;
        while (fields >> name) {
            EXPECT_TRUE(isTemporary(name)) << line;
            ++temporary;
        }
        EXPECT_LE(temporary, 1) << line;
        ++left[which];
        ++left[side];
        temporaries += temporary;
        ++run;
    }
    EXPECT_GE(run, runs);
    EXPECT_LE(run, 10 * runs);
    const std::string tally = "after " + std::to_string(run) + " kills: a left " +
                              std::to_string(left["a"]) + " times, b " + std::to_string(left["b"]) +
                              ", kills before a rename " + std::to_string(left["before"]) +
                              ", after one " + std::to_string(left["after"]);
    EXPECT_TRUE(left["a"] > 0 && left["b"] > 0)
        << "the kills never left one of the two documents behind; " << tally;
    EXPECT_TRUE(left["before"] > 0 && left["after"] > 0)
        << "the kills never landed on one side of a rename; " << tally;
    RecordProperty("kills", run);
    RecordProperty("kills_before_a_rename", left["before"]);
    RecordProperty("temporaries_left_by_kills", temporaries);
}
