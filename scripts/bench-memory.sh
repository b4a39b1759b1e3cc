#!/usr/bin/env bash
# Peak memory of `zelct check` (text and --json) against `zelct normalize` on documents shaped
# to make a checker hold much per value: a member nothing reads holding a long array, a list
# of empty objects that each gain three members, a list whose every element has a member
# nothing reads,
# and an object that gives one member name again and again. Each command runs once per shape as
# its own process, measured by /usr/bin/time (maximum resident set size); standard output goes
# to /dev/null. Prints a Markdown table; the target is check at most 3x normalize.
#
# Environment: ZELCT                the tool to measure (default: build/ci/tools/zelct/zelct,
#                                   built with the ci preset when missing)
#              ZELCT_BENCH_DIR      folder for the documents (default /tmp)
#              ZELCT_BENCH_SCALE    1 for the full shapes (default), 10 for a tenth of each
#              ZELCT_BENCH_LIMIT_KB virtual memory limit of each run (default 20000000), so
#                                   that a regression fails with "out of memory" instead of
#                                   taking the machine with it
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

ensure_packages time
tool=${ZELCT:-build/ci/tools/zelct/zelct}
if [ ! -x "$tool" ]; then
    stage "build (preset ci, the tool only)"
    cmake --preset ci >/dev/null
    cmake --build --preset ci -j "$(jobs_count)" --target zelct
fi

dir=$(mktemp -d "${ZELCT_BENCH_DIR:-/tmp}/zelct-bench-memory.XXXXXX")
trap 'rm -rf "$dir"' EXIT
scale=${ZELCT_BENCH_SCALE:-1}
limit=${ZELCT_BENCH_LIMIT_KB:-20000000}

# N copies of a text, with no separator.
repeated() {
    awk -v text="$1" -v count="$2" 'BEGIN { for (i = 0; i < count; i++) printf "%s", text }'
}

# Each shape as large as the file store takes (a million values, kMaxValues), and the two
# largest ones again far over it, where the store refuses them before parsing.
make_shapes() {
    local most=$((1000000 / scale))
    local zeros=$((most - 3)) empty=$((most - 2)) unknown=$((most / 3 - 1)) again=$((most - 2))
    local many=$((25000000 / scale)) huge=$((10000000 / scale))
    { printf '{"zz":['; repeated '0,' "$zeros"; printf '0]}'; } >"$dir/unknown-array.json"
    { printf '{"zz":['; repeated '0,' "$many"; printf '0]}'; } >"$dir/unknown-array-over.json"
    { printf '['; repeated '{},' "$empty"; printf '{}]'; } >"$dir/empty-objects.json"
    { printf '['; repeated '{},' "$huge"; printf '{}]'; } >"$dir/empty-objects-over.json"
    { printf '['; repeated '{"id":1,"zz":0},' "$unknown"; printf '{"id":1,"zz":0}]'; } \
        >"$dir/unknown-member-each.json"
    { printf '{'; repeated '"zz":0,' "$again"; printf '"zz":0}'; } >"$dir/member-again.json"
}

# Prints "MAXRSS_KB EXIT" of one run.
peak() {
    local out
    out=$( (ulimit -v "$limit"; /usr/bin/time -f '%M' "$@" >/dev/null 2>"$dir/stderr"); echo " $?")
    # /usr/bin/time writes its figure last on standard error.
    echo "$(tail -1 "$dir/stderr") ${out##* }"
}

row() {
    local label=$1 kind=$2 file=$3
    local size check normalize ratio
    size=$(du -m "$file" | cut -f1)
    read -r check check_exit < <(peak "$tool" check "$kind" "$file")
    read -r json json_exit < <(peak "$tool" check --json "$kind" "$file")
    read -r normalize normalize_exit < <(peak "$tool" normalize "$kind" "$file")
    printf '| %s | %s | %s MB | %d MB (exit %s) | %d MB (exit %s) | %s | %d MB (exit %s) | %s |\n' \
        "$label" "$kind" "$size" $((normalize / 1024)) "$normalize_exit" $((check / 1024)) \
        "$check_exit" "$(verdict "$check" "$normalize")" $((json / 1024)) "$json_exit" \
        "$(verdict "$json" "$normalize")"
}

# "1.63x met", or MISSED past 3x.
verdict() {
    awk -v c="$1" -v n="$2" 'BEGIN { r = c / n; printf "%.2fx %s", r, (r > 3 ? "MISSED" : "met") }'
}

stage "documents"
make_shapes
ls -l "$dir"

stage "check against normalize"
model=$(lscpu | sed -n 's/^Model name: *//p' | head -1)
echo "machine: ${model:-unknown CPU}, $(nproc) cores, $(uname -m), $(free -g | awk '/^Mem:/ { print $2 }') GB;" \
    "load average now:$(uptime | sed 's/.*load average://')"
echo
echo "| document | kind | size | normalize | check | check / normalize | check --json | check --json / normalize |"
echo "|---|---|---|---|---|---|---|---|"
row "a member nothing reads, holding an array of zeros" system-info "$dir/unknown-array.json"
row "the same, 25 times the values (refused by the store)" system-info "$dir/unknown-array-over.json"
row "a list of empty objects (three members added to each)" channel-list "$dir/empty-objects.json"
row "the same, 10 times the values (refused by the store)" channel-list "$dir/empty-objects-over.json"
row "a list whose every element has a member nothing reads" channel-list "$dir/unknown-member-each.json"
row "one member name given again and again" system-info "$dir/member-again.json"
