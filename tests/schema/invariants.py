#!/usr/bin/env python3
"""Two promises of `zelct check`, kept over every document of the repository and variants of
them that carry each reading the device makes differently from the text:

  invariants.py covers-schema TOOL SOURCE_DIR
      every document its kind's schema refuses gets a finding at the refused member or at a
      member or element that holds it (an unusable file counts at the place it names)
  invariants.py strict-reader TOOL SOURCE_DIR
      every text a strict JSON reader refuses while the device's parser takes it gets a
      finding of the text; a text the strict reader takes gets none but an escaped NUL, which
      is JSON yet ends the text for whatever takes it as a C string

Each promise then checks itself: with the findings of one kind taken out of every report, it
must break, for every kind that it is there to hold. So switching a kind of finding off in
the tool fails the test even when no document of the repository changes.

The documents are the examples, the inputs of the command-line cases and the fuzz corpora.
The strict reader is Python's json module refusing duplicate members, NaN and the
infinities, and strings that are not Unicode (lone surrogates).
The tool may be a command line with its words separated by "|" (an emulator in front).
"""
import glob
import json
import os
import re
import subprocess
import sys
import tempfile

import jsonschema

# What the scan of the text reports: the device's parser takes it, a strict reader would not
# or reads it otherwise.
TEXT_FINDINGS = {"duplicate-member", "trailing-text", "comment", "trailing-comma", "after-nul",
                 "not-utf8", "control-in-string", "byte-order-mark", "number-text",
                 "nul-in-string"}
# Of those, the one a strict reader takes all the same.
STRICT_YET_FOUND = {"nul-in-string"}
# Each promise must break when the findings of these kinds are taken out.
HELD_BY_SCHEMA = {"dropped", "changed", "hidden-state"}
HELD_BY_STRICT_READER = TEXT_FINDINGS - STRICT_YET_FOUND


def tool_of(argument):
    return argument.split("|")


def kinds(tool):
    listed = subprocess.run(tool + ["kinds"], capture_output=True, check=True, text=True)
    return [line.split()[0] for line in listed.stdout.splitlines()]


def documents(source):
    found = []
    patterns = [("tests", "cli", "inputs", "*"), ("tests", "cli", "*", "input.json"),
                ("examples", "*", "*.json"), ("fuzz", "corpus", "*", "*")]
    for pattern in patterns:
        for path in sorted(glob.glob(os.path.join(source, *pattern))):
            if os.path.isfile(path) and not os.path.islink(path):
                found.append(path)
    return found


# ---- variants: one reading the device makes differently, placed in a document ----

TOKEN = re.compile(rb'"(?:[^"\\]|\\.)*"|-?[0-9][0-9.eE+-]*|[{}\[\],:]|\s+|/\*.*?\*/|//[^\n]*|.',
                   re.S)


def tokens(data):
    """(start, end, text) of each token of a JSON text, strings and numbers whole."""
    return [(m.start(), m.end(), m.group()) for m in TOKEN.finditer(data)]


def first(data, test):
    for start, end, text in tokens(data):
        if test(text):
            return start, end, text
    return None


def is_number(text):
    return text[:1] in b"-0123456789" and text != b"-"


def is_string(text):
    return text[:1] == b'"' and len(text) >= 2


def replaced(data, found, new):
    start, end, _ = found
    return data[:start] + new + data[end:]


def number_variants(data):
    found = first(data, is_number)
    if found is None:
        return []
    digits = found[2].lstrip(b"-")
    return [replaced(data, found, b"+" + digits), replaced(data, found, b"0" + digits),
            replaced(data, found, b"-"),
            replaced(data, found, found[2] + (b"." if b"." not in found[2] and b"e" not in
                                             found[2].lower() else b""))]


def string_variants(data):
    found = first(data, is_string)
    if found is None:
        return []
    text = found[2]
    return [replaced(data, found, text[:-1] + b"\\u0000x\""),
            replaced(data, found, text[:-1] + b"\tx\""),
            replaced(data, found, text[:-1] + b"\xe9\""),
            replaced(data, found, text[:-1] + b" \"")]


def container_variants(data):
    """A comma before the first closing bracket that follows a value, and the first object's
    first member given again."""
    out = []
    previous = None
    for start, end, text in tokens(data):
        if text in (b"]", b"}") and previous not in (None, b"[", b"{", b","):
            out.append(data[:start] + b"," + data[start:])
            break
        if not text.isspace():
            previous = text
    all_tokens = [t for t in tokens(data) if not t[2].isspace()]
    for i, (start, end, text) in enumerate(all_tokens):
        if text == b"{" and i + 3 < len(all_tokens) and all_tokens[i + 2][2] == b":":
            name, value = all_tokens[i + 1][2], all_tokens[i + 3]
            if value[2] not in (b"{", b"["):
                out.append(data[:end] + name + b": " + value[2] + b", " + data[end:])
                break
    return out


def variants(data):
    return (number_variants(data) + string_variants(data) + container_variants(data) +
            [b"\xef\xbb\xbf" + data, b"/* note */ " + data, data + b" x", data + b"\x00tail"])


# ---- the two readers ----

class Refused(Exception):
    pass


def refuse_duplicates(pairs):
    names = [name for name, _ in pairs]
    if len(names) != len(set(names)):
        raise Refused("duplicate member")
    return dict(pairs)


def refuse_constant(name):
    raise Refused(f"{name} is no JSON number")


def all_unicode(value):
    if isinstance(value, str):
        value.encode("utf-8")  # a lone surrogate raises
    elif isinstance(value, dict):
        for name, item in value.items():
            all_unicode(name)
            all_unicode(item)
    elif isinstance(value, list):
        for item in value:
            all_unicode(item)


def strict_accepts(data):
    try:
        value = json.loads(data.decode("utf-8"), object_pairs_hook=refuse_duplicates,
                           parse_constant=refuse_constant)
        all_unicode(value)
        return True
    except (ValueError, Refused, UnicodeError, RecursionError):
        return False


def checked(tool, kind, paths):
    """zelct check --json over the files as the kind: {path: report}."""
    reports = {}
    for at in range(0, len(paths), 200):
        batch = paths[at:at + 200]
        result = subprocess.run(tool + ["check", "--json", kind, *batch], capture_output=True)
        if result.returncode not in (0, 1, 2):
            sys.exit(f"zelct check {kind}: exit {result.returncode}\n{result.stderr.decode()}")
        for report in json.loads(result.stdout.decode("utf-8")):
            reports[report["file"]] = report
    return reports


def parser_took(report):
    return not (report["result"] == "unusable" and "filemgr-code" in report)


# ---- covers-schema ----

def pointer(path):
    return "".join("/" + str(step).replace("~", "~0").replace("/", "~1") for step in path)


def node_at(document, path):
    for step in path:
        document = document[step]
    return document


def refused_places(error, document):
    """The members an error refuses: the ones an object may not have, the elements past the
    most a list keeps, else the node that fails."""
    where = pointer(error.absolute_path)
    if error.validator is None and isinstance(node_at(document, error.absolute_path), dict):
        # A member refused by a `false` schema: the validator names the object that holds
        # it and quotes the member's value, the very object of the document.
        holder = node_at(document, error.absolute_path)
        return [where + pointer([name]) for name, value in holder.items()
                if value is error.instance]
    if error.validator == "additionalProperties":
        known = set(error.schema.get("properties", {}))
        return [where + pointer([name]) for name in error.instance if name not in known]
    if error.validator == "maxItems":
        return [where + pointer([i]) for i in range(error.validator_value, len(error.instance))]
    return [where]


def encloses(outer, inner):
    return outer == inner or inner.startswith(outer + "/")


def schema_gaps(report, document, errors, skip=frozenset()):
    """What the schema refuses where check says nothing. A usable document needs a finding at
    or around each refused member; one the library refuses stops at its first refused node,
    which must be at or around one of them."""
    found = [f["path"] for f in report.get("findings", []) if f["finding"] not in skip]
    places = [(place, error) for error in errors for place in refused_places(error, document)]
    if report["result"] == "unusable":
        found.append(report.get("path", ""))
        if any(encloses(f, place) for f in found for place, _ in places):
            return []
        return [f"refused, and unusable at {report.get('path', '')!r}, around none of "
                f"{sorted({place for place, _ in places})[:5]}"]
    return [f"{place}: {error.message[:120]}" for place, error in places
            if not any(encloses(f, place) for f in found)]


def covers_schema(tool, source, folder):
    names = kinds(tool)
    validators = {}
    for kind in names:
        schema = json.loads(subprocess.run(tool + ["schema", kind], capture_output=True,
                                           check=True).stdout)
        validators[kind] = jsonschema.Draft202012Validator(schema)
    originals = documents(source)
    own = own_kinds(originals, names)
    written = write_variants(originals, own, folder)
    cases = [(kind, path) for kind in names for path in originals]
    cases += [(own_kind, path) for path, own_kind in written]
    by_kind = {}
    for kind, path in cases:
        by_kind.setdefault(kind, []).append(path)
    failures, refused, kept = [], [], 0
    for kind, paths in sorted(by_kind.items()):
        reports = checked(tool, kind, paths)
        for path in paths:
            try:
                document = json.loads(open(path, "rb").read().decode("utf-8"))
            except ValueError:
                continue  # no schema validator reads it; the strict-reader promise holds it
            errors = list(validators[kind].iter_errors(document))
            if not errors:
                kept += 1
                continue
            refused.append((reports[path], document, errors))
            for gap in schema_gaps(reports[path], document, errors):
                failures.append(f"{path} as {kind}: {gap}: the schema refuses it, check says "
                                "nothing there")
    print(f"covers-schema: {len(cases)} checks, {len(refused)} refused by the schema, "
          f"{kept} valid")
    failures += self_test("covers-schema", HELD_BY_SCHEMA,
                          lambda skip: any(schema_gaps(r, d, e, skip) for r, d, e in refused))
    return failures


def own_kinds(paths, names):
    """The kind a document is written for: its folder among the examples, its name's prefix
    among the command-line inputs, its class among the fuzz corpora."""
    by_class = {}
    listed = subprocess.run(TOOL + ["kinds"], capture_output=True, check=True, text=True)
    for line in listed.stdout.splitlines():
        match = re.search(r"\(([A-Za-z]+)\)$", line)
        if match:
            by_class[match.group(1)] = line.split()[0]
    own = {}
    for path in paths:
        parent = os.path.basename(os.path.dirname(path))
        base = os.path.basename(path)
        if parent in names:
            own[path] = parent
        elif parent in by_class:
            own[path] = by_class[parent]
        else:
            prefixes = [k for k in names if base.startswith(k + "-")]
            if prefixes:
                own[path] = max(prefixes, key=len)
    return own


def write_variants(paths, own, folder):
    """(path, kind) of each variant of each document of a known kind."""
    written = []
    for index, path in enumerate(paths):
        if path not in own:
            continue
        data = open(path, "rb").read()
        for number, variant in enumerate(variants(data)):
            name = os.path.join(folder, f"{index}-{number}-{os.path.basename(path)}")
            with open(name, "wb") as out:
                out.write(variant)
            written.append((name, own[path]))
    return written


# ---- strict-reader ----

def strict_gaps(report, data, skip=frozenset()):
    if not parser_took(report):
        return []
    found = {f["finding"] for f in report.get("findings", [])} - skip
    text = found & TEXT_FINDINGS
    if strict_accepts(data):
        extra = text - STRICT_YET_FOUND
        return [f"a strict reader takes it, yet {sorted(extra)}"] if extra else []
    return [] if text else ["a strict reader refuses it, the device's parser takes it, and "
                            "check has no finding of the text"]


def strict_reader(tool, source, folder):
    names = kinds(tool)
    originals = documents(source)
    own = own_kinds(originals, names)
    cases = [(own.get(path, "channel-list"), path) for path in originals]
    cases += [(kind, path) for path, kind in write_variants(originals, own, folder)]
    by_kind = {}
    for kind, path in cases:
        by_kind.setdefault(kind, []).append(path)
    failures, seen = [], []
    took = refused = 0
    for kind, paths in sorted(by_kind.items()):
        reports = checked(tool, kind, paths)
        for path in paths:
            data = open(path, "rb").read()
            report = reports[path]
            seen.append((report, data))
            if parser_took(report):
                took += 1
                refused += 0 if strict_accepts(data) else 1
            for gap in strict_gaps(report, data):
                failures.append(f"{path} as {kind}: {gap}")
    print(f"strict-reader: {len(cases)} texts, {took} taken by the device's parser, "
          f"{refused} of them refused by the strict reader")
    failures += self_test("strict-reader", HELD_BY_STRICT_READER,
                          lambda skip: any(strict_gaps(r, d, skip) for r, d in seen))
    return failures


def self_test(name, held, breaks):
    """The promise must break with the findings of each kind it holds taken out."""
    failures = []
    for kind in sorted(held):
        if not breaks(frozenset({kind})):
            failures.append(f"{name}: with {kind} switched off nothing breaks: no document "
                            "shows that the promise needs it")
    print(f"{name}: breaks with each of {sorted(held)} switched off: "
          f"{'no' if failures else 'yes'}")
    return failures


def main():
    global TOOL
    # The device's parser nests 1,000 deep; Python's reader would stop short of that on its
    # own stack limit, which is no rule of JSON.
    sys.setrecursionlimit(20000)
    mode, TOOL, source = sys.argv[1], tool_of(sys.argv[2]), sys.argv[3]
    with tempfile.TemporaryDirectory() as folder:
        failures = {"covers-schema": covers_schema,
                    "strict-reader": strict_reader}[mode](TOOL, source, folder)
    for failure in failures[:200]:
        print("FAIL", failure)
    if len(failures) > 200:
        print(f"... and {len(failures) - 200} more")
    sys.exit(1 if failures else 0)


TOOL = []

if __name__ == "__main__":
    main()
