#!/usr/bin/env python3
"""Proves that check_headers.py can fail: a header with a missing include, one without a guard, one with a warning and
one that needs a later standard must be reported by name; a sound one must pass.

    bad_header_is_found.py --compiler CXX [--flag=FLAG]...
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

CHECK = Path(__file__).with_name("check_headers.py")
GUARD = "#pragma once\n"

# (file, its text, whether it stands alone in C++17)
CASES = [
    ("Sound.h", GUARD + "#include <string>\ninline std::string Name() { return {}; }\n", True),
    ("MissingInclude.h", GUARD + "inline std::string Name() { return {}; }\n", False),
    ("NoGuard.h", "inline int Number() { return 1; }\n", False),
    ("Warning.h", GUARD + "inline int Narrow(long long wide) { return wide; }\n", False),
    ("LaterStandard.h", GUARD + "template <typename T> concept Any = true;\n", False),
]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--flag", action="append", default=[])
    arguments = parser.parse_args()

    failures = 0
    with tempfile.TemporaryDirectory() as root:
        for name, text, sound in CASES:
            Path(root, name).write_text(text, encoding="utf-8")
            command = [sys.executable, str(CHECK), "--compiler", arguments.compiler, "--root", root, "--standard", "17"]
            command += [f"--flag={flag}" for flag in arguments.flag] + [name]
            run = subprocess.run(command, capture_output=True, text=True, check=False)
            named = f"{name} does not stand alone" in run.stdout
            held = (run.returncode, named) == ((0, False) if sound else (1, True))
            print(f"{'ok' if held else 'FAILED'}: {name}")
            if not held:
                failures += 1
                print(run.stdout + run.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
