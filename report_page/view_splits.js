// The split table of a set.
import {h} from './dom.js';
import {lossStep} from './figures.js';
import {isNumber, signedTime, timeText} from './format.js';
import {t} from './language.js';
import {behindText, chips, fillRows, lossClass, resultText, runnerAddress, setAddress, term} from './parts.js';

const CELLS_AT_ONCE = 800;
const FEWEST_ROWS = 16;

export function splitsView({me, query}, set) {
  const line = ['loss', 'beh'].includes(query.line) ? query.line : '';
  const mine = me ? set.rows.findIndex((row) => row.runner === me) : -1;
  const body = fillRows(h('tbody'), set.rows, (row) => splitRow(set, row, line, me), mine,
    Math.max(FEWEST_ROWS, Math.round(CELLS_AT_ONCE / set.legs)));
  return [
    h('div.pick.second', h('span.sm.mut', t('secondLine')),
      chips(t('secondLine'), 'line', line, [['', t('lineElapsed')], ['loss', t('lineLoss')], ['beh', t('lineBehind')]])),
    h('div.scroll', {tabindex: 0, role: 'region', 'aria-label': `${t('splits')} ${set.name}`},
      h('table.splits', head(set), body)),
    legend(),
  ];
}

function head(set) {
  return h('thead', h('tr', h('th.fixed', {scope: 'col'}, t('name')), h('th', {scope: 'col'}, t('time')),
    set.labels.map((label, leg) => h('th', {scope: 'col'},
      set.timed[leg] ? h('a', {href: setAddress(set, {view: 'legs', leg: leg + 1})}, label) : h('span.mut', label),
      h('small', set.kind === 'segment' || leg === set.legs - 1 ? '\u00a0' : set.points[leg + 1] || '\u00a0')))));
}

function splitRow(set, row, line, me) {
  return h('tr' + (row.runner === me ? '.me' : ''),
    h('th.fixed', {scope: 'row'}, h('a', {href: runnerAddress(row.runner)},
      h('span.rk', isNumber(row.time) ? row.rank || '–' : '–'), h('span.n1', row.runner.name))),
    h('td', h('b', resultText(row)), h('small', behindText(set, row) || '\u00a0')),
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
  return [h('b', timeText(lap)), rank ? h('sup', rank) : null];
}

function secondLine(set, row, leg, line) {
  if (line === 'loss') {
    const loss = row.loss[leg];
    return h('small' + (lossClass(set, loss) ? `.${lossClass(set, loss)}` : ''), signedTime(loss));
  }
  if (line === 'beh') return h('small', row.lapRank[leg] ? signedTime(row.laps[leg] - set.bestLap[leg]) : '–');
  return h('small', timeText(set.timed[leg] ? row.elapsed[leg] : null), row.position[leg] ? h('sup', row.position[leg]) : null);
}

function legend() {
  const swatch = (color) => h('i', {style: {background: `var(--${color})`}});
  return h('p.key', h('span', swatch('gold'), '1'), h('span', swatch('silver'), '2'), h('span', swatch('bronze'), '3'),
    h('span', h('i.foot'), term('lost', t('keyLoss'))), h('span', t('keySkip')), h('span', t('keyFault')), h('span', t('keyUntimed')));
}
