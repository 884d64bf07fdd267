#!/usr/bin/env python3
"""How tools/coverage.py counts: instantiations fold into one text, and what is marked is left out."""

import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import coverage  # noqa: E402

SOURCE = """one
two
three // not reached: there is no such machine
// not reached, from here: nobody calls it
five
// not reached, to here
seven
// not reached:
"""
# Line, column, count, has count, is entry, is gap. Lines 1 and 2 ran, 3 and 5 did not, 7 did not.
SEGMENTS = [[1, 1, 4, True, True, False], [3, 1, 0, True, True, False], [4, 1, 0, False, False, False],
            [5, 1, 0, True, True, False], [6, 1, 0, False, False, False], [7, 1, 0, True, True, False],
            [7, 9, 0, False, False, False]]


def main():
    wrong = []

    def expect(what, is_so, should_be):
        if is_so != should_be:
            wrong.append(f"{what}: {is_so}, not {should_be}")

    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "source.h"
        path.write_text(SOURCE)
        file = coverage.File(path)
        expect("marked lines", file.marked, {3, 4, 5, 6})
        file.add({"segments": SEGMENTS,
                  "branches": [[1, 1, 1, 5, 3, 0, 0, 0, 4], [5, 1, 5, 2, 0, 0, 0, 0, 4]],
                  "mcdc_records": [[2, 1, 2, 9, 0, 0, [True, False]]]})
        lines, branches, conditions, marked = file.shares()
        expect("lines", lines, (2, 3))
        expect("branches", branches, (1, 2))
        expect("conditions", conditions, (1, 2))
        expect("marked", marked, 2)
        expect("missing", [n for n, _ in file.missing()], [7, 1, 2])

        # Another instantiation takes the other way and shows the other condition.
        file.add({"segments": SEGMENTS, "branches": [[1, 1, 1, 5, 0, 2, 0, 0, 4]],
                  "mcdc_records": [[2, 1, 2, 9, 0, 0, [False, True]]]})
        expect("branches of both", file.shares()[1], (2, 2))
        expect("conditions of both", file.shares()[2], (2, 2))
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
