#!/usr/bin/env python3
"""Writes a repository of device documents as integrators keep them: a folder per device with
five documents (system-info, channel-tables, channel-list, session-streams, alarms), each a
board's own document with that device's numbers and names, and a .zelct.json that gives each
file its kind. A few percent of the files hold a trap the device reads otherwise (a state
"enabled" read as Disabled, a member given twice, a member no class reads).

  make-repository.py EXAMPLES_DIR OUT_DIR DEVICES
"""
import json
import os
import random
import re
import sys

KINDS = {
    "system-info.json": "system-info",
    "channel-tables.json": "channel-tables",
    "channel-list.json": "channel-list",
    "session-streams.json": "session-streams",
    "alarms.json": "alarms",
}
TRAP_SHARE = 0.03
SCALAR_MEMBER = re.compile(r'("[^"]+"): ("[^"]*"|-?[0-9]+)(?=,)')


def board_documents(examples):
    documents = {}
    for name, kind in KINDS.items():
        with open(os.path.join(examples, kind, "board.json"), encoding="utf-8") as f:
            documents[name] = json.load(f)
    return documents


# Members whose text is the device's own (names, serial numbers), not a catalogue name.
OWN_TEXTS = ("name", "serial", "hostname", "label")
# Numbers that are the device's own; the others are codes, or repeated in a text, and stay as
# the board has them.
OWN_NUMBERS = ("id", "position")


def renumbered(value, device, rng, key=""):
    """The board's document with this device's numbers and names."""
    if isinstance(value, dict):
        return {name: renumbered(item, device, rng, name) for name, item in value.items()}
    if isinstance(value, list):
        return [renumbered(item, device, rng, key) for item in value]
    if isinstance(value, bool) or value is None:
        return value
    if isinstance(value, int) and key in OWN_NUMBERS:
        return value + rng.randrange(0, 4)
    if isinstance(value, str) and value and any(word in key for word in OWN_TEXTS):
        return f"{value}-{device:05d}"
    return value


def with_trap(text, rng):
    """The same text with one thing the device reads otherwise than it is written."""
    trap = rng.randrange(3)
    at = text.index("{") + 1
    if trap == 0:
        return text[:at] + '"comment-for-operator": "keep",' + text[at:]
    if trap == 1 and '"state": "Enabled"' in text:
        return text.replace('"state": "Enabled"', '"state": "enabled"', 1)
    member = SCALAR_MEMBER.search(text)
    if member is None:
        return text[:at] + '"unread": 1,' + text[at:]
    # The member again, with another value, before its first occurrence: the device keeps
    # the last one.
    again = member.group(1) + ": " + json.dumps("other" if member.group(2).startswith('"') else 0)
    return text[: member.start()] + again + ",\n" + text[member.start() :]


def write_repository(examples, out, devices):
    rng = random.Random(20261124)
    boards = board_documents(examples)
    os.makedirs(out, exist_ok=True)
    kinds = {f"devices/*/{name}": kind for name, kind in KINDS.items()}
    with open(os.path.join(out, ".zelct.json"), "w", encoding="utf-8") as f:
        json.dump({"kinds": kinds}, f, indent=2)
    traps = 0
    for device in range(devices):
        folder = os.path.join(out, "devices", f"board-{device:05d}")
        os.makedirs(folder, exist_ok=True)
        for name, document in boards.items():
            text = json.dumps(renumbered(document, device, rng), indent="\t")
            if rng.random() < TRAP_SHARE:
                text = with_trap(text, rng)
                traps += 1
            with open(os.path.join(folder, name), "w", encoding="utf-8") as f:
                f.write(text + "\n")
    print(f"{devices * len(KINDS)} files in {devices} device folders, {traps} with a trap")


if __name__ == "__main__":
    write_repository(sys.argv[1], sys.argv[2], int(sys.argv[3]))
