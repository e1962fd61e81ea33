// The data of the event, and the sets that are worked out of it when they are first shown.
import {isNumber, folded, bare} from './format.js';
import {firstStep, sum} from './figures.js';
import {setKey} from './route.js';

// The object in a block of Base64 and gzip.
export async function unpack(base64) {
  const packed = atob(base64);
  const bytes = Uint8Array.from(packed, (letter) => letter.charCodeAt(0));
  const unpacked = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
  return new Response(unpacked).json();
}

// The event: its header, classes, runners and sets. The data block is that of report_data.cpp.
export function makeEvent(raw) {
  const event = {...raw.event, generator: raw.generator, classes: raw.classes, links: raw.links ?? []};
  event.runners = raw.runners.map((values) => makeRunner(raw, values));
  event.sets = raw.sets.map((values) => ({
    key: setKey(values.kind, values.name), kind: values.kind, name: values.name,
    length: values.length, climb: values.climb, controls: values.controls, raw: values,
  }));
  event.byKey = new Map(event.sets.map((set) => [set.key, set]));
  event.bySerial = new Map(event.runners.map((runner) => [runner.serial, runner]));
  event.clubs = clubsOf(event.runners);
  event.classSets = event.sets.filter((set) => set.kind === 'class');
  findCourses(event);
  return event;
}

function makeRunner(raw, [serial, name, club, klass, start, result, outcome, laps, estimate]) {
  const clubName = raw.clubs[club];
  const className = raw.classes[klass].name;
  return {
    serial, name, club: clubName, className, classIndex: klass, start, result, outcome, laps, estimate,
    searched: folded(`${name} ${clubName} ${className}`), searchedName: folded(name),
    bareName: bare(name),
  };
}

// Clubs with the number of their runners, the largest first.
function clubsOf(runners) {
  const counts = new Map();
  for (const {club} of runners) if (club) counts.set(club, (counts.get(club) ?? 0) + 1);
  return [...counts].sort((a, b) => b[1] - a[1]);
}

// The course set in which the runners of a class are, by the name of the class.
function findCourses(event) {
  event.courseOfClass = new Map();
  for (const set of event.sets) {
    if (set.kind !== 'course') continue;
    for (const [index] of set.raw.rows) {
      const {className} = event.runners[index];
      if (!event.courseOfClass.has(className)) event.courseOfClass.set(className, set);
    }
  }
}

export function classSetOf(event, runner) {
  return event.byKey.get(setKey('class', runner.className)) ?? null;
}

// Rows of a set with what lists and cards need: runner, rank, time.
export function openList(event, set) {
  if (set.rows) return set;
  set.rows = set.raw.rows.map((values) => makeRow(event, set, values));
  set.byRunner = new Map(set.rows.map((row) => [row.runner, row]));
  set.finishers = set.rows.filter((row) => isNumber(row.time));
  set.winner = set.finishers[0] ?? null;
  const listed = new Set(set.rows.map((row) => row.runner));
  set.withoutLaps = set.kind !== 'class' ? [] :
    event.runners.filter((runner) => runner.className === set.name && !listed.has(runner));
  return set;
}

function makeRow(event, set, values) {
  const [index, rank, time, cruise, rate, lost, clean, firstHalf, secondHalf, lapRank, position, extras] = values;
  const runner = event.runners[index];
  const estimate = set.kind === 'segment' ? null : runner.estimate ?? null;
  const timeLost = estimate ? estimate[1] : lost;
  return {
    runner, rank, time, rate, lapRank, position, extras, estimate,
    place: /^\d+$/.test(rank) ? Number(rank) : null,
    result: extras.result ?? runner.result,
    speed: estimate ? estimate[0] : cruise,
    mistakes: estimate ? estimate[2] : null,
    lost: timeLost,
    lostRange: estimate ? [estimate[8], estimate[9]] : null,
    clean: estimate ? (isNumber(time) ? time - timeLost : null) : clean || null,
    half: firstHalf && secondHalf ? secondHalf / firstHalf - 1 : null,
  };
}

// A set with everything about its legs.
export function openSet(event, set) {
  openList(event, set);
  if (set.legs) return set;
  const {raw} = set;
  set.legs = raw.ref.length;
  set.timed = raw.timed.map((timed, leg) => timed === 1 && raw.ref[leg] > 0);
  set.timedLegs = set.timed.filter(Boolean).length;
  set.reference = raw.ref;
  set.points = raw.points;
  set.names = nameControls(set);
  set.labels = raw.ref.map((_, leg) => `${set.names[leg]}→${set.names[leg + 1]}`);
  set.facts = raw.legs.map(([laps, mistakes, cost, decisive]) => ({laps, mistakes, cost, decisive}));
  measureCourse(set);
  for (const row of set.rows) addLegs(set, row);
  set.bestLap = raw.ref.map((_, leg) => set.rows.find((row) => row.lapRank[leg] === 1)?.laps[leg] ?? null);
  set.decisive = legOfMost(set, (facts) => facts.decisive);
  return set;
}

// Controls are called by their number; those of a segment, which have one in each course, by their
// code.
function nameControls(set) {
  if (set.kind === 'segment') return set.points;
  return set.points.map((_, i) => (i === 0 ? 'S' : i === set.legs ? 'F' : String(i)));
}

// Where legs are on an axis from 0 to 1 that follows the course.
function measureCourse(set) {
  const widths = set.reference.map((time, leg) => (set.timed[leg] ? time : 0));
  set.courseTime = sum(widths);
  set.first = firstStep(set.courseTime);
  set.x = [0];
  for (const width of widths) set.x.push(set.x.at(-1) + width / (set.courseTime || 1));
}

function legOfMost(set, value) {
  let most = null;
  set.facts.forEach((facts, leg) => {
    if (set.timed[leg] && value(facts) > 0 && (most === null || value(facts) > value(set.facts[most]))) most = leg;
  });
  return most;
}

function addLegs(set, row) {
  const legs = Array.from({length: set.legs}, (_, leg) => leg);
  row.laps = legs.map((leg) => (row.extras.lap ?? row.runner.laps)[leg] ?? null);
  row.ranges = pairs(row.extras.ranges ?? []);
  row.inRange = legs.map((leg) => row.ranges.find(([from, to]) => leg + 1 >= from && leg + 1 <= to) ?? null);
  row.elapsed = splitsOf(set, row);
  addLosses(row, legs);
}

function pairs(list) {
  return Array.from({length: list.length / 2}, (_, i) => [list[2 * i], list[2 * i + 1]]);
}

// Times since the start, null where there is none. On an untimed leg no time goes by.
function splitsOf(set, row) {
  const splits = row.extras.split?.map((time) => time || null) ?? runningSums(row.laps);
  set.timed.forEach((timed, leg) => {
    if (!timed && splits[leg] === null) splits[leg] = leg > 0 ? splits[leg - 1] : 0;
  });
  return splits;
}

function runningSums(laps) {
  let total = 0;
  return laps.map((lap) => total += isNumber(lap) ? lap : 0);
}

// The figures of the estimate, and those of the analysis where it has none.
function addLosses(row, legs) {
  const [, , , own = [], below = [], above = [], cost = [], words = ''] = row.estimate ?? [];
  const fromAnalysis = row.extras.loss ?? [];
  const known = (leg) => isNumber(own[leg]) && isNumber(row.laps[leg]);
  row.loss = legs.map((leg) => (known(leg) ? row.laps[leg] - own[leg] : fromAnalysis[leg] ?? null));
  row.own = legs.map((leg) => (isNumber(row.loss[leg]) && isNumber(row.laps[leg]) ? row.laps[leg] - row.loss[leg] : null));
  row.least = legs.map((leg) => (known(leg) ? row.loss[leg] - below[leg] : null));
  row.most = legs.map((leg) => (known(leg) ? row.loss[leg] + above[leg] : null));
  row.cost = legs.map((leg) => (known(leg) ? cost[leg] : null));
  row.word = legs.map((leg) => (known(leg) ? Number(words[leg] ?? 0) : null));
}

// The loss to color a leg by: inside a range that of its end, which is the loss of all its legs.
export function shownLoss(row, leg) {
  const range = row.inRange[leg];
  return range ? row.loss[range[1] - 1] : row.loss[leg];
}
