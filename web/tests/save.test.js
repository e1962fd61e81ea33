import assert from 'node:assert/strict';
import {test} from 'node:test';
import {baseName, filled} from '../save.js';

test('saved files are called after the file that was opened', () => {
  const cases = {'results.xml': 'results', 'C:\\races\\Day 1.csv': 'Day 1', 'a/b/成績.html': '成績', 'no-ending': 'no-ending', '.lxm': 'event', 'v1.2 final': 'v1.2 final'};
  for (const [name, base] of Object.entries(cases)) assert.equal(baseName(name), base);
});

test('a report gets its style and script, whatever texts it contains', () => {
  const report = "<meta content=\"style-src '{style_hash}'; script-src '{script_hash}'\"><title>{style} $&amp; {script}</title><style>{style}</style><script type=\"module\">{script}</script>";
  const parts = {style: 'a{b:$1}', script: "let x='$&'", styleHash: 'sha256-A', scriptHash: 'sha256-B'};
  assert.equal(filled(report, parts), "<meta content=\"style-src 'sha256-A'; script-src 'sha256-B'\"><title>{style} $&amp; {script}</title><style>a{b:$1}</style><script type=\"module\">let x='$&'</script>");
});
