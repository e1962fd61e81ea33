// The first view: what the event was, and its classes.
import {h} from './dom.js';
import {classSetOf, lapsRow, openList, openSet} from './data.js';
import {finishDots} from './dots.js';
import {NO_STORIES, betterStories, storiesOf} from './figures.js';
import {isNumber, percentText, signedTime, timeText} from './format.js';
import {courseDrawing, icon} from './icons.js';
import {countOfRunners, dateText, ordinal, t} from './language.js';
import {behindText, countText, courseText, eventTitle, heatStrip, medal, resultText, runnerAddress, setAddress, setTitle} from './parts.js';
import {address} from './route.js';

const ROWS_AT_ONCE = 150;

export function eventView({event, me}) {
  return [band(event), myCard(event, me), storyTiles(event), classCards(event, me), segmentCards(event), links(event), remarks(event)];
}

function band(event) {
  const about = [dateText(event.date), event.terrain, countOfRunners(event.runners.length)];
  return h('div.hero', courseDrawing(), h('div.in',
    h('h1', {tabindex: -1}, eventTitle(event)), h('p', about.filter(Boolean).join(' · ')),
    h('a.find', {href: address({find: ''})}, icon('find'), h('span', t('findMe')))));
}

function myCard(event, me) {
  const list = me && classSetOf(event, me);
  const row = list && openSet(event, list).rowOf.get(me);
  if (!row) return null;
  const parts = isNumber(row.time) ?
    [h('b', ordinal(row.place ?? row.rank)), ` ${t('ofN', list.placed.length)} · ${timeText(row.time)} ${behindText(list, row)}`] :
    [resultText(row)];
  return h('a.card.class-card.mine', {href: runnerAddress(me)},
    h('header', h('h3', me.name), h('span.n', me.className)), h('p', parts), myStrip(event, row));
}

function myStrip(event, row) {
  const ran = lapsRow(event, row);
  return ran && heatStrip(ran.set, ran);
}

// The stories need every class worked out, so they come after the first view is on the screen, and
// bit by bit, so that the page answers meanwhile.
function storyTiles(event) {
  const tiles = h('div.tiles', [0, 1, 2, 3].map(() => h('div.card.tile', '\u00a0')));
  const head = h('h2.unseen', t('stories'));
  const prepare = (number, from, told) => {
    if (!tiles.isConnected) return;
    const set = event.classSets[number];
    if (set) {
      const more = betterStories(told, storiesOf(openSet(event, set), from, from + ROWS_AT_ONCE));
      const to = from + ROWS_AT_ONCE;
      setTimeout(() => (to < set.finishers.length ? prepare(number, to, more) : prepare(number + 1, 0, more)));
      return;
    }
    const made = storyCards(told);
    if (made.length > 0) tiles.replaceChildren(...made);
    else tiles.remove();
  };
  setTimeout(() => prepare(0, 0, NO_STORIES));
  return [head, tiles];
}

function storyCards({closest, comeback, cleanest, deciding}) {
  const tile = (kind, key, set, big, small, href) => h(`a.card.tile.${kind}`, {href},
    h('h3', `${t(key)} · ${set.name}`), h('p.big', big), h('p.sm.mut', small));
  const tiles = [];
  if (closest) {
    const {first, second} = closest;
    tiles.push(tile('s0', 'closest', closest.set, signedTime(second.time - first.time),
      `${first.runner.name} – ${second.runner.name}`, setAddress(closest.set, {view: 'race'})));
  }
  if (comeback) {
    tiles.push(tile('s1', 'comeback', comeback.set, `${ordinal(comeback.worst)} → ${ordinal(comeback.row.position.at(-1))}`,
      comeback.row.runner.name, runnerAddress(comeback.row.runner)));
  }
  if (cleanest) {
    tiles.push(tile('s2', 'cleanest', cleanest.set, t('lostShare', percentText(-cleanest.value, 1)),
      cleanest.row.runner.name, runnerAddress(cleanest.row.runner)));
  }
  if (deciding) {
    const leg = deciding.set.decisive;
    tiles.push(tile('s3', 'decidingLeg', deciding.set, deciding.set.labels[leg],
      t('decides', timeText(deciding.set.facts[leg].decisive)), setAddress(deciding.set, {view: 'legs', leg: leg + 1})));
  }
  return tiles;
}

function podium(set) {
  if (set.placed.length === 0) return h('ol.podium', h('li.mut', t('noTimes')));
  return h('ol.podium', set.placed.slice(0, 3).map((row) => h('li', medal(row),
    h('span.nm', row.runner.name), h('span.t', row === set.leader ? timeText(row.time) : behindText(set, row)))));
}

function classCards(event, me) {
  if (event.classSets.length === 0) return h('p.card', t('noTimes'));
  return [h('h2.h2', t('classes'), ' ', h('small', t('dots'))),
    h('div.grid.cards', event.classSets.map((set) => {
      openList(event, set);
      return h('a.card.class-card', {href: setAddress(set)},
        h('header', h('h3', set.name), h('span', courseText(set)), h('span.n', countText(set))),
        podium(set), finishDots(set, me));
    }))];
}

function segmentCards(event) {
  const segments = event.sets.filter((set) => set.kind === 'segment' && openList(event, set).winner);
  if (segments.length === 0) return null;
  return [h('h2.h2', t('sharedSegments')), h('div.grid.cards', segments.map((set) => {
    const classes = [...new Set(set.rows.map((row) => row.runner.className))];
    return h('a.card.class-card', {href: setAddress(set)},
      h('header', h('h3', setTitle(set)), h('span.n', countOfRunners(set.finishers.length))),
      h('p.sm.mut', classes.join(', ')),
      set.winner ? h('ol.podium', h('li', medal(set.winner), h('span.nm', set.winner.runner.name), h('span.t', timeText(set.winner.time)))) : null);
  }))];
}

// What is published beside the report: files to take away, and other pages.
const FILES = {lxm: 'lapFile', xml: 'iofXml', csv: 'table'};
const PAGES = {charts: 'charts', classic: 'classicPages', events: 'allEvents'};

function links(event) {
  const group = (title, keys, attributes) => {
    const found = event.links.filter(([kind]) => kind in keys);
    if (found.length === 0) return null;
    return [h('h2.h2', t(title)), h('ul.chips.links', found.map(([kind, href]) =>
      h('li', h('a.chip', {href, ...attributes}, t(keys[kind])))))];
  };
  return [group('takeAway', FILES, {download: true}), group('morePages', PAGES, {})];
}

// Only web addresses become links: the header of an event could hold any other kind.
function remarks(event) {
  if (!event.memo && !event.site) return null;
  const link = /^https?:\/\//i.test(event.site) ?
    h('a.link', {href: event.site, rel: 'noopener noreferrer'}, event.site.replace(/^https?:\/\//i, '')) : event.site;
  return h('p.sm.mut.remarks', event.memo, ' ', link);
}
