#!/usr/bin/env python3
"""test_share.py [--limit PERCENT]: prints how many lines stand under tests/ for each folder, and what share of the lines
of src/ they come to. With a limit the exit status is 1 when the share is above it."""

import argparse
import collections
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def lines_by_folder(top):
    lines = collections.Counter()
    for path in (ROOT / top).rglob("*"):
        if path.is_file() and "__pycache__" not in path.parts:
            parts = path.relative_to(ROOT).parts
            lines["/".join(parts[:2]) if len(parts) > 2 else top] += path.read_bytes().count(b"\n")
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--limit", type=float)
    limit = parser.parse_args().limit
    tests = lines_by_folder("tests")
    code = lines_by_folder("src").total()
    for folder, lines in sorted(tests.items()):
        print(f"{lines:6} {folder}")
    share = 100 * tests.total() / code
    print(f"{tests.total():6} lines of tests to {code} of code: {share:.1f} %")
    return 1 if limit is not None and share > limit else 0


if __name__ == "__main__":
    sys.exit(main())
