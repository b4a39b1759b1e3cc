#!/usr/bin/env bash
# Builds the benchmarks (preset "bench": Release at -O2) and runs them: every document kind at
# a realistic and a large size and at 1x, 4x and 16x for the scaling check, jsoncpp alone (the
# floor) against the library. Prints one table per question: file round trip and in-memory
# work with their ratios, the steps one by one, the time per element. Takes a few minutes.
#
# Environment: BENCH_MIN_TIME   seconds of measured time per benchmark (default 0.2)
#              BENCH_REPEAT     repetitions, medians reported (default 3)
#              BENCH_FILTER     regular expression of benchmark names (default: all)
#              ZELCT_BENCH_DIR  folder for the documents' files (default: /dev/shm if present)
# Numbers from a busy machine mean little: run it when the load average is low.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}" libbenchmark-dev

stage "build (preset bench)"
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(jobs_count)"

stage "run"
report=build/bench/bench-report.json
repeat=${BENCH_REPEAT:-3}
args=(--benchmark_min_time="${BENCH_MIN_TIME:-0.2}" --benchmark_out="$report"
      --benchmark_out_format=json --benchmark_filter="${BENCH_FILTER:-.}")
if [ "$repeat" -gt 1 ]; then
    args+=(--benchmark_repetitions="$repeat" --benchmark_report_aggregates_only=true)
fi
console=build/bench/bench-console.txt
build/bench/bench/zelct-bench "${args[@]}" >"$console" 2>&1 || { cat "$console"; exit 1; }

stage "results"
model=$(lscpu | sed -n 's/^Model name: *//p' | head -1)
echo "machine: ${model:-unknown CPU}, $(nproc) cores, $(uname -m); load average now:$(uptime | sed 's/.*load average://')"
build/bench/bench/zelct-bench-table "$report"

scripts/bench-check.sh
