#!/usr/bin/env python3
"""doxygen_test.py TNC FOLDER: by the Doxyfile of the folder doxygen makes its pages without a word, and understands them."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

# Functions of examples/site/functions.tn: parameters as type, name and description, and the first words.
EXPECTED = {
    "price_of": (
        [("value", "price", "of one piece"), ("value", "amount", "pieces")],
        "Price of an amount of goods, with the discount for larger orders.",
    ),
    "add_article": (
        [
            ("variable", "order", "has the count, and an array of articles"),
            ("value", "code", "of the article"),
            ("value", "amount", "pieces"),
        ],
        "Adds an article to the order, which is changed in place.",
    ),
    "line": (
        [("value", "label", "what stands ahead"), ("value", "value", "what stands behind")],
        "One line of a list, for pages and mails.",
    ),
}


def texts(element, path):
    return [" ".join("".join(found.itertext()).split()) for found in element.iterfind(path)]


def documented(folder):
    for path in pathlib.Path(folder, "xml").glob("*.xml"):
        for member in xml.parse(path).iterfind(".//memberdef[@kind='function']"):
            told = texts(member, ".//parameteritem/parameterdescription")
            parameters = zip(texts(member, "param/type"), texts(member, "param/declname"), told, strict=True)
            yield texts(member, "name")[0], (list(parameters), texts(member, "briefdescription")[0])


def main():
    tnc, site = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    if not shutil.which("doxygen"):
        sys.exit(print("skipped: doxygen is not installed") or 77)
    with tempfile.TemporaryDirectory() as folder:
        settings = (site / "Doxyfile").read_text() + f"GENERATE_XML=YES\nOUTPUT_DIRECTORY={folder}\n"
        settings = settings.replace("=tnc ", f"={tnc} ")
        run = subprocess.run(["doxygen", "-"], input=settings, text=True, capture_output=True, cwd=site)
        seen = (run.returncode, run.stdout + run.stderr, pathlib.Path(folder, "html/index.html").exists(), dict(documented(folder)))
    sys.exit(0 if seen == (0, "", True, EXPECTED) else f"doxygen made {seen}")


if __name__ == "__main__":
    main()
