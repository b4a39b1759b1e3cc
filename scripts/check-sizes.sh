#!/usr/bin/env bash
# Fails when a source of the check engine (check/) or of the tool (tools/zelct/) has grown past
# what a reader takes in at once: a file over 500 lines, or a function over 60 lines, counted
# from the line that opens its body to the line that closes it. Prints each as
# FILE:LINE: name (N lines).
#
# Usage: scripts/check-sizes.sh [FILE...]   (paths from the top of the repository; every .cpp
#                                            and .h of those folders by default)
set -euo pipefail
cd "$(dirname "$0")/.."

if [ $# -eq 0 ]; then
    mapfile -t files < <(git ls-files 'check/*.cpp' 'check/*.h' 'tools/zelct/*.cpp' \
                             'tools/zelct/*.h' 2>/dev/null ||
                         find check tools/zelct -name '*.cpp' -o -name '*.h')
    set -- "${files[@]}"
fi

python3 - "$@" <<'EOF'
import re
import sys

MAX_FILE_LINES = 500
MAX_FUNCTION_LINES = 60
ALLOWED = set()

NOT_FUNCTIONS = re.compile(r"^\s*(namespace|class|struct|union|enum|extern|template\s*<[^>]*>\s*"
                           r"(class|struct))\b|^\s*(if|else|for|while|do|switch|try|catch)\b")
# The names that open a scope of declarations rather than of statements.
SCOPES = re.compile(r"^\s*(template\s*<.*>\s*)?(inline\s+)?(namespace|class|struct|union)\b"
                    r"|^\s*extern\s+\"C")


def code_of(text):
    """The text with comments, strings and characters blanked, line breaks kept."""
    out = []
    i = 0
    n = len(text)
    while i < n:
        c = text[i]
        if text.startswith("//", i):
            while i < n and text[i] != "\n":
                i += 1
        elif text.startswith("/*", i):
            end = text.find("*/", i + 2)
            end = n if end < 0 else end + 2
            out.append("".join(ch if ch == "\n" else " " for ch in text[i:end]))
            i = end
        elif c in "\"'":
            j = i + 1
            while j < n and text[j] != c and text[j] != "\n":
                j += 2 if text[j] == "\\" else 1
            out.append(c + " " * max(0, min(j, n) - i - 1) + c)
            i = j + 1
        else:
            out.append(c)
            i += 1
    return "".join(out)


def top_level(statement, char):
    """Whether `char` stands in the statement outside any parentheses or brackets."""
    depth = 0
    for c in statement:
        if c in "([":
            depth += 1
        elif c in ")]":
            depth -= 1
        elif c == char and depth == 0:
            return True
    return False


def function_name(statement):
    depth = 0
    for i, c in enumerate(statement):
        if c == "(" and depth == 0:
            head = statement[:i].rstrip()
            found = re.search(r"(operator\s*\S+|~?[A-Za-z_][\w:]*)$", head)
            return found.group(1) if found else None
        if c == "<":
            depth += 1
        elif c == ">" and depth > 0:
            depth -= 1
    return None


def functions(lines):
    """(line, name, length) of each function body opened at namespace or class level."""
    found = []
    stack = []  # per open brace: "scope", "function" or "block"
    statement = ""
    start = 0
    for number, line in enumerate(lines, 1):
        for column, c in enumerate(line):
            if c == "{":
                kind = "block"
                at_scope_level = all(k == "scope" for k in stack)
                text = re.sub(r"operator\s*(\(\)|[^\s(]+)", "operator", statement.strip())
                if at_scope_level and SCOPES.search(text):
                    kind = "scope"
                elif (at_scope_level and "(" in text and not NOT_FUNCTIONS.search(text) and
                      not top_level(text, "=") and line[column + 1:].strip() == ""):
                    name = function_name(statement.strip())
                    if name:
                        kind = "function"
                        start = number
                        found.append([number, name, 0])
                stack.append(kind)
                statement = ""
            elif c == "}":
                kind = stack.pop() if stack else "block"
                if kind == "function":
                    found[-1][2] = number - start + 1
                statement = ""
            elif c == ";":
                statement = ""
            else:
                statement += c
        statement += " "
        if statement.strip().startswith("#"):
            statement = ""
    return found


failed = False
for path in sys.argv[1:]:
    with open(path, encoding="utf-8") as f:
        text = f.read()
    lines = text.split("\n")
    if text.endswith("\n"):
        lines.pop()
    if len(lines) > MAX_FILE_LINES:
        print(f"{path}:1: file ({len(lines)} lines)")
        failed = True
    for number, name, length in functions(code_of(text).split("\n")):
        if length > MAX_FUNCTION_LINES and (path, name.split("::")[-1]) not in ALLOWED:
            print(f"{path}:{number}: {name} ({length} lines)")
            failed = True
if failed:
    print(f"sizes: files are held to {MAX_FILE_LINES} lines and functions to "
          f"{MAX_FUNCTION_LINES}", file=sys.stderr)
    sys.exit(1)
print(f"sizes: {len(sys.argv) - 1} files within bounds")
EOF
