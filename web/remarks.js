// What the library noticed in a file: the list of remarks.
import {h} from '../report_page/dom.js';
import {showDialog} from '../report_page/shell.js';
import {w} from './texts_web.js';

export function countOfRemarks({remarks, oddities}) {
  return remarks.length + oddities.length;
}

function entry({count, line, text}) {
  const place = [count > 1 ? w('times', count) : '', line > 0 ? `${w('line', line)}: ` : ''].filter(Boolean).join(' ');
  return h('li', place ? h('span.mut', `${place} `) : null, h('span', {lang: 'en'}, text));
}

export function remarkList(remarks) {
  return h('ul.remarks', remarks.map(entry));
}

export function showRemarks(found) {
  showDialog(w('remarks'), [
    found.format ? h('p.mut', w('remarksOf', found.format)) : null,
    countOfRemarks(found) === 0 ? h('p', w('remarksNone')) : remarkList(found.remarks),
    found.oddities.length > 0 ? [h('h3', w('oddities')), h('ul.remarks', found.oddities.map((text) => h('li', {lang: 'en'}, text)))] : null,
  ]);
}
