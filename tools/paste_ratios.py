#!/usr/bin/env python3
"""Puts the table of the last whole `make bench` into docs/performance.md.

    paste_ratios.py [RATIOS_FOLDER [DOCUMENT]]

Reads ratios.tsv and the first two lines of ratios.txt from RATIOS_FOLDER (build/bench) and rewrites what stands between
the lines `<!-- ratios -->` and `<!-- /ratios -->`; the rest of the document is left alone.
"""

import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BEGIN, END = "<!-- ratios -->\n", "<!-- /ratios -->\n"


def verdict(row):
    if row["ratio"] == "-" or float(row["ratio"]) < float(row["floor"]):
        return "**misses its floor**"
    return "below its aim" if float(row["ratio"]) < float(row["aim"]) else ""


def table(tsv, heading):
    head, *lines = (line.split("\t") for line in tsv.splitlines())
    out = [*heading, "", "| row | rival | ours | theirs | unit | ratio | floor | aim | |",
           "|---|---|---:|---:|---|---:|---:|---:|---|"]
    for line in lines:
        row = dict(zip(head, line, strict=True))
        cells = [row[name] for name in ("row", "rival", "ours", "theirs", "unit", "ratio", "floor", "aim")]
        out.append("| " + " | ".join(cells + [verdict(row)]).rstrip() + " |")
    return "\n".join(out) + "\n"


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "build" / "bench"
    document = Path(sys.argv[2]) if len(sys.argv) > 2 else ROOT / "docs" / "performance.md"
    text = document.read_text()
    if text.count(BEGIN) != 1 or text.count(END) != 1 or text.index(BEGIN) > text.index(END):
        sys.exit(f"paste_ratios.py: {document} has no place for the table")
    heading = (folder / "ratios.txt").read_text().splitlines()[:2]
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    document.write_text(before + BEGIN + table((folder / "ratios.tsv").read_text(), heading) + END + after)
    return 0


if __name__ == "__main__":
    sys.exit(main())
