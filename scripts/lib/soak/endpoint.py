"""The usage endpoint of a soak: mostly answers, at times does everything that a server can do wrong."""
import collections
import datetime
import http.server
import json
import random
import re
import threading

from world import STEADY

# What it does with a request, and how often in a hundred. The steady account is spared what would end its requests for
# long, so that there is always one that is asked for.
REACTIONS = {"reading": 65, "refusal": 14, "failure": 5, "unauthorized": 4, "forbidden": 2, "garbage": 4, "silence": 2,
             "stall": 2, "hangup": 2}
SPARED = ("unauthorized", "forbidden")
LEAST_WAIT = 60.0  # seconds between a refusal and the next request: no account is polled more often
GARBAGE = (b"", b"{", b"[" * 500, b'{"limits":7}', b"<html>busy</html>", bytes(range(256)))

Refusal = collections.namedtuple("Refusal", "at life could_be_noted")


def seconds_of(date):
    """Of a date as the program writes it, since 1970."""
    return datetime.datetime.fromisoformat(date.replace("Z", "+00:00")).timestamp()


def problem_of(now, life, refusal, until):
    """What is wrong with a request that comes `now`, in the life of that number, though the last one with its token was
    refused; `until` is what the shared file holds as the end of the wait. Nothing when all is well."""
    if until is not None and until > now:
        return f"asked again {until - now:.1f} s before the end of its wait"
    if refusal.life != life:
        return None  # killed before it could note the wait, or after it had passed
    if now < refusal.at + LEAST_WAIT:
        return f"asked again {now - refusal.at:.1f} s after a refusal"
    if refusal.could_be_noted and (until is None or until < refusal.at):
        return "its wait was not told to the other applications"
    return None


class Endpoint:
    """Listens on 127.0.0.1 from a thread of its own. `on_breach` is called with a text."""

    def __init__(self, world, clock, seed, on_breach):
        self.world, self.clock, self.seed, self.on_breach = world, clock, seed, on_breach
        self.life = 0  # the number of the program's present life
        self.counts = collections.Counter()
        self.last_request = clock.now()
        self.waits_kept = 0  # requests that came after the end of their wait, as they should
        self._choices = {}  # by account
        self._refusals = {}  # by token
        self._lock = threading.Lock()
        endpoint = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                endpoint.answer(self)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def port(self):
        return self._server.server_port

    def answer(self, request):
        token = request.headers.get("Authorization", "").removeprefix("Bearer ")
        known = re.fullmatch(r"soak-token(\.claude[a-z-]*)-\d+", token)
        if request.path != "/api/oauth/usage" or not known:
            self.on_breach(f"a request that nobody should make: {request.path}")
            return
        account = known[1]
        with self._lock:
            now = self.clock.now()
            self._check(now, account, token)
            reaction, number = self._choose(account)
            self.counts[reaction] += 1
            self.last_request = now
            if reaction == "refusal":
                noted = self.world.shared_reading(account) is not None
                self._refusals[token] = Refusal(now, self.life, noted)
        self._react(request, reaction, number)

    def _check(self, now, account, token):
        refusal = self._refusals.pop(token, None)
        if refusal is None:
            return
        reading = self.world.shared_reading(account) or {}
        until = reading.get("backoffUntil")
        problem = problem_of(now, self.life, refusal, None if until is None else seconds_of(until))
        if problem:
            self.on_breach(f"{account}: {problem}")
        self.waits_kept += until is not None

    def _choose(self, account):
        """The first request of an account gets a reading, so that there is a file in which a wait can be noted."""
        choice = self._choices.get(account)
        if choice is None:
            self._choices[account] = random.Random(f"{self.seed} {account}")
            return "reading", 50
        names = [name for name in REACTIONS if account != STEADY or name not in SPARED]
        return choice.choices(names, [REACTIONS[name] for name in names])[0], choice.randrange(100)

    def _react(self, request, reaction, number):
        if reaction == "silence":
            self._await_end(request)
        elif reaction == "hangup":
            request.close_connection = True
        elif reaction == "stall":
            self._send(request, 200, b'{"limits":', length=1000)
            self._await_end(request)
        elif reaction == "garbage":
            self._send(request, 200, GARBAGE[number % len(GARBAGE)])
        elif reaction == "reading":
            self._send(request, 200, json.dumps({"limits": [
                {"kind": "session", "group": "session", "percent": number},
                {"kind": "weekly_all", "group": "weekly", "percent": number / 2, "resets_at": "2100-01-01T00:00:00Z"},
            ]}).encode())
        else:
            status = {"refusal": 429, "failure": 500, "unauthorized": 401, "forbidden": 403}[reaction]
            retry_after = ("0", "30", "900", "soon")[number % 4] if reaction == "refusal" else None
            self._send(request, status, b"{}", retry_after=retry_after)

    @staticmethod
    def _send(request, status, body, length=None, retry_after=None):
        try:
            request.send_response(status)
            request.send_header("Content-Length", str(len(body) if length is None else length))
            if retry_after is not None:
                request.send_header("Retry-After", retry_after)
            request.end_headers()
            request.wfile.write(body)
        except OSError:  # killed meanwhile
            request.close_connection = True

    @staticmethod
    def _await_end(request):
        """Returns when the other side has had enough."""
        request.close_connection = True
        try:
            request.connection.recv(1)
        except OSError:
            pass
