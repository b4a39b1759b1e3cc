#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors, runs every test, then builds with
# AddressSanitizer and UndefinedBehaviorSanitizer and runs every test again.
# Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}"

stage "format"
scripts/check-format.sh

stage "build and test (warnings as errors)"
cmake --preset ci >/dev/null
cmake --build --preset ci -j "$(jobs_count)"
ctest --preset ci -j "$(jobs_count)"

stage "build and test (address and undefined-behaviour sanitizers)"
cmake --preset asan >/dev/null
cmake --build --preset asan -j "$(jobs_count)"
ctest --preset asan -j "$(jobs_count)"
