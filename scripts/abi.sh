#!/usr/bin/env bash
# Keeps the libraries' binary interfaces: the public types and symbols of each built library
# (libzelCommonTypes, libzelCommonTypesCheck), described by libabigail's abidw, against its
# baseline committed in abi/ (abi/NAME.abi).
#
#   scripts/abi.sh check BUILD      fails on an incompatible change unless the SONAME changed
#                                   with it, and on a compatible one that the baseline does not
#                                   hold yet (additions update the baseline on purpose)
#   scripts/abi.sh update BUILD [NAME]
#                                   writes the baselines anew from BUILD's libraries (or NAME's
#                                   alone); refuses an incompatible change that keeps the SONAME
#   scripts/abi.sh selftest         builds a throwaway copy of the library with a member added
#                                   to a public class and proves that check refuses it
set -euo pipefail
cd "$(dirname "$0")/.."
libraries=(libzelCommonTypes libzelCommonTypesCheck)
baseline=abi/libzelCommonTypes.abi

library_of() {  # build, library name
    local lib="$1/${2:-libzelCommonTypes}.so.1.0.0"
    [ -f "$lib" ] || { echo "abi: no library at $lib" >&2; exit 2; }
    echo "$lib"
}

describe() {  # library, output file
    abidw --headers-dir include --drop-private-types --no-corpus-path --short-locs \
        --out-file "$2" "$1"
}

soname_of_baseline() {
    sed -n "s/.*<abi-corpus[^>]* soname='\([^']*\)'.*/\1/p" "$baseline" | head -1
}

soname_of() {
    readelf -d "$1" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p'
}

# How the library differs from the baseline: same, compatible (symbols added, nothing else)
# or incompatible. abidiff's exit status is a set of bits, 4 for any change and 8 for what it
# is sure breaks callers; a data member that moves within an unchanged size gets 4 alone, so
# a change that is still there with additions left out counts as incompatible.
classify() {  # library, headers; prints the kind, then abidiff's report
    local lib=$1 headers=$2 status=0 report
    report=$(abidiff --headers-dir2 "$headers" --fail-no-debug-info "$baseline" "$lib") ||
        status=$?
    if [ $((status & 3)) -ne 0 ]; then
        echo "error"
    elif [ "$status" -eq 0 ]; then
        echo "same"
    elif abidiff --headers-dir2 "$headers" --no-added-syms "$baseline" "$lib" >/dev/null; then
        echo "compatible"
    else
        echo "incompatible"
    fi
    echo "$report"
}

# Fails on any difference from the baseline, saying what kind it is.
check() {
    local lib=$1 headers=${2:-include} result kind
    result=$(classify "$lib" "$headers")
    kind=$(head -1 <<<"$result")
    [ "$kind" = same ] && { echo "abi: $(basename "$lib") keeps the ABI of $baseline"; return 0; }
    tail -n +2 <<<"$result"
    case "$kind" in
        compatible) echo "abi: additions the baseline does not hold yet: scripts/abi.sh update BUILD" ;;
        incompatible)
            if [ "$(soname_of "$lib")" != "$(soname_of_baseline)" ]; then
                echo "abi: incompatible, with the new SONAME $(soname_of "$lib"): scripts/abi.sh update BUILD"
            else
                echo "abi: incompatible change under the same SONAME $(soname_of "$lib")"
            fi
            ;;
        *) echo "abi: abidiff failed" ;;
    esac
    return 1
}

# Writes the baseline anew, but never over an incompatible change that keeps the SONAME.
update() {
    local lib=$1 kind
    kind=$(classify "$lib" include | head -1)
    if [ "$kind" = incompatible ] && [ "$(soname_of "$lib")" = "$(soname_of_baseline)" ]; then
        check "$lib" || true
        echo "abi: not updated: change the SONAME with an incompatible change"
        return 1
    fi
    describe "$lib" "$baseline"
    echo "abi: wrote $baseline"
}

selftest() {
    local copy=build/abi-selftest status=0 output
    rm -rf "$copy/source"
    mkdir -p "$copy/source"
    cp -r CMakeLists.txt cmake include src "$copy/source/"
    # SfpInfo's members are public and read in place by callers: one more in front moves all.
    sed -i 's/^\(class ZELCOMMONTYPES_API SfpInfo[^{]*{\)$/\1\npublic:\n    int abiProbe = 0;/' \
        "$copy/source/include/SfpInfo.h"
    grep -q abiProbe "$copy/source/include/SfpInfo.h" ||
        { echo "abi: selftest could not edit SfpInfo.h"; return 1; }
    cmake -S "$copy/source" -B "$copy/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DZELCT_BUILD_TESTS=OFF -DZELCT_BUILD_TOOLS=OFF >/dev/null
    cmake --build "$copy/build" --target zelCommonTypes >/dev/null
    output=$(check "$(library_of "$copy/build")" "$copy/source/include") || status=$?
    if [ $status -eq 0 ] || ! grep -q "incompatible change under the same SONAME" <<<"$output"; then
        echo "$output"
        echo "abi: selftest: a member added to SfpInfo was not refused"
        return 1
    fi
    echo "abi: selftest: a member added to a public class is refused"
}

# Runs check or update on each library of a build, each against its own baseline.
each_library() {  # check|update, build, [name]
    local name status=0 names=("${libraries[@]}")
    [ -n "${3:-}" ] && names=("$3")
    for name in "${names[@]}"; do
        baseline=abi/$name.abi
        "$1" "$(library_of "$2" "$name")" || status=1
    done
    return $status
}

case "${1:-}" in
    check) each_library check "$2" ;;
    update) each_library update "$2" "${3:-}" ;;
    selftest) selftest ;;
    *) echo "usage: scripts/abi.sh check|update BUILD | selftest" >&2; exit 2 ;;
esac
