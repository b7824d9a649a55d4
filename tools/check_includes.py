#!/usr/bin/env python3
"""check_includes.py [SOURCE-DIR]: checks who includes whom under src/ against the ranks below.

A header includes headers of its own rank or a lower one, and no circle of headers exists. A source includes up to the
rank of the highest header of its own folder that it includes; the few that reach higher are listed. docs/architecture.md
tells what the ranks are for.
"""

import pathlib
import re
import sys

# The rank of a folder's headers, and of those headers that stand elsewhere.
FOLDERS = {
    "core": 0,
    "value": 1,
    "files": 1,
    "backend": 1,
    "extension": 2,
    "image": 2,
    "network": 2,
    "frontend": 2,
    "app": 3,
    "compiler": 3,
}
HEADERS = {
    "app/tarn_application.h": 1,
    "app/config.h": 1,
    "app/diagnostics.h": 1,
    "app/console_application.h": 2,
    "app/unix_compiler_application.h": 6,
    "frontend/parser_types.h": 1,
    "frontend/parser.h": 3,
    "frontend/attribute_value.h": 3,
    "frontend/attribute_value_array.h": 3,
    "compiler/labels.h": 1,
    "compiler/compiler_parser.h": 4,
    "compiler/filter_parser.h": 4,
    "compiler/block_tables.h": 4,
    "compiler/loop_code.h": 4,
    "backend/opcode_queue.h": 2,
    "backend/file_compiler_parser.h": 5,
    "backend/silent_compiler_parser.h": 5,
    "backend/doxygen_compiler_parser.h": 5,
    "backend/coverage_compiler_parser.h": 5,
}

# Sources that reach above their own folder's headers, each for a circle that the classes make among themselves.
REACHING_UP = {
    "app/compiler_application.cpp",
    "backend/opcode_queue.cpp",
    "core/javascript_text.cpp",
    "core/link_buffer.cpp",
    "core/number_text.cpp",
    "core/text_encoders.cpp",
    "frontend/attribute_value.cpp",
    "frontend/filter_value.cpp",
    "value/cloned_variable_hash.cpp",
    "value/user_variable_hash.cpp",
    "value/variable_hash.cpp",
    "value/variable_hash_image.cpp",
}

INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def rank(header):
    return HEADERS.get(header, FOLDERS[header.split("/")[0]])


def read_includes(root):
    """Own headers by file, less the row files (.def), which have no rank."""
    includes = {}
    for path in sorted([*root.rglob("*.h"), *root.rglob("*.cpp")]):
        name = path.relative_to(root).as_posix()
        text = path.read_text(encoding="utf-8")
        includes[name] = [header for header in INCLUDE.findall(text) if header.endswith(".h")]
    return includes


def find_circle(includes):
    """A circle of headers as a list, or None."""
    finished = set()

    def visit(header, path):
        if header in path:
            return [*path[path.index(header):], header]
        if header in finished:
            return None
        for included in includes.get(header, []):
            circle = visit(included, [*path, header])
            if circle:
                return circle
        finished.add(header)
        return None

    for header in includes:
        circle = header.endswith(".h") and visit(header, [])
        if circle:
            return circle
    return None


def check(includes):
    faults = []
    reaching = set()
    for name, included in includes.items():
        for header in included:
            if header not in includes:
                faults.append(f"{name}: no header {header}")
        known = [header for header in included if header in includes]
        is_header = name.endswith(".h")
        folder = name.split("/")[0] + "/"
        limit = rank(name) if is_header else max((rank(h) for h in known if h.startswith(folder)), default=0)
        above = [header for header in known if rank(header) > limit]
        if above and not is_header:
            reaching.add(name)
        if above and name not in REACHING_UP and name != "app/main.cpp":
            faults += [f"{name} (rank {limit}) includes {header} (rank {rank(header)})" for header in above]
    faults += [f"{name} is listed as reaching up, and doesn't" for name in sorted(REACHING_UP - reaching)]
    faults += [f"{name} is listed, and doesn't exist" for name in sorted(HEADERS.keys() - includes.keys())]
    circle = find_circle(includes)
    if circle:
        faults.append("circle: " + " -> ".join(circle))
    return faults


def main():
    default = pathlib.Path(__file__).resolve().parent.parent / "src"
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else default
    faults = check(read_includes(root))
    print("\n".join(faults) or "includes are in order")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
