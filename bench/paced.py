#!/usr/bin/env python3
"""Runs blocks of paced events, the logs in turn, until there are enough rounds without other load.

    paced.py ROUNDS MOST_ATTEMPTS MOST_LOAD OUTPUT NAME=PROGRAM:LOG...

A round is one block of each log, in an order that moves on by one from round to round, so that all
ratios are of blocks measured right after each other. A round beside more foreign load than
MOST_LOAD, a share of all processors' time, is void and repeated, MOST_ATTEMPTS rounds in all at
most. Where that does not suffice, the rounds with the least load make up for those that lack.
"""

import json
import os
import resource
import subprocess
import sys
import time
from pathlib import Path

EVENTS = "5000"
SECONDS_AT_MOST = 60


def busy_seconds():
    """What all processors have worked, or their host has taken from them, since they started."""
    fields = [int(field) for field in Path("/proc/stat").read_text().split("\n", 1)[0].split()[1:]]
    user, nice, system, _, _, irq, softirq, steal = fields[:8]
    return (user + nice + system + irq + softirq + steal) / os.sysconf("SC_CLK_TCK")


def own_seconds():
    """What this process and the programs that it ran and waited for have worked."""
    used = [resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)]
    return sum(times.ru_utime + times.ru_stime for times in used)


def block(program, log):
    done = subprocess.run([program, log, EVENTS], stdout=subprocess.PIPE, check=True, text=True,
                          timeout=SECONDS_AT_MOST)
    return json.loads(done.stdout)


def measure_round(logs, first):
    names = list(logs)
    begin, busy, own = time.monotonic(), busy_seconds(), own_seconds()
    blocks = {name: block(*logs[name]) for name in names[first:] + names[:first]}
    foreign = (busy_seconds() - busy) - (own_seconds() - own)
    share = foreign / ((time.monotonic() - begin) * os.cpu_count())
    return {"foreign": max(share, 0.0), "blocks": blocks}


def main():
    if len(sys.argv) < 6:
        raise SystemExit(
            "usage: paced.py ROUNDS MOST_ATTEMPTS MOST_LOAD OUTPUT NAME=PROGRAM:LOG...")
    wanted, most_attempts, most_load = int(sys.argv[1]), int(sys.argv[2]), float(sys.argv[3])
    logs = {}
    for argument in sys.argv[5:]:
        name, _, what = argument.partition("=")
        logs[name] = what.rsplit(":", 1)
    quiet, void = [], []
    while len(quiet) < wanted and len(quiet) + len(void) < most_attempts:
        done = measure_round(logs, (len(quiet) + len(void)) % len(logs))
        (quiet if done["foreign"] <= most_load else void).append(done)
    void.sort(key=lambda done: done["foreign"])
    used = quiet + void[:wanted - len(quiet)]
    Path(sys.argv[4]).write_text(json.dumps(
        {"most_load": most_load, "quiet_rounds": len(quiet), "void_rounds": len(void),
         "rounds": used}, indent=1))
    print(f"{len(quiet)} of {wanted} rounds were quiet, {len(void)} were void")


if __name__ == "__main__":
    main()
