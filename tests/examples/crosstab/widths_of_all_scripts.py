#!/usr/bin/env python3
"""The right border of a table stands in one line whatever the scripts of its labels, by Python's character database.

    widths_of_all_scripts.py TOOL ROOT

Labels are made of every character at which the width changes and of thousands between. Only characters that were
assigned long ago are taken (and some pictographs), so that the tool's tables and Python's may be of different age.
"""

import random
import subprocess
import sys
import tempfile
import unicodedata
from pathlib import Path

from expected_table import char_width, width

OLD = unicodedata.ucd_3_2_0
PICTOGRAPHS = "😀🙏🚀🚢🌍🎉🤖🦉🧭"


def usable(code):
    char = chr(code)
    # No controls, surrogates, private use or unassigned ones, no separators; nothing that the tool shows as U+FFFD.
    if OLD.category(char) in ("Cc", "Cs", "Co", "Cn", "Zl", "Zp", "Zs"):
        return False
    return not 0x202A <= code <= 0x202E and not 0x2066 <= code <= 0x2069


def characters():
    codes = [code for code in range(0x110000) if usable(code)]
    chosen = set(map(ord, PICTOGRAPHS))
    for before, after in zip(codes, codes[1:]):
        if char_width(chr(before)) != char_width(chr(after)):
            chosen |= {before, after}
    chosen |= set(random.Random(7).sample(codes, 5000))
    return [chr(code) for code in sorted(chosen)]


def main():
    chars = characters()
    seen = {size: sum(1 for char in chars if char_width(char) == size) for size in (0, 1, 2)}
    assert min(seen.values()) > 100, seen
    lines = ['"' + (f"x{char}y" if char != '"' else 'x""y') + '"' for char in chars]
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder, "scripts.csv")
        path.write_text("V\n" + "\n".join(lines) + "\n", encoding="utf-8")
        run = subprocess.run([sys.argv[1], str(path), "--rows=V"], capture_output=True, check=True)
    drawn = [line for line in run.stdout.decode().split("\n") if line and line[0] in "┌│╞└"]
    # One line for each label; above them the upper border, the column's name and the rule; below them the border.
    assert len(drawn) == len(chars) + 4, (len(drawn), len(chars))
    wrong = [line for line in drawn if width(line) != width(drawn[0])]
    for line in wrong[:20]:
        print([f"U+{ord(char):04X}" for char in line if ord(char) > 127 and char not in "│"], line)
    print(f"{len(chars)} characters, {seen} by width; {len(wrong)} lines out of line")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
