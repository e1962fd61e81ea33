#!/usr/bin/env python3
"""Writes the event of a native lap file in the text formats that are read, for benchmarks.

    make_texts.py EVENT.lxm FOLDER

makes sportident.txt (one line for name and club), oevent.txt and list.csv (a result list with a header row) in the
folder, in code page 932, and iof3.xml, in UTF-8 with a line for each runner. Runners who did not start are left out.
"""
import os
import sys
import xml.etree.ElementTree as xml
from xml.sax.saxutils import escape

WORDS = {'MP': 'mp', 'DNF': 'dnf', 'DISQ': 'disq'}
STATUSES = {'MP': 'MissingPunch', 'DNF': 'DidNotFinish', 'DISQ': 'Disqualified'}
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
        self.start, self.time = node.get('start'), '' if result in WORDS else seconds(result)
        self.status = STATUSES.get(result, 'OK')
        self.laps, self.splits, self.times, total = [], [], [], 0
        for leg in node.findall('leg'):
            text = leg.get('laptime')
            timed = ':' in text
            total += seconds(text) if timed else 0
            self.laps.append(clock(seconds(text)) if timed else '-----')
            self.splits.append(clock(total) if timed else '-----')
            self.times.append(total if timed else None)


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


def element(name, text):
    return '<%s>%s</%s>' % (name, escape(str(text)), name)


def iof3_split(code, time):
    if time is None:
        return '<SplitTime status="Missing">%s</SplitTime>' % element('ControlCode', code)
    return '<SplitTime>%s%s</SplitTime>' % (element('ControlCode', code), element('Time', time))


def iof3(event):
    yield '<?xml version="1.0" encoding="UTF-8"?>'
    yield ('<ResultList xmlns="http://www.orienteering.org/datastandard/3.0" iofVersion="3.0" '
           'createTime="2024-05-05T17:00:00" creator="make_texts">')
    yield '<Event>%s<StartTime>%s</StartTime></Event>' % (element('Name', '合成大会'), element('Date', '2024-05-05'))
    for node, codes, runners in event:
        yield '<ClassResult><Class>%s</Class><Course>%s%s%s</Course>' % (
            element('Name', node.get('name')), element('Length', node.get('length')),
            element('Climb', node.get('climb')), element('NumberOfControls', len(codes)))
        for r in runners:
            family, _, given = r.name.partition(' ')
            yield ''.join(
                ['<PersonResult><Person><Name>', element('Family', family), element('Given', given), '</Name></Person>',
                 '<Organisation>', element('Name', r.club), '</Organisation><Result>', element('BibNumber', r.number)] +
                ([element('StartTime', '2024-05-05T' + r.start.zfill(8))] if r.start else []) +
                ([element('Time', r.time), element('Position', r.rank)] if r.time else []) +
                [element('Status', r.status)] + [iof3_split(c, t) for c, t in zip(codes, r.times)] +
                ['</Result></PersonResult>'])
        yield '</ClassResult>'
    yield '</ResultList>'


def main():
    event = list(classes(sys.argv[1]))
    for name, lines, charset in (('sportident.txt', sportident, 'cp932'), ('oevent.txt', oevent, 'cp932'),
                                 ('list.csv', result_list, 'cp932'), ('iof3.xml', iof3, 'utf-8')):
        with open(os.path.join(sys.argv[2], name), 'wb') as out:
            out.write(''.join(line + '\r\n' for line in lines(event)).encode(charset))


if __name__ == '__main__':
    main()
