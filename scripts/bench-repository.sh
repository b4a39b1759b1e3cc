#!/usr/bin/env bash
# zelct check over a repository of device documents, side by side with JSON Schema validators
# on the same files and schemas: a generated repository of 2,000 devices with five documents
# each (10,000 files, a few percent with traps), kinds from its .zelct.json; zelct with -j 1
# and -j 2, @sourcemeta/jsonschema (a C++ validator) and ajv-cli, one invocation per kind for
# them; peak memory at 1,000 and 10,000 files. Prints a Markdown table with the targets.
# Numbers from a busy machine mean little: run it when the load average is low.
#   scripts/bench-repository.sh [DEVICES]   (2000 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
devices=${1:-2000}

stage "dependencies"
ensure_packages "${BASE_PACKAGES[@]}" time
ensure_npm

stage "build (preset bench, with the tool)"
build=build/bench-check
cmake --preset bench -B "$build" -DZELCT_BUILD_TOOLS=ON >/dev/null
cmake --build "$build" -j "$(jobs_count)" --target zelct zelct_schemas

stage "the validators (npm ci, install scripts off)"
validators=$build/repository-validators
mkdir -p "$validators"
if ! cmp -s bench/repository/package-lock.json "$validators/installed.lock"; then
    cp bench/repository/package.json bench/repository/package-lock.json "$validators/"
    (cd "$validators" && npm ci --ignore-scripts --no-audit --no-fund \
        --cache "$validators/.npm-cache" >/dev/null)
    cp bench/repository/package-lock.json "$validators/installed.lock"
fi

stage "the repositories"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
python3 bench/repository/make-repository.py examples "$work/large" "$devices"
python3 bench/repository/make-repository.py examples "$work/small" $((devices / 10))

stage "zelct check against the validators"
python3 bench/repository/measure.py "$build/tools/zelct/zelct" \
    "$build/share/zelCommonTypes/schemas" "$validators/node_modules/.bin" "$work/large" "$work/small"
