#!/usr/bin/env python3
"""Runs one program that misuses the library, and wants it caught.

    run_case.py CATCHER TEXT PROGRAM WORD...

    CHECKED, REPORTED, HARDENED   the program aborts, and all that it wrote to standard error is one line,
                                  `source:line: condition`, where TEXT is `source: condition`
    SANITIZED                     the sanitizer ends it, with TEXT, or one of them with bars between, in the first line of its
                                  report
    WELL                          the program ends well and writes nothing to standard error; TEXT is empty

Ends with status 1, and with what was seen, when it comes out otherwise.
"""

import os
import re
import resource
import signal
import subprocess
import sys

SANITIZER_STATUS = 86
SANITIZER_OPTIONS = {
    "ASAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:detect_leaks=1:detect_stack_use_after_return=1",
    "LSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}",
    "UBSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}",
}
FIRST_OF_REPORT = re.compile(r"ERROR: (?:Address|Leak)Sanitizer: |: runtime error: ")


def is_report(text, errors):
    source, condition = text.split(": ", 1)
    return re.fullmatch(re.escape(source) + r":[0-9]+: " + re.escape(condition) + r"\n", errors) is not None


def is_caught(catcher, text, status, errors):
    if catcher == "WELL":
        return status == 0 and errors == ""
    if catcher in ("CHECKED", "REPORTED", "HARDENED"):
        return status == -signal.SIGABRT and is_report(text, errors)
    if catcher == "SANITIZED":
        first = next((line for line in errors.splitlines() if FIRST_OF_REPORT.search(line)), "")
        return status == SANITIZER_STATUS and any(each != "" and each in first for each in text.split("|"))
    return False


def main():
    catcher, text, *command = sys.argv[1:]
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False,
                            env={**os.environ, **SANITIZER_OPTIONS},
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (0, 0)))
    errors = result.stderr.decode(errors="replace")
    if is_caught(catcher, text, result.returncode, errors):
        return 0
    print(f"wanted {catcher} {text!r}; ended with {result.returncode}, standard error:\n{errors}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
