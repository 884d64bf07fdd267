#!/usr/bin/env python3
"""Proves that check_layers.py can fail: small made-up trees, each with one broken rule, must be reported with the
file and the line, and a tree without one must pass."""

import subprocess
import sys
import tempfile
from pathlib import Path

CHECK = Path(__file__).with_name("check_layers.py")

OM = "backend/tables/om/"
HEADER = {
    "region": "omcell/OmMemoryRegion.h",
    "text": "omcell/OmCellText.h",
    "table": OM + "OmPivotTable.h",
    "layer": OM + "OmDisplayLayerHeading.h",
    "heading": OM + "OmHeading.h",
    "tree": OM + "OmOutputTree.h",
}

# (name, {file: lines}, where the report must point; None: the tree is sound)
CASES = [
    (
        "a sound tree",
        {
            HEADER["region"]: ["#include <cstddef>"],
            HEADER["table"]: ['#include "omcell/OmMemoryRegion.h"', "#include <vector>"],
            HEADER["heading"]: [f'#include "{HEADER["table"]}"'],
            HEADER["tree"]: [f'#include "{HEADER["heading"]}"'],
        },
        None,
    ),
    (
        "the table includes a display heading",
        {HEADER["table"]: ["#include <vector>", "", f'#include "{HEADER["layer"]}"']},
        f"{HEADER['table']}:3: back arrow, floor 4 includes floor 5",
    ),
    (
        "a source, indented and with a blank behind the hash",
        {OM + "OmPivotTable.cpp": [f'  # include "{HEADER["tree"]}"']},
        f"{OM}OmPivotTable.cpp:1: back arrow, floor 4 includes floor 6",
    ),
    (
        "a text includes the table",
        {HEADER["text"]: [f'#include "{HEADER["table"]}"']},
        f"{HEADER['text']}:1: back arrow, floor 3 includes floor 4",
    ),
    (
        "a display heading includes a heading of the document",
        {HEADER["layer"]: [f'#include "{HEADER["heading"]}"']},
        f"{HEADER['layer']}:1: sideways arrow, a display heading includes a document part",
    ),
    (
        "a heading of the document includes a display heading",
        {HEADER["heading"]: [f'#include "{HEADER["layer"]}"']},
        f"{HEADER['heading']}:1: sideways arrow, a document part includes a display heading",
    ),
    (
        "a container that takes no region includes one",
        {"backend/tables/MultiBase.h": [f'#include "{HEADER["region"]}"']},
        "backend/tables/MultiBase.h:1: floor 2 may not include floor 1",
    ),
    (
        "a region includes the platform",
        {HEADER["region"]: ['#include "platform/icuTracker.h"']},
        f"{HEADER['region']}:1: floor 1 may not include floor 0",
    ),
    (
        "a path that does not start at the root",
        {HEADER["table"]: ['#include "OmDimension.h"']},
        f'{HEADER["table"]}:1: "OmDimension.h" is not a file of the table',
    ),
    (
        "a header of ours between angle brackets",
        {HEADER["text"]: [f"#include <{HEADER['table']}>"]},
        f"{HEADER['text']}:1: <{HEADER['table']}> is no header of the standard library",
    ),
    (
        "a header from outside the standard library",
        {HEADER["table"]: ["#include <pugixml.hpp>"]},
        f"{HEADER['table']}:1: <pugixml.hpp> is no header of the standard library",
    ),
    (
        "an installed header includes a private one",
        {HEADER["table"]: ["", f'#include "{OM}detail/PointerVector.h"']},
        f'{HEADER["table"]}:2: an installed header includes a private one: "{OM}detail/PointerVector.h"',
    ),
    (
        "a private header of the display headings includes a document part",
        {OM + "detail/AxisIndexer.h": [f'#include "{HEADER["heading"]}"']},
        f"{OM}detail/AxisIndexer.h:1: sideways arrow, a display heading includes a document part",
    ),
    (
        "a file on no floor",
        {OM + "OmStranger.h": []},
        f"{OM}OmStranger.h:1: this file stands on no floor",
    ),
]


def report_of(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, lines in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("\n".join(lines) + "\n", encoding="utf-8")
        run = subprocess.run([sys.executable, str(CHECK), folder], capture_output=True, text=True, check=False)
        return run.returncode, run.stdout + run.stderr


def main():
    failures = 0
    for name, files, expected in CASES:
        status, report = report_of(files)
        held = status == 0 if expected is None else status == 1 and any(
            line.startswith(expected) for line in report.splitlines())
        print(f"{'ok' if held else 'FAILED'}: {name}")
        if not held:
            failures += 1
            print(f"  expected: {expected or 'no problem'}\n  status {status}, report:\n{report}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
