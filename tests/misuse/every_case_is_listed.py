#!/usr/bin/env python3
"""Every case that the program knows stands in the table once, and the table names no other.

    every_case_is_listed.py PROGRAM LIST
"""

import subprocess
import sys
from collections import Counter
from pathlib import Path


def main():
    known = subprocess.run([sys.argv[1]], capture_output=True, text=True, check=True).stdout.split()
    listed = Counter(Path(sys.argv[2]).read_text(encoding="utf-8").split())
    problems = [f"listed {count} times: {name}" for name, count in listed.items() if count > 1]
    problems += [f"no such program: {name}" for name in listed.keys() - set(known)]
    problems += [f"not listed: {name}" for name in set(known) - listed.keys()]
    for problem in sorted(problems):
        print(problem)
    print(f"{len(known)} cases, {len(problems)} problems")
    return 1 if problems or not known else 0


if __name__ == "__main__":
    sys.exit(main())
