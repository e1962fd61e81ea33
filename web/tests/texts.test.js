import assert from 'node:assert/strict';
import {readFileSync, readdirSync} from 'node:fs';
import {test} from 'node:test';
import {WEB_EN} from '../texts_web_en.js';
import {WEB_JA} from '../texts_web_ja.js';

const folder = new URL('../', import.meta.url);
const source = readdirSync(folder).filter((name) => name.endsWith('.js') && !name.startsWith('texts_web_'))
  .map((name) => readFileSync(new URL(name, folder), 'utf8')).join('\n');

test('both languages have the same texts with the same places', () => {
  assert.deepEqual(Object.keys(WEB_JA), Object.keys(WEB_EN));
  const places = (text) => [...new Set(text.match(/\{\d\}/g) ?? [])].sort().join();
  for (const [key, text] of Object.entries(WEB_EN)) assert.equal(places(WEB_JA[key]), places(text), key);
  assert.equal(WEB_JA.knownList.split('|').length, WEB_EN.knownList.split('|').length);
});

test('every text that is asked for is there, and every text is asked for', () => {
  for (const [, key] of source.matchAll(/\bw\('(\w+)'/g)) assert.ok(key in WEB_EN, key);
  for (const key of Object.keys(WEB_EN)) assert.match(source, new RegExp(`\\b${key.replace(/Why$/, '')}\\b`), key);
});
