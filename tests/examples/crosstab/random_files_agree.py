#!/usr/bin/env python3
"""omtree-crosstab prints, byte for byte, what an independent tally and drawing of 500 random CSV files gives.

    random_files_agree.py TOOL ROOT [CASE]

Case n is made from seed n alone; give it to run that one again.
"""

import difflib
import random
import subprocess
import sys
import tempfile
from pathlib import Path

from expected_table import Expected

CASES = 500

WORDS = [
    "", "a", "B", "no", "Yes", "Crew", "x y", "Ünïcödé", "東京", "ソウル特別市", "e\u0301te\u0301", "🦉 owl", "한국",
    'quo"te', '""', "comma, here", "colon: here", "a=b", "two\nlines", "CR\r\nLF", "old\rMac", "\n", "tab\there",
    " leading", "trailing ", "bell\x07", "c1\u0085control", "0", "-1", "1e3", "inf", "#", "a much longer label that has to be broken",
    "verylongwordthatcannotbebrokenatall", "日本語 の とても 長い ラベル です から", "\u200bzero", "(empty)", " ",
]  # fmt: skip
NAMES = WORDS + ["Class", "Sex", "Age", "Survived", "Region", "Freq", "Year of the survey"]
NUMBERS = ["0", "1", "7", "-3", "+12", "0.1", "0.2", ".5", "5.", "-0.0", "1e3", "2.5E-7", "1e20", " 4 ", "\t9", "1000000",
           "123456789.123456789", "-0.30000000000000004", "1e-320", "99999999999999999999", "1e15", "0.00001"]  # fmt: skip


def csv_field(rng, value, alone):
    must = any(c in value for c in ',"\r\n') or (alone and value == "")
    if must or rng.random() < 0.2:
        return '"' + value.replace('"', '""') + '"'
    return value


def file_text(rng, records):
    end = rng.choice(["\n", "\r\n", "\n", "\r\n", "\r"])
    alone = len(records[0]) == 1
    lines = []
    for record in records:
        lines.append(",".join(csv_field(rng, value, alone) for value in record))
        if rng.random() < 0.05:
            lines.append("")
    text = end.join(lines) + (end if rng.random() < 0.8 else "")
    return text


def argument(rng, name, special):
    if name == "" or name.startswith('"') or any(c in name for c in special) or rng.random() < 0.1:
        return '"' + name.replace('"', '""') + '"'
    return name


def groups_of(rng, used, header, records):
    groups = []
    for name in used:
        values = list(dict.fromkeys(record[header.index(name)] for record in records))
        rng.shuffle(values)
        while len(values) > 1 and rng.random() < 0.4:
            count = rng.randint(1, len(values) - 1)
            group = rng.choice([word for word in WORDS if word])
            if not any(group == other and name == column for column, other, _ in groups):
                groups.append((name, group, values[:count]))
            values = values[count:]
    return groups


def case(seed):
    """The text of a file and the options to run it with."""
    rng = random.Random(seed)
    header = rng.sample(NAMES, rng.randint(1, 6))
    pools = [rng.sample(WORDS, rng.randint(1, 5)) for _ in header]
    sum_field = rng.randrange(len(header)) if rng.random() < 0.5 else None
    if sum_field is not None:
        pools[sum_field] = NUMBERS
    records = [[rng.choice(pool) for pool in pools] for _ in range(rng.randint(1, 40))]

    usable = [name for i, name in enumerate(header) if i != sum_field or rng.random() < 0.05]
    used = rng.sample(usable, rng.randint(1, min(4, len(usable)))) if usable else header[:1]
    options = {"rows": [], "columns": [], "layers": []}
    for name in used:
        options[rng.choice(["rows", "rows", "columns", "columns", "layers"])].append(name)
    options["sum"] = None if sum_field is None else header[sum_field]
    options["keep-empty"] = rng.random() < 0.4 and len(used) * len(records) < 120
    options["names-in-corner"] = rng.random() < 0.5
    options["groups"] = groups_of(rng, used, header, records)
    text = rng.choice([word for word in WORDS if word.strip()])
    options["title"] = text if rng.random() < 0.4 else ""
    options["caption"] = text if rng.random() < 0.2 else ""
    options["footnotes"] = rng.sample(WORDS, 2) if rng.random() < 0.2 else []
    options["corner"] = text if rng.random() < 0.3 and options["rows"] and not options["names-in-corner"] else ""

    # Words that stay together. An option takes the next word when nothing follows its "=".
    arguments = []
    for axis in ("rows", "columns", "layers"):
        if options[axis]:
            arguments.append([f"--{axis}=" + ",".join(argument(rng, name, ",") for name in options[axis])])
    for column, group, values in options["groups"]:
        listed = ",".join(argument(rng, value, ",") for value in values)
        arguments.append([f"--group={argument(rng, column, '=')}={argument(rng, group, ':')}:{listed}"])
    for name in ("title", "caption", "corner"):
        if options[name]:
            arguments.append([f"--{name}={options[name]}"])
    if options["sum"] is not None:
        arguments.append([f"--sum={options['sum']}"] if options["sum"] else ["--sum", ""])
    options["footnotes"] = [footnote for footnote in options["footnotes"] if footnote]
    arguments.append([f"--footnote={footnote}" for footnote in options["footnotes"]])
    arguments += [[f"--{flag}"] for flag in ("keep-empty", "names-in-corner") if options[flag]]
    rng.shuffle(arguments)
    arguments = [word for words in arguments for word in words]
    text = file_text(rng, [header] + records)
    return text, options, arguments, rng.random() < 0.2


def differs(tool, folder, seed):
    """None, or what is wrong with one case."""
    text, options, arguments, mark = case(seed)
    path = Path(folder) / f"case{seed}.csv"
    path.write_bytes((b"\xef\xbb\xbf" if mark else b"") + text.encode())
    run = subprocess.run([tool, str(path), *arguments], capture_output=True, check=False)
    expected = Expected(text, options).text()
    actual = run.stdout.decode(errors="replace")
    if run.returncode == 0 and not run.stderr and actual == expected:
        return None
    diff = difflib.unified_diff(expected.split("\n"), actual.split("\n"), "expected", "printed", lineterm="")
    return f"seed {seed}: {arguments}\n{text!r}\nstatus {run.returncode} {run.stderr.decode()}\n" + "\n".join(diff)


def main():
    tool = sys.argv[1]
    seeds = [int(sys.argv[3])] if len(sys.argv) > 3 else range(1, CASES + 1)
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        for seed in seeds:
            problem = differs(tool, folder, seed)
            if problem is not None:
                failed += 1
                if failed <= 3:
                    print(problem)
    print(f"{len(seeds)} random files, {failed} differ")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
