#!/usr/bin/env python3
"""run_ends_test.py TNC: the ends of a run that it doesn't choose itself, and what they print and leave."""

import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from checks import expect, finish

TNC = os.path.abspath(sys.argv[1])
OUTPUT, PAGE = pathlib.Path("output.tna"), pathlib.Path("page.tn")
LARGE_PAGE = '<TnEVAL NONE="1" EXPR="{ l.a }">\n' * 8192  # more code and diagnostics than a pipe and a buffer hold
NO_MAP = "tnc: Unable to open '{}': Illegal seek\n"
NO_PIPE = "page.tn:1: CE_186: TnINCLUDE cannot open file 'pipe': Illegal seek\n"
NO_ROOM = "tnc: Unable to write to standard output\n"

# Page, shell command in which tnc is the program, exit status, what is said, and whether there is an output.
ENDS = [
    (LARGE_PAGE, "tnc page.tn 2>&- && ! grep CW_1 output.tna && tnc page.tn <&- >&- 2>&- && ! grep CW_1 output.tna", 0, "", True),
    ("", "tnc --help >/dev/full", 1, NO_ROOM, False),
    ("", "tnc --help >&-", 1, NO_ROOM, False),
    ("", "tnc --version >/dev/full", 1, NO_ROOM, False),
    ("", "tnc --version >&-", 1, NO_ROOM, False),
    ("", "echo Hi | tnc /dev/stdin", 1, NO_MAP.format("/dev/stdin"), False),
    ("", "tnc pipe", 1, NO_MAP.format("pipe"), False),
    ("", "tnc /dev/zero", 1, NO_MAP.format("/dev/zero"), False),
    ("", "tnc <(echo Hi) 2>&1 | grep -c ': Illegal seek$' >&2", 0, "1\n", False),
    ('<TnINCLUDE FILE="pipe">', "tnc page.tn", 1, NO_PIPE, False),
    ('<TnINCLUDE FILE="pipe" INTERPRET="off">', "tnc page.tn", 1, NO_PIPE, False),
    ("Hi", "tnc /dev/null && tnc /dev/stdin <page.tn", 0, "", True),
    (LARGE_PAGE, "ulimit -f 8; tnc -w all page.tn", 1, "tnc: Unable to write 'output.tna': File too large\n", False),
    (LARGE_PAGE, "exec 3> >(exec true); wait $!; tnc -w all -o /dev/fd/3 page.tn", 1,
     "tnc: Unable to write '/dev/fd/3': Broken pipe\n", False),
    ("<TnELSE>", "exec 9>file; tnc -o /proc/self/fd/9 page.tn; [ ! -s file ]", 0,
     "page.tn:1: CE_122: TnELSE without TnIF\ntnc: Unable to remove '/proc/self/fd/9': Operation not permitted\n", False),
]


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    os.mkfifo("pipe")
    for page, command, *expected in ENDS:
        PAGE.write_text(page)
        run = subprocess.run(["bash", "-c", f'tnc() {{ (exec -a tnc {TNC} "$@"); }}; {command}'],
                             stderr=subprocess.PIPE, text=True, timeout=60)
        expect(command, [run.returncode, run.stderr[:300], OUTPUT.exists()], expected)
        OUTPUT.unlink(missing_ok=True)
finish()
