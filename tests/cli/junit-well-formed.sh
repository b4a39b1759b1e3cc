#!/usr/bin/env bash
# zelct check --format junit writes well-formed XML whatever the file names and the documents
# hold: "]]>", "<", "&", quotes, control characters, bytes that are not UTF-8, NUL bytes in a
# document. The report is parsed with Python's xml.etree and, when it is there, xmllint; the
# test cases, failures and errors must be those of the files, with the names shown escaped.
#   tests/cli/junit-well-formed.sh TOOL      (run in tests/cli; $ZELCT_EMULATOR for a cross build)
set -euo pipefail
tool=$1
cd "$(dirname "$0")"
read -r -a emulator <<<"${ZELCT_EMULATOR:-}"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tree=$scratch/tree
mkdir -p "$tree"
printf '{"kinds": {"*.json": "sfp"}}\n' >"$tree/.zelct.json"
cp inputs/sfp-control-bytes.json "$tree/$(printf 'a]]>b<c&d"e.json')"
cp inputs/sfp-findings.json "$tree/$(printf "q'\x01\x1b[2J\xff.json")"
printf '{"vendor": "x\\u0000y", "present": true}\0{"after": "the NUL"}' >"$tree/$(printf 'nul\tname.json')"
printf '{"present": tru' >"$tree/$(printf 'broken\x7f.json')"
cp inputs/sfp-clean.json "$tree/$(printf 'new\nevil.json: sfp (forged)\nline.json')"

# A newline in a name never starts a line of its own in the list of files either.
"${emulator[@]}" "$tool" check --list-files "$tree" >"$scratch/list"
[ "$(wc -l <"$scratch/list")" -eq 5 ] || { echo "--list-files: not one line a file:"; cat "$scratch/list"; exit 1; }
grep -Fq 'new\nevil.json: sfp (forged)\nline.json: sfp (' "$scratch/list" || { echo "--list-files: the name is not escaped:"; cat "$scratch/list"; exit 1; }

set +e
"${emulator[@]}" "$tool" check --format junit --no-time "$tree" >"$scratch/report.xml" 2>"$scratch/stderr"
exit_code=$?
set -e
[ "$exit_code" -eq 2 ] || { echo "exit $exit_code, expected 2"; cat "$scratch/stderr"; exit 1; }
if command -v xmllint >/dev/null; then
    xmllint --noout "$scratch/report.xml"
fi
python3 - "$scratch/report.xml" "$tree" <<'PY'
import sys
import xml.etree.ElementTree as ET

report, tree = sys.argv[1], sys.argv[2]
suite = ET.parse(report).getroot().find("testsuite")
cases = {case.get("name")[len(tree) + 1:]: case for case in suite.findall("testcase")}
expected = {'a]]>b<c&d"e.json', "q'\\x01\\x1b[2J\\xff.json", "nul\\tname.json", "broken\\x7f.json",
            "new\\nevil.json: sfp (forged)\\nline.json"}
assert set(cases) == expected, sorted(cases)
assert suite.get("tests") == "5" and suite.get("errors") == "1", suite.attrib
assert all(case.get("classname") == "sfp" for case in cases.values())
forged = cases["q'\\x01\\x1b[2J\\xff.json"].findall("failure")
assert {f.get("type") for f in forged} >= {"dropped", "changed", "added"}, forged
assert any(f.get("message") == "/vendor: dropped (never read)" for f in forged)
nul = cases["nul\\tname.json"].findall("failure")
assert any(f.get("type") == "after-nul" for f in nul), [f.attrib for f in nul]
assert any(f.get("type") == "nul-in-string" for f in nul), [f.attrib for f in nul]
broken = cases["broken\\x7f.json"].find("error")
assert broken is not None and broken.text.startswith(tree + "/broken\\x7f.json:1:"), broken
print("junit-well-formed: 5 hostile files, a well-formed report")
PY
