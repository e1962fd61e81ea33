// What the page shows around the report: the first view, the desk, questions.
import {byId, h} from '../report_page/dom.js';
import {flag} from '../report_page/icons.js';
import {t} from '../report_page/language.js';
import {showDialog} from '../report_page/shell.js';
import {w} from './texts_web.js';

// How far the work is; `percent` is null while that is not known.
export function workView(text, percent) {
  return h('div.work', h('span', text), h('progress', {max: 100, value: percent, 'aria-label': text}));
}

// The view before any file is open. `work` is the work that goes on, `trouble` what went wrong.
export function openingView({choose, work, trouble}) {
  return h('div.opening', h('h1', {tabindex: '-1'}, w('openTitle')), h('p', w('openIntro')),
    trouble ? h('div.card.trouble', {role: 'alert'}, trouble) : null,
    h('div.target', flag(), work ? workView(work.text, work.percent) : [
      h('button.btn.primary', {type: 'button', id: 'choose', click: choose}, w('choose')), h('span.mut', w('orDrop'))]),
    h('p.card.safe', w('safe')),
    h('details.known', h('summary', w('known')), h('ul', w('knownList').split('|').map((text) => h('li', text))), h('p.mut', w('notArchives'))));
}

export function openingHead({changeLanguage, changeTheme}, themeIcon) {
  return [h('span.ev', flag(), h('b', 'Keltrun2')),
    h('button.round-button', {type: 'button', 'aria-label': t('otherLanguageLong'), click: changeLanguage}, t('otherLanguage')),
    h('button.round-button', {type: 'button', 'aria-label': t('theme'), click: changeTheme}, themeIcon)];
}

// The files that are open, and what can be done with the one that is shown.
export function deskView({files, shown, work, remarks}, acts) {
  // Files of two events are often called the same.
  const title = ({name, raw}) => (files.length > 1 && raw.event.name ? `${raw.event.name} · ${name}` : name);
  const chooser = files.length > 1
    ? h('select.select', {'aria-label': w('shownFile'), id: 'shown-file', change: ({target}) => acts.show(Number(target.value))},
      files.map((file, index) => h('option', {value: index, selected: file === shown}, title(file))))
    : h('span.file', title(shown));
  const button = (id, text, click) => h('button.btn', {type: 'button', id, click, 'aria-haspopup': id === 'desk-open' ? null : 'dialog'}, text);
  return [
    h('div.files', chooser, files.length > 1 ? h('button.btn', {type: 'button', id: 'desk-close', 'aria-label': w('closeFile', title(shown)), click: acts.close}, '✕') : null),
    button('desk-open', w('open'), acts.open), button('desk-save', w('save'), acts.save),
    button('desk-remarks', remarks > 0 ? w('remarksN', remarks) : w('remarks'), acts.remarks),
    work ? workView(work.text, work.percent) : null];
}

// Asks what files are that come when an event is open already, and tells what was wrong with those before.
export function askWhatFor(files, shown, troubles, {merge, beside}) {
  const entry = (id, text, why, click) => h('button.btn', {type: 'button', id, click}, h('span', text, h('small', why)));
  const question = files.length === 1 ? w('addedQuestion', files[0].name) : w('addedSeveral', files.length);
  showDialog(w('added'), h('div.choices', troubles.map((text) => h('p.trouble', {role: 'alert'}, text)), h('p', question),
    entry('as-more', w('merge'), w('mergeWhy', shown.name), merge), entry('as-other', w('beside'), w('besideWhy', shown.name), beside)));
}

export function showTrouble(text) {
  showDialog(w('failed'), [h('p.trouble', {role: 'alert'}, text), h('p.mut', w('again'))]);
}

// Tells a reader of the screen what happened.
export function say(text) {
  byId('spoken').textContent = text;
}
