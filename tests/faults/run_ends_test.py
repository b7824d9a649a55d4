#!/usr/bin/env python3
"""run_ends_test.py TNC: the ends of a run that it doesn't choose itself, and what they print and leave."""

import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest

TNC = os.path.abspath(sys.argv.pop(1))
WARNING = '<TnEVAL NONE="1" EXPR="{ l.a }">\n'
LARGE_PAGE = WARNING * 8192  # more code, and more diagnostics, than a pipe and the output's buffer hold


class Run_Ends(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chdir(folder.name)
        pathlib.Path("page.tn").write_text(LARGE_PAGE)
        os.mkfifo("pipe")

    def ends(self, command, status, error, output=False, **settings):
        """Runs a shell command, in which tnc is the program, and looks at what it has left."""
        run = subprocess.run(["bash", "-c", f"tnc() {{ (exec -a tnc {TNC} \"$@\"); }}; {command}"],
                             stderr=subprocess.PIPE, text=True, timeout=60, **settings)
        self.assertEqual((run.returncode, run.stderr[:300]), (status, error), command)
        self.assertEqual(os.path.exists("output.tna"), output, command)

    def test_closed_descriptors_are_not_the_outputs(self):
        self.ends("tnc page.tn <&- >&- 2>&-", 0, "", output=True)
        text = pathlib.Path("output.tna").read_text()
        self.assertTrue(text.startswith("\n.string") and "CW_1" not in text, text[:300])

    def test_help_and_version_are_printed_or_fail(self):
        for option in ("--help", "--version"):
            for target in (">/dev/full", ">&-"):
                self.ends(f"tnc {option} {target}", 1, "tnc: Unable to write to standard output\n")

    def test_what_cannot_be_mapped_is_refused(self):
        self.ends("echo Hi | tnc /dev/stdin", 1, "tnc: Unable to open '/dev/stdin': Illegal seek\n")
        self.ends("tnc pipe", 1, "tnc: Unable to open 'pipe': Illegal seek\n")
        self.ends("tnc /dev/zero", 1, "tnc: Unable to open '/dev/zero': Illegal seek\n")
        self.ends("tnc <(echo Hi) 2>&1 | grep -c ': Illegal seek$' >&2", 0, "1\n")
        for interpret in ("on", "off"):
            pathlib.Path("page.tn").write_text(f'<TnINCLUDE FILE="pipe" INTERPRET="{interpret}">')
            self.ends("tnc page.tn", 1,
                      "page.tn:1: CE_186: TnINCLUDE cannot open file 'pipe': Illegal seek\n")
        self.ends("echo Hi >page.tn; tnc /dev/null && tnc /dev/stdin <page.tn", 0, "", output=True)

    def test_write_that_fails_is_told(self):
        self.ends("ulimit -f 8; tnc -w all page.tn", 1, "tnc: Unable to write 'output.tna': File too large\n")
        self.ends("exec 3> >(exec true); wait $!; tnc -w all -o /dev/fd/3 page.tn", 1,
                  "tnc: Unable to write '/dev/fd/3': Broken pipe\n")

    def test_output_whose_name_stays_is_emptied(self):
        self.ends("echo '<TnELSE>' >page.tn; exec 9>file; tnc -o /proc/self/fd/9 page.tn; [ ! -s file ]", 0,
                  "page.tn:1: CE_122: TnELSE without TnIF\n"
                  "tnc: Unable to remove '/proc/self/fd/9': Operation not permitted\n")
        self.ends("tnc -o /dev/stdout page.tn >file; [ -L /dev/stdout -a ! -s file ]", 0,
                  "page.tn:1: CE_122: TnELSE without TnIF\n")

    def test_memory_that_is_missing_ends_the_run_cleanly(self):
        pathlib.Path("page.tn").write_text("".join(f'<TnEVAL EXPR="{{ l.a{i} }}">\n' for i in range(20000)))
        statuses = set()
        for limit in range(5 << 20, 30 << 20, 2 << 20):
            limits = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit))}
            if subprocess.run([TNC, "--version"], capture_output=True, **limits).returncode != 0:
                continue  # the program itself does not fit
            for option in ("-A", "-L", "-d"):
                run = subprocess.run([TNC, option, "page.tn"], capture_output=True, text=True, **limits)
                with self.subTest(option=option, limit=limit):
                    self.assertIn((run.returncode, run.stderr.rpartition(": ")[2]),
                                  [(0, ""), (1, "Cannot allocate memory\n")])
                    self.assertEqual(os.path.exists("output.tna"), run.returncode == 0)
                pathlib.Path("output.tna").unlink(missing_ok=True)
                statuses.add(run.returncode)
        self.assertIn(len(statuses), (0, 2))

    def test_deep_calls_fit_in_little_memory(self):
        depth = 10 ** 5
        for call, megabytes in (("['f'].a(", 84), ("f(", 56)):
            size = megabytes << 20
            limits = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size))}
            pathlib.Path("page.tn").write_text(f'<TnEVAL EXPR="{{{call * depth}1{")" * depth}}}">'
                                               '<TnFUNCTION NAME="f" PARAMETERS="a"></TnFUNCTION>')
            if subprocess.run([TNC, "--version"], capture_output=True, **limits).returncode == 0:
                self.assertEqual(subprocess.run([TNC, "page.tn"], **limits).returncode, 0, call)

    def stalled_run(self):
        """A run that stands still at its diagnostics, with its output open."""
        run = subprocess.Popen(["tnc", "page.tn"], executable=TNC, stderr=subprocess.PIPE, text=True)
        while not os.path.exists("output.tna") or os.path.getsize("output.tna") == 0:
            time.sleep(0.01)
        return run

    def test_signals_remove_the_output(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            run = self.stalled_run()
            os.link("output.tna", "other")
            run.send_signal(number)
            run.communicate()
            self.assertEqual(run.returncode, -number)
            self.assertFalse(os.path.exists("output.tna"))
            self.assertEqual(os.path.getsize("other"), 0)
            os.unlink("other")

    def test_source_that_is_shortened_is_named(self):
        run = self.stalled_run()
        os.truncate("page.tn", 0)
        errors = run.communicate()[1].splitlines()
        self.assertEqual((run.returncode, errors[-1]), (1, "tnc: Unable to read 'page.tn': The file was shortened"))
        self.assertFalse(os.path.exists("output.tna"))


unittest.main()
