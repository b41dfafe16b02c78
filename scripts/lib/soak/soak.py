"""The run of a soak: the lives of the program, and what is looked at in each."""
import collections
import random
import signal
import time

from endpoint import Endpoint
from health import file_problems, problems, quiet_points, sample
from world import FastClock, World

SAMPLING = 0.2  # seconds
WINDOW = 150.0  # seconds by the program's clock, in which there is a quiet point
SILENCE = 2400.0  # likewise, after which somebody should have been asked for

Life = collections.namedtuple("Life", "seconds ending is_aimed")


class Breach(Exception):
    pass


def plan(seconds, choice):
    """The lives of the program: a long one, in which it can be seen to stay as it is, among shorter ones and some that
    end while they begin."""
    long_one = Life(seconds * 0.5, signal.SIGTERM, False)
    lives, left = [], seconds - long_one.seconds
    while left > 0:
        span = choice.uniform(0.02, 1.0) if choice.random() < 0.3 else choice.uniform(0.05, 0.2) * seconds
        ending = choice.choice([signal.SIGKILL, signal.SIGTERM])
        lives.append(Life(min(span, left), ending, is_aimed=choice.random() < 0.5))
        left -= span
    lives.insert(choice.randrange(len(lives)), long_one)
    return lives


class Soak:
    def __init__(self, folder, options):
        self.clock = FastClock(options.speed)
        self.world = World(folder, options.program, self.clock)
        self.breaches = []
        self.endpoint = Endpoint(self.world, self.clock, options.seed, self.breaches.append)
        self.choice = random.Random(options.seed)
        self.plan = plan(options.seconds, self.choice)
        self.longest = max(life.seconds for life in self.plan)
        self.window = max(1, round(WINDOW / options.speed / SAMPLING))
        self.begin = self.clock.now()  # of the present life
        self.samples = []  # of all lives
        self.kept = []  # of the long one
        self.files_looked_at = 0

    def run(self):
        for number, life in enumerate(self.plan, 1):
            self.endpoint.life = number
            self._live(number, life)

    def _live(self, number, life):
        log = f"log-{number}"
        if life.seconds == self.longest or self.choice.random() < 0.5:
            self.world.let_expire()
        self.endpoint.last_request = self.begin = self.clock.now()
        process = self.world.start(self.endpoint.port, log)
        try:
            samples = self._watch(process, life, log)
            if life.is_aimed:
                self._aim()
        finally:
            process.send_signal(life.ending)
            status = process.wait()
        self._stop_at(self.breaches)
        if status != -life.ending:
            raise Breach(f"it did not end by {life.ending.name} but with {status}; see {log}")
        found, count = file_problems([*self.world.files(), self.world.folder / log])
        self.files_looked_at += count
        self._stop_at(found)
        quiet = quiet_points(samples, self.window)
        self._stop_at(problems(quiet))
        self.samples += samples
        if life.seconds == self.longest:
            self.kept = quiet

    def _watch(self, process, life, log):
        samples = []
        end = time.monotonic() + life.seconds
        while (left := end - time.monotonic()) > 0:
            time.sleep(min(SAMPLING, left))
            self._stop_at(self.breaches)
            if process.poll() is not None:
                raise Breach(f"it has ended by itself with {process.returncode}; see {log}")
            if self.clock.now() - self.endpoint.last_request > SILENCE:
                raise Breach(f"nobody has been asked for in {SILENCE:.0f} s; see {log}")
            is_warm = self.endpoint.last_request > self.begin  # the first request makes a thread
            if is_warm and left > SAMPLING and (figures := sample(process.pid)):
                samples.append(figures)
        return samples

    def _aim(self):
        """Waits, but not for long, for the moments in which an answer is written down."""
        last, end = self.endpoint.last_request, time.monotonic() + 1
        while self.endpoint.last_request == last and time.monotonic() < end:
            time.sleep(0.002)
        time.sleep(self.choice.uniform(0, 0.02))

    @staticmethod
    def _stop_at(breaches):
        if breaches:
            raise Breach(breaches[0])

    def table(self):
        counts = self.endpoint.counts
        endings = collections.Counter(life.ending.name for life in self.plan)
        memory = f"{self.kept[0].resident} / {self.kept[-1].resident} KiB" if self.kept else "-"
        return {
            "time of the program": f"{self.clock.now() - self.clock.begin:.0f} s",
            "lives": len(self.plan),
            "ended by": ", ".join(f"{name} {count}" for name, count in sorted(endings.items())),
            "files that are whole": self.files_looked_at,
            "requests": sum(counts.values()),
            "answers": ", ".join(f"{name} {count}" for name, count in counts.most_common()),
            "429s waited out": self.endpoint.waits_kept,
            "threads, at most": max((figures.threads for figures in self.samples), default=0),
            "descriptors, at most": max((figures.descriptors for figures in self.samples), default=0),
            "sockets, at most": max((figures.sockets for figures in self.samples), default=0),
            "quiet points of the long life": len(self.kept),
            "memory in it, first / last": memory,
        }
