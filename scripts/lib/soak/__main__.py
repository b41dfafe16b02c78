"""soak: the program, many times as fast as real time, against an endpoint that misbehaves at times, killed and started
again at random. Ends with 1 at the first thing that is wrong, and leaves its folder then."""
import argparse
import random
import shutil
import sys
import tempfile

from soak import Breach, Soak
from world import FAKETIME


def options_of(arguments):
    parser = argparse.ArgumentParser(prog="soak", description=__doc__)
    parser.add_argument("--seconds", type=float, default=1800, help="how long it takes (1800)")
    parser.add_argument("--speed", type=float, default=20, help="how many times as fast the program's clock is (20)")
    parser.add_argument("--seed", type=int, default=random.randrange(10**6), help="to repeat the choices of a run")
    parser.add_argument("--program", required=True, help=argparse.SUPPRESS)
    return parser.parse_args(arguments)


def main():
    options = options_of(sys.argv[1:])
    if FAKETIME is None:
        sys.exit("soak: libfaketime is missing (package faketime)")
    print(f"{options.seconds:g} s at {options.speed:g} times the speed, seed {options.seed}", flush=True)
    folder = tempfile.mkdtemp(prefix="vellumor-soak-")
    soak = Soak(folder, options)
    try:
        soak.run()
    except Breach as breach:
        sys.exit(f"BREACH (seed {options.seed}, life {soak.endpoint.life}): {breach}\nEverything is in {folder}")
    for name, value in soak.table().items():
        print(f"{name:30} {value}")
    shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
