#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors and runs every test (as root, the
# suites whose branches depend on the user once more as nobody); builds the API reference
# (Doxygen, any warning an error) and checks the installed package, the Debian packages
# (lintian), the consumer projects and the library's ABI against its baseline (abidiff);
# cross-builds for the board (armhf) and runs every test under qemu-arm; runs every GoogleTest
# suite under valgrind's memcheck, builds with ThreadSanitizer and runs every test there, runs
# every fuzz target for a bounded time; finally builds with AddressSanitizer and
# UndefinedBehaviorSanitizer and runs every test again. Exits non-zero on any failure.
#
# Usage: scripts/test.sh [STAGE...]   runs the stages named, in the order below, or all of them.
# Stages: format native install armhf memcheck tsan fuzz asan. Missing packages are installed
# first whatever the stages; install and memcheck use the native stage's build.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
jobs=$(jobs_count)

all_stages=(format native install armhf memcheck tsan fuzz asan)
selected=("$@")
if [ ${#selected[@]} -eq 0 ]; then
    selected=("${all_stages[@]}")
fi
# True when $1 is exactly one of the words that follow it.
one_of() {
    local word=$1 candidate
    shift
    for candidate in "$@"; do
        [ "$candidate" = "$word" ] && return 0
    done
    return 1
}
# The suites some of whose tests take another branch for root than for any other user (who
# owns a file, who may read it): run as root above, and here again as nobody, so that no
# branch goes unchecked. Skipped, with a line saying so, when not root or when nobody cannot
# reach the build.
unprivileged_suites() {
    local folder=$1 suite
    if [ "$(id -u)" -ne 0 ]; then
        echo "unprivileged run: already unprivileged"
        return 0
    fi
    local as_nobody=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    for suite in FileMgrTest ZelctOutputTest ZelctRepositoryTest; do
        if ! "${as_nobody[@]}" test -x "$folder/$suite"; then
            echo "unprivileged run: nobody cannot reach $folder/$suite; skipped"
            continue
        fi
        local log
        log=$(mktemp)
        if "${as_nobody[@]}" env HOME=/tmp "$folder/$suite" --gtest_brief=1 >"$log" 2>&1; then
            echo "unprivileged $suite: $(grep -a -E 'PASSED|SKIPPED' "$log" | tr -s ' ' | paste -sd ' ')"
            rm -f "$log"
        else
            cat "$log"
            rm -f "$log"
            echo "unprivileged $suite: FAILED"
            return 1
        fi
    done
}

for name in "${selected[@]}"; do
    if ! one_of "$name" "${all_stages[@]}"; then
        echo "scripts/test.sh: unknown stage '$name' (stages: ${all_stages[*]})" >&2
        exit 2
    fi
done
wanted() {
    one_of "$1" "${selected[@]}"
}

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}" "${ROBUSTNESS_PACKAGES[@]}" "${PACKAGING_PACKAGES[@]}"
ensure_armhf
ensure_npm

if wanted format; then
    stage "format"
    scripts/check-format.sh
fi

if wanted native; then
    stage "native: build and test (warnings as errors)"
    cmake --preset ci >/dev/null
    cmake --build --preset ci -j "$jobs"
    # The validators the tests run on zelct's output, from the npm registry; a failed install
    # fails the stage rather than letting the tests skip.
    sh tests/schema/install-validators.sh build/ci/tests/schema/validators
    ctest --preset ci -j "$jobs"
    unprivileged_suites build/ci/tests
fi

if wanted install; then
    stage "native: API reference, install, Debian packages (lintian), consumer projects, ABI (abidiff)"
    # The reference of the public headers, which the -dev package carries: fails on any
    # undocumented class, function or field and on any other Doxygen warning.
    cmake --build --preset ci --target docs
    stage_root=build/ci/stage
    rm -rf "$stage_root"
    cmake --install build/ci --prefix "$stage_root/usr" >/dev/null
    scripts/consumers.sh "$stage_root"
    scripts/packages.sh ci
    scripts/check-man.sh build/ci
    scripts/abi.sh check build/ci
    scripts/abi.sh selftest
fi

if wanted armhf; then
    stage "armhf: cross-build and test under qemu-arm"
    cmake --preset armhf >/dev/null
    cmake --build --preset armhf -j "$jobs"
    ctest --preset armhf -j "$jobs"
    scripts/packages.sh armhf
fi

if wanted memcheck; then
    stage "valgrind memcheck: every GoogleTest suite (no error, no definite or indirect leak)"
    # Runs each suite as one process: the library, the tests and the forked children of the
    # file-store tests, checked by memcheck.
    memcheck_failed=()
    for suite in build/ci/tests/*Test; do
        [ -x "$suite" ] || continue
        name=$(basename "$suite")
        log=build/ci/memcheck-$name.log
        # A suite that replaces operator new to make one allocation fail keeps its own: memcheck
        # watches the malloc and free beneath it instead of putting its own new in its place.
        if valgrind --tool=memcheck --leak-check=full --show-leak-kinds=definite,indirect \
            --errors-for-leak-kinds=definite,indirect --error-exitcode=1 --quiet \
            --soname-synonyms=somalloc=nouserintercepts \
            "$suite" --gtest_brief=1 >"$log" 2>&1; then
            echo "memcheck $name: $(grep -a 'PASSED' "$log" | tail -1)"
        else
            echo "memcheck $name: FAILED"
            cat "$log"
            memcheck_failed+=("$name")
        fi
    done
    if [ ${#memcheck_failed[@]} -ne 0 ]; then
        echo "memcheck: failures in ${memcheck_failed[*]}"
        exit 1
    fi
fi

if wanted tsan; then
    stage "native: thread sanitizer"
    cmake --preset tsan >/dev/null
    cmake --build --preset tsan -j "$jobs"
    # ThreadSanitizer cannot map its shadow memory under the widest address randomisation of
    # recent kernels; the tests do not need randomisation.
    no_aslr=()
    if setarch "$(uname -m)" -R true 2>/dev/null; then
        no_aslr=(setarch "$(uname -m)" -R)
    fi
    "${no_aslr[@]}" ctest --preset tsan -j "$jobs"
fi

if wanted fuzz; then
    stage "fuzz: every target for ${ZELCT_FUZZ_SECONDS:-20} s"
    scripts/fuzz.sh "${ZELCT_FUZZ_SECONDS:-20}"
fi

if wanted asan; then
    stage "native: address and undefined-behaviour sanitizers"
    cmake --preset asan >/dev/null
    cmake --build --preset asan -j "$jobs"
    ctest --preset asan -j "$jobs"
fi
