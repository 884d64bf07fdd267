#!/usr/bin/env python3
"""The tables of the people on the Titanic, as omtree-crosstab prints them, and the counts that they are made of.

    titanic_tables.py TOOL ROOT [--write]

The tables are kept in golden/, one file each; --write replaces them by what the tool prints now.
"""

import csv
import re
import subprocess
import sys
from pathlib import Path

# The published counts: class, sex, age -> died, survived.
PUBLISHED = {
    ("1st", "Male", "Child"): (0, 5), ("1st", "Male", "Adult"): (118, 57),
    ("1st", "Female", "Child"): (0, 1), ("1st", "Female", "Adult"): (4, 140),
    ("2nd", "Male", "Child"): (0, 11), ("2nd", "Male", "Adult"): (154, 14),
    ("2nd", "Female", "Child"): (0, 13), ("2nd", "Female", "Adult"): (13, 80),
    ("3rd", "Male", "Child"): (35, 13), ("3rd", "Male", "Adult"): (387, 75),
    ("3rd", "Female", "Child"): (17, 14), ("3rd", "Female", "Adult"): (89, 76),
    ("Crew", "Male", "Child"): (0, 0), ("Crew", "Male", "Adult"): (670, 192),
    ("Crew", "Female", "Child"): (0, 0), ("Crew", "Female", "Adult"): (3, 20),
}  # fmt: skip
PEOPLE = 2201

PASSENGERS = "--group=Class=Passengers:1st,2nd,3rd"

# Golden file, arguments, and whether the body adds up to all people (else to the 24 lines of the file).
TABLES = {
    "groups_layers_corner": (["--sum=Freq", "--rows=Class,Sex", "--columns=Survived", "--layers=Age", PASSENGERS,
                              "--names-in-corner", "--title=People aboard the Titanic", "--caption=Each cell counts people.",
                              "--footnote=2,201 people.", "--footnote=Crew: all adults."], True),
    "keep_empty": (["--sum=Freq", "--rows=Class,Sex", "--columns=Survived", "--layers=Age", PASSENGERS,
                    "--keep-empty", "--corner=Class and sex"], True),
    "four_deep": (["--sum=Freq", "--columns=Class,Survived", "--rows=Sex,Age", PASSENGERS], True),
    "two_layer_columns": (["--sum=Freq", "--layers=Class,Age", "--columns=Survived", "--rows=Sex", PASSENGERS,
                           "--names-in-corner"], True),
    "rows_alone": (["--sum=Freq", "--rows=Class,Survived", "--names-in-corner"], True),
    "layers_alone": (["--sum=Freq", "--layers=Sex"], True),
    "lines_counted": (["--rows=Class", "--columns=Age"], False),
}  # fmt: skip


def check_data(data):
    """The file holds every published count but the zeros, once each."""
    with open(data, encoding="utf-8", newline="") as file:
        lines = list(csv.DictReader(file))
    counted = {}
    for line in lines:
        outcome = ("No", "Yes").index(line["Survived"])
        counted[line["Class"], line["Sex"], line["Age"], outcome] = int(line["Freq"])
    wanted = {(*who, outcome): n for who, both in PUBLISHED.items() for outcome, n in enumerate(both) if n}
    assert len(lines) == len(wanted) == 24, "a line for each combination that somebody fell into"
    assert counted == wanted, "the published counts"
    assert sum(counted.values()) == PEOPLE


def body_total(text):
    """Sum of all numbers that stand in cells of their own."""
    return sum(int(number) for line in text.split("\n") for number in re.findall(r"(?<=│)\s+(\d+)\s(?=│)", line))


def standard_input_differs(tool, data):
    """Whether the table of a file differs when it comes through standard input."""
    arguments = ["--rows=Class", "--columns=Age"]
    by_name = subprocess.run([tool, str(data), *arguments], capture_output=True, check=True)
    with open(data, "rb") as file:
        piped = subprocess.run([tool, "-", *arguments], stdin=file, capture_output=True, check=True)
    return by_name.stdout != piped.stdout


def main():
    tool, root = sys.argv[1], Path(sys.argv[2])
    data = root / "examples" / "data" / "titanic.csv"
    golden = Path(__file__).parent / "golden"
    check_data(data)
    failed = 0
    for name, (arguments, everybody) in TABLES.items():
        run = subprocess.run([tool, str(data), *arguments], capture_output=True, check=False)
        text = run.stdout.decode()
        file = golden / f"{name}.txt"
        if sys.argv[3:] == ["--write"]:
            file.write_text(text, encoding="utf-8")
        total = body_total(text)
        problems = [
            run.returncode != 0 and f"status {run.returncode}",
            run.stderr and f"standard error {run.stderr.decode()}",
            text != file.read_text(encoding="utf-8") and f"not as in {file}:\n{text}",
            total != (PEOPLE if everybody else 24) and f"the body adds up to {total}",
            any(line != line.rstrip() for line in text.split("\n")) and "a line ends with a blank",
            max(map(len, text.split("\n"))) > 100 and "wider than 100 columns",
        ]
        for problem in filter(None, problems):
            failed += 1
            print(f"{name}: {problem}")
    if standard_input_differs(tool, data):
        failed += 1
        print("standard input gives another table than the file itself")
    print(f"{len(TABLES)} tables compared, {failed} problems")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
