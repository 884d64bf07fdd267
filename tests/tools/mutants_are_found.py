#!/usr/bin/env python3
"""Which changes tools/mutation.py makes to a small source, and which it leaves alone."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import mutation  # noqa: E402

SOURCE = '''#define LIMIT (1 < 2)
// if (a < b) return 7;
int Table::Count(int width, bool shown) const {
    if (width < 3 && shown) {
        Grow(width, _height);
        return "1 < 2"[0] + width;
    }
    std::vector<int> const widths(2);
    _width = std::max(width, _width);
    return true ? _width : 0;
}
'''
EXPECTED = {
    ("relation", "<", "<="),
    ("constant", "3", "4"),
    ("logic", "&&", "||"),
    ("negation", "width < 3 && shown", "!(width < 3 && shown)"),
    ("statement", "Grow(width, _height);", ";"),
    ("arguments", "width, _height", "_height, width"),
    ("return", '"1 < 2"[0] + width', "{}"),
    ("constant", "0", "1"),
    ("arithmetic", "+", "-"),
    ("constant", "2", "3"),
    ("statement", "_width = std::max(width, _width);", ";"),
    ("min-max", "max", "min"),
    ("arguments", "width, _width", "_width, width"),
    ("return", "true ? _width : 0", "{}"),
    ("constant", "true", "false"),
}


def main():
    mutants = mutation.mutants_of("Table.cpp", SOURCE)
    found = {(m.kind, m.text, m.put) for m in mutants}
    for change in sorted(EXPECTED - found):
        print("not made:", change)
    for change in sorted(found - EXPECTED):
        print("made, and should not be:", change)
    wrong = bool(EXPECTED ^ found)
    for m in mutants:
        if SOURCE[m.start:m.end] != m.text or SOURCE.count("\n", 0, m.start) + 1 != m.line:
            print("at the wrong place:", m)
            wrong = True
    if [m.line for m in mutants if m.kind == "relation"] != [4]:
        print("something was changed in a comment, a directive or a string")
        wrong = True
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
