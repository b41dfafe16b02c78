"""desktop BUILD_FOLDER PICTURES: shows the program of that folder in desktops of its own, and takes pictures of it."""
import argparse
import pathlib
import subprocess
import sys
import time

from processes import Missing, end_by_signals
from shots import Shots
from worlds import WORLDS

# World, scale, size of the letters. The longest ones first.
SHOTS = [("notes", 2, 1), ("notes", 1, 1), ("histories", 2, 1), ("histories", 1, 1),
         ("histories", 1, 1.5), ("four", 1, 1), ("four", 2, 1), ("long", 1, 1), ("long", 2, 1),
         ("four", 1, 1.5), ("empty", 1, 1), ("empty", 2, 1), ("offline", 1, 1)]
LABELLED = [("four", 1, 1), ("four", 2, 1)]  # these show the panel too
AT_ONCE = 4


def options_of(arguments):
    parser = argparse.ArgumentParser(prog="desktop", description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("pictures", type=pathlib.Path)
    parser.add_argument("--world", choices=WORLDS, help="only this one")
    parser.add_argument("--scale", type=int, default=1, help="of that world")
    parser.add_argument("--font", type=float, default=1, help="how many times as large its letters are")
    return parser.parse_args(arguments)


def take_all(options):
    """Each world in a process of its own, since a process has one desktop. Gives what went wrong."""
    left, running, problems = list(SHOTS), [], []
    try:
        while left or running:
            while left and len(running) < AT_ONCE:
                running.append(start(options, *left.pop(0)))
            for process in [process for process in running if process.poll() is not None]:
                running.remove(process)
                if process.returncode != 0:
                    problems.append(process.stderr.read())
            time.sleep(0.05)
    finally:
        for process in running:
            process.terminate()
        for process in running:
            process.communicate()
    return problems


def start(options, world, scale, font):
    command = [sys.executable, "-B", __file__, str(options.build), str(options.pictures), "--world", world, "--scale",
               str(scale), "--font", str(font)]
    return subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)


def make_overview(folder):
    """The single size in one picture, dark beside light."""
    pictures = [str(file) for kind in ("panel", "popover") for file in sorted(folder.glob(f"{kind}-*-1x.png"))]
    subprocess.run(["montage", *pictures, "-tile", "4x", "-geometry", "+12+12", "-background", "#6f7c8a",
                    str(folder / "all.png")], check=True, stdin=subprocess.DEVNULL)


def main():
    options = options_of(sys.argv[1:])
    end_by_signals()
    if options.world:
        shot = (options.world, options.scale, options.font)
        try:
            Shots(options.pictures, options.build, *shot).take(with_labels=shot in LABELLED)
        except Missing as missing:
            sys.exit(f"{options.world} at {options.scale}x: {missing}")
        return
    problems = take_all(options)
    if problems:
        sys.exit("\n".join(problems))
    make_overview(options.pictures)


if __name__ == "__main__":
    main()
