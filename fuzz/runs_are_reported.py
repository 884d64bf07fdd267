#!/usr/bin/env python3
"""Lets tools/fuzz.py run made-up fuzzers, and reads its table and its verdict."""

import subprocess
import sys
import tempfile
from pathlib import Path

DRIVER = Path(__file__).resolve().parents[1] / "tools" / "fuzz.py"

# Writes down what it is called with, beside itself.
CALM = """#!/bin/sh
echo "$@" >"$0.called"
echo '#2  INITED cov: 17 ft: 20 corp: 1/1b'
echo '#9  NEW    cov: 21 ft: 30 corp: 2/3b'
echo 'stat::number_of_executed_units: 12345'
echo 'stat::average_exec_per_sec:     678'
"""
# Leaves a finding where it is told to.
FINDS = CALM + """for argument; do
    case "$argument" in
        -artifact_prefix=*) echo bad >"${argument#*=}crash-1";;
    esac
done
exit 77
"""
BROKEN = "#!/bin/sh\necho 'cannot open shared object'\nexit 127\n"


def run(fuzzers, *arguments):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "programs").mkdir()
        for fuzzer, text in fuzzers.items():
            program = folder / "programs" / f"{fuzzer}_fuzz"
            program.write_text(text)
            program.chmod(0o755)
        done = subprocess.run([sys.executable, DRIVER, folder / "programs", "--corpus", folder / "corpus", *arguments],
                              capture_output=True, text=True, check=False)
        calls = {path.name.split("_")[0]: path.read_text() for path in (folder / "programs").glob("*.called")}
        return done.returncode, done.stdout + done.stderr, calls


def rows(text):
    lines = text.splitlines()
    start = next(k for k, line in enumerate(lines) if line.startswith("target "))
    return {line.split()[0]: line.split()[1:] for line in lines[start + 1:]}


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: {found!r}, expected {expected!r}")


def main():
    status, text, calls = run({"Calm": CALM, "MapInfo": CALM}, "--seconds", "7")
    expect("nothing found", status, 0)
    expect("the table", rows(text), {name: ["12,345", "678", "21", "0"] for name in ("Calm", "MapInfo")})
    expect("the time is handed on", "-max_total_time=7 " in calls["Calm"], True)
    expect("a dictionary where there is one", ["-dict=" in calls[name] for name in ("Calm", "MapInfo")], [False, True])
    expect("seeds where there are some", ["seeds/" in calls[name] for name in ("Calm", "MapInfo")], [False, True])

    status, text, calls = run({"Calm": CALM, "Finds": FINDS, "Last": CALM})
    expect("something found", status, 1)
    expect("the table", rows(text)["Finds"], ["12,345", "678", "21", "1"])
    expect("the finding is named", "Finds-findings/crash-1" in text, True)
    expect("the others run all the same", sorted(calls), ["Calm", "Finds", "Last"])

    status, text, _ = run({"Broken": BROKEN})
    expect("a fuzzer that does not run", (status, rows(text)["Broken"][-1]), (1, "FAILED"))
    expect("what it said", "cannot open shared object" in text, True)

    status, _, calls = run({"Calm": CALM, "Last": CALM}, "--only", "Last")
    expect("one of them", (status, sorted(calls)), (0, ["Last"]))
    expect("none of that name", run({"Calm": CALM}, "--only", "Other")[0], 1)
    expect("no fuzzer at all", run({})[0], 1)


if __name__ == "__main__":
    main()
