#!/usr/bin/env python3
"""Draws how the time a cell grows with the number of cells, ours beside two rivals.

    growth.py PROGRAMS [--repetitions N] [--out FOLDER] [--sizes N...]

Runs each store at each size as run.py does and writes growth.tsv, the medians, and growth.svg: a panel for each of
store, look-up of present cells and ordered walk in each of the three orders.
"""

import argparse
import math
import statistics
import sys
from pathlib import Path

import run

SIZES = (100_000, 200_000, 400_000, 1_000_000, 2_000_000, 4_000_000)
PHASES = (("store", "store"), ("hit", "look up"), ("walk", "walk"))
ORDERS = (("cells-ordered", "dense"), ("cells-shuffled", "shuffled"), ("cells-sparse", "sparse"))
SIDES = (("ours", "omtree", "#c0392b", 2.5), ("boost", "boost flat map", "#2c6fbb", 1.5),
         ("btree", "absl::btree_map", "#7f8c8d", 1.5))

WIDTH, HEIGHT = 230, 150  # of a panel's plot
LEFT, TOP, ACROSS, DOWN = 70, 60, 290, 205


def nice_top(value):
    """The next of 1, 2, 5, 10, 20 ... that is not below the value."""
    power = 10 ** math.floor(math.log10(value))
    return next(step * power for step in (1, 2, 5, 10) if step * power >= value)


def text(x, y, words, **attributes):
    extra = "".join(f' {name.replace("_", "-")}="{value}"' for name, value in attributes.items())
    return f'<text x="{x:.0f}" y="{y:.0f}"{extra}>{words}</text>'


def panel(x, y, sizes, curves, title):
    """One plot with its corner at x, y; curves are (colour, width, values by size with gaps)."""
    known = [value for _, _, values in curves for value in values if value is not None]
    top = nice_top(max(known)) if known else 1
    first, last = math.log(sizes[0]), math.log(sizes[-1])

    def across(size):
        return x + WIDTH * (math.log(size) - first) / ((last - first) or 1)

    def up(value):
        return y + HEIGHT * (1 - value / top)

    parts = [text(x, y - 8, title, font_weight="bold")]
    for share in (0, 0.5, 1):
        level = up(top * share)
        parts.append(f'<line x1="{x}" y1="{level:.1f}" x2="{x + WIDTH}" y2="{level:.1f}" stroke="#ddd"/>')
        parts.append(text(x - 6, level + 4, f"{top * share:g}", text_anchor="end"))
    for size in (sizes[0], sizes[len(sizes) // 2], sizes[-1]):
        label = f"{size / 1e6:g}M" if size >= 1e6 else f"{size / 1e3:g}k"
        parts.append(text(across(size), y + HEIGHT + 16, label, text_anchor="middle"))
    for colour, width, values in curves:
        points = [(across(size), up(value)) for size, value in zip(sizes, values, strict=True) if value is not None]
        line = " ".join(f"{a:.1f},{b:.1f}" for a, b in points)
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="{width}"/>')
        parts += [f'<circle cx="{a:.1f}" cy="{b:.1f}" r="{width}" fill="{colour}"/>' for a, b in points]
    return parts


def drawing(sizes, medians):
    width = LEFT + ACROSS * (len(ORDERS) - 1) + WIDTH + 30
    height = TOP + DOWN * (len(PHASES) - 1) + HEIGHT + 40
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="sans-serif"'
             ' font-size="11" fill="#333">', f'<rect width="{width}" height="{height}" fill="white"/>']
    x = LEFT
    for _, name, colour, _ in SIDES:
        parts.append(f'<line x1="{x}" y1="20" x2="{x + 22}" y2="20" stroke="{colour}" stroke-width="3"/>')
        parts.append(text(x + 28, 24, name))
        x += 150
    parts.append(text(width - 30, 24, "nanoseconds a cell over the number of cells", text_anchor="end"))
    for row, (phase, action) in enumerate(PHASES):
        for column, (workload, order) in enumerate(ORDERS):
            curves = [(colour, stroke, [medians.get((workload, side, size, phase)) for size in sizes])
                      for side, _, colour, stroke in SIDES]
            parts += panel(LEFT + ACROSS * column, TOP + DOWN * row, sizes, curves, f"{action}, {order}")
    return "\n".join([*parts, "</svg>", ""])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs", type=Path)
    parser.add_argument("--repetitions", type=int, default=3)
    parser.add_argument("--out", type=Path, default=Path("."))
    parser.add_argument("--sizes", type=int, nargs="+", default=SIZES)
    arguments = parser.parse_args()

    print(f"load average {run.load()}")
    runs = [run.Run(workload, side, size) for workload, _ in ORDERS for size in arguments.sizes for side, *_ in SIDES]
    counters, failures = run.measure_all(arguments.programs, runs, arguments.repetitions)
    medians = {(*one, phase): statistics.median(taken[phase] for taken in counters[one])
               for one in runs if one not in failures for phase, _ in PHASES}

    arguments.out.mkdir(parents=True, exist_ok=True)
    with (arguments.out / "growth.tsv").open("w") as stream:
        print("order", "side", "cells", *(phase for phase, _ in PHASES), sep="\t", file=stream)
        for workload, order in ORDERS:
            for side, *_ in SIDES:
                for size in arguments.sizes:
                    values = [run.number(medians.get((workload, side, size, phase))) for phase, _ in PHASES]
                    print(order, side, size, *values, sep="\t", file=stream)
    (arguments.out / "growth.svg").write_text(drawing(arguments.sizes, medians))
    for one, reason in failures.items():
        print(f"{one} failed: {reason}")
    print(f"wrote {arguments.out / 'growth.svg'} and growth.tsv; load average {run.load()}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
