#!/bin/sh
# Puts the SARIF 2.1.0 schema into DIR when it is not there yet: Microsoft's copy, as the
# npm registry ships it in @microsoft/jest-sarif. The file's digest is checked, so that a
# changed schema is noticed rather than validated against.
#   fetch-sarif-schema.sh DIR
set -eu
name=sarif-2.1.0-rtm.5.json
digest=2d99159ae54a3eea97f81781cff48780548657c35949f4b7f25e99a2ba4de4f8
dir=$1
mkdir -p "$dir"
if [ -f "$dir/$name" ] && echo "$digest  $dir/$name" | sha256sum -c --status; then
    exit 0
fi
work=$(mktemp -d "$dir/fetch.XXXXXX")
trap 'rm -rf "$work"' EXIT
(cd "$work" && npm pack --silent --cache "$work/cache" @microsoft/jest-sarif@1.0.0-beta.0 >/dev/null)
tar -xzf "$work"/microsoft-jest-sarif-*.tgz -C "$work" "package/lib/schemas/$name"
echo "$digest  $work/package/lib/schemas/$name" | sha256sum -c --status ||
    { echo "$name from the npm registry does not have the expected digest" >&2; exit 1; }
mv "$work/package/lib/schemas/$name" "$dir/$name"
echo "fetched $dir/$name"
