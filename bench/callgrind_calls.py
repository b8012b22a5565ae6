#!/usr/bin/env python3
"""Counts what a shared object called in a profile that callgrind wrote with --dump-instr=yes.

    callgrind_calls.py PROFILE OBJECT

OBJECT is how the name of the file begins. Prints, as members of a JSON object, how often its code
executed an instruction that calls; one that calls what a register or a table names, such as a
virtual function; and one that locks the memory bus, as entering and leaving a lock and counting
references do. A call of another shared object is a plain call. A jump into a function is none.
"""

import re
import subprocess
import sys
from collections import Counter
from pathlib import Path

NAME = re.compile(r"ob=\((\d+)\)(?: (.*))?")
POSITION = re.compile(r"(\*|[+-]\d+|0x[0-9a-f]+) ")
INSTRUCTION = re.compile(r"\s*([0-9a-f]+):\t(.*)")
CALL = re.compile(r"(?:bnd )?call\b")
INDIRECT = re.compile(r"\*(?!.*\(%rip\))")
LOCKED = re.compile(r"lock |xchg .*\(")


def executed(profile):
    """How often each instruction ran, by (object, address)."""
    names, counts = {}, Counter()
    current, address, is_call = None, 0, False
    for line in profile.read_text(errors="replace").splitlines():
        name = NAME.match(line.removeprefix("c"))
        if name:
            names.setdefault(name[1], name[2])
            if line.startswith("ob="):
                current = names[name[1]]
            continue
        position = POSITION.match(line)
        if line.startswith("calls="):
            is_call = True
        elif position:
            where = position[1]
            if where.startswith("0x"):
                address = int(where, 16)
            elif where != "*":
                address += int(where)
            if not is_call:  # the line after calls= has what the called function took
                counts[current, address] += int(line.split()[2])
            is_call = False
    return counts


def instructions(path):
    """The text of each instruction of an object, by its address."""
    text = subprocess.run(["objdump", "-d", "--no-show-raw-insn", path], text=True, check=True,
                          stdout=subprocess.PIPE).stdout
    return {int(match[1], 16): match[2] for match in map(INSTRUCTION.match, text.splitlines())
            if match}


def main():
    if len(sys.argv) != 3:
        raise SystemExit("usage: callgrind_calls.py PROFILE OBJECT")
    counts = {place: count for place, count in executed(Path(sys.argv[1])).items()
              if Path(place[0]).name.startswith(sys.argv[2])}
    if not counts:
        raise SystemExit(f"{sys.argv[2]} is not in the profile")
    texts = {path: instructions(path) for path in {path for path, _ in counts}}
    calls = indirect_calls = locked = 0
    for (path, address), count in counts.items():
        text = texts[path].get(address, "")
        if CALL.match(text):
            calls += count
            indirect_calls += count if INDIRECT.search(text) else 0
        elif LOCKED.match(text):
            locked += count
    print(f'"calls": {calls}, "indirect_calls": {indirect_calls}, "locked": {locked}')


if __name__ == "__main__":
    main()
