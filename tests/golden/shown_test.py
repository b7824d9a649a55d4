#!/usr/bin/env python3
"""shown_test.py: the golden pages and those in the documents, which are compared byte for byte too, show every message and
every instruction, less those listed here with the reason why no page can."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/docs"), str(ROOT / "tools")]
from checks import expect, finish
from source_tables import c_text, message_name, rows

UNSEEN_MESSAGES = {
    "Elseif_Without_If": "the report of its else part comes first",
    "File_Not_Reopened": "the including file would have to go while it is included",
    "Filter_Invalid": "stored in a value whose report nobody makes",
    "Internal_Call_Without_Function": "the operator of a call is pushed together with its record",
    "Internal_File_Version": "generators ask for versions of the table",
    "Internal_Inline_Call_Dot": "the dot was seen ahead of the step",
    "Internal_Opcode": "generators use instructions of the table",
    "Internal_Opcode_Double": "only pushf is written with a number",
    "Internal_Operator_Number": "operators without an instruction are handled ahead of it",
    "Internal_Operator_Unidentified": "all signs that are read as operators are in the table",
    "Too_Many_Open_Parentheses": "what leaves one open raises the bias, which is reported first",
    "While_Unopened": "the opening tag has pushed its record",
}
# No tag and no operator comes down to these.
UNSEEN_INSTRUCTIONS = {"cmp", "jmp_ge", "jmp_gt", "jmp_lt"}


def texts(suffix):
    folders = ROOT / "tests/golden", ROOT / "docs"
    paths = [path for folder in folders for path in folder.rglob("*") if path.suffix in (suffix, ".md")]
    return "\n".join(path.read_text(errors="replace") for path in paths)


said, assembly = texts(".err"), texts(".tna")
for name, number, text in rows("messages.def", "MESSAGE"):
    words = "".join({"%s": ".*", "%d": ".*", "%%": "%"}.get(part, re.escape(part)) for part in re.split("(%.)", c_text(text)))
    shown = re.search(f": {message_name(int(number))}: {words}$", said, re.MULTILINE)
    expect(f"{name} is shown", bool(shown), name not in UNSEEN_MESSAGES)
for *_, mnemonic, operands, _ in rows("opcodes.def", "OPCODE"):
    if operands != "ENGINE":
        shown = re.search(rf"^\t{c_text(mnemonic)}(\t|$)", assembly, re.MULTILINE)
        expect(f"{mnemonic} is shown", bool(shown), c_text(mnemonic) not in UNSEEN_INSTRUCTIONS)
finish()
