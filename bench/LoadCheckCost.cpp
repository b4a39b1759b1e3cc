// What a daemon pays to check a channel-tables file when it loads it, against loading and
// reading it without the check (FileMgr::loadLocalCfg, then ChannelTables::Deserialize):
// tables x rows of 8x64 and 16x512, clean and with a finding in every row.
//
//   zelct-load-check-cost [--benchmark_format=json ...]
//
// scripts/bench-load-check.sh turns the report into the README's table with the ratios.
#include <benchmark/benchmark.h>
#include <json/json.h>

#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <string>

#include "ChannelTableRow.h"
#include "ChannelTables.h"
#include "Check.h"
#include "FileMgr.h"
#include "Kinds.h"
#include "Log.h"

namespace {

// A row as a board writes it, or with an input state the library reads as Disabled.
Json::Value row(int id, bool finding) {
    Json::Value written = channelTableRow(id);
    if (finding) {
        written["input"]["state"] = "enabled";
    }
    return written;
}

// A file of the document, written once per size and variant and removed at exit.
const std::string& documentFile(int tables, int rows, bool findings) {
    static std::string paths[2][2][2];
    const int t = tables == 8 ? 0 : 1;
    std::string& path = paths[t][rows == 64 ? 0 : 1][findings ? 1 : 0];
    if (path.empty()) {
        Json::Value document(Json::arrayValue);
        for (int i = 0; i < tables; ++i) {
            Json::Value table(Json::objectValue);
            table["type"] = 3;
            table["string"] = "madi";
            for (int r = 0; r < rows; ++r) {
                table["channels"].append(row(i * rows + r, findings));
            }
            document.append(table);
        }
        path = "/tmp/zelct-load-check-" + std::to_string(getpid()) + "-" + std::to_string(tables) +
               "x" + std::to_string(rows) + (findings ? "-findings" : "-clean") + ".json";
        std::ofstream(path) << document.toStyledString();
        std::atexit([] {
            for (auto& a : paths) {
                for (auto& b : a) {
                    for (const std::string& p : b) {
                        if (!p.empty()) {
                            std::remove(p.c_str());
                        }
                    }
                }
            }
        });
    }
    return path;
}

void LoadAndRead(benchmark::State& state, bool findings) {
    const std::string& path =
        documentFile(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), findings);
    for (auto _ : state) {
        Json::Value root;
        if (FileMgr().loadLocalCfg(path, root) != 0) {
            state.SkipWithError("load failed");
            break;
        }
        ChannelTables tables;
        tables.Deserialize(root);
        benchmark::DoNotOptimize(tables.tables.size());
    }
}

void LoadAndCheck(benchmark::State& state, bool findings) {
    const std::string& path =
        documentFile(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), findings);
    const zelct::Kind& kind = *zelct::findKind("channel-tables");
    for (auto _ : state) {
        zelct::LogRecorder quiet;
        const zelct::Outcome outcome = zelct::checkFile(kind, path, true);
        const bool expected = findings ? outcome.status == zelct::Outcome::Status::Findings
                                       : outcome.status == zelct::Outcome::Status::Exact;
        if (!expected) {
            state.SkipWithError("unexpected verdict");
            break;
        }
        benchmark::DoNotOptimize(outcome.findings.size());
    }
}

void sizes(benchmark::internal::Benchmark* b) {
    b->Args({8, 64})->Args({16, 512})->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK_CAPTURE(LoadAndRead, clean, false)->Apply(sizes);
BENCHMARK_CAPTURE(LoadAndCheck, clean, false)->Apply(sizes);
BENCHMARK_CAPTURE(LoadAndRead, findings, true)->Apply(sizes);
BENCHMARK_CAPTURE(LoadAndCheck, findings, true)->Apply(sizes);

BENCHMARK_MAIN();
