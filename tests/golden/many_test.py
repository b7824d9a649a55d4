#!/usr/bin/env python3
"""many_test.py TNC: a page of many names, lines, texts, members and operands, and its assembly; and an attribute without end."""

import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from checks import expect, finish, run

NAMES, ROUNDS, TEXTS, MEMBERS, OPERANDS, REPEATS = 5000, 3, 1200, 300, 60000, 999
tnc = str(pathlib.Path(sys.argv[1]).resolve())
page, code, constants = [], ['\n.string\ts_0\t"page.tn"\n\tsourcefile\ts_0'], {"page.tn": 0}


def push(text):
    if text not in constants:
        code.append(f'\n.string\ts_{len(constants)}\t"{text}"')
    code.append(f"\n\tpushc\ts_{constants.setdefault(text, len(constants))}")


for line in range(ROUNDS * NAMES):  # a variable on each, which keeps its number in any case
    number = line % NAMES
    name = "aA"[line // NAMES % 2] * (1 + number % 20) + str(number)
    page.append(f'<TnEVAL EXPR="{{g.{name}}}"\n>')
    code.append(f'\n.global\tl_{number}\t"{name}"' if line < NAMES else "")
    code.append("\n\tlineno\t1" if line == 0 else "")
    code.append(f"\n\tpushg\tl_{number}\n\tlineno\t{line + 2}\n\tout")
for length in range(1, TEXTS):  # up to more quotes than are composed at once
    page.append('"' * length + "<b>")
    push("\\22" * length)
    code.append("\n\tout_comp")
    push("<b>")
    code.append("\n\tout")
members = [f"m{i}" for i in range(MEMBERS)]  # more than a row has at first
page += ['<TnASSIGNARRAY NAME="l.a" VALUE="x">', *(f'<TnMEMBER NAME="{name}">' for name in members), "</TnASSIGNARRAY>"]
code.append(f'\n.local\tl_{NAMES}\t"a"')
push("x")
code.append(f"\n\tpushl\tl_{NAMES}")
for name in members:
    push(name)
    code.append("\n\tmemb")
code.append("\n\tstore\n\tpushi\t0")
page += ['<TnEVAL EXPR="{0', *(f" + {i}" for i in range(OPERANDS)), '}">']  # whose records go as they are written
code += [*(f"\n\tpushi\t{i}\n\tadd" for i in range(OPERANDS)), "\n\tout\n; end of compiled file\n"]

with tempfile.TemporaryDirectory() as folder:
    source, output = pathlib.Path(folder, "page.tn"), pathlib.Path(folder, "output.tna")
    source.write_text("".join(page))
    expect("page of many", run(folder, tnc, "page.tn"), (0, ""))
    expect("its assembly", output.read_text() == "".join(code), True)
    source.write_text('<TnASSIGN NAME="l.a" VALUE="x"' + ' MEMBER="m"' * REPEATS + ">")
    reports = run(folder, tnc, "page.tn")[1].splitlines()
    expect("repeated", (len(reports), 100 < len(reports[-1]) < 5000), (REPEATS - 1, True))
finish()
