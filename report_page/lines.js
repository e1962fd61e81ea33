// Line charts: the race of a set, the gap to a runner, the positions of a runner.
import {s} from './dom.js';
import {niceStep, quantile} from './figures.js';
import {isNumber, shortName, signedTime, timeText} from './format.js';
import {finishSign, startSign} from './icons.js';

const COLORS = 8;
const LABEL_ROOM = 13;
const LEFT = 46;        // room for the texts of an axis
const LEFT_HOURS = 60;

// The class of a line: "me", one of the colors for the first places, or "other".
export function lineClass(row, place, me) {
  if (row.runner === me) return 'me';
  return place >= 0 && place < COLORS ? `c${place}` : 'other';
}

// A path through points [x, y]; null is a leg that the line bridges.
function pathThrough(points) {
  return points.filter(Boolean).map(([x, y], i) => `${i ? 'L' : 'M'}${x.toFixed(1)} ${y.toFixed(1)}`).join('');
}

// Gaps of a row to another at the start and after each leg; null where one has no time.
export function gapsTo(row, base) {
  return [0, ...row.elapsed.map((time, leg) =>
    (isNumber(time) && isNumber(base.elapsed[leg]) ? time - base.elapsed[leg] : null))];
}

// Lines and texts for times on the left.
function timeAxis({least, most, y, left, right, sign}) {
  const step = niceStep(most - least, 6);
  const drawn = [];
  for (let time = Math.ceil(least / step) * step; time <= most; time += step) {
    const text = time === 0 ? '0' : sign || time < 0 ? signedTime(time) : timeText(time);
    drawn.push(s(`path.${time === 0 ? 'zero' : 'axis'}`, {d: `M${left} ${y(time).toFixed(1)}H${right}`}),
      s('text', {x: left - 5, y: (y(time) + 4).toFixed(1), 'text-anchor': 'end'}, text));
  }
  return drawn;
}

// The controls below a chart, as many as there is room for.
function controlAxis({set, x, top, bottom, room = 20}) {
  const drawn = [];
  let last = -Infinity;
  for (let i = 0; i <= set.legs; ++i) {
    const at = x(i);
    drawn.push(s('path.thin', {d: `M${at.toFixed(1)} ${top}V${bottom}`}));
    const fits = at - last > room && x(set.legs) - at > room;
    if (i === 0) drawn.push(startSign(at, bottom + 17));
    else if (i === set.legs) drawn.push(finishSign(at, bottom + 17));
    else if (fits) drawn.push(s('text', {x: at.toFixed(1), y: bottom + 17, 'text-anchor': 'middle'}, set.names[i]));
    if (i === 0 || fits) last = at;
  }
  return drawn;
}

// The gaps of rows to the winner, and which of them a chart shows.
function gapRange(set, rows) {
  const gaps = new Map(rows.map((row) => [row, gapsTo(row, set.winner)]));
  // One lost runner must not flatten all others.
  const most = Math.max(30, quantile(rows.map((row) => row.time - set.winner.time), 0.9) * 1.08);
  const lowest = Math.min(0, ...[...gaps.values()].flat().filter(isNumber));
  return {gaps, most, least: Math.max(-most, lowest)};
}

// Where values are in the chart of a race of this width: gaps to the winner down the course, or
// positions after each control.
export function raceScale(set, rows, kind, width) {
  const range = kind === 'pos' ? null : gapRange(set, rows);
  const left = range && Math.max(range.most, -range.least) >= 3600 ? LEFT_HOURS : LEFT;
  const size = {width, height: width < 560 ? 270 : 430, left, right: width < 560 ? 30 : 116, top: 14, bottom: 34};
  const inner = {width: width - size.left - size.right, height: size.height - size.top - size.bottom};
  if (!range) {
    const most = Math.max(2, ...rows.flatMap((row) => row.position));
    return {...size, most, least: 1,
      x: (i) => size.left + i / set.legs * inner.width,
      y: (position) => size.top + 6 + (position - 1) / (most - 1) * (inner.height - 12),
      value: (row, i) => (i > 0 && row.position[i - 1] > 0 ? row.position[i - 1] : null)};
  }
  const {gaps, most, least} = range;
  return {...size, most, least,
    x: (i) => size.left + set.x[i] * inner.width,
    y: (gap) => size.top + (Math.min(gap, most * 1.02) - least) / (most - least) * inner.height,
    value: (row, i) => gaps.get(row)[i]};
}

function positionAxis({most, y, left, right}) {
  const step = most > 40 ? 10 : most > 14 ? 5 : 1;
  const drawn = [];
  for (let position = 1; position <= most; position += position === 1 && step > 1 ? step - 1 : step) {
    drawn.push(s('text', {x: left - 8, y: (y(position) + 4).toFixed(1), 'text-anchor': 'end'}, position),
      s('path.thin', {d: `M${left} ${y(position).toFixed(1)}H${right}`}));
  }
  return drawn;
}

// Names at the ends of the lines, pushed apart; ranks where there is no room for names.
function endLabels(lines, scale, me) {
  const named = scale.right > 60;
  const drawn = [];
  let lowest = -Infinity;
  const ends = lines.filter(({end}) => end !== null && end <= scale.most * 1.02)
    .map((line) => ({...line, y: scale.y(line.end) + 4})).sort((a, b) => a.y - b.y);
  for (const {row, kind, y} of ends) {
    const crowded = y - lowest < LABEL_ROOM;
    if (crowded && !named && row.runner !== me) continue;
    const at = crowded && named ? lowest + LABEL_ROOM : y;
    if (at > scale.height - 4) continue;
    lowest = at;
    drawn.push(s(`text.end.${kind}`, {x: scale.width - scale.right + 6, y: at.toFixed(1)},
      named ? shortName(row.runner.name) : row.rank || row.place));
  }
  return drawn;
}

// The race of rows of a set. Returns the drawing and `move`, which puts the cursor on a control.
export function raceDrawing(set, rows, kind, width, me) {
  const scale = raceScale(set, rows, kind, width);
  const bottom = scale.height - scale.bottom;
  const right = width - scale.right;
  const placeOf = new Map(set.finishers.map((row, place) => [row, place]));
  const lines = rows.map((row) => ({
    row, kind: lineClass(row, placeOf.get(row), me), place: placeOf.get(row), end: scale.value(row, set.legs),
    path: pathThrough(Array.from({length: set.legs + 1}, (_, i) => {
      const value = scale.value(row, i);
      return value === null ? null : [scale.x(i), scale.y(value)];
    })),
  }));
  const inOrder = [...lines].sort((a, b) => (a.kind === 'me') - (b.kind === 'me') || b.place - a.place);
  const cursor = s('path.cursor');
  const dots = s('g');
  const drawing = s('svg.lines', {viewBox: `0 0 ${width} ${scale.height}`, width, height: scale.height, 'aria-hidden': 'true'},
    s('defs', s('clipPath', {id: 'race-clip'}, s('rect', {x: scale.left, y: scale.top - 6, width: right - scale.left + 4, height: bottom - scale.top + 10}))),
    kind !== 'pos' && set.decisive !== null ? decisiveBand(set, scale, bottom) : [],
    kind === 'pos' ? positionAxis({...scale, right}) : timeAxis({...scale, right}),
    controlAxis({set, x: scale.x, top: scale.top, bottom}),
    s('g', {'clip-path': 'url(#race-clip)'}, inOrder.map((line) => s(`path.line.${line.kind}`, {d: line.path}))),
    endLabels(lines, scale, me), cursor, dots);
  const move = (i) => {
    cursor.setAttribute('d', `M${scale.x(i)} ${scale.top - 8}V${bottom}`);
    dots.replaceChildren(...inOrder.map(({row, kind: color}) => [scale.value(row, i), color])
      .filter(([value]) => value !== null && value <= scale.most * 1.02)
      .map(([value, color]) => s(`circle.${color}`, {cx: scale.x(i), cy: scale.y(value), r: color === 'me' ? 6 : color === 'other' ? 2.5 : 4.5})));
  };
  return {drawing, move, nearest: (x) => nearestControl(set, scale, kind, x)};
}

function decisiveBand(set, scale, bottom) {
  const x = scale.x(set.decisive);
  return s('rect.band', {x, y: scale.top, width: scale.x(set.decisive + 1) - x, height: bottom - scale.top});
}

// Controls at the end of untimed legs are at the same place as the one before.
function nearestControl(set, scale, kind, x) {
  let nearest = 1;
  for (let i = 2; i <= set.legs; ++i) {
    if (kind !== 'pos' && i < set.legs && !set.timed[i - 1]) continue;
    if (Math.abs(scale.x(i) - x) <= Math.abs(scale.x(nearest) - x)) nearest = i;
  }
  return nearest;
}

// The gaps of rows to one runner; `kinds` are the colors of the lines.
export function gapDrawing(set, base, rows, kinds, width, height) {
  const gaps = rows.map((row) => gapsTo(row, base));
  const known = gaps.flat().filter(isNumber);
  const most = Math.max(20, ...known);
  const least = Math.min(0, ...known);
  const [left, right, top, bottom] = [known.some((gap) => Math.abs(gap) >= 3600) ? 64 : 52, width - 12, 10, height - 30];
  const x = (i) => left + set.x[i] * (right - left);
  const y = (gap) => top + (gap - least) / (most - least) * (bottom - top);
  const lines = gaps.map((values, i) => {
    const path = pathThrough(values.map((gap, at) => (gap === null ? null : [x(at), y(gap)])));
    const area = rows.length === 1 && path ? s(`path.area.${kinds[i]}`, {d: `${path}L${right} ${y(0)}L${left} ${y(0)}z`}) : [];
    return [area, s(`path.line.${kinds[i]}`, {d: path})];
  });
  return s('svg.lines', {viewBox: `0 0 ${width} ${height}`, width, height, 'aria-hidden': 'true'},
    timeAxis({least, most, y, left, right, sign: true}), controlAxis({set, x, top, bottom}), lines);
}

// Whether the line of positions comes from above or goes up, so that there is room below.
function isWorseThanNeighbors(positions, at) {
  const here = positions[at];
  const neighbors = [positions[at - 1], positions[at + 1]].filter(isNumber);
  return neighbors.some((position) => position < here) && neighbors.every((position) => position <= here);
}

// The positions of one runner.
export function positionDrawing(set, row, width, height) {
  const points = row.position.map((position, leg) => ({position, i: leg + 1}))
    .filter(({position, i}) => position > 0 && set.timed[i - 1]);
  if (points.length < 2) return s('svg');
  const positions = points.map(({position}) => position);
  const [best, worst] = [Math.min(...positions), Math.max(...positions)];
  const from = Math.max(1, best - 1);
  const to = Math.min(Math.max(set.finishers.length, worst), Math.max(worst + 1, from + 4));
  const x = (i) => 16 + (i - 1) / Math.max(1, set.legs - 1) * (width - 36);
  const y = (position) => 18 + (position - from) / (to - from || 1) * (height - 52);
  const drawn = [];
  let [lastText, lastPosition] = [-Infinity, null];
  points.forEach(({position, i}, at) => {
    const isEnd = i === points[0].i || i === points.at(-1).i;
    const told = isEnd || (position !== lastPosition && (position === best || position === worst));
    drawn.push(s('circle.me', {cx: x(i).toFixed(1), cy: y(position).toFixed(1), r: told ? 4.5 : 3}));
    if (told && (x(i) - lastText > 18 || i === points.at(-1).i)) {
      lastText = x(i);
      const below = isWorseThanNeighbors(positions, at);
      drawn.push(s('text.strong', {x: x(i).toFixed(1), y: (y(position) + (below ? 17 : -8)).toFixed(1), 'text-anchor': 'middle'}, position));
    }
    lastPosition = position;
  });
  const path = pathThrough(points.map(({position, i}) => [x(i), y(position)]));
  return s('svg.lines', {viewBox: `0 0 ${width} ${height}`, width, height, 'aria-hidden': 'true'},
    controlTexts(set, x, height), s('path.line.me', {d: path}), drawn);
}

function controlTexts(set, x, height) {
  const drawn = [];
  let last = -Infinity;
  for (let i = 1; i <= set.legs; ++i) {
    const isLast = i === set.legs;
    if (!isLast && (x(i) - last <= 22 || x(set.legs) - x(i) <= 22)) continue;
    last = x(i);
    drawn.push(s('text', {x: x(i).toFixed(1), y: height - 4, 'text-anchor': 'middle'}, set.names[i]));
  }
  return drawn;
}
