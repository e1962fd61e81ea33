// Two to five runners side by side.
import {h} from './dom.js';
import {classSetOf, openList, openSet} from './data.js';
import {largestSwings, legsWon, quantile} from './figures.js';
import {isNumber, percentText, shortName, signedTime, timeText} from './format.js';
import {icon} from './icons.js';
import {t} from './language.js';
import {gapDrawing} from './lines.js';
import {chart, courseText, lossClass, medal, resultText, runnerAddress, setAddress, setTitle, term} from './parts.js';
import {address, runnersOfKeys} from './route.js';
import {gapBars} from './view_runner.js';

const MOST_RUNNERS = 5;
const MOST_OPTIONS = 300;

export function compareView(app) {
  const {event, query, me} = app;
  const runners = runnersOfKeys(query.compare, event.runners).slice(0, MOST_RUNNERS);
  const set = commonSet(event, runners);
  const parts = [h('h1.h1', {tabindex: -1}, t('compareHead')), h('p.mut.sm', set ? [setTitle(set), courseText(set)].filter(Boolean).join(' · ') : ''),
    choice(app, runners, set)];
  if (runners.length < 2) return [...parts, h('p.card', t('compareHint'))];
  if (!set || set.legs === 0) return [...parts, timesOnly(event, runners, set !== null)];
  const rows = runners.map((runner) => set.byRunner.get(runner));
  return [...parts, h('div.two.wide-left', gapCard(set, rows, me), swingCard(set, rows)), pairCard(rows), table(set, rows, me)];
}

// The class of all of them, else a course that all had.
function commonSet(event, runners) {
  const [first] = runners;
  if (!first) return null;
  const sets = [classSetOf(event, first), ...event.sets.filter((set) => set.kind === 'course')];
  const found = sets.find((set) => set && runners.every((runner) => openList(event, set).byRunner.has(runner)));
  return found ? openSet(event, found) : null;
}

function kindOf(runner, i, me) {
  return runner === me ? 'me' : `c${i}`;
}

function compareAddress(runners) {
  return address({compare: runners.map((runner) => runner.serial).join(',')});
}

function choice({event, go, me}, runners, set) {
  const pool = addable(event, runners, set);
  return h('div.chips.chosen-runners', runners.map((runner, i) => h('a.chip', {
    href: compareAddress(runners.filter((other) => other !== runner)),
  }, h(`span.swatch.round.${kindOf(runner, i, me)}`), shortName(runner.name), h('span', {'aria-hidden': 'true'}, '✕'),
  h('span.unseen', t('remove', runner.name)))),
  runners.length >= MOST_RUNNERS ? null : h('select.select', {
    'aria-label': t('addRunner'), change: ({target}) => go(compareAddress([...runners, event.bySerial.get(Number(target.value))])),
  }, h('option', {value: ''}, `＋ ${t('addRunner')}`), pool.map((row) =>
    h('option', {value: row.runner.serial}, [row.rank || '–', row.runner.name, row.runner.className].join(' ')))),
  runners.length >= MOST_RUNNERS ? null : h('a.chip', {href: address({find: '', with: runners.map((runner) => runner.serial).join(',')})}, icon('find'), t('find')));
}

// Those of the whole course first, as they can be compared leg by leg.
function addable(event, runners, set) {
  const [first] = runners;
  const course = first ? event.courseOfClass.get(first.className) ?? set : null;
  const sets = course ? [course] : event.classSets;
  return sets.flatMap((each) => openList(event, each).rows).filter((row) => !runners.includes(row.runner)).slice(0, MOST_OPTIONS);
}

// Of runners who had no course in common: their results, and what their courses share.
function timesOnly(event, runners, sameClass) {
  return [sameClass ? null : h('p.before-list', t('otherCourses')), h('div.list.before-list', h('table.results', h('tbody', runners.map((runner) => {
    const list = classSetOf(event, runner);
    const row = list && openList(event, list).rowOf.get(runner);
    return h('tr', h('td', row ? medal(row) : h('span.medal', '–')),
      h('th.runner', {scope: 'row'}, h('a.nm', {href: runnerAddress(runner)}, runner.name), h('div.cl', [runner.className, runner.club].filter(Boolean).join(' · '))),
      h('td.r.tm.time-column', row ? resultText(row) : runner.result || '–'));
  })))), sameClass ? h('p.mut', t('noLaps')) : sharedSegments(event, runners)];
}

// A line for each segment that all of them ran, with the difference to the first of them.
function sharedSegments(event, runners) {
  const shared = event.sets.filter((set) => set.kind === 'segment').map((set) => ({set, rows: runners.map((runner) => openList(event, set).byRunner.get(runner))}))
    .filter(({rows}) => rows.every((row) => row && isNumber(row.time)));
  if (shared.length === 0) return h('p.mut', t('noShared'));
  return [h('p.before-list', t('otherCourses2')), h('div.scroll', {tabindex: 0, role: 'region', 'aria-label': t('sharedSegments')}, h('table.compare',
    h('thead', h('tr', h('th', {scope: 'col'}, t('segment')), runners.map((runner) => h('th', {scope: 'col'}, runner.name)))),
    h('tbody', shared.map(({set, rows: [base, ...others]}) => {
      const best = Math.min(base.time, ...others.map((row) => row.time));
      const cell = (row, more) => h('td' + (row.time === best ? '.best' : ''), h('b', timeText(row.time)), h('small', more));
      return h('tr', h('th.wrapped', {scope: 'row'}, h('a.link', {href: setAddress(set)}, setTitle(set))), cell(base, t('base')),
        others.map((row) => cell(row, signedTime(row.time - base.time))));
    })))), h('p.xs.mut', t('fastest'))];
}

function gapCard(set, rows, me) {
  const [base, ...others] = rows;
  const kinds = others.map((row, i) => kindOf(row.runner, i + 1, me));
  return h('div.card', h('h2.h2', t('gapTo', base.runner.name)),
    chart((width) => gapDrawing(set, base, others, kinds, width, width < 560 ? 220 : 290)),
    h('p.key', others.map((row, i) => h('span', h(`span.swatch.flat.${kinds[i]}`), row.runner.name, ' ',
      h('b', isNumber(row.time) && isNumber(base.time) ? signedTime(row.time - base.time) : '')))));
}

function swingCard(set, rows) {
  const swings = largestSwings(set, rows, 4);
  return h('div.card', h('h2.h2', t('swings')), h('ol.swings', swings.map(({leg, size, row}) => {
    const [winner, loser] = size > 0 ? [rows[0], row] : [row, rows[0]];
    return h('li', h('b', set.labels[leg]), ' ', t('swing', shortName(winner.runner.name), timeText(size), shortName(loser.runner.name)));
  })));
}

function pairCard(rows) {
  if (rows.length !== 2) return null;
  const bars = gapBars(rows[1], rows[0]);
  return bars && h('div.card.gap-above', h('h2.h2', t('gapHead'), ' ', h('small', `${rows[1].runner.name} – ${rows[0].runner.name}`)), bars);
}

function table(set, rows, me) {
  const [base] = rows;
  const won = legsWon(set, rows);
  const estimated = rows.every((row) => row.estimate);
  const line = (name, value) => h('tr', h('th', {scope: 'row'}, name), rows.map((row, i) => h('td', value(row, i))));
  const behind = (row) => (row !== base && isNumber(row.time) && isNumber(base.time) ? h('small', signedTime(row.time - base.time)) : null);
  return [h('div.scroll.gap-above', {tabindex: 0, role: 'region', 'aria-label': t('compareHead')}, h('table.compare',
    h('thead', h('tr', h('th', {scope: 'col'}, t('leg')), rows.map((row, i) => h('th', {scope: 'col'},
      h(`span.swatch.line.${kindOf(row.runner, i, me)}`), h('a', {href: runnerAddress(row.runner)}, row.runner.name), i === 0 ? [h('br'), h('small', t('base'))] : null)))),
    h('tbody', line(t('time'), (row) => [h('b', resultText(row)), behind(row)]),
      line(t('rank'), (row) => `${row.runner.className} ${row.rank || '–'}`),
      line(term('speed', t(estimated ? 'speed' : 'cruise')), (row) => percentText(row.speed, 1)),
      line(term('lost', t('lost')), (row) => timeText(row.lost)),
      estimated ? line(term('mistakes', t('mistakes')), (row) => row.mistakes) : null,
      line(term('clean', t('clean')), (row) => (isNumber(row.clean) ? timeText(row.clean) : '–')),
      line(t('legsWon'), (_, i) => won[i]), legLines(set, rows)))), h('p.xs.mut', t('fastest'))];
}

function legLines(set, rows) {
  const [base] = rows;
  const difference = (row, leg) => (row !== base && row.lapRank[leg] && base.lapRank[leg] ? row.laps[leg] - base.laps[leg] : null);
  const all = rows.flatMap((row) => set.labels.map((_, leg) => Math.abs(difference(row, leg) ?? 0)));
  const most = quantile(all.filter((size) => size >= set.first), 0.9) || 1;
  return set.labels.map((label, leg) => {
    if (!set.timed[leg]) return null;
    const best = Math.min(...rows.map((row) => (row.lapRank[leg] ? row.laps[leg] : Infinity)));
    return h('tr', h('th', {scope: 'row'}, h('a', {href: setAddress(set, {view: 'legs', leg: leg + 1})}, label)), rows.map((row) => {
      const size = difference(row, leg);
      const lap = row.laps[leg];
      const wide = size !== null && Math.abs(size) >= set.first ? Math.min(100, Math.abs(size) / most * 100).toFixed(0) : 0;
      const shade = `linear-gradient(270deg,var(--${size > 0 ? 'l1' : 'g1'}) ${wide}%,transparent ${wide}%)`;
      return h('td' + (row.lapRank[leg] && lap === best ? '.best' : ''), wide ? {style: {'background-image': shade}} : {},
        h('b', isNumber(lap) ? timeText(lap) : '–'),
        h('small' + (lossClass(set, size) ? `.${lossClass(set, size)}` : ''), size !== null ? signedTime(size) : row === base ? timeText(row.elapsed[leg]) : '\u00a0'));
    }));
  });
}
