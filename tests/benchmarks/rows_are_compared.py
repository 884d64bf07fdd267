#!/usr/bin/env python3
"""Runs the driver of the benchmarks over a made-up program whose results are known, and reads what it writes."""

import subprocess
import sys
import tempfile
from pathlib import Path

DRIVER = Path(__file__).resolve().parents[2] / "benchmarks" / "run.py"

# Keeps a count of the runs of each side, and gives the side's next result: a number, or "broken" for a failure.
PROGRAM = r'''#!/usr/bin/env python3
import json, re, sys
from pathlib import Path
RESULTS = {results}
folder = Path(__file__).parent
side = re.search(r"--benchmark_filter=\^(.*)/$", sys.argv[1])[1]
size = [argument[4:] for argument in sys.argv if argument.startswith("--n=")]
side += "@" + size[0] if size else ""
log = folder / "log"
before = log.read_text().split() if log.exists() else []
log.write_text("\n".join(before + [side]) + "\n")
result = RESULTS[side][before.count(side)]
if result == "broken":
    print(json.dumps({{"benchmarks": [{{"error_message": "wrong result"}}]}}))
    sys.exit(1)
print(json.dumps({{"benchmarks": [{{"time": result, "bytes": 2 * result}}]}}))
'''

ROWS = """# a comment
quick\twork one\tmap\tone/ours:time\tone/map:time\tns\t2\t4
heavy\twork one\tmap\tone/ours:bytes\tone/map:bytes\tB\t1.5\t1.6
limit\twork one\tlimit\tone/ours:time\t100\tns\t1\t1
grown\twork two\ttwice\ttwo/ours@40:time / two/ours@10:time\t2\ttimes\t1\t1
"""
RESULTS = {
    "one/ours": [10, 30, 20, 1, 99],  # median 20
    "one/map": [60, 61, 59, 1, 99],  # median 60
    "two/ours@10": [4, 4, 4, 4, 4],
    "two/ours@40": [7, 7, 7, 7, 7],
}
WHOLE = """row\tworkload\trival\tours\ttheirs\tunit\tratio\tfloor\taim
quick\twork one\tmap\t20\t60\tns\t3.00\t2\t4
heavy\twork one\tmap\t40\t120\tB\t3.00\t1.5\t1.6
limit\twork one\tlimit\t20\t100\tns\t5.00\t1\t1
grown\twork two\ttwice\t1.75\t2\ttimes\t1.14\t1\t1
"""


class Driven:
    """What one run of the driver gave."""

    def __init__(self, *arguments, results=RESULTS, rows=ROWS):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            program = folder / "omtree-bench"
            program.write_text(PROGRAM.format(results=repr(results)))
            program.chmod(0o755)
            (folder / "rows.tsv").write_text(rows)
            done = subprocess.run(
                [sys.executable, DRIVER, folder, "--rows-file", folder / "rows.tsv", "--out", folder / "out", *arguments],
                capture_output=True, text=True, check=False)
            self.status = done.returncode
            self.text = done.stdout + done.stderr
            self.files = {path.name: path.read_text() for path in sorted((folder / "out").glob("*"))}
            log = folder / "log"
            self.log = log.read_text().split() if log.exists() else []


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: {found!r}, expected {expected!r}")


def main():
    whole = Driven("--repetitions", "5")
    expect("status of a good run", whole.status, 0)
    expect("table", whole.files.get("ratios.tsv"), WHOLE)
    expect("what the terminal shows is kept", whole.files.get("ratios.txt"), whole.text)
    expect("load average is shown", "load average" in whole.text, True)
    expect("a row below its aim is marked", "below aim" in whole.text, True)
    ones = [side for side in whole.log if side.startswith("one/")]
    expect("the sides alternate, and who goes first does too", ones[:6],
           ["one/ours", "one/map", "one/map", "one/ours", "one/ours", "one/map"])
    expect("runs", len(whole.log), 4 * 5)

    missed = Driven("--repetitions", "1", rows=ROWS.replace("\tns\t2\t4", "\tns\t7\t8"))
    expect("status when a floor is missed", missed.status, 1)
    expect("a missed floor is named", "not quick\n" in missed.text, True)
    expect("every row is printed all the same", "grown" in missed.text, True)

    some = Driven("--repetitions", "1", "--rows", "gr*", "no-such-row")
    expect("files of some rows", sorted(some.files), ["ratios-some.tsv", "ratios-some.txt"])
    expect("only what they need runs", sorted(some.log), ["two/ours@10", "two/ours@40"])

    broken = Driven("--repetitions", "2", results={**RESULTS, "one/map": [5, "broken"]})
    expect("status when a side fails", broken.status, 1)
    expect("the reason is shown", "one/map failed: wrong result" in broken.text, True)
    expect("rows of a failed side", broken.files["ratios.tsv"].splitlines()[1].split("\t")[4:7], ["-", "ns", "-"])
    expect("rows that do not need it", broken.files["ratios.tsv"].splitlines()[3].split("\t")[6], "5.00")

    expect("status when no row is meant", Driven("--rows", "nothing").status, 1)


if __name__ == "__main__":
    main()
