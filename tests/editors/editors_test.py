#!/usr/bin/env python3
"""editors_test.py: the files of editors/ are up to date, and understand all tags, attributes and messages."""

import json
import pathlib
import re
import shutil
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from checks import ROOT, expect, finish, run
from source_tables import attribute_keys, message_name, messages, tag_keys

# What is in a line of each text of each message, whose words mislead.
PLACES = []
for number, texts in messages().items():
    for text in texts:
        PLACES.append(["a b/x.tn", number, message_name(number)[1], number, text.replace("%s", "x:1: CE_2: y").replace("%d", "7")])
LINES = ["{}:{}: C{}_{}: {}".format(*place) for place in PLACES]

expect("editor_files.py --check", run(ROOT, sys.executable, "tools/editor_files.py", "--check")[0], 0)
warning, any_place = json.loads((ROOT / "editors/problem-matcher.json").read_text())
for place, line in zip(PLACES, LINES):
    groups = re.match(any_place["pattern"]["regexp"], line)
    kind = "W" if re.match(warning["pattern"]["regexp"], line) else "E"
    expect("matcher", [groups[1], int(groups[2]), kind, int(groups[4]), groups[5]], place)
rules = json.loads((ROOT / "editors/tarn.tmLanguage.json").read_text())["repository"]
for key in sum(tag_keys().values(), []):
    expect("grammar, tag", re.match(rules["tag"]["begin"], f"</{key} ")[2], key)
for key in sum(attribute_keys().values(), []):
    expect("grammar, attribute", re.match(rules["attribute"]["match"], key + "=")[0], key)

PAGE = """<p title="{l.a}"><TnIF EXPR="{twice(l.b) GT 1}">\n<TnCOMMENT><TnIF></TnCOMMENT><tnlocalized-text>"""
COLUMNS = {12: "Variable", 19: "TagName", 24: "Attribute", 31: "Function", 42: "Operator", 45: "Number", 64: "Comment", 90: "TagName"}
VIM = """set runtimepath^={root}/editors/vim | syntax on | filetype on | edit x.tn | compiler tnc | cgetfile said
let places = map(getqflist(), '[bufname(v:val.bufnr), v:val.lnum, v:val.type, v:val.nr, v:val.text]')
let groups = map({bytes}, 'synIDattr(synID(byte2line(v:val), v:val - line2byte(byte2line(v:val)) + 1, 1), "name")[4:]')
call writefile([json_encode([places, groups])], "seen") | qall!"""
if shutil.which("vim"):
    with tempfile.TemporaryDirectory() as folder:
        script = VIM.format(root=ROOT, bytes=list(COLUMNS))
        for name, text in (("x.tn", PAGE), ("said", "\n".join(LINES)), ("script", script)):
            pathlib.Path(folder, name).write_text(text)
        run(folder, "vim", "-N", "-u", "NONE", "-i", "NONE", "-es", "-S", "script")
        expect("vim", json.loads(pathlib.Path(folder, "seen").read_text()), [PLACES, [*COLUMNS.values()]])
finish([] if shutil.which("vim") else ["vim"])
