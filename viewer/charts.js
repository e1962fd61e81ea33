// --- Charts: line charts down the course, and marks by figures of the whole run. ---
// A scene is what is drawn: the plot's rectangle and per runner his points, in pixels.

const FACTORS = {normal: 0, real: 0, relative: 1, relative110: 1.1, relative130: 1.3};

// Per mark chart the place of a runner, null when a figure is missing.
const PLACES = {
  loss: (runner) => (runner.cruiseSpeed && runner.missRate
    ? [runner.cruiseSpeed * 100, runner.missRate * 100] : null),
  half: (runner) => (runner.cruiseSpeed && halfRatio(runner)
    ? [runner.cruiseSpeed * 100, halfRatio(runner) * 100] : null),
  map: (runner) => (hasTimeResult(runner) ? runner.map : null),
};

const NAME_HEIGHT = 14;
const TIME_STEPS = [5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400];
const PERCENT_STEPS = [1, 2, 5, 10, 20, 50, 100];

let scene = null;

// --- Runners ---

// Who is drawn: so many of the best, always the selected and the one to compare with; these last,
// so that they lie above the others.
function drawnRunners(app) {
  const chosen = selectedRunners(app);
  const reference = referenceRunner(app);
  const {shown} = app.state;
  const most = shown === 'all' ? Infinity : shown === 'selected' ? 0 : Number(shown);
  const isSpecial = (runner) => runner === reference || chosen.includes(runner);
  const others = app.set.runners.filter((runner, index) => index < most && !isSpecial(runner));
  return [...others.reverse(), ...app.set.runners.filter(isSpecial)];
}

function shapeClass(app, runner) {
  const color = colorClass(app, runner);
  const reference = runner.serial === app.state.ref;
  return ['runner', color, reference ? 'is-reference' : '', !color && !reference ? 'plain' : '']
      .filter(Boolean).join(' ');
}

// --- Scales ---

function linearScale(from, to, start, end) {
  const scale = to === from ? 0 : (end - start) / (to - from);
  return (value) => start + (value - from) * scale;
}

// Round values from `low` to `high`, at most `most`.
function ticks(low, high, steps, most) {
  let step = steps.find((size) => (high - low) / size <= most) ?? steps.at(-1);
  while ((high - low) / step > most) step *= 2;
  const values = [];
  for (let value = Math.ceil(low / step) * step; value <= high; value += step) values.push(value);
  return values;
}

function range(values, ...always) {
  let [low, high] = [Infinity, -Infinity];
  for (const value of [...always, ...values]) {
    low = Math.min(low, value);
    high = Math.max(high, value);
  }
  return low <= high ? [low, high] : [0, 1];
}

function plotArea(width, height, right) {
  return {left: 56, top: 44, right: width - right, bottom: height - 34};
}

// --- Frame ---

function line(kind, x1, y1, x2, y2) {
  return svg('line', {class: kind, x1, y1, x2, y2});
}

function label(x, y, anchor, content, kind) {
  return svg('text', {x, y, 'text-anchor': anchor, class: kind}, content);
}

function frame(plot, title) {
  const {left, top, right, bottom} = plot;
  return [svg('rect', {class: 'frame', x: left, y: top, width: Math.max(0, right - left),
                       height: Math.max(0, bottom - top)}),
          label(8, 16, 'start', title, 'title')];
}

function horizontalGrid(plot, values, place, show) {
  return values.flatMap((value) => {
    const y = place(value);
    return [line(value === 0 ? 'grid zero' : 'grid', plot.left, y, plot.right, y),
            label(plot.left - 6, y + 4, 'end', show(value))];
  });
}

function verticalGrid(plot, values, place, show) {
  return values.flatMap((value) => {
    const x = place(value);
    return [line(value === 0 ? 'grid zero' : 'grid', x, plot.top, x, plot.bottom),
            label(x, plot.bottom + 16, 'middle', show(value))];
  });
}

// One line for each control; names only where there is room.
function controlGrid(app, plot, places) {
  const last = places.length - 1;
  let free = -Infinity;
  return places.flatMap((x, control) => {
    const parts = [line('grid', x, plot.top, x, plot.bottom)];
    const fits = x - free >= 16 && (control === last || places[last] - x >= 16);
    if (control === last || fits) {
      free = x;
      parts.push(label(x, plot.top - 6, 'middle', app.set.controlNames[control]),
          label(x, plot.bottom + 16, 'middle', app.set.controlNames[control]));
    }
    return parts;
  });
}

// --- Names ---

// Names at the ends of the lines, pushed apart; when there is no room for all of them, the last in
// the result order go first.
function endNames(app, shapes, plot) {
  const most = Math.floor((plot.bottom - plot.top) / NAME_HEIGHT);
  const named = shapes.filter(({points}) => points.some(Boolean)).sort(byImportance(app)).slice(0, most)
      .map((shape) => ({shape, end: shape.points.findLast(Boolean)}))
      .sort((a, b) => a.end.y - b.end.y);
  let floor = plot.top;
  for (const name of named) floor = (name.y = Math.max(name.end.y, floor)) + NAME_HEIGHT;
  let ceiling = plot.bottom;
  for (const name of [...named].reverse()) ceiling = (name.y = Math.min(name.y, ceiling)) - NAME_HEIGHT;
  return named.map(({shape, y}) =>
    label(plot.right + 8, y + 4, 'start', shape.runner.name, `name ${shapeClass(app, shape.runner)}`));
}

// The selected and the reference before the others, all in result order.
function byImportance(app) {
  const weight = ({runner}) => (app.state.runners.includes(runner.serial) ||
    runner.serial === app.state.ref ? 0 : 1e6) + runner.order;
  return (a, b) => weight(a) - weight(b);
}

// Names beside the marks, on the side where they lie over nothing else; left out where both are
// taken.
function markNames(app, shapes, plot) {
  const taken = shapes.map(({points: [{x, y}]}) => ({x: x - 6, y, width: 12}));
  const isFree = (box) => box.x >= plot.left && box.x + box.width <= plot.right + 10 && !taken.some((other) =>
    Math.abs(other.y - box.y) < NAME_HEIGHT && other.x < box.x + box.width && box.x < other.x + other.width);
  return [...shapes].sort(byImportance(app)).flatMap(({runner, points: [{x, y}]}) => {
    const width = nameWidth(runner.name);
    const sides = [{x: x + 8, anchor: 'start', at: x + 8}, {x: x - 8 - width, anchor: 'end', at: x - 8}];
    const side = sides.find((place) => isFree({x: place.x, y, width}));
    if (!side) return [];
    taken.push({x: side.x, y, width});
    return [label(side.at, y + 4, side.anchor, runner.name, `name ${shapeClass(app, runner)}`)];
  });
}

// About how wide a name is: Latin letters and half-width kana are narrow.
function nameWidth(name) {
  return [...name].reduce((sum, c) => sum + (c < '\u0250' || c > '\uff60' ? 7 : 12), 0);
}

// --- Line charts ---

// Values of a runner at the start and the controls, null where he has none.
function lineValues(app, runner, base) {
  const {chart} = app.state;
  if (chart === 'real' && runner.start == null) return [];
  const from = chart === 'real' ? runner.start : 0;
  return runner.splits.map((split, control) => {
    if (split == null) return null;
    if (FACTORS[chart] === 0) return from + split;
    const reference = base.splits[control];
    return reference == null ? null : split - FACTORS[chart] * reference;
  });
}

// Solid from control to control, with a separate dashed path across controls without a time.
function linePaths(app, {runner, points}) {
  let solid = '';
  let dashed = '';
  let before = null;
  for (const point of points) {
    if (!point) continue;
    const to = `${point.x.toFixed(1)} ${point.y.toFixed(1)}`;
    const follows = before && before.leg + 1 === point.leg;
    if (before && !follows) dashed += `M${before.x.toFixed(1)} ${before.y.toFixed(1)}L${to}`;
    solid += (follows ? 'L' : 'M') + to;
    before = point;
  }
  const kind = shapeClass(app, runner);
  const paths = [svg('path', {class: kind, d: solid})];
  if (dashed) paths.push(svg('path', {class: `${kind} gap`, d: dashed}));
  return paths;
}

function timeLabel(chart) {
  if (chart === 'real') return clockText;
  return chart === 'normal' ? timeText : (value) => (value === 0 ? '0:00' : signedTimeText(value));
}

function drawLines(app, width, height) {
  const {set, state: {chart}} = app;
  const base = baseline(set, referenceRunner(app));
  const wide = width > 640;
  const plot = plotArea(width, height, wide ? 150 : 92);
  const runners = drawnRunners(app).map((runner) => ({runner, values: lineValues(app, runner, base)}))
      .filter(({values}) => values.some((value, control) => control > 0 && value != null));
  const values = runners.flatMap((entry) => entry.values.filter((value) => value != null));
  const [low, high] = range(values, ...(chart === 'real' && values.length > 0 ? [] : [0]));
  const yOf = linearScale(low, high > low ? high : low + 60, plot.top + 8, plot.bottom - 8);
  const total = set.referenceSplits[set.legs];
  const xOf = linearScale(0, total || set.legs, plot.left, plot.right);
  const places = set.referenceSplits.map((split, control) => xOf(total ? split : control));
  const shapes = runners.map((entry) => ({
    runner: entry.runner,
    points: entry.values.map((value, leg) => value == null ? null : {x: places[leg], y: yOf(value), leg}),
  }));
  const steps = Math.max(3, Math.floor((plot.bottom - plot.top) / 45));
  return {plot, shapes, base, lines: true, places, nodes: [
    ...frame(plot, chartTitle(app)),
    ...horizontalGrid(plot, ticks(low, high, TIME_STEPS, steps), yOf, timeLabel(chart)),
    ...controlGrid(app, plot, places),
    ...shapes.flatMap((shape) => linePaths(app, shape)),
    ...endNames(app, shapes, plot),
  ]};
}

function chartTitle(app) {
  const {chart} = app.state;
  const reference = referenceRunner(app)?.name ?? text('upperLaps');
  const suffix = FACTORS[chart] > 0 ? ` (${text('reference')}: ${reference})` : '';
  return `${app.set.info.name} ${text(chart)}${suffix}`;
}

// --- Charts of marks ---

function axisTitles(chart) {
  if (chart === 'map') return ['', ''];
  return [text('cruiseAxis'), text(chart === 'loss' ? 'rateAxis' : 'halfAxis')];
}

// The ranges of both axes around the marks. The map has one scale in both directions.
function markRanges(chart, placed, plot) {
  const padded = ([low, high]) => [low - (high - low) * 0.06 - 1, high + (high - low) * 0.06 + 1];
  const xs = placed.map(({place}) => place[0]);
  const ys = placed.map(({place}) => place[1]);
  if (chart === 'loss') return [padded(range(xs)), [0, Math.max(5, range(ys)[1] * 1.06)]];
  if (chart === 'half') return [padded(range(xs)), padded(range(ys, 98, 102))];
  const [xRange, yRange] = [padded(range(xs, 0)), padded(range(ys, 0))];
  const perPixel = Math.max((xRange[1] - xRange[0]) / (plot.right - plot.left),
      (yRange[1] - yRange[0]) / (plot.bottom - plot.top));
  const widened = ([low, high], pixels) => {
    const rest = (perPixel * pixels - (high - low)) / 2;
    return [low - rest, high + rest];
  };
  return [widened(xRange, plot.right - plot.left), widened(yRange, plot.bottom - plot.top)];
}

function markFrame(app, plot, ranges, xOf, yOf) {
  const {chart} = app.state;
  const [xTitle, yTitle] = axisTitles(chart);
  const show = chart === 'map' ? () => '' : String;
  const columns = ticks(...ranges[0], PERCENT_STEPS, Math.max(2, Math.floor((plot.right - plot.left) / 55)));
  const rows = ticks(...ranges[1], PERCENT_STEPS, Math.max(2, Math.floor((plot.bottom - plot.top) / 40)));
  const nodes = [...frame(plot, chartTitle(app)), ...verticalGrid(plot, columns, xOf, show),
    ...horizontalGrid(plot, rows, yOf, show),
    label(plot.right, plot.bottom + 30, 'end', xTitle, 'axis'), label(8, plot.top - 8, 'start', yTitle, 'axis')];
  if (chart === 'half') nodes.push(line('grid zero', plot.left, yOf(100), plot.right, yOf(100)));
  if (chart === 'map') {
    nodes.push(svg('path', {class: 'origin', d: `M${xOf(0) - 7} ${yOf(0)}h14M${xOf(0)} ${yOf(0) - 7}v14`}),
        label(plot.right - 4, yOf(0) - 5, 'end', `← ${text('noLoss')}`, 'axis'),
        label(8, plot.top - 8, 'start', text('mapHint'), 'axis'));
  }
  return nodes;
}

// Lines through the mark of the reference, to see who is better in what.
function referenceCross(app, shapes, plot) {
  const point = shapes.find(({runner}) => runner.serial === app.state.ref)?.points[0];
  if (!point) return [];
  return [line('cross', point.x, plot.top, point.x, plot.bottom),
          line('cross', plot.left, point.y, plot.right, point.y)];
}

function placedRunners(app) {
  const {chart} = app.state;
  const placed = drawnRunners(app).map((runner) => ({runner, place: PLACES[chart](runner)}))
      .filter(({place}) => place);
  return chart !== 'map' || hasMap(app.set) ? placed : [];
}

// Where no map was made, everybody is at the origin.
function hasMap(set) {
  return set.runners.some(({map: [x, y]}) => x !== 0 || y !== 0);
}

function drawMarks(app, width, height) {
  const plot = plotArea(width, height, 16);
  const placed = placedRunners(app);
  const ranges = markRanges(app.state.chart, placed, plot);
  const xOf = linearScale(...ranges[0], plot.left, plot.right);
  const yOf = linearScale(...ranges[1], plot.bottom, plot.top);
  const shapes = placed.map(({runner, place: [x, y]}) => ({runner, points: [{x: xOf(x), y: yOf(y), leg: 0}]}));
  return {plot, shapes, lines: false, nodes: [
    ...markFrame(app, plot, ranges, xOf, yOf),
    ...referenceCross(app, shapes, plot),
    ...shapes.map(({runner, points: [{x, y}]}) =>
      svg('circle', {class: `mark ${shapeClass(app, runner)}`, cx: x, cy: y,
                     r: runner.serial === app.state.ref ? 7 : 5})),
    ...markNames(app, shapes, plot),
  ]};
}

// --- The whole chart ---

function emptyMessage(app, plot) {
  const message = text(app.state.chart === 'map' && !hasMap(app.set) ? 'noMap' : 'noFigures');
  return label((plot.left + plot.right) / 2, (plot.top + plot.bottom) / 2, 'middle', message, 'empty');
}

// What is left of the window, within bounds that suit the width.
function chartHeight(canvas, width) {
  const above = canvas.getBoundingClientRect().top + window.scrollY;
  return Math.round(Math.max(360, Math.min(window.innerHeight - above - 46, width * 0.8)));
}

function renderChart(app) {
  const canvas = byId('canvas');
  const width = Math.max(280, canvas.clientWidth);
  const height = chartHeight(canvas, width);
  const draw = LINE_CHARTS.includes(app.state.chart) ? drawLines : drawMarks;
  scene = {...draw(app, width, height), width};
  const drawing = svg('svg', {viewBox: `0 0 ${width} ${height}`, 'aria-hidden': 'true'}, ...scene.nodes);
  if (scene.shapes.length === 0) drawing.append(emptyMessage(app, scene.plot));
  scene.hover = svg('g', {class: 'hover'});
  drawing.append(scene.hover);
  canvas.ariaLabel = text('chartLabel', app.set.info.name, text(app.state.chart));
  canvas.querySelector('svg')?.remove();
  canvas.prepend(drawing);
  scene.drawing = drawing;
  point(app, null);
}
