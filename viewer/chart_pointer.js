// --- Pointing at a chart with the mouse, a finger or the keys. ---

const REACH = 28;          // pixels from which a line or mark is taken
const SELECTED_BONUS = 5;  // pixels that a selected runner counts as nearer

let pointed = null;  // {shape, point} that the tip describes

// The squared distance of (x, y) from the segment of two points, and how far along it lies: 0 to 1.
function segmentDistance(x, y, a, b) {
  const [dx, dy] = [b.x - a.x, b.y - a.y];
  const length = dx * dx + dy * dy;
  const along = length === 0 ? 0 : Math.max(0, Math.min(1, ((x - a.x) * dx + (y - a.y) * dy) / length));
  const [ex, ey] = [x - a.x - along * dx, y - a.y - along * dy];
  return {distance: Math.hypot(ex, ey), along};
}

// The nearest point of a runner's shape with its distance.
function nearestOfShape({points}, x, y) {
  let best = {distance: Infinity, point: null};
  let before = null;
  for (const point of points) {
    if (!point) continue;
    const {distance, along} = segmentDistance(x, y, before ?? point, point);
    if (distance < best.distance) best = {distance, point: before && along < 0.5 ? before : point};
    before = point;
  }
  return best;
}

function nearest(app, x, y) {
  let best = null;
  let limit = REACH;
  for (const shape of scene.shapes) {
    const {distance, point} = nearestOfShape(shape, x, y);
    const counted = distance - (app.state.runners.includes(shape.runner.serial) ? SELECTED_BONUS : 0);
    if (counted >= limit) continue;
    limit = counted;
    best = {shape, point};
  }
  return best;
}

// --- The tip ---

function rankText(rank) {
  return rank > 0 ? ` (${rank})` : '';
}

// What the tip says of a line at a control: pairs of label and figure.
function legFigures(app, runner, leg) {
  if (leg === 0) return runner.start == null ? [] : [[text('start'), clockText(runner.start)]];
  const [lap, loss] = [runner.lap[leg - 1], runner.missTime[leg - 1]];
  const gap = difference(runner.splits[leg], baseline(app.set, referenceRunner(app)).splits[leg]);
  const shownSplit = isTime(runner.split[leg - 1]) ? runner.split[leg - 1] : runner.splits[leg];
  const figures = [
    [`${text('lap')} ${app.set.labels[leg - 1]}`, markedText(lap) + rankText(runner.lapRank[leg - 1])],
    [text('lossOfLeg'), isTime(loss) ? signedTimeText(loss) : markedText(loss)],
    [text('split'), markedText(shownSplit) + rankText(runner.splitRank[leg - 1])],
  ];
  if (gap != null) figures.push([text('gap'), signedTimeText(gap)]);
  return figures;
}

function wholeFigures(runner) {
  const ratio = halfRatio(runner);
  return [
    [text('cruise'), percentText(runner.cruiseSpeed)],
    [text('rate'), runner.missRate ? percentText(runner.missRate) : NO_DATA],
    [text('lost'), isTime(runner.missTimeTotal) ? timeText(runner.missTimeTotal) : NO_DATA],
    ...(ratio == null ? [] : [[text('ratio'), `${percentText(ratio)} %`]]),
  ];
}

function tipContent(app, {shape: {runner}, point: {leg}}) {
  const about = [runner.club, runner.result, runner.place && text('position', runner.place)];
  const figures = scene.lines ? legFigures(app, runner, leg) : wholeFigures(runner);
  return [el('b', {}, runner.name || NO_DATA), el('small', {}, about.filter(Boolean).join(' · ')),
          el('dl', {}, ...figures.flatMap(([name, value]) => [el('dt', {}, name), el('dd', {}, value)]))];
}

function placeTip(tip, {x, y}) {
  const scale = scene.drawing.clientWidth / scene.width || 1;
  const left = x * scale + 14;
  const fits = left + tip.offsetWidth <= byId('canvas').clientWidth;
  tip.style.left = `${fits ? left : Math.max(0, x * scale - 14 - tip.offsetWidth)}px`;
  tip.style.top = `${Math.max(0, y * scale - tip.offsetHeight / 2)}px`;
}

function highlight(app, {shape, point}) {
  const color = colorClass(app, shape.runner);
  const path = shape.points.filter(Boolean).map(({x, y}) => `${x.toFixed(1)} ${y.toFixed(1)}`).join('L');
  scene.hover.replaceChildren(
      ...(scene.lines ? [line('cursor', point.x, scene.plot.top, point.x, scene.plot.bottom),
                         svg('path', {class: `pointed ${color}`, d: `M${path}`})] : []),
      svg('circle', {class: `dot ${color}`, cx: point.x, cy: point.y, r: 6}));
}

// Describes what is pointed at; null takes the tip away.
function point(app, target) {
  pointed = target;
  const tip = byId('tip');
  tip.hidden = !target;
  byId('canvas').classList.toggle('over-runner', Boolean(target));
  if (!target) return scene.hover.replaceChildren();
  tip.replaceChildren(...tipContent(app, target));
  placeTip(tip, target.point);
  highlight(app, target);
}

// --- Keys: left and right along a line, up and down to the next runner there. ---

function shapeOf(runner) {
  return scene.shapes.find((shape) => shape.runner === runner);
}

function firstTarget(app) {
  const runner = [...selectedRunners(app), ...app.set.runners].find(shapeOf);
  const shape = runner && shapeOf(runner);
  return shape ? {shape, point: shape.points.findLast(Boolean)} : null;
}

function besideOnLine({shape, point}, step) {
  const points = shape.points.filter(Boolean);
  const next = points[points.indexOf(point) + step];
  return next ? {shape, point: next} : pointed;
}

// The shapes that have a point on the leg, from top to bottom, or from left to right for marks.
function besideInOrder({shape, point}, step, axis) {
  const there = scene.shapes.map((other) => ({shape: other, point: other.points.find((p) => p?.leg === point.leg)}))
      .filter((target) => target.point).sort((a, b) => a.point[axis] - b.point[axis]);
  return there[there.findIndex((target) => target.shape === shape) + step] ?? pointed;
}

function keyTarget(app, key) {
  if (!pointed) return firstTarget(app);
  const step = key === 'ArrowLeft' || key === 'ArrowUp' ? -1 : 1;
  if (key === 'ArrowUp' || key === 'ArrowDown') return besideInOrder(pointed, step, 'y');
  return scene.lines ? besideOnLine(pointed, step) : besideInOrder(pointed, step, 'x');
}

function select(app, {shape: {runner}, point: {leg}}) {
  app.change({runners: toggled(app, runner)}).then(() => {
    const shape = shapeOf(runner);  // that of the new drawing
    if (shape) point(app, {shape, point: shape.points.find((p) => p?.leg === leg)});
  });
}

function pressKey(app, event) {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  if (event.key.startsWith('Arrow')) {
    point(app, keyTarget(app, event.key));
    byId('spoken').textContent = byId('tip').innerText;
  } else if ((event.key === 'Enter' || event.key === ' ') && pointed) {
    select(app, pointed);
  } else if (event.key === 'Escape') {
    if (pointed) point(app, null);
    else app.change({runners: []});
  } else {
    return;
  }
  event.preventDefault();
}

// The place of an event in the drawing's own pixels.
function placeInDrawing(event) {
  const box = scene.drawing.getBoundingClientRect();
  const scale = scene.width / box.width;
  return [(event.clientX - box.left) * scale, (event.clientY - box.top) * scale];
}

function listenToChart(app) {
  const canvas = byId('canvas');
  const pointAt = (event) => scene && point(app, nearest(app, ...placeInDrawing(event)));
  canvas.addEventListener('pointermove', pointAt);
  canvas.addEventListener('pointerleave', (event) => {
    if (scene && event.pointerType === 'mouse') point(app, null);
  });
  canvas.addEventListener('click', (event) => {
    pointAt(event);
    if (pointed) select(app, pointed);
  });
  canvas.addEventListener('keydown', (event) => scene && pressKey(app, event));
}
