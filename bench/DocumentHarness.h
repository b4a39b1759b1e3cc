#pragma once

// What every document benchmark measures, and how, for any model class that reads and writes
// one whole document (an alarm set, a channel table set, ...).
//
// Each kind at each size registers two benchmarks:
//
//   <kind>/<size>/json   the in-memory work, each step timed on its own in every iteration:
//                        counters "parse" and "write" (jsoncpp alone: parsing the document's
//                        text, writing the parsed value with toStyledString), "deserialize"
//                        (a fresh model object reads the parsed value) and "serialize" (the
//                        model writes itself into an empty value); "floor" = parse + write,
//                        "library" = deserialize + serialize, "ratio" = library / floor.
//   <kind>/<size>/file   the whole file round trip: "floor" reads the file, parses it, writes
//                        the value and stores the text; "library" is loadLocalCfg +
//                        Deserialize + Serialize + storeLocalCfg. "ratio" = library / floor.
//
// Floor and library run in the same iteration, in alternating order, so whatever else the
// machine does touches both alike and the ratios stay meaningful. Each step is timed by the
// processor time of this thread and includes freeing what it built (the parsed value, the
// written text, the model object), as a process pays for that too. The reported time of a
// benchmark is its library time; "elements" (rows, records, alarms) and "scale" (1, 4, 16 for
// the scaling check, 0 otherwise) let the table compute the time per element.

#include <benchmark/benchmark.h>
#include <json/json.h>

#include <time.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FileMgr.h"
#include "Logger.h"

namespace bench {

// One document at one size.
struct DocumentSize {
    const char* label;  // "8x64", "4096"
    int elements;
    int scale;   // 1, 4 or 16 in the scaling series; 0 outside it
    bool large;  // the size the targets are checked at
};

// The steps are timed by the processor time of this thread (user and system): the work
// measured is the processor's, and time spent waiting while other processes run on a busy
// machine is left out. Files go to a RAM file system, so there is no waiting on a disk either.
struct Clock {
    using time_point = double;  // seconds
    static time_point now() {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
    }
};

inline double secondsBetween(Clock::time_point from, Clock::time_point to) {
    return to - from;
}

// A folder of its own for the files of one run, removed with its content at exit, and the
// folder it is made in.
const std::string& scratchFolder();
std::filesystem::path scratchBase();

// jsoncpp alone: a reader made as any caller makes one, parsing the whole text.
bool parseText(const std::string& text, Json::Value& root, std::string* errors = nullptr);

// The least any process does to load a file's text: size it, read it once into a string.
bool readWholeFile(const std::string& path, std::string& text);
// ... and to store one: write it once.
bool writeWholeFile(const std::string& path, const std::string& text);

// Routes the library's log lines nowhere, so building documents with many alarms stays quiet.
void silenceLogger();

// The floor's file round trip: read, parse, write the value as styled text, store it.
void floorFileRoundTrip(const std::string& in, const std::string& out);

// Kept out of line, as the floor's, so that a profile shows the two round trips side by side.
template <class Model>
[[gnu::noinline]] void libraryFileRoundTrip(const std::string& in, const std::string& out) {
    FileMgr files;
    Json::Value root;
    files.loadLocalCfg(in, root);
    Model model;
    model.Deserialize(root);
    Json::Value written;
    model.Serialize(written);
    files.storeLocalCfg(out, written);
}

// A document built once per benchmark: the model object, its value and its text.
template <class Model>
struct Document {
    Model model;
    Json::Value value;
    std::string text;

    explicit Document(Model built) : model(std::move(built)) {
        model.Serialize(value);
        text = value.toStyledString();
    }
};

// Refuses to time a library that does not reproduce the document: the round trip through
// the model must give back the very text it started from.
template <class Model>
bool reproduces(const Document<Model>& doc, std::string& why) {
    Json::Value parsed;
    if (!parseText(doc.text, parsed, &why)) {
        return false;
    }
    Model read;
    read.Deserialize(parsed);
    Json::Value written;
    read.Serialize(written);
    if (written.toStyledString() != doc.text) {
        why = "Deserialize + Serialize does not reproduce the document";
        return false;
    }
    return true;
}

inline void setCommonCounters(benchmark::State& state, const DocumentSize& size, double floor,
                              double library) {
    const auto perIteration = benchmark::Counter::kAvgIterations;
    state.counters["floor"] = benchmark::Counter(floor, perIteration);
    state.counters["library"] = benchmark::Counter(library, perIteration);
    state.counters["ratio"] = floor > 0 ? library / floor : 0.0;
    state.counters["elements"] = size.elements;
    state.counters["scale"] = size.scale;
    state.counters["large"] = size.large ? 1 : 0;
}

template <class Model>
void jsonBenchmark(benchmark::State& state, const std::function<Model()>& build,
                   const DocumentSize& size) {
    silenceLogger();
    const Document<Model> doc(build());
    std::string why;
    if (!reproduces(doc, why)) {
        state.SkipWithError(why.c_str());
        return;
    }
    // The parsed document: the floor writes it, Deserialize reads it (a reader may add null
    // members to it, once; the documents carry every member, so none is added).
    Json::Value parsedDoc;
    parseText(doc.text, parsedDoc);

    double parse = 0, write = 0, deserialize = 0, serialize = 0;
    for (auto _ : state) {
        const Clock::time_point t0 = Clock::now();
        {
            Json::Value parsed;
            parseText(doc.text, parsed);
            benchmark::DoNotOptimize(parsed);
        }
        const Clock::time_point t1 = Clock::now();
        {
            std::string styled = parsedDoc.toStyledString();
            benchmark::DoNotOptimize(styled);
        }
        const Clock::time_point t2 = Clock::now();
        {
            Model model;
            model.Deserialize(parsedDoc);
            benchmark::DoNotOptimize(model);
        }
        const Clock::time_point t3 = Clock::now();
        {
            Json::Value written;
            doc.model.Serialize(written);
            benchmark::DoNotOptimize(written);
        }
        const Clock::time_point t4 = Clock::now();
        parse += secondsBetween(t0, t1);
        write += secondsBetween(t1, t2);
        deserialize += secondsBetween(t2, t3);
        serialize += secondsBetween(t3, t4);
        state.SetIterationTime(secondsBetween(t2, t4));
    }
    const auto perIteration = benchmark::Counter::kAvgIterations;
    state.counters["parse"] = benchmark::Counter(parse, perIteration);
    state.counters["write"] = benchmark::Counter(write, perIteration);
    state.counters["deserialize"] = benchmark::Counter(deserialize, perIteration);
    state.counters["serialize"] = benchmark::Counter(serialize, perIteration);
    setCommonCounters(state, size, parse + write, deserialize + serialize);
}

template <class Model>
void fileBenchmark(benchmark::State& state, const std::function<Model()>& build,
                   const DocumentSize& size, const std::string& name) {
    silenceLogger();
    const Document<Model> doc(build());
    const std::string base = scratchFolder() + "/" + name;
    const std::string in = base + ".json";
    const std::string floorOut = base + ".floor.json";
    const std::string libraryOut = base + ".library.json";
    if (!writeWholeFile(in, doc.text)) {
        state.SkipWithError("cannot write the document into the scratch folder");
        return;
    }
    libraryFileRoundTrip<Model>(in, libraryOut);
    std::string stored;
    if (!readWholeFile(libraryOut, stored) || stored != doc.text) {
        state.SkipWithError("the library's file round trip does not reproduce the document");
        return;
    }

    double floor = 0, library = 0;
    bool floorFirst = true;
    for (auto _ : state) {
        const Clock::time_point t0 = Clock::now();
        if (floorFirst) {
            floorFileRoundTrip(in, floorOut);
        } else {
            libraryFileRoundTrip<Model>(in, libraryOut);
        }
        const Clock::time_point t1 = Clock::now();
        if (floorFirst) {
            libraryFileRoundTrip<Model>(in, libraryOut);
        } else {
            floorFileRoundTrip(in, floorOut);
        }
        const Clock::time_point t2 = Clock::now();
        const double first = secondsBetween(t0, t1);
        const double second = secondsBetween(t1, t2);
        const double libraryTime = floorFirst ? second : first;
        floor += floorFirst ? first : second;
        library += libraryTime;
        state.SetIterationTime(libraryTime);
        floorFirst = !floorFirst;
    }
    setCommonCounters(state, size, floor, library);
}

// Registers the json and file benchmarks of one kind at each of its sizes. build(size) makes
// the model object holding the document at that size.
template <class Model>
void registerKind(const char* kind, const std::vector<DocumentSize>& sizes,
                  std::function<Model(const DocumentSize&)> build) {
    for (const DocumentSize& size : sizes) {
        const std::string prefix = std::string(kind) + "/" + size.label;
        const std::function<Model()> make = [build, size] { return build(size); };
        benchmark::RegisterBenchmark(
            (prefix + "/json").c_str(),
            [make, size](benchmark::State& state) { jsonBenchmark<Model>(state, make, size); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
        const std::string fileName = std::string(kind) + "-" + size.label;
        benchmark::RegisterBenchmark((prefix + "/file").c_str(),
                                     [make, size, fileName](benchmark::State& state) {
                                         fileBenchmark<Model>(state, make, size, fileName);
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace bench
