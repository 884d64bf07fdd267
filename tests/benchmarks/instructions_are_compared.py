#!/usr/bin/env python3
"""Feeds made-up counts to the comparison of tools/instructions.py, with a made-up valgrind, and reads its verdict."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

GUARD = Path(__file__).resolve().parents[2] / "tools" / "instructions.py"

PROGRAM = """#!/bin/sh
case "$1" in
    --list) printf 'walk\\nstore\\n';;
    --versions) printf 'compiler\\t12.2.0\\nlibc\\tglibc 2.36\\n';;
esac
"""
# Counts 1000 for every workload, into the file that it is told to write.
VALGRIND = """#!/bin/sh
for argument; do
    case "$argument" in
        --callgrind-out-file=*) printf 'events: Ir\\ntotals: 1000\\n' >"${argument#*=}";;
    esac
done
"""
FILE = "# comment\nversion\tcompiler\t12.2.0\nversion\tlibc\tglibc 2.36\ncount\tstore\t{}\ncount\twalk\t{}\n"


class Guarded:
    """What one run of the guard gave."""

    def __init__(self, committed, *arguments):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            for tool, text in (("program", PROGRAM), ("valgrind", VALGRIND)):
                (folder / tool).write_text(text)
                (folder / tool).chmod(0o755)
            kept = folder / "kept.tsv"
            kept.write_text(committed)
            done = subprocess.run([sys.executable, GUARD, folder / "program", "--file", kept, *arguments],
                                  capture_output=True, text=True, check=False,
                                  env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"})
            self.status = done.returncode
            self.text = done.stdout + done.stderr
            self.kept = kept.read_text()


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: {found!r}, expected {expected!r}")


def main():
    same = Guarded(FILE.format(1000, 1000))
    expect("the same counts", (same.status, "GREW" in same.text), (0, False))

    little = Guarded(FILE.format(1000, 971))  # 1000 is 2.99 % more
    expect("growth within the bound", (little.status, "GREW" in little.text), (0, False))

    grown = Guarded(FILE.format(970, 1000))  # 1000 is 3.09 % more
    expect("growth past the bound", grown.status, 1)
    expect("the workload that grew is named", [line.split()[0] for line in grown.text.splitlines() if "GREW" in line],
           ["store"])
    expect("the way out is named", "make instructions UPDATE=1" in grown.text, True)

    shrunk = Guarded(FILE.format(2000, 1000))
    expect("fewer instructions", (shrunk.status, "worth an update" in shrunk.text), (0, True))

    gone = Guarded(FILE.format(1000, 1000) + "count\tgone\t5\n")
    expect("a workload that is no more", (gone.status, "gone: not in the program" in gone.text), (1, True))
    new = Guarded("".join(FILE.format(1000, 1000).splitlines(True)[:-1]))
    expect("a workload without a count", (new.status, "walk: not in the file" in new.text), (1, True))

    for version in ("12.2.0", "glibc 2.36"):
        other = Guarded(FILE.format(1, 1).replace(version, "another"))
        expect("another toolchain", (other.status, "not compared" in other.text), (0, True))

    updated = Guarded("", "--update")
    expect("status of an update", updated.status, 0)
    expect("an update fits the counts", Guarded(updated.kept).status, 0)
    expect("an update keeps every count", updated.kept.count("\t1000\n"), 2)


if __name__ == "__main__":
    main()
