#!/usr/bin/env python3
"""Counts the instructions of a few small workloads under valgrind and compares them with a committed file.

    instructions.py PROGRAM [--file FILE] [--update]

PROGRAM is `omtree-instructions` of the bench preset. Ends with status 1 when a workload takes over 3 % more instructions
than FILE (benchmarks/instructions.tsv) says, or when the two do not name the same workloads; says how to accept a
change. Counts hold for one compiler and one C library: where these differ from the file's, it says so and ends with
status 0. --update writes the counts into FILE instead.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

FILE = Path(__file__).resolve().parent.parent / "benchmarks" / "instructions.tsv"
MOST_GROWTH = 0.03
HEAD = """# Instructions of the workloads in Instructions.cpp, and the compiler and C library that the counts hold for.
# `make instructions` compares; `make instructions UPDATE=1` writes this file.
"""
# Which memcpy and strlen the C library picks depends on the processor. Without these features it picks the same ones
# on every machine.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX512BW,-AVX2,-AVX,-AVX_Fast_Unaligned_Load,-ERMS,-FSRM,-BMI2,-RTM"


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def count(program, workload):
    """Instructions inside omtree_measured."""
    with tempfile.TemporaryDirectory() as folder:
        profile = Path(folder) / "profile"
        done = subprocess.run(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", "--toggle-collect=omtree_measured",
             program, workload],
            capture_output=True, text=True, check=False, env={**os.environ, "GLIBC_TUNABLES": PLAIN_PROCESSOR})
        if done.returncode != 0:
            sys.exit(f"instructions.py: {workload} failed under valgrind:\n{done.stderr}")
        instructions = int(re.search(r"^totals: (\d+)", profile.read_text(), re.MULTILINE)[1])
        if instructions == 0:
            sys.exit(f"instructions.py: {workload}: nothing was counted")
        return instructions


def read(text):
    """Versions and counts of a file's text, each by name."""
    versions, counts = {}, {}
    for line in text.splitlines():
        if line and not line.startswith("#"):
            kind, name, value = line.split("\t")
            if kind == "version":
                versions[name] = value
            else:
                counts[name] = int(value)
    return versions, counts


def written(versions, counts):
    lines = [f"version\t{name}\t{value}\n" for name, value in versions.items()]
    lines += [f"count\t{name}\t{value}\n" for name, value in sorted(counts.items())]
    return HEAD + "".join(lines)


def compare(counts, committed):
    """Lines to print, and whether something is wrong."""
    lines, wrong = [], False
    for name in sorted(counts.keys() | committed.keys()):
        if name not in committed or name not in counts:
            where = "the file" if name not in committed else "the program"
            lines.append(f"{name}: not in {where}")
            wrong = True
            continue
        growth = counts[name] / committed[name] - 1
        verdict = "GREW TOO MUCH" if growth > MOST_GROWTH else "less, worth an update" if growth < -MOST_GROWTH else ""
        lines.append(f"{name:16} {counts[name]:13,} instructions, {committed[name]:13,} in the file, {growth:+.1%}  {verdict}")
        wrong = wrong or growth > MOST_GROWTH
    return [line.rstrip() for line in lines], wrong


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=Path)
    parser.add_argument("--file", type=Path, default=FILE)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()

    program = arguments.program.resolve()
    versions = dict(line.split("\t") for line in output_of(program, "--versions").splitlines())
    if not arguments.update:
        committed_versions, committed = read(arguments.file.read_text())
        if versions != committed_versions:
            print(f"instruction counts not compared: they are kept for {', '.join(committed_versions.values())},"
                  f" and this is {', '.join(versions.values())}")
            return 0

    counts = {name: count(program, name) for name in output_of(program, "--list").split()}
    if arguments.update:
        arguments.file.write_text(written(versions, counts))
        print(f"wrote {len(counts)} counts to {arguments.file}")
        return 0
    lines, wrong = compare(counts, committed)
    print(*lines, sep="\n")
    if wrong:
        print(f"A workload takes over {MOST_GROWTH:.0%} more instructions than {arguments.file.name} says. If the change"
              " is worth that, run `make instructions UPDATE=1` and commit the file with it.")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
