#!/bin/sh
# Installs the validators of package-lock.json into DIR with `npm ci`, unless DIR already holds
# what this very lock file names: the tests that use them then run without the registry.
# Without npm the tests that need them are skipped (exit 77), except under CI, where a missing
# validator would let a broken output through unnoticed.
#   install-validators.sh DIR
set -eu
here=$(cd "$(dirname "$0")" && pwd)
dir=$1
if ! command -v npm >/dev/null 2>&1; then
    echo "npm is not installed: the validators of $here/package.json cannot be installed" >&2
    [ "${CI:-}" = true ] && exit 1
    exit 77
fi
mkdir -p "$dir"
# installed.lock is written last, so an install cut short is done again.
if cmp -s "$here/package-lock.json" "$dir/installed.lock"; then
    exit 0
fi
cp "$here/package.json" "$here/package-lock.json" "$dir/"
# Install scripts stay off, so that no package runs code at install time; the one the
# multitool has only makes its program executable, which is done here instead.
(cd "$dir" && npm ci --ignore-scripts --no-audit --no-fund --cache "$dir/.npm-cache" >/dev/null)
chmod u+x "$dir"/node_modules/@microsoft/sarif-multitool-linux/Sarif.Multitool
cp "$here/package-lock.json" "$dir/installed.lock"
echo "installed the validators into $dir/node_modules"
