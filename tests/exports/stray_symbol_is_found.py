#!/usr/bin/env python3
"""Proves that check_exports.py can fail: builds one small library, and reads it with lists that fit, that miss a
class, a private record and a function, and that promise too much.

    stray_symbol_is_found.py --compiler CXX
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

CHECK = Path(__file__).with_name("check_exports.py")

SOURCE = """
#include <map>
#include <string>
#define API __attribute__((visibility("default")))
class API Shown {
public:
    struct Part {
        bool operator<(Part const&) const;
        Part* operator->();
        std::string name;
    };
    struct Record;
    virtual ~Shown();
    operator bool() const;
    void Fill(std::map<int, std::string>& texts);
};
struct Shown::Record {
    virtual ~Record();
};
Shown::~Shown() = default;
Shown::Record::~Record() = default;
Shown::operator bool() const { return true; }
void Shown::Fill(std::map<int, std::string>& texts) { texts[1] += "one"; }
bool Shown::Part::operator<(Part const&) const { return false; }
Shown::Part* Shown::Part::operator->() { return this; }
class Hidden {
public:
    void Work();
};
void Hidden::Work() {}
template <typename T> class API Tree {
public:
    struct Node {
        T operator()(T value);
    };
};
template <typename T> T Tree<T>::Node::operator()(T value) { return value; }
template class Tree<Shown*>;
namespace om_detail {
API int Stray(Shown const&) { return 1; }
}
API std::string Free() { return {}; }
API bool operator<(Hidden const&, Shown const&) { return true; }
"""

FITTING = ["Shown", "Shown::Part  # a nested class", "Shown::Record", "Tree::Node", "om_detail::Stray", "", "Free", "operator<"]

# (name, the list, a part of the expected report; None: nothing wrong)
CASES = [
    ("a list that fits", FITTING, None),
    ("an unlisted class", [line for line in FITTING if not line.startswith("Shown::Part")], "Shown::Part::operator<"),
    ("an unlisted record", [line for line in FITTING if line != "Shown::Record"], "vtable for Shown::Record"),
    ("an unlisted template", [line for line in FITTING if line != "Tree::Node"], "Tree<Shown*>::Node::operator()"),
    ("an unlisted detail", [line for line in FITTING if line != "om_detail::Stray"], "om_detail::Stray"),
    ("an unlisted function", [line for line in FITTING if line != "Free"], "not listed: Free"),
    ("an unlisted operator", [line for line in FITTING if line != "operator<"], "not listed: operator<"),
    ("a hidden class", FITTING + ["Hidden"], "nothing of it is exported: Hidden"),
]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compiler", required=True)
    arguments = parser.parse_args()

    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        source, library, names = Path(folder, "a.cpp"), Path(folder, "liba.so"), Path(folder, "a.symbols")
        source.write_text(SOURCE, encoding="utf-8")
        subprocess.run([arguments.compiler, "-std=c++17", "-fPIC", "-shared", "-fvisibility=hidden",
                        "-fvisibility-inlines-hidden", str(source), "-o", str(library)], check=True)
        for name, lines, expected in CASES:
            names.write_text("\n".join(lines) + "\n", encoding="utf-8")
            run = subprocess.run([sys.executable, str(CHECK), str(names), str(library)], capture_output=True,
                                 text=True, check=False)
            held = run.returncode == 0 if expected is None else run.returncode == 1 and expected in run.stdout
            print(f"{'ok' if held else 'FAILED'}: {name}")
            if not held:
                failures += 1
                print(run.stdout + run.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
