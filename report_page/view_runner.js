// The card of a runner.
import {h} from './dom.js';
import {classSetOf, lapsRow, openSet} from './data.js';
import {whyDots} from './dots.js';
import {explainLap, verdictOf} from './explanation.js';
import {costliestLegs, partsOfGap, placeWithout} from './figures.js';
import {clockText, isNumber, percentText, shortName, signedTime, timeText} from './format.js';
import {icon} from './icons.js';
import {isJapanese, ordinal, ordinalEnding, rich, t} from './language.js';
import {gapDrawing, positionDrawing} from './lines.js';
import {lossBars} from './loss_bars.js';
import {behindText, chart, chips, courseText, heatStrip, lossClass, resultText, runnerAddress, setAddress, term, unknownPlace} from './parts.js';
import {address, runnerKey, runnerOfKey, setKey} from './route.js';

const MOST_OPTIONS = 300;
const EVEN_HALVES = 0.015;

export function runnerOf({event, query}) {
  return runnerOfKey(query.runner, event.runners);
}

// The row with which a card shows its runner, in the set of the course of the address, else in the
// class. `listed` is the row with the place: a runner who had another course than the class, as with
// forks, is listed in the class and has the laps in the set of that course.
function scopeOf(event, runner, query) {
  const course = query.course && event.byKey.get(setKey('course', query.course));
  for (const set of [course, classSetOf(event, runner), event.courseOfClass.get(runner.className)]) {
    const listed = set && openSet(event, set).rowOf.get(runner);
    if (listed) return {listed, row: lapsRow(event, listed)};
  }
  return {listed: null, row: null};
}

export function runnerView(app) {
  const runner = runnerOf(app);
  if (!runner) return unknownPlace(app.query.runner.split('~').at(-1));
  const {listed, row} = scopeOf(app.event, runner, app.query);
  if (!listed) return statusCard(app, runner);
  if (!row || row.set.legs === 0) return [neighbors(listed, app.query), plainCard(app, listed)];
  const {set} = row;
  if (set.rows.length === 1) return [loneCard(app, listed), legTable(app, set, row)];
  return [
    neighbors(listed, app.query),
    h('div.two', h('div.stack', mainCard(app, listed, row), gapCard(app, set, row)),
      h('div.stack', legCard(app, set, row), costliestCard(set, row))),
    legTable(app, set, row),
  ];
}

function head({event, query}, runner, set, list = set) {
  const start = runner.start > 0 ? `${t('start')} ${clockText(runner.start)}` : '';
  const course = event.courseOfClass.get(runner.className);
  const inCourse = list?.kind === 'course';
  const scope = !course || !set ? null : h('a.link', {href: runnerAddress(runner, {course: inCourse ? '' : course.name, ref: query.ref})}, t(inCourse ? 'onlyClass' : 'wholeCourse'));
  return [
    h('p.eyebrow', h('a.link', {href: address({class: runner.className})}, runner.className),
      [set ? courseText(set) : '', start].filter(Boolean).map((part) => ` · ${part}`), scope ? [' · ', scope] : null),
    h('h1.h1', {tabindex: -1}, runner.name),
    runner.club ? h('p.mut', h('a.link', {href: address({club: runner.club})}, runner.club)) : null,
  ];
}

function actions({me}, runner, rival) {
  const isMe = me === runner;
  const compared = [rival?.runner.serial, runner.serial].filter(Boolean).join(',');
  return h('div.chips.actions',
    h('button.btn', {type: 'button', 'data-act': 'me', 'data-runner': runner.serial, 'aria-pressed': String(isMe)}, icon('me'), t(isMe ? 'thatsMe' : 'thisIsMe')),
    rival === undefined ? null : h('a.btn', {href: address({compare: compared})}, icon('compare'), t('compare')));
}

// Of a class without laps, and of a course that is no set, there is only the place.
function plainCard(app, listed) {
  return h('div.card', head(app, listed.runner, listed.set), placeLine(listed), h('p.mut', t('noLaps')), actions(app, listed.runner, undefined));
}

// Of the only runner with laps nothing can be told but the laps.
function loneCard(app, listed) {
  return h('div.card', head(app, listed.runner, listed.set), placeLine(listed), h('p.mut', t('oneRunner')), actions(app, listed.runner, undefined));
}

function statusCard(app, runner) {
  const why = runner.outcome === 'dns' ? t('didNotStart') : t('noLaps');
  return h('div.card', head(app, runner, null),
    h('div.place-line', runner.outcome === 'ok' ? h('span.time', runner.result) : h('span.status.large', runner.result || '–')), h('p.mut', why), actions(app, runner, undefined));
}

// The runners before and after, so that a list can be read card by card.
function neighbors(listed, query) {
  const {set} = listed;
  const at = set.listed.indexOf(listed);
  const link = (other, key, before, after) => (!other ? h('span') : h('a.btn.small', {
    href: runnerAddress(other.runner, {course: set.kind === 'course' ? set.name : '', sort: query.sort}),
    'aria-label': t(key, other.runner.name),
  }, before, h('span.ellipsis', shortName(other.runner.name)), after));
  return h('div.above.neighbors', link(set.listed[at - 1], 'previous', '‹ ', ''), link(set.listed[at + 1], 'next', '', ' ›'));
}

function rivalOf(set, row, query) {
  const wanted = set.rows.find((other) => String(other.runner.serial) === query.ref);
  if (wanted && wanted !== row) return wanted;
  return set.winner !== row ? set.winner : set.finishers.find((other) => other !== row) ?? null;
}

function mainCard(app, listed, row) {
  const {set} = row;
  const rival = rivalOf(set, row, app.query);
  return h('div.card', head(app, row.runner, set, listed.set), placeLine(listed), heatStrip(set, row, '.tall'), tiles(row),
    h('p.summary', summary(listed, row)), actions(app, row.runner, rival),
    h('h2.h3', term('position', t('becameHead'))), chart((width) => positionDrawing(set, row, width, 140)));
}

function placeText(row) {
  if (!isNumber(row.place)) return row.rank || '–';
  return [row.place, h('small', isJapanese() ? '位' : ordinalEnding(row.place))];
}

function placeLine(row) {
  const {set} = row;
  if (!isNumber(row.time)) return h('div.place-line', h('span.status.large', row.result || '–'));
  return h('div.place-line',
    h('span.place', placeText(row), ' ', h('small', t('ofN', set.placed.length))),
    h('span', h('span.time', timeText(row.time)),
      row !== set.leader ? [h('br'), h('span.mut', `${behindText(set, row)} · ${shortName(set.leader.runner.name)}`)] : null));
}

function tiles(row) {
  const tile = (value, key, label, more = null) => h('div.kpi', h('div.v', value, more), h('div.k', term(key, label)));
  const range = row.lostRange && h('small', ` ${row.lostRange.map(timeText).join('–')}`);
  const estimated = row.estimate !== null;
  return h('div.kpis',
    tile(percentText(row.speed, 1), 'speed', t(estimated ? 'speed' : 'cruise')),
    tile(timeText(row.lost), 'lost', t('lost'), range),
    estimated ? tile(row.mistakes, 'mistakes', t('mistakes')) : tile(percentText(row.rate, 1), 'rate', t('rate')),
    tile(isNumber(row.clean) ? timeText(row.clean) : '–', 'clean', t('clean')));
}

function summary(listed, row) {
  const parts = [];
  const without = placeWithout(listed.set, listed);
  const now = listed.place ?? null;
  if (isNumber(row.clean) && row.lost >= row.set.first) {
    const ideal = h('b', timeText(row.clean));
    parts.push(without !== null && now !== null && without < now ? rich('wouldBe', ideal, h('b', ordinal(without)), ordinal(now)) : rich('withoutMistakes', ideal));
  }
  if (row.half !== null) {
    const percent = Math.abs(row.half * 100).toFixed(0);
    parts.push(Math.abs(row.half) < EVEN_HALVES ? t('halfEven') : t(row.half > 0 ? 'halfSlower' : 'halfFaster', percent));
  }
  return parts.flatMap((part, i) => (i > 0 && !isJapanese() ? [' ', part] : [part]));
}

function gapCard({query}, set, row) {
  const rival = rivalOf(set, row, query);
  if (!rival || !isNumber(row.time) || !isNumber(rival.time)) return null;
  const gap = row.time - rival.time;
  const key = Math.round(gap) === 0 ? 'gapLevel' : gap > 0 ? 'gapBehind' : 'gapAhead';
  return h('div.card', h('h2.h2', t('gapHead')), rivalChoice(set, row, rival),
    h('p.b', t(key, timeText(gap), rival.runner.name)), gapBars(row, rival),
    h('h3.h3', t('gapTo', rival.runner.name)), chart((width) => gapDrawing(set, rival, [row], ['me'], width, 176)));
}

function rivalChoice(set, row, rival) {
  const at = set.finishers.indexOf(row);
  const near = [[set.winner, 'winner'], [set.finishers[at - 1], 'ahead'], [set.finishers[at + 1], 'behindMe']]
    .filter(([other], i, all) => other && other !== row && all.findIndex(([first]) => first === other) === i);
  const value = (other) => (other === set.winner ? '' : String(other.runner.serial));
  const others = set.finishers.filter((other, i) => other !== row && (i < MOST_OPTIONS || other === rival));
  return h('div.chips.rivals', chips(t('rival'), 'ref', value(rival), near.map(([other, key]) => [value(other), t(key)])),
    h('select.select', {'data-key': 'ref', 'aria-label': t('rival')}, others.map((other) =>
      h('option', {value: other.runner.serial, selected: other === rival}, `${other.rank || '–'} ${other.runner.name}`))));
}

// Bars from one zero line: pace, mistakes and both together.
export function gapBars(row, rival) {
  const parts = partsOfGap(row, rival);
  if (!parts) return null;
  const values = [parts.pace, parts.mistakes, parts.gap];
  const least = Math.min(0, ...values);
  const range = Math.max(0, ...values) - least || 1;
  const zero = -least / range * 100;
  const bar = (value, kind) => {
    const width = Math.abs(value) / range * 100;
    return h('span.bar', {style: {'background-position': `${zero}% 0`}},
      h(`i.${kind}`, {style: {left: `${value < 0 ? zero - width : zero}%`, width: `${width}%`}}));
  };
  const sentence = parts.pace >= 0 && parts.mistakes >= 0 ? t('gapBoth', timeText(parts.pace), timeText(parts.mistakes)) :
    t('gapParts', signedTime(parts.pace), signedTime(parts.mistakes));
  return [h('div.gap-bars', h('span', term('speed', t('pace'))), bar(parts.pace, 'pace'), h('b.r', signedTime(parts.pace)),
    h('span', term('mistakes', t('mistakesOfGap'))), bar(parts.mistakes, 'mistake'), h('b.r', signedTime(parts.mistakes)),
    h('b', t('gapSum')), bar(parts.gap, 'both'), h('b.r', signedTime(parts.gap))), h('p.sm.mut', sentence)];
}

// Bars with a leg that is explained below them.
function legCard({query, replace}, set, row) {
  if (!row.loss.some(isNumber)) return h('div.card', h('h2.h2', t('legByLeg')), h('p', t('noLaps')));
  const wanted = Number.parseInt(query.leg, 10) - 1;
  let chosen = wanted >= 0 && wanted < set.legs && set.timed[wanted] ? wanted : costliestLegs(set, row, 1)[0] ?? set.timed.indexOf(true);
  const text = h('p.explained', {'aria-live': 'polite'});
  const place = chart((width) => lossBars(set, row, width, 190, chosen), {
    tabindex: 0, role: 'slider', 'aria-label': t('legByLeg'), 'aria-valuemin': 1, 'aria-valuemax': set.legs,
    ...legPointer(set, () => chosen, (leg) => { replace({leg: leg + 1}); show(leg); }),
  });
  const show = (leg) => {
    chosen = leg;
    place.setAttribute('aria-valuenow', leg + 1);
    place.setAttribute('aria-valuetext', `${set.labels[leg]} ${signedTime(row.loss[leg])}`);
    text.replaceChildren(h('b.lead', set.labels[leg]), ' ', ...explainLap(set, row, leg).flat(4).filter((part) => part !== ''));
    if (place.isConnected) place.draw();
  };
  show(chosen);
  return h('div.card', h('h2.h2', t('legByLeg')), h('p.xs.mut', t('legHint')), place, text);
}

function legPointer(set, chosen, choose) {
  let down = false;
  const follow = (event) => {
    const box = event.currentTarget.getBoundingClientRect();
    const share = (event.clientX - box.left) / box.width;
    const leg = set.x.findIndex((x) => x > share) - 1;
    if (leg >= 0 && leg !== chosen()) choose(leg);
  };
  return {
    pointerdown: (event) => { down = true; follow(event); },
    pointermove: (event) => { if (down) follow(event); },
    pointerup: () => { down = false; },
    pointercancel: () => { down = false; },
    keydown: (event) => {
      const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
      if (!step) return;
      event.preventDefault();
      let leg = chosen() + step;
      while (leg >= 0 && leg < set.legs && !set.timed[leg]) leg += step;
      if (leg >= 0 && leg < set.legs) choose(leg);
    },
  };
}

function costliestCard(set, row) {
  const legs = costliestLegs(set, row, 3);
  return h('div.card', h('h2.h2', t('costliest')), legs.length === 0 ? h('p', t('cleanRun')) :
    h('ol.costliest', legs.map((leg) => {
      const verdict = verdictOf(set, row, leg);
      return h('li', h('header', h('span.lead', set.labels[leg]), h('span.loss', signedTime(row.loss[leg])),
        verdict ? h(`button.tag.${verdict.kind}`, {type: 'button', 'data-help': verdict.kind === 'hard' ? 'hard' : 'mistakes', 'aria-haspopup': 'dialog'}, verdict.text) : null),
      chart((width) => whyDrawing(set, row, leg, width)), h('p.sm', explainLap(set, row, leg)));
    })));
}

function whyDrawing(set, row, leg, width) {
  if (row.lapRank[leg] === 0) return h('span');
  const {drawing, ownShare, mineShare} = whyDots(set, row, leg, width);
  const place = (share) => (share < 0.15 ? '.from' : share > 0.85 ? '.to' : '');
  return h('div', drawing, h('p.xs.mut.below-dots',
    h('span.at' + place(ownShare), {style: {left: `${(ownShare * 100).toFixed(1)}%`}}, `${t('ownPace')} ${timeText(row.own[leg])}`),
    Math.abs(mineShare - ownShare) > 0.34 ? h('b.at.me' + place(mineShare), {style: {left: `${(mineShare * 100).toFixed(1)}%`}}, timeText(row.laps[leg])) : null));
}

function legTable({query}, set, row) {
  const legs = set.labels.map((_, leg) => leg).filter((leg) => set.timed[leg]);
  if (query.sort === 'loss') legs.sort((a, b) => (row.loss[b] ?? -Infinity) - (row.loss[a] ?? -Infinity));
  const behind = (leg) => (row.lapRank[leg] ? row.laps[leg] - Math.min(set.reference[leg], set.bestLap[leg]) : 0);
  const most = Math.max(1, ...legs.map(behind));
  return [h('h2.h2', t('allLegs'), chips(t('allLegs'), 'sort', query.sort === 'loss' ? 'loss' : '', [['', t('byCourse')], ['loss', t('byLoss')]])),
    h('div.list.scroll-x', {tabindex: 0, role: 'region', 'aria-label': t('allLegs')}, h('table.leg-table',
      h('thead', h('tr', h('th', {scope: 'col'}, t('leg')), h('th.r', {scope: 'col'}, t('lap')), h('th.r', {scope: 'col'}, term('rank', '#')),
        h('th.r', {scope: 'col'}, term('lost', t('lineLoss'))), h('th.wide-only', {scope: 'col'}, term('ref', t('lineBehind')), ': ', h('span.gain', t('pace')), ' / ', h('span.loss', t('mistakesOfGap'))),
        h('th.r', {scope: 'col'}, t('elapsed')), h('th.r', {scope: 'col'}, term('position', t('position'))))),
      h('tbody', legs.map((leg) => legLine(set, row, leg, behind(leg), most)))))];
}

function legLine(set, row, leg, behind, most) {
  const loss = row.loss[leg];
  const lost = isNumber(loss) ? Math.max(0, Math.min(loss, behind)) : 0;
  const bar = (kind, from, size) => h(`i.${kind}`, {style: {left: `${from / most * 100}%`, width: `${Math.max(0, size) / most * 100}%`}});
  const lap = row.laps[leg];
  return h('tr', h('th', {scope: 'row'}, h('a', {href: setAddress(set, {view: 'legs', leg: leg + 1})}, set.labels[leg])),
    h('td.r.b', isNumber(lap) ? timeText(lap) : lap === 'skip' ? '↓' : lap === 'disq' ? '×' : '–'),
    h('td.r.mut', row.lapRank[leg] || ''), h(`td.r.${lossClass(set, loss) || 'mut'}`, isNumber(loss) ? signedTime(loss) : ''),
    h('td.wide-only', h('span.two-bars', row.lapRank[leg] ? [bar('pace', 0, behind - lost), bar('mistake', behind - lost, lost)] : null)),
    h('td.r', timeText(row.elapsed[leg])), h('td.r', row.position[leg] || ''));
}
