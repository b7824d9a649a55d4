#!/usr/bin/env python3
"""editor_files.py [--check]: writes the files of editors/ from the tables of the sources. With --check it writes nothing, and
fails where one of them differs.
"""

import json
import re
import sys

from source_tables import ROOT, attribute_keys, message_name, messages, tag_keys
from table_docs import user_operators

PROGRAM = "tarn"


def alternatives(words):
    """Words as a pattern that prefers the longer, for the editors as for Python."""
    return "|".join(re.escape(word).replace(r"\-", "-") for word in sorted(words, key=lambda word: (-len(word), word)))


def tags():
    return [key for keys in tag_keys().values() for key in keys]


def attributes():
    return [key.lower() for keys in attribute_keys().values() for key in keys] + [f"{key}_error" for key in tags()]


def operators(are_words):
    return [key for key, *_ in user_operators() if key.isalpha() == are_words and key not in "[]"]



def named(name, **rule):
    return {"name": f"{name}.{PROGRAM}", **rule}


def body(tag, name):
    return named(name, begin=f"(?i)<{tag}>", end=f"(?i)</{tag}>")


def grammar():
    def include(*names):
        return [{"include": name if "." in name else "#" + name} for name in names]

    expression = [
        named("string.quoted.single", begin="'", end="'", patterns=include("escape")),
        named("constant.numeric", match=r"\b\d+(\.\d+)?\b"),
        named("keyword.operator.word", match=rf"(?i)\b({alternatives(operators(True))})\b"),
        named("keyword.operator", match=alternatives(operators(False))),
        named("entity.name.function", match=r"\b[A-Za-z_]\w*(?=\()"),
        named("variable.other", match=r"\b[A-Za-z_][\w.]*"),
    ]
    return {
        "name": "Tarn Script",
        "scopeName": f"text.html.{PROGRAM}",
        "fileTypes": ["tn"],
        "patterns": include("comment", "assembly", "tag", "text.html.basic"),
        "injections": {f"L:text.html.{PROGRAM} string.quoted - meta.embedded": {"patterns": include("expression")}},
        "repository": {
            "comment": body("tncomment", "comment.block"),
            "assembly": body("tnassembly", "meta.embedded.assembly"),
            "tag": {
                "begin": rf"(?i)(</?)({alternatives(tags())})(?![\w-])",
                "beginCaptures": {"2": named("entity.name.tag")},
                "end": "/?>",
                "patterns": include("attribute", "string", "expression"),
            },
            "attribute": named("entity.other.attribute-name", match=rf"(?i)(?<![\w-])({alternatives(attributes())})(?![\w-])"),
            "string": named("string.quoted.double", begin='"', end='"', patterns=include("escape", "expression")),
            "escape": named("constant.character.escape", match=r"\\."),
            "expression": named("meta.embedded.expression", begin=r"\{", end=r"\}", patterns=expression),
        },
    }


def matcher(prefix, severity):
    groups = {"file": 1, "line": 2, "code": 4, "message": 5}
    pattern = {"regexp": rf"^(.+?):(\d+): ({prefix})_(\d+): (.*)$", **groups}
    return {"owner": "tnc", "severity": severity, "fileLocation": "autoDetect", "pattern": pattern}


def problem_matchers():
    """The first that takes a line has it, so that the second is left the errors."""
    return [matcher("CW", "warning"), matcher("CE|CW", "error")]


SYNTAX = r"""" Vim syntax of Tarn Script: HTML with tags and expressions. Written by tools/editor_files.py.
if exists("b:current_syntax")
  finish
endif
runtime! syntax/html.vim
unlet! b:current_syntax
syntax case ignore

syntax match tarnVariable contained "\<[A-Za-z_][A-Za-z0-9_.]*"
syntax match tarnFunction contained "\<\h\w*\ze("
syntax match tarnNumber contained "\<\d\+\%(\.\d\+\)\?\>"
syntax match tarnOperator contained "\<\%(WORDS\)\>\|SIGNS"
syntax region tarnText contained start="'" skip="\\." end="'"
syntax region tarnExpression contained containedin=htmlString,tarnString start="{" end="}"
      \ contains=tarnVariable,tarnFunction,tarnNumber,tarnOperator,tarnText
syntax region tarnString contained start=+"+ skip="\\." end=+"+ contains=tarnExpression
syntax match tarnAttribute contained "\%(\w\|-\)\@<!\%(ATTRIBUTES\)\%(\w\|-\)\@!"
syntax match tarnTagName contained "\%(</\?\)\@2<=\%(TAGS\)\%(\w\|-\)\@!"
syntax region tarnTag start="</\?\%(TAGS\)\%(\w\|-\)\@!" end=">" containedin=ALLBUT,@tarnWhole
      \ contains=tarnTagName,tarnAttribute,tarnString,tarnExpression
syntax region tarnComment start="<tncomment>" end="</tncomment>" containedin=ALLBUT,@tarnWhole
syntax region tarnAssembly start="<tnassembly>" end="</tnassembly>" containedin=ALLBUT,@tarnWhole
syntax cluster tarnWhole contains=tarnComment,tarnAssembly,tarnTag,tarnString,tarnExpression,tarnText

highlight default link tarnTagName Statement
highlight default link tarnAttribute Type
highlight default link tarnString String
highlight default link tarnText String
highlight default link tarnVariable Identifier
highlight default link tarnFunction Function
highlight default link tarnNumber Number
highlight default link tarnOperator Operator
highlight default link tarnComment Comment
highlight default link tarnAssembly PreProc
let b:current_syntax = "tarn"
"""

COMPILER = r"""" Vim compiler plugin of tnc: ":compiler tnc", then ":make". Written by tools/editor_files.py.
let current_compiler = "tnc"
CompilerSet makeprg=tnc\ %:S
CompilerSet errorformat=%f:%l:\ C%t_%n:\ %m,%-GIn\ file\ included\ from\ %.%#
"""

DETECT = '" Pages of Tarn Script. Written by tools/editor_files.py.\nautocmd BufRead,BufNewFile *.tn setfiletype tarn\n'


def vim(words):
    """Words as alternatives of a Vim pattern."""
    return alternatives(words).replace("\\", "").replace("|", r"\|").replace("*", r"\*").replace("$", r"\$")


def syntax():
    text = SYNTAX
    for place, words in (("WORDS", operators(True)), ("SIGNS", operators(False)), ("TAGS", tags()), ("ATTRIBUTES", attributes())):
        text = text.replace(place, vim(words).replace("/", r"\/"))
    return text


def files():
    """Text by path, under editors/."""
    return {
        "tarn.tmLanguage.json": json.dumps(grammar(), indent=2) + "\n",
        "problem-matcher.json": json.dumps(problem_matchers(), indent=2) + "\n",
        "vim/compiler/tnc.vim": COMPILER,
        "vim/ftdetect/tarn.vim": DETECT,
        "vim/syntax/tarn.vim": syntax(),
    }


def main():
    stale = []
    for name, text in files().items():
        path = ROOT / "editors" / name
        if path.exists() and path.read_text(encoding="utf-8") == text:
            continue
        if "--check" in sys.argv[1:]:
            stale.append(f"editors/{name}: run tools/editor_files.py")
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    print("\n".join(stale) or "the files of editors/ are those of the sources")
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
