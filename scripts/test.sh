#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors and runs every test; checks the
# installed package, the Debian packages and the consumer projects; cross-builds for the
# board (armhf) and runs every test under qemu-arm; finally builds with AddressSanitizer and
# UndefinedBehaviorSanitizer and runs every test again. Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
jobs=$(jobs_count)

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}"
ensure_armhf

stage "format"
scripts/check-format.sh

stage "native: build and test (warnings as errors)"
cmake --preset ci >/dev/null
cmake --build --preset ci -j "$jobs"
ctest --preset ci -j "$jobs"

stage "native: install, Debian packages, consumer projects"
stage_root=build/ci/stage
rm -rf "$stage_root"
cmake --install build/ci --prefix "$stage_root/usr" >/dev/null
scripts/consumers.sh "$stage_root"
scripts/packages.sh ci

stage "armhf: cross-build and test under qemu-arm"
cmake --preset armhf >/dev/null
cmake --build --preset armhf -j "$jobs"
ctest --preset armhf -j "$jobs"
scripts/packages.sh armhf

stage "native: address and undefined-behaviour sanitizers"
cmake --preset asan >/dev/null
cmake --build --preset asan -j "$jobs"
ctest --preset asan -j "$jobs"
