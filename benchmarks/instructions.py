#!/usr/bin/env python3
"""Counts the instructions of representative calls with callgrind and compares them with the record.

Usage: instructions.py BUILD_FOLDER [--record]

Exit codes: 0 every count is within 3 % of the record, or was recorded; 1 some are not; 2 bad usage, or
no count to be had; 3 the record is of another machine: processor, compiler or libraries differ, and
with them the instructions.
"""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import machine

RECORD = Path(__file__).resolve().parent / "instructions.json"
ALLOWED = 0.03
# The C library and the C++ library pick code by the processor's flags; gcc writes ours.
PACKAGES = ["libc6", "libstdc++6", "gcc", "valgrind"]


def here(build):
    """What counts depend on beside the code."""
    flags = sorted(set(machine.field_of(machine.read("/proc/cpuinfo"), "flags").split()))
    return {"compiler": machine.compiler_of(build), "packages": machine.versions(PACKAGES),
            "processor flags": " ".join(flags)}


def misfits(record, now):
    """Sentences that say what of the record is not so here."""
    out = []
    if record["compiler"] != now["compiler"]:
        out.append(f"compiler: recorded {record['compiler']}, here {now['compiler']}")
    for name in sorted(record["packages"].keys() | now["packages"].keys()):
        old, new = record["packages"].get(name, ""), now["packages"].get(name, "")
        if old != new:
            out.append(f"package {name}: recorded {old or 'none'}, here {new or 'none'}")
    old, new = (set(flags["processor flags"].split()) for flags in (record, now))
    if old - new:
        out.append("processor flags missing here: " + " ".join(sorted(old - new)))
    if new - old:
        out.append("processor flags not recorded: " + " ".join(sorted(new - old)))
    return out


def total_in(text):
    """The instructions that a callgrind output file sums up to."""
    match = re.search(r"^(?:totals|summary): (\d+)", text, re.MULTILINE)
    if not match or int(match[1]) == 0:
        raise ValueError("callgrind counted nothing")
    return int(match[1])


def count(program, call):
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "callgrind.out"
        command = ["valgrind", "--tool=callgrind", "--collect-atstart=no",
                   "--toggle-collect=measured(*", f"--callgrind-out-file={out}", program, call]
        done = subprocess.run(command, capture_output=True, encoding="utf-8", check=False)
        if done.returncode != 0:
            raise ValueError(f"{call}: {done.stderr.strip()[-300:]}")
        return total_in(out.read_text(encoding="utf-8"))


def counts_of(program):
    calls = subprocess.run([program], capture_output=True, encoding="utf-8", check=True).stdout.split()
    return {call: count(program, call) for call in calls}


def change(old, new):
    return (new - old) / old


def is_within(old, new):
    return old is not None and new is not None and abs(change(old, new)) <= ALLOWED


def rows(recorded, counted):
    """(call, recorded, counted, whether they agree), of every call of either."""
    for call in sorted(recorded.keys() | counted.keys()):
        old, new = recorded.get(call), counted.get(call)
        yield call, old, new, is_within(old, new)


def line(call, old, new, is_good):
    by = f"{change(old, new):+8.2%}" if old and new else " " * 8
    words = [f"{value:12,}" if value else "        none" for value in (old, new)]
    return f"{call:20} {words[0]} {words[1]} {by}  {'' if is_good else 'BEYOND 3 %'}".rstrip()


def compare(build, program):
    record = json.loads(RECORD.read_text(encoding="utf-8"))
    differences = misfits(record["machine"], here(build))
    if differences:
        print("bench-check: the record is of another machine; `make bench-record` makes one of this.")
        print("\n".join("  " + difference for difference in differences))
        return 3
    table = list(rows(record["counts"], counts_of(program)))
    print(f"{'call':20} {'recorded':>12} {'counted':>12} {'change':>8}")
    print("\n".join(line(*row) for row in table))
    return 0 if all(row[3] for row in table) else 1


def write_record(build, program):
    record = {"machine": here(build), "counts": counts_of(program)}
    RECORD.write_text(json.dumps(record, indent=2) + "\n", encoding="utf-8")
    print(f"bench-record: {len(record['counts'])} counts")
    return 0


def main(arguments):
    if not arguments or arguments[1:] not in ([], ["--record"]):
        print(__doc__, file=sys.stderr)
        return 2
    build = Path(arguments[0])
    program = str(build / "benchmarks" / "bench_calls")
    try:
        return (write_record if arguments[1:] else compare)(build, program)
    except (OSError, ValueError, subprocess.CalledProcessError) as fault:
        print(f"bench-check: {fault}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
