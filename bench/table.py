#!/usr/bin/env python3
"""Measures with the benchmark program in rounds and prints the figures of this run as one table.

    table.py PROGRAM [ROUNDS [OLD_PROGRAM NAME]]

With an older program of that name, both are measured in turn in each round, and the table has the values
of both and the ratio of their processor times.

In a round every figure is measured once: with kept memory in a process that repeats it, with the default
allocator in a fresh process that does it once. A figure is the median of its rounds, a ratio the median
of the rounds' ratios.
"""
import collections
import json
import math
import os
import pathlib
import statistics
import subprocess
import sys

KEPT, DEFAULT = 'kept', 'default'
WALL, PROCESSOR = 'real_time', 'cpu_time'
AT = {False: 'at most ', True: 'at least '}
LOADS = [2000, 6000, 20000]
CLASSES = [125, 250, 500, 1000, 2000, 4000, 8000]
TEXTS = [('SPORTident text', 'SportIdent', 60), ('OEvent text', 'OEvent', 150),
         ('result list with header row', 'ResultList', 80), ('OE2010 CSV', 'Oe2010', 80)]
EXCHANGE = [('IOF XML 3.0', 'Iof3'), ('IOF XML 2.0.3 for other programs', 'Iof2'),
            ('SplitsBrowser CSV', 'SplitsBrowser'), ('WinSplits text', 'WinSplits'), ('OE2010 CSV', 'Oe2010'),
            ('result table with splits', 'Results')]
# Events that the report is measured with: their files, and goals for the first view in ms and the size in KB.
REPORTS = [('400 runners in 16 classes', 'report400', 500, 250), ('400 runners in one class', 'class400', 500, 250),
           ('2,000 runners in 40 classes', 'classes2000', 1500, 1200), ('2,000 runners in one class', 'class2000', 1500, 1200)]
LONGEST_TASK = 50
CLASS_NAME = 'M10A'
# Growth between sizes that fit the processor's caches and sizes that do not; a square law would give 10 and 34.
GROWTH_LIMIT = 2.0
LOAD_GROWTH_LIMIT = 1.3


class Round(dict):
    """The values of a round by memory and benchmark; what a program does not have is not a number."""

    def __missing__(self, key):
        return collections.defaultdict(lambda: math.nan)


def measure(program, memory, pattern, may_miss):
    """The measured values {benchmark: {real_time, cpu_time, counters...}} of one process; times in ms."""
    command = [program, '--memory=' + memory, '--benchmark_filter=' + pattern, '--benchmark_format=json']
    done = subprocess.run(command, capture_output=True, text=True)
    runs = json.loads(done.stdout)['benchmarks'] if done.returncode == 0 else []
    for failed in [r for r in runs if r.get('error_occurred')]:
        sys.exit('%s: %s' % (failed['name'], failed['error_message']))
    if not runs and not may_miss:
        sys.exit('%s gave nothing: %s' % (' '.join(command), done.stderr))
    return {'/'.join(r['name'].split('/')[:2]): r for r in runs}


def measure_report(program, event, may_miss):
    """The figures of report_bench.py; nothing without a browser."""
    file = pathlib.Path(os.environ['KELTRUN2_BENCH_DATA']) / (event + '.lxm')
    command = [sys.executable, str(pathlib.Path(__file__).with_name('report_bench.py')),
               str(pathlib.Path(program).parent / 'keltrun2'), str(file), CLASS_NAME]
    done = subprocess.run(command, check=not may_miss, capture_output=True, text=True)
    return json.loads(done.stdout or '{}')


class Figures:
    def __init__(self, program, is_old=False):
        self.program = program
        self.is_old = is_old
        self.rounds = []

    def measure_round(self):
        one = Round()
        for memory, pattern in ((KEPT, '^(Load|ParseAndWalk)/'), (KEPT, '^Analyze/'),
                                (KEPT, '^(Load|Read)(SportIdent|OEvent|ResultList|Oe2010)/'),
                                (KEPT, '^(Read|Walk)IofList/'), (KEPT, '^Write[A-Z]'),
                                (KEPT, '^(Estimate|Info)/'), (KEPT, '^(PackLzh|UnpackLzh|Segments.*)/'),
                                (KEPT, '^AnalysisPageAppended/'), (DEFAULT, '^Load/2000/'),
                                (DEFAULT, '^ParseAndWalk/2000/'), (DEFAULT, '^Analyze/1000/'),
                                (DEFAULT, '^AnalysisPageByCall/'), (DEFAULT, '^Site/'), (DEFAULT, '^SiteOnDisk/'),
                                (DEFAULT, '^Map/299/'), (DEFAULT, '^Map/2000/'),
                                (DEFAULT, '^MapSteps/299/'), (DEFAULT, '^MapSteps/2000/'),
                                (KEPT, '^Chart(Records|Png|TitledPng)/'), (DEFAULT, '^ManyCharts/'),
                                (DEFAULT, '^SiteWithCharts/'),
                                (DEFAULT, '^SiteOnTwoThreads/'), (DEFAULT, '^SiteSteps/'),
                                (DEFAULT, '^PrintList/'), (DEFAULT, '^PrintAnalysis/')):
            for name, values in measure(self.program, memory, pattern, self.is_old).items():
                one[memory, name] = values
        for _, event, _, _ in REPORTS:
            for figure, value in measure_report(self.program, event, self.is_old).items():
                one[DEFAULT, 'Report/%s/%s' % (event, figure)] = {WALL: value}
        self.rounds.append(one)

    def median(self, memory, name, field):
        return statistics.median(r[memory, name][field] for r in self.rounds)

    def ratio(self, memory, name, base, clock):
        return statistics.median(r[memory, name][clock] / r[memory, base][clock] for r in self.rounds)

    def per_unit(self, name, sizes, unit, clock):
        return [1000 * self.median(KEPT, '%s/%d' % (name, n), clock) / unit(n) for n in sizes]


Row = collections.namedtuple('Row', 'figure memory wall processor goal met number met_by_processor',
                             defaults=(math.nan, None))


# A figure is a function of the clock; it is judged by the wall clock.
def row(figure, memory, value, limit, form, at_least=False):
    wall = value(WALL)
    texts = figure, memory, form % wall, form % value(PROCESSOR)
    if limit is None:
        return Row(*texts, '', True, value(PROCESSOR))
    met = lambda measured: measured >= limit if at_least else measured <= limit
    return Row(*texts, AT[at_least] + form % limit, met(wall), value(PROCESSOR), met(value(PROCESSOR)))


def growth(figure, values, limit=GROWTH_LIMIT):
    cell = lambda clock: ' '.join('%.2f' % v for v in values(clock))
    met = lambda clock: max(values(clock)) <= limit * values(clock)[0]
    return Row(figure, KEPT, cell(WALL), cell(PROCESSOR), 'at most %.3g times the first' % limit, met(WALL),
               math.nan, met(PROCESSOR))


def rows(f):
    load, parse, analyze = 'Load/2000', 'ParseAndWalk/2000', 'Analyze/1000'
    call, append, site = 'AnalysisPageByCall/1000', 'AnalysisPageAppended/1000', 'Site/2000'
    time = lambda memory, name, scale=1: lambda clock: f.median(memory, name, clock) * scale
    speed = lambda memory, name: lambda clock: statistics.median(
        r[memory, name]['bytes'] / r[memory, name][clock] / 1000 for r in f.rounds)
    for memory in KEPT, DEFAULT:
        yield row('load of 2,000 runners over parsing alone', memory,
                  lambda clock: f.ratio(memory, load, parse, clock), 1.8, '%.2f')
    yield growth('load, us a runner, 2,000 to 20,000 runners',
                 lambda clock: f.per_unit('Load', LOADS, lambda n: n, clock), LOAD_GROWTH_LIMIT)
    yield row('memory of a loaded runner', KEPT, lambda clock: f.median(KEPT, load, 'bytes_a_runner'), None, '%.0f bytes')
    yield row('analysis of 1,000 runners', KEPT, time(KEPT, analyze), 12, '%.1f ms')
    yield row('analysis of 1,000 runners', DEFAULT, time(DEFAULT, analyze), 25, '%.1f ms')
    yield growth('analysis, us / (n log2 n), 125 to 8,000 runners',
                 lambda clock: f.per_unit('Analyze', CLASSES, lambda n: n * math.log2(n), clock))
    yield row('estimate of 2,000 runners in 40 classes', KEPT, time(KEPT, 'Estimate/2000'), 20, '%.1f ms')
    yield growth('estimate, us a runner, 2,000 to 20,000 runners',
                 lambda clock: f.per_unit('Estimate', LOADS, lambda n: n, clock))
    yield row('analysis page, the call', DEFAULT, speed(DEFAULT, call), 130, '%.0f MB/s', at_least=True)
    yield row('analysis page, appended', KEPT, speed(KEPT, append), 400, '%.0f MB/s', at_least=True)
    yield row('site of 2,000 runners', DEFAULT, time(DEFAULT, site, 0.001), 0.5, '%.2f s')
    yield row('its peak memory, with the load', DEFAULT,
              lambda clock: f.median(DEFAULT, site, 'peak_megabytes'), 100, '%.0f MB')
    on_disk = lambda clock: '%.2f s' % (f.median(DEFAULT, 'SiteOnDisk/2000', clock) / 1000)
    yield Row('the same with the wait for the disk', DEFAULT, on_disk(WALL), on_disk(PROCESSOR), '', True)
    for text, name, least in TEXTS:
        for part, benchmark in (('loaded', 'Load'), ('read', 'Read')):
            yield row('%s of 2,000 runners, %s' % (text, part), KEPT, speed(KEPT, '%s%s/2000' % (benchmark, name)),
                      least, '%.0f MB/s', at_least=True)
    yield row('IOF XML 3.0 of 2,000 runners read, over walking through its elements', KEPT,
              lambda clock: f.ratio(KEPT, 'ReadIofList/2000', 'WalkIofList/2000', clock), 2.5, '%.2f')
    yield row('JSON of the analyses of 2,000 runners written', KEPT, speed(KEPT, 'WriteAnalysisJson/2000'), 300,
              '%.0f MB/s', at_least=True)
    yield row('info of 2,000 runners', KEPT, time(KEPT, 'Info/2000'), None, '%.1f ms')
    for form, name in EXCHANGE:
        yield row('%s of 2,000 runners written' % form, KEPT, speed(KEPT, 'Write%s/2000' % name), 200, '%.0f MB/s',
                  at_least=True)
    yield row('lap table of 1,000 runners written', KEPT, speed(KEPT, 'WriteLaps/1000'), 200, '%.0f MB/s',
              at_least=True)
    yield row('LZH pack of a 2 MB lap file', KEPT, time(KEPT, 'PackLzh/2000'), 60, '%.1f ms')
    yield row('its size', KEPT, lambda clock: f.median(KEPT, 'PackLzh/2000', 'percent'), 14, '%.1f %%')
    yield row('LZH unpack', KEPT, speed(KEPT, 'UnpackLzh/2000'), 60, '%.0f MB/s', at_least=True)
    yield row('segment sets of 60 courses of 40 controls', KEPT, time(KEPT, 'SegmentsOfCourses/60'), 100, '%.1f ms')
    yield row('segment sets of 5,000 equal courses of 49 controls', KEPT,
              time(KEPT, 'SegmentsOfEqualCourses/5000', 0.001), 2, '%.2f s')
    yield row('segment sets of 2,000 courses with forks', KEPT, time(KEPT, 'SegmentsOfForks/2000', 0.001), 2, '%.2f s')
    for finishers, goal in (299, 300), (2000, 400):
        yield row('map of %s finishers' % format(finishers, ','), DEFAULT, time(DEFAULT, 'Map/%d' % finishers), goal,
                  '%.0f ms')
        for step in 'distances', 'solver':
            percent = '%.0f %%' % f.median(DEFAULT, 'MapSteps/%d' % finishers, step)
            yield Row('its share: ' + step, DEFAULT, percent, '', '', True)
    yield row('records of a chart of 200 runners', KEPT, time(KEPT, 'ChartRecords/200'), 2, '%.2f ms')
    yield row('the same chart drawn as PNG', KEPT, time(KEPT, 'ChartPng/200'), 15, '%.1f ms')
    yield row('its size', KEPT, lambda clock: f.median(KEPT, 'ChartPng/200', 'bytes') / 1000, None, '%.0f kB')
    yield row('the same with titles, colors and names', KEPT, time(KEPT, 'ChartTitledPng/200'), None, '%.1f ms')
    yield row('memory that 1,000 charts take beyond the first 100', DEFAULT,
              lambda clock: f.median(DEFAULT, 'ManyCharts/20', 'grown_megabytes'), 1, '%.1f MB')
    charts = 'SiteWithCharts/2000'
    yield row('site of 2,000 runners with 280 charts', DEFAULT, time(DEFAULT, charts, 0.001), 1.5, '%.2f s')
    both = row('the same on two threads, over one', DEFAULT,
               lambda clock: f.ratio(DEFAULT, 'SiteOnTwoThreads/2000', charts, clock), 0.6, '%.2f')
    yield both._replace(met_by_processor=None)  # both threads together take no less of it
    yield row('its peak memory, with the load', DEFAULT,
              lambda clock: f.median(DEFAULT, charts, 'peak_megabytes'), 200, '%.0f MB')
    yield row('what its last 30 classes add to that', DEFAULT,
              lambda clock: f.median(DEFAULT, charts, 'growth_megabytes'), 1, '%.1f MB')
    for step in 'analysis', 'pages', 'drawing', 'encoding':
        percent = '%.1f %%' % f.median(DEFAULT, 'SiteSteps/2000', step)
        yield Row('its share: ' + step, DEFAULT, percent, '', '', True)
    yield row('2,000 runners as printed list', DEFAULT, time(DEFAULT, 'PrintList/2000', 0.001), 1, '%.2f s')
    yield row('its PDF', DEFAULT, lambda clock: f.median(DEFAULT, 'PrintList/2000', 'megabytes'), 1, '%.2f MB')
    yield row('printed analysis of 2,000 runners', DEFAULT, time(DEFAULT, 'PrintAnalysis/2000', 0.001), 0.5, '%.2f s')
    yield row('its PDF', DEFAULT, lambda clock: f.median(DEFAULT, 'PrintAnalysis/2000', 'megabytes'), None, '%.2f MB')
    if any(name.startswith('Report/') for _, name in f.rounds[0]):
        yield from report_rows(f)


def report_rows(f):
    for title, event, first_view, size in REPORTS:
        value = lambda figure: f.median(DEFAULT, 'Report/%s/%s' % (event, figure), WALL)
        for figure, text, form, scale, goal in (
                ('paint', 'first view', '%.0f ms', 1, first_view), ('event', 'first view that answers', '%.0f ms', 1, None),
                ('results', 'results', '%.0f ms', 1, None), ('splits', 'splits', '%.0f ms', 1, None),
                ('race', 'race, all lines', '%.0f ms', 1, None), ('scroll', 'longest wait while scrolling', '%.0f ms', 1, LONGEST_TASK),
                ('packed', 'packed size', '%.0f KB', 1 / 1000, size)):
            measured = value(figure) * scale
            yield Row('report of %s, %s' % (title, text), '', form % measured, '',
                      AT[False] + form % goal if goal else '', not goal or measured <= goal)


def verdict(r):
    return '' if not r.goal else 'met' if r.met else 'NOT MET'


def table_of_one(figures):
    yield 'figure', 'memory', 'measured', 'processor time', 'goal', ''
    for r in rows(figures):
        yield r.figure, r.memory, r.wall, r.processor, r.goal, verdict(r)


def table_of_two(old, new, name):
    yield 'figure', 'memory', name, 'now', 'processor: ' + name, 'now', 'ratio', 'goal', ''
    before = {(r.figure, r.memory, n): r for n, r in numbered(rows(old))}
    known = lambda cell: '' if 'nan' in cell else cell
    for n, r in numbered(rows(new)):
        b = before.get((r.figure, r.memory, n), Row('', '', '', '', '', True))
        ratio = r.number / b.number if b.number else math.nan
        met = r.met if r.met_by_processor is None else r.met_by_processor
        yield (r.figure, r.memory, known(b.wall), r.wall, known(b.processor), r.processor, known('%.2f' % ratio),
               r.goal, verdict(r._replace(met=met)))


def numbered(table):
    """The rows, each with the number of rows before it that have its name: some are called "its size"."""
    seen = collections.Counter()
    for r in table:
        yield seen[r.figure, r.memory], r
        seen[r.figure, r.memory] += 1


def main():
    new = Figures(sys.argv[1])
    old = Figures(sys.argv[3], True) if len(sys.argv) > 3 else None
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    for number in range(rounds):
        print('round %d of %d' % (number + 1, rounds), file=sys.stderr)
        for figures in filter(None, (old, new)):
            figures.measure_round()
    table = list(table_of_two(old, new, sys.argv[4]) if old else table_of_one(new))
    widths = [max(len(r[column]) for r in table) for column in range(len(table[0]))]
    for r in table:
        print('  '.join(cell.ljust(width) for cell, width in zip(r, widths)).rstrip())


if __name__ == '__main__':
    main()
