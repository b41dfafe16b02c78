"""The world of a soak: a home with four accounts, a clock that runs fast, and the program in both."""
import hashlib
import json
import os
import pathlib
import subprocess
import time

FAKETIME = next(pathlib.Path("/usr/lib").glob("*/faketime/libfaketimeMT.so.1"), None)
FAR_AWAY = 4102444800000  # in 2100, as milliseconds since 1970
STEADY, WORK, TEAM, EXPIRED = ".claude", ".claude-work", ".claude-team", ".claude-old"

# What renews a token: a new one each time, in the place of the old.
CLAUDE = f"""#!/bin/sh
dir=${{CLAUDE_CONFIG_DIR:-$HOME/.claude}}
printf '{{"claudeAiOauth":{{"accessToken":"soak-token%s-%s","expiresAt":{FAR_AWAY}}}}}' \\
    "$(basename "$dir")" $$ >"$dir/.new-credentials" && mv "$dir/.new-credentials" "$dir/.credentials.json"
"""


class FastClock:
    """Begins at the present time and runs `speed` times as fast. The program's own clock is the same or, by the time
    that its start takes, behind: what has come for the program has come here."""

    def __init__(self, speed):
        self.speed = speed
        self.begin = time.time()

    def now(self):
        return self.begin + (time.time() - self.begin) * self.speed

    def setting(self):
        """For libfaketime in a program that starts now."""
        return f"+{(time.time() - self.begin) * (self.speed - 1):.3f} x{self.speed:g}"


class World:
    """Everything lies in `folder`."""

    def __init__(self, folder, program, clock):
        self.folder = pathlib.Path(folder)
        self.home = self.folder / "home"
        self.program = program
        self.clock = clock
        self.data = [self.home / ".local/share/Vellumor", self.home / ".local/share/Quorle"]
        (self.folder / "run").mkdir(mode=0o700)
        for account in (STEADY, WORK, TEAM, EXPIRED):
            (self.home / account).mkdir(parents=True)
            self._sign_in(account, FAR_AWAY)
        self.let_expire()
        self._put(self.home / "bin/claude", CLAUDE, 0o755)
        self._put(self.data[0] / "preferences.json", '{"userInterval":60}', 0o600)

    def let_expire(self):
        """The token of one account is out of date from now on, so that it must be renewed."""
        self._sign_in(EXPIRED, int((time.time() - 3600) * 1000))

    def shared_reading(self, account):
        """The file in which the applications share what they know of the account; nothing where it is missing."""
        name = hashlib.sha256(str(self.home / account).encode()).hexdigest()[:8]
        try:
            return json.loads((self.data[1] / f"usage-cache/{name}.json").read_bytes())
        except FileNotFoundError:
            return None

    def start(self, port, log):
        environment = {
            "HOME": str(self.home), "XDG_RUNTIME_DIR": str(self.folder / "run"), "LC_ALL": "C.UTF-8",
            "PATH": f"{self.home}/bin:/usr/bin:/bin", "SHELL": "/bin/sh", "QT_QPA_PLATFORM": "offscreen",
            "DBUS_SESSION_BUS_ADDRESS": "disabled:", "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent",
            "VELLUMOR_API_BASE": f"http://127.0.0.1:{port}",
        }
        # With this process ends the program, however it ends.
        command = ["setpriv", "--pdeathsig", "KILL", "env", f"LD_PRELOAD={FAKETIME}",
                   f"FAKETIME={self.clock.setting()}", self.program]
        with open(self.folder / log, "ab") as output:
            return subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=output)

    def files(self):
        """Every file of the program that is no half-written one which a kill has left."""
        for folder in self.data:
            for path in folder.rglob("*"):
                if path.is_file() and not path.name.endswith(".tmp"):
                    yield path

    def _sign_in(self, account, expires_at):
        path = self.home / account / ".credentials.json"
        token = f"soak-token{account}-{time.monotonic_ns()}"
        self._put(path.with_suffix(".new"), json.dumps(
            {"claudeAiOauth": {"accessToken": token, "expiresAt": expires_at}}), 0o600)
        os.replace(path.with_suffix(".new"), path)

    @staticmethod
    def _put(path, text, mode):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(mode)
