// The split table of a set.
import {h} from './dom.js';
import {lossStep, sum} from './figures.js';
import {isNumber, signedTime, timeText} from './format.js';
import {t} from './language.js';
import {behindText, chips, lossClass, resultText, runnerAddress, setAddress, term} from './parts.js';
import {rowBodies} from './rows.js';

const ROW_HEIGHT = 43;

export function splitsView({me, query}, set) {
  const line = ['loss', 'beh'].includes(query.line) ? query.line : '';
  const mine = me ? set.rows.findIndex((row) => row.runner === me) : -1;
  const bodies = rowBodies(set.rows, (row) => splitRow(set, row, line, me), {mine, rowHeight: ROW_HEIGHT, cells: set.legs + 2});
  const widths = columnWidths(set);
  return [
    h('div.pick.second', h('span.sm.mut', t('secondLine')),
      chips(t('secondLine'), 'line', line, [['', t('lineElapsed')], ['loss', t('lineLoss')], ['beh', t('lineBehind')]])),
    h('div.scroll', {tabindex: 0, role: 'region', 'aria-label': `${t('splits')} ${set.name}`},
      h('table.splits', {style: {'--rank-width': rankWidth(set), width: `max(100%, calc(var(--rank-width) + var(--name-width) + ${sum(widths).toFixed(1)}ch))`}},
        h('colgroup', h('col.name-column'), widths.map((width) => h('col', {style: {width: `${width.toFixed(1)}ch`}}))),
        head(set), bodies)),
    legend(),
  ];
}

// Widths of the columns in digits of the page's font, so that they stay when rows come and go. The
// smaller digits of the second line and of ranks are less than one; EDGES are the cell's own.
const SECOND_LINE = 0.8;
const RANK_DIGIT = 0.7;
const EDGES = 1.7;

function digitsOf(text) {
  return text.length - text.split(':').length / 2 + 0.5;
}

function columnWidths(set) {
  const largest = (values) => values.reduce((most, value) => (isNumber(value) && value > most ? value : most), 0);
  const ranks = String(set.rows.length).length * RANK_DIGIT;
  const total = largest(set.rows.map((row) => row.time));
  let elapsed = 0;
  const legs = set.labels.map((label, leg) => {
    const lap = largest(set.rows.map(({extras, runner, from}) => extras.lap?.[leg] ?? runner.laps[from + leg]));
    elapsed = Math.min(elapsed + lap, Math.max(total, lap));
    const digits = Math.max(digitsOf(timeText(lap)), digitsOf('+0:00') * SECOND_LINE, digitsOf(timeText(elapsed)) * SECOND_LINE);
    return Math.max(label.length, digits + ranks) + EDGES;
  });
  return [digitsOf(timeText(total)) + EDGES, ...legs];
}

// Room for the longest rank, as "(12)"; two digits are usual.
function rankWidth(set) {
  const longest = set.rows.reduce((most, row) => Math.max(most, row.rank.length), 0);
  return `${Math.min(60, Math.max(26, longest * 9))}px`;
}

function head(set) {
  return h('thead', h('tr', h('th.fixed', {scope: 'col'}, t('name')), h('th', {scope: 'col'}, t('time')),
    set.labels.map((label, leg) => h('th', {scope: 'col'},
      set.timed[leg] ? h('a', {href: setAddress(set, {view: 'legs', leg: leg + 1})}, label) : h('span.mut', label),
      secondText('', set.kind === 'segment' || leg === set.legs - 1 ? '\u00a0' : set.points[leg + 1] || '\u00a0')))));
}

function splitRow(set, row, line, me) {
  return h('tr' + (row.runner === me ? '.me' : ''),
    h('th.fixed', {scope: 'row'}, h('a', {href: runnerAddress(row.runner)},
      h('span.rk', isNumber(row.time) ? row.rank || '–' : '–'), h('span.n1', row.runner.name))),
    h('td', resultText(row), secondText('', behindText(set, row) || '\u00a0')),
    set.labels.map((_, leg) => cell(set, row, leg, line)));
}

function cell(set, row, leg, line) {
  const lap = row.laps[leg];
  const rank = row.lapRank[leg];
  const step = lossStep(set.first, row.loss[leg]);
  const classes = (rank >= 1 && rank <= 3 ? `.p${rank}` : '') + (step > 1 ? `.foot${step}` : '');
  return h(`td${classes}`, lapParts(lap, rank, set.timed[leg]), secondLine(set, row, leg, line));
}

function lapParts(lap, rank, timed) {
  if (lap === 'skip') return '↓';
  if (lap === 'disq') return '×';
  if (!isNumber(lap) || !timed) return h('span.mut', isNumber(lap) ? timeText(lap) : '–');
  return [rank >= 1 && rank <= 3 ? h('b', timeText(lap)) : timeText(lap), rank ? h('sup', rank) : null];
}

// The cells keep line ends: in tables of thousands of cells a line of its own costs much less than a block.
function secondText(classes, text, rank = null) {
  return h(`small${classes}`, `\n${text}`, rank ? h('sup', rank) : null);
}

function secondLine(set, row, leg, line) {
  if (line === 'loss') {
    const loss = row.loss[leg];
    return secondText(lossClass(set, loss) ? `.${lossClass(set, loss)}` : '', signedTime(loss));
  }
  if (line === 'beh') return secondText('', row.lapRank[leg] ? signedTime(row.laps[leg] - set.bestLap[leg]) : '–');
  return secondText('', timeText(set.timed[leg] ? row.elapsed[leg] : null), row.position[leg]);
}

function legend() {
  const swatch = (color) => h('i', {style: {background: `var(--${color})`}});
  return h('p.key', h('span', swatch('gold'), '1'), h('span', swatch('silver'), '2'), h('span', swatch('bronze'), '3'),
    h('span', h('i.foot'), term('lost', t('keyLoss'))), h('span', t('keySkip')), h('span', t('keyFault')), h('span', t('keyUntimed')));
}
