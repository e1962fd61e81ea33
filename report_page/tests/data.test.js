import assert from 'node:assert/strict';
import {gzipSync} from 'node:zlib';
import {test} from 'node:test';
import {classSetOf, lapsRow, makeEvent, openSet, shownLoss, unpack} from '../data.js';
import {sampleData} from './sample.js';

const event = makeEvent(sampleData());
const open = (key) => openSet(event, event.byKey.get(key));

test('the block is unpacked', async () => {
  const block = gzipSync(JSON.stringify(sampleData())).toString('base64');
  assert.deepEqual(await unpack(block), sampleData());
});

test('runners are in their sets and clubs', () => {
  const set = open('class=A');
  assert.deepEqual(set.rows.map((row) => row.runner.name), ['Anna Berg', "Tom O'Hara", 'さとう けん']);
  assert.deepEqual(set.withoutLaps.map((runner) => runner.name), ['Nils Holm']);
  assert.deepEqual(set.rows.map((row) => row.place), [1, null, null]);
  assert.deepEqual(event.clubs, [['OK North', 2], ['O-Club', 2]]);
  assert.equal(event.courseOfClass.get('B').name, 'A/B');
  assert.equal(classSetOf(event, event.bySerial.get(5)).name, 'B');
});

test('the estimate goes before the analysis, which fills its gaps', () => {
  const [winner, second, skipper] = open('class=A').rows;
  assert.deepEqual(second.loss, [40, null, 10]);
  assert.deepEqual([second.least[0], second.most[0], second.own[0], second.word[0], second.cost[0]], [30, 52, 110, 2, 35]);
  assert.deepEqual([second.lost, second.lostRange, second.clean, second.speed, second.mistakes], [60, [40, 90], 340, 1.2, 1]);
  assert.equal(winner.word[2], 0);
  assert.deepEqual(skipper.loss, [null, null, 90]);
  assert.deepEqual([skipper.word[2], skipper.least[2], skipper.mistakes], [null, null, null]);
  const [other] = open('class=B').rows;
  assert.deepEqual([other.loss[0], other.own[0], other.lost, other.clean], [5, 115, 20, 310]);
});

test('elapsed times are sums, or those of the library', () => {
  const [winner, , skipper] = open('class=A').rows;
  assert.deepEqual(winner.elapsed, [100, 100, 300]);
  assert.deepEqual(skipper.elapsed, [140, 140, 420]);
});

test('all legs of a range have its loss', () => {
  const [, , skipper] = open('class=A').rows;
  assert.deepEqual([0, 1, 2].map((leg) => shownLoss(skipper, leg)), [90, 90, 90]);
});

test('untimed legs have no width', () => {
  const set = open('class=A');
  assert.deepEqual(set.x.map((x) => Number(x.toFixed(3))), [0, 0.333, 0.333, 1]);
  assert.deepEqual(set.labels, ['S→1', '1→2', '2→F']);
  assert.equal(set.decisive, 0);
});

test('a segment has codes, and the laps and losses that its runners have there', () => {
  const set = open('segment=32-F');
  assert.deepEqual(set.labels, ['32→F']);
  const [second, other] = set.rows;
  assert.deepEqual([second.laps, second.loss, second.most, second.word], [[250], [10], [19], [0]]);
  assert.deepEqual([second.lost, second.speed, second.mistakes, second.result], [2, null, null, '0:06:40']);
  assert.deepEqual([other.laps, other.loss, other.result], [[null], [null], 'N/A']);
});

test('runners on another course are listed in their class, with the laps of that course', () => {
  const raw = sampleData();
  const [first, , skipped] = raw.sets[0].rows;
  raw.sets[0].rows = [first, skipped];
  raw.sets[0].others = [[1, '2', 400, 1]];
  raw.sets.splice(2, 1, {...raw.sets[2], name: 'A (2)', rows: [raw.sets[2].rows[2]]});
  const forked = makeEvent(raw);
  const list = openSet(forked, forked.byKey.get('class=A'));
  assert.deepEqual(list.listed.map((row) => row.rank), ['1', '2', '']);
  assert.deepEqual([list.rows.length, list.placed.length, list.others], [2, 2, 1]);
  assert.deepEqual(list.withoutLaps.map((runner) => runner.name), ['Nils Holm']);
  const laps = lapsRow(forked, list.listed[1]);
  assert.deepEqual([laps.set.name, laps.laps], ['A (2)', [150, null, 250]]);
  assert.equal(lapsRow(forked, list.rows[0]), list.rows[0]);
  assert.equal(forked.courseOfClass.size, 0, 'the set of a fork is not the course of the class');
});

test('runners with a time but no laps are listed, and are not on another course', () => {
  const raw = sampleData();
  raw.sets[0].rows.splice(1, 1);
  raw.sets[0].others = [[1, '2', 400, 1]];
  raw.sets.splice(1);
  const event = makeEvent(raw);
  const list = openSet(event, event.byKey.get('class=A'));
  assert.deepEqual(list.listed.map((row) => row.rank), ['1', '2', '']);
  assert.deepEqual([list.placed.length, list.others, lapsRow(event, list.listed[1])], [2, 0, null]);
});

test('titles of courses keep the slashes of their classes', () => {
  const titles = (...classes) => {
    const data = sampleData();
    data.classes = classes.map((name) => ({name, runners: 1}));
    data.sets[2].name = classes.join('/');
    return makeEvent(data).sets.find((set) => set.kind === 'course').title;
  };
  assert.equal(titles('A', 'B'), 'A / B');
  assert.equal(titles('M', 'M/W', 'W'), 'M / M/W / W');
  const forked = sampleData();
  forked.sets[2].name = 'A (2)';
  assert.equal(makeEvent(forked).sets.find((set) => set.kind === 'course').title, 'A (2)');
});
