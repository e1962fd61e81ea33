// The data of the event, and the sets that are worked out of it when they are first shown.
import {isNumber} from './format.js';
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
    title: values.kind === 'course' ? titleOfCourse(values.name, raw.classes) : values.name,
    length: values.length, climb: values.climb, controls: values.controls, raw: withoutSingleLeg(values),
  }));
  const order = ({kind, name}) => (kind === 'class' ? raw.classes.findIndex((each) => each.name === name) : Infinity);
  const places = new Map(event.sets.map((set) => [set, order(set)]));
  event.sets.sort((a, b) => (places.get(a) === places.get(b) ? 0 : places.get(a) - places.get(b)));
  event.byKey = new Map(event.sets.map((set) => [set.key, set]));
  event.bySerial = new Map(event.runners.map((runner) => [runner.serial, runner]));
  event.clubs = clubsOf(event.runners);
  event.classSets = event.sets.filter((set) => set.kind === 'class');
  findCourses(event);
  return event;
}

// "A / B" for the course "A/B"; names of classes may have slashes themselves.
function titleOfCourse(name, classes) {
  const known = classes.map((klass) => klass.name).sort((a, b) => b.length - a.length);
  const parts = [];
  for (let rest = name; rest; rest = rest.slice(parts.at(-1).length + 1)) {
    const part = known.find((klass) => rest === klass || rest.startsWith(`${klass}/`));
    if (!part) return name;
    parts.push(part);
  }
  return parts.join(' / ');
}

// From start to finish is no lap: such a class has times only.
function withoutSingleLeg(set) {
  return set.kind === 'segment' || set.ref.length > 1 ? set : {...set, points: [], ref: [], timed: [], legs: []};
}

function makeRunner(raw, [serial, name, club, klass, start, result, outcome, laps, estimate]) {
  const clubName = raw.clubs[club];
  const className = raw.classes[klass].name;
  return {
    serial, name, club: clubName, className, classIndex: klass, start, result, outcome, laps, estimate,
  };
}

// Clubs with the number of their runners, the largest first.
function clubsOf(runners) {
  const counts = new Map();
  for (const {club} of runners) if (club) counts.set(club, (counts.get(club) ?? 0) + 1);
  return [...counts].sort((a, b) => b[1] - a[1]);
}

// The course set in which the runners of a class are, by the name of the class; and the one of each
// runner who had another course than their class, as with forks, by the number of the runner.
function findCourses(event) {
  event.courseOfClass = new Map();
  event.otherCourses = new Map();
  const inClass = new Set(event.classSets.flatMap((set) => set.raw.rows.map(([index]) => index)));
  for (const set of event.sets) {
    if (set.kind !== 'course') continue;
    for (const [index] of set.raw.rows) {
      const [courses, key] = inClass.has(index) ? [event.courseOfClass, event.runners[index].className] : [event.otherCourses, index];
      if (!courses.has(key)) courses.set(key, set);
    }
  }
}

export function classSetOf(event, runner) {
  return event.byKey.get(setKey('class', runner.className)) ?? null;
}

// Rows of a set with what lists and cards need: runner, rank, time.
export function openList(event, set) {
  if (set.rows) return set;
  set.rows = set.raw.rows.map((values) => new Row(event, set, values));
  set.byRunner = new Map(set.rows.map((row) => [row.runner, row]));
  set.finishers = set.rows.filter((row) => isNumber(row.time));
  set.winner = firstOf(set.finishers);
  listEverybody(event, set);
  set.withoutLaps = set.kind !== 'class' ? [] :
    event.runners.filter((runner) => runner.className === set.name && !set.rowOf.has(runner));
  return set;
}

// The one whom times are compared with. Out of competition, somebody may have been faster.
function firstOf(rows) {
  return rows.find((row) => isNumber(row.place)) ?? rows[0] ?? null;
}

// The result list: the rows, and in a class also the runners who had another course, whose laps are in
// the set of that course, and those who have a time but no laps.
function listEverybody(event, set) {
  const others = (set.raw.others ?? []).map(([index, rank, time, at]) => ({at, row: otherRow(event, set, index, rank, time)}));
  set.others = others.filter(({row}) => row.other !== null).length;
  set.listed = [];
  for (let at = 0, next = 0; at <= set.rows.length; ++at) {
    for (; others[next]?.at === at; ++next) set.listed.push(others[next].row);
    if (at < set.rows.length) set.listed.push(set.rows[at]);
  }
  set.rowOf = new Map(set.listed.map((row) => [row.runner, row]));
  set.placed = set.listed.filter((row) => isNumber(row.time));
  set.leader = firstOf(set.placed);
}

const NO_LEGS = {laps: [], inRange: [], elapsed: [], loss: [], own: [], least: [], most: [], cost: [], word: []};

function otherRow(event, set, index, rank, time) {
  const row = new Row(event, set, [index, rank, time, null, null, null, null, 0, 0, [], [], {}]);
  return Object.assign(row, {legs: NO_LEGS, other: event.otherCourses.get(index) ?? null});
}

// The row that has the laps of the runner of a list: itself, or that in the set of another course;
// null when they are in no set.
export function lapsRow(event, row) {
  if (row.legs !== NO_LEGS) return row;
  return row.other && openSet(event, row.other).byRunner.get(row.runner);
}

// What a set says about a runner. What concerns single legs is worked out when it is first asked for,
// because of a long list only some rows are ever shown.
class Row {
  constructor(event, set, values) {
    const [index, rank, time, cruise, rate, lost, clean, firstHalf, secondHalf, lapRank, position, extras] = values;
    const runner = event.runners[index];
    const estimate = runner.estimate ?? null;
    const isSegment = set.kind === 'segment';
    const from = extras.from ?? 0;
    const timeLost = !estimate ? lost : isSegment ? costOfLegs(estimate, from, lapRank.length) : estimate[1];
    Object.assign(this, {
      set, runner, rank, time, rate, lapRank, position, extras, estimate, from,
      place: /^\d+$/.test(rank) ? Number(rank) : null,
      result: extras.result ?? runner.result,
      speed: isSegment ? null : estimate ? estimate[0] : cruise,
      mistakes: estimate && !isSegment ? estimate[2] : null,
      lost: timeLost,
      lostRange: estimate && !isSegment ? [estimate[8], estimate[9]] : null,
      clean: estimate ? (isNumber(time) ? time - timeLost : null) : clean || null,
      half: firstHalf && secondHalf ? secondHalf / firstHalf - 1 : null,
      legs: null,
    });
  }

  get laps() { return this.opened().laps; }
  get inRange() { return this.opened().inRange; }
  get elapsed() { return this.opened().elapsed; }
  get loss() { return this.opened().loss; }
  get own() { return this.opened().own; }
  get least() { return this.opened().least; }
  get most() { return this.opened().most; }
  get cost() { return this.opened().cost; }
  get word() { return this.opened().word; }

  opened() {
    return this.legs ??= legsOf(this.set, this);
  }
}

// What mistakes cost on the legs of a segment.
function costOfLegs([, , , , , , cost], from, legs) {
  return sum(cost.slice(from, from + legs).filter(isNumber));
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

// What there is for each leg of a row: marked laps, times since the start, and losses with all that
// is known of them; null where there is nothing.
function legsOf(set, {runner, extras, estimate, from}) {
  const legs = Array.from({length: set.legs}, (_, leg) => leg);
  const laps = extras.lap ?? legs.map((leg) => runner.laps[from + leg] ?? null);
  const ranges = pairs(extras.ranges ?? []);
  return {
    laps,
    inRange: legs.map((leg) => ranges.find(([begin, end]) => leg + 1 >= begin && leg + 1 <= end) ?? null),
    elapsed: splitsOf(set, laps, extras.split),
    ...lossesOf(legs, laps, extras.loss ?? [], estimate ?? [], from),
  };
}

function pairs(list) {
  return Array.from({length: list.length / 2}, (_, i) => [list[2 * i], list[2 * i + 1]]);
}

// Times since the start, null where there is none. On an untimed leg no time goes by.
function splitsOf(set, laps, given) {
  const splits = given?.map((time) => time || null) ?? runningSums(laps);
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
function lossesOf(legs, laps, ofAnalysis, [, , , own = [], below = [], above = [], cost = [], words = ''], from) {
  const known = legs.map((leg) => isNumber(own[from + leg]) && isNumber(laps[leg]));
  const loss = legs.map((leg) => (known[leg] ? laps[leg] - own[from + leg] : ofAnalysis[leg] ?? null));
  return {
    loss,
    own: legs.map((leg) => (isNumber(loss[leg]) && isNumber(laps[leg]) ? laps[leg] - loss[leg] : null)),
    least: legs.map((leg) => (known[leg] ? loss[leg] - below[from + leg] : null)),
    most: legs.map((leg) => (known[leg] ? loss[leg] + above[from + leg] : null)),
    cost: legs.map((leg) => (known[leg] ? cost[from + leg] : null)),
    word: legs.map((leg) => (known[leg] ? Number(words[from + leg] ?? 0) : null)),
  };
}

// The loss to color a leg by: inside a range that of its end, which is the loss of all its legs.
export function shownLoss(row, leg) {
  const range = row.inRange[leg];
  return range ? row.loss[range[1] - 1] : row.loss[leg];
}
