// How the race of a set developed: a chart with a cursor, and the standings at it.
import {h} from './dom.js';
import {isNumber, signedTime, timeText} from './format.js';
import {t} from './language.js';
import {lineClass, raceDrawing} from './lines.js';
import {chart, chips, runnerAddress} from './parts.js';

const MOST_LINES = 80;
const LISTED = 12;

export function raceView({me, query, replace}, set) {
  if (set.finishers.length < 2) return h('p.card', t('oneRunner'));
  const kind = query.chart === 'pos' ? 'pos' : 'gap';
  const view = {set, me, replace, kind, rows: shownRows(set, query.show, me), at: startAt(set, query.at)};
  const standings = h('ol.standings');
  const title = h('h2.h2');
  const spoken = h('p.unseen', {role: 'status'});
  const slider = h('input.slider', {type: 'range', min: 1, max: set.legs, id: 'race-slider', value: view.at,
    input: (event) => move(Number(event.target.value))});
  let drawn = null;
  const move = (at) => {
    const i = Math.max(1, Math.min(set.legs, at));
    if (i !== view.at) replace({at: i === set.legs ? '' : i});
    view.at = i;
    slider.value = i;
    drawn?.move(i);
    showStandings(view, title, standings, spoken);
  };
  const place = chart((width) => {
    drawn = raceDrawing(set, view.rows, kind, width, me);
    drawn.move(view.at);
    return drawn.drawing;
  }, {tabindex: 0, role: 'group', 'aria-label': `${t('raceChart', set.name)}. ${t('dragHint')}`, ...pointer(() => drawn, () => view.at, move)});
  showStandings(view, title, standings, spoken);
  return h('div.two.wide-left',
    h('div.card', chips(t('race'), 'chart', kind === 'pos' ? 'pos' : '', [['', t('gapChart')], ['pos', t('positionChart')]]),
      place, h('label.unseen', {for: 'race-slider'}, t('dragHint')), slider, h('p.xs.mut.wide-only-block', t('dragHint'))),
    h('div.card', title, standings, chips(t('lines'), 'show', query.show ?? '', [['5', t('best5')], ['', t('best10')], ['all', t('all')]]), spoken));
}

function shownRows(set, show, me) {
  const most = show === 'all' ? MOST_LINES : show === '5' ? 5 : 10;
  return set.finishers.filter((row, place) => place < most || row.runner === me);
}

function startAt(set, at) {
  const i = Number(at);
  return at && Number.isInteger(i) ? Math.max(1, Math.min(set.legs, i)) : set.legs;
}

// Mouse, finger and keys move the cursor.
function pointer(drawn, at, move) {
  let down = false;
  const follow = (event) => {
    const box = event.currentTarget.getBoundingClientRect();
    move(drawn().nearest(event.clientX - box.left));
  };
  const keys = {ArrowLeft: () => at() - 1, ArrowRight: () => at() + 1, Home: () => 1, End: () => Infinity};
  return {
    pointerdown: (event) => { down = true; follow(event); },
    pointermove: (event) => { if (down || event.pointerType === 'mouse') follow(event); },
    pointerup: () => { down = false; },
    pointercancel: () => { down = false; },
    keydown: (event) => {
      if (!keys[event.key]) return;
      event.preventDefault();
      move(keys[event.key]());
    },
  };
}

// The standings after a leg by elapsed time. At the finish they are the results, from which elapsed
// times differ where legs were not timed.
export function standingsAfter(set, leg) {
  const timeOf = (row) => (leg === set.legs - 1 ? row.time : row.elapsed[leg]);
  const lines = set.finishers.map((row) => ({row, time: timeOf(row)})).filter(({time}) => isNumber(time)).sort((a, b) => a.time - b.time);
  let position = 0;
  lines.forEach((line, i) => {
    if (i === 0 || line.time > lines[i - 1].time) position = i + 1;
    const known = leg < set.legs - 1 && line.row.position[leg];
    line.position = known || position;
    const before = leg > 0 ? line.row.position[leg - 1] : 0;
    line.won = before > 0 ? before - line.position : 0;
  });
  return lines;
}

function showStandings({set, me, at}, title, list, spoken) {
  const inOrder = standingsAfter(set, at - 1);
  const code = at < set.legs && set.kind !== 'segment' && set.points[at] ? h('small', t('codeOf', set.points[at])) : null;
  title.replaceChildren(at === set.legs ? t('atFinish') : t('afterControl', set.names[at]), ' ', code ?? '');
  const shown = inOrder.slice(0, LISTED);
  const mine = inOrder.find(({row}) => row.runner === me);
  if (mine && !shown.includes(mine)) shown.push(mine);
  list.replaceChildren(...shown.map((line) => standing(set, line, inOrder[0], me)));
  spoken.textContent = `${title.textContent}: ${shown.slice(0, 3).map(({row, position}) => `${position} ${row.runner.name}`).join(', ')}`;
}

function standing(set, {row, time, position, won}, leader, me) {
  return h('li' + (row.runner === me ? '.me' : ''), h('a', {href: runnerAddress(row.runner)},
    h('span.ps', position), h(`span.swatch.${lineClass(row, set.finishers.indexOf(row), me)}`), h('span.nm', row.runner.name),
    h(`span.mv.${won > 0 ? 'gain' : won < 0 ? 'loss' : 'mut'}`, won > 0 ? `▲${won}` : won < 0 ? `▼${-won}` : ''),
    h('span.nw', row === leader.row ? h('b', timeText(time)) : signedTime(time - leader.time))));
}
