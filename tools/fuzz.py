#!/usr/bin/env python3
"""Runs every fuzzer for some seconds and says what came of it.

    fuzz.py FOLDER [--seconds N] [--corpus FOLDER] [--only NAME...]

FOLDER holds the fuzzers of the fuzz preset, NAME_fuzz. Each runs over a corpus folder of its own, which it continues
and which keeps what it finds out, and over the committed seeds (fuzz/seeds/NAME), with its dictionary (fuzz/NAME.dict)
where there is one. An input that breaks a promise ends that fuzzer, is kept below CORPUS/NAME-findings, and is listed.
Prints a table and ends with status 1 when anything was found or a fuzzer did not run.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

FUZZ = Path(__file__).resolve().parent.parent / "fuzz"
LONGEST_INPUT = 1000  # from the first second on: short scripts come to few places
SECONDS_AN_INPUT = 20


class Run:
    """What one fuzzer did."""

    def __init__(self, program, corpus, seconds):
        self.name = program.name.removesuffix("_fuzz")
        self.findings_folder = corpus / f"{self.name}-findings"
        own = corpus / self.name
        for folder in (own, self.findings_folder):
            folder.mkdir(parents=True, exist_ok=True)
        known = set(self.findings_folder.iterdir())
        command = [program, f"-max_total_time={seconds}", f"-timeout={SECONDS_AN_INPUT}", f"-max_len={LONGEST_INPUT}",
                   "-len_control=0", "-print_final_stats=1", f"-artifact_prefix={self.findings_folder}/"]
        if (dictionary := FUZZ / f"{self.name}.dict").exists():
            command.append(f"-dict={dictionary}")
        command.append(own)
        if (seeds := FUZZ / "seeds" / self.name).is_dir():
            command.append(seeds)
        done = subprocess.run(command, capture_output=True, check=False)
        self.output = (done.stdout + done.stderr).decode(errors="replace")
        self.findings = sorted(set(self.findings_folder.iterdir()) - known)
        self.executions = self.number(r"^stat::number_of_executed_units: +(\d+)")
        self.rate = self.number(r"^stat::average_exec_per_sec: +(\d+)")
        self.coverage = max([int(number) for number in re.findall(r"\bcov: (\d+)", self.output)], default=None)
        # What broke may leave no input behind: memory that ran out at the start, a library that is not there.
        self.failed = done.returncode != 0 or bool(self.findings) or not self.executions

    def number(self, pattern):
        found = re.search(pattern, self.output, re.MULTILINE)
        return int(found[1]) if found else None

    def row(self):
        shown = ["-" if number is None else f"{number:,}" for number in (self.executions, self.rate, self.coverage)]
        verdict = str(len(self.findings)) if self.findings else "FAILED" if self.failed else "0"
        return [self.name, *shown, verdict]


def table(rows):
    rows = [["target", "executions", "per second", "coverage", "findings"], *rows]
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = []
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        lines.append("  ".join(cells).rstrip())
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=Path)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--corpus", type=Path, default=Path("build/fuzz/corpus"))
    parser.add_argument("--only", nargs="*", default=[])
    arguments = parser.parse_args()

    programs = sorted(path for path in arguments.folder.resolve().glob("*_fuzz") if path.is_file())
    if arguments.only:
        wanted = {f"{name}_fuzz" for name in arguments.only}
        if unknown := wanted - {program.name for program in programs}:
            sys.exit(f"fuzz.py: no such fuzzer: {', '.join(sorted(unknown))}")
        programs = [program for program in programs if program.name in wanted]
    if not programs:
        sys.exit(f"fuzz.py: {arguments.folder} holds no fuzzer")

    runs = []
    for program in programs:
        run = Run(program, arguments.corpus.resolve(), arguments.seconds)
        runs.append(run)
        if run.failed:
            print(f"== {run.name} ==", run.output[-4000:].rstrip(), sep="\n")
            print(*(f"found: {finding}" for finding in run.findings), sep="\n", flush=True)
    print(table([run.row() for run in runs]))
    return 1 if any(run.failed for run in runs) else 0


if __name__ == "__main__":
    sys.exit(main())
