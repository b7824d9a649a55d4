"""The tables of the sources, read for what is written from them: documents, the man page, completions.

A file of src/ is found by its name, wherever it stands.
"""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
STRING = r'"(?:[^"\\]|\\.)*"'


def source(name):
    """The text of a source, without comment lines."""
    text = next((ROOT / "src").rglob(name)).read_text(encoding="utf-8")
    return re.sub(r"^\s*//.*$", "", text, flags=re.MULTILINE)


def c_text(literal):
    return literal[1:-1].replace('\\"', '"').replace("\\\\", "\\")


def rows(name, macro):
    """The arguments of each use of a macro in a .def file, as they are written."""
    argument = rf'\s*({STRING}|[^,()"]*)\s*'
    use = re.compile(rf"^{macro}\(((?:{argument},)*{argument})\)", re.MULTILINE)
    return [re.findall(rf"{STRING}|[^,\s]+", found[1]) for found in use.finditer(source(name))]


def messages():
    """The texts of each number, in order: {101: ["Found end of file ...", ...], ...}."""
    texts = {}
    for _, number, text in rows("messages.def", "MESSAGE"):
        texts.setdefault(int(number), []).append(c_text(text))
    return texts


def message_name(number):
    return f"CW_{number}" if number < 100 else f"CE_{number}"


def causes():
    """Cause and cure of each number, from tools/diagnostics.txt: {101: (cause, cure), ...}."""
    found = {}
    text = (ROOT / "tools/diagnostics.txt").read_text(encoding="utf-8")
    for entry in re.split(r"\n\n+", re.sub(r"^#.*\n", "", text, flags=re.MULTILINE).strip()):
        name, *lines = entry.split("\n")
        cause, cure = re.fullmatch(r"Cause: (.*) Cure: (.*)", " ".join(line.strip() for line in lines)).groups()
        found[int(name[3:])] = (cause, cure)
    return found


def options():
    """The options, in the order of the usage text: (letter or long name, name of the value or None, help line)."""
    found = []
    for letter, name, value, text in re.findall(
        rf"\{{'(\\0|\w)', (nullptr|{STRING}), (nullptr|{STRING}), ({STRING}),", source("command_line_options.cpp")
    ):
        shown_value = None if value == "nullptr" else c_text(value)
        found.append((letter if name == "nullptr" else c_text(name), shown_value, c_text(text)))
    return found


def pedantic_words():
    return re.findall(r'\{"(\w+)", PEDANTIC_', source("command_line_options.cpp"))


def tag_keys():
    """The spellings of each tag, in lower case: {"If": ["tnif"], ...}, without the word that the compiler refuses."""
    keys = {row[0]: [c_text(row[2])] for row in rows("tags.def", "TAG")}
    for tag, key, *_ in rows("tags.def", "TAG_KEY"):
        keys[tag].append(c_text(key))
    del keys["Expression"]
    return keys


def attribute_keys():
    keys = {}
    for kind in ("ATTRIBUTE", "ATTRIBUTE_KEY"):
        for row in rows("attributes.def", kind):
            keys.setdefault(row[0], []).append(c_text(row[-1]).upper())
    return keys


def routes():
    """The attributes of each tag: {"If": [(spellings, conversion, is an expression refused), ...], ...}."""
    keys = attribute_keys()
    found = {}
    text = source("attribute_routes.h")
    for tag, attribute, convert, refusal in re.findall(
        r"\{Tag::(\w+), Attribute::(\w+), -?\d+, Convert::(\w+)(?:,\s*Message::(\w+))?\}", text
    ):
        found.setdefault(tag, []).append((keys[attribute], convert, bool(refusal)))
    return found


def element(tag, attribute):
    """The number of the element that takes an attribute's value."""
    return int(re.search(rf"\{{Tag::{tag}, Attribute::{attribute}, (\d+),", source("attribute_routes.h"))[1])


def keyword_lists():
    """The words of each list: {"standard_output": [("html", has it an effect), ...], ...}."""
    text = source("keyword_lists.cpp")
    return {
        name: [(word, rest.count("true") < 2) for word, rest in re.findall(r'\{"(\w+)", ([^}]*)\}', body)]
        for name, body in re.findall(r"(\w+)_entries\[\] = \{(.*?)\n\};", text, re.DOTALL)
    }


def file_versions():
    """The minor file versions that code demands, with the first engine that reads each: {"2": "4.03", ...}."""
    found = {minor: engine for _, minor, engine in rows("engine_version.def", "FILE_VERSION")}
    return {minor: engine for minor, engine in found.items() if int(minor) > 1 and engine != "0"}


def engines():
    """All engines that a table names."""
    features = [row[-1] for kind in ("PROGRAM_VERSION", "ENGINE_FEATURE", "LAST_ENGINE") for row in rows("engine_version.def", kind)]
    return {*file_versions().values(), *features}


def c_interface():
    families = {}
    for result, name in rows("c_interface.def", "STUB"):
        family, member = name.split("_", 1)
        families.setdefault(family, []).append((member, result))
    return families
