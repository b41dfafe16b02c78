#!/usr/bin/env python3
"""write_benchmarks.py DOCUMENT: runs every benchmark and puts what they print into the document's blocks of figures. The short
ones run three times, and each row is the middle one of its three."""
import pathlib
import platform
import re
import subprocess
import sys

RATIO = 3  # of the columns of a row: name, ours, bare, ratio, limit


def printed(*options):
    print("scripts/bench", *options, file=sys.stderr)
    return subprocess.run(["scripts/bench", *options], check=True, text=True, stdout=subprocess.PIPE).stdout.rstrip("\n")


def middle_of_three():
    """The table whose rows are each the middle one of three runs, by their ratio."""
    runs = [printed("--work").splitlines() for _ in range(3)]
    rows = [sorted(rows, key=lambda row: float(re.split(r"\s{2,}", row)[RATIO])) for rows in zip(*(run[1:] for run in runs))]
    return "\n".join([runs[0][0].rstrip()] + [of_one[1] for of_one in rows])


def machine():
    system = re.search(r'PRETTY_NAME="(.*)"', pathlib.Path("/etc/os-release").read_text())[1]
    models = re.findall(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    compiler = subprocess.run(["g++", "--version"], check=True, text=True, stdout=subprocess.PIPE).stdout.splitlines()[0]
    return f"{len(models)} cores ({models[0]}), {system}, Linux {platform.release()}\n{compiler}"


def main(document):
    text = document.read_text()
    figures = {
        "machine": machine,
        "work": middle_of_three,
        "idle": lambda: printed("--idle"),
        "status": lambda: printed("--status"),
        "desktop": lambda: printed("--desktop"),
    }
    for name, measure in figures.items():
        block = re.compile(rf"(<!-- figures: {name} -->\n```text\n).*?(\n```\n)", re.DOTALL)
        if not block.search(text):
            sys.exit(f"{document} has no place for the figures of {name}")
        found = measure()
        text = block.sub(lambda match: match[1] + found + match[2], text)
        document.write_text(text)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
