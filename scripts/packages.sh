#!/usr/bin/env bash
# Builds the Debian packages of a configured and built preset, checks their file lists and,
# for the build machine's own architecture, installs them into a fresh root with dpkg --root
# and builds the consumer projects against that root.
#   scripts/packages.sh PRESET        (ci or armhf)
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
build=build/$preset
if [ "$preset" = armhf ]; then arch=arm-linux-gnueabihf; debarch=armhf
else arch=$(gcc -print-multiarch); debarch=$(dpkg --print-architecture); fi

rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB >/dev/null)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

# Each package must hold exactly its share of the installed tree.
expect() {  # package, then the paths it must contain
    local deb="$build/${1}_${version}_${debarch}.deb"; shift
    [ -f "$deb" ] || { echo "missing package $deb"; exit 1; }
    local list; list=$(dpkg-deb -c "$deb" | awk '{print $6}')
    local path
    for path in "$@"; do
        grep -qx "./$path" <<<"$list" || { echo "$deb lacks $path"; echo "$list"; exit 1; }
    done
    echo "-- $(basename "$deb"): $(grep -vc '/$' <<<"$list") files, depends: $(dpkg-deb -f "$deb" Depends)"
}
refuse() {  # package, then paths it must not contain
    local deb="$build/${1}_${version}_${debarch}.deb"; shift
    local path
    for path in "$@"; do
        if dpkg-deb -c "$deb" | awk '{print $6}' | grep -q "$path"; then
            echo "$deb must not hold $path"; exit 1
        fi
    done
}

# The schema of every kind, as the build wrote them.
schemas=()
for file in "$build"/share/zelCommonTypes/schemas/*.schema.json; do
    [ -f "$file" ] && schemas+=("usr/share/zelCommonTypes/schemas/$(basename "$file")")
done
[ ${#schemas[@]} -gt 0 ] || { echo "the build wrote no schemas"; exit 1; }
expect libzelcommontypes1 "usr/lib/$arch/libzelCommonTypes.so.1" "usr/lib/$arch/libzelCommonTypes.so.1.0.0"
refuse libzelcommontypes1 "usr/include" "libzelCommonTypes.so$" "usr/bin"
expect libzelcommontypes-dev "usr/lib/$arch/libzelCommonTypes.so" \
    "usr/include/zelCommonTypes/zelCommonTypes.h" "usr/include/zelCommonTypes/FileMgr.h" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesConfig.cmake" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesConfigVersion.cmake" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesTargets.cmake" \
    "usr/lib/$arch/pkgconfig/zelCommonTypes.pc" "${schemas[@]}"
refuse libzelcommontypes-dev "libzelCommonTypes.so.1" "usr/bin"
expect zelct "usr/bin/zelct"

if [ "$preset" = armhf ]; then
    root=$(mktemp -d)
    for deb in "$build"/*.deb; do dpkg-deb -x "$deb" "$root"; done
    scripts/consumers.sh "$root" armhf
    rm -rf "$root"
    exit 0
fi

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status"
# The fresh root has no jsoncpp of its own; the build machine's serves the consumers.
dpkg --root="$root" --force-depends --force-not-root --force-script-chrootless \
    --log=/dev/null -i "$build"/*.deb >/dev/null
dpkg --root="$root" -l | awk '/^ii/ {print "-- installed " $2 " " $3}'
scripts/consumers.sh "$root"
