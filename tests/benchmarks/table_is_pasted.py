#!/usr/bin/env python3
"""Pastes a made-up table into a made-up document, twice, and reads what stands there."""

import subprocess
import sys
import tempfile
from pathlib import Path

PASTE = Path(__file__).resolve().parents[2] / "tools" / "paste_ratios.py"

RATIOS = """row\tworkload\trival\tours\ttheirs\tunit\tratio\tfloor\taim
good\twork\tmap\t10\t40\tns\t4.00\t2\t3
low\twork\tmap\t10\t25\tns\t2.50\t2\t3
missed\twork\tmap\t10\t15\tns\t1.50\t2\t3
failed\twork\tmap\t-\t15\tns\t-\t2\t3
"""
DOCUMENT = "before\n<!-- ratios -->\n{}<!-- /ratios -->\nafter\n"
TABLE = """when and where
which machine

| row | rival | ours | theirs | unit | ratio | floor | aim | |
|---|---|---:|---:|---|---:|---:|---:|---|
| good | map | 10 | 40 | ns | 4.00 | 2 | 3 | |
| low | map | 10 | 25 | ns | 2.50 | 2 | 3 | below its aim |
| missed | map | 10 | 15 | ns | 1.50 | 2 | 3 | **misses its floor** |
| failed | map | - | 15 | ns | - | 2 | 3 | **misses its floor** |
"""


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "ratios.tsv").write_text(RATIOS)
        (folder / "ratios.txt").write_text("when and where\nwhich machine\n\nthe table\n")
        document = folder / "performance.md"
        document.write_text(DOCUMENT.format("an older table\n"))
        for _ in range(2):
            subprocess.run([sys.executable, PASTE, folder, document], check=True)
            if document.read_text() != DOCUMENT.format(TABLE):
                sys.exit(f"another document than expected:\n{document.read_text()}")
        document.write_text("no place\n")
        done = subprocess.run([sys.executable, PASTE, folder, document], capture_output=True, text=True, check=False)
        if done.returncode == 0 or document.read_text() != "no place\n":
            sys.exit("a document without a place for the table was accepted")


if __name__ == "__main__":
    main()
