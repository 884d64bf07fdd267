#!/usr/bin/env python3
"""A library exports what its list names, all of it and nothing else.

    check_exports.py LIST LIBRARY

LIST holds one scope a line: a class, whose own members, type information and static data may leave the library, or a
free function. A nested class is a scope of its own. Blank lines and lines from # on are skipped. Besides the listed
scopes only weak instantiations of standard library templates are let through; every shared library has those.

Prints each symbol that is not listed and each listed scope without a symbol, and ends with status 1 if there was one.
"""

import re
import subprocess
import sys
from pathlib import Path

WEAK = frozenset("WwVvu")
STANDARD_SCOPES = ("std", "__gnu_cxx", "__cxxabiv1")
INSTRUMENTATION = re.compile(r"^(__odr_asan|__asan|__ubsan|__sanitizer|__gcov|__llvm)")
SPECIAL = re.compile(
    r"^(?:typeinfo name for|typeinfo for|vtable for|VTT for|construction vtable for) (?P<entity>.*)$")
THUNK = re.compile(r"^(?:(?:non-)?virtual thunk|covariant return thunk|guard variable for|reference temporary .* for"
                   r"|TLS (?:init|wrapper) function for)(?: to)? (?P<entity>.*)$")
ABI_TAG = re.compile(r"\[abi:\w+\]")
# A name's own operator counts as one piece, so that its angles are not taken for brackets.
PIECE = re.compile(r"operator(?:\(\)|<=>|->\*?|<<=?|>>=?|<=?|>=?)|.", re.DOTALL)


def without_template_arguments(name):
    """The name with every <...> and every tag of the ABI taken out."""
    depth, kept = 0, []
    for piece in PIECE.findall(ABI_TAG.sub("", name)):
        if piece == "<":
            depth += 1
        elif piece == ">":
            depth -= 1
        elif depth == 0:
            kept.append(piece)
    return "".join(kept)


def scope_of(name):
    """(the class or free function that a demangled symbol belongs to, the outermost name of it)"""
    special = SPECIAL.match(name)
    if special:
        parts = without_template_arguments(special["entity"]).split("::")
        return "::".join(parts), parts[0]
    thunk = THUNK.match(name)
    parts = without_template_arguments(thunk["entity"] if thunk else name).split("::")
    return "::".join(parts[:-1]) or parts[0], parts[0]


def exported(library):
    """(symbol type, demangled name without parameters) of every symbol that the library defines for others."""
    listing = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    symbols = [line.split()[1:3] for line in listing.splitlines() if len(line.split()) >= 3]
    names = subprocess.run(["c++filt", "-p"], input="\n".join(name for _, name in symbols), capture_output=True,
                           text=True, check=True).stdout.splitlines()
    return [(kind, name) for (kind, _), name in zip(symbols, names)]


def listed(file):
    lines = (line.split("#")[0].strip() for line in Path(file).read_text(encoding="utf-8").splitlines())
    return {line for line in lines if line}


def main():
    allowed, unused = listed(sys.argv[1]), listed(sys.argv[1])
    symbols = exported(sys.argv[2])
    problems = []
    for kind, name in symbols:
        scope, outermost = scope_of(name)
        if scope in allowed:
            unused.discard(scope)
        elif name in allowed:
            unused.discard(name)
        elif not (kind in WEAK and outermost in STANDARD_SCOPES) and not INSTRUMENTATION.match(name):
            problems.append(f"exported, but its scope {scope} is not listed: {name}")
    problems += [f"listed, but nothing of it is exported: {scope}" for scope in sorted(unused)]
    for problem in sorted(set(problems)):
        print(problem)
    print(f"{len(symbols)} symbols read, {len(set(problems))} problems")
    return 1 if problems or not symbols else 0


if __name__ == "__main__":
    sys.exit(main())
