#!/usr/bin/env python3
"""Breaks the library in one small place at a time and sees whether a test notices.

    mutation.py [--sample N] [--seed S] [--files PATTERN...] [--out FILE] [--limit SECONDS] [--jobs N] [--list]

Works on a copy of the tree below build/mutation, so that nothing here changes. A mutant is one change to a token of a
library source or header: another relation, another arithmetic or logical operator, a number off by one, a condition
negated, a statement left out, a null returned, min for max, two arguments swapped. N of them are drawn with seed S, the
same ones for the same tree. Each is compiled (one that does not compile counts for nothing), and test programs are run,
the nearest to the changed file first, until one fails, crashes or does not end. The table says how many of the compiled
ones were noticed; FILE gets a line for each mutant. Mutants that tools/mutation-equivalents.tsv lists, with the reason
why nothing can tell them from the code, are counted apart. Ends with status 1 when under 95 % of the others are noticed.
"""

import argparse
import fnmatch
import os
import random
import re
import resource
import shutil
import subprocess
import sys
import time
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
EQUIVALENTS = ROOT / "tools" / "mutation-equivalents.tsv"
FOLDERS = ("platform/", "omcell/", "backend/")
LEAST_NOTICED = 0.95
MOST_MEMORY = 8 << 30  # what a mutant that allocates without end may take

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<string>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*(?:\\\n[^\n]*)*)
  | (?P<number>\b(?:0[xX][0-9a-fA-F']+|\d[\d']*)(?:\.\d+)?[uUlLfzZ]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator><<=|>>=|<=>|->\*|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||\+=|-=|\*=|/=|%=|&=|\|=|\^=|[-+*/%<>=!&|^~?:;,.(){}\[\]])
""", re.VERBOSE | re.MULTILINE | re.DOTALL)

RELATIONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "+=": "-=", "-=": "+=", "|": "&", "&": "|", "^": "|",
              "<<": ">>", ">>": "<<", "++": "--", "--": "++"}
LOGIC = {"&&": "||", "||": "&&"}
NAMES = {"true": "false", "false": "true", "min": "max", "max": "min"}


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    kind: str
    start: int
    end: int
    put: str
    text: str  # the code that goes, as it stands

    def row(self):
        return (f"{self.file}:{self.line}", self.kind, " ".join(self.text.split()), " ".join(self.put.split()) or "(removed)")


def tokens_of(text):
    return [match for match in TOKEN.finditer(text) if match.lastgroup not in ("comment", "directive")]


def matching(tokens, at):
    """The token that closes the bracket at `at`."""
    pairs = {"(": ")", "{": "}", "[": "]"}
    opening, closing = tokens[at][0], pairs[tokens[at][0]]
    depth = 0
    for k in range(at, len(tokens)):
        if tokens[k][0] == opening:
            depth += 1
        elif tokens[k][0] == closing:
            depth -= 1
            if depth == 0:
                return k
    return None


def is_spaced(text, token):
    return text[token.start() - 1:token.start()].isspace() and text[token.end():token.end() + 1].isspace()


def statement_at(text, tokens, at):
    """The expression statement that begins at token `at`, or None: something called, assigned or counted."""
    depth, calls = 0, False
    for k in range(at, len(tokens)):
        word = tokens[k][0]
        if word in "([{":
            depth += 1
            calls = True
            if word == "{":
                return None
        elif word in ")]}":
            depth -= 1
            if depth < 0:
                return None
        elif word in ("=", "+=", "-=", "|=", "&=", "++", "--"):
            calls = True
        elif word == ";" and depth == 0:
            return (tokens[at].start(), tokens[k].end()) if calls else None
    return None


NO_STATEMENT = {"return", "if", "for", "while", "do", "else", "switch", "case", "using", "namespace", "class", "struct", "enum",
                "template", "typedef", "static_assert", "friend", "public", "private", "protected", "default", "break",
                "continue", "throw", "delete", "const", "auto", "static", "constexpr", "explicit", "virtual", "inline",
                "extern", "union", "try", "catch", "operator", "unsigned", "int", "void", "bool", "char", "double", "short",
                "long", "std"}


def mutants_of(file, text):
    tokens = tokens_of(text)
    found = []

    def add(kind, start, end, put):
        line = text.count("\n", 0, start) + 1
        found.append(Mutant(file, line, kind, start, end, put, text[start:end]))

    body = 0  # depth of braces that are function bodies, roughly: everything within a brace after a ')'
    stack = []
    for k, token in enumerate(tokens):
        word, before, after = token[0], tokens[k - 1][0] if k else "", tokens[k + 1][0] if k + 1 < len(tokens) else ""
        if word == "{":
            is_body = before in (")", "const", "noexcept", "else", "do", "try", "override") or body > 0
            stack.append(is_body)
            body += is_body
        elif word == "}" and stack:
            body -= stack.pop()
        if body == 0:
            continue
        if token.lastgroup == "operator" and is_spaced(text, token):
            if word in RELATIONS and before != "operator":
                add("relation", token.start(), token.end(), RELATIONS[word])
            elif word in ARITHMETIC and before not in ("return", "(", ",", "=", "const"):
                add("arithmetic", token.start(), token.end(), ARITHMETIC[word])
            elif word in LOGIC:
                add("logic", token.start(), token.end(), LOGIC[word])
        elif word in ("++", "--"):
            add("arithmetic", token.start(), token.end(), ARITHMETIC[word])
        elif token.lastgroup == "number" and not (before == "[" and after == "]"):
            digits = re.match(r"0[xX][0-9a-fA-F']+|\d[\d']*", word)[0]
            value = int(digits.replace("'", ""), 0 if digits[:2].lower() == "0x" else 10)
            put = "1" if value == 0 else ("0" if value == 1 else str(value + 1))
            add("constant", token.start(), token.end(), put + word[len(digits):])
        elif word in NAMES and (word in ("true", "false") or after in ("(", "<")) and before != ".":
            add("min-max" if word in ("min", "max") else "constant", token.start(), token.end(), NAMES[word])
        elif word in ("if", "while") and after == "(":
            close = matching(tokens, k + 1)
            if close is not None:
                inner = text[tokens[k + 1].end():tokens[close].start()]
                if ";" not in inner and "constexpr" not in inner:
                    add("negation", tokens[k + 1].end(), tokens[close].start(), f"!({inner})")
        elif word == "return" and after not in (";", "{", "*"):
            for last in range(k, len(tokens)):
                if tokens[last][0] in (";", "{"):
                    if tokens[last][0] == ";":
                        add("return", tokens[k + 1].start(), tokens[last].start(), "{}")
                    break
        elif before in ("{", "}", ";", ")") and (token.lastgroup == "name" or word in ("*", "++", "--", "::")) \
                and word not in NO_STATEMENT and after not in (":",):
            if before == ")" and not re.search(r"\b(if|for|while)\b[^\n]*$", text[:tokens[k - 1].end()].rsplit("\n", 1)[-1]):
                continue
            at = statement_at(text, tokens, k)
            if at is not None and not re.match(r"[\w:<>,\s*&]+\s[*&]*\w+\s*(=|\{|\()", text[at[0]:at[1]]):
                add("statement", at[0], at[1], ";")
        if word == "(" and tokens[k - 1].lastgroup == "name" and tokens[k - 1][0] not in ("if", "for", "while", "switch", "catch"):
            close = matching(tokens, k)
            inner = text[token.end():tokens[close].start()] if close is not None else ""
            parts = inner.split(",")
            if len(parts) == 2 and not re.search(r"[(){}<>;]", inner) and all(re.fullmatch(r"[\w.\->*&\[\]\s]+", p) for p in parts):
                if parts[0].strip() != parts[1].strip() and not re.search(r"\w\s+[*&]*\w", inner):
                    add("arguments", token.end(), tokens[close].start(), f"{parts[1].strip()}, {parts[0].strip()}")
    return found


def bound_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, limit, env=None):
    """Exit status, or None when it did not end in time."""
    try:
        return subprocess.run(command, cwd=WORK / "tree", stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=limit, env=env, check=False,
                              preexec_fn=bound_memory).returncode
    except subprocess.TimeoutExpired:
        return None


class Tests:
    """The test programs of the copy, with how long each takes when nothing is broken."""

    def __init__(self, jobs):
        self.build = WORK / "build"
        self.jobs = str(jobs)
        self.seconds = {}
        self.tainted = set()  # programs that were compiled with a changed header

    def configure(self):
        subprocess.run(["cmake", "-S", str(WORK / "tree"), "-B", str(self.build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                        "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -g0", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"], check=True,
                       stdout=subprocess.DEVNULL)

    def ninja(self, *targets, limit=900):
        return run(["ninja", "-C", str(self.build), "-j", self.jobs, *targets], limit)

    def measure(self):
        programs = sorted(p for p in (self.build / "tests").rglob("*")
                          if p.is_file() and os.access(p, os.X_OK) and (p.name.endswith("_test") or p.name.startswith("forms_")))
        for program in programs:
            begin = time.monotonic()
            if self.run_one(program, 300) != 0:
                sys.exit(f"mutation.py: {program.name} fails with nothing broken")
            self.seconds[program] = time.monotonic() - begin

    def run_one(self, program, limit):
        return run([str(program), "--gtest_fail_fast", "--gtest_brief=1"], limit, {**os.environ, "TERM": "dumb"})

    def in_order(self, file):
        """Test programs, the ones whose names share most with the changed file first, the quick ones before the slow."""
        stem = Path(file).stem.removesuffix("Data")
        words = set(re.findall(r"[A-Z][a-z]+|[a-z]+", stem)) - {"Om"}

        def distance(program):
            name = program.name
            shared = len(words & set(re.findall(r"[A-Z][a-z]+|[a-z]+", name)))
            return (stem not in name, -shared if self.seconds[program] < 5 else 0, self.seconds[program])

        return sorted(self.seconds, key=distance)


def judge(tests, mutant, text):
    """What became of a mutant: 'does not compile', 'survived', or the program that noticed."""
    path = WORK / "tree" / mutant.file
    path.write_text(text[:mutant.start] + mutant.put + text[mutant.end:])
    try:
        is_header = mutant.file.endswith(".h")
        if tests.ninja("omtree", "omcell", "platdep", "QUORIOCV") != 0:
            return "does not compile"
        for program in tests.in_order(mutant.file):
            # Other programs link the libraries as they are found; these have code of theirs inside.
            if is_header or program in tests.tainted or program.name.startswith("forms_"):
                if tests.ninja(program.name) != 0:
                    return "does not compile"
                (tests.tainted.add if is_header else tests.tainted.discard)(program)
            if tests.run_one(program, 20 + 10 * tests.seconds[program]) != 0:
                return program.name
        return "survived"
    finally:
        path.write_text(text)


def lay_out(tracked):
    """The copy, with the times of what has not changed left alone."""
    for file in filter(None, tracked):
        source, target = ROOT / file, WORK / "tree" / file
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


def equivalents():
    """Reasons, by file, line's code and change."""
    reasons = {}
    if EQUIVALENTS.exists():
        for line in EQUIVALENTS.read_text().splitlines():
            if line and not line.startswith("#"):
                file, was, now, reason = line.split("\t")
                reasons[(file, was, now)] = reason
    return reasons


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int, default=240)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--files", nargs="*", default=["*"])
    parser.add_argument("--out", type=Path, default=WORK / "mutants.tsv")
    parser.add_argument("--limit", type=float, default=float("inf"), help="seconds after which no further mutant is begun")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="print the sample and stop")
    arguments = parser.parse_args()

    tracked = subprocess.run(["git", "-C", str(ROOT), "ls-files"], check=True, capture_output=True, text=True).stdout.split("\n")
    sources = [f for f in tracked if f.startswith(FOLDERS) and f.endswith((".h", ".cpp"))
               and any(fnmatch.fnmatch(f, pattern) for pattern in arguments.files)]
    texts = {file: (ROOT / file).read_text() for file in sources}
    everything = [mutant for file in sources for mutant in mutants_of(file, texts[file])]
    sample = random.Random(arguments.seed).sample(everything, min(arguments.sample, len(everything)))
    if arguments.list:
        for mutant in sample:
            print("\t".join(mutant.row()))
        return 0

    WORK.mkdir(parents=True, exist_ok=True)
    lay_out(tracked)
    tests = Tests(arguments.jobs)
    tests.configure()
    if tests.ninja(limit=3600) != 0:
        sys.exit("mutation.py: the copy does not build")
    tests.measure()

    reasons, counts, survivors = equivalents(), Counter(), []
    begin = time.monotonic()
    with arguments.out.open("w") as out:
        for number, mutant in enumerate(sample, 1):
            if time.monotonic() - begin > arguments.limit:
                print(f"stopped after {number - 1} of {len(sample)}: out of time")
                break
            verdict = judge(tests, mutant, texts[mutant.file])
            place, kind, was, now = mutant.row()
            if verdict == "survived" and (mutant.file, was, now) in reasons:
                verdict = "equivalent"
            counts["noticed" if verdict not in ("survived", "equivalent", "does not compile") else verdict] += 1
            print(f"{number}\t{place}\t{kind}\t{was}\t{now}\t{verdict}", file=out, flush=True)
            if verdict == "survived":
                survivors.append((place, kind, was, now))
                print(f"survived: {place}  {kind}  {was}  ->  {now}", flush=True)

    told = counts["noticed"] + counts["survived"]
    print(f"\n| mutants | does not compile | equivalent | noticed | survived | noticed of what can be told |\n|---:|---:|---:|---:|---:|---:|")
    share = counts["noticed"] / told if told else 0.0
    print(f"| {sum(counts.values())} | {counts['does not compile']} | {counts['equivalent']} | {counts['noticed']} | "
          f"{counts['survived']} | {share:.1%} |")
    return 0 if told and share >= LEAST_NOTICED else 1


if __name__ == "__main__":
    sys.exit(main())
