#!/usr/bin/env python3
"""Counts the calls that one operation of instructionProbe makes: all, those through a table or
pointer, and those that take a lock.

  count_calls.py BUILD_FOLDER OPERATION...

What is counted are the call instructions that run within measuredPart(), by callgrind, on the thread
that calls it; the loop around the operation is subtracted. The machine code comes from objdump.
"""

import collections
import re
import subprocess
import sys
import tempfile

TIMES = 1000
LOCKS = re.compile(r"ZEBThreadCriticalSection::(tryE|e)nter\(|pthread_(mutex|rwlock)_\w*lock@")
UNLOCKS = re.compile(r"unlock")


def executions(program, operation):
    """How often each instruction ran, by the file that it is in and its address there."""
    with tempfile.NamedTemporaryFile() as out:
        subprocess.run(["valgrind", "--tool=callgrind", "--dump-instr=yes",
                        "--toggle-collect=measuredPart*", "--callgrind-out-file=" + out.name,
                        "--log-file=/dev/null", program, operation, str(TIMES)], check=True)
        files, counts = {}, collections.Counter()
        file, address, is_of_call = None, 0, False
        for line in open(out.name, encoding="utf-8", errors="replace"):
            if named := re.match(r"(c?)ob=\((\d+)\)(?: (.*))?", line):
                name = files.setdefault(named[2], named[3])
                file = file if named[1] else name
            elif line.startswith("calls="):
                is_of_call = True  # the next line is what the callee cost
            elif place := re.match(r"(0x|\+|-|\*)([0-9a-f]*) \S+(?: (\d+))?", line):
                kind, number = place[1], int(place[2] or "0", 16 if place[1] == "0x" else 10)
                address = {"0x": number, "+": address + number, "-": address - number,
                           "*": address}[kind]
                if not is_of_call:
                    counts[file, address] += int(place[3] or 0)
                is_of_call = False
    return counts


def calls(counts):
    """How often each target was called; those that stand in a register or in memory as '*'."""
    targets = collections.Counter()
    for file in {file for file, _ in counts}:
        code = subprocess.run(["objdump", "-dC", "--no-show-raw-insn", file], text=True,
                              capture_output=True, check=False).stdout
        for address, target in re.findall(r"^\s*([0-9a-f]+):\s+(?:notrack )?call\s+(.*)$", code, re.M):
            count = counts.get((file, int(address, 16)), 0)
            targets["*" if target.startswith("*") else target] += count
    return targets


def main():
    program = sys.argv[1] + "/bin/instructionProbe"
    print("operation, calls, of these through a table, locks")
    for operation in sys.argv[2:]:
        targets = calls(executions(program, operation))
        locks = sum(count for target, count in targets.items()
                    if LOCKS.search(target) and not UNLOCKS.search(target))
        print(f"{operation}, {sum(targets.values()) / TIMES:.1f}, {targets['*'] / TIMES:.1f}, "
              f"{locks / TIMES:.1f}")


main()
