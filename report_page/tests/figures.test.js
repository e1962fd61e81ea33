import assert from 'node:assert/strict';
import {test} from 'node:test';
import {makeEvent, openSet} from '../data.js';
import {NO_STORIES, betterStories, costliestLegs, firstStep, isMistake, largestSwings, legsWon, lossStep, median, niceStep, othersOnLeg, partsOfGap, placeWithout, quantile, storiesOf} from '../figures.js';
import {standingsAfter} from '../view_race.js';
import {sampleData} from './sample.js';

const event = makeEvent(sampleData());
const setA = openSet(event, event.byKey.get('class=A'));
const course = openSet(event, event.byKey.get('course=A/B'));
const [winner, second] = setA.rows;

test('steps of losses double from the first', () => {
  assert.equal(firstStep(300), 5);
  assert.equal(firstStep(3600), 18);
  const cases = [[4.9, 0], [5, 1], [10, 2], [20, 3], [40, 4], [4000, 4], [-5, -1], [-4000, -3], [0, 0], [null, null]];
  for (const [loss, step] of cases) assert.equal(lossStep(5, loss), step, `${loss}`);
});

test('small statistics', () => {
  assert.equal(median([3, 1, 2]), 2);
  assert.equal(median([4, 1]), 2.5);
  assert.equal(median([]), null);
  assert.equal(quantile([5, 1, 9], 0.5), 9);
  assert.equal(quantile(Array.from({length: 101}, (_, i) => i), 0.9), 90);
  assert.equal(niceStep(300, 6), 60);
});

test('a gap is the sum of pace and mistakes', () => {
  assert.deepEqual(partsOfGap(second, winner), {gap: 100, mistakes: 60, pace: 40});
  assert.equal(partsOfGap(setA.rows[2], winner), null);
});

test('the place without losses counts the ranked for a ranked runner', () => {
  assert.equal(placeWithout(setA, second), 2);
  assert.equal(placeWithout(course, course.rows[1]), 2);  // 330 - 20 is behind 300
  assert.equal(placeWithout(setA, setA.rows[2]), null);
});

test('mistakes and the others on a leg', () => {
  assert.deepEqual(costliestLegs(setA, second, 3), [0, 2]);
  assert.deepEqual([isMistake(setA, second, 0), isMistake(setA, second, 2), isMistake(setA, winner, 0)], [true, false, false]);
  assert.deepEqual(othersOnLeg(setA, second, 0), {count: 1, faulty: 0, verdict: 'own'});
  assert.deepEqual(othersOnLeg(setA, winner, 0), {count: 1, faulty: 1, verdict: 'hard'});
});

test('swings and legs won', () => {
  assert.deepEqual(largestSwings(setA, [winner, second], 4).map(({leg, size}) => [leg, size]), [[0, 50], [2, 50]]);
  assert.deepEqual(legsWon(setA, [winner, second]), [2, 0]);
});

test('stories need enough runners', () => {
  assert.deepEqual(storiesOf(setA), NO_STORIES);
  assert.equal(storiesOf(course).closest.value, -30);
});

test('somebody out of competition is neither the winner nor in the closest finish', () => {
  const data = sampleData();
  const [first] = data.sets[0].rows;
  data.sets[0].rows = [[1, '(1)', 290, ...first.slice(3)], first, [2, '2', 320, ...first.slice(3)]];
  const set = openSet(makeEvent(data), makeEvent(data).byKey.get('class=A'));
  assert.deepEqual([set.winner.runner.serial, set.leader.runner.serial], [1, 1]);
  const {closest} = storiesOf(set);
  assert.deepEqual([closest.first.runner.serial, closest.second.runner.serial, closest.value], [1, 3, -20]);
});

test('a time from start to finish is no lap', () => {
  const data = sampleData();
  const single = data.sets[0];
  Object.assign(single, {points: ['S', 'F'], ref: [300], timed: [1], legs: [[5, 0, 0, 0]], rows: Array.from({length: 5}, (_, i) => [i, String(i + 1), 300 + i, 1, 0, 0, 300, 1, 1, [i + 1], [i + 1], {}])});
  const set = openSet(makeEvent(data), makeEvent(data).byKey.get('class=A'));
  assert.equal(set.legs, 0);
  assert.equal(storiesOf(set).cleanest, null);
  assert.equal(openSet(event, event.byKey.get('segment=32-F')).legs, 1);
});

test('stories of stretches are those of the whole', () => {
  const many = {...course, finishers: Array.from({length: 9}, (_, i) => ({...winner, place: i + 1, time: 300 + i, lost: 90 - 10 * i, position: [9 - i, i % 4 + 1, i + 1], estimate: winner.estimate}))};
  const whole = storiesOf(many);
  assert.deepEqual([whole.comeback.row.place, whole.cleanest.row.place], [1, 9]);
  assert.deepEqual(betterStories(storiesOf(many, 0, 4), storiesOf(many, 4)), whole);
});

test('the better story of two is told, of equal ones the first', () => {
  const [weak, strong, equal] = [{value: 1}, {value: 2, of: 'a'}, {value: 2, of: 'b'}];
  assert.deepEqual(betterStories({closest: weak, comeback: strong, cleanest: null, deciding: null}, {closest: strong, comeback: equal, cleanest: weak, deciding: null}),
    {closest: strong, comeback: strong, cleanest: weak, deciding: null});
});

test('standings are those of the control, and of the results at the finish', () => {
  const after = (leg) => standingsAfter(course, leg).map(({row, position, time}) => [row.runner.serial, position, time]);
  assert.deepEqual(after(0), [[1, 1, 100], [5, 2, 120], [2, 3, 150]]);
  assert.deepEqual(after(2), [[1, 1, 300], [5, 2, 330], [2, 3, 400]]);
  const tied = {...course, finishers: [{...winner, time: 300}, {...second, time: 300, position: [3, 3, 3]}]};
  assert.deepEqual(standingsAfter(tied, 2).map(({position, won}) => [position, won]), [[1, 0], [1, 2]]);
});
