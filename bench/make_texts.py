#!/usr/bin/env python3
"""Writes the event of a native lap file in the text formats that are read, for benchmarks.

    make_texts.py EVENT.lxm FOLDER

makes sportident.txt (one line for name and club), oevent.txt and list.csv (a result list with a header row) in the
folder, in code page 932. Runners who did not start are left out.
"""
import os
import sys
import xml.etree.ElementTree as xml

WORDS = {'MP': 'mp', 'DNF': 'dnf', 'DISQ': 'disq'}
IN_A_ROW = 10  # controls


def seconds(text):
    hours, minutes, rest = text.split(':')
    return int(hours) * 3600 + int(minutes) * 60 + int(rest)


def clock(time):
    if time >= 3600:
        return '%d:%02d:%02d' % (time // 3600, time // 60 % 60, time % 60)
    return '%d:%02d' % (time // 60, time % 60)


def cell(text, width):
    """The text in columns of Shift-JIS bytes."""
    while len(text.encode('cp932')) > width:
        text = text[:-1]
    return text + ' ' * (width - len(text.encode('cp932')))


class Runner:
    def __init__(self, node):
        self.name, self.club = node.get('name'), node.get('club', '')
        self.number, self.rank = node.get('id'), node.get('rank', '')
        self.sex = node.get('sex')
        result = node.get('result')
        self.result = WORDS[result] if result in WORDS else clock(seconds(result))
        self.laps, self.splits, total = [], [], 0
        for leg in node.findall('leg'):
            text = leg.get('laptime')
            timed = ':' in text
            total += seconds(text) if timed else 0
            self.laps.append(clock(seconds(text)) if timed else '-----')
            self.splits.append(clock(total) if timed else '-----')


def classes(file):
    root = xml.parse(file).getroot()
    codes = {c.get('number'): [n.get('unit-number') for n in c.findall('control')] for c in root.iter('course')}
    for node in root.iter('class'):
        yield node, codes[node.get('course')], [Runner(r) for r in node.findall('runner') if r.find('leg') is not None]


def rows(cells):
    return [cells[at:at + IN_A_ROW] for at in range(0, len(cells), IN_A_ROW)]


def sportident(event):
    yield from ('', '合成大会                    2024/05/05 17:00:00', 'SPORTident results', 'OE2003 Ver 8.0', '')
    yield '  Pl    Stno Name             Cl.                               Time'
    right = lambda cells: ''.join('%8s' % c for c in cells)
    for node, codes, runners in event:
        yield ''
        yield '%s  (%d)  %.1f km  %s m  %d C' % (node.get('name'), len(runners), int(node.get('length')) / 1000,
                                                node.get('climb'), len(codes))
        for row in rows(['%d(%s)' % (i, c) for i, c in enumerate(codes, 1)] + ['F']):
            yield ' ' * 68 + right(row)
        for r in runners:
            head = ' %3s  %6s %s %s %8s' % (r.rank[:3], r.number, cell(r.name, 16), cell(r.club, 29), r.result)
            for splits, laps in zip(rows(r.splits), rows(r.laps)):
                yield head + right(splits)
                head = ' ' * 68
                yield head + right(laps)


def oevent(event):
    yield from ('合成大会', 'Split times of 合成大会', '')
    for node, codes, runners in event:
        yield from ('-' * 78, node.get('name'), '-' * 78)
        ends = codes + ['F']
        for r in runners:
            yield '%s,%s,%s,%s,%s' % (r.rank + '.' * bool(r.rank), r.name, r.club, r.number, r.result)
            for number, (splits, row) in enumerate(zip(rows(r.splits), rows(ends))):
                if number:
                    yield ',,,,,' + ',,'.join(before) + ',,'
                yield ',,,,,' + ','.join('%s,%s' % (s.replace('-----', '--:--'), e) for s, e in zip(splits, row))
                before = row
        yield ''
    yield from ('Created with OEvent', '2024.05.05 17:00:00')


def result_list(event):
    for node, codes, runners in event:
        legs = [str(i) for i in range(1, len(codes) + 1)] + ['F']
        yield ','.join(['クラス', '順位', 'ゼッケン', '氏名', '所属', '性別', 'タイム'] + legs)
        for r in runners:
            laps = [lap.replace('-----', '-') for lap in r.laps]
            yield ','.join([node.get('name'), r.rank, r.number, r.name, r.club, r.sex, r.result] + laps)


def main():
    event = list(classes(sys.argv[1]))
    for name, lines in (('sportident.txt', sportident), ('oevent.txt', oevent), ('list.csv', result_list)):
        with open(os.path.join(sys.argv[2], name), 'wb') as out:
            out.write(''.join(line + '\r\n' for line in lines(event)).encode('cp932'))


if __name__ == '__main__':
    main()
