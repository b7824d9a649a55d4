#!/usr/bin/env python3
"""Time whole runs of tnc: time_process.py TNC [OTHER] [-s 1K,1M,10M] [-r ROUNDS] [-d DIR]

Compiles generated pages of every mix and size and shows the median of the wall clock and of the processor time, the
source bytes per second and the peak memory. With a second program, say an older build, each round runs both in turn, and the median of the ratios of the
rounds (TNC's time by OTHER's) says which is faster: a slow moment of the machine meets both. DIR should lie on a
memory file system.
"""
import argparse
import os
import statistics
import time

import gen_pages


def run(program, page, output):
    """Wall clock and processor seconds of one compilation, and its peak kilobytes."""
    start = time.perf_counter()
    child = os.spawnv(os.P_NOWAIT, program, [program, '-o', output, page])
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    if status != 0:
        raise SystemExit('%s failed on %s' % (program, page))
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss


def measure(programs, page, output, rounds):
    for program in programs:
        run(program, page, output)
    return [[run(program, page, output) for program in programs] for _ in range(rounds)]


def report(name, size, results):
    seconds = statistics.median(round[0][0] for round in results)
    processor = statistics.median(round[0][1] for round in results)
    memory = max(round[0][2] for round in results)
    line = '%-12s %9.2f ms  cpu %9.2f ms %8.1f MB/s %8.1f MB' % (name, seconds * 1e3, processor * 1e3,
                                                               size / seconds / 1e6, memory / 1024)
    if len(results[0]) == 2:
        line += '   ratio %.3f' % statistics.median(round[0][0] / round[1][0] for round in results)
    print(line, flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('programs', nargs='+', metavar='TNC')
    parser.add_argument('-s', '--sizes', default='1K,1M,10M')
    parser.add_argument('-r', '--rounds', type=int, default=11)
    parser.add_argument('-d', '--dir', default='/dev/shm')
    options = parser.parse_args()
    output = os.path.join(options.dir, 'time_process.tna')
    for size in options.sizes.split(','):
        for mix in gen_pages.MIXES:
            page = os.path.join(options.dir, '%s-%s.tn' % (mix, size))
            text = gen_pages.Page(mix, gen_pages.bytes_of(size)).text()
            with open(page, 'w') as file:
                file.write(text)
            report('%s %s' % (mix, size), len(text), measure(options.programs[:2], page, output, options.rounds))
            os.remove(page)
    os.remove(output)


if __name__ == '__main__':
    main()
