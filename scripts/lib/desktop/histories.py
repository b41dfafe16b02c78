"""Weeks that were: the readings of an account, and the receipts of the weeks before them."""
import datetime
import random
import time

from world import DAY, HOUR, date, reading, window

STEP = 600.0  # seconds between two readings
WORK = range(9, 19)  # hours of a day in which something is used
SESSION = 5 * HOUR
WEEK = 7 * DAY
WEEKLY = {"weekly_all": 1.0, "weekly_scoped": 0.55, "seven_day_sonnet": 0.3}  # how fast each grows beside the first


class Week:
    """Seven days up to now, or as many as `days` says. `reset_ago` is when the weekly limits began again;
    `is_watched` takes how long ago a moment is, and the hour of its day. Deterministic but for the present time."""

    def __init__(self, kinds, days=7.0, reset_ago=2.6 * DAY, is_watched=lambda ago, hour: True, pace=1.0):
        self.reset_ago = reset_ago
        self._weekly = {kind: 14.0 * WEEKLY[kind] for kind in kinds if kind != "session"}
        self._session, self._session_began = 0.0, None
        self._pace = pace
        self._random = random.Random(len(kinds))
        self.samples = []
        for number in range(int(days * DAY / STEP), 0, -1):
            ago = number * STEP
            hour = datetime.datetime.fromtimestamp(time.time() - ago).hour
            self._pass(ago, hour)
            if is_watched(ago, hour):
                self.samples.append({"at": date(-ago), "percents": self._percents()})

    def _percents(self):
        values = {"session": self._session, **self._weekly}
        return {kind: round(percent, 1) for kind, percent in values.items()}

    def _pass(self, ago, hour):
        if self._session_began is not None and self._session_began - ago >= SESSION:
            self._session, self._session_began = 0.0, None
        if self.reset_ago - STEP < ago <= self.reset_ago:
            self._weekly = dict.fromkeys(self._weekly, 0.0)
        if hour not in WORK or self._random.random() < 0.35:
            return
        if self._session_began is None:
            self._session_began = ago
        used = self._random.uniform(0.0, 6.5) * self._pace
        self._session = min(100.0, self._session + used)
        for kind in self._weekly:
            self._weekly[kind] = min(100.0, self._weekly[kind] + used * 0.13 * WEEKLY[kind])

    def answer(self, scope=None):
        """What the endpoint says at its end."""
        limits = [window("session", round(self._session, 1), SESSION - (self._session_began or 0) or None)]
        for kind, percent in self._weekly.items():
            limits.append(window(kind, round(percent, 1), WEEK - self.reset_ago,
                                 scope if kind == "weekly_scoped" else None, group="weekly"))
        return reading(*limits)


def receipt(ends_ago, coverage, peaks, resets=1):
    """Of the week that ended so long ago; `peaks` by window, each of them somewhere in that week."""
    return {"weekStart": date(-ends_ago - WEEK), "weekEnd": date(-ends_ago), "archivedAt": date(-ends_ago + HOUR),
            "coveragePercent": coverage, "sampleCount": int(coverage * 10), "windows": [
                {"kind": kind, "peakPercent": peak, "peakAt": date(-ends_ago - (number + 1) * 31 * HOUR),
                 "observedResets": resets if kind == "session" else 0}
                for number, (kind, peak) in enumerate(peaks.items())]}


def by_day_alone(ago, hour):
    """Off at night, and the whole of one day."""
    return 8 <= hour < 23 and not 3.9 * DAY < ago < 5.1 * DAY
