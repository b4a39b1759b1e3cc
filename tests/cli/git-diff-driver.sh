#!/bin/sh
# scripts/zelct-git-diff run by git itself, as the README sets it up, on a repository of its
# own: a document reformatted shows no change on the device, a state written otherwise shows
# the device's change at its place, and a document in a folder that names no kind shows as its
# texts differ.
#   git-diff-driver.sh TOOL SOURCE_DIR
set -eu
tool=$1
source=$2
command -v git >/dev/null || { echo "git is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
git init -q .
mkdir channel-list session-streams notes
printf '[{"id": 1, "type": "madi", "position": 0}]\n' >channel-list/board.json
cp "$source/tests/cli/inputs/trap-state-enabled.json" session-streams/board.json
printf '{"a": 1}\n' >notes/board.json
echo '*.json diff=zelct' >.gitattributes
git add .
git -c user.name=test -c user.email=test@invalid commit -qm documents
printf '[\n  {"position": 0, "type": "MADI", "id": 1}\n]\n' >channel-list/board.json
sed 's/"enabled"/"Enabled"/' "$source/tests/cli/inputs/trap-state-enabled.json" \
    >session-streams/board.json
printf '{"a": 2}\n' >notes/board.json

actual=$(ZELCT=$tool git -c diff.zelct.command="$source/scripts/zelct-git-diff" diff)
expected='zelct diff channel-list a/channel-list/board.json b/channel-list/board.json
b/channel-list/board.json: no change on the device
--- a/notes/board.json
+++ b/notes/board.json
@@ -1 +1 @@
-{"a": 1}
+{"a": 2}
zelct diff session-streams a/session-streams/board.json b/session-streams/board.json
b/session-streams/board.json:12:3: /0/state: "Disabled" -> "Enabled"'
if [ "$actual" != "$expected" ]; then
    echo "git diff with the zelct driver printed:"
    echo "$actual"
    echo "expected:"
    echo "$expected"
    exit 1
fi
echo "git diff driver: as expected"
