#!/usr/bin/env python3
"""coverage.py LLVM-COV PROFILE PROGRAM...: which share of the lines and branches of src/ the programs reached, file by file from the
least, and what of it is left out: bodies of constexpr functions that none called at run time, since the compiler ran them. A
branch is one of the two ways of a condition. Ends with 1 below the shares that the project asks for."""

import collections
import json
import pathlib
import re
import subprocess
import sys

LEAST = {"lines": 96.0, "branches": 91.0}
SOURCES = pathlib.Path(__file__).resolve().parents[1] / "src"


def export(*options):
    llvm_cov, profile, program, *others = sys.argv[1:]
    objects = [word for other in others for word in ("-object", other)]
    command = [llvm_cov, "export", program, *objects, f"-instr-profile={profile}", *options]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def source(name):
    return pathlib.Path(name).resolve()


def compiled_away(functions):
    """The lines of each file that stand in constexpr functions without a call."""
    calls = collections.Counter()
    for function in functions:
        first, _, last, *_ = function["regions"][0]
        calls[source(function["filenames"][0]), first, last] += function["count"]
    lines = collections.defaultdict(set)
    for (path, first, last), count in calls.items():
        if count == 0 and SOURCES in path.parents:
            head = "".join(path.read_text().splitlines(True)[max(0, first - 3):first])
            if re.search(r"\b(constexpr|consteval)\b[^;{}]*\{[^{}]*$", head):
                lines[path].update(range(first, last + 1))
    return lines


def branches(functions):
    """How often each way of each condition was taken, over all copies of a template."""
    ways = collections.Counter()
    for function in functions:
        for *place, taken, not_taken, file, _, _ in function["branches"]:
            where = (source(function["filenames"][file]), *place)
            ways[where + (True,)] += taken
            ways[where + (False,)] += not_taken
    return [(path, line, count) for (path, line, *_), count in ways.items()]


def lines(records):
    path = None
    for key, _, value in (record.partition(":") for record in records.splitlines()):
        if key == "SF":
            path = source(value)
        elif key == "DA":
            line, count = value.split(",")
            yield path, int(line), int(count)


def main():
    functions = json.loads(export())["data"][0]["functions"]
    left_out = compiled_away(functions)
    missed = collections.defaultdict(collections.Counter)
    shares = {}
    for kind, places in ("lines", lines(export("-format=lcov"))), ("branches", branches(functions)):
        counts = [(path, count) for path, line, count in places if SOURCES in path.parents and line not in left_out[path]]
        missed[kind].update(path for path, count in counts if count == 0)
        shares[kind] = 100 - 100 * missed[kind].total() / len(counts)
    for path, count in reversed(missed["branches"].most_common()):
        print(f"{missed['lines'][path]:5} lines, {count:4} branches not reached: {path.relative_to(SOURCES)}")
    print(f"{sum(map(len, left_out.values()))} lines of functions that run in the compiler are left out")
    for kind, share in shares.items():
        print(f"{share:.1f} % of the {kind}")
    return any(share < LEAST[kind] for kind, share in shares.items())


sys.exit(main())
