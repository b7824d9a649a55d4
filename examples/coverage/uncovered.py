#!/usr/bin/env python3
"""uncovered.py EXECUTED PAGE... [-- TNC-OPTION...]: shows, for each page, the lines of code that were not executed.

EXECUTED holds a line FILE:LINE for each line of a page that was executed, in any order; what stands behind, as a count, is not
looked at. Lines that hold code are those of tnc -L. Where tnc is not in the path, the variable TNC names it. The exit status is
1 when a line was not executed.
"""

import os
import re
import subprocess
import sys
import tempfile


def executed_lines(path):
    """The numbers by file: {"page.tn": {1, 4}, ...}."""
    lines = {}
    with open(path, encoding="utf-8", errors="replace") as file:
        for name, number in re.findall(r"^(.+?):(\d+)\b", file.read(), re.MULTILINE):
            lines.setdefault(os.path.normpath(name), set()).add(int(number))
    return lines


def code_lines(page, options):
    """A run for each page, since -L runs the numbers of several together."""
    with tempfile.NamedTemporaryFile("r") as output:
        subprocess.run([os.environ.get("TNC", "tnc"), *options, "-L", "-o", output.name, page], check=True)
        return [int(line) for line in output]


def report(page, options, executed):
    """Prints what was not executed; answers how much."""
    code = code_lines(page, options)
    missed = [line for line in code if line not in executed]
    print(f"{page}: {len(code) - len(missed)} of {len(code)} lines executed")
    with open(page, encoding="utf-8", errors="replace") as file:
        text = file.read().split("\n")
    for line in missed:
        print(f"{line:6}  {text[line - 1].rstrip() if line <= len(text) else ''}".rstrip())
    return len(missed)


def main():
    words = sys.argv[1:]
    options = words[words.index("--") + 1 :] if "--" in words else []
    path, *pages = words[: len(words) - len(options) - ("--" in words)] or sys.exit(__doc__)
    try:
        executed = executed_lines(path)
        missed = [report(page, options, executed.get(os.path.normpath(page), set())) for page in pages]
    except subprocess.CalledProcessError as error:
        sys.exit(error.returncode)  # tnc has told why
    except OSError as error:
        sys.exit(f"uncovered.py: {error}")
    sys.exit(1 if any(missed) else 0)


if __name__ == "__main__":
    main()
