// What is around every view: head, navigation, foot and dialogs.
import {byId, h} from './dom.js';
import {classSetOf, openList} from './data.js';
import {flag, icon} from './icons.js';
import {dateText, t} from './language.js';
import {address} from './route.js';
import {eventTitle, isWide, runnerAddress, setAddress} from './parts.js';

function button(act, sign, label, more = {}) {
  return h('button.round-button', {type: 'button', 'data-act': act, 'aria-label': label, ...more}, sign);
}

export function showHead({event}) {
  const about = (short) => [dateText(event.date, short), event.terrain].filter(Boolean).join(' · ');
  byId('top').replaceChildren(
    h('a.ev', {href: '#'}, flag(), h('span.ev-text', h('b', eventTitle(event)), h('span', about(!isWide()) || '\u00a0'))),
    h('button.round-button.wide-only-flex', {type: 'button', 'data-act': 'language', 'aria-label': t('otherLanguageLong')}, t('otherLanguage')),
    button('theme', icon('theme'), t('theme'), {class: 'round-button wide-only-flex'}),
    button('print', icon('print'), t('print'), {class: 'round-button wide-only-flex', 'aria-haspopup': 'dialog'}),
    button('help', icon('help'), t('help'), {'aria-haspopup': 'dialog'}),
    button('menu', icon('menu'), t('menu'), {class: 'round-button narrow-only-flex', 'aria-haspopup': 'dialog'}));
}

// Where the five places of the navigation lead.
function places({event, me, lastClass}) {
  const find = address({find: ''});
  const mine = me && classSetOf(event, me);
  const set = event.byKey.get(lastClass) ?? mine ?? event.classSets[0];
  const winner = mine ? openList(event, mine).winner?.runner : null;
  const compared = [...new Set([winner, me])].filter(Boolean).map((runner) => runner.serial).join(',');
  return [['event', '#'], ['class', set ? setAddress(set) : '#'], ['me', me ? runnerAddress(me) : find],
    ['compare', address({compare: compared})], ['find', find]];
}

const PLACE_OF_VIEW = {event: 'event', set: 'class', compare: 'compare', find: 'find', club: 'find'};

export function showNavigation(app, view, runner) {
  const current = view === 'runner' ? (runner === app.me && runner ? 'me' : 'class') : PLACE_OF_VIEW[view];
  const nav = byId('nav');
  nav.setAttribute('aria-label', t('navigation'));
  nav.replaceChildren(...places(app).map(([key, href]) =>
    h('a', {href, 'aria-current': key === current ? 'page' : null}, icon(key), h('span', t(key)))));
  byId('skip').textContent = t('skip');
}

export function foot({event}) {
  return h('p.foot', [eventTitle(event), dateText(event.date)].filter(Boolean).join(' · '), h('br'), t('made', event.generator));
}

export function showDialog(title, body) {
  const dialog = byId('dialog');
  dialog.replaceChildren(
    h('div.dialog-head', h('h2', {id: 'dialog-title'}, title), button('close', '✕', t('close'))), h('div.dialog-body', body));
  if (!dialog.open) dialog.showModal();
  dialog.scrollTop = 0;
}

export function closeDialog() {
  byId('dialog').close();
}

export function menu() {
  const entry = (act, ...parts) => h('button.btn', {type: 'button', 'data-act': act}, parts);
  showDialog(t('menu'), [entry('language', t('otherLanguage')), entry('theme', icon('theme'), t('theme')),
    entry('print', icon('print'), t('print')), entry('help', icon('help'), t('terms'))]);
}

export function printMenu({event}, runner, set) {
  const entry = (kind, text) => h('button.btn', {type: 'button', 'data-paper': kind}, text);
  showDialog(t('print'), [runner ? entry('card', t('printCard', runner.name)) : null,
    set && set.kind !== 'segment' ? entry('class', t('printClass', set.name)) : null,
    event.classSets.length > 0 ? entry('all', t('printAll')) : null]);
}
