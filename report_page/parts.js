// Parts that several views have.
import {h} from './dom.js';
import {shownLoss} from './data.js';
import {costliestLegs, lossStep} from './figures.js';
import {isNumber, lengthText, signedTime, timeText} from './format.js';
import {countOfControls, countOfRunners, t} from './language.js';
import {address, runnerKey} from './route.js';

// The color of a loss as a style value.
export function lossColor(set, loss) {
  const step = lossStep(set.first, loss);
  if (step === null) return 'var(--hatch)';
  return step === 0 ? 'var(--zero)' : step > 0 ? `var(--l${step})` : `var(--g${-step})`;
}

export function lossClass(set, loss) {
  if (!isNumber(loss)) return '';
  return loss >= set.first ? 'loss' : loss <= -set.first ? 'gain' : '';
}

// One line for a run: each leg as wide as its reference lap, in the color of its loss.
export function heatStrip(set, row, size = '') {
  if (!row.loss.some(isNumber)) return null;
  const stops = [];
  for (let leg = 0; leg < set.legs; ++leg) {
    const [from, to] = [set.x[leg] * 100, set.x[leg + 1] * 100];
    if (to === from) continue;
    const end = `calc(${to.toFixed(2)}% - 1px)`;
    stops.push(`${lossColor(set, shownLoss(row, leg))} ${from.toFixed(2)}% ${end}`, `var(--card) ${end} ${to.toFixed(2)}%`);
  }
  const worst = costliestLegs(set, row, 3).map((leg) => `${set.labels[leg]} ${signedTime(row.loss[leg])}`);
  return h('div.strip' + size, {
    role: 'img', 'aria-label': worst.join(', ') || t('cleanRun'),
    style: {'background-image': `linear-gradient(90deg,${stops.join(',')})`},
  });
}

export function medal(row) {
  if (!isNumber(row.time)) return h('span.medal', '–');
  return rankMedal(row.place ?? row.rank);
}

export function rankMedal(rank) {
  return h('span.medal' + (rank >= 1 && rank <= 3 ? `.m${rank}` : ''), rank || '–');
}

// The result: a time, or the status in a frame.
export function resultText(row) {
  return isNumber(row.time) ? timeText(row.time) : h('span.status', row.result || '–');
}

export function behindText(set, row) {
  return isNumber(row.time) && row !== set.leader ? signedTime(row.time - set.leader.time) : '';
}

// A word with an explanation.
export function term(key, text) {
  return h('button.term', {type: 'button', 'data-help': key, 'aria-haspopup': 'dialog'}, text);
}

export function runnerAddress(runner, more = {}) {
  return address({runner: runnerKey(runner), ...more});
}

export function setAddress(set, more = {}) {
  return address({[set.kind]: set.name, ...more});
}

export function eventTitle(event) {
  return event.name || t('untitled');
}

export function setTitle(set) {
  if (set.kind === 'segment') return set.name.replaceAll('-', ' → ');
  return set.title;
}

// "5.7 km ↑70 m · 22 controls"
export function courseText(set) {
  const controls = set.kind !== 'segment' && set.controls ? countOfControls(set.controls) : '';
  return [lengthText(set.length, set.climb), controls].filter(Boolean).join(' · ');
}

export function countText(set) {
  return countOfRunners(set.listed.length + set.withoutLaps.length);
}

// A row of buttons of which one is chosen; the choice is a value of the address.
export function chips(label, key, chosen, choices) {
  return h('div.chips', {role: 'group', 'aria-label': label}, choices.map(([value, text]) =>
    h('button.chip', {type: 'button', 'data-key': key, 'data-value': value, 'aria-pressed': String(value === chosen)}, text)));
}

// What an address shows that leads to nothing in this event.
export function unknownPlace(name) {
  return [h('h1.unseen', {tabindex: -1}, name), h('p.card', t('unknown', name), ' ', h('a.link', {href: '#'}, t('toEvent')))];
}

// What the colors of strips mean.
export function lossLegend() {
  const swatch = (...colors) => colors.map((color) => h('i', {style: {background: `var(--${color})`}}));
  return h('p.key',
    h('span', swatch('g2'), t('keyGain')), h('span', swatch('zero'), t('keyUsual')),
    h('span', swatch('l2', 'l3', 'l4'), term('lost', t('keyLoss'))));
}

// Whether the window is wide; when it becomes so, the view is made anew.
export function isWide() {
  return innerWidth >= 760;
}

// A drawing that is made as wide as its place.
export function chart(draw, attributes = {}) {
  const place = h('div.chart', attributes);
  place.draw = () => place.replaceChildren(draw(Math.max(260, Math.floor(place.clientWidth || 320))));
  return place;
}

export function drawCharts(root) {
  for (const place of root.querySelectorAll('.chart')) place.draw?.();
}
