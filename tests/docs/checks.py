"""What the tests of the documents share."""

import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
failures = []


def expect(where, found, expected):
    if found != expected:
        failures.append(f"{where}:\n--- found\n{found}\n--- instead of\n{expected}")


def run(folder, *words):
    """Exit status, and what was said."""
    done = subprocess.run(words, cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.returncode, done.stdout


def finish(missing=()):
    print("\n".join(failures or ["skipped for want of " + name for name in missing] or ["all agree"]))
    sys.exit(1 if failures else 77 if missing else 0)
