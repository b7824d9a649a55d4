#!/usr/bin/env python3
"""options_test.py TNC: usage text, man page and completions name the options, numbers and words of the tables of the sources."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
from source_tables import message_name, messages, options, pedantic_words  # noqa: E402

SKIPPED = 77
failures, missing = [], []


def expect(what, found, expected):
    if found != expected:
        failures.append(f"{what}: {found} instead of {expected}")


def run(*words):
    done = subprocess.run(words, text=True, capture_output=True)
    return done.stdout + done.stderr


def check_usage(tnc):
    shown = re.findall(r"^  --?(\w+) +(<\w+>)? *(.*)$", run(tnc, "--help"), re.MULTILINE)
    expect("--help", shown, [(name, value or "", text) for name, value, text in options()])


def check_manual():
    page = (ROOT / "man/tnc.1").read_text()
    listed = re.findall(r"^\.It Fl -?(\w+)(?: Ar (\w+))?$", page, re.MULTILINE)
    expect("man page", listed, [(name, (value or "").strip("<>")) for name, value, _ in options()])
    shown = re.findall(r"^\.Op Fl (\w+)(?: Ar (\w+))?$", page, re.MULTILINE)
    letters = [(letter, value) for word, value in shown for letter in word]
    expect("synopsis", sorted(letters), sorted(pair for pair in listed if len(pair[0]) == 1))
    expect("levels", re.findall(r"^\.It Cm (\w+)$", page, re.MULTILINE), pedantic_words())
    expect("numbers", re.findall(r"^\.It Sy (C[WE]_\d+)$", page, re.MULTILINE), [message_name(n) for n in messages()])
    if shutil.which("mandoc"):
        expect("mandoc -T lint", run("mandoc", "-T", "lint", str(ROOT / "man/tnc.1")), "")
    else:
        missing.append("mandoc")


# What completes the last word of a command line, in a folder with shop.so, page.tn and a folder old.
NUMBERS = [str(number) for number in messages() if number < 100]
LETTERS = ["-" + name if len(name) == 1 else "--" + name for name, *_ in options()]
CASES = {
    "tnc -": LETTERS,
    "tnc -b ": ["old", "shop.so"],
    "tnc -w ": ["all", *NUMBERS],
    "tnc -X 5": ["5", "51"],
    "tnc -W 3,1": ["3," + number for number in NUMBERS if number[0] == "1"],
    "tnc -fp s": ["scope"],
    "tnc -P all,": ["all," + word for word in ["all", *pedantic_words()]],
    "tnc -A p": ["page.tn"],
}
BASH = """source {file}; COMP_LINE='{line}'; COMP_WORDS=(${{COMP_LINE}}); [[ $COMP_LINE != *' ' ]] || COMP_WORDS+=('')
COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); _tnc; printf '%s\\n' "${{COMPREPLY[@]}}" """
FISH = "source {file}; complete -C '{line}'"


def check_shell(shell, file, script):
    if not shutil.which(shell):
        return missing.append(shell)
    with tempfile.TemporaryDirectory() as folder:
        for name in ("shop.so", "page.tn"):
            pathlib.Path(folder, name).touch()
        pathlib.Path(folder, "old").mkdir()
        for line, expected in CASES.items():
            command = f"cd {folder}; " + script.format(file=ROOT / "completion" / file, line=line)
            found = [answer.split("\t")[0].rstrip("/") for answer in run(shell, "-c", command).split("\n")]
            expect(f"{shell}: {line}", sorted(filter(None, found)), sorted(expected))


check_usage(sys.argv[1])
check_manual()
check_shell("bash", "tnc.bash", BASH)
check_shell("fish", "tnc.fish", FISH)
if shutil.which("zsh"):
    expect("zsh", run("zsh", "-n", str(ROOT / "completion/_tnc")), "")
else:
    missing.append("zsh")
print("\n".join(failures) or f"skipped for want of {', '.join(missing)}" if failures or missing else "all agree")
sys.exit(1 if failures else SKIPPED if missing else 0)
