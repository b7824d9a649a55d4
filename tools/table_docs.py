#!/usr/bin/env python3
"""table_docs.py [--check]: writes the tables of the documents, the man page, the completions and the demo from the tables of
the sources. With --check it writes nothing, and fails where one of them differs.

A table stands between a line "table: NAME" and a line "end of table", each in a comment of the file's own form: <!-- -->, .\\" or #.
A tag's table of attributes has columns of its own behind those from the sources: they are kept, and must be filled.
"""

import re
import sys
import textwrap

from source_tables import (
    ROOT,
    c_interface,
    causes,
    c_text,
    element,
    engines,
    file_versions,
    keyword_lists,
    message_name,
    messages,
    options,
    pedantic_words,
    routes,
    rows,
    tag_keys,
)

FILES = ("README.md", "docs/*.md", "man/*.1", "completion/*", "demo")
MARKED = re.compile(
    r'^((?:<!--|\.\\"|#) table: (\w+) ?(\S*)(?: -->)?\n)(.*?)(^(?:<!--|\.\\"|#) end of table(?: -->)?\n)',
    re.DOTALL | re.MULTILINE,
)
UNFILLED = "TO BE TOLD"
ENGINE = re.compile(r"(?:engine|engine of|older than|above|below|from|up to|4\.0 to) (\d+\.\d+)")


def cell(text):
    return text.replace("|", "\\|")


def markdown(header, lines):
    """Rows as a table; blank lines stand around it."""
    shown = ["| " + " | ".join(row) + " |" for row in (header, *lines)]
    return ["", shown[0], "|" + "---|" * len(header), *shown[1:], ""]


def diagnostics(first, last):
    told = causes()
    lines = []
    for number, texts in messages().items():
        if first <= number <= last:
            lines.append([message_name(number), "<br>".join(f"`{cell(text)}`" for text in texts), *map(cell, told[number])])
    return markdown(["Number", "Text", "Cause", "Cure"], lines)


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
    opcodes = [row[1:4] for row in rows("opcodes.def", "OPCODE") if row[3] != "ENGINE"]
    lines = [[f"`{c_text(mnemonic)}`", number, OPERANDS[form]] for number, mnemonic, form in opcodes]
    return markdown(["Instruction", "Number", "Operands"], lines)


def shown_tag(key):
    """TnIF for tnif."""
    return "Tn" + key[2:].upper() if key.startswith("tn") else key.upper()


def tags():
    lines = []
    for tag, keys in tag_keys().items():
        names = ["/".join(spellings) for spellings, _, _ in routes().get(tag, [])]
        if tag == "Tarn":
            names.append("the name of a tag and `_ERROR`")
        anchor = shown_tag(keys[0]).lower()
        shown = "/".join(f"[{shown_tag(key)}](tags.md#{anchor})" for key in keys)
        lines.append([shown, ", ".join(names)])
    return markdown(["Tag", "Attributes"], lines)


def wiping_tags():
    """Those that reset the ID of an open TnLOCALIZED."""
    id_element = element("Localized", "Id")
    slots = {row[0]: [int(n) for n in row[-2:] if n.isdigit()] for row in rows("tags.def", "TAG")}
    return ["", ", ".join(shown_tag(keys[0]) for tag, keys in tag_keys().items() if sum(slots[tag]) > id_element) + ".", ""]


TEXT_OR_EXPRESSION = "text or expression"
VARIABLE_OR_NAME = "variable, or expression that gives its name"
WITH_EXPRESSION = {
    "Constant": TEXT_OR_EXPRESSION,
    "Target_Variable": VARIABLE_OR_NAME,
    "Whole_Name": "name, or expression that gives it",
    "Index": "positive number or expression",
    "Member": "name or expression",
    "Variable_Name": VARIABLE_OR_NAME,
    "Reference_Name": "variable or expression",
    "Positive_Number": "positive number or expression",
    "Text": TEXT_OR_EXPRESSION,
    "Dynamic_Text": "expression, kept as text",
    "Certificate_Type": "`pem` or `asn1`, or expression",
    "Row_Position": "number, `top` or `bottom`, or expression",
    "Array_Index": "positive number or expression",
    "Array_Member": "name or expression",
    "Localized_Level": "words; an expression has no effect",
}
WITHOUT_EXPRESSION = {
    "Constant_No_Element": "text",
    "Directive_Text": "text",
    "Constant_Flag": "none, or any text",
    "Flag": "none, or any text",
    "Copy_Flag": "none, or any text",
    "Include_Interpret": "`on` or `off`",
    "Output_Level": "words",
    "Capture_Level": "words",
    "Error_Level": "words",
    "Interpret": "words",
    "Ident": "text",
}


def attributes(name, old):
    tag = next(tag for tag, keys in tag_keys().items() if name.lower() in keys)
    told = told_columns(old)
    lines = []
    for spellings, convert, is_refused in routes()[tag]:
        key = "`" + "`, `".join(spellings) + "`"
        refusal = "an expression is refused" if is_refused else "an expression is lost"
        value = WITH_EXPRESSION.get(convert) or f"{WITHOUT_EXPRESSION[convert]}; {refusal}"
        lines.append([key, value, *told.get(key, ["", UNFILLED, UNFILLED])[1:]])
    return markdown(["Attribute", "Value", "Needed", "Meaning"], lines)


def told_columns(old):
    """The columns of a table's rows behind the first, by the first."""
    return {row[0]: row[1:] for row in (re.split(r" \| ", line.strip("| ")) for line in old)}


def words(name, old):
    told = told_columns(old)
    lines = []
    for word, has_effect in keyword_lists()[name]:
        meaning = told.get(f"`{word}`", [UNFILLED]) if has_effect else ["none; CW_51 says so where `-W 51` is given"]
        lines.append([f"`{word}`", *meaning])
    return markdown(["Word", "Meaning"], lines)


def versions(_, old):
    told = told_columns(old)
    lines = [[f"`1.{minor}`", engine, *told.get(f"`1.{minor}`", ["", UNFILLED])[1:]] for minor, engine in file_versions().items()]
    return markdown(["File version", "First engine", "Demanded by"], lines)


def user_operators():
    """Of the table, what a page may use: (key, priority, operands, type, opcode)."""
    hidden = ("CALL", "COMMA", "CLOSE_BRACKET", "FMT", "SUBSTR")
    return [(c_text(key), *rest) for name, _, key, *rest in rows("operators.def", "OPERATOR") if name not in hidden]


def operators():
    by_priority = {}
    for key, priority, operands, *_ in user_operators():
        by_priority.setdefault((int(priority), operands), []).append(f"`{key}`")
    lines = [[str(p), operands, " ".join(keys)] for (p, operands), keys in sorted(by_priority.items(), reverse=True)]
    return markdown(["Priority", "Operands", "Operators"], lines)


CONSTANTS = {"NUMERIC": "numbers", "STRING": "texts", "BOOLEAN": "any", "NONE": "any"}


def operator(key, _):
    priority, operands, constants, opcode = next(row[1:] for row in user_operators() if row[0] == key)
    mnemonics = {row[0]: c_text(row[2]) for row in rows("opcodes.def", "OPCODE")}
    shown = f"`{mnemonics[opcode]}`" if opcode != "NONE" else "see below"
    return markdown(["Priority", "Operands", "Constants", "Instruction"], [[priority, operands, CONSTANTS[constants], shown]])


def c_names():
    lines = []
    for family, members in c_interface().items():
        names = (f"`{member}`" + (" -" if result == "void" else "") for member, result in members)
        lines.append([f"`{family}`", ", ".join(names)])
    return markdown(["Family", "Names, behind the family and `_`"], lines)


def roff(text):
    """Text for the man page: a sentence begins its line, and lines are short."""
    text = text.replace("\\", "\\e").replace('"', "\\(dq").replace("'", "\\(aq").replace("-", "\\-")
    lines = [line for sentence in re.split(r"(?<=[.:;]) +(?=[A-Z])", text) for line in textwrap.wrap(sentence, 78)]
    return "\n".join("\\&" + line if line[0] in ".\"" else line for line in lines)


def manual_diagnostics(first, last):
    lines = []
    told = causes()
    for number, texts in messages().items():
        if first <= number <= last:
            lines.append(f".It Sy {message_name(number)}")
            lines.append("\n.br\n".join(map(roff, texts)))
            cause, cure = (re.sub(r"\[(.*?)\]\(.*?\)", r"\1", text).replace("`", "") for text in told[number])
            lines += [".br", ".Em Cause :", roff(cause), ".br", ".Em Cure :", roff(cure)]
    return lines


def manual_synopsis():
    """Letters without a value first, then one line for each other; capitals ahead of small letters."""
    with_value = sorted((name, value) for name, value, _ in options() if value and len(name) == 1)
    plain = "".join(sorted(name for name, value, _ in options() if not value and len(name) == 1))
    return [f".Op Fl {plain}", *(f".Op Fl {name} Ar {value.strip('<>')}" for name, value in with_value)]


def warning_numbers():
    return " ".join(str(number) for number in messages() if number < 100)


def letters(wanted):
    return "".join(name for name, value, _ in options() if len(name) == 1 and wanted(value))


def shell_words():
    return [
        f"_tnc_letters='{letters(lambda value: True)}'",
        f"_tnc_with_value='{letters(lambda value: value)}'",
        "_tnc_long='" + " ".join("--" + name for name, *_ in options() if len(name) > 1) + "'",
        f"_tnc_warnings='all {warning_numbers()}'",
        f"_tnc_levels='all {' '.join(pedantic_words())}'",
    ]


ZSH_VALUES = {
    "<file>": "file:_files",
    "<warning>": "warning:_tnc_warnings",
    "<version>": "engine version: ",
    "<level>": "level:_tnc_levels",
    "<token>": "name: ",
    "<bytes>": "bytes: ",
}
NOT_REPEATED = "oCOdLfFA"


def zsh_options():
    lines = []
    for name, value, text in options():
        if len(name) > 1:
            lines.append(f"    '(- *)--{name}[{text}]'")
            continue
        action = "library:_files -g \"*.so(-.)\"" if name == "b" else value and ZSH_VALUES[value]
        repeated = "" if name in NOT_REPEATED else "*"
        lines.append(f"    '{repeated}-{name}[{text}]" + (f":{action}'" if action else "'"))
    return lines


def zsh_words():
    return [f"_tnc_warning_words=(all {warning_numbers()})", f"_tnc_level_words=(all {' '.join(pedantic_words())})"]


FISH_VALUES = {
    "<file>": "-rF",
    "<warning>": f"-xa '(__tnc_list all {{warnings}})'",
    "<level>": f"-xa '(__tnc_list all {{levels}})'",
    "<version>": "-x",
    "<token>": "-x",
    "<bytes>": "-x",
}


def fish_options():
    lines = []
    for name, value, text in options():
        text = text.replace("'", "\\'")
        if len(name) > 1:
            lines.append(f"complete -c tnc -l {name} -f -d '{text}'")
            continue
        action = "-xka '(__tnc_libraries)'" if name == "b" else value and FISH_VALUES[value]
        action = (action or "").format(warnings=warning_numbers(), levels=" ".join(pedantic_words()))
        lines.append(f"complete -c tnc -s {name} {action}".rstrip() + f" -d '{text}'")
    return lines


TABLES = {
    "c_interface": c_names,
    "instructions": instructions,
    "operators": operators,
    "tags": tags,
    "wiping_tags": wiping_tags,
    "warnings": lambda: diagnostics(1, 99),
    "errors": lambda: diagnostics(100, 999),
    "manual_synopsis": manual_synopsis,
    "manual_warnings": lambda: manual_diagnostics(1, 99),
    "manual_errors": lambda: manual_diagnostics(100, 999),
    "shell_words": shell_words,
    "value_letters": lambda: [f"with_value={letters(lambda value: value)}"],
    "zsh_options": zsh_options,
    "zsh_words": zsh_words,
    "fish_options": fish_options,
}
TABLES_OF_ONE = {"attributes": attributes, "words": words, "operator": operator, "versions": versions}


def filled(text):
    def fill(match):
        opening, name, argument, old, closing = match.groups()
        if name in TABLES_OF_ONE:
            old_rows = [line for line in old.splitlines() if line.startswith("| `")]
            lines = TABLES_OF_ONE[name](argument, old_rows)
        else:
            lines = TABLES[name]()
        return opening + "".join(line + "\n" for line in lines) + closing

    return MARKED.sub(fill, text)


def main():
    stale = []
    for pattern in FILES:
        for path in sorted(ROOT.glob(pattern)):
            text = path.read_text(encoding="utf-8")
            written = filled(text)
            if written != text:
                stale.append(f"{path.relative_to(ROOT)}: run tools/table_docs.py")
            if UNFILLED in written:
                stale.append(f"{path.relative_to(ROOT)}: a table has rows that are to be filled in")
            for engine in set(ENGINE.findall(written)) - engines():
                stale.append(f"{path.relative_to(ROOT)}: no table knows of engine {engine}")
            if "--check" not in sys.argv[1:]:
                path.write_text(written, encoding="utf-8")
    if "--check" in sys.argv[1:] and stale:
        print("\n".join(stale))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
