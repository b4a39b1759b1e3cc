#!/usr/bin/env python3
"""Runs the validators that package.json installs on what zelct writes:

  validators.py ajv    TOOL VALIDATORS_DIR   ajv compiles every `zelct schema KIND` as draft
                                             2020-12 in strict mode, without a warning
  validators.py sarif  TOOL VALIDATORS_DIR SOURCE_DIR
                                             Microsoft's SARIF multitool validates the SARIF log
                                             of every command-line case that writes one, and
                                             reports neither error nor warning

VALIDATORS_DIR is where install-validators.sh put them. Without them the test is skipped
(exit 77), except under CI, where it fails. The tool may be a command line with its words
separated by "|" (an emulator in front).
"""
import glob
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile

# The command-line cases hold documents nested as deep as the device parses (1,000 values),
# which zelct quotes back; Python's own decoder recurses once per level.
sys.setrecursionlimit(10000)

SKIPPED = 77


def program(folder, name):
    path = os.path.join(folder, "node_modules", ".bin", name)
    if os.access(path, os.X_OK):
        return path
    print(f"{path} is not installed (see install-validators.sh)")
    sys.exit(1 if os.environ.get("CI") == "true" else SKIPPED)


def kinds(tool):
    listed = subprocess.run(tool + ["kinds"], capture_output=True, check=True, text=True)
    return [line.split()[0] for line in listed.stdout.splitlines()]


def check_ajv(tool, folder):
    ajv = program(folder, "ajv")
    failures = []
    with tempfile.TemporaryDirectory() as work:
        for kind in kinds(tool):
            path = os.path.join(work, f"{kind}.schema.json")
            with open(path, "wb") as schema:
                schema.write(subprocess.run(tool + ["schema", kind], capture_output=True,
                                            check=True).stdout)
            result = subprocess.run([ajv, "compile", "--spec=draft2020", "--strict=true",
                                     "-s", path], capture_output=True, text=True)
            said = (result.stdout + result.stderr).strip()
            # ajv logs what strict mode only warns about and still exits 0.
            if result.returncode != 0 or "strict mode" in said or "warn" in said.lower():
                failures.append(f"{kind}: ajv exit {result.returncode}\n{said}")
            else:
                print(f"{kind}: {said}")
    return failures


def sarif_cases(source):
    """The command-line cases whose standard output is a SARIF log."""
    cases = []
    for cmd_file in sorted(glob.glob(os.path.join(source, "tests", "cli", "*", "cmd"))):
        with open(cmd_file, encoding="utf-8", errors="surrogateescape") as cmd:
            words = shlex.split(cmd.read())
        if re.search(r"(^| )--format[ =]sarif( |$)", " ".join(words)):
            case = os.path.dirname(cmd_file)
            if os.path.getsize(os.path.join(case, "stdout")) > 0:
                cases.append(case)
    return cases


def multitool_findings(log_path):
    """(level, rule, message) of every error and warning of the multitool's own log."""
    with open(log_path, encoding="utf-8-sig") as log:
        log = json.load(log)
    findings = []
    for run in log.get("runs", []):
        for result in run.get("results", []):
            level = result.get("level", "warning")
            if level in ("error", "warning"):
                findings.append((level, result.get("ruleId"), result["message"]))
        for invocation in run.get("invocations", []):
            for key in ("toolExecutionNotifications", "toolConfigurationNotifications"):
                for note in invocation.get(key, []):
                    if note.get("level", "warning") in ("error", "warning"):
                        findings.append((note.get("level", "warning"), key, note["message"]))
    return findings


def check_sarif(tool, folder, source):
    del tool  # the logs are the cases' expected output, which the cli tests compare with it
    multitool = program(folder, "sarif-multitool")
    cases = sarif_cases(source)
    if not cases:
        return ["no command-line case writes a SARIF log"]
    failures = []
    # The multitool is a .NET program; it needs no ICU for what it does here.
    environment = dict(os.environ, DOTNET_SYSTEM_GLOBALIZATION_INVARIANT="1")
    with tempfile.TemporaryDirectory() as work:
        for case in cases:
            name = os.path.basename(case)
            log = os.path.join(work, name + ".sarif")
            with open(os.path.join(case, "stdout"), "rb") as given, open(log, "wb") as copy:
                copy.write(given.read())
            out = os.path.join(work, name + ".validation.sarif")
            result = subprocess.run([multitool, "validate", log, "--output", out,
                                     "--log", "ForceOverwrite"], capture_output=True, text=True,
                                    env=environment)
            if not os.path.exists(out):
                failures.append(f"{name}: multitool exit {result.returncode}, no log\n"
                                f"{result.stdout}{result.stderr}")
                continue
            findings = multitool_findings(out)
            for level, rule, message in findings:
                failures.append(f"{name}: {level} {rule}: {json.dumps(message)}")
            if result.returncode != 0 and not findings:
                failures.append(f"{name}: multitool exit {result.returncode}\n{result.stdout}")
            if not findings and result.returncode == 0:
                print(f"{name}: valid")
    return failures


def main():
    mode, tool, folder = sys.argv[1], sys.argv[2].split("|"), sys.argv[3]
    if mode == "ajv":
        failures = check_ajv(tool, folder)
    elif mode == "sarif":
        failures = check_sarif(tool, folder, sys.argv[4])
    else:
        sys.exit(f"unknown mode {mode}")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
