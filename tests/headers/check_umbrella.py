#!/usr/bin/env python3
"""The umbrella header brings every installed header.

    check_umbrella.py ROOT UMBRELLA HEADER...

UMBRELLA and HEADER are spelled from ROOT; HEADER are the installed ones. A header counts when the umbrella includes it
or a header that does. Prints what is missing and what is no installed header, and ends with status 1 if there was
something.
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^#include "([^"]+)"', flags=re.MULTILINE)


def main():
    root, umbrella, public = Path(sys.argv[1]), sys.argv[2], set(sys.argv[3:])
    reached, waiting = set(), [umbrella]
    while waiting:
        header = waiting.pop()
        if header not in reached:
            reached.add(header)
            if (root / header).exists():
                waiting += INCLUDE.findall((root / header).read_text(encoding="utf-8"))
    problems = [f"not brought by {umbrella}: {header}" for header in sorted(public - reached)]
    problems += [f"no installed header: {header}" for header in sorted(reached - public)]
    for problem in problems:
        print(problem)
    print(f"{len(public)} installed headers, {len(problems)} problems")
    return 1 if problems or len(public) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
