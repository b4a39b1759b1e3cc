#!/usr/bin/env python3
"""Feeds every document of the repository, and variants of them full of comments, through
every format of `zelct check` as every kind, and checks that what comes out can be trusted:

  machine_output.py TOOL SOURCE_DIR

  --json and --format sarif    one strict JSON document (no duplicate member, no NaN or
                               infinite number, valid UTF-8) naming every file checked
  text and --format github     valid UTF-8 without a control character, on both streams

The documents are the inputs of the command-line cases (the reading traps among them), the
examples and the fuzz corpora.
The tool may be a command line with its words separated by "|" (an emulator in front).
"""
import glob
import json
import os
import re
import subprocess
import sys
import tempfile

FORMATS = (["--format", "json"], ["--format", "sarif"], ["--format", "github"], [])

# Comments placed wherever JSON allows white space: before the document, between a member's
# name and its colon, after a value, inside empty containers and after the document.
COMMENTED = [
    b'[ /* lead */ {"id": 1, "type": "madi", "position": 0, "x": {"y": 1 /* inner */ } } ]',
    b'// whole line\n{"name" /* n */ : "x" // after\n, "y": [ /* empty */ ]} /* tail */',
    b'{"a": {"b": [1, /* two */ 2.5, "c" /* end */]}, "d": null /* n */, "e": true} // t',
    # Members whose names come out alike if a raw byte and its escape are not kept apart.
    b'{"\xff": 1, "\\\\xff": 2, "x\\\\": "\\\\", "x\\u005c": 3}',
    # Names and texts that would start a workflow command, or carry control characters.
    b'{"::error file=a.json::forged": 1, "##[add-mask]x": "\\u001b[2J##[stop-commands]t",'
    b' "\\u3000::warning::w": "\\u0007\\u0000\\u0085", "\\u00a0::notice::n": 2}',
]


class Strict(Exception):
    pass


def refuse_duplicates(pairs):
    names = [name for name, _ in pairs]
    if len(names) != len(set(names)):
        raise Strict(f"duplicate member among {names}")
    return dict(pairs)


def refuse_constant(name):
    raise Strict(f"{name} is no JSON number")


def finite(text):
    number = float(text)
    if number in (float("inf"), float("-inf")):
        raise Strict(f"{text} is no finite number")
    return number


def strict_json(data):
    return json.loads(data.decode("utf-8"), object_pairs_hook=refuse_duplicates,
                      parse_constant=refuse_constant, parse_float=finite)


def documents(source):
    found = []
    patterns = [("tests", "cli", "inputs", "*"), ("tests", "cli", "*", "input.json"),
                ("tests", "cli", "*", "stdin"), ("examples", "*", "*.json"),
                ("fuzz", "corpus", "*", "*")]
    for pattern in patterns:
        for path in sorted(glob.glob(os.path.join(source, *pattern))):
            if os.path.isfile(path) and not os.path.islink(path):
                found.append(path)
    return found


def commented_variant(value, depth=0):
    """The value written back with a comment around every value and member name."""
    mark = f"/* {depth} */".encode()
    if isinstance(value, dict):
        members = [json.dumps(name).encode() + b" " + mark + b": " +
                   commented_variant(item, depth + 1) for name, item in value.items()]
        return b"{ " + mark + b" " + b", ".join(members) + b" }"
    if isinstance(value, list):
        elements = [commented_variant(item, depth + 1) + b" // " + mark + b"\n" for item in value]
        return b"[ " + b", ".join(elements) + b" ]"
    return json.dumps(value).encode() + b" " + mark


def variants(paths, folder):
    """Every document that is JSON, written again with comments everywhere, and the hand-made
    commented documents; their paths in `folder`."""
    written = []
    for index, data in enumerate(COMMENTED):
        written.append(os.path.join(folder, f"commented-{index}.json"))
        with open(written[-1], "wb") as out:
            out.write(data)
    # File names that would start a workflow command where they begin a line, given relative
    # to the folder the tool runs in.
    for name in ("::error file=README.md,line=1,title=FORGED::y.json", "\u3000::add-mask::x.json"):
        with open(os.path.join(folder, name), "wb") as out:
            out.write(COMMENTED[0])
        written.append(name)
    for index, path in enumerate(paths):
        try:
            with open(path, "rb") as document:
                value = json.loads(document.read().decode("utf-8"))
        except ValueError:
            continue
        written.append(os.path.join(folder, f"variant-{index}.json"))
        with open(written[-1], "wb") as out:
            out.write(b"/* lead */ " + commented_variant(value) + b" // tail\n")
    return written


def kinds(tool):
    listed = subprocess.run(tool + ["kinds"], capture_output=True, check=True, text=True)
    return [line.split()[0] for line in listed.stdout.splitlines()]


def plain_text_problems(stream, data):
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError as error:
        return [f"{stream} is not UTF-8: {error}"]
    return [f"{stream} line {number}: control character in {line!r}"
            for number, line in enumerate(text.split("\n"), 1)
            if any(ord(c) < 0x20 or 0x7F <= ord(c) < 0xA0 for c in line)]


# What the runner of GitHub workflows trims before it looks for "::" (.NET's white space).
RUNNER_SPACE = "".join(map(chr, [*range(0x09, 0x0E), 0x20, 0x85, 0xA0, 0x1680, *range(0x2000, 0x200B),
                                 0x2028, 0x2029, 0x202F, 0x205F, 0x3000]))
OWN_COMMAND = re.compile(r"^::(warning|error) (file=[^,:]*,(line=\d+,col=\d+,)?)?title=[^:]*::")


def workflow_problems(stream, data):
    """Lines the runner would take for a command that is not zelct's own annotation: "::" at
    the start after white space, or the older "##[" anywhere."""
    problems = []
    for number, line in enumerate(data.decode("utf-8", "replace").split("\n"), 1):
        if OWN_COMMAND.match(line):
            continue
        if line.lstrip(RUNNER_SPACE).startswith("::") or "##[" in line:
            problems.append(f"{stream} line {number} reads as a workflow command: {line!r}")
    return problems


def machine_problems(format_name, data, files, exit_code):
    """What is wrong with a --json report (one entry a file, the worst exit theirs) or a SARIF
    log (one run whose invocation gives the exit, a rule and message for every result)."""
    try:
        document = strict_json(data)
    except (Strict, ValueError) as error:
        return [f"standard output is not strict JSON: {error}"]
    if format_name == "json":
        if len(document) != len(files):
            return [f"{len(document)} files reported for {len(files)} checked"]
        worst = max(entry["exit"] for entry in document)
        return [] if worst == exit_code else [f"worst exit {worst} reported, {exit_code} given"]
    run = document["runs"][0]
    problems = []
    if document["version"] != "2.1.0" or len(document["runs"]) != 1:
        problems.append("not one run of a SARIF 2.1.0 log")
    if run["invocations"][0]["exitCode"] != exit_code:
        problems.append(f"exit {run['invocations'][0]['exitCode']} logged, {exit_code} given")
    rules = [rule["id"] for rule in run["tool"]["driver"]["rules"]]
    for result in run["results"]:
        if rules[result["ruleIndex"]] != result["ruleId"] or not result["message"]["text"]:
            problems.append(f"result without its rule or message: {result}")
    return problems


def check(tool, kind, option, files, cwd):
    result = subprocess.run(tool + ["check"] + option + [kind] + files, capture_output=True,
                            cwd=cwd, timeout=600)
    format_name = option[1] if option else "text"
    problems = []
    if result.returncode not in (0, 1, 2):
        problems.append(f"exit {result.returncode}")
    if format_name in ("json", "sarif"):
        problems += machine_problems(format_name, result.stdout, files, result.returncode)
    else:
        problems += plain_text_problems("standard output", result.stdout)
    problems += plain_text_problems("standard error", result.stderr)
    if format_name == "github":
        problems += workflow_problems("standard output", result.stdout)
        problems += workflow_problems("standard error", result.stderr)
    return [f"check {' '.join(option)} {kind}: {problem}" for problem in problems]


def main():
    # The fuzz corpora nest a thousand deep, and findings quote what they nest.
    sys.setrecursionlimit(20000)
    tool = sys.argv[1].split("|")
    source = os.path.abspath(sys.argv[2])
    paths = documents(source)
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        files = paths + variants(paths, folder)
        for kind in kinds(tool):
            for option in FORMATS:
                failures += check(tool, kind, option, files, folder)
        print(f"{len(files)} documents ({len(files) - len(paths)} commented) checked as "
              f"{len(kinds(tool))} kinds in {len(FORMATS)} formats")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
