#!/usr/bin/env python3
"""hardening_test.py TNC FORTIFIED: looks at the built file for what the build promises of it."""

import subprocess
import sys
import unittest

TNC, IS_FORTIFIED = sys.argv.pop(1), sys.argv.pop(1) == "1"


def read(*options):
    return subprocess.run(["readelf", "-W", *options, TNC], capture_output=True, text=True, check=True).stdout


class Hardening(unittest.TestCase):
    def test_nothing_but_data_can_be_written_and_no_data_run(self):
        segments = [line.split() for line in read("--program-headers").splitlines()]
        self.assertTrue(any(words[:1] == ["GNU_RELRO"] for words in segments))
        self.assertEqual([words for words in segments if "RWE" in words], [])
        self.assertTrue(any(words[:1] == ["GNU_STACK"] and "RW" in words for words in segments))

    def test_symbols_are_bound_at_the_start(self):
        self.assertRegex(read("--dynamic"), r"FLAGS.*NOW")

    def test_stack_and_buffers_are_watched(self):
        symbols = read("--dyn-syms")
        self.assertIn("__stack_chk_fail", symbols)
        self.assertEqual("__printf_chk" in symbols, IS_FORTIFIED)


unittest.main()
