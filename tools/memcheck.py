#!/usr/bin/env python3
"""Runs test programs under valgrind's memcheck.

    memcheck.py BUILD [--jobs N] [PROGRAM...]

BUILD is a folder without sanitizers; PROGRAM names some of its test programs (all of them when none is named). Scripts
and small worlds in the thousands, and sizes in the millions, are left to the sanitizers: memcheck takes thirty times as
long. Ends with status 1 when a program fails, reads or writes what it should not, or leaks.
"""

import argparse
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Too long for memcheck, or about what the allocator of the C library keeps.
LEFT_OUT = re.compile(r"^(model_|exhaustive_|laws_|forms_|examples_)|Scale_test$|Footprint_test$")
# Tests that end their process by a signal leave everything as it lies.
DEATH = "*Death*:*Abort*:*Dies*"


def run(program):
    # A block of the default heap is held by an address behind its head, which valgrind calls possibly lost. Programs that
    # refuse memory have an operator new of their own, which has to stay theirs.
    command = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full", "--show-leak-kinds=definite,indirect",
               "--errors-for-leak-kinds=definite,indirect", "--soname-synonyms=somalloc=nouserintercepts",
               "--child-silent-after-fork=yes",
               str(program), "--gtest_brief=1", f"--gtest_filter=-{DEATH}:*Million*:*Scale*:*Threads*"]
    done = subprocess.run(command, capture_output=True, text=True, errors="replace", stdin=subprocess.DEVNULL, check=False)
    return program, done.returncode, done.stdout + done.stderr


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("programs", nargs="*")
    arguments = parser.parse_args()

    programs = [p for p in sorted((arguments.build / "tests").glob("*_test")) if os.access(p, os.X_OK)]
    chosen = [p for p in programs if (p.name in arguments.programs if arguments.programs else not LEFT_OUT.search(p.name))]
    unknown = set(arguments.programs) - {p.name for p in programs}
    if unknown or not chosen:
        sys.exit(f"memcheck.py: no such test program: {', '.join(sorted(unknown)) or arguments.build}")

    failed = 0
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for program, status, output in pool.map(run, chosen):
            if status != 0:
                failed += 1
                print(f"--- {program.name}: status {status}\n{output[-6000:]}")
    print(f"{len(chosen) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
