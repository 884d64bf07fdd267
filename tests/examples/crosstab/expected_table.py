"""What omtree-crosstab should print, worked out from scratch: its own tally of the file, its own layout, and a drawing
that is painted cell by cell onto a canvas. Shares nothing with the tool but its documented behaviour."""

import csv
import io
import re
import unicodedata
from decimal import Decimal
from fractions import Fraction
from itertools import product


# --- texts ------------------------------------------------------------------------------------------------------------


def char_width(char):
    code = ord(char)
    if code != 0xAD and unicodedata.category(char) in ("Mn", "Me", "Cf"):
        return 0
    if 0x1160 <= code <= 0x11FF or 0xD7B0 <= code <= 0xD7C6 or 0xD7CB <= code <= 0xD7FB:
        return 0
    return 2 if unicodedata.east_asian_width(char) in "WF" else 1


def width(text):
    return sum(map(char_width, text))


def printable(text):
    text = re.sub(r"\r\n|[\r\n\t]", " ", text)
    return "".join(
        chr(0x2400 + ord(c)) if ord(c) < 32 else "\u2421" if c == "\x7f" else "\ufffd" if "\x80" <= c < "\xa0" else c
        for c in text
    )


def lines_of(text, limit):
    lines = []
    for line in re.split(r"\r\n|\r|\n", text):
        current = ""
        for blanks, word in re.findall(r"( *)([^ ]+)", printable(line)):
            if not current.strip() or width(current + blanks + word) <= limit:
                current += blanks + word
            else:
                lines.append(current.rstrip(" "))
                current = word
        lines.append(current.rstrip(" "))
    return lines


def number_text(value):
    """A number as a cell shows it: no needless decimals, very small and very large ones with an exponent."""
    if value == 0:
        return "0"
    sign, digits, exponent = Decimal(repr(value)).normalize().as_tuple()
    digits = "".join(map(str, digits))
    power = len(digits) + exponent - 1
    if -4 <= power < 15:
        return format(Decimal((sign, tuple(map(int, digits)), exponent)), "f")
    mantissa = digits[0] + ("." + digits[1:] if len(digits) > 1 else "")
    return f"{'-' if sign else ''}{mantissa}E{'-' if power < 0 else '+'}{abs(power):02d}"


# --- tally ------------------------------------------------------------------------------------------------------------


def shown(label):
    return label if label else "(empty)"


class Axis:
    """Columns of the file along rows, columns or layers: positions in order, each a tuple of label paths."""

    def __init__(self, names, header, records, groups):
        self.names = names
        self.fields = [header.index(name) for name in names]
        self.paths = []  # for each column, value -> path of (kind, label)
        for name, field in zip(names, self.fields):
            values = list(dict.fromkeys(record[field] for record in records))
            member = {value: group for column, group, members in groups if column == name for value in members}
            ordered = {}
            for value in values:
                key = ("group", member[value]) if value in member else ("value", value)
                ordered.setdefault(key, []).append(value)
            paths = {}
            for (kind, label), members in ordered.items():
                for value in members:
                    path = [("name", name)] + ([("group", label)] if kind == "group" else []) + [("value", value)]
                    paths[value] = path
            self.paths.append(paths)

    def key(self, record):
        return tuple(record[field] for field in self.fields)

    def keys(self):
        return list(product(*self.paths))


def merged(positions, extents):
    """Heading cells (position, level, positions, levels, text) of positions that are tuples of label paths."""
    cells = []

    def walk(first, last, dimension, level, base):
        if dimension == len(extents):
            return
        run = first
        while run < last:
            path = positions[run][dimension]
            end = run
            while end < last and positions[end][dimension][: level + 1] == path[: level + 1]:
                end += 1
            if level + 1 < len(path):
                cells.append((run, base + level, end - run, 1, path[level][1]))
                walk(run, end, dimension, level + 1, base)
            else:
                cells.append((run, base + level, end - run, extents[dimension] - level, path[level][1]))
                walk(run, end, dimension + 1, 0, base + extents[dimension])
            run = end

    walk(0, len(positions), 0, 0, 0)
    return cells


class Cell:
    def __init__(self, kind, row, column, rows, columns, text):
        self.kind, self.row, self.column, self.rows, self.columns, self.text = kind, row, column, rows, columns, text


class Expected:
    def __init__(self, text, options):
        self.options = options
        records = [r for r in csv.reader(io.StringIO(text, newline=""), strict=True) if r]
        self.header, self.records = records[0], records[1:]
        self.rows, self.columns, self.layers = (
            Axis(options[axis], self.header, self.records, options["groups"]) for axis in ("rows", "columns", "layers")
        )
        self.cells = {}
        for record in self.records:
            place = (self.layers.key(record), self.rows.key(record), self.columns.key(record))
            amount = 1
            if options["sum"] is not None:
                amount = Fraction(Decimal(record[self.header.index(options["sum"])].strip(" \t")))
            self.cells[place] = self.cells.get(place, 0) + amount

    def statistic(self):
        return "Count" if self.options["sum"] is None else "Sum of " + self.options["sum"]

    def title(self):
        if self.options["title"]:
            return self.options["title"]
        names = self.rows.names + self.columns.names + self.layers.names
        return self.statistic() + " by " + " and ".join([", ".join(names[:-1])] * (len(names) > 1) + names[-1:])

    def layer_grid(self, layer):
        """Cells of one layer and the number of heading rows and columns."""
        keep = self.options["keep-empty"]
        here = [place for place in self.cells if place[0] == layer]
        row_keys = [k for k in self.rows.keys() if keep or any(p[1] == k for p in here)]
        column_keys = [k for k in self.columns.keys() if keep or any(p[2] == k for p in here)]

        cut = 1 if self.options["names-in-corner"] else 0
        row_paths = [[paths[v][cut:] for paths, v in zip(self.rows.paths, k)] for k in row_keys]
        row_extents = [max(len(p[d]) for p in row_paths) for d in range(len(self.rows.names))]
        column_paths = [[paths[v] for paths, v in zip(self.columns.paths, k)] for k in column_keys]
        if not self.columns.names:
            column_paths = [[[("value", self.statistic())]] for _ in column_keys]
        column_extents = [max(len(p[d]) for p in column_paths) for d in range(len(column_paths[0]))]

        heading_rows, heading_columns = sum(column_extents), sum(row_extents)
        cells = []
        if self.options["names-in-corner"]:
            at = 0
            for name, extent in zip(self.rows.names, row_extents):
                cells.append(Cell("corner", 0, at, heading_rows, extent, shown(name)))
                at += extent
        elif heading_columns:
            cells.append(Cell("corner", 0, 0, heading_rows, heading_columns, self.options["corner"]))
        for position, level, positions, levels, label in merged(column_paths, column_extents):
            cells.append(Cell("column", level, heading_columns + position, levels, positions, shown(label)))
        for position, level, positions, levels, label in merged(row_paths, row_extents):
            cells.append(Cell("row", heading_rows + position, level, positions, levels, shown(label)))
        for r, row in enumerate(row_keys):
            for c, column in enumerate(column_keys):
                value = self.cells.get((layer, row, column))
                text = "" if value is None else number_text(float(value))
                cells.append(Cell("body", heading_rows + r, heading_columns + c, 1, 1, text))
        cells.sort(key=lambda cell: (cell.row, cell.column))
        return cells, heading_rows, heading_columns

    def text(self):
        markers = [chr(ord("a") + i) for i in range(len(self.options["footnotes"]))]
        out = lines_of(self.title() + (f" [{','.join(markers)}]" if markers else ""), 10**9)
        for layer in self.layers.keys():
            if not self.options["keep-empty"] and all(place[0] != layer for place in self.cells):
                continue
            out.append("")
            for paths, value in zip(self.layers.paths, layer):
                name, *labels = [shown(label) for _, label in paths[value]]
                out += lines_of(printable(name + ": " + " / ".join(labels)), 10**9)
            out += drawing(*self.layer_grid(layer))
        if self.options["caption"] or markers:
            out.append("")
        if self.options["caption"]:
            out += lines_of(self.options["caption"], 10**9)
        for marker, footnote in zip(markers, self.options["footnotes"]):
            out += lines_of(f"[{marker}] {footnote}", 10**9)
        return "".join(line + "\n" for line in out)


# --- drawing ----------------------------------------------------------------------------------------------------------

NORTH, SOUTH, WEST, EAST = 1, 2, 4, 8
LINES = " │││─┘┐┤─└┌├─┴┬┼"
DOUBLE = " │││═╛╕╡═╘╒╞═╧╤╪"


def measure_columns(cells, columns):
    widths = [0] * columns
    for cell in sorted(cells, key=lambda one: one.columns):
        present = sum(widths[cell.column : cell.column + cell.columns]) + 3 * (cell.columns - 1)
        cell.lines = lines_of(cell.text, 10**9 if cell.kind == "body" else max(24, present))
        missing = max(0, max(map(width, cell.lines)) - present)
        for left in range(cell.columns, 0, -1):
            widths[cell.column + left - 1] += missing // left
            missing -= missing // left
    return widths


def rules_of(cells, heights, heading_rows, heading_columns, columns):
    """For each boundary above a row, the set of columns along which a rule runs."""
    owner = {}
    for cell in cells:
        for row in range(cell.row, cell.row + cell.rows):
            for column in range(cell.column, cell.column + cell.columns):
                assert (row, column) not in owner
                owner[row, column] = cell
    rules = [set(range(columns))]
    for row in range(1, len(heights)):
        changed = {c for c in range(columns) if owner[row - 1, c] is not owner[row, c]}
        if row > heading_rows and heights[row - 1] == heights[row] == 1:
            innermost = {owner[row - 1, heading_columns - 1].column, owner[row, heading_columns - 1].column}
            if min(changed) >= max(innermost):
                changed = set()
        rules.append(changed)
    return rules + [set(range(columns))]


def drawing(cells, heading_rows, heading_columns):
    rows = max(cell.row + cell.rows for cell in cells)
    columns = max(cell.column + cell.columns for cell in cells)
    widths = measure_columns(cells, columns)
    heights = [1] * rows
    for cell in cells:
        if cell.rows == 1:
            heights[cell.row] = max(heights[cell.row], len(cell.lines))
    rules = rules_of(cells, heights, heading_rows, heading_columns, columns)
    for cell in cells:
        ruled = sum(1 for row in range(cell.row + 1, cell.row + cell.rows) if rules[row])
        present = sum(heights[cell.row : cell.row + cell.rows]) + ruled
        heights[cell.row + cell.rows - 1] += max(0, len(cell.lines) - present)
    rules = rules_of(cells, heights, heading_rows, heading_columns, columns)

    left = [sum(widths[:c]) + 3 * c for c in range(columns + 1)]
    top, rule_at, y = [], [], 0  # first text line of each row; line of the rule above it
    for row in range(rows + 1):
        rule_at.append(y)
        y += 1 if rules[row] else 0
        top.append(y)
        y += heights[row] if row < rows else 0

    arms = {}
    texts = {}

    def arm(line, x, bits):
        arms[line, x] = arms.get((line, x), 0) | bits

    for cell in cells:
        end_row, end_column = cell.row + cell.rows, cell.column + cell.columns
        first, last = top[cell.row], rule_at[end_row]
        for x in (left[cell.column], left[end_column]):
            for line in range(first, last):
                arm(line, x, NORTH | SOUTH)
            if rules[cell.row]:
                arm(first - 1, x, SOUTH)
            if rules[end_row]:
                arm(last, x, NORTH)
        for boundary in (cell.row, end_row):
            if rules[boundary] & set(range(cell.column, end_column)):
                for x in range(left[cell.column], left[end_column]):
                    arm(rule_at[boundary], x, EAST)
                    arm(rule_at[boundary], x + 1, WEST)
        space = left[end_column] - left[cell.column] - 3
        below = cell.kind in ("corner", "column")
        start = last - len(cell.lines) if below else first
        for i, line in enumerate(cell.lines):
            blanks = space - width(line)
            right_aligned = cell.kind == "body" or (cell.kind == "column" and cell.columns == 1)
            centred = cell.kind == "column" and cell.columns > 1
            before = blanks if right_aligned else blanks // 2 if centred else 0
            texts[start + i, left[cell.column] + 2 + before] = line

    lines = []
    for line in range(y):
        chars = DOUBLE if line == rule_at[heading_rows] else LINES
        out, x = "", 0
        while x <= left[columns]:
            text = texts.get((line, x), "")
            out += text
            x += width(text)
            out += chars[arms.get((line, x), 0)]
            x += 1
        lines.append(out)
    return lines
