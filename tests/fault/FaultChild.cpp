// The process in which the fault tests run a file store: the tests start it with the
// fault-injection library preloaded, and it reports on stdout what the store returned and
// logged and which calls it made.
//
//   FileMgrFaultChild durable <path> <json>    storeLocalCfgDurable
//   FileMgrFaultChild plain <path> <json>      storeLocalCfg
//   FileMgrFaultChild load <path>              loadLocalCfg
//   FileMgrFaultChild crash <folder> <runs>    the crash test's runs (see crashRuns)
//
// Report: "result <code>", "calls <kind> <kind> ..." (the calls in order), for a load
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
#include <random>
#include <string>
#include <thread>
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

// Stores the two documents over the path in turn, forever; tells the parent through ready
// when it has begun.
[[noreturn]] void replaceForever(const std::string& path, const Json::Value (&documents)[2],
                                 int ready) {
    FileMgr files;
    const char go = 'g';
    if (::write(ready, &go, 1) != 1) {
        ::_exit(2);
    }
    for (unsigned round = 0;; ++round) {
        files.storeLocalCfgDurable(path, documents[round % 2]);
    }
}

// The crash test's runs, each a forked child killed at a random moment while it replaces
// folder/config.json with a.json and b.json in turn. After each kill one line tells what
// was left: "<run> <a|b|torn> <other names in the folder>"; the other names are removed
// before the next run. Forked here, so that a suite under valgrind still kills children
// that run at full speed.
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
    // How long one store takes here, so the kills spread over whole stores whatever the
    // speed of the machine, the disk or a sanitizer.
    const auto start = std::chrono::steady_clock::now();
    for (int round = 0; round < 10; ++round) {
        files.storeLocalCfgDurable(path, documents[1]);
    }
    const long perStore = std::max<long>(10, std::chrono::duration_cast<std::chrono::microseconds>(
                                                 std::chrono::steady_clock::now() - start)
                                                     .count() /
                                                 10);
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<long> moment(0, 2 * perStore);

    for (int run = 0; run < runs; ++run) {
        int ready[2];
        if (::pipe(ready) != 0) {
            return 2;
        }
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(ready[0]);
            replaceForever(path, documents, ready[1]);
        }
        ::close(ready[1]);
        char go = 0;
        const bool started = ::read(ready[0], &go, 1) == 1;
        ::close(ready[0]);
        if (started) {
            std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        }
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);

        std::string left;
        const bool loaded = files.loadFileContent(path, left) == 0;
        const char* which = !loaded            ? "torn"
                            : left == texts[0] ? "a"
                            : left == texts[1] ? "b"
                                               : "torn";
        // Anything else in the folder is what the kill left; the test judges it.
        std::string others;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            if (name != "a.json" && name != "b.json" && name != "config.json") {
                others += " " + name;
                std::filesystem::remove(entry.path());
            }
        }
        std::cout << run << " " << which << others << "\n";
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
    const auto sequence =
        reinterpret_cast<const char* (*)()>(::dlsym(RTLD_DEFAULT, "zelct_fault_sequence"));
    if (arm == nullptr || disarm == nullptr || sequence == nullptr) {
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

    std::string report = "result " + std::to_string(result) + "\ncalls " + sequence() + "\n";
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
