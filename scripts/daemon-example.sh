#!/usr/bin/env bash
# Runs the daemon example on the example channel tables and on tables its policies refuse,
# and checks its exit codes and log lines.
#   scripts/daemon-example.sh [EMULATOR...] DAEMON
set -euo pipefail
cd "$(dirname "$0")/.."
daemon=("$@")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Runs the daemon with the arguments after the expected exit code; its log is in $work/log.
expect_exit() {
    local want=$1 rc=0
    shift
    "${daemon[@]}" "$@" >"$work/log" 2>&1 || rc=$?
    if [ "$rc" -ne "$want" ]; then
        cat "$work/log"
        echo "daemon example: exit $rc, expected $want, for: $*"
        exit 1
    fi
}
# The log holds a line that starts with the text given.
expect_line() {
    awk -v start="$1" 'index($0, start) == 1 { found = 1 } END { exit !found }' "$work/log" || {
        cat "$work/log"
        echo "daemon example: no line starting with: $1"
        exit 1
    }
}

expect_exit 0 examples/channel-tables/board.json
expect_line "INF::examples/channel-tables/board.json: 2 channel tables"
if grep -q ': /' "$work/log"; then
    cat "$work/log"
    echo "daemon example: a finding on the exact tables"
    exit 1
fi

expect_exit 0 examples/channel-tables/hand-edited.json
expect_line "examples/channel-tables/hand-edited.json:100:6: /0/channels/2/input/state: \"enabled\" read as \"Disabled\""
expect_line "INF::examples/channel-tables/hand-edited.json:"

expect_exit 1 --refuse dropped examples/channel-tables/hand-edited.json
expect_line "ERR::examples/channel-tables/hand-edited.json refused: a finding of kind dropped at /0/channels/3/name"

printf '[{"id": 1, "id": 2, "channels": []}]\n' >"$work/twice.json"
expect_exit 1 "$work/twice.json"
expect_line "ERR::$work/twice.json refused: a finding of kind duplicate-member at /0/id"
expect_exit 0 --ignore duplicate-member "$work/twice.json"

printf '[{"channels": [}\n' >"$work/broken.json"
expect_exit 2 "$work/broken.json"
expect_line "ERR::$work/broken.json:1:"
