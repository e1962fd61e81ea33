// Dots along an axis, piled up where they would overlap.
import {s} from './dom.js';
import {isMistake, niceStep, quantile} from './figures.js';
import {timeText} from './format.js';

const MANY = 150;  // so many dots are drawn as one line of dots for each color

// The places of dots: `at` gives the x of a value.
export function pileUp(dots, width, radius, at) {
  const heights = new Map();
  return dots.map((dot) => {
    const x = Math.max(radius, Math.min(width - radius, at(dot.value)));
    const column = Math.round(x / (radius * 1.7));
    const level = heights.get(column) ?? 0;
    heights.set(column, level + 1);
    return {...dot, x, level};
  });
}

// A drawing of dots {value, kind, front}: `kind` is a class of the style sheet, and those in front
// are larger and drawn last. `below` are drawings under the dots.
export function dotDrawing(dots, {width, height, radius, at, below = [], fit = false, axis = null}) {
  const placed = pileUp(dots, width, radius, at);
  const highest = Math.max(0, ...placed.map((dot) => dot.level));
  const rise = Math.min(radius * 1.9, highest > 0 ? (height - 2 * radius - 2) / highest : Infinity);
  const top = fit ? Math.min(height, 2 * radius + 8 + highest * (Number.isFinite(rise) ? rise : 0)) : height;
  const y = (level) => top - radius - 1 - (level ? level * rise : 0);
  const total = top + (axis ? 20 : 0);
  const inFront = placed.filter((dot) => dot.front || placed.length <= MANY);
  return s('svg.dots', {viewBox: `0 0 ${width} ${total.toFixed(1)}`, 'aria-hidden': 'true'},
    s('path.axis', {d: `M0 ${top - 0.5}H${width}`}), axis?.(top) ?? [], below,
    placed.length > MANY ? manyDots(placed.filter((dot) => !dot.front), radius, y) : [],
    inFront.sort((a, b) => (a.front ?? 0) - (b.front ?? 0)).map((dot) => s(`circle.${dot.kind}`, {
      cx: dot.x.toFixed(1), cy: y(dot.level).toFixed(1), r: dot.front ? radius + 1.6 : radius,
    })));
}

function manyDots(dots, radius, y) {
  const paths = new Map();
  for (const {kind, x, level} of dots) {
    paths.set(kind, `${paths.get(kind) ?? ''}M${x.toFixed(1)} ${y(level).toFixed(1)}h.01`);
  }
  return [...paths].map(([kind, d]) => s(`path.many.${kind}`, {d, 'stroke-width': 2 * radius}));
}

// The finish times of a set; the slowest are at the edge.
export function finishDots(set, me) {
  const {placed} = set;
  if (placed.length < 2) return null;
  const times = placed.map((row) => row.time);
  const [least, most] = [times[0], quantile(times, 0.97) * 1.01];
  const dots = placed.map((row, place) => ({
    value: row.time, kind: row.runner === me ? 'dot-me' : place < 3 ? `dot-${place + 1}` : 'dot',
    front: row.runner === me ? 2 : place < 3 ? 1 : 0,
  }));
  return dotDrawing(dots, {
    width: 320, height: placed.length > 60 ? 44 : 26, radius: placed.length > 200 ? 2 : 3.6,
    at: (time) => 6 + (time - least) / (most - least || 1) * 308,
  });
}

// The laps of a leg; `axis` writes times below.
export function lapDots(set, leg, me, {width, height, radius, withAxis = false}) {
  const rows = set.rows.filter((row) => row.lapRank[leg] > 0);
  if (rows.length < 2) return null;
  const laps = rows.map((row) => row.laps[leg]);
  const least = Math.min(...laps);
  const most = Math.max(quantile(laps, 0.94), least * 1.25);
  const at = (lap) => radius + 3 + (lap - least) / (most - least || 1) * (width - 2 * radius - 8);
  const dots = rows.map((row) => ({
    value: row.laps[leg], kind: row.runner === me ? 'dot-me' : isMistake(set, row, leg) ? 'dot-mistake' : 'dot',
    front: row.runner === me ? 2 : 0,
  }));
  const axis = (top) => ticks(least, most, at, width, top);
  return dotDrawing(dots, {width, height, radius, at, fit: withAxis, axis: withAxis ? axis : null});
}

function ticks(least, most, at, width, top) {
  const step = niceStep(most - least, width / 70);
  const drawn = [];
  for (let time = Math.ceil(least / step) * step; time <= most; time += step) {
    const x = at(time).toFixed(1);
    drawn.push(s('path.tick', {d: `M${x} ${top}v4`}),
      s('text', {x: Math.max(14, Math.min(width - 14, x)), y: top + 15, 'text-anchor': 'middle'}, timeText(time)));
  }
  return drawn;
}

// The laps of a leg with own pace and one's own lap, for the card.
export function whyDots(set, row, leg, width) {
  const rows = set.rows.filter((other) => other.lapRank[leg] > 0);
  const laps = rows.map((other) => other.laps[leg]);
  const [mine, own] = [row.laps[leg], row.own[leg]];
  const least = Math.min(...laps, own);
  const most = Math.max(quantile(laps, 0.9), mine * 1.04, least * 1.2);
  const at = (lap) => 8 + (Math.min(lap, most) - least) / (most - least || 1) * (width - 16);
  const [xOwn, xMine, height] = [at(own), at(mine), 58];
  const below = [s('path.own-pace', {d: `M${xOwn} 4V${height}`})];
  if (xMine - xOwn > 14) below.push(s('path.arrow', {d: `M${xOwn + 3} 9H${xMine - 7}m-5-4l5 4-5 4`}));
  const dots = rows.map((other) => ({
    value: other.laps[leg], kind: other === row ? 'dot-me' : 'dot', front: other === row ? 2 : 0,
  }));
  return {drawing: dotDrawing(dots, {width, height, radius: width > 500 ? 4 : 3.6, at, below}),
    ownShare: xOwn / width, mineShare: xMine / width};
}
