#!/usr/bin/env bash
# What `zelct check` costs against `zelct normalize` (preset "bench": Release at -O2): each
# runs as its own process on the same file, three times, and the medians of wall time and peak
# resident memory are compared. Documents: channel tables of 2,000 and 20,000 rows, clean,
# with 5 traps, with a trap in every row and with a distinct unknown member in every row; and
# an array of 900,000 numbers (within the file store's million values) where channel tables are expected, against normalize of a
# clean channel-tables file as large. Prints a Markdown table, the target being 3x. Takes a
# few minutes.
#
# Environment: CHECK_BENCH_ROWS  row counts (default "2000 20000")
#              ZELCT_BENCH_DIR   folder for the documents (default: /dev/shm if present)
# Numbers from a busy machine mean little: run it when the load average is low.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}" libbenchmark-dev

# The bench preset leaves the tool out; this build adds it in a folder of its own.
stage "build (preset bench, with the tool)"
build=build/bench-check
cmake --preset bench -B "$build" -DZELCT_BUILD_TOOLS=ON >/dev/null
cmake --build "$build" -j "$(jobs_count)" --target zelct zelct-check-cost

stage "check against normalize"
default_dir=/tmp
[ -d /dev/shm ] && default_dir=/dev/shm
dir=$(mktemp -d "${ZELCT_BENCH_DIR:-$default_dir}/zelct-check-cost.XXXXXX")
trap 'rm -rf "$dir"' EXIT
model=$(lscpu | sed -n 's/^Model name: *//p' | head -1)
echo "machine: ${model:-unknown CPU}, $(nproc) cores, $(uname -m); load average now:$(uptime | sed 's/.*load average://')"
# shellcheck disable=SC2086
"$build/bench/zelct-check-cost" "$build/tools/zelct/zelct" "$dir" ${CHECK_BENCH_ROWS:-2000 20000}
