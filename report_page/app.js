// Connects the parts: reads the data, shows the view of the address, and answers to clicks and keys.
import {byId} from './dom.js';
import {classSetOf, makeEvent} from './data.js';
import {helpDialog, helpView} from './help.js';
import {chooseLanguage, isJapanese, language, setLanguage, t} from './language.js';
import {makePaper, removePaper} from './paper.js';
import {drawCharts, eventTitle, setTitle} from './parts.js';
import {address, readAddress, setKeyOf, viewOf} from './route.js';
import {lookSoon, showMyRow, watchRows} from './rows.js';
import {closeDialog, foot, menu, printMenu, showDialog, showHead, showNavigation} from './shell.js';
import {store, stored} from './store.js';
import {compareView} from './view_compare.js';
import {eventView} from './view_event.js';
import {clubView, findView} from './view_find.js';
import {runnerOf, runnerView} from './view_runner.js';
import {setView} from './view_set.js';

const VIEWS = {event: eventView, set: setView, runner: runnerView, compare: compareView, find: findView, club: clubView, help: helpView};
const LANGUAGE_KEY = 'keltrun.language';
const THEME_KEY = 'keltrun.theme';

// What every view gets: the event, the address, who "me" is, and how to change the address.
const app = {event: null, query: {}, me: null, lastClass: '', go, replace};
const scrolled = new Map();        // by address
const framesScrolled = new Map();  // the same for the wide tables of a view
let byLink = false;
let shownWidth = 0;

function ownKey(name) {
  return `keltrun.${name}.${app.event.name}.${app.event.date ?? ''}`;
}

// Goes to an address as a link does.
function go(hash) {
  keepScroll();
  byLink = true;
  location.hash = hash;
}

// Changes values of the address without a step in the history.
function replace(values) {
  const query = {...app.query, ...values};
  app.query = Object.assign(Object.create(null), query);
  history.replaceState(history.state, '', address(query));
}

function keepScroll() {
  scrolled.set(location.hash, scrollY);
}

function frames() {
  return [...byId('main').querySelectorAll('.scroll, .scroll-x')];
}

function placesOfFrames() {
  return frames().map(({scrollLeft, scrollTop}) => [scrollLeft, scrollTop]);
}

function placeFrames(places = []) {
  frames().forEach((frame, i) => places[i] && frame.scrollTo(...places[i]));
}

// When the address has changed, the view of the old one is still there.
function onAddress({oldURL}) {
  framesScrolled.set(new URL(oldURL).hash, placesOfFrames());
  show();
}

function chosenRunner() {
  return app.query.runner ? runnerOf(app) : null;
}

function chosenSet() {
  const runner = chosenRunner();
  return runner ? classSetOf(app.event, runner) : app.event.byKey.get(setKeyOf(app.query)) ?? null;
}

function titleOf(view) {
  const runner = chosenRunner();
  if (runner) return runner.name;
  if (view === 'set' && chosenSet()) return setTitle(chosenSet());
  return {compare: t('compareHead'), find: t('find'), club: app.query.club, help: t('terms')}[view] ?? '';
}

function readMe() {
  const [serial, ...name] = (stored(ownKey('me')) ?? '').split('~');
  const runner = app.event.bySerial.get(Number(serial));
  if (runner && runner.name === name.join('~')) return runner;
  const named = app.event.runners.filter((each) => each.name === name.join('~'));
  return serial && named.length === 1 ? named[0] : null;
}

// Shows the view of the address.
function show({keepPlace = false} = {}) {
  app.query = readAddress(location.hash);
  setLanguage(chooseLanguage(app.query.lang, stored(LANGUAGE_KEY), navigator.language));
  document.documentElement.lang = language;
  app.me = readMe();
  const view = viewOf(app.query);
  rememberClass();
  const main = byId('main');
  const parts = VIEWS[view](app);
  main.replaceChildren(...[parts].flat(5).filter(Boolean), foot(app));
  main.dataset.view = view;
  showHead(app);
  showNavigation(app, view, chosenRunner());
  document.title = [titleOf(view), eventTitle(app.event)].filter(Boolean).join(' – ');
  drawCharts(main);
  watchRows();
  shownWidth = innerWidth;
  if (!keepPlace) placeView(main);
  byLink = false;
  document.body.dataset.ready = location.hash || '#';
}

function rememberClass() {
  const set = app.event.byKey.get(setKeyOf(app.query));
  if (set?.kind === 'class') store(ownKey('class'), set.key);
  app.lastClass = stored(ownKey('class')) ?? '';
}

// After a link the view begins at its top; after going back it is where it was.
function placeView(main) {
  const field = byId('find');
  if (field) field.focus();
  else if (byLink) main.querySelector('h1')?.focus({preventScroll: true});
  scrollTo(0, byLink ? 0 : scrolled.get(location.hash) ?? 0);
  if (!byLink) placeFrames(framesScrolled.get(location.hash));
}

function showAgain() {
  const [x, y, places] = [scrollX, scrollY, placesOfFrames()];
  show({keepPlace: true});
  scrollTo(x, y);
  placeFrames(places);
}

// --- what buttons do ---

function setMe(serial) {
  const runner = app.event.bySerial.get(Number(serial));
  store(ownKey('me'), runner === app.me ? null : `${runner.serial}~${runner.name}`);
  showAgain();
  document.querySelector('[data-act=me]')?.focus();
}

function changeLanguage() {
  store(LANGUAGE_KEY, isJapanese() ? 'en' : 'ja');
  if (app.query.lang) replace({lang: ''});
  closeDialog();
  showAgain();
}

function isDark() {
  const {theme} = document.documentElement.dataset;
  return theme ? theme === 'dark' : matchMedia('(prefers-color-scheme: dark)').matches;
}

function changeTheme() {
  const theme = isDark() ? 'light' : 'dark';
  document.documentElement.dataset.theme = theme;
  store(THEME_KEY, theme);
}

function showHelp(key) {
  const {title, body} = helpDialog(app, key, chosenRunner() ?? app.me);
  showDialog(title, body);
}

function printPaper(kind) {
  closeDialog();
  makePaper(app, kind, {runner: chosenRunner(), set: chosenSet()});
  print();
}

function scrollToMe() {
  const calm = matchMedia('(prefers-reduced-motion: reduce)').matches;
  showMyRow();
  document.querySelector('tr.me')?.scrollIntoView({block: 'center', behavior: calm ? 'auto' : 'smooth'});
}

const ACTS = {
  language: changeLanguage, theme: changeTheme, help: () => showHelp(''), menu, close: closeDialog,
  print: () => printMenu(app, chosenRunner(), chosenSet()), 'to-me': scrollToMe, me: (element) => setMe(element.dataset.runner),
};

function onClick(event) {
  if (event.target === byId('dialog')) return closeDialog();
  const element = event.target.closest('[data-act],[data-help],[data-paper],button[data-key],a[href^="#"],tr[data-go]');
  if (!element) return;
  const {act, help, paper, key, value} = element.dataset;
  if (act) ACTS[act](element);
  else if (help !== undefined) showHelp(help);
  else if (paper) printPaper(paper);
  else if (key) choose(element, key, value);
  else if (element.matches('a')) followLink(event, element);
  else go(element.dataset.go);
}

function followLink(event, link) {
  if (link.id === 'skip') {
    event.preventDefault();
    byId('main').focus();
    return;
  }
  if (byId('dialog').open) closeDialog();
  if (link.getAttribute('href') === (location.hash || '#')) return;
  keepScroll();
  byLink = true;
}

function choose(element, key, value) {
  replace({[key]: value});
  showAgain();
  document.querySelector(`button[data-key="${key}"][data-value="${CSS.escape(value)}"]`)?.focus();
}

function onChange({target}) {
  if (target.dataset.key) choose(target, target.dataset.key, target.value);
}

function onKey(event) {
  const typing = /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName);
  if (event.key !== '/' || typing || event.ctrlKey || event.metaKey || event.altKey) return;
  event.preventDefault();
  go(address({find: ''}));
}

function beforePrint() {
  if (document.body.dataset.print) return;
  const kind = chosenRunner() ? 'card' : chosenSet() ? 'class' : 'all';
  makePaper(app, kind, {runner: chosenRunner(), set: chosenSet()});
}

function onResize() {
  if (innerWidth !== shownWidth) showAgain();
  else lookSoon();  // there may be room for more rows
}

// What the reader chose, before there is anything to show.
export function takeChoices() {
  const theme = stored(THEME_KEY);
  if (theme) document.documentElement.dataset.theme = theme;
  setLanguage(chooseLanguage(readAddress(location.hash).lang, stored(LANGUAGE_KEY), navigator.language));
}

// Shows an event, from its data, at the address; another one may take its place.
export function showEvent(raw) {
  const isFirst = app.event === null;
  app.event = makeEvent(raw);
  scrolled.clear();
  framesScrolled.clear();
  if (isFirst) listen();
  show();
}

function listen() {
  history.scrollRestoration = 'manual';
  addEventListener('hashchange', onAddress);
  addEventListener('scroll', keepScroll, {passive: true});
  addEventListener('scroll', lookSoon, {passive: true});
  document.addEventListener('click', onClick);
  document.addEventListener('change', onChange);
  addEventListener('keydown', onKey);
  addEventListener('beforeprint', beforePrint);
  addEventListener('afterprint', removePaper);
  let waiting = 0;
  addEventListener('resize', () => {
    clearTimeout(waiting);
    waiting = setTimeout(onResize, 150);
  });
}
