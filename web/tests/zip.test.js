import assert from 'node:assert/strict';
import {test} from 'node:test';
import {inflateRawSync} from 'node:zlib';
import {crc32, zip} from '../zip.js';

const text = (string) => new TextEncoder().encode(string);

// The files of an archive, by its directory at the end.
function filesOf(archive) {
  const bytes = Buffer.from(archive);
  const end = bytes.length - 22;
  assert.equal(bytes.readUInt32LE(end), 0x06054B50);
  const files = {};
  let at = bytes.readUInt32LE(end + 16);
  for (let i = 0; i < bytes.readUInt16LE(end + 10); ++i) {
    assert.equal(bytes.readUInt32LE(at), 0x02014B50);
    const [method, crc, packed, size, length] = [bytes.readUInt16LE(at + 10), bytes.readUInt32LE(at + 16), bytes.readUInt32LE(at + 20), bytes.readUInt32LE(at + 24), bytes.readUInt16LE(at + 28)];
    const name = bytes.subarray(at + 46, at + 46 + length).toString();
    const local = bytes.readUInt32LE(at + 42);
    assert.equal(bytes.readUInt32LE(local), 0x04034B50);
    assert.equal(bytes.subarray(local + 30, local + 30 + length).toString(), name);
    const data = bytes.subarray(local + 30 + length, local + 30 + length + packed);
    const unpacked = method === 8 ? inflateRawSync(data) : data;
    assert.equal(unpacked.length, size);
    assert.equal(crc32(unpacked), crc);
    files[name] = {method, text: unpacked.toString()};
    at += 46 + length;
  }
  assert.equal(at, end);
  return files;
}

test('the checksum is that of the standard', () => {
  assert.equal(crc32(text('123456789')), 0xCBF43926);
  assert.equal(crc32(text('')), 0);
});

test('files come out as they went in, packed where that is shorter', async () => {
  const long = 'leg '.repeat(1000);
  const archive = await zip([{name: 'index.html', bytes: text(long)}, {name: '成績.csv', bytes: text('a')}, {name: 'empty', bytes: text('')}],
    new Date(2025, 9, 18, 12, 30, 10));
  assert.deepEqual(filesOf(await archive.arrayBuffer()), {
    'index.html': {method: 8, text: long}, '成績.csv': {method: 0, text: 'a'}, empty: {method: 0, text: ''},
  });
});

test('a browser that cannot pack stores', async (context) => {
  context.mock.method(globalThis, 'CompressionStream', function () { throw new TypeError('unknown format'); });
  const archive = await zip([{name: 'a', bytes: text('b'.repeat(100))}]);
  assert.deepEqual(filesOf(await archive.arrayBuffer()), {a: {method: 0, text: 'b'.repeat(100)}});
});
