#!/usr/bin/env python3
"""The umbrella header includes every installed header.

    check_umbrella.py UMBRELLA HEADER...

HEADER is an installed header, spelled from the root. Export.h files come along with the headers that need them. Prints
what is missing and what is no installed header, and ends with status 1 if there was something.
"""

import re
import sys
from pathlib import Path


def main():
    text = Path(sys.argv[1]).read_text(encoding="utf-8")
    included = re.findall(r'^#include "([^"]+)"$', text, flags=re.MULTILINE)
    public = [header for header in sys.argv[2:] if Path(header).name not in ("Export.h", Path(sys.argv[1]).name)]
    problems = [f"not included: {header}" for header in public if header not in included]
    problems += [f"no installed header: {header}" for header in included if header not in public]
    for problem in problems:
        print(problem)
    print(f"{len(public)} installed headers, {len(included)} included, {len(problems)} problems")
    return 1 if problems or not public else 0


if __name__ == "__main__":
    sys.exit(main())
