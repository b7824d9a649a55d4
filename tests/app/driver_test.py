#!/usr/bin/env python3
"""driver_test.py TNC LIBRARY TNC-DEPS: what the options make of a run, what it says, and which files it leaves."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from checks import expect, finish

TNC, LIBRARY, DEPS = map(os.path.abspath, sys.argv[1:4])
FILES = {
    "good.tn": "Hi",
    "bad.tn": "<TnELSE>",
    "function.tn": '<TnFUNCTION NAME="f">a</TnFUNCTION>',
    "certvalue.tn": '<TnCALL ACTION="u" METHOD="m" CERTVALUE="v"></TnCALL>',
    "flags.tn": '<TnCALL ACTION="u" METHOD="m" FLAGS="f"></TnCALL>',
    "pin.tn": '<TnCALL ACTION="u" METHOD="m" PIN-ALGORITHM="a" PIN-DIGEST="d"></TnCALL>',
    "unscoped.tn": '<TnEVAL EXPR="{a}">',
    "warned.tn": '<TnEVAL NONE="1" EXPR="{1}"><TARN ERROROUTPUTLEVEL="syntax">',
    "large.tn": '<TnINCLUDE FILE="large" INTERPRET="off">',
    "huge.tn": '<TnINCLUDE FILE="huge" INTERPRET="off">',
    "page.tn": '<TnINCLUDE FILE="./out">',
    "text.tn": '<TnINCLUDE FILE="./out" INTERPRET="off">',
}
NONE = ": No such file or directory"
NUMBERS = "tnc: Invalid list of warning numbers '{}'.  Must be 'all' or comma separated list of values between 1 and 99"
LEVELS = "tnc: Invalid pedantic option '{}'.  Must be 'all' or type 'tnc --help' for list of valid options."
ELSE = "bad.tn:1: CE_122: TnELSE without TnIF"
LOST = "function.tn:1: CW_17: Text will not be output"
FIRST = "warned.tn:1: CW_1: Unknown attribute name NONE"
UPPER = 'warned.tn:1: CW_51: Value "syntax" has no effect in compiled Tarn Script for the "ERROROUTPUTLEVEL" attribute'
UNSCOPED = 'unscoped.tn:1: C{}: Unscoped variable "a"'

# Options and sources, and what is said.
FAILING = [
    ("", "tnc: No input file specified"),
    ("-", "tnc: No input file specified"),
    ("-dL good.tn", "tnc: Only one of -d or -L may be specified"),
    ("-Az good.tn", "tnc: Invalid option '-z'"),
    ("--Help good.tn", "tnc: Invalid option '--Help'"),
    ("--version --bad", "5.52\ntnc: Invalid option '--bad'"),
    ("-ofile", "tnc: Option '-o' requires an argument"),
    ("-C 3.99 good.tn", "tnc: Invalid engine version number 3.99"),
    ("-C 5.53 good.tn", "tnc: Invalid engine version number 5.53"),
    ("-C -1e-9 good.tn", "tnc: Invalid engine version number -0"),
    ("-O 0 good.tn", "tnc: Invalid value for obfuscation bytes"),
    ("-b ./no.so good.tn", "tnc: Unable to register .DLL/.so './no.so': ./no.so: cannot open shared object file" + NONE),
    ("-w 0 good.tn", NUMBERS.format("0")),
    ("-W 5, good.tn", NUMBERS.format("5,")),
    ("-X 5,100 good.tn", NUMBERS.format("5,100")),
    ("-w all,5 good.tn", NUMBERS.format("all,5")),
    ("-p scope, good.tn", LEVELS.format("")),
    ("-P lock,all good.tn", LEVELS.format("all")),
    ("good.tn -d", "tnc: Unable to open '-d'" + NONE),
    ("folder", "tnc: Unable to open 'folder': Is a directory"),
    ("-o none/x good.tn", "tnc: Unable to create 'none/x'" + NONE),
    ("-o link.tn none.tn good.tn", "tnc: Unable to write 'link.tn': it is one of the sources"),
    ("-o good.tn hard.tn", "tnc: Unable to write 'good.tn': it is one of the sources"),
    ("-b ./copy.so -o copy.so good.tn", "tnc: Unable to write 'copy.so': it is one of the libraries"),
    ("--deps none/x -o null good.tn", "tnc-deps: Unable to create 'none/x'" + NONE),
    ("--deps a.out -o a.out good.tn", "tnc-deps: Unable to write 'a.out': it is the output"),
    ("-o full good.tn", "tnc: Unable to write 'full': No space left on device"),
    ("large.tn", "large.tn:1: CE_186: TnINCLUDE cannot open file 'large': File too large"),
    ("huge.tn", "huge.tn:1: CE_186: TnINCLUDE cannot open file 'huge': File too large"),
    ("-w all bad.tn", ELSE),
    ("-w all -X 1 -W 1 warned.tn", FIRST),
    ("-C 5.31 flags.tn", "flags.tn:1: CE_224: Engine version 5.31 does not support the FLAGS attribute to TnCALL"),
    ("-P lock,SCOPE unscoped.tn", UNSCOPED.format("E_189")),
    ("-P ALL unscoped.tn", UNSCOPED.format("E_189")),
]
# The same, and the output.
PASSING = [
    ("- -A - good.tn", "", "output.tna"),
    ("-oignored a.out good.tn", "", "a.out"),
    ("-AfFo a.out -o b.out good.tn", "", "b.out"),
    ("-C 4 good.tn", "", "output.tna"),
    ("-C 5.24 certvalue.tn", "", "output.tna"),
    ("-C 5.32 flags.tn", "", "output.tna"),
    ("-C 5.33 pin.tn", "", "output.tna"),
    ("-C nan good.tn", "", "output.tna"),
    ("-O 99999999999999999999 good.tn", "", "output.tna"),
    ("-L good.tn good.tn", "", "output.tna"),
    ("warned.tn", FIRST, "output.tna"),
    ("-W all warned.tn", FIRST + "\n" + UPPER, "output.tna"),
    ("-w 99,0x1 warned.tn", "", "output.tna"),
    ("-W 1 -w ALL warned.tn", "", "output.tna"),
    ("-X 51 warned.tn", FIRST, "output.tna"),
    ("-p lock -p Scope unscoped.tn", UNSCOPED.format("W_10"), "output.tna"),
]
# What out is, is other too. A run that fails with it open leaves neither.
LINKED = [
    (os.link, "-o out good.tn bad.tn none.tn", ELSE),
    (os.symlink, "-o out good.tn bad.tn", ELSE),
    (os.symlink, "--deps none/x -o out good.tn", "tnc-deps: Unable to create 'none/x'" + NONE),
    (os.link, "-o out page.tn", "page.tn:1: CE_186: TnINCLUDE cannot open file './out': it is the output"),
    (os.link, "-o out text.tn", "text.tn:1: CE_186: TnINCLUDE cannot open file './out': it is the output"),
]
HELP_END = """
<warning> may be one of:
  - One or more warning ids, separated by commas
  - The keyword "all", which indicates all warnings

<level> may be one or a comma separated list of the following:
    scope     Warn or error on unscoped variables.
    lock      Warn or error on TnFUNCTIONRETURN inside TnLOCKFILE.
    capture   Warn or error on TnFUNCTIONRETURN inside TnCAPTURE.
    async     Warn or error on TnFUNCTIONRETURN inside TnASYNC.
  or
    all       All of the above options.
"""


def tnc(options):
    done = subprocess.run([DEPS if "--deps" in options else TNC, *options.split()], capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


def sizes():
    return {entry.name: entry.stat(follow_symlinks=False).st_size for entry in os.scandir()}


def check_runs():
    before = sizes()
    for options, said, *output in FAILING + PASSING:
        expect(options, tnc(options), (int(not output), said + "\n" if said else ""))
        expect(options + ": output", [name for name in output if os.path.exists(name)], output)
        for name in output:
            os.unlink(name)
        expect(options + ": files", sizes(), before)
    for link, options, said in LINKED:
        pathlib.Path("other").write_text("of an earlier run")
        link("other", "out")
        expect(options, tnc(options), (1, said + "\n"))
        expect(options + ": files", sizes(), before | {"other": 0})
        os.unlink("other")


def check_output():
    usage = tnc("--version --help -dL none.tn")[1]
    expect("usage", usage.startswith("5.52\nUsage: tnc [options] file...\nOptions:\n  --help  ") and usage.endswith(HELP_END), True)
    for options in ("-fF", "-Ff"):
        expect(options, tnc(options + " function.tn"), (0, LOST + "\n"))
        expect(options, "\n.function f\tcompresswhitespace\n" in pathlib.Path("output.tna").read_text(), True)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for name, text in FILES.items():
        pathlib.Path(name).write_text(text)
    for name, gibibytes in (("large", 2), ("huge", 4)):
        with open(name, "w") as file:
            file.truncate(gibibytes << 30)
    os.symlink("good.tn", "link.tn")
    os.link("good.tn", "hard.tn")
    os.symlink("/dev/full", "full")
    os.symlink("/dev/null", "null")
    shutil.copy(LIBRARY, "copy.so")
    os.mkdir("folder")
    check_runs()
    check_output()
finish()
