#!/usr/bin/env bash
# coverage.sh: builds with the preset coverage, runs all tests, and prints which share of the lines and branches of src/ they
# reach, by gcovr. Branches that only an exception takes, and those that the compiler knows to be unreachable, don't count.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
cmake --preset coverage --log-level=WARNING
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage --parallel "$(nproc)"
gcovr --root . --object-directory build/coverage --filter src/ --exclude-throw-branches --exclude-unreachable-branches \
    --gcov-ignore-parse-errors -j "$(nproc)" --print-summary --fail-under-line 96 "$@"
