// The result list of a set.
import {h} from './dom.js';
import {lapsRow} from './data.js';
import {behindText, heatStrip, isWide, lossLegend, medal, resultText, runnerAddress, term} from './parts.js';
import {percentText, timeText, isNumber} from './format.js';
import {t} from './language.js';
import {rowBodies} from './rows.js';

const ROW_HEIGHT = 62;
const CELLS = 12;  // a strip costs as much as several cells

// A strip of two or three legs says nothing.
function hasStrip(set) {
  return set.legs > 0 && set.kind !== 'segment';
}

export function resultsView({event, me}, set) {
  const mine = me ? set.listed.findIndex((row) => row.runner === me) : -1;
  const bodies = rowBodies(set.listed, (row) => resultRow(event, set, row, me), {mine, rowHeight: ROW_HEIGHT, cells: CELLS});
  bodies.push(h('tbody', set.withoutLaps.map((runner) => startlessRow(runner, set))));
  return [
    h('div.above', hasStrip(set) ? lossLegend() : h('span'),
      mine > 7 ? h('button.chip.to-me', {type: 'button', 'data-act': 'to-me', 'aria-label': t('toMe')}, `↓ ${set.listed[mine].rank || '–'}`) : null),
    h('div.list', h('table.results', h('caption.unseen', `${t('results')} ${set.name}`), head(set), bodies)),
  ];
}

function head(set) {
  const estimated = set.listed.some((row) => row.estimate);
  return h('thead', h('tr',
    h('th', {scope: 'col'}, term('rank', '#')), h('th', {scope: 'col'}, t('name')),
    hasStrip(set) ? h('th.wide-only.strip-column', {scope: 'col'}, t('strip')) : null,
    hasStrip(set) ? h('th.r.wide-only.figure-column', {scope: 'col'}, term('speed', t(estimated ? 'speed' : 'cruise'))) : null,
    set.legs > 0 ? h('th.r.wide-only.figure-column', {scope: 'col'}, term('lost', t('lost'))) : null,
    h('th.r.time-column', {scope: 'col'}, t('time'), h('br'), term('behind', t('behind')))));
}

function resultRow(event, set, row, me) {
  const {runner} = row;
  const about = set.kind === 'class' ? runner.club : [runner.club, runner.className].filter(Boolean).join(' · ');
  const href = runnerAddress(runner, set.kind === 'course' ? {course: set.name} : {});
  const ran = hasStrip(set) ? lapsRow(event, row) : null;
  const strip = ran && heatStrip(ran.set, ran);
  return h('tr' + (runner === me ? '.me' : ''), {'data-go': href},
    h('td', medal(row)),
    h('td', h('a.nm', {href}, runner.name), h('div.cl', about || '\u00a0'), strip && !isWide() ? h('div.below', strip) : null),
    hasStrip(set) ? h('td.wide-only', isWide() ? strip : null) : null,
    hasStrip(set) ? h('td.r.wide-only.mut.sm', percentText(row.speed)) : null,
    set.legs > 0 ? h('td.r.wide-only.mut.sm', isNumber(row.lost) && isNumber(row.time) ? timeText(row.lost) : '–') : null,
    h('td.r.top-cell', h('span.tm', resultText(row)), h('div.cl.nw', behindText(set, row) || '\u00a0')));
}

function startlessRow(runner, set) {
  const href = runnerAddress(runner);
  return h('tr', {'data-go': href}, h('td', h('span.medal', '–')),
    h('td', h('a.nm', {href}, runner.name), h('div.cl', runner.club)),
    hasStrip(set) ? [h('td.wide-only'), h('td.wide-only')] : null, set.legs > 0 ? h('td.wide-only') : null,
    h('td.r', runner.outcome === 'ok' ? h('span.tm', runner.result) : h('span.status', runner.result || '–')));
}
