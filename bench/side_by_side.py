#!/usr/bin/env python3
"""side_by_side.py: what the program costs on a desktop, beside an empty tray program and other ones of this system.

Each runs alone in a desktop of its own with a panel: the time to its first status item, its memory and threads once it
has nothing to do, and how often it wakes up then; of the program itself also what the popover takes. With --check it
ends with 1 when one of the limits is exceeded.
"""
import argparse
import contextlib
import dataclasses
import http.server
import json
import os
import pathlib
import ssl
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from gi.repository import Gio, GLib

from idle_wakeups import measure as wake_ups

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts/lib/desktop"))
from desktop import Desktop  # noqa: E402
from hosts import WATCHER  # noqa: E402
from processes import Missing, end_by_signals, wait_until  # noqa: E402
from world import World  # noqa: E402
from worlds import WORLDS  # noqa: E402

OURS, EMPTY, EMPTY_ASKING = "vellumor", "empty", "empty, asking"
OTHERS = ("keepassxc", "qbittorrent")
WINDOW = "Vellumor"  # the popover's name
MOST_MEMORY = 1.25  # times that of the empty program that asks
MOST_OF_POPOVER = 8.0  # MiB that stay once it is closed
MOST_TIME = 2.0  # times that of the empty program, whichever starts sooner
MOST_WAKE_UPS = 3  # a minute
ALONE_WITHIN = 120.0  # seconds in which other programs with the same libraries should have ended
# The certificate of the endpoint stands where the system's authorities stand, for this one program.
TRUSTING = ["unshare", "--mount", "sh", "-c", 'mount --bind "$0" /etc/ssl/certs && exec "$@"']


@dataclasses.dataclass
class Subject:
    """One of the programs. `prepare` writes what it needs into its home; `asks` is how many requests it has made when
    its start is over."""

    name: str
    command: list
    prepare: object = lambda home: None
    environment: dict = dataclasses.field(default_factory=dict)
    asks: int = 0


@dataclasses.dataclass
class Figures:
    starts: list = dataclasses.field(default_factory=list)  # milliseconds
    pss: float = 0.0  # this and the next two in MiB
    private: float = 0.0
    rss: float = 0.0
    threads: int = 0
    wakes: dict = dataclasses.field(default_factory=dict)  # by thread
    wakes_a_minute: float = 0.0
    was_alone: bool = True
    popover: dict = dataclasses.field(default_factory=dict)  # MiB of PSS at each moment

    @property
    def start(self):
        return statistics.median(self.starts)


class Endpoint:
    """Answers over TLS as the worlds tell, and anything else with an empty reading. In this process, since one on the
    program's own libraries would share their pages with it."""

    def __init__(self, folder):
        self.certificates = folder / "certificates"
        self.answers = {}
        self.count = 0
        self.certificates.mkdir()
        certificate, key = self.certificates / "endpoint.pem", folder / "endpoint.key"
        run("openssl", "req", "-x509", "-nodes", "-days", "2", "-newkey", "ec", "-pkeyopt",
            "ec_paramgen_curve:prime256v1", "-subj", "/CN=Loopback", "-addext", "subjectAltName=IP:127.0.0.1",
            "-keyout", key, "-out", certificate)
        run("openssl", "rehash", self.certificates)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self._handler())
        self._server.daemon_threads = True
        # The handshake is the handler's, in its own thread.
        self._server.socket = context.wrap_socket(self._server.socket, server_side=True, do_handshake_on_connect=False)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.url = f"https://127.0.0.1:{self._server.server_port}"

    def _handler(self):
        endpoint = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                token = self.headers.get("Authorization", "").removeprefix("Bearer ")
                answer = endpoint.answers.get(token, {})
                body = json.dumps(answer.get("body", {"limits": []})).encode()
                self.send_response(answer.get("status", 200))
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)
                endpoint.count += 1

            def log_message(self, *_):
                pass
        return Handler


def run(*command):
    subprocess.run([str(word) for word in command], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def can_trust():
    """Nobody but root may, and root in a container perhaps not."""
    return subprocess.run(["unshare", "--mount", "true"], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False).returncode == 0


def subjects(build, endpoint, is_trusted):
    def make_world(home):
        world = World(home, WORLDS["four"](), {"userInterval": 1800, "menuBarMode": "bars", "menuBarDualBars": True})
        endpoint.answers = world.answers

    def make_file(name, text):
        def make(home):
            (home / name).parent.mkdir(parents=True, exist_ok=True)
            (home / name).write_text(text)
        return make
    empty = str(build / "bench/peers/vellumor_empty_tray")
    trusting = [*TRUSTING, str(endpoint.certificates)] if is_trusted else []
    return [
        Subject(OURS, [*trusting, str(build / "src/app/vellumor")], make_world,
                {"VELLUMOR_API_BASE": endpoint.url, "VELLUMOR_ONBOARDING": "skip"}, asks=2 if trusting else 0),
        Subject(EMPTY_ASKING, [*trusting, empty, endpoint.url], asks=1),
        Subject(EMPTY, [*trusting, empty]),
        # Neither shows its window, and neither looks for anything outside of this machine.
        Subject("keepassxc", ["keepassxc"], make_file(".config/keepassxc/keepassxc.ini", (
            "[General]\nUpdateCheckMessageShown=true\nMinimizeOnStartup=true\n"
            "[GUI]\nShowTrayIcon=true\nMinimizeToTray=true\nMinimizeOnStartup=true\nCheckForUpdates=false\n"))),
        Subject("qbittorrent", ["qbittorrent"], make_file(".config/qBittorrent/qBittorrent.conf", (
            "[LegalNotice]\nAccepted=true\n[BitTorrent]\nSession\\Interface=lo\nSession\\InterfaceName=lo\n"
            "Session\\DHTEnabled=false\nSession\\LSDEnabled=false\nSession\\PeXEnabled=false\n"
            "[Network]\nPortForwardingEnabled=false\n"
            "[Preferences]\nConnection\\ResolvePeerCountries=false\nGeneral\\StartMinimized=true\n"
            "General\\CloseToTrayNotified=true\n"))),
    ]


class Run:
    """One subject in its desktop."""

    def __init__(self, desktop, subject):
        self._desktop = desktop
        self._subject = subject
        self._starts = 0
        self.process = None
        # What is there for screen readers would be kept by whoever runs on the same toolkit, and by nobody else.
        os.environ.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", None)
        subject.prepare(desktop.home)

    def start(self):
        """Gives the milliseconds until its first item has come to the panel."""
        arrived = []
        flags = Gio.DBusSignalFlags.NONE
        subscription = self._desktop.bus.signal_subscribe(
            None, WATCHER[0], "StatusNotifierItemRegistered", None, None, flags,
            lambda *_: arrived.append(time.monotonic()))
        self._desktop.names()  # the bus knows of the subscription now
        self._starts += 1
        begin = time.monotonic()
        self.process = self._desktop.processes.start(self._name, self._subject.command,
                                                     {**os.environ, **self._subject.environment})
        try:
            wait_for_signal(arrived, f"an item of {self._subject.name}: {self._desktop.processes.log(self._name)}")
        finally:
            self._desktop.bus.signal_unsubscribe(subscription)
        return (arrived[0] - begin) * 1000

    def end(self):
        self._desktop.processes.end(self._name)
        wait_until(lambda: not self._desktop.items(), "the end of the item")

    @property
    def _name(self):
        return f"subject-{self._starts}"


def wait_for_signal(arrived, what):
    context = GLib.MainContext.default()
    end = time.monotonic() + 30
    while not arrived:
        if time.monotonic() > end:
            raise Missing(what)
        if not context.iteration(False):
            time.sleep(0.0005)


def memory(pid):
    """Of a process, in MiB: its fair share, what it has for itself, and all; and whether it was alone with its
    toolkit, since otherwise a part of its share is counted for others."""
    def look():
        if is_alone(pid):
            values = rollup(pid)
            return values if is_alone(pid) else None
        return None
    try:
        return *wait_until(look, "solitude", ALONE_WITHIN), True
    except Missing:
        return *rollup(pid), False


def rollup(pid):
    text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    values = {line.split(":")[0]: int(line.split()[1]) / 1024 for line in text.splitlines() if line.endswith("kB")}
    return values["Pss"], values["Private_Clean"] + values["Private_Dirty"], values["Rss"]


def is_alone(pid):
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            if int(folder.name) != pid and "/libQt" in (folder / "maps").read_text():
                return False
    return True


def look_at_popover(desktop, pid, figures):
    """What it takes, from before its first opening on."""
    def is_open():
        return any(name == WINDOW for name, _ in desktop.windows(OURS))

    def toggle(to_open):
        desktop.click_item()
        wait_until(lambda: is_open() == to_open, "the popover" if to_open else "the popover's end")

    def note(moment):
        time.sleep(2)
        figures.popover[moment], _, _, is_true = memory(pid)
        figures.was_alone = figures.was_alone and is_true
    note("before")
    toggle(True)
    note("open")
    toggle(False)
    note("closed")
    for _ in range(9):
        toggle(True)
        toggle(False)
    note("closed ten times")


def measured(subject, endpoint, options):
    end_by_signals()
    with Desktop() as desktop:
        one = Run(desktop, subject)
        figures = Figures()
        before = endpoint.count
        figures.starts.append(one.start())
        pid = one.process.pid
        wait_until(lambda: endpoint.count - before >= subject.asks, f"requests of {subject.name}")
        time.sleep(options.idle)
        figures.pss, figures.private, figures.rss, figures.was_alone = memory(pid)
        figures.threads = len(list(pathlib.Path(f"/proc/{pid}/task").iterdir()))
        if subject.environment or subject.asks:
            time.sleep(options.after)
        figures.wakes = wake_ups(pid, options.seconds)
        figures.wakes_a_minute = sum(figures.wakes.values()) * 60 / options.seconds
        if subject.name == OURS:
            look_at_popover(desktop, pid, figures)
        one.end()
        for _ in range(options.starts - 1):
            figures.starts.append(one.start())
            one.end()
    return figures


def print_table(found):
    print(f"{'':<16} {'start':>8} {'PSS':>10} {'private':>10} {'RSS':>10} {'threads':>8} {'wake-ups a minute':>18}")
    for name, figures in found.items():
        print(f"{name:<16} {figures.start:>5.0f} ms {figures.pss:>6.1f} MiB {figures.private:>6.1f} MiB "
              f"{figures.rss:>6.1f} MiB {figures.threads:>8} {figures.wakes_a_minute:>18.1f}"
              f"{'' if figures.was_alone else '  not alone: PSS is too low'}")
    if OURS in found:
        moments = found[OURS].popover
        print("popover, PSS: " + ", ".join(f"{moment} {value:.1f} MiB" for moment, value in moments.items()))
        for thread, count in sorted(found[OURS].wakes.items()):
            print(f"woken: {thread}: {count}")


def limits(found):
    """Each one's name, what was found, and the most that is good."""
    ours = found[OURS]
    yield "PSS, of the empty program's", ours.pss / found[EMPTY_ASKING].pss, MOST_MEMORY
    for name in OTHERS:
        yield f"PSS, of {name}'s", ours.pss / found[name].pss, 1.0
    sooner = min(found[name].start for name in (EMPTY, EMPTY_ASKING))
    yield "start, of the empty program's", ours.start / sooner, MOST_TIME
    yield "wake-ups a minute", ours.wakes_a_minute, MOST_WAKE_UPS
    for moment in ("closed", "closed ten times"):
        yield f"MiB of the popover, {moment}", ours.popover[moment] - ours.popover["before"], MOST_OF_POPOVER


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder with both programs")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--starts", type=int, default=5, help="of each, of which the median counts (5)")
    parser.add_argument("--idle", type=float, default=15, help="seconds after its last request, or its start, until "
                        "its memory is looked at (15)")
    parser.add_argument("--after", type=float, default=115, help="seconds more until wake-ups are counted, where there "
                        "was a request (115: Qt keeps the connection for two minutes)")
    parser.add_argument("--seconds", type=float, default=60, help="for which they are counted (60)")
    parser.add_argument("--only", help="one of them, without limits")
    return parser.parse_args(arguments)


def main():
    options = options_of(sys.argv[1:])
    end_by_signals()
    found = {}
    with tempfile.TemporaryDirectory(prefix="vellumor-side-by-side-") as name:
        endpoint = Endpoint(pathlib.Path(name))
        is_trusted = can_trust()
        if not is_trusted:
            print("The endpoint's certificate cannot be made trusted: the program refuses it.", file=sys.stderr)
        for subject in subjects(options.build.resolve(), endpoint, is_trusted):
            if options.only in (None, subject.name):
                print(f"{subject.name} …", file=sys.stderr)
                found[subject.name] = measured(subject, endpoint, options)
    print_table(found)
    if options.only:
        return
    is_good = True
    print(f"\n{'':<36} {'found':>6} {'limit':>6}")
    for what, value, most in limits(found):
        print(f"{what:<36} {value:>6.3f} {most:>6.2f}{'  above' if value > most else ''}")
        is_good = is_good and value <= most
    sys.exit(1 if options.check and not is_good else 0)


if __name__ == "__main__":
    main()
