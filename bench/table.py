#!/usr/bin/env python3
"""Print, in Markdown, how fast tnc is: table.py BUILD [-t TABLES] [-r ROUNDS] [-d DIR]

BUILD is a build with the benchmarks, as build/release. Of the tables,
  pages    holds tnc against other compilers on equivalent pages, where they are installed (php, luac, tcc), and against
           floors: an emitter of the same assembly and nothing else, `cat`, a C++ program that does nothing. Each round
           runs all of a row in turn; a figure is the median over the rounds of tnc's time by the other's.
  growth   shows what one more of a thing costs, as the number of them grows from 10^3 to 10^6, by the least times.
Times are processor time.
DIR should lie on a memory file system; about 400 MB are written there.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

import gen_pages
from languages import LANGUAGES

PEERS = {
    'php -l': ('php', 'php -n -d memory_limit=-1 -l {page}.php'),
    'luac': ('lua', 'luac -o {page}.luac {page}.lua'),
    'tcc -c': ('c', 'tcc -c -o {page}.o {page}.c'),
}
FLOORS = {'emitter': '{bench}/floor {page}.tn {page}.floor', 'cat': 'cat {page}.tn', 'empty': '{bench}/empty'}
TNC = '{tnc} -o {page}.tna {page}.tn'
FUNCTION = LANGUAGES['tn'].part('function', 'f')

# What stands ahead of the items, an item, what closes an item behind all of them, and what stands behind that.
GROWTH = {
    'constants': ('', lambda i: '<TnEVAL EXPR="{\'constant %07d\'}">' % i, None, ''),
    'variables': ('', lambda i: '<TnASSIGN NAME="g.variable_%07d" VALUE="{1}">' % i, None, ''),
    'functions, each called': ('', lambda i: LANGUAGES['tn'].part('function', 'f%07d' % i),
                               lambda i: '<TnEVAL EXPR="{f%07d(1, 2)}">' % i, ''),
    'calls': (FUNCTION, lambda i: '<TnEVAL EXPR="{f(1, 2)}">', None, ''),
    'nested blocks': ('', lambda i: '<TnIF EXPR="{g.a}">', lambda i: '</TnIF>', ''),
    'else-if chain': ('<TnIF EXPR="{g.a}">', lambda i: '<TnELSEIF EXPR="{g.a}">x', None, '</TnIF>'),
    'nested loops': ('', lambda i: '<TnFOR INDEX="l.i" COUNT="{g.n}">', lambda i: '</TnFOR>', ''),
    'operators': ('<TnEVAL EXPR="{g.a', lambda i: ' + g.b', None, '}">'),
    'parentheses': ('<TnEVAL EXPR="{', lambda i: '(g.a + ', lambda i: '1)' if i == 0 else ')', '}">'),
    'nested calls': (FUNCTION + '<TnEVAL EXPR="{', lambda i: 'f(1, ', lambda i: '1)' if i == 0 else ')', '}">'),
    'localized texts': ('<TnLOCALIZED ID="x"><TnLOCALIZED-TEXT LANGUAGE="en">', lambda i: 'word <b>%d</b>' % i, None,
                        '</TnLOCALIZED-TEXT></TnLOCALIZED>'),
    'warnings': ('', lambda i: '<TnEVAL EXPR="{1}" NOSUCH="x">\n', None, ''),
}


def prose(size):
    text = gen_pages.Page('text', 1 << 20).prose()
    return (text * (size // len(text) + 1))[:size]


def mix(name, size):
    return lambda language: gen_pages.Page(name, gen_pages.bytes_of(size), language).text()


def parts(*rows):
    """A page of parts, in any language: each row a number and the part for each number below it."""
    def text(language):
        form = LANGUAGES[language]
        return form.head + ''.join(form.part(*part(i)) for n, part in rows for i in range(n)) + form.tail
    return text


def write(path, text):
    with open(path, 'w') as file:
        file.write(text)


def includes(folder, depth):
    """A chain of pages, each of which includes the next."""
    for i in range(depth):
        write('%s/level%d.tn' % (folder, i), 'level %d' % i + '<TnINCLUDE FILE="level%d.tn">up' % (i + 1) * (i + 1 < depth))


class Bench:
    def __init__(self, build, folder, rounds):
        self.bench = os.path.abspath(os.path.join(build, 'bench'))
        self.names = {'tnc': os.path.abspath(os.path.join(build, 'tnc')), 'bench': self.bench,
                      'page': os.path.join(folder, 'page')}
        self.folder = folder
        self.rounds = rounds

    def run(self, command):
        """Microseconds of the processor and peak kilobytes of a command."""
        words = [os.path.join(self.bench, 'stopwatch'), 'stdout'] + command.format(**self.names).split()
        printed = subprocess.run(words, cwd=self.folder, capture_output=True, check=True).stdout
        time, memory, status = (int(word) for word in printed.split())
        if status != 0:
            raise SystemExit('%s ends with %d' % (words[2:], status))
        return time, memory

    def measure(self, commands, rounds):
        """Rounds of the results of the commands that are installed."""
        here = {name: c for name, c in commands.items() if shutil.which(c.format(**self.names).split()[0])}
        return [{name: self.run(command) for name, command in here.items()} for _ in range(rounds)]

    def page(self, language, text):
        write('%s.%s' % (self.names['page'], language), text)
        return len(text)


def row(cells):
    print('| ' + ' | '.join(cells) + ' |', flush=True)


def head(cells):
    row(cells)
    row(['---'] + ['---:'] * (len(cells) - 1))


def significant(number):
    return '%.2f' % number if number < 10 else '%.1f' % number if number < 100 else '%.0f' % number


def page_row(bench, name, size, commands):
    rounds = bench.measure(commands, 5 * bench.rounds if size < 1 << 16 else bench.rounds)
    time = statistics.median(r['tnc'][0] for r in rounds)
    cells = [name, significant(time / 1e3), significant(size / time), significant(max(r['tnc'][1] for r in rounds) / 1024)]
    for other in list(PEERS) + list(FLOORS):
        ratios = [r['tnc'][0] / r[other][0] for r in rounds if other in r]
        cells.append(significant(statistics.median(ratios)) if ratios else '')
    row(cells)


def pages(bench):
    mixes = {'%s, %s' % (name, size): mix(name, size) for size in ('1K', '1M', '10M') for name in gen_pages.MIXES}
    function = lambda i: ('function', 'total')
    others = {
        '100 MB in one run': (lambda language: prose(100 << 20), ()),
        '10^6 distinct constants': (parts((10 ** 6, lambda i: ('eval', "'constant %07d'" % i))), ('php', 'lua')),
        '10^5 functions, each called': (parts((10 ** 5, lambda i: ('function', 'f%07d' % i)),
                                              (10 ** 5, lambda i: ('eval', 'f%07d(1, 2)' % i))), ('php', 'lua')),
        '10^5 calls of a function': (parts((1, function), (10 ** 5, lambda i: ('eval', 'total(1, 2)'))),
                                     ('php', 'lua', 'c')),
    }
    head(['page', 'ms', 'MB/s', 'peak MB'] + ['/ ' + name for name in list(PEERS) + list(FLOORS)])
    for name, text in mixes.items():
        size = bench.page('tn', text('tn'))
        for language, _ in PEERS.values():
            bench.page(language, text(language))
        page_row(bench, name, size, {'tnc': TNC, **{n: c for n, (_, c) in PEERS.items()}, **FLOORS})
    for name, (text, languages) in others.items():
        size = bench.page('tn', text('tn'))
        for language in languages:
            bench.page(language, text(language))
        peers = {n: c for n, (language, c) in PEERS.items() if language in languages}
        page_row(bench, name, size, {'tnc': TNC, **peers, 'cat': FLOORS['cat'], 'empty': FLOORS['empty']})
    includes(bench.folder, 10 ** 4)
    files = ['level%d.tn' % i for i in range(10 ** 4)]
    size = sum(os.path.getsize(os.path.join(bench.folder, f)) for f in files)
    page_row(bench, 'includes 10^4 deep', size, {'tnc': '{tnc} -o {page}.tna level0.tn', 'cat': 'cat ' + ' '.join(files)})


def growth(bench):
    steps = [10 ** 3, 10 ** 4, 10 ** 5, 10 ** 6]
    head(['ns for one more, from one count to the next'] + ['to 10^%d' % e for e in (4, 5, 6)] + ['last / least', 'bytes each'])
    for name, (before, opening, closing, after) in GROWTH.items():
        results = []
        for n in steps:
            items = [opening(i) for i in range(n)] + ([closing(i) for i in range(n)] if closing else [])
            bench.page('tn', before + ''.join(items) + after)
            rounds = [r['tnc'] for r in bench.measure({'tnc': TNC}, bench.rounds * (5 if n < 10 ** 5 else 1))]
            results.append((min(time for time, _ in rounds), max(memory for _, memory in rounds)))
        costs = [(b[0] - a[0]) * 1e3 / (m - n) for a, b, n, m in zip(results, results[1:], steps, steps[1:])]
        each = (results[-1][1] - results[0][1]) * 1024 / (steps[-1] - steps[0])
        row([name] + ['%.0f' % c for c in costs] + ['%.2f' % (costs[-1] / min(costs[:-1])), '%.0f' % each])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('build', metavar='BUILD')
    parser.add_argument('-t', '--tables', default='pages,growth')
    parser.add_argument('-r', '--rounds', type=int, default=7)
    parser.add_argument('-d', '--dir', default='/dev/shm')
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.dir) as folder:
        bench = Bench(options.build, folder, options.rounds)
        for i, table in enumerate(options.tables.split(',')):
            print('\n' * (i > 0), end='')
            {'pages': pages, 'growth': growth}[table](bench)


if __name__ == '__main__':
    main()
