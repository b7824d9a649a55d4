#!/usr/bin/env python3
"""options_test.py TNC: usage text, man page and completions name the options, numbers and words of the sources' tables."""

import re
import shutil
import sys
import tempfile

from checks import ROOT, expect, finish, run
from source_tables import messages, options, pedantic_words

# What completes the last word of a command line, in a folder with shop.so, page.tn and a folder old.
NUMBERS = [str(number) for number in messages() if number < 100]
CASES = {
    "tnc -": ["-" + name if len(name) == 1 else "--" + name for name, *_ in options()],
    "tnc -b ": ["old", "shop.so"],
    "tnc -w ": ["all", *NUMBERS],
    "tnc -W 3,1": ["3," + number for number in NUMBERS if number[0] == "1"],
    "tnc -fp s": ["scope"],
    "tnc -P all,": ["all," + word for word in ["all", *pedantic_words()]],
    "tnc -A p": ["page.tn"],
}
SHELLS = {
    "bash": """. {completion}/tnc.bash; l='{line}'; COMP_WORDS=($l); [[ $l != *' ' ]] || COMP_WORDS+=('')
COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); _tnc; printf '%s\\n' "${{COMPREPLY[@]}}" """,
    "fish": "source {completion}/tnc.fish; complete -C '{line}'",
}
MANUAL, COMPLETION = ROOT / "man/tnc.1", ROOT / "completion"

missing = [name for name in ("mandoc", "zsh", *SHELLS) if not shutil.which(name)]
listed = [(name, value or "", text) for name, value, text in options()]
expect("--help", re.findall(r"(?m)^  --?(\w+) +(<\w+>)? *(.*)$", run(".", sys.argv[1], "--help")[1]), listed)
described = re.findall(r"^\.It Fl -?(\w+)(?: Ar (\w+))?$", MANUAL.read_text(), re.MULTILINE)
expect("man page", described, [(name, value.strip("<>")) for name, value, _ in listed])
expect("levels", re.findall(r"^\.It Cm (\w+)$", MANUAL.read_text(), re.MULTILINE), pedantic_words())
for words in (("mandoc", "-T", "lint", *MANUAL.parent.glob("*.1")), ("zsh", "-n", COMPLETION / "_tnc")):
    said = "" if words[0] in missing else run(".", *words)[1]
    expect(words, re.sub(r".*(?: not found: Xr |mandoc\.db ).*\n*", "", said), "")  # which manuals the machine has
for shell in SHELLS.keys() - missing:
    with tempfile.TemporaryDirectory() as folder:
        run(folder, "bash", "-c", "touch shop.so page.tn; mkdir old")
        for line, expected in CASES.items():
            script = SHELLS[shell].format(completion=COMPLETION, line=line)
            answers = run(folder, "env", f"HOME={folder}", shell, "-c", script)[1].split("\n")
            found = [answer.split("\t")[0].rstrip("/") for answer in answers if answer]
            expect(f"{shell}: {line}", sorted(found), sorted(expected))
finish(missing)
