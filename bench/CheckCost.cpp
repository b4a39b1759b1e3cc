// What `zelct check` costs against `zelct normalize`, each run as its own process on the same
// file: wall time and peak resident memory of the child. Documents are channel tables of a
// given number of rows, clean or with traps the library reads otherwise, and an array of the
// wrong type that the library cannot read at all.
//
//   zelct-check-cost ZELCT DIR [ROWS...]     (rows default to 2000 and 20000)
//
// Prints one Markdown table: per document, the median of a few runs of each command, the
// ratios, and whether check stays within 3x of its reference in time and in memory.
#include <json/json.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "ChannelTableRow.h"

namespace {

constexpr int kRuns = 3;
constexpr int kRowsPerTable = 100;
constexpr double kTarget = 3.0;

// Five edits a hand-edited file typically holds, each read differently by the library.
void addTrap(Json::Value& row, int which) {
    switch (which % 5) {
        case 0:
            row["input"]["state"] = "enabled";
            break;
        case 1:
            row["output"]["type"] = "test";
            break;
        case 2:
            row["blocked"] = 1;
            break;
        case 3:
            row["id"] = row["id"].asInt() + 0.5;
            break;
        default:
            row["output"]["state"] = "PAUSED";
            break;
    }
}

enum class Variant { Clean, FiveTraps, TrapEveryRow, UnknownEveryRow };

Json::Value channelTables(int rows, Variant variant) {
    Json::Value document(Json::arrayValue);
    for (int i = 0; i < rows; ++i) {
        Json::Value row = channelTableRow(i);
        const bool spread = rows >= 5 && i % (rows / 5) == rows / 10;
        if (variant == Variant::TrapEveryRow) {
            addTrap(row, i);
        } else if (variant == Variant::FiveTraps && spread) {
            addTrap(row, i / (rows / 5));
        }
        if (variant == Variant::UnknownEveryRow) {
            row["note-" + std::to_string(i)] = i;
        }
        Json::Value& table = document[static_cast<Json::ArrayIndex>(i / kRowsPerTable)];
        if (!table.isMember("type")) {
            table["type"] = 6;
            table["string"] = "sdi-audio";
        }
        table["channels"].append(row);
    }
    return document;
}

void store(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

// Makes a document in a child process and returns its size. A child starts with the memory
// its parent holds at the fork, and that would count in its peak: the measuring process never
// holds a document itself.
template <class Make>
size_t storeMade(const std::string& path, Make make) {
    const pid_t child = fork();
    if (child == 0) {
        store(path, make());
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    return static_cast<size_t>(in.tellg());
}

// An array of `count` numbers where the library expects channel tables: about 2 bytes each.
std::string wrongTypeArray(size_t count) {
    std::string text = "[";
    for (size_t i = 0; i < count; ++i) {
        text += i + 1 < count ? "1," : "1";
    }
    return text + "]\n";
}

// A clean channel-tables document of at least `bytes` bytes.
std::string cleanOfSize(size_t bytes) {
    int rows = 100;
    std::string text;
    while ((text = channelTables(rows, Variant::Clean).toStyledString()).size() < bytes) {
        rows = static_cast<int>(rows * (static_cast<double>(bytes) / text.size()) + 1);
    }
    return text;
}

struct Cost {
    double seconds;
    long peakKiB;
};

// Runs the tool once with its output thrown away; the child's own rusage gives its peak.
Cost runOnce(const std::vector<std::string>& args) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        std::vector<char*> argv;
        for (const std::string& arg : args) {
            argv.push_back(const_cast<char*>(arg.c_str()));
        }
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 127) {
        std::fprintf(stderr, "zelct-check-cost: %s did not run\n", args[0].c_str());
        std::exit(2);
    }
    return {elapsed.count(), usage.ru_maxrss};
}

Cost median(const std::vector<std::string>& args) {
    std::vector<double> times;
    std::vector<long> peaks;
    for (int i = 0; i < kRuns; ++i) {
        const Cost cost = runOnce(args);
        times.push_back(cost.seconds);
        peaks.push_back(cost.peakKiB);
    }
    std::sort(times.begin(), times.end());
    std::sort(peaks.begin(), peaks.end());
    return {times[kRuns / 2], peaks[kRuns / 2]};
}

const char* verdict(double ratio) {
    return ratio <= kTarget ? "met" : "MISSED";
}

void row(const std::string& name, size_t bytes, const std::string& subject, Cost subjectCost,
         const std::string& reference, Cost referenceCost) {
    const double time = subjectCost.seconds / referenceCost.seconds;
    const double memory =
        static_cast<double>(subjectCost.peakKiB) / static_cast<double>(referenceCost.peakKiB);
    std::printf(
        "| %s | %.1f MB | %s: %.3f s, %.1f MB | %s: %.3f s, %.1f MB | %.2fx %s | %.2fx %s |\n",
        name.c_str(), bytes / 1e6, subject.c_str(), subjectCost.seconds,
        subjectCost.peakKiB / 1024.0, reference.c_str(), referenceCost.seconds,
        referenceCost.peakKiB / 1024.0, time, verdict(time), memory, verdict(memory));
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: zelct-check-cost ZELCT DIR [ROWS...]\n");
        return 2;
    }
    const std::string tool = argv[1];
    const std::string dir = argv[2];
    std::vector<int> sizes;
    for (int i = 3; i < argc; ++i) {
        sizes.push_back(std::atoi(argv[i]));
    }
    if (sizes.empty()) {
        sizes = {2000, 20000};
    }
    const struct {
        Variant variant;
        const char* name;
    } variants[] = {
        {Variant::Clean, "clean"},
        {Variant::FiveTraps, "5 traps"},
        {Variant::TrapEveryRow, "a trap in every row"},
        {Variant::UnknownEveryRow, "a distinct unknown member in every row"},
    };

    std::printf("| document | size | measured | reference | time | memory |\n");
    std::printf("|---|---|---|---|---|---|\n");
    for (const int rows : sizes) {
        for (const auto& variant : variants) {
            const std::string path = dir + "/check-cost-" + std::to_string(rows) + ".json";
            const size_t bytes = storeMade(
                path, [&] { return channelTables(rows, variant.variant).toStyledString(); });
            const Cost check = median({tool, "check", "channel-tables", path});
            const Cost normalize = median({tool, "normalize", "channel-tables", path});
            row(std::to_string(rows) + " rows, " + variant.name, bytes, "check", check, "normalize",
                normalize);
        }
    }

    const std::string wrongPath = dir + "/check-cost-wrong-type.json";
    const std::string cleanPath = dir + "/check-cost-clean-same-size.json";
    const size_t wrongBytes = storeMade(wrongPath, [] { return wrongTypeArray(900000); });
    storeMade(cleanPath, [&] { return cleanOfSize(wrongBytes); });
    const Cost reference = median({tool, "normalize", "channel-tables", cleanPath});
    const Cost check = median({tool, "check", "channel-tables", wrongPath});
    const Cost normalize = median({tool, "normalize", "channel-tables", wrongPath});
    row("900,000 numbers for channel tables", wrongBytes, "check", check,
        "normalize of a clean file as large", reference);
    row("900,000 numbers for channel tables", wrongBytes, "normalize", normalize,
        "normalize of a clean file as large", reference);
    // The floor both stand on: the device's load of the file alone. A kind whose document is
    // an object refuses the array right after loading it.
    const Cost load = median({tool, "check", "sfp", wrongPath});
    row("900,000 numbers, loaded only (check as sfp)", wrongBytes, "load", load,
        "normalize of a clean file as large", reference);
    return 0;
}
