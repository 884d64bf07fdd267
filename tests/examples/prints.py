#!/usr/bin/env python3
"""prints.py PROGRAM EXPECTED: runs the program and compares all that it prints with a file."""

import difflib
import subprocess
import sys
from pathlib import Path


def main():
    program, expected = sys.argv[1:]
    result = subprocess.run([program], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, encoding="utf-8")
    wanted = Path(expected).read_text(encoding="utf-8")
    sys.stdout.writelines(difflib.unified_diff(wanted.splitlines(True), result.stdout.splitlines(True), expected, program))
    sys.stdout.write(result.stderr)
    return 0 if result.returncode == 0 and result.stdout == wanted and not result.stderr else 1


if __name__ == "__main__":
    sys.exit(main())
