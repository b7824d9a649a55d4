#!/usr/bin/env python3
"""Write a page to standard output: gen_pages.py MIX SIZE [LANGUAGE]

MIX is text, typical or code: how much prose stands between the tags. SIZE is in bytes, with K or M behind it for
units of 1024. The same mix and size give the same page. It compiles without a warning and reports nothing.
LANGUAGE is tn, or one of php, lua and c, for the same page as another compiler takes it.
"""
import random
import sys

from languages import LANGUAGES

# Bytes of prose in front of each tag, from and to, and the weights of what follows.
MIXES = {
    'text': ((1200, 2400), {'html': 12, 'eval': 4, 'assign': 1, 'if': 2, 'for': 1, 'call': 1}),
    'typical': ((40, 160), {'html': 14, 'eval': 4, 'assign': 1, 'if': 2, 'for': 1, 'call': 1}),
    'code': ((0, 0), {'html': 1, 'eval': 8, 'assign': 9, 'if': 4, 'for': 2, 'call': 3}),
}
WORDS = ('a the of in house garden river boat morning evening letter answer question "quoted" bread market window '
         'street lamp winter summer harvest cellar bottle paper pencil table chair doctor teacher winner story').split()
ELEMENTS = ['<p>', '</p>', '<div class="row">', '</div>', '<a href="/list?page=2">', '</a>', '<br/>', '<b>', '</b>',
            '<td align="right">', '</td>', '<img src="/pictures/house.png" alt="">']


class Page:
    """A page of `size` bytes of Tarn Script, written in `language`."""

    def __init__(self, mix, size, language='tn'):
        self.random = random.Random(mix)
        self.prose_range, self.weights = MIXES[mix]
        self.size = size
        self.language = LANGUAGES[language]
        self.pieces = []
        self.length = 0
        self.open_tags = []
        self.runs = 0
        self.variables = max(10, size // 5000)

    def write(self, *part):
        text = LANGUAGES['tn'].part(*part)
        self.length += len(text)
        self.pieces.append(text if self.language is LANGUAGES['tn'] else self.language.part(*part))

    def prose(self):
        """A run of words that does not occur twice."""
        length = self.random.randint(*self.prose_range)
        if length == 0:
            return '\n'
        self.runs += 1
        words = ['\n%d.' % self.runs]
        while length > 0:
            words.append(self.random.choice(WORDS) + ('\n' if self.random.random() < 0.1 else ''))
            length -= len(words[-1]) + 1
        return ' '.join(words)

    def variable(self):
        return 'g.v%d' % self.random.randrange(self.variables)

    def operand(self):
        return self.random.choice([self.variable(), self.variable(), str(self.random.randrange(10000)),
                                   '(%s - 1)' % self.variable(), '%s[%d]' % (self.variable(), self.random.randint(1, 9))])

    def value(self):
        if self.random.random() < 0.2:
            return "%s $ 'item %d'" % (self.variable(), self.random.randrange(1000))
        operators = self.random.choices('+-*', k=self.random.randint(0, 3))
        return self.variable() + ''.join(' %s %s' % (o, self.operand()) for o in operators)

    def condition(self):
        test = '%s %s %s' % (self.variable(), self.random.choice(['GT', 'LT', 'EQ']), self.operand())
        return test if self.random.random() < 0.7 else '%s AND %s NE 0' % (test, self.variable())

    def tag(self):
        kind = self.random.choices(list(self.weights), list(self.weights.values()))[0]
        if kind == 'html':
            self.write('html', self.random.choice(ELEMENTS))
        elif kind == 'eval':
            self.write('eval', self.value())
        elif kind == 'assign':
            self.write('assign', self.variable(), self.value())
        elif kind == 'call':
            self.write('eval', 'total(%s, %s)' % (self.value(), self.operand()))
        else:
            self.write(kind, self.condition() if kind == 'if' else self.variable())
            self.open_tags.append(kind)

    def text(self):
        self.write('function', 'total')
        while self.length < self.size:
            self.write('prose', self.prose())
            if self.open_tags and self.random.random() < 0.1 * len(self.open_tags):
                self.write('end ' + self.open_tags.pop())
            else:
                self.tag()
        while self.open_tags:
            self.write('end ' + self.open_tags.pop())
        return self.language.head + ''.join(self.pieces) + self.language.tail


def bytes_of(size):
    units = {'K': 1 << 10, 'M': 1 << 20}
    return int(size[:-1]) * units[size[-1]] if size[-1] in units else int(size)


if __name__ == '__main__':
    if len(sys.argv) not in (3, 4) or sys.argv[1] not in MIXES or sys.argv[-1] not in LANGUAGES and len(sys.argv) == 4:
        sys.exit(__doc__)
    sys.stdout.write(Page(sys.argv[1], bytes_of(sys.argv[2]), *sys.argv[3:]).text())
