import assert from 'node:assert/strict';
import {test} from 'node:test';
import {bare, clockText, folded, lengthText, percentText, shortName, signedTime, timeText} from '../format.js';

test('times round to seconds and carry', () => {
  const cases = [[0, '0:00'], [59.4, '0:59'], [59.5, '1:00'], [3599.6, '1:00:00'], [-75, '1:15'], [90061, '25:01:01'], [null, '–'], [NaN, '–']];
  for (const [seconds, text] of cases) assert.equal(timeText(seconds), text);
});

test('signs are those of what is shown', () => {
  const cases = [[0.4, '±0:00'], [-0.4, '±0:00'], [0.6, '+0:01'], [-61, '−1:01'], [undefined, '–']];
  for (const [seconds, text] of cases) assert.equal(signedTime(seconds), text);
});

test('other numbers', () => {
  assert.equal(clockText(36132), '10:02:12');
  assert.equal(percentText(1.2849, 1), '128.5%');
  assert.equal(percentText(0), '–');
  assert.equal(lengthText(5700, 70), '5.7 km ↑70 m');
  assert.equal(lengthText(0, 0), '');
});

test('short names keep what identifies', () => {
  const cases = [["Tom O'Hara", "T. O'Hara"], ['Cher', 'Cher'], ['佐々木　勇人', '佐々木 勇人'], ['Maximilian von Hohenzollern-Sigmaringen', 'M. von Hohenz…'], ['', '']];
  for (const [name, short] of cases) assert.equal(shortName(name), short);
});

test('folding makes width, case and kind of kana equal', () => {
  assert.equal(folded('ﾜﾀﾅﾍﾞ　ＯＬ'), folded('わたなべ ol'));
  assert.equal(bare("O'Hara Ünsal-Ek"), 'oharaunsalek');
});
