import assert from 'node:assert/strict';
import {test} from 'node:test';
import {makeEvent, openSet} from '../data.js';
import {pileUp} from '../dots.js';
import {gapsTo, lineClass, raceScale} from '../lines.js';
import {labelsApart} from '../loss_bars.js';
import {sampleData} from './sample.js';

const event = makeEvent(sampleData());
const set = openSet(event, event.byKey.get('class=A'));
const [winner, second, skipper] = set.rows;

test('dots pile up where they overlap and stay inside', () => {
  const placed = pileUp([{value: 10}, {value: 11}, {value: 50}, {value: 999}], 100, 3, (value) => value);
  assert.deepEqual(placed.map(({x, level}) => [x, level]), [[10, 0], [11, 1], [50, 0], [97, 0]]);
});

test('a label that another one would cover moves down', () => {
  const labels = [{x: 100, y: 20}, {x: 120, y: 28}, {x: 110, y: 40}, {x: 200, y: 20}];
  assert.deepEqual(labelsApart(labels).map(({y}) => y), [20, 41, 66, 20]);
});

test('gaps start at nothing and bridge what is missing', () => {
  assert.deepEqual(gapsTo(second, winner), [0, 50, 50, 100]);
  assert.deepEqual(gapsTo({elapsed: [null, 200, 300]}, winner), [0, null, 100, 0]);
});

test('being behind is down, and nothing leaves the chart', () => {
  const scale = raceScale(set, [winner, second], 'gap', 390);
  assert.ok(scale.y(100) > scale.y(0));
  assert.ok(scale.y(1e6) <= scale.height - scale.bottom + 8);
  assert.deepEqual([scale.x(0), scale.x(3)], [46, 360]);
  const positions = raceScale(set, [winner, second, skipper], 'pos', 390);
  assert.equal(positions.value(skipper, 1), null);
  assert.equal(positions.value(second, 0), null);
  assert.ok(positions.y(2) > positions.y(1));
});

test('lines have the color of their place', () => {
  const cases = [[winner, 0, null, 'c0'], [second, 8, null, 'other'], [second, 1, second.runner, 'me'], [skipper, -1, null, 'other']];
  for (const [row, place, me, kind] of cases) assert.equal(lineClass(row, place, me), kind);
});
