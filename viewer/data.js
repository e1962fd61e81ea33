// --- Data sets: found in the page, unpacked when they are chosen. ---

const PALETTE_SIZE = 8;  // colours c0 to c7 of the style sheet
const LEADERS = 5;       // runners who have a colour while nobody is selected

// What the page offers: kind, name, number of runners and the element with the packed data.
function findSets() {
  return [...document.querySelectorAll('script[type="application/gzip"]')].map((element) => ({
    kind: element.dataset.kind, name: element.dataset.name, count: element.dataset.runners, element,
  }));
}

async function unpack(base64) {
  const packed = atob(base64);
  const bytes = new Uint8Array(packed.length);
  for (let i = 0; i < packed.length; ++i) bytes[i] = packed.charCodeAt(i);
  const unpacked = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
  return new Response(unpacked).json();
}

// The data of an entry of findSets(), ready to show; kept for the next time.
async function loadSet(entry) {
  entry.loading ??= unpack(entry.element.textContent).then(prepare);
  return entry.loading;
}

function isTime(value) {
  return typeof value === 'number';
}

// Running times from laps, with 0 for the start in front.
function runningSums(laps) {
  const sums = [0];
  for (const lap of laps) sums.push(sums.at(-1) + lap);
  return sums;
}

// Running times with the start in front, null where there is none. On an untimed leg no time goes by.
function splitsOf(runner, timed) {
  const splits = [0, ...runner.modifiedSplit.map((time) => (time > 0 ? time : null))];
  timed.forEach((isTimed, leg) => {
    if (!isTimed && splits[leg + 1] === null) splits[leg + 1] = splits[leg];
  });
  return splits;
}

// Adds what is derived: running times of the reference laps, per runner his place in the result
// order, the rank to show (among several classes the rank in the class would mislead), running times
// with the start in front (null where there is none) and texts to search.
function prepare(analysis) {
  const {set, general, runners, event} = analysis;
  const legs = set.legLabels.length;
  runners.forEach((runner, index) => {
    runner.order = index;
    runner.place = set.kind === 'class' ? runner.rank : runner.rankInDataSet;
    runner.splits = splitsOf(runner, general.timed);
    runner.searchText = folded(`${runner.name} ${runner.club} ${runner.class}`);
  });
  return {
    event, info: set, legs, runners, general,
    labels: set.legLabels,
    controlNames: ['S', ...Array.from({length: legs - 1}, (_, i) => String(i + 1)), 'F'],
    referenceSplits: runningSums(general.upperLapAverage),
    bySerial: new Map(runners.map((runner) => [runner.serial, runner])),
  };
}

// Laps and running times to compare with: those of a runner, or the reference laps.
function baseline(set, runner) {
  if (!runner) return {laps: set.general.upperLapAverage, splits: set.referenceSplits};
  return {laps: runner.modifiedLap.map((lap) => lap || null), splits: runner.splits};
}

function hasTimeResult(runner) {
  return /^\d+:\d/.test(runner.result);
}

// Second over first half of the cruise speed, null when it was not computed.
function halfRatio(runner) {
  if (!runner.firstHalfCruiseSpeed || !runner.secondHalfCruiseSpeed) return null;
  return runner.secondHalfCruiseSpeed / runner.firstHalfCruiseSpeed;
}

// How dark a loss is shaded: 0 to 5. The steps double and grow with the course, so that they mean
// the same in a sprint and in a long race.
function lossStep(set, loss) {
  if (!isTime(loss) || loss <= 0) return 0;
  const step = Math.floor(Math.log2(loss / lossOfFirstStep(set))) + 1;
  return Math.max(0, Math.min(5, step));
}

function lossOfFirstStep(set) {
  return Math.max(5, set.general.upperLapTotal * 0.005);
}
