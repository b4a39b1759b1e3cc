#!/usr/bin/env bash
# Builds and runs the consumer projects against an installed tree only:
# one with find_package(zelCommonTypes 1), one with pkg-config, and the same two for the
# check component (find_package COMPONENTS check, pkg-config zelCommonTypesCheck).
#   scripts/consumers.sh ROOT [armhf]
# ROOT is the folder that holds usr/ (a staging install or a dpkg --root).
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(realpath "$1")
target=${2:-native}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ "$target" = armhf ]; then
    arch=arm-linux-gnueabihf
    cxx=arm-linux-gnueabihf-g++
    run=(qemu-arm)
    cmake_extra=(-DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/toolchains/arm-linux-gnueabihf.cmake")
else
    arch=$(gcc -print-multiarch)
    cxx=g++
    run=()
    cmake_extra=()
fi
libdir="$root/usr/lib/$arch"
export LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"

echo "-- consumer with find_package ($target)"
cmake -S tests/consumer/find-package -B "$work/find-package" -G Ninja \
    -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_TYPE=Release "${cmake_extra[@]}" >/dev/null
cmake --build "$work/find-package" >/dev/null
"${run[@]}" "$work/find-package/consumer" "$work/find-package.json" >/dev/null
echo "   ok"

echo "-- consumer with pkg-config ($target)"
flags=$(PKG_CONFIG_LIBDIR="$libdir/pkgconfig:/usr/lib/$arch/pkgconfig:/usr/share/pkgconfig" \
        pkg-config --cflags --libs zelCommonTypes)
# shellcheck disable=SC2086
$cxx -std=c++17 -o "$work/pkg-config-consumer" tests/consumer/main.cpp $flags
"${run[@]}" "$work/pkg-config-consumer" "$work/pkg-config.json" >/dev/null
echo "   ok"

echo "-- check component with find_package COMPONENTS check ($target)"
cmake -S tests/consumer/find-package-check -B "$work/find-package-check" -G Ninja \
    -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_TYPE=Release "${cmake_extra[@]}" >/dev/null
cmake --build "$work/find-package-check" >/dev/null
"${run[@]}" "$work/find-package-check/consumer-check" "$work/find-package-check.json" >/dev/null
echo "   ok"

echo "-- check component with pkg-config ($target)"
flags=$(PKG_CONFIG_LIBDIR="$libdir/pkgconfig:/usr/lib/$arch/pkgconfig:/usr/share/pkgconfig" \
        pkg-config --cflags --libs zelCommonTypesCheck)
# shellcheck disable=SC2086
$cxx -std=c++17 -o "$work/pkg-config-check" tests/consumer/check.cpp $flags
"${run[@]}" "$work/pkg-config-check" "$work/pkg-config-check.json" >/dev/null
echo "   ok"

# The daemon of examples/daemon: built as a daemon's own project would be, and run on the
# example tables (exact; findings that are warnings) and on tables a policy refuses.
echo "-- examples/daemon against the installed check component ($target)"
cmake -S examples/daemon -B "$work/daemon" -G Ninja \
    -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_TYPE=Release "${cmake_extra[@]}" >/dev/null
cmake --build "$work/daemon" >/dev/null
scripts/daemon-example.sh "${run[@]}" "$work/daemon/zel-daemon-example"
echo "   ok"
