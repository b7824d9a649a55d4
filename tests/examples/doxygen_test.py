#!/usr/bin/env python3
"""doxygen_test.py TNC FOLDER: by the Doxyfile of the folder doxygen makes its pages without a word, and understands them."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

# The functions of examples/site/functions.tn by name: their first words, and the parameters.
EXPECTED = """\
add_article: Adds an article to the order, which is changed in place. variable order, has the count, and an array of articles; \
value code, of the article; value amount, pieces
line: One line of a list, for pages and mails. value label, what stands ahead; value value, what stands behind
price_of: Price of an amount of goods, with the discount for larger orders. value price, of one piece; value amount, pieces"""


def texts(element, path):
    return [" ".join("".join(found.itertext()).split()) for found in element.iterfind(path)]


def documented(folder):
    for path in pathlib.Path(folder, "xml").glob("*.xml"):
        for member in xml.parse(path).iterfind(".//memberdef[@kind='function']"):
            types, names = texts(member, "param/type"), texts(member, "param/declname")
            told = zip(types, names, texts(member, ".//parameteritem/parameterdescription"), strict=True)
            parameters = "; ".join(f"{kind} {name}, {text}" for kind, name, text in told)
            yield f"{texts(member, 'name')[0]}: {texts(member, 'briefdescription')[0]} {parameters}"


tnc, site = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
if not shutil.which("doxygen"):
    sys.exit(print("skipped: doxygen is not installed") or 77)
with tempfile.TemporaryDirectory() as folder:
    settings = (site / "Doxyfile").read_text() + f"GENERATE_XML=YES\nOUTPUT_DIRECTORY={folder}\n"
    settings = settings.replace("=tnc ", f"={tnc} ")
    run = subprocess.run(["doxygen", "-"], input=settings, text=True, capture_output=True, cwd=site)
    seen = run.returncode, run.stdout + run.stderr, "\n".join(sorted(documented(folder)))
    is_made = pathlib.Path(folder, "html/index.html").exists()
sys.exit(0 if seen == (0, "", EXPECTED) and is_made else f"doxygen made {seen}")
