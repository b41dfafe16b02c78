"""What is looked at in a running program, and what a kill leaves: pure but for the reading of /proc and of files."""
import collections
import json
import os
import pathlib

Sample = collections.namedtuple("Sample", "threads descriptors sockets resident")  # resident in KiB

MOST_SOCKETS = 8  # six connections to one host at most, and room for a closing one
GROWTH = 1.10  # of the memory, from the end of the first third to the last
LEAST_WINDOWS = 4  # of a life in which memory is judged


def sample(pid):
    """Of a process as it stands; nothing when it has just ended."""
    process = pathlib.Path(f"/proc/{pid}")
    try:
        threads = len(os.listdir(process / "task"))
        descriptors = sockets = 0
        for entry in os.scandir(process / "fd"):
            try:
                is_socket = os.readlink(entry.path).startswith("socket:")
            except FileNotFoundError:
                continue  # closed meanwhile
            sockets += is_socket
            descriptors += not is_socket
        status = dict(line.split(":", 1) for line in (process / "status").read_text().splitlines())
        return Sample(threads, descriptors, sockets, int(status["VmRSS"].split()[0]))
    except (OSError, KeyError):  # a process that has ended has no memory
        return None


def quiet_points(samples, size):
    """The least of each figure in each run of `size` samples: what is there when nothing is going on. The first two
    runs are the warming up, and the last may be cut short."""
    windows = [samples[i:i + size] for i in range(0, len(samples) - size + 1, size)]
    return [Sample(*(min(figures) for figures in zip(*window))) for window in windows[2:]]


def problems(quiet):
    """What is wrong with a life that has these quiet points, as texts."""
    found = []
    if not quiet:
        return found
    for figure in ("threads", "descriptors"):
        numbers = [getattr(point, figure) for point in quiet]
        if len(set(numbers)) > 1:
            found.append(f"the number of {figure} does not stay the same: {numbers}")
    sockets = max(point.sockets for point in quiet)
    if sockets > MOST_SOCKETS:
        found.append(f"{sockets} sockets are open while nothing is going on")
    if len(quiet) >= LEAST_WINDOWS:
        third = len(quiet) // 3
        before = quiet[third - 1].resident
        after = max(point.resident for point in quiet[-third:])
        if after > before * GROWTH:
            found.append(f"memory has grown from {before} to {after} KiB")
    return found


def file_problems(paths):
    """What is wrong with the program's files, as texts; and how many were looked at."""
    found, count = [], 0
    for path in paths:
        data = path.read_bytes()
        if b"soak-token" in data:
            found.append(f"{path.name} holds a token")
        if path.suffix not in (".json", ".jsonl"):
            continue
        count += 1
        try:
            for text in data.splitlines() if path.suffix == ".jsonl" else [data]:
                json.loads(text)
        except ValueError as error:
            found.append(f"{path} is no JSON: {error}")
    return found, count
