#!/usr/bin/env python3
"""hardening_test.py TNC FORTIFIED: looks at the built file for what the build promises of it."""

import re
import subprocess
import sys

TNC, IS_FORTIFIED = sys.argv[1], sys.argv[2] == "1"


def read(*options):
    return subprocess.run(["readelf", "-W", *options, TNC], capture_output=True, text=True, check=True).stdout


segments, dynamic, symbols = read("--program-headers"), read("--dynamic"), read("--dyn-syms")
assert "GNU_RELRO" in segments and "RWE" not in segments and re.search("GNU_STACK.* RW ", segments), segments
assert re.search("FLAGS.*NOW", dynamic), "symbols are not bound at the start"
assert not re.search("NEEDED.*(ssl|crypto|tls)", dynamic), "TLS comes from the application that has it; the compiler has none"
assert "__stack_chk_fail" in symbols and ("__printf_chk" in symbols) == IS_FORTIFIED, "stack and buffers are not watched"
