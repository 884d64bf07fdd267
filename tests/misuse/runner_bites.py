#!/usr/bin/env python3
"""The runner lets through what it should and nothing else, whatever a program does."""

import subprocess
import sys
from pathlib import Path

RUNNER = Path(__file__).resolve().parent / "run_case.py"
ABORT = "import os,sys; sys.stderr.write({!r}); sys.stderr.flush(); os.abort()"
END = "import sys; sys.stderr.write({!r}); sys.exit({})"
REPORT = "some/Source:12: it holds\n"
ASAN = "==1==ERROR: AddressSanitizer: use-after-poison on address 0x1\n"
UBSAN = "a.cpp:1:2: runtime error: member call on null pointer\n"

# (what, catcher, text, program, whether it is let through)
CASES = [
    ("a report", "HARDENED", "some/Source: it holds", ABORT.format(REPORT), True),
    ("ends well", "HARDENED", "some/Source: it holds", END.format("", 0), False),
    ("ends well with the report", "CHECKED", "some/Source: it holds", END.format(REPORT, 0), False),
    ("fails with the report", "REPORTED", "some/Source: it holds", END.format(REPORT, 1), False),
    ("another condition", "HARDENED", "some/Source: it holds too", ABORT.format(REPORT), False),
    ("another source", "HARDENED", "Source: it holds", ABORT.format(REPORT), False),
    ("no line", "HARDENED", "some/Source: it holds", ABORT.format("some/Source: it holds\n"), False),
    ("another report before", "HARDENED", "some/Source: it holds", ABORT.format("a:1: b\n" + REPORT), False),
    ("aborts silently", "CHECKED", "some/Source: it holds", ABORT.format(""), False),
    ("a sanitizer's report", "SANITIZED", "use-after-poison", END.format(ASAN, 86), True),
    ("another error", "SANITIZED", "double-free", END.format(ASAN, 86), False),
    ("one of two", "SANITIZED", "double-free|use-after-poison", END.format(ASAN, 86), True),
    ("none of two", "SANITIZED", "double-free|", END.format(ASAN, 86), False),
    ("not the first error", "SANITIZED", "use-after-poison", END.format(UBSAN + ASAN, 86), False),
    ("undefined behaviour", "SANITIZED", "null pointer", END.format(UBSAN, 86), True),
    ("the report alone", "SANITIZED", "use-after-poison", END.format(ASAN, 0), False),
    ("another status", "SANITIZED", "use-after-poison", END.format(ASAN, 1), False),
    ("no text to look for", "SANITIZED", "", END.format(ASAN, 86), False),
    ("ends well", "WELL", "", END.format("", 0), True),
    ("ends well with a word", "WELL", "", END.format("x\n", 0), False),
    ("fails", "WELL", "", END.format("", 1), False),
    ("no catcher", "", "", END.format("", 0), False),
]


def main():
    wrong = 0
    for what, catcher, text, program, passes in CASES:
        result = subprocess.run([sys.executable, RUNNER, catcher, text, sys.executable, "-c", program],
                                capture_output=True, text=True, check=False)
        if (result.returncode == 0) != passes:
            wrong += 1
            print(f"{catcher}, {what}: status {result.returncode}\n{result.stdout}{result.stderr}")
    print(f"{len(CASES)} programs run, {wrong} judged wrongly")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
