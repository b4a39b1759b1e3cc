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

# What CPack leaves as Debian would not: the library calls ldconfig from postinst and postrm
# where Debian's libraries activate the ldconfig trigger, and a -dbgsym package lists its
# files in md5sums under the build folder's path and has no documentation folder (Debian's
# point to the package whose symbols they hold), and CPack's installed sizes count the
# binaries before they were stripped. Each package is rebuilt with that mended.
finish_package() {
    local deb=$1 dir name
    dir=$(mktemp -d)
    dpkg-deb -R "$deb" "$dir"
    name=$(dpkg-deb -f "$deb" Package)
    case "$name" in
        libzelcommontypes1 | libzelcommontypescheck1)
            rm -f "$dir/DEBIAN/postinst" "$dir/DEBIAN/postrm"
            install -m 0644 packaging/triggers "$dir/DEBIAN/triggers"
            ;;
        *-dbgsym)
            mkdir -p "$dir/usr/share/doc"
            ln -s "${name%-dbgsym}" "$dir/usr/share/doc/$name"
            ;;
    esac
    # The installed size anew from what the package holds now, counted as dpkg-gencontrol
    # does: KiB of each file rounded up, and one for every other entry.
    local size
    size=$(cd "$dir" && find . -path ./DEBIAN -prune -o ! -path . -printf '%y %s\n' |
        awk '{ total += ($1 == "f") ? int(($2 + 1023) / 1024) : 1 } END { print total }')
    sed -i "s/^Installed-Size:.*/Installed-Size: $size/" "$dir/DEBIAN/control"
    (cd "$dir" && find . -path ./DEBIAN -prune -o -type f -printf '%P\0' | LC_ALL=C sort -z |
        xargs -0 md5sum >DEBIAN/md5sums)
    dpkg-deb --root-owner-group -Zxz --build "$dir" "$deb" >/dev/null
    rm -rf "$dir"
}

rm -f "$build"/*.deb "$build"/*.ddeb
# The API reference is not part of the default build; the -dev package carries it.
cmake --build "$build" --target docs
(cd "$build" && cpack -G DEB >/dev/null)
for deb in "$build"/*.deb "$build"/*.ddeb; do
    finish_package "$deb"
done
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

# Debian's package checker: no error and no warning on any package, debug symbols included.
# (It also says that it runs as root, in CI: that is no finding.)
if ! findings=$(lintian --fail-on error,warning --tag-display-limit 0 "$build"/*.deb \
    "$build"/*.ddeb 2>&1); then
    grep -v '^running with root privileges' <<<"$findings"
    echo "lintian: the findings above"
    exit 1
fi
echo "-- lintian: no error and no warning on $(ls "$build"/*.deb "$build"/*.ddeb | wc -l) packages"

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
doc() {  # package: its copyright file and changelog
    echo "usr/share/doc/$1/copyright" "usr/share/doc/$1/changelog.gz"
}
expect libzelcommontypes1 "usr/lib/$arch/libzelCommonTypes.so.1" "usr/lib/$arch/libzelCommonTypes.so.1.0.0" \
    $(doc libzelcommontypes1)
refuse libzelcommontypes1 "usr/include" "libzelCommonTypes.so$" "usr/bin" "libzelCommonTypesCheck"
expect libzelcommontypescheck1 "usr/lib/$arch/libzelCommonTypesCheck.so.1" \
    "usr/lib/$arch/libzelCommonTypesCheck.so.1.0.0" $(doc libzelcommontypescheck1)
refuse libzelcommontypescheck1 "usr/include" "libzelCommonTypesCheck.so$" "usr/bin" "libzelCommonTypes.so"
expect libzelcommontypes-dev "usr/lib/$arch/libzelCommonTypes.so" \
    "usr/include/zelCommonTypes/zelCommonTypes.h" "usr/include/zelCommonTypes/FileMgr.h" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesConfig.cmake" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesConfigVersion.cmake" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesTargets.cmake" \
    "usr/lib/$arch/pkgconfig/zelCommonTypes.pc" "${schemas[@]}" \
    "usr/lib/$arch/libzelCommonTypesCheck.so" "usr/include/zelCommonTypes/DocumentCheck.h" \
    "usr/lib/$arch/cmake/zelCommonTypes/zelCommonTypesCheckTargets.cmake" \
    "usr/lib/$arch/pkgconfig/zelCommonTypesCheck.pc" $(doc libzelcommontypes-dev) \
    usr/share/doc/libzelcommontypes-dev/html/index.html \
    usr/share/doc/libzelcommontypes-dev/html/classFileMgr.html \
    usr/share/doc-base/libzelcommontypes-dev.libzelcommontypes-dev-api
refuse libzelcommontypes-dev "libzelCommonTypes.so.1" "libzelCommonTypesCheck.so.1" "usr/bin" "\.js$"
# The tool's manual pages: zelct(1) and one a command.
man_pages=("usr/share/man/man1/zelct.1.gz")
for command in kinds check explain diff normalize template schema video ptime alarms; do
    man_pages+=("usr/share/man/man1/zelct-$command.1.gz")
done
expect zelct "usr/bin/zelct" "${man_pages[@]}" $(doc zelct)
# The debug symbols, by build-id, beside the stripped binaries.
for name in libzelcommontypes1 libzelcommontypescheck1 zelct; do
    ddeb="$build/${name}-dbgsym_${version}_${debarch}.ddeb"
    grep -q '/usr/lib/debug/.build-id/.*\.debug$' <<<"$(dpkg-deb -c "$ddeb")" ||
        { echo "$ddeb holds no debug symbols"; exit 1; }
    echo "-- $(basename "$ddeb"): $(dpkg-deb -f "$ddeb" Build-Ids)"
done

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
