#!/usr/bin/env python3
"""A small mutation run: changes one line of a room at a time and expects its tests to fail.

  scripts/mutate.sh ROOM [--sample N] [--seconds S] [--seed K] [--tests REGEX] [--lines FILE[:N[-M]]]
                    [--again LOG]

ROOM is a folder of src/, such as "startup" or "companion/rar". Everything happens in a copy of the
checkout under build/mutate, uncommitted changes included; samples from outside are not in reach of
it. The tests of the room run (those of tests/<first folder of the room>, and of TESTED_WITH) on a
file system of which only that copy and an empty /tmp can be written, so that a mutant which removes
the wrong thing removes nothing of the user's.

Survivors are listed with the line and the change. A test that takes too long counts as failed; a
mutant that does not compile, or compiles to the same program, is left out. Lines that write to the
run's log are not changed.
"""

import argparse
import fcntl
import hashlib
import json
import os
import random
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COPY = ROOT / "build" / "mutate" / "tree"
BUILD = ROOT / "build" / "mutate" / "build"
# Folders whose tests reach the room as well.
TESTED_WITH = {"companion": ["packages"], "engine": ["rollback", "whole"], "database": ["engine"]}
# They take a minute or more, or judge the text of the sources.
LEFT_OUT = re.compile("^(fuzz_|seam|crash_matrix)")

SWAPS = [(re.compile(r"(?<= )(<=|>=|==|!=|<|>)(?= )"),
          {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}),
         (re.compile(r"(?<= )(&&|\|\|)(?= )"), {"&&": "||", "||": "&&"}),
         (re.compile(r"(?<= )(\+=|-=|\+|-)(?= )"), {"+": "-", "-": "+", "+=": "-=", "-=": "+="}),
         (re.compile(r"(?<![+\w])(\+\+)|(?<!-)(--)(?=\w)"), {"++": "--", "--": "++"}),
         (re.compile(r"\b(true|false)\b"), {"true": "false", "false": "true"})]
NUMBER = re.compile(r"(?<![\w.])(0x[0-9A-Fa-f]+|\d+)(?=[uUlL]*(?![\w.'~]))")
CONDITION = re.compile(r"\b(if|while) \(")
STATEMENT = re.compile(r"^\s*(?!return\b|delete\b|using\b|static_assert|EXPECT)"
                       r"(throw .*|break|continue|[\w:.>\[\]()*&-]+\(.*\)"
                       r"|[\w:.>\[\]-]+ ([-+|&^*]|<<|>>)?= .*);$")
LITERAL = re.compile(r'R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\d)\'(?:\\.|[^\'\\\n])+\''
                     r"|//[^\n]*|/\*(?:.|\n)*?\*/")


def masked(text):
    """The text with comments blank and literals as '~', every character at its place."""
    def cover(match):
        sign = " " if match[0].startswith("/") else "~"
        return re.sub(r"[^\n]", sign, match[0])
    return LITERAL.sub(cover, text)


def balanced_end(code, opening):
    depth = 0
    for i in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[i], 0)
        if depth == 0:
            return i
    return None


def changes_of(line, code, before, after):
    """All changed forms of a line; code: the line masked, before and after: its neighbours."""
    if not code.strip() or code.lstrip().startswith(("#", "LogEvent(")) or "static_assert" in code:
        return
    if "= delete" in code or "= default" in code or re.search(r"\)( const)?( noexcept)? = 0;", code):
        return
    for pattern, other in SWAPS:
        for match in pattern.finditer(code):
            if "~" in code and match[0] in ("+", "-"):
                continue  # texts are only ever joined
            yield line[:match.start()] + other[match[0]] + line[match.end():]
    for match in NUMBER.finditer(code):
        base = 16 if match[1].startswith("0x") else 8 if match[1][0] == "0" < match[1] else 10
        number = {16: "0x{:X}", 8: "0{:o}", 10: "{}"}[base].format(int(match[1], base) + 1)
        yield line[:match.start(1)] + number + line[match.end(1):]
    for match in CONDITION.finditer(code):
        opening = match.end() - 1
        closing = balanced_end(code, opening)
        if closing and ";" not in code[opening:closing]:
            yield line[:opening] + "(!" + line[opening:closing + 1] + ")" + line[closing + 1:]
    if code.strip() == "break;" and re.match(r"case\b|default:", after):
        return  # the compiler refuses that
    if STATEMENT.match(code) and (not before or before[-1] in ";{}:)" or before.endswith("else")):
        yield line[:len(line) - len(line.lstrip())] + ";"


def mutants_of(path, chosen):
    """One list per line that can be changed: (path, number of the line, changed line)."""
    lines = path.read_text().split("\n")
    code_lines = masked(path.read_text()).split("\n")
    before = ""
    for number, (line, code) in enumerate(zip(lines, code_lines)):
        if chosen(path, number + 1):
            after = next((each.strip() for each in code_lines[number + 1:] if each.strip()), "")
            changed = [(path, number, each) for each in changes_of(line, code, before, after)]
            if changed:
                yield changed
        before = code.strip() or before


def same(one, other):
    return other.is_file() and one.read_bytes() == other.read_bytes()


def make_copy():
    names = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=ROOT,
                           check=True, capture_output=True, text=True).stdout.split("\0")
    wanted = {COPY / name: ROOT / name for name in names if name and (ROOT / name).is_file()}
    for target, source in wanted.items():
        if not same(source, target):
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(source.read_bytes())
            target.chmod(source.stat().st_mode)
    for path in COPY.rglob("*"):
        if path.is_file() and path not in wanted:
            path.unlink()


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", stdin=subprocess.DEVNULL, **options)


def must(command, **options):
    result = run(command, **options)
    if result.returncode != 0:
        sys.exit(f"mutate: failed: {' '.join(map(str, command))}\n{result.stdout[-4000:]}")
    return result.stdout


def build_environment(keeps):
    # Only the sources as they are go into the compiler's cache.
    environment = dict(os.environ, CCACHE_BASEDIR=str(COPY), CCACHE_NOHASHDIR="1")
    return environment if keeps else dict(environment, CCACHE_READONLY="1")


def tests_of(room, extra):
    """Name and program of every test, in the order of ctest."""
    listed = json.loads(must(["ctest", "--test-dir", BUILD, "--show-only=json-v1"]))["tests"]
    top = room.split("/")[0]
    folders = [str(BUILD / "tests" / each) for each in [top] + TESTED_WITH.get(top, [])]
    tests = []
    for test in listed:
        properties = {each["name"]: each["value"] for each in test.get("properties", [])}
        folder = properties.get("WORKING_DIRECTORY", "")
        is_ours = any(folder == each or folder.startswith(each + "/") for each in folders)
        if extra:
            is_ours = bool(re.search(extra, test["name"]))
        if is_ours and not LEFT_OUT.match(test["name"]):
            # A program that is not built yet has no command; it is named as its test.
            programs = [p for p in test.get("command", [test["name"]])
                        if p.startswith(str(BUILD)) or p == test["name"]]
            tests.append((test["name"], [Path(p).name for p in programs]))
    return tests


# Whatever a mutant does to files or leaves running ends with this namespace.
FENCE = f"""mount -o bind {BUILD} {BUILD} && mount -o remount,bind,ro / && mount -t tmpfs tmp /tmp &&
mount -t tmpfs shm /dev/shm && ulimit -c 0 &&
ulimit -v 33554432 && exec "$@" """


def passes(test, limit):
    as_root = [] if os.geteuid() == 0 else ["--map-root-user"]
    try:
        result = run(["unshare", *as_root, "--mount", "--pid", "--fork", "--kill-child",
                      "--mount-proc", "sh", "-c", FENCE, "sh", "ctest", "--test-dir", BUILD,
                      "-R", f"^{test}$", "--no-tests=error", "--output-on-failure"],
                     env=dict(os.environ, GTEST_FAIL_FAST="1", LC_ALL="C.UTF-8"), timeout=limit)
    except subprocess.TimeoutExpired:
        return False, True, ""
    return result.returncode == 0, False, result.stdout


def fingerprint(programs):
    digest = hashlib.sha256()
    for path in sorted([*BUILD.glob("tests/*"), *BUILD.glob("bin/*")]):
        if path.name in programs or path.suffix == ".so" or path.parent.name == "bin":
            digest.update(path.read_bytes())
    return digest.digest()


class Judge:
    def __init__(self, room, extra):
        self.limits = {}
        self.targets = {}
        self.killers = {}  # by source file: the test that last killed a mutant of it
        build_tests = tests_of(room, extra)
        if not build_tests:
            sys.exit("mutate: no tests of " + room)
        everything = sorted({p for _, programs in build_tests for p in programs if "." not in p})
        if not self.build(everything, keeps=True):
            sys.exit("mutate: does not build\n" + self.output[-4000:])
        for name, programs in build_tests:
            started = time.monotonic()
            passed, _, output = passes(name, 600)
            if not passed:
                sys.exit(f"mutate: {name} fails without any change\n{output[-4000:]}")
            self.limits[name] = time.monotonic() - started
            # A script needs whatever the programs need.
            self.targets[name] = [p for p in programs if p in everything] or everything
        self.sound = {name: fingerprint(targets) for name, targets in self.targets.items()}

    def build(self, targets, keeps=False):
        result = run(["cmake", "--build", BUILD, "-j", "2", "-t", *targets],
                     env=build_environment(keeps))
        self.output = result.stdout
        return result.returncode == 0

    def verdict(self, path):
        """Builds and runs one test after the other, the likeliest killer first."""
        for name in sorted(self.limits, key=lambda each: (
                each != self.killers.get(path), len(self.targets[each]), self.limits[each])):
            if not self.build(self.targets[name]):
                return "not built", ""
            if fingerprint(self.targets[name]) == self.sound[name]:
                continue
            passed, timed_out, output = passes(name, int(10 + 4 * self.limits[name]))
            if not passed:
                self.killers[path] = name
                failed = re.search(r"\[  FAILED  \] (\S+)", output)
                return "timed out" if timed_out else "killed", failed[1] if failed else name
        is_same = all(fingerprint(self.targets[name]) == self.sound[name] for name in self.sound)
        return ("the same program" if is_same else "survived"), ""


def parse():
    parser = argparse.ArgumentParser(prog="scripts/mutate.sh")
    parser.add_argument("room")
    parser.add_argument("--sample", type=int, default=60, help="how many lines are changed (60)")
    parser.add_argument("--seconds", type=int, default=1200, help="when to stop (1200)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--tests", default="", help="these tests instead of the room's own")
    parser.add_argument("--lines", default="", help="only these, as FILE[:N[-M]] of the room")
    parser.add_argument("--again", help="only the survivors that this run's output lists")
    parser.add_argument("--verbose", action="store_true", help="show every mutant's end")
    return parser.parse_args()


def line_filter(lines):
    name, _, numbers = lines.partition(":")
    first, _, last = numbers.partition("-")
    def chosen(path, number):
        if name and not str(path).endswith("/" + name):
            return False
        return not first or int(first) <= number <= int(last or first)
    return chosen


def form_of(mutant, original):
    path, _, changed = mutant
    return str(path.relative_to(COPY)), original.strip(), changed.strip()


def survivors_in(log):
    pattern = r"^survived.*\n  (\S+):\d+\n  - (.*)\n  \+ (.*)$"
    return set(re.findall(pattern, Path(log).read_text(), re.MULTILINE))


def main():
    options = parse()
    started = time.monotonic()
    COPY.mkdir(parents=True, exist_ok=True)
    lock = open(COPY.parent / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        sys.exit("mutate: another run works in build/mutate")
    make_copy()
    linker = "-fuse-ld=lld" if shutil.which("ld.lld") else ""  # links in a fraction of the time
    must(["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=",
          "-DCMAKE_CXX_FLAGS=-O1 -w", f"-DCMAKE_EXE_LINKER_FLAGS={linker}",
          f"-DCMAKE_SHARED_LINKER_FLAGS={linker}"])
    room = COPY / "src" / options.room
    if not room.is_dir():
        sys.exit("mutate: no room " + options.room)
    files = sorted(p for p in room.rglob("*") if p.suffix in (".cpp", ".h") and
                   "windows" not in p.relative_to(room).parts)
    chosen = line_filter(options.lines)
    lines = [line for path in files for line in mutants_of(path, chosen)]
    draw = random.Random(options.seed)
    draw.shuffle(lines)
    sample = [draw.choice(line) for line in lines[:options.sample]]
    if options.lines:  # every change, not one of each line
        sample = [mutant for line in lines for mutant in line]
    if options.again:
        listed = survivors_in(options.again)
        sample = [mutant for line in lines for mutant in line
                  if form_of(mutant, mutant[0].read_text().split("\n")[mutant[1]]) in listed]
    judge = Judge(options.room, options.tests)
    print(f"{options.room}: {len(lines)} lines can be changed; tests: {', '.join(judge.limits)}",
          flush=True)
    counts = {}
    for path, number, changed in sample:
        if time.monotonic() - started > options.seconds:
            print(f"stopped after {options.seconds} s")
            break
        text = path.read_text()
        rows = text.split("\n")
        original, rows[number] = rows[number], changed
        try:
            path.write_text("\n".join(rows))
            verdict, by = judge.verdict(path)
        finally:
            path.write_text(text)
        counts[verdict] = counts.get(verdict, 0) + 1
        if verdict == "survived" or options.verbose:
            print(f"{verdict} {by}\n  {path.relative_to(COPY)}:{number + 1}\n"
                  f"  - {original.strip()}\n  + {changed.strip()}", flush=True)
    tried = sum(counts.get(each, 0) for each in ("killed", "timed out", "survived"))
    print(f"{options.room}: {tried} mutants tried, " +
          ", ".join(f"{counts.get(each, 0)} {each}" for each in
                    ("killed", "timed out", "survived", "not built", "the same program")) +
          f"; {time.monotonic() - started:.0f} s")


main()
