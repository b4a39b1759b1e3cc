#!/usr/bin/env bash
# The zelct-check hook of .pre-commit-hooks.yaml, run by Debian's pre-commit on a throwaway
# repository without any network: a project with a .zelct.json, staged files that it maps and
# one it does not (package.json). The hook passes on a document the library understands
# exactly, and fails on one with findings, naming the finding. The hook's repository is a copy
# of the manifest committed in a throwaway repository too, so the test reads the manifest as
# it is in the source tree, committed or not.
#   tests/cli/pre-commit-hook.sh TOOL      ($ZELCT_EMULATOR for a cross build)
# Exits 77 (skipped) when pre-commit is not installed.
set -euo pipefail
tool=$(realpath "$1")
cases=$(cd "$(dirname "$0")" && pwd)
manifest=$cases/../../.pre-commit-hooks.yaml
if ! command -v pre-commit >/dev/null; then
    echo "pre-commit-hook: skipped, pre-commit is not installed (apt-get install pre-commit)"
    exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export PRE_COMMIT_HOME=$scratch/cache HOME=$scratch/home GIT_CONFIG_NOSYSTEM=1
export GIT_AUTHOR_NAME=test GIT_AUTHOR_EMAIL=test@example.invalid
export GIT_COMMITTER_NAME=test GIT_COMMITTER_EMAIL=test@example.invalid
mkdir -p "$HOME" "$scratch/bin"
# zelct on PATH, as the hook's "language: system" expects it.
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "${ZELCT_EMULATOR:-}" "$tool" >"$scratch/bin/zelct"
chmod +x "$scratch/bin/zelct"
export PATH=$scratch/bin:$PATH

hooks=$scratch/hooks
git init -q -b main "$hooks"
cp "$manifest" "$hooks/.pre-commit-hooks.yaml"
git -C "$hooks" add .pre-commit-hooks.yaml
git -C "$hooks" commit -q -m hooks
rev=$(git -C "$hooks" rev-parse HEAD)

project=$scratch/project
git init -q -b main "$project"
cd "$project"
printf 'repos:\n  - repo: %s\n    rev: %s\n    hooks:\n      - id: zelct-check\n' "$hooks" "$rev" \
    >.pre-commit-config.yaml
printf '{"kinds": {"devices/*/sfp-*.json": "sfp"}}\n' >.zelct.json
mkdir -p devices/board-1
cp "$cases/inputs/sfp-clean.json" devices/board-1/sfp-0.json
printf '{"name": "not a device document"}\n' >package.json
git add .pre-commit-config.yaml .zelct.json devices package.json

if ! pre-commit run >"$scratch/good.log" 2>&1; then
    echo "pre-commit-hook: the hook failed on a document understood exactly:"
    cat "$scratch/good.log"
    exit 1
fi
grep -Eq '^zelct check\.+Passed$' "$scratch/good.log" || {
    echo "pre-commit-hook: the hook did not run:"
    cat "$scratch/good.log"
    exit 1
}
git commit -q -m good

cp "$cases/inputs/sfp-findings.json" devices/board-1/sfp-1.json
git add devices/board-1/sfp-1.json
if pre-commit run >"$scratch/bad.log" 2>&1; then
    echo "pre-commit-hook: the hook passed a document with findings:"
    cat "$scratch/bad.log"
    exit 1
fi
grep -Eq '^zelct check\.+Failed$' "$scratch/bad.log" &&
    grep -Fq 'devices/board-1/sfp-1.json:2:2: /present: 1 read as true' "$scratch/bad.log" || {
    echo "pre-commit-hook: the failure does not name the finding:"
    cat "$scratch/bad.log"
    exit 1
}
# Only the staged file is checked: the committed one is not named again.
if grep -Fq 'sfp-0.json' "$scratch/bad.log"; then
    echo "pre-commit-hook: the hook checked a file that was not staged:"
    cat "$scratch/bad.log"
    exit 1
fi
echo "pre-commit-hook: passes a clean document, fails a document with findings and names them"
