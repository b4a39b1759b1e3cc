// The process in which the fault tests run a file store: the tests start it with the
// fault-injection library preloaded, and it reports on stdout what the store returned and
// logged and which calls it made.
//
//   FileMgrFaultChild durable <path> <json>    storeLocalCfgDurable
//   FileMgrFaultChild plain <path> <json>      storeLocalCfg
//   FileMgrFaultChild load <path>              loadLocalCfg
//   FileMgrFaultChild crash <folder> <runs>    the crash test's runs (see crashRuns)
//
// Report: "result <code>", "calls <kind> <kind> ..." (the calls in order), "trail ..." (the
// modes of created files, fchown, fchmod and writes, in order), for a load
// "root <the value, compact>", then one "log <level> <text>" line per log line.
#include <dlfcn.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "FileMgr.h"
#include "Logger.h"

namespace {

using Switch = void (*)();

Switch faultSwitch(const char* name) {
    return reinterpret_cast<Switch>(::dlsym(RTLD_DEFAULT, name));
}

Json::Value parse(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::Value root;
    std::string errors;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
        std::cerr << "bad document: " << errors << "\n";
        std::exit(2);
    }
    return root;
}

// Stores the two documents over the path in turn, forever, documents[0] first; writes a
// byte to progress after each store has renamed its file into place.
[[noreturn]] void replaceForever(const std::string& path, const Json::Value (&documents)[2],
                                 int progress) {
    FileMgr files;
    const char done = 'd';
    for (unsigned round = 0;; ++round) {
        files.storeLocalCfgDurable(path, documents[round % 2]);
        if (::write(progress, &done, 1) != 1) {
            ::_exit(2);
        }
    }
}

using Clock = std::chrono::steady_clock;

// Waits for the child's next finished store; false when the child is gone.
bool nextStore(int progress) {
    char done = 0;
    return ::read(progress, &done, 1) == 1;
}

// Busy-waits: a sleep of a few microseconds lasts as long as the timer slack and the
// scheduler please, which is longer than a whole store on a fast machine.
void spinUntil(Clock::time_point moment) {
    while (Clock::now() < moment) {
    }
}

// Where a kill lands: after the child finished `stores` stores, `offset` into the next one.
// Both parities of `stores` leave either document when the kill lands before the next
// rename, and the other one after it; the offsets sweep the whole span of one store as the
// child's own last store measured it, so kills land on both sides of a rename whatever the
// speed of the machine, the emulator or a sanitizer.
struct KillPlan {
    int stores;
    int step;  // of kSteps over the span of one store
};
constexpr int kSteps = 16;

KillPlan planFor(int run) {
    return {2 + run % 2, (run / 2) % kSteps};
}

// Forks a child that replaces path for ever and kills it as planned. Returns the kind of
// document store `plan.stores` wrote (0 or 1), or -1 when the child ended by itself.
int killOne(const std::string& path, const Json::Value (&documents)[2], KillPlan plan) {
    int progress[2];
    if (::pipe(progress) != 0) {
        return -1;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(progress[0]);
        replaceForever(path, documents, progress[1]);
    }
    ::close(progress[1]);
    bool alive = true;
    Clock::time_point last = Clock::now();
    Clock::duration span{};
    for (int store = 0; store < plan.stores && alive; ++store) {
        alive = nextStore(progress[0]);
        const Clock::time_point now = Clock::now();
        span = now - last;
        last = now;
    }
    if (alive) {
        spinUntil(last + span * plan.step / kSteps);
    }
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(progress[0]);
    return alive ? (plan.stores - 1) % 2 : -1;
}

// What the kill left at path: "a", "b" or "torn".
const char* leftBehind(FileMgr& files, const std::string& path, const std::string (&texts)[2]) {
    std::string left;
    if (files.loadFileContent(path, left) != 0) {
        return "torn";
    }
    return left == texts[0] ? "a" : left == texts[1] ? "b" : "torn";
}

// Removes and names everything in the folder but the three documents: what a kill left.
std::string removeOthers(const std::string& folder) {
    std::string others;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name != "a.json" && name != "b.json" && name != "config.json") {
            others += " " + name;
            std::filesystem::remove(entry.path());
        }
    }
    return others;
}

// The crash test's runs, each a forked child killed while it replaces folder/config.json
// with a.json and b.json in turn. After each kill one line tells what was left:
// "<run> <a|b|torn> <before|after> <other names in the folder>", where before means the
// file still held what the child's last finished store wrote, so the kill landed before the
// next rename; the other names are removed before the next run. At least `runs` kills, and
// more until both documents have been left behind and kills landed on both sides of a
// rename, up to ten times as many. Forked here, so that a suite under valgrind still kills
// children that run at full speed.
int crashRuns(const std::string& folder, int runs) {
    FileMgr files;
    std::string texts[2];
    Json::Value documents[2];
    for (int i = 0; i < 2; ++i) {
        if (files.loadFileContent(folder + (i == 0 ? "/a.json" : "/b.json"), texts[i]) != 0) {
            return 2;
        }
        documents[i] = parse(texts[i]);
    }
    const std::string path = folder + "/config.json";
    std::set<std::string> seen;
    const auto covered = [&seen] {
        return seen.count("a") + seen.count("b") + seen.count("before") + seen.count("after") == 4;
    };
    for (int run = 0; run < 10 * runs; ++run) {
        if (run >= runs && covered()) {
            break;
        }
        const int wrote = killOne(path, documents, planFor(run));
        const std::string which = leftBehind(files, path, texts);
        const std::string side = wrote < 0                           ? "none"
                                 : which == (wrote == 0 ? "a" : "b") ? "before"
                                                                     : "after";
        seen.insert(which);
        seen.insert(side);
        std::cout << run << " " << which << " " << side << removeOthers(folder) << "\n";
    }
    std::cout << std::flush;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: FileMgrFaultChild durable|plain|load|crash <path> ...\n";
        return 2;
    }
    const std::string operation = argv[1];
    const std::string path = argv[2];
    Logger::setThreshold(Logger::logVerbose);
    if (operation == "crash" && argc == 4) {
        Logger::setSink([](Logger::logDebugLevel_t, const std::string&) {});
        return crashRuns(path, std::stoi(argv[3]));
    }

    std::vector<std::pair<int, std::string>> lines;
    Logger::setSink([&lines](Logger::logDebugLevel_t level, const std::string& text) {
        lines.emplace_back(level, text);
    });
    const Switch arm = faultSwitch("zelct_fault_arm");
    const Switch disarm = faultSwitch("zelct_fault_disarm");
    using Text = const char* (*)();
    const auto sequence = reinterpret_cast<Text>(::dlsym(RTLD_DEFAULT, "zelct_fault_sequence"));
    const auto trail = reinterpret_cast<Text>(::dlsym(RTLD_DEFAULT, "zelct_fault_trail"));
    if (arm == nullptr || disarm == nullptr || sequence == nullptr || trail == nullptr) {
        std::cout << "no fault injection loaded\n";
        return 3;
    }
    const Json::Value document = argc > 3 ? parse(argv[3]) : Json::Value();
    FileMgr files;
    Json::Value loaded = parse(R"({"before": "load"})");

    arm();
    int result = 12345;
    if (operation == "durable") {
        result = files.storeLocalCfgDurable(path, document);
    } else if (operation == "plain") {
        result = files.storeLocalCfg(path, document);
    } else if (operation == "load") {
        result = files.loadLocalCfg(path, loaded);
    }
    disarm();

    std::string report =
        "result " + std::to_string(result) + "\ncalls " + sequence() + "\ntrail " + trail() + "\n";
    if (operation == "load") {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        report += "root " + Json::writeString(writer, loaded) + "\n";
    }
    for (const auto& line : lines) {
        report += "log " + std::to_string(line.first) + " " + line.second + "\n";
    }
    std::cout << report << std::flush;
    return 0;
}
