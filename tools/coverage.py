#!/usr/bin/env python3
"""What the tests reach of the library's own code: lines, branches and conditions.

    coverage.py BUILD [--jobs N] [--list] [--least PER_CENT] [--report FILE]

BUILD is the folder of the coverage preset, built. Runs each of its test programs, merges their profiles, and prints a
table: of the lines, how many ran; of the branches, how many went both ways (each way counts); of the conditions of
decisions with several, for how many a test shows that it alone decided (MC/DC). Instantiations of one template count as
one text. --list names every line, branch and condition that was not reached.

What no test can reach stands on a line with a comment "not reached: REASON", or between two lines that have "not
reached, from here: REASON" and "not reached, to here": it is left out and counted apart, and may be 0.5 % of the lines
at most. Ends with status 1 when a test fails, when that is more, or when some share is below --least (100).
"""

import argparse
import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("platform/", "omcell/", "backend/", "omtree.h")
LIBRARIES = ("libplatdep.so", "libQUORIOCV.so", "libomcell.so", "libomtree.so")
MOST_MARKED = 0.005


def programs_of(build):
    return sorted(p for p in (build / "tests").rglob("*")
                  if p.is_file() and os.access(p, os.X_OK) and (p.name.endswith("_test") or p.name.startswith("forms_")))


def run(program, profiles):
    environment = {**os.environ, "LLVM_PROFILE_FILE": str(profiles / f"{program.name}-%p.profraw")}
    done = subprocess.run([program, "--gtest_brief=1"], env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, errors="replace", cwd=profiles, check=False)
    return program, done.returncode, done.stdout[-2000:] + done.stderr[-2000:]


def marked_lines(path):
    lines, inside = set(), False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        begins = re.search(r"// not reached, from here: \S", line)
        inside = inside or bool(begins)
        if inside or re.search(r"// not reached: \S", line):
            lines.add(number)
        if re.search(r"// not reached, to here", line):
            inside = False
    return lines


class File:
    """What one source has, instantiations folded into one: how often by place."""

    def __init__(self, path):
        self.path = path
        self.marked = marked_lines(path)
        self.lines = defaultdict(int)
        self.branches = defaultdict(lambda: [0, 0])
        self.conditions = {}

    def add(self, data):
        for number, count in lines_of(data["segments"]).items():
            self.lines[number] = max(self.lines[number], count)
        for begin, column, end, end_column, taken, left, *_ in data.get("branches", []):
            counts = self.branches[begin, column, end, end_column]
            counts[0] += taken
            counts[1] += left
        for record in data.get("mcdc_records", []):
            place, covered = tuple(record[:4]), record[-1]
            before = self.conditions.get(place, [False] * len(covered))
            self.conditions[place] = [a or b for a, b in zip(before, covered)]

    def shares(self):
        """(reached, all) of lines, branches and conditions, and the lines that are marked."""
        lines = {n: c for n, c in self.lines.items() if n not in self.marked}
        branches = [c for place, c in self.branches.items() if place[0] not in self.marked]
        conditions = [c for place, c in self.conditions.items() if place[0] not in self.marked]
        return ((sum(c > 0 for c in lines.values()), len(lines)),
                (sum((t > 0) + (f > 0) for t, f in branches), 2 * len(branches)),
                (sum(map(sum, conditions)), sum(map(len, conditions))),
                len(self.marked & set(self.lines)))

    def missing(self):
        for number, count in sorted(self.lines.items()):
            if count == 0 and number not in self.marked:
                yield number, "line not run"
        for place, (taken, left) in sorted(self.branches.items()):
            if place[0] not in self.marked and not (taken and left):
                yield place[0], f"column {place[1]}: never {'true' if left else 'false' if taken else 'met'}"
        for place, covered in sorted(self.conditions.items()):
            if place[0] not in self.marked and not all(covered):
                numbers = ", ".join(str(k + 1) for k, c in enumerate(covered) if not c)
                yield place[0], f"column {place[1]}: condition {numbers} of {len(covered)} never decides alone"


def lines_of(segments):
    """Count for each line that has code, from the segments [line, column, count, has count, is entry, is gap]."""
    counts = {}
    for k, (line, _, count, has_count, _, is_gap) in enumerate(segments):
        last = line
        if k + 1 < len(segments):
            last = segments[k + 1][0] - (segments[k + 1][1] == 1)
        if has_count and not is_gap:
            for number in range(line, last + 1):
                if number in (line, last) and number in counts:
                    counts[number] = max(counts[number], count)
                else:
                    counts[number] = count
    return counts


def export(build, profile):
    objects = [f"--object={build / name}" for name in LIBRARIES] + [f"--object={p}" for p in programs_of(build)]
    done = subprocess.run(["llvm-cov-19", "export", f"--instr-profile={profile}", "--skip-expansions", objects[0].split("=", 1)[1],
                           *objects[1:]], capture_output=True, check=True)
    return json.loads(done.stdout)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--least", type=float, default=100.0)
    arguments = parser.parse_args()
    build = arguments.build.resolve()

    profiles = build / "profiles"
    profiles.mkdir(exist_ok=True)
    for old in profiles.glob("*.prof*"):
        old.unlink()
    failed = 0
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for program, status, output in pool.map(lambda p: run(p, profiles), programs_of(build)):
            if status != 0:
                failed += 1
                print(f"{program.name} failed:\n{output}", file=sys.stderr)
    merged = profiles / "all.profdata"
    listing = profiles / "list.txt"
    listing.write_text("".join(f"{p}\n" for p in profiles.glob("*.profraw")))
    subprocess.run(["llvm-profdata-19", "merge", "-sparse", f"--input-files={listing}", "-o", merged], check=True)

    files = {}
    for data in export(build, merged)["data"]:
        for entry in data["files"]:
            path = Path(os.path.realpath(entry["filename"]))
            name = str(path.relative_to(ROOT)) if path.is_relative_to(ROOT) else ""
            if name.startswith(FOLDERS):
                files.setdefault(name, File(path)).add(entry)

    totals, marked = [[0, 0], [0, 0], [0, 0]], 0
    for name in sorted(files):
        *shares, here = files[name].shares()
        marked += here
        for total, share in zip(totals, shares):
            total[0] += share[0]
            total[1] += share[1]
        if arguments.list:
            for number, what in files[name].missing():
                print(f"{name}:{number}: {what}")

    print("| | reached | all | share |\n|---|---:|---:|---:|")
    wrong = failed > 0
    for what, (reached, everything) in zip(("lines", "branches", "conditions"), totals):
        share = 100.0 * reached / everything if everything else 0.0
        wrong = wrong or share < arguments.least
        print(f"| {what} | {reached} | {everything} | {share:.2f} % |")
    print(f"marked as not to be reached: {marked} lines ({marked / max(1, totals[0][1]):.2%})")
    return 1 if wrong or marked > MOST_MARKED * totals[0][1] else 0


if __name__ == "__main__":
    sys.exit(main())
