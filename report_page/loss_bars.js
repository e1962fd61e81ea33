// A bar for the loss of each leg, as wide as the leg: up is lost, down is gained.
import {s} from './dom.js';
import {costliestLegs} from './figures.js';
import {isNumber, signedTime} from './format.js';
import {finishSign, startSign} from './icons.js';
import {lossColor} from './parts.js';

const LABEL_WIDTH = 40;
const LABEL_HEIGHT = 13;

export function lossBars(set, row, width, height, chosen) {
  const losses = row.loss.map((loss) => (isNumber(loss) ? loss : 0));
  const up = Math.max(...losses, set.first * 3);
  const down = Math.max(-Math.min(...losses), set.first);
  const [top, bottom] = [18, height - 22];
  const zero = top + (bottom - top) * up / (up + down);
  const y = (loss) => zero - loss / (up + down) * (bottom - top);
  const bars = [];
  for (let leg = 0; leg < set.legs; ++leg) {
    if (!set.timed[leg]) continue;
    const x = set.x[leg] * width;
    const wide = Math.max(1, (set.x[leg + 1] - set.x[leg]) * width - 1.5);
    if (leg === chosen) bars.push(s('rect.chosen', {x: x.toFixed(1), y: top - 14, width: wide.toFixed(1), height: bottom - top + 16}));
    bars.push(bar(set, row, leg, {x, wide, zero, y}));
  }
  const labels = costliestLegs(set, row, 3).map((leg) => ({
    x: Math.max(LABEL_WIDTH / 2, Math.min(width - LABEL_WIDTH / 2, (set.x[leg] + set.x[leg + 1]) / 2 * width)), y: y(row.loss[leg]) - 4, loss: row.loss[leg],
  }));
  return s('svg.bars', {viewBox: `0 0 ${width} ${height}`, width, height, 'aria-hidden': 'true'},
    bars, s('path.zero', {d: `M0 ${zero.toFixed(1)}H${width}`}), labelsApart(labels).map(label), names(set, width, height),
    startSign(6, height - 5), finishSign(width - 8, height - 7));
}

// Labels that would cover each other: the lower one moves down, on its own bar. The largest loss is first.
export function labelsApart(labels) {
  const placed = [];
  for (const each of labels) {
    const covers = (y) => placed.some((other) => Math.abs(other.x - each.x) < LABEL_WIDTH && Math.abs(other.y - y) < LABEL_HEIGHT);
    let {y} = each;
    while (covers(y)) y += LABEL_HEIGHT;
    placed.push({...each, y});
  }
  return placed;
}

function label({x, y, loss}) {
  return s('text.loss', {x: x.toFixed(1), y: y.toFixed(1), 'text-anchor': 'middle'}, signedTime(loss));
}

function bar(set, row, leg, {x, wide, zero, y}) {
  const loss = row.loss[leg];
  if (!isNumber(loss)) return s('rect', {x: x.toFixed(1), y: zero - 3, width: wide.toFixed(1), height: 6, fill: 'var(--hatch)'});
  const [from, to] = loss >= 0 ? [y(loss), zero] : [zero, y(loss)];
  const shade = Math.abs(loss) < set.first * 2 ? Math.sign(loss || 1) * set.first * 2 : loss;  // pale ones cannot be seen
  return s('rect', {
    x: x.toFixed(1), y: from.toFixed(1), width: wide.toFixed(1), height: Math.max(1.5, to - from).toFixed(1),
    rx: 2, fill: lossColor(set, shade),
  });
}

function names(set, width, height) {
  const drawn = [];
  let last = -Infinity;
  for (let i = 1; i < set.legs; ++i) {
    const x = set.x[i] * width;
    if (x - last <= 19 || width - x <= 26 || x <= 20) continue;
    last = x;
    drawn.push(s('text', {x: x.toFixed(1), y: height - 6, 'text-anchor': 'middle'}, set.names[i]));
  }
  return drawn;
}
