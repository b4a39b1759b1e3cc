#!/usr/bin/env bash
# What checking a channel-tables file costs a daemon when it loads it (preset "bench": Release
# at -O2), against loading and reading it alone: FileMgr::loadLocalCfg and
# ChannelTables::Deserialize, then the same file through the check engine (zelct check's). 8
# tables of 64 rows and 16 of 512, clean and with a finding in every row. Prints a Markdown
# table of the median CPU times (the process's own, which another busy core changes little)
# with the ratios; the targets are 1.5x clean and 3x with findings. Takes a minute.
# Numbers from a busy machine mean little: run it when the load average is low.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}" libbenchmark-dev

stage "build (preset bench, with the tool's engine)"
build=build/bench-check
cmake --preset bench -B "$build" -DZELCT_BUILD_TOOLS=ON >/dev/null
cmake --build "$build" -j "$(jobs_count)" --target zelct-load-check-cost

stage "load and read, against load and check"
report=$(mktemp)
trap 'rm -f "$report"' EXIT
"$build/bench/zelct-load-check-cost" --benchmark_repetitions=5 \
    --benchmark_report_aggregates_only=true --benchmark_format=json >"$report"
python3 - "$report" <<'PY'
import json, sys
medians = {}
for run in json.load(open(sys.argv[1]))["benchmarks"]:
    if run.get("aggregate_name") == "median":
        what, variant, tables, rows = run["run_name"].replace("/", "_").split("_")[:4]
        medians[(variant, f"{tables}x{rows}", what)] = run["cpu_time"]
print("| document | load + Deserialize | load + check | check / read | target |")
print("|---|---|---|---|---|")
for variant, target in (("clean", 1.5), ("findings", 3.0)):
    for size in ("8x64", "16x512"):
        read = medians[(variant, size, "LoadAndRead")]
        check = medians[(variant, size, "LoadAndCheck")]
        ratio = check / read
        verdict = "met" if ratio <= target else f"missed by {ratio / target:.1f}x"
        print(f"| {size} rows, {variant} | {read:.2f} ms | {check:.2f} ms | {ratio:.1f}x | "
              f"{target}x {verdict} |")
PY
