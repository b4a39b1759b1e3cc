#!/usr/bin/env bash
# Installs what is missing, builds the library, and runs the typical round of a device
# process: build a document, store it with the file store, load it back and print it.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

ensure_packages "${BASE_PACKAGES[@]}"
cmake --preset release >/dev/null
cmake --build --preset release -j "$(jobs_count)"
ctest --preset release -R '^consumer\.add_subdirectory$' --output-on-failure -V | sed -n '/^[0-9]*: {/,/^[0-9]*: }/p'
