#!/usr/bin/env python3
"""Packs the project as a distribution would, and builds a newcomer's program against the installed package.

    newcomer_is_told.py --cmake CMAKE --source ROOT --build FOLDER --compiler CXX [--generator G]

The program keeps the handle of a category for too long. As Debug it says so and aborts; with the handle fetched again it
ends well; built otherwise it has the shipped libraries, whose layout and speed know nothing of the check, and the
program with the handle fetched again ends well there too.

A program that mixes the two layouts does not link, and a process that comes to load both ends when it starts.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
STALE = re.compile(r"backend/tables/om/VectorTree:[0-9]+: stale handle: the children around its node have changed, "
                   r"fetch it from the root again\n")
MIXED = re.compile(r"backend/tables/om/HandleLayout:[0-9]+: one layout of handles\n")
AGAIN = ("five groups\nOmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0\n"
         "5 to 14, 2 categories\n")
CHECKED, PLAIN = {"libomtree-checked.so.0", "libomcell-checked.so.0"}, {"libomtree.so.0", "libomcell.so.0"}

failures = []


def expect(holds, what):
    print(f"{'holds' if holds else 'DOES NOT HOLD'}: {what}")
    if not holds:
        failures.append(what)


def run(*command, fails=False):
    words = [str(word) for word in command]
    result = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if (result.returncode != 0) != fails:
        print(f"{' '.join(words)}\n{result.stdout}")
        sys.exit(f"ended with status {result.returncode}")
    return result.stdout


def outcome(*command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False)


def loaded(program):
    """The library's files that the dynamic linker finds for a program."""
    return {line.split()[0] for line in run("ldd", program).splitlines() if "libom" in line}


class Package:
    def __init__(self, arguments):
        self.arguments = arguments
        self.scratch = None
        self.prefix = None

    def configure(self, source, build, *definitions):
        run(self.arguments.cmake, "-S", source, "-B", build, "-G", self.arguments.generator,
            f"-DCMAKE_CXX_COMPILER={self.arguments.compiler}", *(f"-D{each}" for each in definitions))

    def install(self, scratch):
        """Packs the project, compiled for a quick build: what is asked here does not depend on the optimiser."""
        self.scratch, self.prefix = Path(scratch), Path(scratch, "prefix")
        folder = Path(self.arguments.build)
        self.configure(self.arguments.source, folder, "CMAKE_BUILD_TYPE=Release", "CMAKE_CXX_FLAGS_RELEASE=-O0",
                       "OMTREE_CHECKED_VARIANT=ON", "OMTREE_BUILD_TESTS=OFF", "OMTREE_BUILD_EXAMPLES=OFF")
        run(self.arguments.cmake, "--build", folder, "-j", len(os.sched_getaffinity(0)))
        run(self.arguments.cmake, "--install", folder, "--prefix", self.prefix)

    def build(self, project, name, *definitions):
        folder = self.scratch / name
        self.configure(HERE / project, folder, f"CMAKE_PREFIX_PATH={self.prefix}", *definitions)
        run(self.arguments.cmake, "--build", folder)
        return folder


def newcomer_is_told(package):
    program = package.build("newcomer", "Debug", "CMAKE_BUILD_TYPE=Debug") / "newcomer"
    expect(loaded(program) == CHECKED, "a Debug program has the libraries that check")
    stale = outcome(program)
    print(stale.stderr.strip())
    expect(stale.stdout == "five groups\n", "a Debug program gets as far as the mistake")
    expect(STALE.fullmatch(stale.stderr) is not None, "a Debug program names the mistake, and nothing else")
    expect(stale.returncode == -signal.SIGABRT, "a Debug program aborts")
    again = outcome(program, "again")
    expect((again.returncode, again.stdout, again.stderr) == (0, AGAIN, ""), "a Debug program without it ends well")


def others_get_the_shipped_libraries(package):
    for kind in ("Release", "RelWithDebInfo", "MinSizeRel", ""):
        program = package.build("newcomer", f"type-{kind}", f"CMAKE_BUILD_TYPE={kind}") / "newcomer"
        again = outcome(program, "again")
        expect(loaded(program) == PLAIN, f"a program of type '{kind}' has the shipped libraries")
        expect((again.returncode, again.stdout, again.stderr) == (0, AGAIN, ""),
               f"a program of type '{kind}' ends well when it fetches the handle again")
    mapped = package.build("newcomer", "mapped", "CMAKE_BUILD_TYPE=Debug", "CMAKE_MAP_IMPORTED_CONFIG_DEBUG=Release")
    expect(loaded(mapped / "newcomer") == PLAIN, "a Debug program that maps Debug to Release has the shipped libraries")
    expect(outcome(mapped / "newcomer", "again").stdout == AGAIN, "and it ends well")


def layouts_do_not_mix(package):
    for kind, word, name in (("Release", "#define OMTREE_CHECK_HANDLES 1", "Checked"),
                             ("Debug", "#undef OMTREE_CHECK_HANDLES", "Plain")):
        source = package.scratch / f"other-{kind}"
        shutil.copytree(HERE / "newcomer", source)
        main = source / "main.cpp"
        main.write_text(f"{word}\n{main.read_text(encoding='utf-8')}", encoding="utf-8")
        folder = source / "build"
        package.configure(source, folder, f"CMAKE_PREFIX_PATH={package.prefix}", f"CMAKE_BUILD_TYPE={kind}")
        said = run(package.arguments.cmake, "--build", folder, fails=True)
        expect(f"undefined reference to `om_detail::HandleLayout::{name}'" in said,
               f"a {kind} program that is compiled with the other layout does not link")

    library = package.build("mixed", "middle", "CMAKE_BUILD_TYPE=Release", "PART=middle")
    program = package.build("mixed", "mixed", "CMAKE_BUILD_TYPE=Debug", "PART=program", f"MIDDLE={library}") / "program"
    expect(loaded(program) == PLAIN | CHECKED, "a Debug program with a library that was built as Release has both")
    mixed = outcome(program)
    print(mixed.stderr.strip())
    expect(MIXED.fullmatch(mixed.stderr) is not None and mixed.returncode == -signal.SIGABRT and mixed.stdout == "",
           "it says so when it starts, and aborts")


def main():
    parser = argparse.ArgumentParser()
    for name in ("cmake", "source", "build", "compiler"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--generator", default="Ninja")
    package = Package(parser.parse_args())
    with tempfile.TemporaryDirectory() as scratch:
        package.install(scratch)
        newcomer_is_told(package)
        others_get_the_shipped_libraries(package)
        layouts_do_not_mix(package)
    if failures:
        sys.exit(f"{len(failures)} expectations do not hold")


if __name__ == "__main__":
    main()
