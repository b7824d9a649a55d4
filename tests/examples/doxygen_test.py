#!/usr/bin/env python3
"""doxygen_test.py TNC PAGE: doxygen finds the functions of a page, with parameters and comments, in what tnc -d writes."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

SKIPPED = 77

# Functions of examples/site/functions.tn: parameters as (type, name), and the comment ahead of the function.
EXPECTED = {
    "price_of": (
        [("value", "price"), ("value", "amount")],
        "Price of an amount of goods, with the discount for larger orders.",
    ),
    "add_article": (
        [("variable", "order"), ("value", "code"), ("value", "amount")],
        "Adds an article to the order, which is changed in place.",
    ),
    "line": ([("value", "label"), ("value", "value")], "One line of a list, for pages and mails."),
}


def text(element):
    return " ".join("".join(element.itertext()).split())


def documented(folder):
    found = {}
    for path in pathlib.Path(folder, "xml").glob("*.xml"):
        for member in xml.parse(path).iter("memberdef"):
            if member.get("kind") == "function":
                parameters = [(text(p.find("type")), text(p.find("declname"))) for p in member.iter("param")]
                comment = text(member.find("briefdescription")) or text(member.find("detaileddescription"))
                found[text(member.find("name"))] = (parameters, comment)
    return found


def main():
    tnc, page = sys.argv[1:]
    if not shutil.which("doxygen"):
        print("skipped: doxygen is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([tnc, "-d", "-o", f"{folder}/functions.h", page], check=True)
        settings = "GENERATE_HTML=NO\nGENERATE_LATEX=NO\nGENERATE_XML=YES\nEXTRACT_ALL=YES\nQUIET=YES\nINPUT=functions.h\n"
        subprocess.run(["doxygen", "-"], input=settings, text=True, check=True, cwd=folder)
        found = documented(folder)
    for name, expected in EXPECTED.items():
        if found.get(name) != expected:
            print(f"{name}: expected {expected}, doxygen found {found.get(name)}")
    return 0 if found == EXPECTED else 1


if __name__ == "__main__":
    sys.exit(main())
