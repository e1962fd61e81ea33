import assert from 'node:assert/strict';
import {test} from 'node:test';
import {blocksWithin} from '../rows.js';

test('blocks within a stretch of a list', () => {
  const heights = [100, 100, 50, 100];
  for (const [from, to, expected] of [
    [-500, -100, [0, 0]], [0, 1, [0, 0]], [0, 150, [0, 1]], [99, 101, [0, 1]], [100, 101, [1, 1]],
    [210, 260, [2, 3]], [340, 9000, [3, 3]], [9000, 9900, [3, 3]], [-100, 9000, [0, 3]],
  ]) assert.deepEqual(blocksWithin(heights, from, to), expected, `${from} to ${to}`);
});
