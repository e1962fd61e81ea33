import assert from 'node:assert/strict';
import {test} from 'node:test';
import {address, readAddress, runnerKey, runnerOfKey, runnersOfKeys, setKeyOf, viewOf} from '../route.js';

const plain = (hash) => ({...readAddress(hash)});

test('addresses survive writing and reading', () => {
  for (const query of [{class: 'M=A&B #1%', view: 'race'}, {club: '銀杏OL'}, {runner: "31~Tom O'Hara", ref: '45'}, {find: ''}, {compare: '31,45'}]) {
    assert.deepEqual(plain(address(query)), query.find === '' ? {find: ''} : query);
  }
});

test('values that are not set are left out', () => {
  assert.equal(address({class: 'A', view: '', at: undefined, sort: null}), '#class=A');
});

test('old and damaged addresses are understood', () => {
  const cases = [['#class=A&view=table', {class: 'A', view: 'splits'}], ['#class=A&chart=relative110', {class: 'A', view: 'race'}],
    ['#runners=3,4&class=A', {runners: '3,4', class: 'A', compare: '3,4'}], ['#class=100%', {class: '100%'}], ['#&&=x&lang', {}],
    ['#__proto__=x&class=A', {['__proto__']: 'x', class: 'A'}]];
  for (const [hash, query] of cases) assert.deepEqual(JSON.stringify(readAddress(hash)), JSON.stringify(query), hash);
});

test('views of addresses', () => {
  const cases = [['#', 'event'], ['#class=A', 'set'], ['#segment=1-2', 'set'], ['#runner=3&class=A', 'runner'], ['#compare=', 'compare'], ['#find=', 'find'], ['#club=x', 'club'], ['#help=speed', 'help'], ['#lang=ja', 'event']];
  for (const [hash, view] of cases) assert.equal(viewOf(readAddress(hash)), view, hash);
  assert.equal(setKeyOf(readAddress('#course=A/B&view=legs')), 'course=A/B');
});

test('runners are found by number, and by name when numbers moved', () => {
  const runners = [{serial: 1, name: 'Ann'}, {serial: 2, name: 'Bo'}, {serial: 3, name: 'Cy'}, {serial: 4, name: 'Cy'}];
  const cases = [['2', 'Bo'], ['2~Bo', 'Bo'], ['1~Bo', 'Bo'], ['9~Cy', undefined], ['3~Cy', 'Cy'], ['1~Nobody', undefined], ['', undefined], [undefined, undefined]];
  for (const [key, name] of cases) assert.equal(runnerOfKey(key, runners)?.name, name, key);
  assert.equal(runnerKey(runners[1]), '2~Bo');
  assert.deepEqual(runnersOfKeys('2,2,x,1', runners).map((runner) => runner.serial), [2, 1]);
});
