#!/usr/bin/env python3
"""table_docs.py [--check]: writes the tables of docs/ from the tables of the sources. With --check it writes nothing, and
fails where a document and its source differ.

In a document, a table stands between the lines "<!-- table: NAME -->" and "<!-- end of table -->".
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MARKED = re.compile(r"(<!-- table: (\w+) -->\n).*?(<!-- end of table -->)", re.DOTALL)


def rows(path, macro):
    """The arguments of each use of a macro in a .def file, as they are written."""
    text = (ROOT / path).read_text(encoding="utf-8")
    text = re.sub(r"^\s*//.*$", "", text, flags=re.MULTILINE)
    argument = r'\s*("(?:[^"\\]|\\.)*"|[^,()"]*)\s*'
    use = re.compile(rf"^{macro}\(((?:{argument},)*{argument})\)", re.MULTILINE)
    return [[a for a in re.findall(r'"(?:[^"\\]|\\.)*"|[^,\s]+', found[1])] for found in use.finditer(text)]


def cell(text):
    return text.replace("|", "\\|")


def c_text(literal):
    return literal[1:-1].replace('\\"', '"').replace("\\\\", "\\")


def diagnostics(first, last):
    prefix = "CW_" if last < 100 else "CE_"
    lines = ["| Number | Text |", "|---|---|"]
    for _, number, text in rows("src/app/messages.def", "MESSAGE"):
        if first <= int(number) <= last:
            lines.append(f"| {prefix}{number} | `{cell(c_text(text))}` |")
    return lines


TABLES = {
    "warnings": lambda: diagnostics(1, 99),
    "errors": lambda: diagnostics(100, 999),
}


def filled(document):
    def fill(match):
        return match[1] + "\n" + "\n".join(TABLES[match[2]]()) + "\n\n" + match[3]

    return MARKED.sub(fill, document)


def main():
    stale = []
    for path in sorted((ROOT / "docs").glob("*.md")):
        document = path.read_text(encoding="utf-8")
        written = filled(document)
        if written == document:
            continue
        if "--check" in sys.argv[1:]:
            stale.append(f"{path.relative_to(ROOT)}: run tools/table_docs.py")
        else:
            path.write_text(written, encoding="utf-8")
    print("\n".join(stale) or "the tables of docs/ are those of the sources")
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
