// Figures that the views show, from those that the library computed: sums, ranks and comparisons.
import {isNumber} from './format.js';

const FEWEST_FOR_COMEBACK = 8;
const FEWEST_FOR_CLEANEST = 5;
const HARD_SHARE = 0.4;
const OWN_SHARE = 0.25;
export const LIKELY = 2;  // of the words for mistakes: 1 perhaps, 2 likely, 3 sure

export function sum(values) {
  return values.reduce((total, value) => total + value, 0);
}

export function median(values) {
  if (values.length === 0) return null;
  const sorted = [...values].sort((a, b) => a - b);
  const half = sorted.length >> 1;
  return sorted.length % 2 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

// The value below which a share of the values is; of few values the largest.
export function quantile(values, share) {
  const sorted = [...values].sort((a, b) => a - b);
  if (sorted.length <= 8) return sorted.at(-1);
  return sorted[Math.floor((sorted.length - 1) * share)];
}

// The first of these steps with which a range has at most so many lines.
export function niceStep(range, most) {
  const steps = [1, 2, 5, 10, 15, 20, 30, 60, 120, 180, 300, 600, 900, 1200, 1800, 3600, 7200, 14400];
  return steps.find((step) => range / step <= most) ?? 36000;
}

// A loss below this is shown as own pace. It grows with the course, so that colors mean the same in
// a sprint and in a long race.
export function firstStep(courseTime) {
  return Math.max(5, courseTime * 0.005);
}

// How dark a loss is shaded: -3 to 4, steps that double; null without a figure.
export function lossStep(first, loss) {
  if (!isNumber(loss)) return null;
  const size = Math.abs(loss);
  const step = size < first ? 0 : Math.min(4, Math.floor(Math.log2(size / first)) + 1);
  return loss > 0 ? step : 0 - Math.min(3, step);
}

// What a loss needs to be told about.
export function leastTold(set) {
  return Math.max(8, set.first);
}

// The legs (from 0) with the largest losses.
export function costliestLegs(set, row, most) {
  return row.loss.map((loss, leg) => ({loss, leg}))
    .filter(({loss}) => isNumber(loss) && loss >= leastTold(set))
    .sort((a, b) => b.loss - a.loss).slice(0, most).map(({leg}) => leg);
}

// Whether the lap counts as a mistake: a word of the estimate says so, or a large loss where there
// is no estimate.
export function isMistake(set, row, leg) {
  if (row.word[leg] !== null) return row.word[leg] >= LIKELY;
  const loss = row.loss[leg];
  return isNumber(loss) && loss >= leastTold(set) && loss >= 0.15 * row.own[leg];
}

// How the others did on a leg: how many of them made a mistake, and what that says.
export function othersOnLeg(set, row, leg) {
  const {laps, mistakes} = set.facts[leg];
  const here = row.lapRank[leg] > 0;
  const count = laps - (here ? 1 : 0);
  const faulty = mistakes - (here && isMistake(set, row, leg) ? 1 : 0);
  const share = count > 0 ? faulty / count : 0;
  const verdict = count === 0 ? 'own' : share >= HARD_SHARE ? 'hard' : share < OWN_SHARE ? 'own' : 'others';
  return {count, faulty, verdict};
}

// The part of a gap that is pace and the part that is mistakes; null when one has no figures.
export function partsOfGap(row, other) {
  if (![row.time, other.time, row.lost, other.lost].every(isNumber)) return null;
  const gap = row.time - other.time;
  const mistakes = row.lost - other.lost;
  return {gap, mistakes, pace: gap - mistakes};
}

// The place that a runner would have had with the ideal time, among the ranked if ranked; null when
// that is not known.
export function placeWithout(set, row) {
  if (!isNumber(row.clean) || !isNumber(row.time)) return null;
  const ranked = isNumber(row.place);
  const faster = set.placed.filter((other) => other !== row && (!ranked || isNumber(other.place)) && other.time < row.clean);
  return faster.length + 1;
}

// The legs on which rows differ most from the first of them.
export function largestSwings(set, rows, most) {
  const [base, ...others] = rows;
  const swings = [];
  for (const row of others) {
    for (let leg = 0; leg < set.legs; ++leg) {
      if (!row.lapRank[leg] || !base.lapRank[leg]) continue;
      const size = row.laps[leg] - base.laps[leg];
      if (Math.abs(size) >= set.first) swings.push({leg, size, row});
    }
  }
  return swings.sort((a, b) => Math.abs(b.size) - Math.abs(a.size)).slice(0, most);
}

// On how many legs each of the rows was the fastest of them.
export function legsWon(set, rows) {
  const won = rows.map(() => 0);
  for (let leg = 0; leg < set.legs; ++leg) {
    const laps = rows.map((row) => (row.lapRank[leg] ? row.laps[leg] : Infinity));
    const best = Math.min(...laps);
    if (best < Infinity) laps.forEach((lap, i) => won[i] += lap === best ? 1 : 0);
  }
  return won;
}

function best(items, value) {
  let found = null;
  for (const item of items) {
    const of = value(item);
    if (of !== null && (found === null || of > found.value)) found = {...item, value: of};
  }
  return found;
}

function ranked(set) {
  return set.finishers.filter((row) => isNumber(row.place));
}

// The worst position after a tenth of the course.
function worstPosition(set, row) {
  return Math.max(0, ...row.position.slice(0, -1).filter((_, leg) => set.x[leg + 1] > 0.1));
}

// Legs with a loss, without working them all out: of the estimate, or else of the analysis.
function legsWithLoss({estimate, extras}) {
  return (estimate?.[3] ?? extras.loss ?? []).filter(isNumber).length;
}

function closestFinish(set) {
  const [first, second] = set.placed.filter((row) => isNumber(row.place));
  return second ? {set, first, second, value: first.time - second.time} : null;
}

function decidingLeg(set) {
  if (set.decisive === null || set.finishers.length <= 4) return null;
  return {set, value: set.facts[set.decisive].decisive / (set.courseTime || 1)};
}

// Where runners had other courses, positions are not those of the class.
function greatestComeback(set, rows) {
  if (set.finishers.length < FEWEST_FOR_COMEBACK || set.others > 0) return null;
  return best(rows.map((row) => ({set, row, worst: worstPosition(set, row)})), ({row, worst}) => {
    const won = worst - row.position.at(-1);
    return row.position.at(-1) > 0 && won > 1 ? won : null;
  });
}

function cleanestRun(set, rows) {
  if (set.finishers.length < FEWEST_FOR_CLEANEST || set.timedLegs === 0) return null;
  return best(rows.map((row) => ({set, row})), ({row}) => {
    const known = legsWithLoss(row) >= 0.6 * set.timedLegs;
    return known && isNumber(row.lost) && row.time > 0 ? -row.lost / row.time : null;
  });
}

// What was special about the race of a set, told of a stretch of its ranked finishers: each entry
// may be null.
export function storiesOf(set, from = 0, to = Infinity) {
  const rows = ranked(set).slice(from, to);
  return {
    closest: from === 0 ? closestFinish(set) : null, comeback: greatestComeback(set, rows),
    cleanest: cleanestRun(set, rows), deciding: from === 0 ? decidingLeg(set) : null,
  };
}

export const NO_STORIES = {closest: null, comeback: null, cleanest: null, deciding: null};

// The better one of each two stories; of equals the first.
export function betterStories(stories, others) {
  return Object.fromEntries(Object.entries(stories).map(([kind, story]) => {
    const other = others[kind];
    return [kind, story === null || (other !== null && other.value > story.value) ? other : story];
  }));
}
