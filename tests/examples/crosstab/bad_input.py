#!/usr/bin/env python3
"""Whatever omtree-crosstab cannot use ends in one line on standard error, status 2 and nothing on standard output.

    bad_input.py TOOL ROOT
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

TITANIC = "titanic.csv"
GOOD = b"Class,Sex,Freq\n1st,Male,5\n2nd,Female,7\n"

# Name, content of bad.csv (None: no such file), arguments, the line on standard error without the tool's name.
CASES = [
    # --- files
    ("missing file", None, ["bad.csv", "--rows=A"], "bad.csv: No such file or directory"),
    ("directory", None, [".", "--rows=A"], ".: Is a directory"),
    ("file below a file", GOOD, ["bad.csv/x", "--rows=A"], "bad.csv/x: Not a directory"),
    ("read error", None, ["/proc/self/mem", "--rows=A"], "/proc/self/mem: Input/output error"),
    ("file name with a line break", None, ["no\nfile", "--rows=A"], "no file: No such file or directory"),
    # --- contents
    ("empty file", b"", ["bad.csv", "--rows=A"], "bad.csv: the file is empty"),
    ("byte order mark alone", b"\xef\xbb\xbf", ["bad.csv", "--rows=A"], "bad.csv: the file is empty"),
    ("blank lines alone", b"\n\r\n\n", ["bad.csv", "--rows=A"], "bad.csv: the file is empty"),
    ("header alone", b"Class,Sex\n", ["bad.csv", "--rows=Sex"], "bad.csv: no line follows the header"),
    ("too few fields", GOOD + b"3rd,Male\n", ["bad.csv", "--rows=Sex"], "bad.csv:4: 2 fields where the header has 3"),
    ("one field", GOOD + b"3rd\n", ["bad.csv", "--rows=Sex"], "bad.csv:4: 1 field where the header has 3"),
    ("too many fields", GOOD + b"3rd,Male,2,", ["bad.csv", "--rows=Sex"], "bad.csv:4: 4 fields where the header has 3"),
    ("line after blank lines and line breaks in fields", b'A,B\r\n\r\n"x\r\ny",1\r\n\r\nz\r\n', ["bad.csv", "--rows=A"],
     "bad.csv:6: 1 field where the header has 2"),
    ("quote never closed", b'A,B\n1,"2\n3,4\n', ["bad.csv", "--rows=A"],
     'bad.csv:2: column "B": the quote that begins the field is never closed'),
    ("quote never closed in the header", b'A,"B\n', ["bad.csv", "--rows=A"],
     "bad.csv:1: field 2: the quote that begins the field is never closed"),
    ("quote inside of a field", b'A,B\n1,2\n3"3,4\n', ["bad.csv", "--rows=A"],
     'bad.csv:3: column "A": a quote stands inside of a field that is not quoted'),
    ("blank before a quote", b'A,B\n1, "2"\n', ["bad.csv", "--rows=A"],
     'bad.csv:2: column "B": a quote stands inside of a field that is not quoted'),
    ("text after a quote", b'A,B\n1,"2\n"2\n', ["bad.csv", "--rows=A"],
     'bad.csv:3: column "B": text follows the closing quote'),
    ("malformed quote past the last column", b'A\n1,"2"2\n', ["bad.csv", "--rows=A"],
     "bad.csv:2: field 2: text follows the closing quote"),
    ("value not in UTF-8", b"A,B\n1,x\n2,Z\xfcrich\n", ["bad.csv", "--rows=B"],
     'bad.csv:3: column "B": "Z\ufffdrich" is not UTF-8'),
    # --- columns
    *[
        (f"unknown column in {option}", GOOD, ["bad.csv", "--rows=Class", f"{option}=Agee"],
         f'bad.csv:1: no column is named "Agee", as {option} asks for')
        for option in ("--columns", "--layers", "--sum")
    ],
    ("unknown column in --rows", GOOD, ["bad.csv", "--rows=Class,Agee"],
     'bad.csv:1: no column is named "Agee", as --rows asks for'),
    ("unknown column in --group", GOOD, ["bad.csv", "--rows=Class", "--group=Agee=G:1"],
     'bad.csv:1: no column is named "Agee", as --group asks for'),
    ("header in another encoding", "Größe,B\n1,2\n".encode("latin-1"), ["bad.csv", "--rows=Größe"],
     'bad.csv:1: column "Gr\ufffd\ufffde": the name is not UTF-8'),
    ("file in UTF-16", "A,B\n1,2\n".encode("utf-16"), ["bad.csv", "--rows=B"],
     'bad.csv:1: column "\ufffd\ufffdA␀": the name is not UTF-8'),
    ("header below blank lines", b"\n\nA\n1\n", ["bad.csv", "--rows=B"],
     'bad.csv:3: no column is named "B", as --rows asks for'),
    ("blank in a column name counts", GOOD, ["bad.csv", "--rows=Class, Sex"],
     'bad.csv:1: no column is named " Sex", as --rows asks for'),
    ("long name is cut", GOOD, ["bad.csv", "--rows=" + "x" * 100],
     'bad.csv:1: no column is named "' + "x" * 60 + '...", as --rows asks for'),
    ("column twice in one option", GOOD, ["bad.csv", "--rows=Sex,Class,Sex"], 'column "Sex" is named twice, in --rows'),
    ("column in two options", GOOD, ["bad.csv", "--rows=Sex", "--layers=Class,Sex"],
     'column "Sex" is named twice, in --rows and in --layers'),
    ("name twice in the header", b"A,B,A\n1,2,3\n", ["bad.csv", "--columns=A"],
     'bad.csv:1: more than one column is named "A", as --columns asks for'),
    ("name twice in the header, summed", b"A,B,A\n1,2,3\n", ["bad.csv", "--columns=B", "--sum=A"],
     'bad.csv:1: more than one column is named "A", as --sum asks for'),
    # --- numbers
    *[
        (f"summing {number!r}", GOOD + b"3rd,Male," + number.encode() + b"\n", ["bad.csv", "--rows=Sex", "--sum=Freq"],
         f'bad.csv:4: column "Freq": "{number}" is {wrong}')
        for number, wrong in [
            ("", "not a number"), ("n/a", "not a number"), ("inf", "not a number"), ("-inf", "not a number"),
            ("nan", "not a number"), ("0x10", "not a number"), ("1e", "not a number"), (".", "not a number"),
            ("1 2", "not a number"), ("1_000", "not a number"), ("--1", "not a number"), ("12x", "not a number"),
            ("1e309", "out of range"), ("-1e309", "out of range"), ("1e-400", "out of range"),
            ("1e99999999999999999999", "out of range"),
        ]
    ],
    ("line of a number below a line break", b'A,B\n"x\ny",z\n', ["bad.csv", "--rows=A", "--sum=B"],
     'bad.csv:3: column "B": "z" is not a number'),
    ("sum overflows", b"A,B\n" + b"x,1e308\n" * 2, ["bad.csv", "--rows=A", "--sum=B"],
     'bad.csv: column "B": a sum is out of range'),
    # --- groups
    ("group without its parts", GOOD, ["bad.csv", "--rows=Sex", "--group=Sex"],
     '--group: "Sex": expected COLUMN=NAME:VALUE,VALUE'),
    ("group without values", GOOD, ["bad.csv", "--rows=Sex", "--group=Sex=G"],
     '--group: "Sex=G": expected COLUMN=NAME:VALUE,VALUE'),
    ("group without a name", GOOD, ["bad.csv", "--rows=Sex", "--group=Sex=:Male"],
     '--group: "Sex=:Male": expected COLUMN=NAME:VALUE,VALUE'),
    ("group of a column on no axis", GOOD, ["bad.csv", "--rows=Sex", "--group=Class=G:1st"],
     '--group: column "Class" is not in --rows, --columns or --layers'),
    ("group of a value that is not there", GOOD, ["bad.csv", "--rows=Sex", "--group=Sex=G:Male,Maler"],
     'bad.csv: column "Sex": no line has the value "Maler", as --group asks for'),
    ("value in two groups", GOOD, ["bad.csv", "--rows=Sex", "--group=Sex=G:Male", "--group=Sex=H:Male"],
     '--group: value "Male" of column "Sex" is named twice'),
    # --- command line
    ("empty file name", GOOD, ["", "--rows=Sex"], "FILE: the name is empty"),
    ("empty page name", GOOD, ["bad.csv", "--rows=Sex", "--html", ""], "--html: the name is empty"),
    ("page name twice", GOOD, ["bad.csv", "--rows=Sex", "--html=a", "--html=b"], "--html is given more than once"),
    ("control characters in an option", GOOD, ["bad.csv", "--rows=Sex", "--\x1b[31m\udcff"],
     "The following argument was not expected: --␛[31m\ufffd"),
    ("value like an option", GOOD, ["bad.csv", "--rows", "--columns"],
     'bad.csv:1: no column is named "--columns", as --rows asks for'),
    ("no file", GOOD, ["--rows=Sex"], "FILE is required"),
    ("no axis", GOOD, ["bad.csv"], "name columns of the file in --rows, --columns or --layers"),
    ("unknown option", GOOD, ["bad.csv", "--rows=Sex", "--colums=Class"],
     "The following argument was not expected: --colums=Class"),
    ("two files", GOOD, ["bad.csv", "bad.csv", "--rows=Sex"], "The following argument was not expected: bad.csv"),
    ("option twice", GOOD, ["bad.csv", "--rows=Sex", "--rows=Class"], "--rows is given more than once"),
    ("list with an open quote", GOOD, ["bad.csv", '--rows="Sex'], '--rows: ""Sex": expected NAME,NAME'),
    ("list with text after a quote", GOOD, ["bad.csv", '--rows="Sex"x'], '--rows: ""Sex"x": expected NAME,NAME'),
    ("corner and names in it", GOOD, ["bad.csv", "--rows=Sex", "--corner=x", "--names-in-corner"],
     "--names-in-corner excludes --corner"),
    ("corner beside no rows", GOOD, ["bad.csv", "--columns=Sex", "--corner=x"], "--corner requires --rows"),
    # --- sizes
    ("too many cells to show", b"A,B\n" + b"".join(b"%d,%d\n" % (i, i) for i in range(1500)),
     ["bad.csv", "--rows=A", "--columns=B"],
     "the layers have more than 2000000 cells to show, empty ones included; name fewer columns"),
    ("too many cells kept", b"A,B\n" + b"".join(b"%d,%d\n" % (i, i) for i in range(1500)),
     ["bad.csv", "--layers=A,B", "--keep-empty"],
     "the layers have more than 2000000 cells to show, empty ones included; name fewer columns or leave out "
     "--keep-empty"),
    ("too many combinations", b"A,B,C,D,E,F,G\n" + b"".join(b",".join([b"%d" % i] * 7) + b"\n" for i in range(300)),
     ["bad.csv", "--layers=A,B,C,D,E,F,G"],
     "the columns have too many combinations of values; name fewer of them"),
]  # fmt: skip


def problem_with(run, expected):
    if run.returncode != 2:
        return f"status {run.returncode}"
    if run.stdout:
        return f"standard output {run.stdout!r}"
    line = f"omtree-crosstab: {expected}\n"
    return None if run.stderr.decode() == line else f"standard error {run.stderr.decode()!r} instead of {line!r}"


def check_inputs(tool):
    for name, content, arguments, expected in CASES:
        with tempfile.TemporaryDirectory() as folder:
            if content is not None:
                Path(folder, "bad.csv").write_bytes(content)
            yield name, problem_with(subprocess.run([tool, *arguments], cwd=folder, capture_output=True), expected)


def check_outputs(tool, data):
    """A table that cannot be written is a failure too; so is a help text."""
    for name, arguments in (("table", [data, "--rows=Sex"]), ("help", ["--help"])):
        with open("/dev/full", "wb") as full:
            run = subprocess.run([tool, *arguments], stdout=full, stderr=subprocess.PIPE)
            run.stdout = b""
            yield f"full disk, {name}", problem_with(run, "standard output: No space left on device")
        read_end, write_end = os.pipe()
        os.close(read_end)
        run = subprocess.run([tool, *arguments], stdout=write_end, stderr=subprocess.PIPE)
        os.close(write_end)
        run.stdout = b""
        yield f"closed pipe, {name}", problem_with(run, "standard output: Broken pipe")


def check_messages(tool):
    """Where nobody reads the message, the status still tells."""
    read_end, write_end = os.pipe()
    os.close(read_end)
    run = subprocess.run([tool, "no file", "--rows=Sex"], stdout=subprocess.PIPE, stderr=write_end)
    os.close(write_end)
    yield "message that nobody reads", None if run.returncode == 2 and not run.stdout else f"status {run.returncode}"


def check_help(tool):
    run = subprocess.run([tool, "--help"], capture_output=True)
    text = run.stdout.decode()
    options = ["--rows", "--columns", "--layers", "--sum", "--group", "--keep-empty", "--names-in-corner", "--title",
               "--corner", "--caption", "--footnote"]  # fmt: skip
    missing = [option for option in options if option not in text]
    wide = [line for line in text.split("\n") if len(line) > 120]
    failed = run.returncode != 0 or run.stderr or missing or wide
    yield "help", f"status {run.returncode}, without {missing}, too wide {wide}" if failed else None


def main():
    tool, root = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    failed = count = 0
    results = [check_inputs(tool), check_outputs(tool, f"{root}/examples/data/{TITANIC}"), check_messages(tool),
               check_help(tool)]
    for name, problem in (result for group in results for result in group):
        count += 1
        if problem is not None:
            failed += 1
            print(f"{name}: {problem}")
    print(f"{count} failures tried, {failed} not reported as they should be")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
