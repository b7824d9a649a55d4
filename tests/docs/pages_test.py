#!/usr/bin/env python3
"""pages_test.py TNC EXTENSION: every page in the documents compiles to what is shown for it. CONTRIBUTING.md tells how."""

import concurrent.futures
import itertools
import pathlib
import re
import sys
import tempfile

from checks import ROOT, expect, finish, run
from source_tables import routes, tag_keys
from table_docs import shown_tag, user_operators

FENCE = re.compile(r"^( *)```(\w+)(.*)\n((?:.*\n)*?)\1```$", re.MULTILINE)
TNC, LIBRARY = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:3])


def check_page(where, folder, name, words, page, told):
    if "/" in name:
        page += "\n"
        expect(where, (ROOT / name).read_text(), page)
    name = pathlib.Path(name).name
    pathlib.Path(folder, name).write_text(page)
    if "part" in words:
        return
    said = "".join(text for kind, _, text in told if kind == "err")
    expect(where, run(folder, TNC, "-o", "out.tna", *words, name), (int("CE_" in said or "tnc: " in said), said))
    for _, options, text in (fence for fence in told if fence[0] == "tna"):
        first = next(word for word in [*words, name] if word.endswith(".tn"))
        frame = f'\n.string\ts_0\t"{first}"\n\tsourcefile\ts_0\n{text}; end of compiled file\n'
        expect(where, pathlib.Path(folder, "out.tna").read_text(), text if "whole" in options else frame)


def check_document(path, folder):
    text = path.read_text()
    fences = [(m[2], m[3].split(), re.sub(f"^{m[1]}", "", m[4], flags=re.MULTILINE)) for m in FENCE.finditer(text)]
    expect(f"{path.name}, fences without a word", len(re.findall(r"^ *```", text, re.MULTILINE)), 2 * len(fences))
    expect(f"{path.name}, blocks without a fence", re.findall(r"\n\n(    .*)", FENCE.sub("", text)), [])
    for number, (kind, words, body) in enumerate(fences):
        told = list(itertools.takewhile(lambda fence: fence[0] in ("tna", "err"), fences[number + 1 :]))
        if kind == "sh":
            expect(path.name, run(folder, "bash", "-nc", body), (0, ""))
        if kind == "tn":
            name = words.pop(0) if words and "." in words[0] else "page.tn"
            check_page(f"{path.name}: {name}\n{body}", folder, name, words, body[:-1], told)
    for link in re.findall(r"\]\(([^):#]+)(?:#[\w-]+)?\)", text):
        expect(f"{path.name}, link {link}", (path.parent / link).exists(), True)


def check_needs(tag, section, folder):
    """What a table says is needed, or not, is so: the section's first page without it fails, or compiles."""
    pages = [(m[3].split(), m[4]) for m in FENCE.finditer(section) if m[2] == "tn"]
    for words, part in (page for page in pages if "part" in page[0]):
        pathlib.Path(folder, words[0]).write_text(part)
    words, page = next(page for page in pages if "part" not in page[0])
    for names, needed in re.findall(r"^\| (`.*?) \| .*? \| (yes|no) \|", section, re.MULTILINE):
        attribute = rf"(<{tag}\b[^>]*?) (?:{'|'.join(re.findall(r'[A-Z_-]+', names))})(?:=\"[^\"]*\"|(?=>))"
        pathlib.Path(folder, "page.tn").write_text(re.sub(attribute, r"\1", page, count=1, flags=re.IGNORECASE))
        expect(f"{tag} without {names}", run(folder, TNC, *words, "page.tn")[0], int(needed == "yes"))


def in_folder(check, *arguments):
    with tempfile.TemporaryDirectory() as work:
        pathlib.Path(work, "array_functions.so").symlink_to(LIBRARY)
        check(*arguments, work)


def sections(name):
    text = (ROOT / "docs" / name).read_text()
    return dict(re.findall(r"^### (\S+).*\n((?:(?!##).*\n)*)", text, re.MULTILINE))


tags = sections("tags.md")
expect("tags.md", sorted(tags), sorted(shown_tag(keys[0]) for keys in tag_keys().values()))
expect("operators.md", sorted(sections("operators.md")), sorted(f"`{key}`" for key, *_ in user_operators()))
with concurrent.futures.ThreadPoolExecutor() as pool:
    checks = [pool.submit(in_folder, check_document, path) for path in (ROOT / "README.md", *(ROOT / "docs").glob("*.md"))]
    for key in (tag_keys()[tag][0] for tag in routes()):
        checks.append(pool.submit(in_folder, check_needs, key, tags[shown_tag(key)]))
for check in checks:
    check.result()
finish()
