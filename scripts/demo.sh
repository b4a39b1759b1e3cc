#!/usr/bin/env bash
# Installs what is missing, builds everything, and shows what the device's library
# understands from the example documents of a board: `zelct check` over examples/ (one folder
# per document kind; the hand-edited documents hold the classic traps, so their findings and
# exit code 1 are expected), then a video format's figures and a packet time's conversion.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

ensure_packages "${BASE_PACKAGES[@]}"
cmake --preset release >/dev/null
cmake --build --preset release -j "$(jobs_count)"
zelct=build/release/tools/zelct/zelct

# Runs zelct and shows the command; exit codes 0 and 1 are results, 2 and above failures.
show() {
    echo
    echo "\$ zelct $*"
    local rc=0
    "$zelct" "$@" || rc=$?
    [ "$rc" -le 1 ] || { echo "zelct failed with exit code $rc"; exit "$rc"; }
    [ "$rc" -eq 0 ] || echo "(exit code $rc: findings)"
}

# A folder of documents is named after their kind; examples/daemon holds a program, no documents.
for folder in examples/*/; do
    documents=("$folder"*.json)
    [ -e "${documents[0]}" ] || continue
    show check "$(basename "$folder")" "${documents[@]}"
done
show video 1080P59
show ptime --freq 48000 --ptime-us 1000
