#!/usr/bin/env python3
"""Counts what was called in a profile that callgrind wrote with --dump-instr=yes.

    callgrind_calls.py PROFILE

Prints, as JSON, how often the profile's part of the program executed an instruction that calls, one
that calls what a register or a table of addresses names, such as a virtual function, and one that
locks the memory bus, as entering a lock and counting references do. Calls of other shared objects go
through a table, too, but count as plain calls; so do jumps into the next function as none.
"""

import json
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
    if len(sys.argv) != 2:
        raise SystemExit("usage: callgrind_calls.py PROFILE")
    counts = executed(Path(sys.argv[1]))
    result = Counter(calls=0, indirect_calls=0, locked=0)
    for path in {path for path, _ in counts}:
        if not Path(path).is_file():
            continue
        texts = instructions(path)
        for (of, address), count in counts.items():
            text = texts.get(address, "") if of == path else ""
            if CALL.match(text):
                result["calls"] += count
                result["indirect_calls"] += count if INDIRECT.search(text) else 0
            elif LOCKED.match(text):
                result["locked"] += count
    print(json.dumps(result))


if __name__ == "__main__":
    main()
