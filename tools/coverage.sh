#!/usr/bin/env bash
# coverage.sh: builds with the preset coverage, runs all tests, and prints which share of the lines and branches of src/ they
# reach; tools/coverage.py tells how it counts. Takes Clang and the LLVM tools of its version.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
cmake --preset coverage --log-level=WARNING
cmake --build --preset coverage
profiles=$PWD/build/coverage/profiles
rm -rf "$profiles"
LLVM_PROFILE_FILE="$profiles/%4m.profraw" ctest --preset coverage --parallel "$(nproc)" ||
    echo "what counts the calls or the bytes of a process fails when it is instrumented" >&2
"$(clang++ -print-prog-name=llvm-profdata)" merge -o "$profiles/all.profdata" "$profiles"/*.profraw
mapfile -t programs < <(find build/coverage/tests -type f -executable \( -name '*_test' -o -name '*_fuzz' \))
tools/coverage.py "$(clang++ -print-prog-name=llvm-cov)" "$profiles/all.profdata" build/coverage/tnc "${programs[@]}"
