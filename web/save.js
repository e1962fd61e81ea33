// Saving: the forms that the page offers, and how they become files.
import {byId, h} from '../report_page/dom.js';
import {showDialog} from '../report_page/shell.js';
import {w} from './texts_web.js';
import {zip} from './zip.js';

// Text, form of the library, ending of the file.
const FORMS = {
  forReaders: [['saveReport', 'report', '.html'], ['saveSite', 'site', '.zip']],
  forTables: [['saveResults', 'results-csv', '-results.csv'], ['saveLaps', 'analyze-tidy-csv', '-laps.csv']],
  forPrograms: [['saveLxm', 'lxm', '.lxm'], ['saveIof3', 'iof3', '-iof3.xml'], ['saveIof2', 'iof2', '-iof2.xml'],
    ['saveSplitsbrowser', 'splitsbrowser', '-splitsbrowser.csv'], ['saveWinsplits', 'winsplits', '-winsplits.txt'],
    ['saveOe', 'oe2010', '-oe2010.csv'], ['saveJson', 'analyze-json', '.json']],
};

// The name of a file without its folder and ending.
export function baseName(name) {
  return name.replace(/^.*[/\\]/, '').replace(/\.[^.]{1,5}$/, '') || 'event';
}

// Asks for a form; `choose` gets the form, the name of the file and what the reader calls it.
export function saveMenu(base, choose) {
  const entry = ([text, form, ending]) =>
    h('button.btn', {type: 'button', 'data-form': form, click: () => choose(form, base + ending, w(text))},
      h('span', w(text), h('small', w(`${text}Why`))));
  showDialog(w('save'), h('div.choices', Object.entries(FORMS).map(([group, forms]) => [h('h3', w(group)), forms.map(entry)])));
}

// A report as the library makes it here, with the style and script that this page has and the library
// has not.
export function filled(report, {style, script, styleHash, scriptHash}) {
  return report.replace("style-src '{style_hash}'", () => `style-src '${styleHash}'`)
    .replace("script-src '{script_hash}'", () => `script-src '${scriptHash}'`)
    .replace('<style>{style}</style>', () => `<style>${style}</style>`)
    .replace('<script type="module">{script}<', () => `<script type="module">${script}<`);
}

function filledBytes(bytes) {
  const [style, script] = [byId('report-style'), byId('report-script')];
  const parts = {style: style.textContent, script: script.textContent, styleHash: style.dataset.hash, scriptHash: script.dataset.hash};
  return new TextEncoder().encode(filled(new TextDecoder().decode(bytes), parts));
}

// The files of a form as one that can be saved.
export async function blobOf(form, files, name) {
  if (form === 'report' || form === 'site') files[0].bytes = filledBytes(files[0].bytes);
  if (name.endsWith('.zip')) return zip(files);
  return new Blob([files[0].bytes]);
}

// Hands a file to the browser, which saves it.
export function saveBlob(blob, name) {
  const url = URL.createObjectURL(blob);
  const link = h('a', {href: url, download: name});
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(url), 60000);
}
