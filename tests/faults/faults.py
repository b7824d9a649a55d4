#!/usr/bin/env python3
"""faults.py TNC LIBRARY FAILING [all]: each call of a compilation fails in turn, or a signal or a changed source meets it. After
each run the exit status is 0, with the output and the diagnostics of an undisturbed run, or 1, with one message that names the
file and the cause, and without output. Prints the counts. Without the word all, a sample of seconds."""

import collections
import errno
import itertools
import os
import pathlib
import random
import re
import shutil
import signal
import sys
import tempfile
import time

TNC, LIBRARY, FAILING = (os.path.abspath(path) for path in sys.argv[1:4])
WHOLE = sys.argv[4:] == ["all"]
SAMPLE = 700
GOLDEN = pathlib.Path(__file__).parents[1] / "golden"
PAGES = [  # options, then pages of golden, which bring their own options and files
    ("", "functions/definitions"), ("", "include_ifdef/includes"), ("", "splitting/pieces"), ("", "filters/types"),
    ("-d", "documentation/functions"), ("-L", "coverage/two_files"), ("-L", "localized/texts"),
    (f"-b {LIBRARY}", "blocks/operands"), ("-w all", "functions/errors"), ("", "large")]
LARGE = ('<TnINCLUDE FILE="part">{ l.a * 2 }\n' + "text " * 20000) * 3
ERRORS = [errno.ENOSPC, errno.EIO, errno.EINTR, errno.EMFILE, errno.EACCES]
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]
CHANGES = {"cut": "The file was (shortened|changed)$", "swap": "The file was changed$"}
CAUSE = r"(Unable to \w+( \.DLL/\.so| file)? '[^']+': |file '[^']+': )"
Result = collections.namedtuple("Result", "status errors output")


class Page:
    """A folder with the files of one page, and the undisturbed run in it."""

    def __init__(self, options, page):
        stem = GOLDEN / page
        self.name = stem.name + ".tn"
        self.fill(stem)
        extra = stem.with_suffix(".args")
        words = (extra.read_text() if extra.exists() else "").replace("=0", "").replace("=1", "").split()
        if "@" not in words:
            words.append("@")
        self.arguments = ["tnc", *options.split(), *(self.name if word == "@" else word for word in words)]
        self.normal = self.run("", FAULT_COUNTS="counts")
        self.counts = {name: int(count) for name, count in map(str.split, open("counts"))}

    def fill(self, stem):
        """Makes the page's files anew in the current folder; beside each stands another one of its name and .new."""
        self.stem = stem
        if stem.name == "large":
            pathlib.Path(self.name).write_text(LARGE)
            pathlib.Path("part").write_text("part")
        else:
            shutil.copy(stem.with_suffix(".tn"), self.name)
            if stem.with_suffix(".d").exists():
                shutil.copytree(stem.with_suffix(".d"), ".", dirs_exist_ok=True)
        pathlib.Path(self.name + ".new").write_text("{ l.another } " * 999)

    def run(self, fault, after=None, **environment):
        """One run under a fault, or ended by a signal after some seconds."""
        environment |= {"LD_PRELOAD": FAILING, "FAULT": fault}
        errors = (os.POSIX_SPAWN_OPEN, 2, "errors", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600)
        child = os.posix_spawn(TNC, self.arguments, environment, file_actions=[errors])
        if after:
            time.sleep(after[1])
            os.kill(child, after[0])
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        output = pathlib.Path("output.tna")
        written = output.read_bytes() if output.exists() else None
        output.unlink(missing_ok=True)
        return Result(status, pathlib.Path("errors").read_text(errors="replace"), written)

    def faults(self):
        """All faults that this page can meet."""
        for call, count in self.counts.items():
            for number in range(1, count + 1):
                point = f"{call} {number}"
                if call == "malloc":
                    yield from ((point, str(errno.ENOMEM)), (point + "+", str(errno.ENOMEM)))
                elif call != "any":
                    yield from ((point, str(error)) for error in ERRORS)
                    if call in ("open", "write", "mmap"):
                        yield from ((point + "+", str(error)) for error in ERRORS if error != errno.EINTR)
                if call == "write":
                    yield point, "short"
                if call == "any":
                    yield from ((point, f"{change} {self.name}") for change in CHANGES)
                if call in ("any", "malloc"):
                    yield from ((point, f"kill {number}") for number in SIGNALS)

    def wrong(self, point, what):
        """What is wrong with the run under a fault, or nothing."""
        result = self.run(f"{point} {what}")
        if what.split()[0] in CHANGES:
            self.fill(self.stem)
            normal = [self.normal, self.run(f"any 1 {what}")]
            self.fill(self.stem)
        else:
            normal = [self.normal]
        if result in normal:
            return None
        if what.startswith("kill"):
            is_right = result.status == -int(what.split()[1]) and result.output in (None, self.normal.output)
        elif point.startswith("fwrite"):
            is_right = result.status == self.normal.status and result.output == self.normal.output
        else:
            cause = CAUSE + (CHANGES.get(what.split()[0]) or re.escape(os.strerror(int(what))) + "$")
            if point.startswith("malloc"):
                cause = f"{os.strerror(errno.ENOMEM)}$|Unable to register"  # the loader has its own words
            known = self.normal.errors.splitlines()
            told = [line for line in result.errors.splitlines() if line not in known and re.search(cause, line)]
            kept = b"" if point.startswith("unlink") else None
            is_right = result.status == 1 and result.output in (None, kept) and (
                len(told) == 1 or (told and "+" in point))
        return None if is_right else f"{' '.join(self.arguments)}: {point} {what}: {result.status}, " \
            f"{len(result.output) if result.output is not None else 'no'} bytes\n{result.errors[-400:]}"


def random_moments(page, tries):
    """Signals that come from outside, whenever."""
    started = time.monotonic()
    page.run("")
    duration = time.monotonic() - started
    for _ in range(tries):
        number = random.choice(SIGNALS)
        result = page.run("", after=(number, random.random() * duration))
        if result != page.normal and (result.status != -number or result.output not in (None, page.normal.output)):
            yield f"signal {number}: {result.status}, {len(result.output or '')} bytes\n{result.errors[-400:]}"


def main():
    random.seed(1)
    with tempfile.TemporaryDirectory() as folder:
        found, counts, cases = [], collections.Counter(), []
        pages = []
        for index, (options, page) in enumerate(PAGES):
            os.mkdir(f"{folder}/{index}")
            os.chdir(f"{folder}/{index}")
            pages.append(Page(options, page))
            cases += zip(itertools.repeat(index), pages[-1].faults())
        for index, (point, what) in cases if WHOLE else sorted(random.sample(cases, SAMPLE)):
            os.chdir(f"{folder}/{index}")
            counts[point.split()[0] if what.isdigit() else what.split()[0]] += 1
            found += filter(None, [pages[index].wrong(point, what)])
        tries = 1000 if WHOLE else 20
        found += random_moments(pages[-1], tries)
    for what, count in sorted(counts.items()):
        print(f"{count:7} {what}")
    print(f"{sum(counts.values()):7} of {len(cases)} faults, {tries} signals at random moments, {len(found)} wrong")
    print("\n".join(found[:20]))
    return 1 if found else 0


sys.exit(main())
