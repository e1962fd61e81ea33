// Finding a runner, and the runners of a club.
import {h} from './dom.js';
import {classSetOf, openList} from './data.js';
import {isNumber} from './format.js';
import {icon} from './icons.js';
import {t} from './language.js';
import {behindText, medal, resultText, runnerAddress, setAddress, unknownPlace} from './parts.js';
import {address} from './route.js';
import {markedParts, search} from './search.js';

const MOST_HITS = 60;
const MOST_CLUBS_OF_HITS = 6;
const MOST_CLUBS = 60;

export function findView(app) {
  const {event, query, replace} = app;
  const hits = h('div.hits-place');
  const spoken = h('p.unseen', {role: 'status'});
  const show = (text) => {
    const found = search(event, text);
    hits.replaceChildren(...hitList(app, text, found).flat(3).filter(Boolean));
    spoken.textContent = text.trim() ? t('hits', found.runners.length) : '';
  };
  const field = h('input', {
    id: 'find', type: 'search', autocomplete: 'off', autocapitalize: 'off', spellcheck: 'false', enterkeyhint: 'search',
    placeholder: t('findMe'), value: query.find,
    input: ({target}) => { replace({find: target.value}); show(target.value); },
  });
  show(query.find);
  return [query.with ? h('h1.h1.before-list', {tabindex: -1}, t('addRunner')) : h('h1.unseen', {tabindex: -1}, t('find')), h('label.find', icon('find'), h('span.unseen', t('findMe')), field), hits, spoken];
}

function hitList({event, query}, text, {runners, clubs, classes}) {
  if (!text.trim()) return query.with ? [] : [h('p.mut.how', t('howMe')), clubList(event)];
  if (runners.length + clubs.length + classes.length === 0) return [h('p.card', t('noHit', text))];
  const chipLinks = query.with ? [] : [...classes.map((set) => h('a.chip', {href: setAddress(set)}, icon('class'), set.name)),
    ...clubs.slice(0, MOST_CLUBS_OF_HITS).map(clubChip)];
  return [chipLinks.length > 0 ? h('div.chips.before-list', chipLinks) : null,
    runners.length > 0 ? h('ul.list.hits', runners.slice(0, MOST_HITS).map((runner) => hitRow(event, runner, text, query.with))) : null];
}

function clubChip([name, count]) {
  return h('a.chip', {href: address({club: name})}, name, ' ', h('span.mut', count));
}

function clubList(event) {
  return event.clubs.length === 0 ? null : [h('h2.h2', t('clubs')), h('div.chips', event.clubs.slice(0, MOST_CLUBS).map(clubChip))];
}

function marked(text, searched) {
  const [before, word, after] = markedParts(text, searched);
  return word === undefined ? before : [before, h('mark', word), after];
}

// With runners to compare with, a hit leads to the comparison.
function hitRow(event, runner, text = '', others = '') {
  const list = classSetOf(event, runner);
  const row = list ? openList(event, list).rowOf.get(runner) : null;
  const href = others ? address({compare: `${others},${runner.serial}`}) : runnerAddress(runner);
  return h('li', h('a', {href}, row ? medal(row) : h('span.medal', '–'),
    h('span.who', h('b', marked(runner.name, text)), h('span.sm.mut', runner.className, runner.club ? [' · ', marked(runner.club, text)] : null)),
    h('span.r', h('b', row ? resultText(row) : h('span.status', runner.result || '–')),
      row && isNumber(row.time) ? [h('br'), h('span.sm.mut', behindText(list, row) || '\u00a0')] : null)));
}

export function clubView({event, query}) {
  const runners = event.runners.filter((runner) => runner.club === query.club);
  if (runners.length === 0) return unknownPlace(query.club);
  const place = (runner) => {
    const list = classSetOf(event, runner);
    const at = list ? openList(event, list).listed.findIndex((row) => row.runner === runner) : -1;
    return at < 0 ? Infinity : at;
  };
  const places = new Map(runners.map((runner) => [runner, place(runner)]));
  const inOrder = [...runners].sort((a, b) => a.classIndex - b.classIndex || places.get(a) - places.get(b));
  return [h('p.eyebrow', t('club')), h('h1.h1.before-list', {tabindex: -1}, query.club),
    h('ul.list.hits', inOrder.map((runner) => hitRow(event, runner)))];
}
