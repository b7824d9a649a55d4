#!/usr/bin/env python3
"""limits.py TNC [SHARE]: pages at the limits, and what they take. Each is compiled at a tenth of its count and at the count, on a
stack of 8 MiB and of 256 KiB; the processor time of an item must not grow, nor the memory pass what the row allows. SHARE, as in
0.01, makes the counts smaller where memory isn't judged; the measured times then have less to say and may grow more."""

import itertools
import os
import resource
import subprocess
import sys
import tempfile

TNC = os.path.abspath(sys.argv[1])
SHARE = float(sys.argv[2]) if len(sys.argv) > 2 else 1
GROWTH = 1.5 if SHARE >= 1 else 2.5
SECONDS_OF_NOTICE = 0.05  # what takes less is not judged by its growth
STACKS = (8 << 20, 256 << 10)
FUNCTION = '<TnFUNCTION NAME="f" PARAMETERS="a"></TnFUNCTION>'
ARRAY_FUNCTIONS = "".join(f'<TnFUNCTION NAME="tarn_array_{name}" PARAMETERS="{parameters}"></TnFUNCTION>' for name, parameters in
                          (("min", "a var"), ("max", "a var"), ("next", "a var, i")))
BLOCKS = {"TnIF": 'EXPR="{l.a}"', "TnWHILE": 'EXPR="{l.a}"', "TnFOR": 'INDEX="l.i" COUNT="3"',
          "TnFOREACH": 'ITERATOR="l.i" ARRAY="l.a"', "TnLOCKFILE": 'FILE="f"', "TnCAPTURE": 'VARIABLE="l.a"',
          "TnIMPORT": 'FILE="f" FIELDS="a" DELIMITER=","', "TnPOP": 'MAILHOST="a" LOGIN="b" PASSWORD="c" DIRECTORY="d"',
          "TnCOMMERCE": 'METHOD="m" ACTION="a" FIELDS="f"', "TnCALL": 'ACTION="a" METHOD="m"'}


def nested(before, middle, behind):
    return lambda n: [before * n, middle, behind * n]


def expression(before, middle, behind, start=""):
    return lambda n: [start, '<TnEVAL EXPR="{ ', before * n, middle, behind * n, ' }">']


def each(pattern, start=""):
    return lambda n: itertools.chain([start], (pattern.format(i) for i in range(n)))


def run_of(text):
    return lambda n: itertools.repeat(text, n // len(text))


def includes(n):
    for i in range(1, n + 1):
        with open(f"{i}.tn", "w") as file:
            file.write(f'<TnINCLUDE FILE="{i + 1}.tn">' if i < n else "end")
    return ['<TnINCLUDE FILE="1.tn">']


DEEP, MANY, LONG = 10**5, 10**6, 10**9
ROWS = [  # name, count, page, bytes an item may take beside 6 MB, where that is promised
    ("parentheses", DEEP, expression("(", "l.a", ")"), None),
    ("nested calls", DEEP, expression("f(", "l.a", ")", FUNCTION), None),
    ("nested calls", MANY, expression("f(", "l.a", ")", FUNCTION), 250),
    ("nested inline calls", DEEP, expression("[l.f].g(", "l.a", ")"), None),
    ("nested inline calls", MANY, expression("[l.f].g(", "l.a", ")"), 400),
    ("brackets", DEEP, expression("l.a[", "1", "]"), None),
    ("brackets of calls", DEEP, expression("[l.f].g(l.a[", "1", "])"), None),
    ("member chain", DEEP, expression("", "l.a", ":b"), None),
    ("includes", DEEP, includes, None),
    ("else-if chain", DEEP, lambda n: ['<TnIF EXPR="{l.a}">', '<TnELSEIF EXPR="{l.b}">' * n, "</TnIF>"], None),
    *((tag, DEEP, nested(f"<{tag} {attributes}>", ARRAY_FUNCTIONS, f"</{tag}>"), None) for tag, attributes in BLOCKS.items()),
    ("distinct strings", MANY, each("text {}<b>"), None),
    ("variables", MANY, each('<TnEVAL EXPR="{{ l.v{} }}">'), None),
    ("functions", MANY, each('<TnFUNCTION NAME="f{}"></TnFUNCTION>\n'), None),
    ("calls", MANY, each('<TnEVAL EXPR="{{ f({}) }}">', FUNCTION), None),
    ("bytes in one run", LONG, run_of("words and a line\n"), None),
    ("bytes in one line", LONG, run_of("words <b>in</b> tags "), None),
    ("tags", 10**7, lambda n: itertools.repeat('<TnHIDE FIELDS="a">', n), None),
]


def compile_page(stack):
    """Processor seconds and peak bytes of one run, which must succeed, with few descriptors."""
    limit = lambda: [resource.setrlimit(*pair) for pair in ((resource.RLIMIT_STACK, (stack, stack)), (resource.RLIMIT_NOFILE, (16, 16)))]
    with open("errors", "w+") as errors:
        run = subprocess.Popen([TNC, "-w", "all", "page.tn"], stderr=errors, preexec_fn=limit)
        _, status, usage = os.wait4(run.pid, 0)
        run.returncode = os.waitstatus_to_exitcode(status)
        errors.seek(0)
        text = errors.readline()
    return run.returncode, text, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def measure(page, count):
    with open("page.tn", "w") as file:
        file.writelines(page(count))
    return [compile_page(stack) for stack in STACKS]


def main():
    bad = 0
    print(f"{'':20} {'count':>11} {'seconds':>8} {'growth':>7} {'bytes each':>10}")
    for name, count, page, allowed in ROWS:
        count = max(int(count * SHARE), DEEP if allowed else 0)
        small, large = measure(page, count // 10), measure(page, count)
        seconds, before = (min(result[2] for result in results) for results in (large, small))
        growth = seconds / max(before, SECONDS_OF_NOTICE / 10) / 10
        each_takes = (max(result[3] for result in large) - 6e6) / count
        faults = [f"{status} {errors}" for status, errors, *_ in small + large if status != 0]
        if growth > GROWTH and seconds > SECONDS_OF_NOTICE:
            faults.append("takes more than its share of time")
        if allowed and each_takes > allowed:
            faults.append(f"takes more than {allowed} bytes each")
        print(f"{name:20} {count:11} {seconds:8.2f} {growth:7.2f} {each_takes:10.1f}", *faults[:1], flush=True)
        bad += bool(faults)
    return 1 if bad else 0


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    sys.exit(main())
