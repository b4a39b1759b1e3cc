#!/usr/bin/env bash
# Records what zelct does now as the expectation of command-line cases, the way RunCase.cmake
# runs them. Review every change it makes (git diff) before committing: an expectation is
# only worth what its review was.
#   tests/cli/record.sh TOOL [CASE...]     (every case when none is named)
# A cross-built tool runs under $ZELCT_EMULATOR (for example qemu-arm).
set -euo pipefail
tool=$(realpath "$1"); shift
cd "$(dirname "$0")"
read -r -a emulator <<<"${ZELCT_EMULATOR:-}"
cases=("$@")
if [ ${#cases[@]} -eq 0 ]; then
    mapfile -t cases < <(for c in */cmd; do dirname "$c"; done)
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for case in "${cases[@]}"; do
    line=$(<"$case/cmd")
    line=${line//@OUT@/$scratch/written.json}
    rm -f "$scratch/written.json"
    eval "args=($line)"
    input=/dev/null
    [ -f "$case/stdin" ] && input="$PWD/$case/stdin"
    output="$PWD/$case/stdout"
    [ -f "$case/stdout-to" ] && output=$(<"$case/stdout-to") && : >"$case/stdout"
    here=$PWD
    rm -rf "$scratch/tree" && mkdir "$scratch/tree"
    if [ -f "$case/setup" ]; then
        (cd "$scratch/tree" && sh "$here/$case/setup" "$here")
        cd "$scratch/tree"
    fi
    set +e
    "${emulator[@]}" "$tool" "${args[@]}" <"$input" >"$output" 2>"$here/$case/stderr"
    echo $? >"$here/$case/exit"
    set -e
    cd "$here"
    if [ -f "$case/written" ]; then
        cp "$scratch/written.json" "$case/written" 2>/dev/null || printf '%s' "(no file written)" >"$case/written"
    fi
    echo "$case: exit $(<"$case/exit")"
done
