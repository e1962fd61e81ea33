// The forms for paper: result lists on A4, the card of a runner on A5. They are made when they are
// printed, in a place of their own that the screen does not show.
import {byId, h} from './dom.js';
import {classSetOf, lapsRow, openList, openSet} from './data.js';
import {explainLap} from './explanation.js';
import {costliestLegs} from './figures.js';
import {isNumber, lengthText, percentText, signedTime, timeText} from './format.js';
import {dateText, ordinal, t} from './language.js';
import {positionDrawing} from './lines.js';
import {lossBars} from './loss_bars.js';
import {behindText, courseText, eventTitle, setTitle} from './parts.js';

const PAPER_WIDTH = 460;
const MOST_ROWS = 17;  // of a card in rows of the usual height

// Makes the form: "card" of a runner, "class" (a set) or "all" classes.
export function makePaper({event}, kind, {runner, set}) {
  const forms = {
    card: () => [card(event, runner)],
    class: () => [list(event, openList(event, set))],
    all: () => event.classSets.map((each) => list(event, openList(event, each))),
  };
  byId('paper').replaceChildren(...forms[kind]());
  document.body.dataset.print = kind;
}

export function removePaper() {
  delete document.body.dataset.print;
  byId('paper').replaceChildren();
}

function eventLine(event) {
  return h('p.event-line', h('b', eventTitle(event)), [dateText(event.date), event.terrain].filter(Boolean).map((part) => ` · ${part}`));
}

function list(event, set) {
  const heads = [['', t('rank')], ['', t('name')], ['', t('club')], ...(set.kind === 'class' ? [] : [['', t('class')]]), ['.r', t('time')], ['.r', t('behind')]];
  const count = t('finishedOf', set.placed.length, set.listed.length + set.withoutLaps.length);
  return h('section.paper-list', eventLine(event), h('h1', setTitle(set)), h('p.event-line', [courseText(set), count].filter(Boolean).join(' · ')),
    h('table', h('thead', h('tr', heads.map(([kind, text]) => h(`th${kind}`, {scope: 'col'}, text)))),
      h('tbody', set.listed.map((row) => listLine(set, row.runner, isNumber(row.time) ? row.rank : '', isNumber(row.time) ? timeText(row.time) : row.result, behindText(set, row))),
        set.withoutLaps.map((runner) => listLine(set, runner, '', runner.result, '')))));
}

function listLine(set, runner, rank, time, behind) {
  return h('tr', h('td', rank), h('th', {scope: 'row'}, runner.name), h('td', runner.club), set.kind === 'class' ? null : h('td', runner.className),
    h('td.r', h('b', time)), h('td.r', behind));
}

function card(event, runner) {
  const found = classSetOf(event, runner);
  const inList = found && openList(event, found).rowOf.get(runner);
  const row = inList && lapsRow(event, inList);
  const set = row && openSet(event, row.set);
  const about = [runner.club, runner.className, set ? lengthText(set.length, set.climb) : ''].filter(Boolean).join(' · ');
  const head = [eventLine(event), h('h1', runner.name), h('p', about)];
  if (!row) return h('section.paper-card', head, h('p', h('b', runner.result)));
  const place = isNumber(row.time) ? `${ordinal(inList.place ?? inList.rank)} ${t('ofN', found.placed.length)}` : row.result;
  const estimated = row.estimate !== null;
  return h('section.paper-card', head,
    h('p.big-line', h('b', place), isNumber(row.time) ? h('b', timeText(row.time)) : null, h('span', behindText(found, inList))),
    set.legs === 0 ? null : h('p', [`${t(estimated ? 'speed' : 'cruise')} ${percentText(row.speed, 1)}`, `${t('lost')} ${timeText(row.lost)}`,
      estimated ? `${t('mistakes')} ${row.mistakes}` : '', isNumber(row.clean) ? `${t('clean')} ${timeText(row.clean)}` : ''].filter(Boolean).join(' · ')),
    set.legs === 0 ? null : [lossBars(set, row, PAPER_WIDTH, isDense(set) ? 96 : 120, -1), positionDrawing(set, row, PAPER_WIDTH, isDense(set) ? 72 : 90), legColumns(set, row)],
    h('ol', costliestLegs(set, row, 3).map((leg) => h('li', h('b', set.labels[leg]), ' ', explainLap(set, row, leg)))));
}

// Whether a card has more legs than rows of the usual height have room for.
function isDense(set) {
  return set.timedLegs > 2 * MOST_ROWS;
}

function legColumns(set, row) {
  const legs = set.labels.map((_, leg) => leg).filter((leg) => set.timed[leg]);
  const half = Math.ceil(legs.length / 2);
  const told = (loss) => (isNumber(loss) && Math.abs(loss) >= set.first ? signedTime(loss) : '');
  return h('div.columns' + (isDense(set) ? '.dense' : ''), [legs.slice(0, half), legs.slice(half)].map((part) => h('table',
    h('thead', h('tr', [t('leg'), t('lap'), '#', t('lineLoss'), t('elapsed'), '#'].map((text, i) => h(`th${i ? '.r' : ''}`, {scope: 'col'}, text)))),
    h('tbody', part.map((leg) => h('tr', h('th', {scope: 'row'}, set.labels[leg]), h('td.r', h('b', timeText(row.laps[leg]))), h('td.r', row.lapRank[leg] || ''),
      h('td.r', told(row.loss[leg])), h('td.r', timeText(row.elapsed[leg])), h('td.r', row.position[leg] || '')))))));
}
