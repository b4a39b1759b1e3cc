#!/usr/bin/env bash
# zelct check prints the same bytes, in every format, whether it checks one file at a time or
# several at once: it runs each check both ways and compares standard output, standard error
# and the exit code. The summary's time is left out (--no-time), and it is checked apart that
# the time is there without it.
#   tests/cli/jobs-same-output.sh TOOL      (run in tests/cli; $ZELCT_EMULATOR for a cross build)
set -euo pipefail
tool=$1
cd "$(dirname "$0")"
read -r -a emulator <<<"${ZELCT_EMULATOR:-}"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

run() {
    local name=$1
    shift
    set +e
    "${emulator[@]}" "$tool" "$@" >"$scratch/$name.out" 2>"$scratch/$name.err"
    echo $? >"$scratch/$name.exit"
    set -e
}

inputs=(inputs/*.json)
compared=0
for format in text json sarif github junit; do
    for words in "repo repo-vscode repo-links repo-broken inputs" "--kind sfp inputs" \
                 "sfp ${inputs[*]}"; do
        read -r -a args <<<"$words"
        run one check --format "$format" --no-time -j 1 "${args[@]}"
        run four check --format "$format" --no-time -j 4 "${args[@]}"
        for stream in out err exit; do
            if ! cmp -s "$scratch/one.$stream" "$scratch/four.$stream"; then
                echo "check --format $format $words: -j 4 writes another std$stream than -j 1:"
                diff "$scratch/one.$stream" "$scratch/four.$stream" | head -20
                exit 1
            fi
        done
        [ -s "$scratch/one.out" ] || { echo "check --format $format $words: no output"; exit 1; }
        compared=$((compared + 1))
    done
done

# The time, when it is not left out, ends the summary line.
run timed check -j 2 repo
tail -1 "$scratch/timed.err" | grep -Eq '^10 files: 7 understood exactly, 2 with findings, 1 unusable; [0-9]+\.[0-9] s$' || {
    echo "the summary line lacks its time:"
    tail -1 "$scratch/timed.err"
    exit 1
}
echo "jobs-same-output: $compared checks print the same with -j 1 and -j 4"
