#!/usr/bin/env python3
"""Measures zelct check over a generated repository of device documents, side by side with
JSON Schema validators validating the same files against the same schemas (one invocation per
kind for them, as a CI job would run them), and prints a Markdown table with the targets.

  measure.py ZELCT SCHEMAS_DIR VALIDATORS_BIN REPOSITORY SMALL_REPOSITORY

Every figure is the best wall-clock time of three runs; peak memory is the largest resident
set of the process (GNU time's %M), summed over nothing: one process at a time.
"""
import glob
import os
import subprocess
import sys
import time

KINDS = ["system-info", "channel-tables", "channel-list", "session-streams", "alarms"]
RUNS = 5


def timed(command):
    """Seconds of wall-clock time and peak resident kilobytes of one run. Each checker says
    that some file fails in its own way: zelct and ajv with exit code 1, jsonschema with 2."""
    start = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-f", "%M"] + command, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True)
    seconds = time.perf_counter() - start
    if result.returncode not in (0, 1, 2) or "Command terminated by signal" in result.stderr:
        sys.exit(f"{command[0]} failed ({result.returncode}): {result.stderr[-2000:]}")
    return seconds, int(result.stderr.strip().splitlines()[-1])


def best(commands):
    """The best total time over RUNS runs of a list of commands run one after another, and the
    largest peak memory of any of them."""
    times, peak = [], 0
    for _ in range(RUNS):
        total = 0.0
        for command in commands:
            seconds, kilobytes = timed(command)
            total += seconds
            peak = max(peak, kilobytes)
        times.append(total)
    return min(times), peak


def files_of(repository, kind):
    return sorted(glob.glob(os.path.join(repository, "devices", "*", kind + ".json")))


def main(zelct, schemas, validators, repository, small):
    count = sum(len(files_of(repository, kind)) for kind in KINDS)
    schema = {kind: os.path.join(schemas, kind + ".schema.json") for kind in KINDS}
    rows = []
    j1, j1_peak = best([[zelct, "check", "-j", "1", "--no-time", repository]])
    rows.append(("zelct check -j 1", j1, j1_peak))
    j2, j2_peak = best([[zelct, "check", "-j", "2", "--no-time", repository]])
    rows.append(("zelct check -j 2", j2, j2_peak))
    sourcemeta = [[os.path.join(validators, "jsonschema"), "validate", "--fast", "--continue",
                   schema[kind]]
                  + files_of(repository, kind) for kind in KINDS]
    rows.append(("jsonschema validate --fast (@sourcemeta/jsonschema 16.11.0)",) + best(sourcemeta))
    ajv = [[os.path.join(validators, "ajv"), "validate", "--spec=draft2020", "--strict=false",
            "--errors=line", "-s", schema[kind], "-d",
            os.path.join(repository, "devices", "*", kind + ".json")] for kind in KINDS]
    rows.append(("ajv validate (ajv-cli 5.0.0)",) + best(ajv))
    _, small_peak = best([[zelct, "check", "-j", "1", "--no-time", small]])
    small_count = sum(len(files_of(small, kind)) for kind in KINDS)

    print(f"{count} files ({count // len(KINDS)} devices, five kinds); "
          f"{os.cpu_count()} cores; best of {RUNS} runs\n")
    print("| checker | seconds | files per second | peak memory |")
    print("|---|---|---|---|")
    for name, seconds, peak in rows:
        print(f"| {name} | {seconds:.2f} | {count / seconds:.0f} | {peak / 1024:.1f} MiB |")
    fastest = min(seconds for name, seconds, _ in rows[2:])
    print()
    print("| target | measured | verdict |")
    print("|---|---|---|")
    ratio = fastest / j1
    print(f"| -j 1 at least 2x the files per second of the fastest validator | {ratio:.1f}x | "
          f"{'met' if ratio >= 2 else f'missed by {2 / ratio:.1f}x'} |")
    speedup = j1 / j2
    print(f"| -j 2 at least 1.8x -j 1 | {speedup:.2f}x | "
          f"{'met' if speedup >= 1.8 else f'missed by {1.8 / speedup:.2f}x'} |")
    growth = j1_peak / small_peak
    print(f"| peak memory flat in the number of files | {small_count} files "
          f"{small_peak / 1024:.1f} MiB, {count} files {j1_peak / 1024:.1f} MiB ({growth:.2f}x) | "
          f"{'met' if growth < 1.25 else 'missed'} |")


if __name__ == "__main__":
    main(*sys.argv[1:6])
