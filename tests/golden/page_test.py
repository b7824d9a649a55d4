#!/usr/bin/env python3
"""page_test.py TNC PAGE.tn: compiles one golden page in a folder of its own and compares everything byte for byte.

A page FAMILY/NAME.tn stands with these files, as far as it needs them; standard output stays empty:
  NAME.tna   the assembly, but for the lines that each page has at its begin and end; missing: no output file may be left
  NAME.err   standard error (the page is named NAME.tn in it, the program tnc); missing: nothing
  NAME.args  one line: options, ahead of the page's name. A word @ stands for the page's name where it has another
             place; a word =0 or =1 is the exit status, which else is 0 with a NAME.tna and 1 without
  NAME.d/    further files, laid beside the page

Expectations are worked out by hand from what the language promises. Nothing writes them from what came out."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from checks import expect, finish


def text_of(path):
    return path.read_bytes().decode("latin-1") if path.exists() else None


tnc, page = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
words = (text_of(page.with_suffix(".args")) or "@").split()
status, code = [word[1] for word in words if word in ("=0", "=1")], text_of(page.with_suffix(".tna"))
options = [word for word in words if word not in ("=0", "=1")] + ["@"] * ("@" not in words)
with tempfile.TemporaryDirectory() as folder:
    shutil.copy(page, folder)
    if page.with_suffix(".d").exists():
        shutil.copytree(page.with_suffix(".d"), folder, dirs_exist_ok=True)
    arguments = [tnc, *(page.name if word == "@" else word for word in options)]
    done = subprocess.run(arguments, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
    output = text_of(pathlib.Path(folder, "output.tna"))
if code is not None and not {"-d", "-L"}.intersection(words):
    code = f'\n.string\ts_0\t"{page.name}"\n\tsourcefile\ts_0\n{code}; end of compiled file\n'
expect("exit status", done.returncode, int(status[0]) if status else int(code is None))
expect("standard error", done.stderr.decode("latin-1"), text_of(page.with_suffix(".err")) or "")
expect("standard output", done.stdout, b"")
expect("assembly", output, code)
finish()
