"""How a page reads in Tarn Script and in the languages of the compilers next to tnc: one form for each part."""
import re


class Language:
    """`forms` has a form for each kind of part, `words` what to put for what in an expression, one after another."""

    def __init__(self, forms, words=(), quoted=False, head='', tail=''):
        self.forms = forms
        self.words = [(re.compile(pattern), text) for pattern, text in words]
        self.quoted = quoted
        self.head = head
        self.tail = tail

    def part(self, kind, *fields):
        if kind in ('prose', 'html'):
            fields = [f.replace('"', '\\"').replace('\n', '\\n') if self.quoted else f for f in fields]
        else:
            fields = [self.expression(f) for f in fields]
        return self.forms[kind] % tuple(fields)

    def expression(self, text):
        for pattern, replacement in self.words:
            text = pattern.sub(replacement, text)
        return text


COMPARISONS = ((' GT ', ' > '), (' LT ', ' < '), (' EQ ', ' == '))
C_LIKE = COMPARISONS + ((' NE ', ' != '), (' AND ', ' && '))
LANGUAGES = {
    'tn': Language({
        'prose': '%s', 'html': '%s', 'eval': '<TnEVAL EXPR="{%s}">', 'assign': '<TnASSIGN NAME="%s" VALUE="{%s}">',
        'if': '<TnIF EXPR="{%s}">', 'end if': '</TnIF>',
        'for': '<TnFOR INDEX="l.i" COUNT="{%s}">', 'end for': '</TnFOR>',
        'function': '<TnFUNCTION NAME="%s" PARAMETERS="a, b"><TnFUNCTIONRETURN VALUE="{l.a + l.b}"></TnFUNCTION>'}),
    'php': Language({
        'prose': '%s', 'html': '%s', 'eval': '<?= %s ?>', 'assign': '<?php %s = %s ?>',
        'if': '<?php if (%s) { ?>', 'end if': '<?php } ?>',
        'for': '<?php for ($i = 1; $i <= %s; ++$i) { ?>', 'end for': '<?php } ?>',
        'function': '<?php function %s($a, $b) { return $a + $b; } ?>'},
        ((r' \$ ', ' . '), (r'g\.v', '$v')) + C_LIKE),
    # A loop in Lua's own words has hidden variables, of which a page may not have so many.
    'lua': Language({
        'prose': 'out("%s")\n', 'html': 'out("%s")\n', 'eval': 'out(%s)\n', 'assign': '%s = %s\n',
        'if': 'if %s then\n', 'end if': 'end\n', 'for': 'i = 1 while i <= %s do i = i + 1\n', 'end for': 'end\n',
        'function': 'function %s(a, b) return a + b end\n'},
        ((r' \$ ', ' .. '), (r'g\.v(\d+)', r'v[\1]'), (' NE ', ' ~= '), (' AND ', ' and ')) + COMPARISONS, quoted=True),
    # A function ends the one that has the page so far, and another goes on behind it.
    'c': Language({
        'prose': 'out("%s");\n', 'html': 'out("%s");\n', 'eval': 'out(%s);\n', 'assign': '%s = %s;\n',
        'if': 'if (%s) {\n', 'end if': '}\n', 'for': 'for (int i = 1; i <= %s; ++i) {\n', 'end for': '}\n',
        'function': '}\nint %s(int a, int b) { return a + b; }\nvoid page(void) {\n'},
        ((r"(g\.v\d+) \$ '(.*?)'", r'cat(\1, "\2")'), (r'g\.v(\d+)\[', r'e[\1]['), (r'g\.v(\d+)', r'v[\1]'), ("'", '"'))
        + C_LIKE, quoted=True, head='extern int v[], e[][10];\nint cat();\nvoid out();\nvoid head(void) {\n', tail='}\n'),
}
