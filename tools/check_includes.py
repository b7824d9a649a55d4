#!/usr/bin/env python3
"""check_includes.py [SOURCE-DIR]: checks who includes whom under src/ against the ranks below.

A header has the rank of the folder that it stands in. It includes headers of its own rank or a lower one, and no circle
of headers exists. A source includes up to the rank of its own folder; the few that reach higher are listed, each with
its reason. docs/architecture.md tells what the ranks are for.
"""

import pathlib
import re
import sys

RANKS = {
    "core": 0,
    "app/services": 1,
    "backend/instructions": 1,
    "backend/outputs": 1,
    "files": 1,
    "value": 1,
    "backend/queue": 2,
    "extension": 2,
    "frontend/scanner": 2,
    "image": 2,
    "network": 2,
    "app/driver": 3,
    "compiler/records": 3,
    "frontend/values": 3,
    "compiler/generator": 4,
    "backend/writers": 5,
}

# Each for a circle that the classes make among themselves.
REACHING_UP = {
    "app/driver/compiler_application.cpp": "makes the parser of the chosen back end",
    "backend/queue/opcode_queue.cpp": "hands instructions to the back end, which is a parser",
    "core/javascript_text.cpp": "defines an encoder that is a static member of the application",
    "core/link_buffer.cpp": "appends variables, and writes itself to an output",
    "core/number_text.cpp": "defines the conversions, which are static members of the application",
    "core/text_encoders.cpp": "defines encoders that are static members of the application",
    "frontend/scanner/parser.cpp": "reports to the application",
    "frontend/values/attribute_value.cpp": "writes its code by the generator",
    "frontend/values/filter_value.cpp": "compiles a filter by a parser of its own",
    "value/cloned_variable_hash.cpp": "copies the dictionary, which is the image's",
    "value/user_variable_hash.cpp": "makes and frees a dictionary, which is the image's",
    "value/variable_hash.cpp": "reads names from the dictionary, which is the image's",
    "value/variable_hash_image.cpp": "is persisted in a section of the image",
}

INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def rank(name):
    return RANKS[name.rpartition("/")[0]]


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
        faults += [f"{name}: no header {header}" for header in included if header not in includes]
        above = [header for header in included if header in includes and rank(header) > rank(name)]
        if above and name in REACHING_UP:
            reaching.add(name)
        elif above:
            faults += [f"{name} (rank {rank(name)}) includes {header} (rank {rank(header)})" for header in above]
    faults += [f"{name} is listed as reaching up, and doesn't" for name in sorted(REACHING_UP.keys() - reaching)]
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
