# Helpers shared by the project's scripts. Source it; do not run it.

# Installs the Debian packages of the arguments that are not installed yet. A partly failing
# 'apt-get update' is tolerated: what is reachable still installs.
ensure_packages() {
    local missing=()
    local pkg
    for pkg in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
            missing+=("$pkg")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    echo "== installing: ${missing[*]}"
    if [ -z "${ZELCT_APT_UPDATED:-}" ]; then
        $sudo apt-get update -q >/dev/null 2>&1 || true
        export ZELCT_APT_UPDATED=1
    fi
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" \
        >/tmp/zelct-apt.log 2>&1 || { tail -20 /tmp/zelct-apt.log; return 1; }
}

# The packages every build of the project needs.
BASE_PACKAGES=(cmake g++ ninja-build pkg-config libjsoncpp-dev libgtest-dev libgmock-dev
               clang-format libcli11-dev python3 python3-jsonschema help2man pre-commit)

# What checking the Debian packages, the ABI and the manual pages adds: Debian's package
# checker, dpkg-shlibdeps, libabigail's abidw and abidiff, man with groff to render pages, and
# Doxygen for the API reference the -dev package carries (presets ci and armhf, target docs).
PACKAGING_PACKAGES=(lintian dpkg-dev abigail-tools man-db groff-base doxygen)

# What the robustness stages add: valgrind's memcheck, clang with libFuzzer and the sanitizer
# runtimes for the fuzz targets.
ROBUSTNESS_PACKAGES=(valgrind clang libclang-rt-14-dev)

# npm, which installs the validators of tests/schema/package.json for the tests. A Node.js
# that comes with its own npm (not Debian's) is kept as it is.
ensure_npm() {
    command -v npm >/dev/null 2>&1 || ensure_packages nodejs npm
}

stage() {
    echo
    echo "======== $* ========"
}

jobs_count() {
    nproc 2>/dev/null || echo 2
}

# The board's architecture: Debian's cross compiler, qemu-arm and the armhf libraries.
ensure_armhf() {
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        local sudo=""
        [ "$(id -u)" -ne 0 ] && sudo="sudo"
        $sudo dpkg --add-architecture armhf
        unset ZELCT_APT_UPDATED
    fi
    ensure_packages g++-arm-linux-gnueabihf qemu-user libjsoncpp-dev:armhf libgtest-dev:armhf
}
