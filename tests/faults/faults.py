#!/usr/bin/env python3
"""faults.py TNC LIBRARY FAILING [all]: each call of a compilation fails in turn, or a signal or a changed source meets it. After
each run the exit status is 0, with the output and the diagnostics of an undisturbed run, or 1, with one message that names the
file and the cause, and without output. Prints the counts. Without the word all, the system calls of one page, the loss of a large
one, and a sample."""

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
SAMPLE = 450
GOLDEN = pathlib.Path(__file__).parents[1] / "golden"
PAGES = [  # options, then pages of golden, which bring their own options and files
    ("", "functions/definitions"), ("", "include_ifdef/includes"), ("-O 3", "text/quoting"), ("", "filters/types"),
    ("-d", "documentation/functions"), ("-L", "functions/arity"), ("-L", "variables/scopes"),
    (f"-b {LIBRARY}", "assignment/targets"), ("-w all", "functions/errors"), ("", "large")]
LARGE = '<TnINCLUDE FILE="part">' + ("{ l.a * 2 }\n" + "text " * 20000) * 3
ERRORS = [errno.ENOSPC, errno.EIO, errno.EINTR, errno.EMFILE, errno.EACCES]
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGALRM, signal.SIGXCPU]
CHANGES = {"cut": "The file was (shortened|changed)$", "swap": "The file was changed$"}
CAUSE = r"(Unable to \w+( \.DLL/\.so| file)? '[^']+': |file '[^']+': )"
EARLIER = b"of an earlier run"
Result = collections.namedtuple("Result", "status errors output other")  # the output's bytes, and under its other name


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
        self.normal = self.run(FAULT_COUNTS="counts")
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

    def run(self, point="", what="", after=None, **environment):
        """One run under a fault, or one that a signal from outside meets after some seconds."""
        environment |= {"LD_PRELOAD": FAILING, "FAULT": point and f"{point} {what}"}
        output, other = pathlib.Path("output.tna"), pathlib.Path("other")
        other.write_bytes(EARLIER)
        os.link(other, output)
        errors = (os.POSIX_SPAWN_OPEN, 2, "errors", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600)
        child = os.posix_spawn(TNC, self.arguments, environment, file_actions=[errors])
        if after:
            time.sleep(after)
            os.kill(child, int(what.split()[1]))
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        errors = pathlib.Path("errors").read_text(errors="replace")
        result = Result(status, errors, output.read_bytes() if output.exists() else None, other.read_bytes())
        output.unlink(missing_ok=True)
        return result

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

    def wrong(self, point, what, after=None):
        """What is wrong with the run under a fault, or nothing."""
        result, normal, change = self.run(point, what, after), [self.normal], CHANGES.get(what.split()[0])
        if change:
            self.fill(self.stem)
            normal.append(self.run("any 1", what))
            self.fill(self.stem)
        if result in normal:
            return None
        left = [result.output, b"" if point.startswith("ftruncate") else result.other]
        is_right = left in ([None, b""], [EARLIER, EARLIER]) or (point.startswith("unlink") and left == [b"", b""])
        if what.startswith("kill"):
            is_right = result.status == -int(what.split()[1]) and (is_right or result[2:] == self.normal[2:])
        elif point.startswith("fwrite"):
            is_right = result.status == self.normal.status and result[2:] == self.normal[2:]
        else:
            cause = CAUSE + (change or re.escape(os.strerror(int(what))) + "$")
            if point.startswith("malloc"):
                cause = f"{os.strerror(errno.ENOMEM)}$|Unable to register"  # the loader has its own words
            known = self.normal.errors.splitlines()
            told = [line for line in result.errors.splitlines() if line not in known and re.search(cause, line)]
            is_right = is_right and result.status == 1 and (len(told) == 1 or (told and "+" in point))
        words = " ".join(self.arguments)
        return None if is_right else f"{words}: {point} {what}: {result.status}, {left}\n{result.errors[-400:]}"


def main():
    random.seed(1)
    with tempfile.TemporaryDirectory() as folder:
        found, counts, cases, pages = [], collections.Counter(), [], []
        for index, (options, page) in enumerate(PAGES):
            os.mkdir(f"{folder}/{index}")
            os.chdir(f"{folder}/{index}")
            pages.append(Page(options, page))
            cases += zip(itertools.repeat(index), pages[-1].faults())
        always = {(index, fault) for index, fault in cases
                  if index == 0 and fault[1].isdigit() and "malloc" not in fault[0] or pages[index].stem.name == "large" and "cut" in fault[1]}
        for index, (point, what) in cases if WHOLE else sorted(always.union(random.sample(cases, SAMPLE))):
            os.chdir(f"{folder}/{index}")
            counts[point.split()[0] if what.isdigit() else what.split()[0]] += 1
            found += filter(None, [pages[index].wrong(point, what)])
        os.chdir(f"{folder}/0")
        if not any(pages[0].run(f"close {number + 1}", "5").status for number in range(pages[0].counts["close"])):
            found.append("no close that fails makes a run fail")
        pathlib.Path("bad.tn").write_text("<TnELSE>")
        said = os.popen(f"LD_PRELOAD={FAILING} FAULT='unlink 1+ 1' {TNC} -o /dev/stdout bad.tn 2>&1 >file").read()
        if said != "bad.tn:1: CE_122: TnELSE without TnIF\n":
            found.append("a link of the machine would be removed: " + said)
        os.chdir(f"{folder}/{len(pages) - 1}")
        started, tries = time.monotonic(), 1000 if WHOLE else 20
        pages[-1].run()
        end = time.monotonic() - started
        found += filter(None, (pages[-1].wrong("", f"kill {random.choice(SIGNALS)}", random.random() * end) for _ in range(tries)))
    for what, count in sorted(counts.items()):
        print(f"{count:7} {what}")
    print(f"{sum(counts.values()):7} of {len(cases)} faults, {tries} signals at random moments, {len(found)} wrong")
    print("\n".join(found[:20]))
    return 1 if found else 0


sys.exit(main())
