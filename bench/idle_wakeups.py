#!/usr/bin/env python3
"""idle_wakeups.py: how often the threads of the program wake up while it has nothing to do.

It has one account, the longest interval between two requests, and logind and NetworkManager on a system bus of its own.
Ends with 1 unless no thread wakes up.
"""
import argparse
import contextlib
import http.server
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import time

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>{address}</listen><auth>EXTERNAL</auth><policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
"""
SERVICES = {"logind": "org.freedesktop.login1", "networkmanager": "org.freedesktop.NetworkManager"}
READING = b'{"limits":[{"kind":"session","group":"session","percent":62}]}'
QUIET = 3.0  # seconds without a wake-up, after which the start is over
PATIENCE = 60.0  # seconds in which that must come about


class Endpoint(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    answered = threading.Event()

    def do_GET(self):
        self.send_response(200)
        self.send_header("Content-Length", str(len(READING)))
        self.end_headers()
        self.wfile.write(READING)
        self.answered.set()

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def endpoint():
    """Gives its address."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Endpoint)
    server.daemon_threads = True
    threading.Thread(target=server.serve_forever, daemon=True).start()
    yield f"http://127.0.0.1:{server.server_port}"
    server.shutdown()


@contextlib.contextmanager
def running(folder, name, command, environment):
    """A program that ends with the block; setpriv sees to it that it also ends with this process."""
    with open(folder / f"{name}.log", "ab") as log:
        process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], env=environment,
                                   stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    try:
        yield process
    finally:
        process.kill()
        process.wait()


@contextlib.contextmanager
def system_bus(folder, environment):
    """Gives its address once both services are on it."""
    address = f"unix:path={folder}/bus"
    (folder / "bus.conf").write_text(BUS.format(address=address))
    environment = {**environment, "DBUS_SYSTEM_BUS_ADDRESS": address}
    with contextlib.ExitStack() as stack:
        stack.enter_context(running(folder, "bus", ["dbus-daemon", f"--config-file={folder}/bus.conf", "--nofork",
                                                    "--nopidfile", "--nosyslog"], environment))
        wait_until(lambda: (folder / "bus").exists(), "a bus")
        for template, name in SERVICES.items():
            mock = ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", template]
            stack.enter_context(running(folder, template, mock, environment))
            subprocess.run(["gdbus", "wait", "--system", "--timeout", "30", name], env=environment, check=True)
        yield address


def make_home(folder):
    home = folder / "home"
    (home / ".claude").mkdir(parents=True)
    (folder / "run").mkdir(mode=0o700)
    (home / ".claude/.credentials.json").write_text(json.dumps(
        {"claudeAiOauth": {"accessToken": "idle-token", "expiresAt": int((time.time() + 86400) * 1000)}}))
    data = home / ".local/share/Vellumor"
    data.mkdir(parents=True)
    (data / "preferences.json").write_text('{"userInterval":1800}')  # the next request is half an hour away
    return home


def wait_until(is_so, what):
    end = time.monotonic() + PATIENCE
    while not is_so():
        if time.monotonic() > end:
            sys.exit(f"idle_wakeups: {what} does not come about")
        time.sleep(0.05)


def switches(pid):
    """How often each thread has gone to wait, by its number and name."""
    counts = {}
    for task in os.scandir(f"/proc/{pid}/task"):
        status = pathlib.Path(task.path, "status").read_text()
        fields = dict(line.split(":", 1) for line in status.splitlines())
        counts[f"{task.name} {fields['Name'].strip()}"] = int(fields["voluntary_ctxt_switches"])
    return counts


def wait_for_quiet(pid):
    before, since = switches(pid), time.monotonic()

    def is_quiet():
        nonlocal before, since
        now = switches(pid)
        if now != before:
            before, since = now, time.monotonic()
        return time.monotonic() - since > QUIET
    wait_until(is_quiet, "quiet")


def measure(pid, seconds):
    """The wake-ups of each thread that had any, in so many seconds."""
    before = switches(pid)
    time.sleep(seconds)
    after = switches(pid)
    return {name: after.get(name, 0) - before.get(name, 0) for name in {**before, **after}
            if after.get(name) != before.get(name)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--seconds", type=float, default=300, help="how long it is watched (300)")
    parser.add_argument("--after", type=float, default=125, help="how long after its last request that begins, at "
                        "least (125: Qt keeps the connection for two minutes, and wakes up to forget it)")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="vellumor-idle-") as name, contextlib.ExitStack() as stack:
        folder = pathlib.Path(name)
        environment = {"HOME": str(make_home(folder)), "XDG_RUNTIME_DIR": str(folder / "run"), "LC_ALL": "C.UTF-8",
                       "PATH": "/usr/bin:/bin", "QT_QPA_PLATFORM": "offscreen", "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                       "VELLUMOR_API_BASE": stack.enter_context(endpoint())}
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = stack.enter_context(system_bus(folder, environment))
        program = stack.enter_context(running(folder, "program", [options.program], environment))
        wait_until(Endpoint.answered.is_set, "a request")
        time.sleep(options.after)
        wait_for_quiet(program.pid)
        woken = measure(program.pid, options.seconds)
        threads = len(switches(program.pid))
    for thread, count in sorted(woken.items()):
        print(f"{thread}: {count}")
    print(f"{sum(woken.values())} wake-ups of {threads} threads in {options.seconds:g} s")
    sys.exit(1 if woken else 0)


if __name__ == "__main__":
    main()
