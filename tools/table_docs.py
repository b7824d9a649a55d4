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


OPERANDS = {
    "NONE": "",
    "READ_ONLY": "",
    "STRING": "`s_N`",
    "INTEGER": "`N`",
    "VARIABLE": "`l_N`",
    "SYSTEM": "`sys_N`",
    "FIELD": "`s_A, s_B`",
    "PAIR": "`A, B`",
    "LABEL": "label",
    "LABEL_IMMEDIATE": "label`, N`",
    "TEXT": "name",
    "REAL": "number",
}


def instructions():
    lines = ["| Instruction | Number | Operands |", "|---|---|---|"]
    for row in rows("src/backend/opcodes.def", "OPCODE"):
        _, number, mnemonic, form = row[:4]
        if form != "ENGINE":
            lines.append(f"| `{c_text(mnemonic)}` | {number} | {OPERANDS[form]} |")
    return lines


def tags():
    attributes = {}
    for kind in ("ATTRIBUTE", "ATTRIBUTE_KEY"):
        for row in rows("src/frontend/attributes.def", kind):
            attributes.setdefault(row[0], []).append(c_text(row[-1]).upper())
    routes = {}
    text = (ROOT / "src/compiler/attribute_routes.h").read_text(encoding="utf-8")
    for tag, attribute in re.findall(r"\{Tag::(\w+), Attribute::(\w+),", text):
        routes.setdefault(tag, []).append("/".join(attributes[attribute]))
    routes["Tarn"].append("the name of a tag and `_ERROR`")
    keys = {row[0]: [f"`{c_text(row[2])}`"] for row in rows("src/frontend/tags.def", "TAG")}
    for tag, key, *_ in rows("src/frontend/tags.def", "TAG_KEY"):
        keys[tag].append(f"`{c_text(key)}`")
    del keys["Expression"]  # the scanner knows the word, and the compiler refuses it
    lines = ["| Tag | Attributes |", "|---|---|"]
    for tag, spellings in keys.items():
        lines.append(f"| {'/'.join(spellings)} | {', '.join(routes.get(tag, []))} |")
    return lines


def operators():
    by_priority = {}
    for name, _, key, priority, operands, *_ in rows("src/frontend/operators.def", "OPERATOR"):
        if name not in ("CALL", "COMMA", "CLOSE_BRACKET", "FMT", "SUBSTR"):
            by_priority.setdefault((int(priority), operands), []).append(f"`{c_text(key)}`")
    lines = ["| Priority | Operands | Operators |", "|---|---|---|"]
    for (priority, operands), keys in sorted(by_priority.items(), reverse=True):
        lines.append(f"| {priority} | {operands} | {' '.join(keys)} |")
    return lines


def c_interface():
    families = {}
    for result, name in rows("src/extension/c_interface.def", "STUB"):
        family, member = name.split("_", 1)
        families.setdefault(family, []).append(f"`{member}`" + (" -" if result == "void" else ""))
    lines = ["| Family | Names, behind the family and `_` |", "|---|---|"]
    return lines + [f"| `{family}` | {', '.join(names)} |" for family, names in families.items()]


TABLES = {
    "c_interface": c_interface,
    "instructions": instructions,
    "operators": operators,
    "tags": tags,
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
