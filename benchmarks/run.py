#!/usr/bin/env python3
"""Runs the benchmarks of rows.tsv, ours and the rivals by turns, and prints how they compare.

    run.py PROGRAMS [--rows PATTERN...] [--repetitions N] [--out FOLDER] [--list]

PROGRAMS is the folder with `omtree-bench` and `omtree-bench-mimalloc`. Each side of each workload runs in a process of
its own, since what a process did before decides how its heap answers; the sides of a workload alternate, and a value is
the median over the repetitions. Writes ratios.tsv (and ratios.txt, what the terminal shows) into FOLDER; with --rows the
names are ratios-some.tsv and ratios-some.txt, so that a whole run stays.

Ends with status 1 when a row misses its floor or could not be measured.
"""

import argparse
import datetime
import fnmatch
import json
import os
import platform
import re
import statistics
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

ROWS_FILE = Path(__file__).with_name("rows.tsv")
COLUMNS = ("row", "workload", "rival", "ours", "theirs", "unit", "ratio", "floor", "aim")
TERM = re.compile(r"(?P<workload>[\w-]+)/(?P<side>[\w-]+)(@(?P<size>\d+))?:(?P<counter>\w+)")
TIMEOUT_SECONDS = 600


class Run(NamedTuple):
    """One side of one workload, at a size of its own if not None."""

    workload: str
    side: str
    size: int | None

    def __str__(self):
        return f"{self.workload}/{self.side}" + (f"@{self.size}" if self.size else "")


class Term(NamedTuple):
    run: Run
    counter: str


class Row(NamedTuple):
    name: str
    workload: str
    rival: str
    ours: list
    theirs: list
    unit: str
    floor: float
    aim: float

    def runs(self):
        return [term.run for term in self.ours + self.theirs if isinstance(term, Term)]


class Result(NamedTuple):
    row: Row
    ours: float | None
    theirs: float | None

    @property
    def ratio(self):
        return self.theirs / self.ours if self.ours and self.theirs is not None else None

    @property
    def verdict(self):
        if self.ratio is None:
            return "FAILED"
        if self.ratio < self.row.floor:
            return "MISSED"
        return "below aim" if self.ratio < self.row.aim else ""


def read_terms(text):
    terms = []
    for part in text.split(" / "):
        match = TERM.fullmatch(part)
        if match:
            size = match["size"] and int(match["size"])
            terms.append(Term(Run(match["workload"], match["side"], size), match["counter"]))
        else:
            terms.append(float(part))
    return terms


def read_rows(path):
    rows = []
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            name, workload, rival, ours, theirs, unit, floor, aim = line.split("\t")
            rows.append(Row(name, workload, rival, read_terms(ours), read_terms(theirs), unit, float(floor), float(aim)))
    return rows


def measure(programs, run):
    """The counters of one process. Raises RuntimeError with what it said when it fails."""
    program = programs / ("omtree-bench-mimalloc" if run.side == "mimalloc" else "omtree-bench")
    command = [program, f"--benchmark_filter=^{run.workload}/{run.side}/", "--benchmark_format=json"]
    if run.size:
        command.append(f"--n={run.size}")
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=TIMEOUT_SECONDS, check=False)
    except subprocess.TimeoutExpired:
        raise RuntimeError(f"took more than {TIMEOUT_SECONDS} s") from None
    if done.returncode != 0:
        errors = re.findall(r'"error_message": "(.*)"', done.stdout)
        raise RuntimeError(errors[0] if errors else f"status {done.returncode}: {done.stderr.strip()[-300:]}")
    (counters,) = json.loads(done.stdout)["benchmarks"]
    return counters


def measure_all(programs, runs, repetitions):
    """Counter lists by run, and what went wrong by run. A run that failed is not repeated."""
    counters = {run: [] for run in runs}
    failures = {}
    workloads = list(dict.fromkeys((run.workload, run.size) for run in runs))
    for repetition in range(repetitions):
        for workload in workloads:
            sides = [run for run in counters if (run.workload, run.size) == workload and run not in failures]
            # Who goes first changes, so that a drift of the machine's speed favours nobody.
            for run in sides if repetition % 2 == 0 else reversed(sides):
                if sys.stderr.isatty():
                    print(f"\r\033[K{repetition + 1}/{repetitions} {run}", end="", file=sys.stderr, flush=True)
                try:
                    counters[run].append(measure(programs, run))
                except RuntimeError as error:
                    failures[run] = str(error)
    if sys.stderr.isatty():
        print("\r\033[K", end="", file=sys.stderr, flush=True)
    return counters, failures


def value(terms, counters, failures):
    """Medians divided from left to right; None when one of them is missing."""
    values = []
    for term in terms:
        if not isinstance(term, Term):
            values.append(term)
        elif term.run in failures:
            return None
        else:
            values.append(statistics.median(taken[term.counter] for taken in counters[term.run]))
    quotient = values[0]
    for divisor in values[1:]:
        quotient /= divisor
    return quotient


def number(measured):
    return "-" if measured is None else f"{measured:.4g}" if abs(measured) < 1e4 else f"{measured:.0f}"


def ratio_text(ratio):
    return "-" if ratio is None else f"{ratio:.2f}"


def write_table(results, stream):
    head = ("row", "rival", "ours", "theirs", "unit", "ratio", "floor", "aim", "")
    lines = [head] + [
        (result.row.name, result.row.rival, number(result.ours), number(result.theirs), result.row.unit,
         ratio_text(result.ratio), f"{result.row.floor:g}", f"{result.row.aim:g}", result.verdict)
        for result in results
    ]
    widths = [max(len(line[k]) for line in lines) for k in range(len(head))]
    left = (0, 1, 4, 8)
    for line in lines:
        cells = [text.ljust(widths[k]) if k in left else text.rjust(widths[k]) for k, text in enumerate(line)]
        print("  ".join(cells).rstrip(), file=stream)


def write_tsv(results, path):
    with path.open("w") as stream:
        print(*COLUMNS, sep="\t", file=stream)
        for result in results:
            row = result.row
            print(row.name, row.workload, row.rival, number(result.ours), number(result.theirs), row.unit,
                  ratio_text(result.ratio), f"{row.floor:g}", f"{row.aim:g}", sep="\t", file=stream)


def processor():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return f"{line.split(':')[1].strip()}, {os.cpu_count()} processors"
    return f"{platform.machine()}, {os.cpu_count()} processors"


def load():
    return "%.2f %.2f %.2f" % os.getloadavg()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs", type=Path)
    parser.add_argument("--rows", nargs="*", default=[], metavar="PATTERN")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--out", type=Path, default=Path("."))
    parser.add_argument("--rows-file", type=Path, default=ROWS_FILE)
    parser.add_argument("--list", action="store_true", help="name the rows and end")
    arguments = parser.parse_args()

    rows = read_rows(arguments.rows_file)
    if arguments.rows:
        rows = [row for row in rows if any(fnmatch.fnmatchcase(row.name, one) for one in arguments.rows)]
    if not rows:
        sys.exit(f"run.py: no row is named like {' '.join(arguments.rows)}")
    if arguments.list:
        print(*(row.name for row in rows), sep="\n")
        return 0

    start = datetime.datetime.now(datetime.timezone.utc)
    load_before = load()
    runs = list(dict.fromkeys(run for row in rows for run in row.runs()))
    counters, failures = measure_all(arguments.programs, runs, arguments.repetitions)
    results = [Result(row, value(row.ours, counters, failures), value(row.theirs, counters, failures)) for row in rows]

    end = datetime.datetime.now(datetime.timezone.utc)
    arguments.out.mkdir(parents=True, exist_ok=True)
    name = "ratios-some" if arguments.rows else "ratios"
    write_tsv(results, arguments.out / f"{name}.tsv")
    report = arguments.out / f"{name}.txt"
    with report.open("w") as stream:
        print(f"{start:%Y-%m-%d %H:%M} UTC, {(end - start).total_seconds():.0f} s, medians of {arguments.repetitions};"
              f" load average {load_before} before, {load()} after", file=stream)
        print(f"{processor()}, Linux {platform.release()}", file=stream)
        print(file=stream)
        write_table(results, stream)
        bad = [result.row.name for result in results if result.verdict in ("MISSED", "FAILED")]
        print(file=stream)
        for run, reason in failures.items():
            print(f"{run} failed: {reason}", file=stream)
        print(f"{len(results) - len(bad)} of {len(results)} rows reach their floor"
              + (f"; not {', '.join(bad)}" if bad else ""), file=stream)
    print(report.read_text(), end="")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
