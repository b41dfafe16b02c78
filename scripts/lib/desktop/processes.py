"""Programs that end when they should, and waiting for what they do."""
import ctypes
import os
import pathlib
import signal
import subprocess
import time

PATIENCE = 15.0  # seconds in which anything that is waited for must come about
PR_SET_CHILD_SUBREAPER = 36
REQUESTS_TO_END = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)


class Missing(Exception):
    """Something did not come about."""


def wait_until(is_so, what, seconds=PATIENCE):
    """Gives the first answer that is true."""
    end = time.monotonic() + seconds
    while not (answer := is_so()):
        if time.monotonic() > end:
            raise Missing(f"{what}: not within {seconds:g} s")
        time.sleep(0.03)
    return answer


def stays(is_so, seconds):
    """Whether it is so now and for so long."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not is_so():
            return False
        time.sleep(0.03)
    return True


def end_by_signals():
    """Lets a request to end unwind this process, so that what it has started and made goes with it."""
    def leave(number, _):
        raise SystemExit(128 + number)
    for number in REQUESTS_TO_END:
        signal.signal(number, leave)


def end_undisturbed():
    """Once the end has begun, another request does not cut it short; a terminal sends one to everybody at once."""
    for number in REQUESTS_TO_END:
        signal.signal(number, signal.SIG_IGN)


class Processes:
    """What was started here. Each program ends with this process; what they have started themselves, such as services
    of the bus, comes to this process when it is left alone, and ends with `end_all`."""

    def __init__(self, folder):
        self._folder = pathlib.Path(folder)
        self._started = {}
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)

    def start(self, name, command, environment, **more):
        with open(self.log_file(name), "ab") as log:
            more = {"stdout": log, "stderr": log, **more}
            process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], env=environment,
                                       stdin=subprocess.DEVNULL, **more)
        self._started[name] = process
        return process

    def log_file(self, name):
        return self._folder / f"{name}.log"

    def log(self, name):
        path = self.log_file(name)
        return path.read_text(errors="replace") if path.exists() else ""

    def is_running(self, name):
        return name in self._started and self._started[name].poll() is None

    def end(self, name):
        """Ends it at once; gives its status."""
        process = self._started.pop(name)
        process.kill()
        return process.wait()

    def end_all(self):
        for name in reversed(list(self._started)):
            self.end(name)
        end = time.monotonic() + PATIENCE
        while (left := _children()) and time.monotonic() < end:
            for pid in left:
                _kill(pid)
            time.sleep(0.01)


def _children():
    """Of this process, but for those that have ended."""
    while True:
        try:
            if os.waitpid(-1, os.WNOHANG)[0] == 0:
                break
        except ChildProcessError:
            return []
    return [int(pid) for path in pathlib.Path("/proc/self/task").glob("*/children")
            for pid in path.read_text().split()]


def _kill(pid):
    try:
        os.kill(pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
