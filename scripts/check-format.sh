#!/usr/bin/env bash
# Fails when a C++ source of the project is not formatted with the committed .clang-format.
set -euo pipefail
cd "$(dirname "$0")/.."
files=$(git ls-files '*.h' '*.cpp' 2>/dev/null || find include src tests tools bench fuzz -name '*.h' -o -name '*.cpp')
# shellcheck disable=SC2086
clang-format --dry-run --Werror $files
echo "format: $(echo "$files" | wc -w) files clean"
scripts/check-sizes.sh
