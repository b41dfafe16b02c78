#!/usr/bin/env python3
"""coverage.py BUILD: how many lines of the program the tests of this build folder have run, folder by folder. Exits 1 below
what is asked of the functional core and of all."""
import collections
import json
import subprocess
import sys

CORE = ("base/", "store/", "usage/model/", "usage/caches/", "history/", "telemetry/", "accounts/", "diagnostics/crash/",
        "updates/feed/", "status/")
ASKED = {"core": 90.0, "all": 80.0}  # percent


def lines(build):
    """File below src/ -> (run, all)."""
    report = subprocess.run(["gcovr", "--root", "src", "--json-summary-pretty", "--json-summary", "-", "-s",
                             "--gcov-ignore-parse-errors", "--object-directory", build, build],
                            check=True, text=True, stdout=subprocess.PIPE).stdout
    report = json.loads(report[:report.rindex("}") + 1])
    return {file["filename"].removeprefix("src/"): (file["line_covered"], file["line_total"]) for file in report["files"]}


def percent(counts):
    run, total = map(sum, zip(*counts)) if counts else (0, 0)
    return 100.0 * run / total if total else 100.0


def main(build):
    files = lines(build)
    folders = collections.defaultdict(list)
    for name, counts in files.items():
        folders[name.rpartition("/")[0]].append(counts)
    for folder, counts in sorted(folders.items()):
        print(f"{percent(counts):6.1f}%  {folder}")
    core = [counts for name, counts in files.items() if name.startswith(CORE)]
    found = {"core": percent(core), "all": percent(list(files.values()))}
    for name, share in found.items():
        print(f"{share:6.1f}%  {name} (at least {ASKED[name]:.0f}%)")
    return any(found[name] < ASKED[name] for name in ASKED)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
