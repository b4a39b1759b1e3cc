// The process in which the fault tests run a file store: the tests start it with the
// fault-injection library preloaded, and it reports on stdout what the store returned and
// logged and which calls it made.
//
//   FileMgrFaultChild durable <path> <json>    storeLocalCfgDurable
//   FileMgrFaultChild plain <path> <json>      storeLocalCfg
//   FileMgrFaultChild load <path>              loadLocalCfg
//   FileMgrFaultChild replace <path> <file-a> <file-b>
//       stores the documents of the two files over the path in turn, forever, after
//       writing "ready <microseconds one store takes>" (the crash test kills it)
//
// Report: "result <code>", "calls <kind> <kind> ..." (the calls in order), then one
// "log <level> <text>" line per log line.
#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
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

int replaceForever(const std::string& path, const std::string& first, const std::string& second) {
    FileMgr files;
    Json::Value documents[2];
    for (int i = 0; i < 2; ++i) {
        std::string text;
        if (files.loadFileContent(i == 0 ? first : second, text) != 0) {
            return 2;
        }
        documents[i] = parse(text);
    }
    // Ten stores measure how long one takes here, so the test can spread its kills over
    // whole stores whatever the speed of the machine, the disk or a sanitizer.
    const auto start = std::chrono::steady_clock::now();
    for (int round = 0; round < 10; ++round) {
        files.storeLocalCfgDurable(path, documents[1]);
    }
    const auto spent = std::chrono::steady_clock::now() - start;
    std::cout << "ready "
              << std::chrono::duration_cast<std::chrono::microseconds>(spent).count() / 10
              << std::endl;
    for (unsigned round = 0;; ++round) {
        files.storeLocalCfgDurable(path, documents[round % 2]);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: FileMgrFaultChild durable|plain|load|replace <path> ...\n";
        return 2;
    }
    const std::string operation = argv[1];
    const std::string path = argv[2];
    Logger::setThreshold(Logger::logVerbose);
    if (operation == "replace" && argc == 5) {
        Logger::setSink([](Logger::logDebugLevel_t, const std::string&) {});
        return replaceForever(path, argv[3], argv[4]);
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
