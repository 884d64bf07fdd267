#!/usr/bin/env python3
"""Installs a build into a fresh prefix, and builds and runs the consumer in find_package/ against it.

    installed_package.py --cmake CMAKE --build BUILD [--generator G] [--define NAME=VALUE]...

Every installed header must also compile alone inside the prefix, so none leans on a header that stayed behind.
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
CHECK_HEADERS = HERE.parent / "headers" / "check_headers.py"


def run(*command):
    words = [str(word) for word in command]
    result = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        print(f"{' '.join(words)}\n{result.stdout}")
        sys.exit(f"ended with status {result.returncode}")
    return result.stdout


def check_headers(prefix, arguments):
    root = prefix / "include" / "omtree"
    headers = sorted(file.relative_to(root) for file in root.rglob("*.h"))
    private = [str(header) for header in headers if "detail" in header.parts]
    if private or Path("omtree.h") not in headers:
        sys.exit(f"installed headers: {len(headers)}, private ones among them: {private}")
    print(run(sys.executable, CHECK_HEADERS, "--compiler", arguments.compiler, "--root", root, "--standard", "17",
              *headers).strip())


def build_consumer(prefix, folder, arguments):
    run(arguments.cmake, "-S", HERE / "find_package", "-B", folder, "-G", arguments.generator,
        f"-DCMAKE_CXX_COMPILER={arguments.compiler}", f"-DCMAKE_PREFIX_PATH={prefix}",
        *(f"-D{definition}" for definition in arguments.define))
    run(arguments.cmake, "--build", folder)
    print(run(folder / "consumer").strip())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--build", required=True)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--generator", default="Ninja")
    parser.add_argument("--define", action="append", default=[])
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as scratch:
        prefix = Path(scratch, "prefix")
        run(arguments.cmake, "--install", arguments.build, "--prefix", prefix)
        check_headers(prefix, arguments)
        build_consumer(prefix, Path(scratch, "build"), arguments)


if __name__ == "__main__":
    main()
