#!/usr/bin/env python3
"""status_on_the_bus.py: what `vellumor status` costs beside busctl, which asks the same program for one property.

Both ask in turns, in one run. Prints the medians of elapsed and of processor time. With --check it ends with 1 when one of
the two ratios is above the limit.
"""
import argparse
import contextlib
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

from idle_wakeups import BUS, endpoint, make_home, running, wait_until

LIMIT = 3.0
NAME = ["dev.quorle.vellumor", "/dev/quorle/vellumor", "dev.quorle.Vellumor1"]


@contextlib.contextmanager
def session_bus(folder, environment):
    address = f"unix:path={folder}/session"
    (folder / "session.conf").write_text(BUS.format(address=address))
    with running(folder, "session-bus", ["dbus-daemon", f"--config-file={folder}/session.conf", "--nofork",
                                         "--nopidfile", "--nosyslog"], environment):
        wait_until(lambda: (folder / "session").exists(), "a session bus")
        yield address


def timed(command, environment):
    """Elapsed and processor seconds of one run."""
    start = time.perf_counter()
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"status_on_the_bus: {command[0]} ended with {process.returncode}")
    return elapsed, usage.ru_utime + usage.ru_stime


def measure(front, environment, rounds):
    commands = {"vellumor status": [front, "status", "--json"],
                "busctl": ["busctl", f"--address={environment['DBUS_SESSION_BUS_ADDRESS']}", "get-property", *NAME,
                           "Version"]}
    times = {name: [] for name in commands}
    for number in range(rounds + 3):
        for name, command in commands.items():
            taken = timed(command, environment)
            if number >= 3:  # before that both come from the disk
                times[name].append(taken)
    return {name: [statistics.median(column) for column in zip(*taken)] for name, taken in times.items()}


def is_told(front, environment):
    asked = subprocess.run([front, "status", "--json"], env=environment, capture_output=True, text=True)
    return '"source": "program"' in asked.stdout and "62%" in asked.stdout


def report(medians):
    """Prints the table; gives the two ratios."""
    for name, (elapsed, processor) in medians.items():
        print(f"{name:16} {elapsed * 1000:6.1f} ms elapsed {processor * 1000:6.1f} ms of processor time")
    ratios = [ours / theirs for ours, theirs in zip(medians["vellumor status"], medians["busctl"])]
    print(f"{'ratio':16} {ratios[0]:6.2f}            {ratios[1]:6.2f}   limit {LIMIT:g}")
    return ratios


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path, help="a build folder")
    parser.add_argument("--rounds", type=int, default=40)
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    build = options.build.resolve()
    front = str(build / "src/cli/vellumor")
    with tempfile.TemporaryDirectory() as name, contextlib.ExitStack() as stack:
        folder = pathlib.Path(name)
        home = make_home(folder)
        environment = {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "HOME": str(home), "QT_QPA_PLATFORM": "offscreen",
                       "XDG_RUNTIME_DIR": str(folder / "run"), "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent",
                       "VELLUMOR_ONBOARDING": "skip"}
        environment["DBUS_SESSION_BUS_ADDRESS"] = stack.enter_context(session_bus(folder, environment))
        environment["VELLUMOR_API_BASE"] = stack.enter_context(endpoint())
        stack.enter_context(running(folder, "program", [front], environment))
        wait_until(lambda: is_told(front, environment), "a reading of the running program")
        ratios = report(measure(front, environment, options.rounds))
    if options.check and max(ratios) > LIMIT:
        sys.exit("status_on_the_bus: above the limit")


if __name__ == "__main__":
    main()
