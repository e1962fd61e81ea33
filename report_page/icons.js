// Small drawings that are signs.
import {s} from './dom.js';

const PATHS = {
  event: ['M4 11l8-7 8 7v9h-5v-6H9v6H4z'],
  class: ['M5 20V9m5 11V4m5 16v-8m5 8V7'],
  me: ['M8 8a4 4 0 108 0 4 4 0 10-8 0', 'M4 21c1-5 4-7 8-7s7 2 8 7'],
  compare: ['M4 17l5-6 4 3 7-9M4 8l5 3 4-5 7 9'],
  find: ['M4 10.5a6.5 6.5 0 1013 0 6.5 6.5 0 10-13 0', 'M15.5 15.5L21 21'],
  print: ['M7 8V3h10v5M7 17H4V9h16v8h-3M7 14h10v7H7z'],
  theme: ['M4 12a8 8 0 1016 0 8 8 0 10-16 0', 'M12 5v14M15 6v12M18 9v6'],
  help: ['M3 12a9 9 0 1018 0 9 9 0 10-18 0', 'M9.3 9.6c.4-3.4 5.4-3 5.4 0 0 2-2.7 2.1-2.7 4M12 17v.1'],
  menu: ['M12 5v.1M12 12v.1M12 19v.1'],
};

export function icon(name) {
  return s('svg.icon', {viewBox: '0 0 24 24', 'aria-hidden': 'true'}, PATHS[name].map((d) => s('path', {d})));
}

// The control flag, the sign of the page.
export function flag() {
  return s('svg.flag', {viewBox: '0 0 30 30', 'aria-hidden': 'true'},
    s('path', {fill: '#fff', d: 'M0 0h30v30z'}), s('path.orange', {d: 'M0 0v30h30z'}));
}

// A course as it is printed on the map.
export function courseDrawing() {
  return s('svg.course', {viewBox: '0 0 400 300', 'aria-hidden': 'true'},
    s('path', {d: 'M40 250l22-38 22 38z'}),
    [[150, 110, 20], [260, 190, 20], [330, 70, 20], [330, 70, 13]].map(([cx, cy, r]) => s('circle', {cx, cy, r})),
    s('path', {d: 'M68 222L137 127M167 121L243 179M270 172L319 87'}));
}

// Start and finish below a chart.
export function startSign(x, y) {
  return s('path.sign', {d: `M${x - 6} ${y}l6-10 6 10z`});
}

export function finishSign(x, y) {
  return [s('circle.sign', {cx: x, cy: y - 4, r: 7}), s('circle.sign', {cx: x, cy: y - 4, r: 4})];
}
