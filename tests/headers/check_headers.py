#!/usr/bin/env python3
"""Every header stands alone: compiles each one given, on its own and included twice, with the warnings as errors.

    check_headers.py --compiler CXX --root ROOT --standard 17 [--flag=FLAG]... HEADER...

HEADER is spelled from ROOT. Ends with status 1 and the compiler's words when a header does not compile.
"""

import argparse
import subprocess
import sys


def failure_of(arguments, header):
    """The compiler's words about one header, or None when it stands alone."""
    source = f'#include "{header}"\n#include "{header}"\n'
    command = [
        arguments.compiler,
        f"-std=c++{arguments.standard}",
        *arguments.flag,
        "-Werror",
        "-fsyntax-only",
        f"-I{arguments.root}",
        "-xc++",
        "-",
    ]
    run = subprocess.run(command, input=source, capture_output=True, text=True, check=False)
    return None if run.returncode == 0 else run.stderr or f"status {run.returncode}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--root", required=True)
    parser.add_argument("--standard", required=True)
    parser.add_argument("--flag", action="append", default=[])
    parser.add_argument("headers", nargs="+")
    arguments = parser.parse_args()

    failed = 0
    for header in arguments.headers:
        words = failure_of(arguments, header)
        if words is not None:
            failed += 1
            print(f"{header} does not stand alone in C++{arguments.standard}:\n{words}")
    print(f"{len(arguments.headers)} headers compiled in C++{arguments.standard}, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
