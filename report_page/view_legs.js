// The legs of a set, and the page of one leg.
import {h} from './dom.js';
import {lapDots} from './dots.js';
import {isMistake, median} from './figures.js';
import {isNumber, signedTime, timeText} from './format.js';
import {t} from './language.js';
import {chart, chips, isWide, lossClass, rankMedal, runnerAddress, setAddress, term} from './parts.js';
import {rowBodies} from './rows.js';

const MANY_MISTAKES = 0.4;

export function legsView(app, set) {
  return app.query.leg ? legPage(app, set) : legList(app, set);
}

function codes(set, leg) {
  if (set.kind === 'segment' || !set.points[leg] || !set.points[leg + 1]) return '';
  return `${set.points[leg]}–${set.points[leg + 1]}`;
}

function orderedLegs(set, order) {
  const legs = set.labels.map((_, leg) => leg).filter((leg) => set.timed[leg] && set.facts[leg].laps > 0);
  const value = {cost: (leg) => set.facts[leg].cost, dec: (leg) => set.facts[leg].decisive}[order];
  return value ? legs.sort((a, b) => value(b) - value(a)) : legs;
}

function legList({me, query}, set) {
  const order = ['cost', 'dec'].includes(query.sort) ? query.sort : '';
  const most = Math.max(1, ...set.facts.map((facts) => facts.cost));
  const untimed = set.labels.map((_, leg) => leg).filter((leg) => !set.timed[leg]);
  const dot = (kind) => h(`i.round.${kind}`);
  return [
    chips(t('legs'), 'sort', order, [['', t('byCourse')], ['cost', t('byCost')], ['dec', t('byDecisive')]]),
    h('p.key', h('span', dot('dot'), t('lap')), h('span', dot('dot-mistake'), term('mistakes', t('mistakes'))),
      set.byRunner.has(me) ? h('span', dot('dot-me'), t('you')) : null, h('span', term('decisive', `★ ${t('decidingLeg')}`))),
    h('div.list', orderedLegs(set, order).map((leg) => legRow(set, leg, me, order, most)),
      untimed.map((leg) => h('div.leg.mut', h('span.lb', set.labels[leg]), h('span', t('untimed'))))),
  ];
}

function bestRow(set, leg) {
  return set.rows.find((row) => row.lapRank[leg] === 1);
}

function medianLap(set, leg) {
  return median(set.rows.filter((row) => row.lapRank[leg] > 0).map((row) => row.laps[leg]));
}

function legRow(set, leg, me, order, most) {
  const facts = set.facts[leg];
  const best = bestRow(set, leg);
  const told = facts.laps < 2 ? '' : order === 'dec' ? t('decides', timeText(facts.decisive)) :
    [t('costEach', timeText(facts.cost)), ' · ', h('span.count' + (facts.mistakes / facts.laps >= MANY_MISTAKES ? '.loss' : ''), t('mistakesOf', facts.mistakes, facts.laps))];
  const share = (order === 'dec' ? facts.decisive / Math.max(1, ...set.facts.map((each) => each.decisive)) : facts.cost / most) * 100;
  return h('a.leg', {href: setAddress(set, {view: 'legs', leg: leg + 1, sort: order})},
    h('span.lb', set.labels[leg], set.decisive === leg ? h('span.star', {role: 'img', 'aria-label': t('hardest')}, ' ★') : null, h('small', codes(set, leg))),
    h('span', lapDots(set, leg, me, isWide() ? {width: 640, height: 40, radius: 4} : {width: 230, height: 32, radius: 3.1})),
    h('b.narrow-only.r', timeText(set.bestLap[leg])),
    h('span.m', h('span.wide-only-block', `${t('best')} `, h('b', timeText(set.bestLap[leg])), ` ${best?.runner.name ?? ''} · ${t('median')} ${timeText(medianLap(set, leg))}`),
      told && h('span.meter', {'aria-hidden': 'true'}, h('i', {style: {width: `${share.toFixed(0)}%`}})), told));
}

function neighbor(set, from, step) {
  let leg = from + step;
  while (leg >= 0 && leg < set.legs && !set.timed[leg]) leg += step;
  return leg >= 0 && leg < set.legs ? leg : null;
}

function legPage({me, query}, set) {
  const leg = Math.max(0, Math.min(set.legs - 1, (Number.parseInt(query.leg, 10) || 1) - 1));
  const facts = set.facts[leg];
  const rows = set.rows.filter((row) => row.lapRank[leg] > 0).sort((a, b) => a.laps[leg] - b.laps[leg]);
  const link = (to, text) => (to === null ? h('span') : h('a.btn', {href: setAddress(set, {view: 'legs', leg: to + 1, sort: query.sort})}, text));
  const [before, after] = [neighbor(set, leg, -1), neighbor(set, leg, 1)];
  const best = `${t('best')} ${timeText(rows[0]?.laps[leg])}`;
  const about = !set.timed[leg] ? [t('untimed')] : facts.laps < 2 ? [best] : [best, `${t('median')} ${timeText(medianLap(set, leg))}`,
    t('mistakesOf', facts.mistakes, facts.laps), t('costEach', timeText(facts.cost)), t('decides', timeText(facts.decisive))];
  return [
    h('div.above', link(before, before === null ? '' : `‹ ${set.labels[before]}`),
      h('a.link.sm', {href: setAddress(set, {view: 'legs', sort: query.sort})}, t('allLegs')),
      link(after, after === null ? '' : `${set.labels[after]} ›`)),
    h('div.card', h('p.h1.b', set.labels[leg], ' ', h('small.mut.sm', codes(set, leg))), h('p.sm.mut', about.join(' · ')),
      chart((width) => lapDots(set, leg, me, {width, height: width < 560 ? 80 : 90, radius: width < 560 ? 5 : 6, withAxis: true}) ?? h('span'))),
    h('h2.h2', t('allLaps')), lapTable(set, leg, rows, me),
  ];
}

function lapTable(set, leg, rows, me) {
  const bodies = rowBodies(rows, (row) => {
    const href = runnerAddress(row.runner, {leg: leg + 1});
    const loss = row.loss[leg];
    return h('tr' + (row.runner === me ? '.me' : ''), {'data-go': href},
      h('td', rankMedal(row.lapRank[leg])),
      h('th.runner', {scope: 'row'}, h('a.nm', {href}, row.runner.name), h('div.cl', set.kind === 'class' ? row.runner.club : row.runner.className)),
      h('td.r.top-cell', h('span.tm', timeText(row.laps[leg])),
        h('div.cl.nw', row.lapRank[leg] > 1 ? signedTime(row.laps[leg] - rows[0].laps[leg]) : '\u00a0')),
      h(`td.r.nw.${lossClass(set, loss) || 'mut'}`, isNumber(loss) && Math.abs(loss) >= set.first ? signedTime(loss) : '',
        isMistake(set, row, leg) ? h('span.mark', {role: 'img', 'aria-label': t('mistakes')}, ' ●') : null));
  }, {mine: rows.findIndex((row) => row.runner === me), rowHeight: 58});
  return h('div.list', h('table.results', h('caption.unseen', `${t('allLaps')}: ${set.labels[leg]}`), h('thead', h('tr',
    h('th', {scope: 'col'}, '#'), h('th', {scope: 'col'}, t('name')), h('th.r.lap-column', {scope: 'col'}, t('lap'), h('br'), t('behindLap')),
    h('th.r.lap-column', {scope: 'col'}, term('lost', t('lineLoss'))))), bodies));
}
