#!/usr/bin/env python3
"""files.py ROOT: what holds for every file of the project, checked from its text.

No file of code is longer than 500 lines, every source of the folders that decide something has a test of its own name,
one file makes the numbers of a version, and no text speaks of a licence that nobody has chosen.
"""
import pathlib
import re
import sys

TESTED = ("base", "store", "accounts", "usage", "history", "notifications", "telemetry", "diagnostics")
LONGEST = 500
LICENCE = re.compile(r"SPDX-|Licensed under|All rights reserved|\bCopyright\b")


def code_files(root):
    for folder in ("src", "tests", "bench", "fuzz"):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


def untested(root):
    tests = {path.name for path in (root / "tests").rglob("*.cpp")}
    for folder in TESTED:
        for path in sorted((root / "src" / folder).rglob("*.cpp")):
            stem = path.stem
            if not any(name.startswith(stem) and name.endswith("Test.cpp") for name in tests):
                yield f"{path.relative_to(root)}: no test of its name"


def main():
    root = pathlib.Path(sys.argv[1])
    found = list(untested(root))
    count = 0
    for path in code_files(root):
        count += 1
        text = path.read_text()
        lines = text.count("\n")
        if lines > LONGEST:
            found.append(f"{path.relative_to(root)}: {lines} lines")
        if LICENCE.search(text):
            found.append(f"{path.relative_to(root)}: speaks of a licence")
    version = re.search(r"project\(vellumor VERSION (\S+)", (root / "CMakeLists.txt").read_text()).group(1)
    if f"## {version}" not in (root / "CHANGELOG.md").read_text():
        found.append(f"CHANGELOG.md: has no section on version {version}")
    print(*found, sep="\n", end="\n" if found else "")
    print(f"{count} files of code, {len(found)} breaches")
    sys.exit(1 if found or count == 0 else 0)


if __name__ == "__main__":
    main()
