import assert from 'node:assert/strict';
import {test} from 'node:test';
import {baseName} from '../save.js';

test('saved files are called after the file that was opened', () => {
  const cases = {'results.xml': 'results', 'C:\\races\\Day 1.csv': 'Day 1', 'a/b/成績.html': '成績', 'no-ending': 'no-ending', '.lxm': 'event', 'v1.2 final': 'v1.2 final'};
  for (const [name, base] of Object.entries(cases)) assert.equal(baseName(name), base);
});
