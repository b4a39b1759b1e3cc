#!/usr/bin/env bash
# Builds the libFuzzer targets (preset fuzz: clang++, AddressSanitizer, UndefinedBehaviorSanitizer)
# and runs each one for SECONDS (default 20). Fails when a target finds anything: a crash, a
# sanitizer report, a leak, an exception other than jsoncpp's from a reader, an allocation
# over the memory limit, or an input that takes longer than 10 s. The input that did it is
# kept in build/fuzz/findings/ and can be replayed with: build/fuzz/fuzz/<Target>Fuzz <file>
#
#   scripts/fuzz.sh            # every target, 20 s each (as CI runs it)
#   scripts/fuzz.sh 600        # a longer hunt: 10 minutes each
#   scripts/fuzz.sh 60 FileMgr # one target only
#
# Seeds: fuzz/corpus/<Target>/, fuzz/corpus/<Target>-regression/ (inputs that broke JSON
# readers before, also replayed by the unit tests), examples/ and tests/cli/. What a run learns stays in
# build/fuzz/corpus/<Target>/, so a later run starts from there.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

seconds=${1:-20}
only=${2:-}

ensure_packages cmake ninja-build libjsoncpp-dev clang libclang-rt-14-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(jobs_count)"

work=build/fuzz
findings=$work/findings
mkdir -p "$findings"

# JSON's own tokens, and every quoted text of the seeds (the keys and names the readers look
# for), as a libFuzzer dictionary.
dictionary() {
    local target=$1
    printf '%s\n' '"{"' '"}"' '"["' '"]"' '":"' '","' '"\\""' '"null"' '"true"' '"false"' \
        '"0"' '"-1"' '"1.5e308"' '"18446744073709551615"' '"-9223372036854775808"' '"\\u0000"'
    shift
    find "$@" -type f -print0 2>/dev/null | xargs -0 -r cat 2>/dev/null |
        grep -aoE '"[A-Za-z0-9_. -]{1,40}"' | sort -u | sed 's/"/\\"/g; s/.*/"&"/' || true
}

# One target: its verdict goes to $work/$target.result ("ok SUMMARY" or "finding").
fuzz_target() {
    local binary=$1 target
    target=$(basename "$binary" Fuzz)
    local seeds=() dir
    for dir in "fuzz/corpus/$target" "fuzz/corpus/$target-regression" examples tests/cli; do
        [ -d "$dir" ] && seeds+=("$dir")
    done
    local corpus=$work/corpus/$target
    mkdir -p "$corpus"
    dictionary "$target" "${seeds[@]}" >"$work/$target.dict"
    # The file store and the checker get inputs long enough for a document nested past the
    # parser's limit (1,000 levels fail; {"a": 1,000 times and its closing braces take some
    # 6,000 bytes).
    local max_len=()
    case $target in FileMgr | ZelctCheck) max_len=(-max_len=16384) ;; esac
    local log=$work/$target.log
    if ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        "$binary" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 "${max_len[@]}" \
        -dict="$work/$target.dict" -artifact_prefix="$findings/$target-" \
        "$corpus" "${seeds[@]}" >"$log" 2>&1; then
        echo "ok $(grep -aE '^#[0-9]+\s+DONE' "$log" | tail -1 | sed -E 's/^#([0-9]+)\s+DONE\s+/\1 runs, /')" \
            >"$work/$target.result"
    else
        echo "finding" >"$work/$target.result"
    fi
}

# As many targets at once as there are cores: each runs its own time on one core, so the
# stage takes the time of the targets divided by the cores.
targets=()
for binary in "$work"/fuzz/*Fuzz; do
    target=$(basename "$binary" Fuzz)
    [ -n "$only" ] && [ "$only" != "$target" ] && continue
    targets+=("$target")
    rm -f "$work/$target.result"
    while [ "$(jobs -rp | wc -l)" -ge "$(jobs_count)" ]; do
        wait -n || true
    done
    fuzz_target "$binary" &
done
wait

failed=()
for target in "${targets[@]}"; do
    result=$(cat "$work/$target.result" 2>/dev/null || echo "finding")
    if [ "${result%% *}" = ok ]; then
        echo "fuzz $target: no finding in ${seconds} s (${result#ok })"
    else
        echo "fuzz $target: FINDING (log: $work/$target.log)"
        grep -aE 'ERROR|SUMMARY|terminate|runtime error|Test unit written' "$work/$target.log" |
            head -20 || true
        failed+=("$target")
    fi
done

if [ ${#failed[@]} -ne 0 ]; then
    echo "fuzz: findings in ${failed[*]}; inputs in $findings/"
    exit 1
fi
echo "fuzz: every target ran ${seconds} s without a finding"
