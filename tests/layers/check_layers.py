#!/usr/bin/env python3
"""Includes run one way only: from a higher floor to a lower one, or along the same floor.

    check_layers.py ROOT

reads the include lines of the library folders below ROOT and prints `file:line: what is wrong` for every line that
breaks a rule; it ends with status 1 when there was one. A file that the table below does not name is wrong too, so a
new class is placed on its floor when it is written.

Rules
  1. A quoted include is spelled from the root and names a file of the table.
  2. A file includes floors up to its own. The containers (floor 2) include nothing of the cell library, save the two
     that take their storage from a region; the regions (floor 1) include nothing below them.
  3. On floor 5 the display headings know no document part and the document parts know no display heading.
  4. An installed header includes no header of a detail/ folder.
  5. An angle include names a header of the standard library, or one of the few in EXTERNAL.
"""

import re
import sys
from pathlib import Path

LIBRARY_FOLDERS = ("platform", "omcell", "backend")
SOURCE_ENDINGS = (".h", ".cpp")

# Path without its ending -> floor. A header and its source share one line.
FLOORS = {
    "platform/Export": 0,
    "platform/BackendSettings": 0,
    "platform/CodePageConverter": 0,
    "platform/detail/CodePageNames": 0,
    "platform/detail/Transcoder": 0,
    "platform/icuTracker": 0,
    "omcell/Export": 1,
    "omcell/OmMemoryRegion": 1,
    "omcell/OmRegionManaged": 1,
    "backend/tables/Export": 2,
    "backend/tables/Assert": 2,
    "backend/tables/ListTree": 2,
    "backend/tables/MultiBase": 2,
    "backend/tables/PuppetVector": 2,
    "backend/tables/om/HandleLayout": 2,
    "backend/tables/om/OmVector": 2,
    "backend/tables/om/VectorTree": 2,
    "omcell/OmBlank": 3,
    "omcell/OmCellMetaData": 3,
    "omcell/OmCellProperties": 3,
    "omcell/OmCellText": 3,
    "omcell/OmComposite": 3,
    "omcell/OmLabelledText": 3,
    "omcell/OmMessage": 3,
    "omcell/OmNumber": 3,
    "omcell/OmPartedText": 3,
    "omcell/OmStringCell": 3,
    "omcell/OmValue": 3,
    "omcell/OmVariable": 3,
    "omcell/RegionBytes": 3,
    "omcell/detail/Belonging": 3,
    "omcell/detail/NumberText": 3,
    "omcell/detail/Ordering": 3,
    "omcell/detail/PlainText": 3,
    "backend/tables/om/FormatArea": 4,
    "backend/tables/om/OMSException": 4,
    "backend/tables/om/OmDimension": 4,
    "backend/tables/om/OmDimensionChange": 4,
    "backend/tables/om/OmDimensionNode": 4,
    "backend/tables/om/OmFootnote": 4,
    "backend/tables/om/OmOutputPart": 4,
    "backend/tables/om/OmPivotTable": 4,
    "backend/tables/om/OmPivotTableProperties": 4,
    "backend/tables/om/OmSort": 4,
    "backend/tables/om/detail/CellCursor": 4,
    "backend/tables/om/detail/ChildIndex": 4,
    "backend/tables/om/detail/CellProjection": 4,
    "backend/tables/om/detail/CellStore": 4,
    "backend/tables/om/detail/Dump": 4,
    "backend/tables/om/detail/ICUHelper": 4,
    "backend/tables/om/detail/LabelHash": 4,
    "backend/tables/om/detail/PivotTableData": 4,
    "backend/tables/om/detail/PointerVector": 4,
    "backend/tables/om/OmAnswerTree": 5,
    "backend/tables/om/OmChart": 5,
    "backend/tables/om/OmDisplayColumnHeading": 5,
    "backend/tables/om/OmDisplayLayerHeading": 5,
    "backend/tables/om/OmDisplayRowHeading": 5,
    "backend/tables/om/OmHeading": 5,
    "backend/tables/om/OmInteractive": 5,
    "backend/tables/om/OmModel": 5,
    "backend/tables/om/OmPageTitle": 5,
    "backend/tables/om/OmProcedure": 5,
    "backend/tables/om/OmTextBlock": 5,
    "backend/tables/om/OmUtility": 5,
    "backend/tables/om/detail/AxisIndexer": 5,
    "backend/tables/om/detail/CellPositions": 5,
    "backend/tables/om/detail/DisplayRecord": 5,
    "backend/tables/om/detail/FirstBelow": 5,
    "backend/tables/om/detail/HeadingLayout": 5,
    "backend/tables/om/detail/LabelTrail": 5,
    "backend/tables/om/detail/LayerLayout": 5,
    "backend/tables/om/detail/PositionSet": 5,
    "backend/tables/om/detail/Streams": 5,
    "backend/tables/om/OmOutputTree": 6,
    "omtree": 7,
}

# What a low floor may include besides itself; floors not named here include everything below them.
ALLOWED_BELOW = {1: set(), 2: set()}
TAKES_REGION = {"backend/tables/om/OmVector", "backend/tables/om/VectorTree"}

# The two families of floor 5 that do not know each other: the files named here, and all others of that floor.
DISPLAY = "display heading"
DOCUMENT = "document part"
DISPLAY_FILES = {
    "backend/tables/om/OmDisplayColumnHeading",
    "backend/tables/om/OmDisplayLayerHeading",
    "backend/tables/om/OmDisplayRowHeading",
    "backend/tables/om/detail/AxisIndexer",
    "backend/tables/om/detail/CellPositions",
    "backend/tables/om/detail/DisplayRecord",
    "backend/tables/om/detail/HeadingLayout",
    "backend/tables/om/detail/LabelTrail",
    "backend/tables/om/detail/LayerLayout",
    "backend/tables/om/detail/PositionSet",
}

# Headers from outside the standard library: name -> the path starts that may include it.
EXTERNAL = {
    "iconv.h": ("platform/",),
    "sanitizer/asan_interface.h": ("omcell/",),
    "valgrind/memcheck.h": ("omcell/",),
    "valgrind/valgrind.h": ("omcell/",),
}

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"(?P<quoted>[^"]+)"|<(?P<angle>[^>]+)>|(?P<other>\S.*))')
STANDARD = re.compile(r"^[a-z][a-z0-9_]*$")


def family(stem):
    """The floor 5 family of a file, or None on every other floor."""
    if FLOORS[stem] != 5:
        return None
    return DISPLAY if stem in DISPLAY_FILES else DOCUMENT


def stem_of(path):
    return re.sub(r"\.[^./]+$", "", path)


def is_private(path):
    return "/detail/" in path


def may_include(includer, included):
    """None when the arrow is allowed, else the reason why not."""
    own, other = FLOORS[includer], FLOORS[included]
    if other > own:
        return f"back arrow, floor {own} includes floor {other}"
    if other < own:
        allowed = ALLOWED_BELOW.get(own, set(range(own)))
        if includer in TAKES_REGION:
            allowed = allowed | {1}
        if other not in allowed:
            return f"floor {own} may not include floor {other}"
    if {family(includer), family(included)} == {DISPLAY, DOCUMENT}:
        return f"sideways arrow, a {family(includer)} includes a {family(included)}"
    return None


def problems_of_line(path, line):
    match = INCLUDE.match(line)
    if not match:
        return
    if match["other"] is not None:
        yield "an include whose file is not spelled out"
    elif match["angle"] is not None:
        name = match["angle"]
        if not STANDARD.match(name) and not path.startswith(EXTERNAL.get(name, ())):
            yield f"<{name}> is no header of the standard library"
    else:
        name = match["quoted"]
        stem = stem_of(name)
        if stem not in FLOORS:
            yield f'"{name}" is not a file of the table, spelled from the root'
            return
        reason = may_include(stem_of(path), stem)
        if reason:
            yield f'{reason}: "{name}"'
        if path.endswith(".h") and not is_private(path) and is_private(name):
            yield f'an installed header includes a private one: "{name}"'


def source_files(root):
    found = [root / "omtree.h"] if (root / "omtree.h").exists() else []
    for folder in LIBRARY_FOLDERS:
        found += [file for file in (root / folder).rglob("*") if file.suffix in SOURCE_ENDINGS]
    return sorted(found)


def check(root):
    """Yields (path, line number, problem) for the whole tree."""
    for file in source_files(root):
        path = file.relative_to(root).as_posix()
        if stem_of(path) not in FLOORS:
            yield path, 1, "this file stands on no floor, name it in the table of check_layers.py"
            continue
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            for problem in problems_of_line(path, line):
                yield path, number, problem


def main():
    root = Path(sys.argv[1])
    files = source_files(root)
    if not files:
        print(f"{root}: no source file found")
        return 1
    broken = 0
    for path, number, problem in check(root):
        print(f"{path}:{number}: {problem}")
        broken += 1
    print(f"{len(files)} files read, {broken} broken include rules")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
