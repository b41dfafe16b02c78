"""A made-up home: accounts in every state, what the usage endpoint says of each, and what a program that has run before
would have left."""
import dataclasses
import datetime
import hashlib
import json
import os
import time

HOUR, DAY = 3600.0, 86400.0
FAR_AWAY = 4102444800000  # in 2100, as milliseconds since 1970

# Renews a token as the account's folder tells: with one that works, with one that does not, after a very long time, or
# not at all.
CLAUDE = f"""#!/bin/sh
dir=${{CLAUDE_CONFIG_DIR:-$HOME/.claude}}
renewal=$(cat "$dir/renewal" 2>/dev/null)
case $renewal in
    "") exit 1 ;;
    late) exec sleep 1000 ;;
esac
printf '{{"claudeAiOauth":{{"accessToken":"%s","refreshToken":"","expiresAt":{FAR_AWAY}}}}}' "$renewal" >"$dir/.new" &&
    mv "$dir/.new" "$dir/.credentials.json"
"""


def date(seconds_from_now):
    moment = datetime.datetime.fromtimestamp(time.time() + seconds_from_now, datetime.timezone.utc)
    return moment.strftime("%Y-%m-%dT%H:%M:%S.000Z")


def seconds_until(text):
    return datetime.datetime.fromisoformat(text.replace("Z", "+00:00")).timestamp() - time.time()


def window(kind, percent, resets_in=None, scope=None, group=None):
    """One limit, as the endpoint writes it; `resets_in` in seconds."""
    limit = {"kind": kind, "group": group or kind.split("_")[0], "percent": percent}
    if resets_in is not None:
        limit["resets_at"] = date(resets_in)
    if scope is not None:
        limit["scope"] = {"model": {"display_name": scope}}
    return limit


def session(percent, resets_in=2 * HOUR):
    return window("session", percent, resets_in)


def weekly(percent, resets_in=3 * DAY):
    return window("weekly_all", percent, resets_in)


CREDITS = {"is_enabled": True, "used_credits": 1250, "currency": "EUR", "monthly_limit": 5000}


def reading(*windows, **more):
    return {"body": {"limits": list(windows), **more}}


@dataclasses.dataclass
class Account:
    """`folder` is its config directory's name after ".claude-"; `answer` is what the endpoint says to its token;
    `known` are the windows of a reading that is `age` seconds old. `signed_in` is "yes", "expired" (and `renewal` what
    Claude Code makes of it), "out" or "never". `shows` is what the popover says of it once it has been looked
    after."""

    folder: str
    name: str
    answer: dict = dataclasses.field(default_factory=dict)
    plan: str = "claude_pro"
    signed_in: str = "yes"
    renewal: str = ""
    known: tuple = ()
    age: float = 2400.0
    waits: float = 0.0  # seconds until the endpoint may be asked again
    has_history: bool = False
    samples: tuple = ()  # in the place of that history
    receipts: tuple = ()
    is_pinned: bool = True
    shows: str = ""

    @property
    def token(self):
        return f"demonstration-token-{self.folder}"


class World:
    """Lies in `home`, whose data folder is the usual one."""

    def __init__(self, home, accounts=(), preferences=None):
        self.home = home
        self.data = home / ".local/share"
        self.accounts = []
        self.answers = {}
        self._put(".local/bin/claude", CLAUDE, 0o755)
        self.set_preferences(**{"userInterval": 600, **(preferences or {})})
        self._put_json(".local/share/Vellumor/onboarding.json", {"schemaVersion": 1, "completedVersion": 1})
        for account in accounts:
            self._make(account)
        self._write_lists()

    @property
    def answers_file(self):
        return self.home / "answers.json"

    def add(self, account, is_known=False):
        """One more, which the program has to find first unless it `is_known`."""
        self._make(account)
        if not is_known:
            self.accounts.pop()
        self._write_answers()
        return account

    def answer(self, account, answer):
        self.answers[account.token] = answer
        self._write_answers()

    def set_preferences(self, **changed):
        path = self.data / "Vellumor/preferences.json"
        preferences = json.loads(path.read_text()) if path.exists() else {}
        self._put_json(".local/share/Vellumor/preferences.json", {**preferences, **changed})

    def files(self):
        """Of the program, by their names in the data folder."""
        return sorted(str(path.relative_to(self.data)) for name in ("Vellumor", "Quorle")
                      for path in (self.data / name).rglob("*") if path.is_file())

    def directory(self, account):
        return f"{self.home}/.claude-{account.folder}"

    def _make(self, account):
        self.accounts.append(account)
        self.answers[account.token] = account.answer
        folder = f".claude-{account.folder}"
        self._put_json(f"{folder}/.claude.json", {"oauthAccount": {
            "emailAddress": f"{account.folder}@example.org", "organizationName": "Example",
            "organizationType": account.plan}})
        if account.signed_in != "never":
            ends = {"yes": FAR_AWAY, "expired": int((time.time() - HOUR) * 1000), "out": 0}
            self._put_json(f"{folder}/.credentials.json", {"claudeAiOauth": {
                "accessToken": "" if account.signed_in == "out" else account.token, "refreshToken": "",
                "expiresAt": ends[account.signed_in], "subscriptionType": account.plan.removeprefix("claude_")}})
        if account.renewal:
            self._put(f"{folder}/renewal", account.renewal)
        if account.known:
            self._put_json(f".local/share/Quorle/usage-cache/{self._hash(account)}.json",
                           self._cached(account, with_wait=True))
        samples = account.samples or (self._history(account) if account.has_history else ())
        if samples:
            self._put_json(f".local/share/Vellumor/history/{self._hash(account)}.json", samples)
        if account.receipts:
            self._put_json(f".local/share/Vellumor/receipts/{self._hash(account)}.json",
                           {"schemaVersion": 1, "receipts": account.receipts})

    def _hash(self, account):
        return hashlib.sha256(self.directory(account).encode()).hexdigest()[:8]

    @staticmethod
    def _cached(account, with_wait=False):
        file = {"schemaVersion": 2, "fetchedAt": date(-account.age), "source": "ostrelline", "windows": [
            {"kind": limit["kind"], "group": limit["group"], "percent": limit["percent"], "isActive": True,
             **({"resetsAt": limit["resets_at"]} if "resets_at" in limit else {})} for limit in account.known]}
        if with_wait and account.waits:
            file["backoffUntil"] = date(account.waits)
        return file

    @staticmethod
    def _history(account):
        """Four days of it, with a night's gap each, at an even pace up to what the endpoint says."""
        limits = account.answer["body"]["limits"]
        samples = []
        for ago in range(int(4 * DAY), 0, -300):
            if ago > DAY / 2 and (ago // HOUR) % 24 < 8:
                continue
            percents = {}
            for limit in limits:
                length = 5 * HOUR if limit["kind"] == "session" else 7 * DAY
                elapsed = length - seconds_until(limit["resets_at"])
                part = 1 - ago / elapsed if ago < elapsed else 1 - ((ago - elapsed) % length) / length
                percents[limit["kind"]] = round(limit["percent"] * part, 2)
            samples.append({"at": date(-ago), "percents": percents})
        return samples

    def _write_lists(self):
        self._write_answers()
        self._put_json(".local/share/Vellumor/accounts.json", {"schemaVersion": 1, "accounts": {
            self.directory(account): {"id": f"{number:06x}", "name": account.name, "order": number, "tracked": True,
                                      "pinned": account.is_pinned} for number, account in enumerate(self.accounts)}})

        # What the program has kept of the run before.
        self._put_json(".local/share/Vellumor/usage-snapshots.json", {"schemaVersion": 1, "snapshots": {
            self.directory(account): self._cached(account) for account in self.accounts if account.known}})

    def _write_answers(self):
        self._put_json("answers.json", self.answers)

    def _put_json(self, name, value):
        self._put(name, json.dumps(value))

    def _put(self, name, text, mode=0o600):
        """A reader sees the file before or after, and never a part of it."""
        path = self.home / name
        path.parent.mkdir(parents=True, exist_ok=True)
        new = path.with_name(f".{path.name}.new")
        new.write_text(text)
        new.chmod(mode)
        os.replace(new, path)
