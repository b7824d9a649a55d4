#!/usr/bin/env python3
"""library_faults.py FAILING PROGRAM... [all]: under each test of the programs each system call fails in turn. The test may fail
then, but no signal ends it, and it does not hang. Prints the counts. Without the word all, the first of the calls or the last."""

import collections
import errno
import os
import subprocess
import sys
import tempfile

WHOLE = sys.argv[-1] == "all"
FAILING, *PROGRAMS = map(os.path.abspath, sys.argv[1:-1] if WHOLE else sys.argv[1:])
WAITING = "*Race*:*Silent*:*Each_Wait*:*Two_Hosts*:*Behind_Signals*"  # tests that go by the clock
MOST = 50


def tests(program):
    """The names of the program's tests."""
    suite = ""
    for line in subprocess.check_output([program, "--gtest_list_tests", "--gtest_filter=-" + WAITING], text=True).splitlines():
        word = line.split()[0]
        if line.startswith(" "):
            yield suite + word
        elif word.endswith("."):
            suite = word


def run(program, test, **environment):
    try:
        return subprocess.run([program, "--gtest_filter=" + test], env={**os.environ, "LD_PRELOAD": FAILING, **environment},
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=30).returncode
    except subprocess.TimeoutExpired:
        return "no end"


def main():
    results, wrong = collections.Counter(), []
    for program in PROGRAMS:
        for test in tests(program):
            with tempfile.NamedTemporaryFile("r") as counts:
                run(program, test, FAULT_COUNTS=counts.name)
                calls = [(name, int(count)) for name, count in map(str.split, counts) if name not in ("malloc", "fwrite", "any")]
            for index, (name, count) in enumerate(calls):
                numbers = range(1, min(count, MOST) + 1)
                for number in numbers if WHOLE else numbers[-(index % 2) :][:1]:
                    for error in (errno.EIO, errno.EINTR) if WHOLE else [errno.EIO]:
                        result = run(program, test, FAULT=f"{name} {number} {error}")
                        results[result] += 1
                        if result not in (0, 1):
                            wrong.append(f"{test}: {name} {number} {os.strerror(error)}: {result}")
    print(f"{results.total()} faults, under which {results[1]} tests failed, {len(wrong)} wrong", *wrong, sep="\n")
    return bool(wrong) or not results[1]


sys.exit(main())
