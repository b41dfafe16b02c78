#!/usr/bin/env python3
"""command_line.py ROOT: the manual and the completions know every option, and the manual every field of a format.

What there is, is read from the source, where `vellumor status --help` gets it from.
"""
import pathlib
import re
import sys

COMPLETIONS = {"vellumor.bash": "--{}", "_vellumor": "--{}", "vellumor.fish": "-l {}"}


def options(root):
    text = (root / "src/cli/CommandLine.cpp").read_text()
    found = re.findall(r"^  --([a-z]+)", text, re.M)
    assert "json" in found and "watch" in found, "the help text has moved"
    return found


def fields(root):
    found = re.findall(r'Field\{"([a-z.]+)"', (root / "src/status/StatusFields.cpp").read_text())
    assert "name" in found and "worst.reset" in found, "the fields have moved"
    return found


def missing(root):
    manual = (root / "packaging/vellumor.1").read_text().replace("\\-", "-")
    for option in options(root):
        if f"--{option}" not in manual:
            yield f"packaging/vellumor.1: nothing of --{option}"
        for name, form in COMPLETIONS.items():
            if form.format(option) not in (root / "packaging/completions" / name).read_text():
                yield f"packaging/completions/{name}: nothing of --{option}"
    for field in fields(root):
        if "{" + field + "}" not in manual:
            yield f"packaging/vellumor.1: nothing of {{{field}}}"


def main():
    problems = list(missing(pathlib.Path(sys.argv[1])))
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
