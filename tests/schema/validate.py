#!/usr/bin/env python3
"""Checks zelct's JSON Schemas against the library with a real validator (jsonschema).

  validate.py written   TOOL SOURCE_DIR   every document the library writes validates
  validate.py traps     TOOL SOURCE_DIR   every trap document fails, at what the library changes
  validate.py installed TOOL SCHEMA_DIR   the schemas the build wrote are zelct schema's output
  validate.py spellings TOOL SOURCE_DIR   a channel's kind name is refused exactly when rewritten

The tool may be a command line ("qemu-arm -L /usr/arm-linux-gnueabihf build/zelct"), split on
"|" so that an emulator runs it.
"""
import glob
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile

import jsonschema

# Kinds whose records stand alone in a fuzz corpus, by the class name `zelct kinds` gives.
CLASS_IN_DESCRIPTION = re.compile(r"\(([A-Za-z]+)\)$")


def run(tool, *args, expect=(0,)):
    result = subprocess.run(tool + list(args), capture_output=True, text=True)
    if result.returncode not in expect:
        sys.exit(f"{' '.join(tool + list(args))}: exit {result.returncode}\n{result.stderr}")
    return result


def kinds(tool):
    found = {}
    for line in run(tool, "kinds").stdout.splitlines():
        name = line.split()[0]
        match = CLASS_IN_DESCRIPTION.search(line)
        found[name] = match.group(1) if match else None
    return found


def validator(tool, kind, cache={}):
    if kind not in cache:
        schema = json.loads(run(tool, "schema", kind).stdout)
        jsonschema.Draft202012Validator.check_schema(schema)
        cache[kind] = jsonschema.Draft202012Validator(schema)
    return cache[kind]


def pointer(path):
    return "".join("/" + str(step).replace("~", "~0").replace("/", "~1") for step in path)


def errors_of(tool, kind, document):
    return list(validator(tool, kind).iter_errors(document))


def normalized(tool, kind, path):
    """What the library writes after reading the file (a list of one document), or [] when it
    cannot read it."""
    result = run(tool, "normalize", kind, path, expect=(0, 2))
    return [json.loads(result.stdout)] if result.returncode == 0 else []


def expect_valid(tool, kind, document, what, failures):
    for error in errors_of(tool, kind, document):
        failures.append(f"{what} ({kind}): {pointer(error.absolute_path)}: {error.message}")


def check_written(tool, source):
    failures = []
    count = 0
    names = kinds(tool)
    for kind in names:
        expect_valid(tool, kind, json.loads(run(tool, "template", kind).stdout),
                     f"zelct template {kind}", failures)
        count += 1
    for path in sorted(glob.glob(os.path.join(source, "examples", "*", "*.json"))):
        kind = os.path.basename(os.path.dirname(path))
        documents = normalized(tool, kind, path)
        if not documents:
            failures.append(f"{path}: the library cannot read an example")
            continue
        expect_valid(tool, kind, documents[0], f"normalized {path}", failures)
        count += 1
    by_class = {cls: kind for kind, cls in names.items() if cls}
    for folder in sorted(glob.glob(os.path.join(source, "fuzz", "corpus", "*"))):
        kind = by_class.get(os.path.basename(folder))
        if kind is None:
            continue
        for path in sorted(glob.glob(os.path.join(folder, "*"))):
            for document in normalized(tool, kind, path):
                expect_valid(tool, kind, document, f"read and written {path}", failures)
                count += 1
    return count, failures


def check_command(cmd_file):
    """(kind, files) of a command-line case that checks files as a kind with no option but
    --json, else None. File names keep their bytes (surrogate escapes)."""
    text = open(cmd_file, encoding="utf-8", errors="surrogateescape").read()
    words = shlex.split(text)
    if words[:1] != ["check"]:
        return None
    words = [w for w in words[1:] if w != "--json"]
    if len(words) < 2 or any(w.startswith("-") or "@" in w for w in words):
        return None
    return words[0], words[1:]


def trap_documents(source):
    """(kind, path) of each hand-edited example and each trap or findings input of the CLI cases."""
    traps = [(os.path.basename(os.path.dirname(p)), p)
             for p in sorted(glob.glob(os.path.join(source, "examples", "*", "hand-edited.json")))]
    cli = os.path.join(source, "tests", "cli")
    seen = set()
    for cmd_file in sorted(glob.glob(os.path.join(cli, "*", "cmd"))):
        command = check_command(cmd_file)
        if command is None:
            continue
        kind, files = command
        for name in files:
            base = os.path.basename(name)
            if not (base.startswith("trap-") or base.endswith("-findings.json")):
                continue
            path = os.path.normpath(os.path.join(cli, name))
            if path not in seen and os.path.isfile(path):
                seen.add(path)
                traps.append((kind, path))
    return traps


def error_places(error):
    """Where an error is: the members an object may not have, else the node that fails."""
    where = pointer(error.absolute_path)
    if error.validator == "additionalProperties":
        known = set(error.schema.get("properties", {}))
        return [where + pointer([name]) for name in error.instance if name not in known]
    return [where]


def related(error_path, finding_path):
    """An error at the finding's node, inside it, or at the object that holds it."""
    return (error_path == finding_path or error_path.startswith(finding_path + "/")
            or finding_path.startswith(error_path + "/"))


# What the library's classes make of a document; the parser's own findings (comments,
# duplicate members) are about the text, which no schema sees.
READ_FINDINGS = {"dropped", "changed", "not-written-back", "hidden-state"}


# Findings of the traps that no JSON Schema can express: an alarm whose type another alarm of
# the set already has (the set keeps one of them), and a "remote-sid-str" other than the text
# of "remote-sid" (the library writes the one from the other). Every other finding of every
# trap must be flagged by the schema; each of these must be a finding the schema leaves.
INEXPRESSIBLE = {
    ("alarms-findings.json", "/alarms/2"),
    ("session-streams-findings.json", "/1/remote-sid-str"),
}


def check_traps(tool, source):
    failures = []
    unflagged = set()
    traps = trap_documents(source)
    for kind, path in traps:
        report = json.loads(run(tool, "check", "--json", kind, path, expect=(1,)).stdout)
        findings = [f["path"] for f in report[0]["findings"] if f["finding"] in READ_FINDINGS]
        try:
            document = json.load(open(path))
        except ValueError as error:
            print(f"{path}: skipped, not strict JSON ({error})")
            continue
        if not findings:
            print(f"{path}: skipped, only the parser's findings")
            continue
        errors = errors_of(tool, kind, document)
        if not errors:
            failures.append(f"{path} ({kind}): valid, yet the library changes {findings}")
            continue
        places = [place for error in errors for place in error_places(error)]
        for error in errors:
            if not any(related(place, finding)
                       for place in error_places(error) for finding in findings):
                where = pointer(error.absolute_path)
                failures.append(f"{path}: {where}: {error.message}: the library keeps it")
        flagged = [f for f in findings if any(related(place, f) for place in places)]
        print(f"{path} ({kind}): {len(errors)} errors; flags {len(flagged)} of "
              f"{len(findings)} findings: {flagged}")
        for finding in findings:
            if finding not in flagged:
                unflagged.add((os.path.basename(path), finding))
    for name, finding in sorted(unflagged - INEXPRESSIBLE):
        failures.append(f"{name}: {finding}: the library changes it, the schema does not say so")
    for name, finding in sorted(INEXPRESSIBLE - unflagged):
        failures.append(f"{name}: {finding}: listed as inexpressible, yet no such unflagged "
                        "finding")
    return len(traps), failures


# Kind names in the cases and the other spellings a board's documents carry, and texts that
# are no kind at all. Which of them the library writes back otherwise, or keeps behind an
# unchanged text, is asked of the library.
SPELLINGS = ["tdm", "TDM", "Tdm", "tDm", "i32s", "I32S", "I32s", "madi", "MADI", "Madi", "mAdI",
             "aes10", "AES10", "Aes10", "aes3", "AES3", "sdi-video", "SDI-VIDEO", "Sdi-Video",
             "hdmi-audio", "HDMI-Audio", "auto", "AUTO", "i2s", "I2S", "madi ", "MADI ", "sdi",
             "aes", "", "dante"]


def check_spellings(tool, source):
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "channel.json")
        for spelling in SPELLINGS:
            document = {"id": 1, "type": spelling, "position": 0}
            with open(path, "w") as out:
                json.dump(document, out)
            report = json.loads(run(tool, "check", "--json", "channel-id", path,
                                    expect=(0, 1)).stdout)
            rewritten = any(f["path"] == "/type" for f in report[0].get("findings", []))
            refused = bool(errors_of(tool, "channel-id", document))
            if rewritten != refused:
                failures.append(f"type {spelling!r}: the library "
                                f"{'rewrites' if rewritten else 'keeps'} it, the schema "
                                f"{'refuses' if refused else 'accepts'} it")
    return len(SPELLINGS), failures


def check_installed(tool, folder):
    failures = []
    names = kinds(tool)
    for kind in names:
        path = os.path.join(folder, f"{kind}.schema.json")
        if not os.path.isfile(path):
            failures.append(f"{path}: missing")
        elif open(path).read() != run(tool, "schema", kind).stdout:
            failures.append(f"{path}: differs from zelct schema {kind}")
    extra = set(os.listdir(folder)) - {f"{kind}.schema.json" for kind in names}
    failures += [f"{folder}/{name}: no kind of that name" for name in sorted(extra)]
    return len(names), failures


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    mode, tool, where = sys.argv[1], sys.argv[2].split("|"), sys.argv[3]
    check = {"written": check_written, "traps": check_traps, "installed": check_installed,
             "spellings": check_spellings}[mode]
    count, failures = check(tool, where)
    for failure in failures:
        print("FAIL", failure)
    print(f"{mode}: {count} documents, {len(failures)} failures")
    if count == 0:
        sys.exit("nothing was checked")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
