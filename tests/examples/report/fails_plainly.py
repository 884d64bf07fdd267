#!/usr/bin/env python3
"""fails_plainly.py REPORT: every failure of omtree-report is one line on standard error and exit status 2."""

import subprocess
import sys

FULL = "standard output: No space left on device"
NOT_EXPECTED = "The following argument was not expected: "
CASES = [
    ([], FULL),
    (["--help"], FULL),
    (["--html"], "--html: 1 required FILE missing"),
    (["--html", ""], "--html: the name is empty"),
    (["--html", "/nowhere/page.html"], "/nowhere/page.html: No such file or directory"),
    (["--html=a", "--html=b"], "--html is given more than once"),
    (["--unknown"], NOT_EXPECTED + "--unknown"),
    (["file"], NOT_EXPECTED + "file"),
    (["a\n\x1b[31m\udcff"], NOT_EXPECTED + "a ␛[31m\ufffd"),
]


def main():
    report = sys.argv[1]
    bad = 0
    for arguments, expected in CASES:
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = subprocess.run([report] + arguments, stdout=full, stderr=subprocess.PIPE, check=False)
        if result.returncode != 2 or result.stderr != f"omtree-report: {expected}\n".encode():
            print("FAILED:", ascii(arguments), result.returncode, result.stderr)
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
