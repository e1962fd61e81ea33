// The page: files come in by choosing and dropping, the library opens them, the report shows them.
import {showEvent, takeChoices} from '../report_page/app.js';
import {byId} from '../report_page/dom.js';
import {icon} from '../report_page/icons.js';
import {isJapanese, setLanguage} from '../report_page/language.js';
import {closeDialog, showDialog} from '../report_page/shell.js';
import {store} from '../report_page/store.js';
import {Library} from './library.js';
import {countOfRemarks, remarkList, showRemarks} from './remarks.js';
import {baseName, blobOf, saveBlob, saveMenu} from './save.js';
import {w} from './texts_web.js';
import {askWhatFor, deskView, openingHead, openingView, say, showTrouble} from './views_web.js';

// `files` have a key for the library, a name, the event's data and the remarks on it.
const state = {files: [], shown: null, work: null, trouble: '', lastKey: 0};
let library = null;
const NO_REMARKS = {format: '', remarks: [], oddities: []};

// --- showing ---

function draw() {
  document.body.classList.toggle('empty', state.shown === null);
  document.body.dataset.work = state.work ? 'busy' : 'idle';
  byId('drop').textContent = w('dropHere');
  if (state.shown === null) drawOpening();
  else drawDesk();
}

function drawOpening() {
  document.documentElement.lang = isJapanese() ? 'ja' : 'en';
  byId('top').replaceChildren(...openingHead({changeLanguage, changeTheme}, icon('theme')));
  byId('main').replaceChildren(openingView({choose, work: state.work, trouble: state.trouble}));
}

function drawDesk() {
  const {activeElement} = document;
  const desk = byId('desk');
  const held = desk.contains(activeElement) ? activeElement.id : '';
  desk.setAttribute('aria-label', w('desk'));
  const remarks = countOfRemarks(state.shown.remarks);
  const acts = {show: (index) => show(state.files[index]), open: choose, save, close: closeShown, remarks: () => showRemarks(state.shown.remarks)};
  desk.replaceChildren(...deskView({...state, remarks}, acts).filter(Boolean));
  if (held) byId(held)?.focus();
}

// The percentage changes often; only its bar is drawn again.
function onPercent(percent) {
  if (!state.work) return;
  state.work.percent = percent < 100 ? percent : null;
  const bar = document.querySelector('.work progress');
  if (bar && percent < 100) bar.value = percent;
  else bar?.removeAttribute('value');
}

function show(file) {
  state.shown = file;
  if (location.hash) history.replaceState(null, '', '#');
  showEvent(file.raw);
  draw();
}

function changeLanguage() {
  setLanguage(isJapanese() ? 'en' : 'ja');
  store('keltrun.language', isJapanese() ? 'ja' : 'en');
  draw();
}

function changeTheme() {
  const {dataset} = document.documentElement;
  const isDark = dataset.theme ? dataset.theme === 'dark' : matchMedia('(prefers-color-scheme: dark)').matches;
  dataset.theme = isDark ? 'light' : 'dark';
  store('keltrun.theme', dataset.theme);
}

// --- work, one at a time ---

let queue = Promise.resolve();

// Does some work and shows it; what goes wrong is told.
function work(text, act) {
  queue = queue.then(async () => {
    state.work = {text, percent: null};
    state.trouble = '';
    draw();
    try {
      await act();
    } catch (error) {
      tell(error.message);
    }
    state.work = null;
    draw();
  });
  return queue;
}

function sayWork(text) {
  if (state.work) Object.assign(state.work, {text, percent: null});
  draw();
}

function tell(message) {
  if (state.shown !== null) showTrouble(message);
  else state.trouble = message;
}

// --- opening ---

function choose() {
  byId('chooser').click();
}

// Files that come when nothing is open are opened until one could be; about the rest the reader says what
// they are. `troubles` tell what was wrong with those before.
function take(list, troubles = []) {
  const files = [...list];
  if (files.length === 0) {
    // One alone is told already, unless an event has taken its place.
    if (troubles.length <= (state.shown === null ? 1 : 0)) return;
    tell(troubles.join('\n'));
    draw();
  } else if (state.shown === null) {
    openBeside(files.slice(0, 1)).then(() => take(files.slice(1), [...troubles, state.trouble].filter(Boolean)));
  } else {
    const then = (act) => () => {
      closeDialog();
      act(files);
    };
    askWhatFor(files, state.shown, troubles, {merge: then(mergeAll), beside: then(openBeside)});
  }
}

async function bytesOf(file) {
  return new Uint8Array(await file.arrayBuffer());
}

function openBeside(files) {
  return Promise.all(files.map((file) => work(w('reading', file.name), () => openFile(file))));
}

async function openFile(file) {
  const key = ++state.lastKey;
  await library.call('open', key, file.name, await bytesOf(file));
  const opened = {key, name: file.name, raw: null, remarks: NO_REMARKS};
  await read(opened);
  state.files.push(opened);
  show(opened);
  say(w('opened', file.name));
  await readRemarks(opened);
}

// Gets what the report shows of an event. One without a name is called after its file.
async function read(file) {
  sayWork(w('analyzing', file.name));
  file.raw = JSON.parse(await library.text(file.key, 'report-data'));
  file.raw.event.name ||= baseName(file.name);
}

// The report does not wait for the remarks, which need a look at all clocks.
async function readRemarks(file) {
  file.remarks = JSON.parse(await library.text(file.key, 'remarks-json'));
  if (file === state.shown) draw();
}

function mergeAll(files) {
  const into = state.shown;
  files.forEach((file) => work(w('reading', file.name), async () => {
    try {
      await library.call('merge', into.key, file.name, await bytesOf(file));
    } finally {
      await read(into);  // a file may have added something before its fault
      show(into);
      await readRemarks(into);
    }
    say(w('opened', file.name));
  }));
}

function closeShown() {
  library.call('close', state.shown.key);
  const at = state.files.indexOf(state.shown);
  state.files.splice(at, 1);
  show(state.files[Math.max(at - 1, 0)]);
}

// --- saving ---

function save() {
  const file = state.shown;
  saveMenu(baseName(file.name), (form, name, title) => {
    closeDialog();
    work(w('making', title), () => saveForm(file, form, name));
  });
}

async function saveForm(file, form, name) {
  const files = await library.call('export', file.key, form);
  const {remarks} = JSON.parse(await library.text(file.key, 'remarks-json'));
  saveBlob(await blobOf(form, files, name), name);
  say(w('saved', name));
  const losses = /^(lxm|iof|splits|win|oe)/.test(form) ? remarks : [];
  if (losses.length > 0) showDialog(w('saved', name), [w('notSaved'), remarkList(losses)]);
}

// --- beginning ---

function listenForDrops() {
  let depth = 0;  // of elements that the files are dragged over
  const hasFiles = ({dataTransfer}) => [...(dataTransfer?.types ?? [])].includes('Files');
  const mark = (change) => {
    depth = Math.max(0, depth + change);
    document.body.classList.toggle('dragging', depth > 0);
  };
  addEventListener('dragenter', (event) => hasFiles(event) && mark(1));
  addEventListener('dragleave', (event) => hasFiles(event) && mark(-1));
  addEventListener('dragover', (event) => event.preventDefault());
  addEventListener('drop', (event) => {
    event.preventDefault();
    mark(-depth);
    take(event.dataTransfer.files);
  });
}

function begin() {
  takeChoices();
  if (location.hash) history.replaceState(null, '', '#');
  listenForDrops();
  byId('chooser').addEventListener('change', ({target}) => {
    take(target.files);
    target.value = '';
  });
  // The report changes the language with a button of its own.
  new MutationObserver(() => state.shown && draw()).observe(document.documentElement, {attributeFilter: ['lang']});
  draw();
  library = new Library(onPercent);
  library.started.then(
    () => { document.body.dataset.engine = 'ready'; },
    () => {
      state.trouble = w('noEngine');
      draw();
    });
}

begin();
