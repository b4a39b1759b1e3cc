#!/usr/bin/env python3
"""Checks `zelct check --format sarif` and `--format github` against `--format json`.

  formats.py sarif  TOOL SOURCE_DIR SARIF_SCHEMA   a valid SARIF 2.1.0 log with a result for
                                                   each finding: file, line, column, JSON path,
                                                   the device's reading, the same exit code
  formats.py github TOOL SOURCE_DIR                one annotation a finding, errors for files
                                                   that cannot be used, the same exit code

The tool may be a command line with its words separated by "|" (an emulator in front). The
files are those of the command-line cases under tests/cli, checked from that folder.
"""
import glob
import json
import os
import re
import subprocess
import sys
import urllib.parse

import jsonschema

from validate import check_command

# The command-line cases hold documents nested as deep as the device parses (1,000 values),
# which zelct quotes back; Python's own decoder recurses once per level.
sys.setrecursionlimit(10000)


def check_runs(source):
    """The kind and files of every check case of tests/cli, as (kind, [files])."""
    runs = []
    for cmd_file in sorted(glob.glob(os.path.join(source, "tests", "cli", "*", "cmd"))):
        command = check_command(cmd_file)
        if command is not None and command not in runs:
            runs.append(command)
    return runs


def run(tool, cli, *args):
    result = subprocess.run(tool + list(args), capture_output=True, cwd=cli)
    return result.returncode, result.stdout.decode("utf-8", "replace")


def json_report(tool, cli, kind, files):
    code, out = run(tool, cli, "check", "--format", "json", kind, *files)
    return code, json.loads(out)


# How JSON output writes what is not valid UTF-8 text: a stray byte as \\xNN, a backslash as
# two, so that the two never meet.
JSON_ESCAPE = re.compile(r"\\(\\|x[89a-fA-F][0-9a-fA-F])")


def raw_name(name):
    """A file name as JSON writes it with its bytes back, as surrogate escapes."""
    return JSON_ESCAPE.sub(
        lambda m: "\\" if m.group(1) == "\\" else chr(0xDC00 + int(m.group(1)[1:], 16)), name)


def terminal_form(text):
    """A text as JSON writes it, shown as the text format shows it: control characters and
    stray bytes as escapes, a backslash as itself."""
    shown = []
    for character in raw_name(text):
        code = ord(character)
        if character in "\n\r\t":
            shown.append({"\n": "\\n", "\r": "\\r", "\t": "\\t"}[character])
        elif code < 0x20 or code == 0x7F:
            shown.append(f"\\x{code:02x}")
        elif 0x80 <= code < 0xA0:
            shown.append(f"\\xc2\\x{code:02x}")
        elif 0xDC80 <= code <= 0xDCFF:
            shown.append(f"\\x{code - 0xDC00:02x}")
        else:
            shown.append(character)
    return "".join(shown)


def expected_items(report, omitted=False):
    """What each format must say, in order: ("finding", file, finding) for each finding, then
    ("unusable", file, checked) for a file that cannot be used, file after file; a problem
    of the command itself (the JSON error document) as ("problem", file, report). With
    omitted, ("omitted", file, checked) after the findings of a file that kept only some."""
    if isinstance(report, dict):
        return [("problem", report.get("file", ""), report)]
    items = []
    for checked in report:
        for finding in checked.get("findings", []):
            items.append(("finding", checked["file"], finding))
        if omitted and checked.get("omitted"):
            items.append(("omitted", checked["file"], checked))
        if checked["result"] == "unusable":
            items.append(("unusable", checked["file"], checked))
    return items


def format_runs(tool, source, fmt, failures):
    """Each check case run with --format json and with --format fmt: (what, code, report,
    out), after a failure is noted for exit codes that differ."""
    cli = os.path.join(source, "tests", "cli")
    for kind, files in check_runs(source):
        what = f"check --format {fmt} {kind} {' '.join(files)}"
        code, report = json_report(tool, cli, kind, files)
        fmt_code, out = run(tool, cli, "check", "--format", fmt, kind, *files)
        if fmt_code != code:
            failures.append(f"{what}: exit {fmt_code}, json gives {code}")
        yield what, code, report, out


def check_sarif(tool, source, schema_path):
    schema = json.load(open(schema_path))
    validator = jsonschema.validators.validator_for(schema)(schema)
    failures, count = [], 0
    for what, code, report, out in format_runs(tool, source, "sarif", failures):
        count += 1
        try:
            log = json.loads(out)
        except ValueError as error:
            failures.append(f"{what}: not JSON: {error}")
            continue
        failures += [f"{what}: {'/'.join(map(str, e.absolute_path))}: {e.message}"
                     for e in validator.iter_errors(log)]
        failures += [f"{what}: {problem}" for problem in sarif_problems(log, report, code)]
    return count, failures


def sarif_problems(log, report, code):
    problems = []
    if log.get("version") != "2.1.0" or len(log.get("runs", [])) != 1:
        return ["not one run of SARIF 2.1.0"]
    run_ = log["runs"][0]
    rules = run_["tool"]["driver"]["rules"]
    ids = [rule["id"] for rule in rules]
    if len(set(ids)) != len(ids):
        problems.append(f"rules named twice: {ids}")
    if run_["invocations"][0]["exitCode"] != code:
        problems.append("the invocation's exit code differs")
    results = run_["results"]
    items = expected_items(report)
    problems_of_command = [item for item in items if item[0] == "problem"]
    items = [item for item in items if item[0] != "problem"]
    notifications = run_["invocations"][0].get("toolExecutionNotifications", [])
    if len(notifications) != len(problems_of_command):
        problems.append(f"{len(notifications)} notifications for {problems_of_command}")
    if run_["invocations"][0]["executionSuccessful"] != (not problems_of_command):
        problems.append("the invocation's success differs")
    if len(results) != len(items):
        problems.append(f"{len(results)} results for {len(items)} findings and unusable files")
    for result, (what, file, item) in zip(results, items):
        location = result["locations"][0]
        physical = location["physicalLocation"]
        region = physical.get("region", {})
        got = {
            "rule": result["ruleId"],
            "rule index": ids[result["ruleIndex"]],
            "file": urllib.parse.unquote(physical["artifactLocation"]["uri"],
                                         errors="surrogateescape"),
            "line": region.get("startLine"),
            "column": region.get("startColumn"),
            "level": result["level"],
        }
        want = {
            "rule": item["finding"] if what == "finding" else "unusable",
            "file": raw_name(file),
            # A result always has a region: the first line where the place is unknown.
            "line": item.get("line", 1), "column": item.get("column"),
            "level": "warning" if what == "finding" else "error",
        }
        want["rule index"] = want["rule"]
        if what == "finding":
            got["path"] = result["properties"]["path"]
            got["logical"] = location["logicalLocations"][0]["fullyQualifiedName"]
            got["message"] = result["message"]["text"]
            want.update(path=item["path"], logical=item["path"], message=item["text"])
            if "understood" in item:
                got["reading"] = result["properties"].get("understood")
                want["reading"] = item["understood"]
        else:
            got["message"] = result["message"]["text"]
            want["message"] = item["error"]
        if got != want:
            problems.append(f"result {got} for {want}")
    return problems


ANNOTATION = re.compile(r"^::(warning|error) (?:file=([^,]*)(?:,line=(\d+),col=(\d+))?,)?"
                        r"title=([^:]*)::(.*)$")


def unescape(text):
    return text.replace("%0A", "\n").replace("%0D", "\r").replace("%3A", ":") \
        .replace("%2C", ",").replace("%25", "%")


def check_github(tool, source):
    failures, count = [], 0
    for what, _, report, out in format_runs(tool, source, "github", failures):
        count += 1
        annotations = [ANNOTATION.match(line) for line in out.splitlines() if line.startswith("::")]
        if None in annotations:
            failures.append(f"{what}: a line that is no annotation: {out!r}")
            continue
        items = expected_items(report, omitted=True)
        if len(annotations) != len(items):
            failures.append(f"{what}: {len(annotations)} annotations for {len(items)} items")
        for annotation, (kind_of, file, item) in zip(annotations, items):
            got = (annotation.group(1), unescape(annotation.group(2) or ""),
                   annotation.group(3), annotation.group(4), unescape(annotation.group(6)))
            place = (str(item["line"]), str(item["column"])) if "line" in item else (None, None)
            message = {"finding": lambda: item["text"], "unusable": lambda: item["error"],
                       "problem": lambda: item["error"],
                       "omitted": lambda: f"... and {item['omitted']:,} more findings like these"
                       }[kind_of]()
            level = "error" if kind_of in ("unusable", "problem") else "warning"
            want = (level, terminal_form(file)) + (place if kind_of != "omitted" else (None, None)) \
                + (terminal_form(message),)
            if got != want:
                failures.append(f"{what}: annotation {got}, expected {want}")
    return count, failures


def main():
    mode = sys.argv[1] if len(sys.argv) > 1 else ""
    if mode == "sarif" and len(sys.argv) == 5:
        count, failures = check_sarif(sys.argv[2].split("|"), sys.argv[3], sys.argv[4])
    elif mode == "github" and len(sys.argv) == 4:
        count, failures = check_github(sys.argv[2].split("|"), sys.argv[3])
    else:
        sys.exit(__doc__)
    for failure in failures:
        print("FAIL", failure)
    print(f"{mode}: {count} check runs, {len(failures)} failures")
    if count == 0:
        sys.exit("nothing was checked")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
