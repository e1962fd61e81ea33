import assert from 'node:assert/strict';
import {readFileSync, readdirSync} from 'node:fs';
import {test} from 'node:test';
import {chooseLanguage, dateText, ordinal, rich, setLanguage, t} from '../language.js';
import {HELP_EN, TEXTS_EN} from '../texts_en.js';
import {HELP_JA, TEXTS_JA} from '../texts_ja.js';

const folder = new URL('../', import.meta.url);

test('both languages have the same texts with the same places', () => {
  assert.deepEqual(Object.keys(TEXTS_JA).sort(), Object.keys(TEXTS_EN).sort());
  assert.deepEqual(Object.keys(HELP_JA).sort(), Object.keys(HELP_EN).sort());
  const places = (text) => [...new Set(text.match(/\{\d\}/g) ?? [])].sort().join();
  for (const [key, text] of Object.entries(TEXTS_EN)) assert.equal(places(TEXTS_JA[key]), places(text), key);
  for (const [key, parts] of Object.entries(HELP_EN)) assert.equal(HELP_JA[key].length, parts.length, key);
});

test('every text that a view asks for is there, and every text is asked for', () => {
  const source = readdirSync(folder).filter((name) => name.endsWith('.js') && !name.startsWith('texts_'))
    .map((name) => readFileSync(new URL(name, folder), 'utf8')).join('\n');
  for (const [, key] of source.matchAll(/\b(?:t|rich)\('(\w+)'/g)) assert.ok(key in TEXTS_EN, key);
  for (const [, key] of source.matchAll(/\bterm\('(\w+)'/g)) assert.ok(key in HELP_EN, key);
  for (const key of Object.keys(TEXTS_EN)) assert.ok(new RegExp(`\\b${key.replace(/\d$/, '(\\d|\\$)?')}`).test(source), key);
});

test('the language is that of the address, the last choice, the browser', () => {
  const cases = [['ja', 'en', 'en', 'ja'], [undefined, 'ja', 'en-US', 'ja'], [undefined, undefined, 'ja-JP', 'ja'], ['xx', null, 'fr', 'en'], [undefined, undefined, undefined, 'en']];
  for (const [ofAddress, ofStore, ofBrowser, chosen] of cases) assert.equal(chooseLanguage(ofAddress, ofStore, ofBrowser), chosen);
});

test('values, ranks and dates in both languages', () => {
  setLanguage('en');
  assert.equal(t('finishedOf', 3, 5), '3 of 5 finished');
  assert.deepEqual([1, 2, 3, 4, 11, 12, 21, 111, '(9)', null].map(ordinal), ['1st', '2nd', '3rd', '4th', '11th', '12th', '21st', '111th', '(9)', '–']);
  assert.equal(dateText('2025-10-18', true), '18 Oct 2025');
  setLanguage('ja');
  assert.deepEqual(rich('gapTo', 'X'), ['', 'X', 'との差']);
  assert.equal(ordinal(3), '3位');
  assert.equal(dateText(null), '');
  setLanguage('en');
});
