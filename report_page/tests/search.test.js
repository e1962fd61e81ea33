import assert from 'node:assert/strict';
import {test} from 'node:test';
import {makeEvent} from '../data.js';
import {markedParts, search} from '../search.js';
import {sampleData} from './sample.js';

const event = makeEvent(sampleData());
const names = (text) => search(event, text).runners.map((runner) => runner.name);

test('words are found whatever their form, names first', () => {
  const cases = [['ohara', ["Tom O'Hara"]], ['ｻﾄｳ', ['さとう けん']], ['NORTH', ['Anna Berg', 'Äsa Ek']], ['berg north', ['Anna Berg']],
    ['asa', ['Äsa Ek']], ['zz', []], ['  ', []], ['o', ["Tom O'Hara", 'Nils Holm', 'Anna Berg', 'さとう けん', 'Äsa Ek']]];
  for (const [text, found] of cases) assert.deepEqual(names(text), found, text);
});

test('clubs and classes are found', () => {
  const found = search(event, 'o-club');
  assert.deepEqual(found.clubs, [['O-Club', 2]]);
  assert.deepEqual(search(event, 'b').classes.map((set) => set.name), ['B']);
});

test('the word is marked where it can be', () => {
  assert.deepEqual(markedParts('Anna Berg', 'BER'), ['Anna ', 'Ber', 'g']);
  assert.deepEqual(markedParts('Anna', 'x'), ['Anna']);
});
