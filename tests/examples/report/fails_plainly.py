#!/usr/bin/env python3
"""fails_plainly.py REPORT: every failure of omtree-report is one line on standard error and exit status 2."""

import subprocess
import sys


def main():
    report = sys.argv[1]
    bad = 0
    for arguments in ([], ["--help"], ["--html"], ["--html", "/nowhere/page.html"], ["--unknown"], ["file"]):
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = subprocess.run([report] + arguments, stdout=full, stderr=subprocess.PIPE, text=True, check=False)
        line = result.stderr
        if result.returncode != 2 or not line.startswith("omtree-report: ") or line.count("\n") != 1:
            print("FAILED:", arguments, result.returncode, repr(line))
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
