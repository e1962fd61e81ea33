// ZIP archives, packed with what the browser has.

const CRC_TABLE = Uint32Array.from({length: 256}, (_, value) => {
  for (let bit = 0; bit < 8; ++bit) value = value & 1 ? (value >>> 1) ^ 0xEDB88320 : value >>> 1;
  return value;
});

export function crc32(bytes) {
  let crc = 0xFFFFFFFF;
  for (const byte of bytes) crc = CRC_TABLE[(crc ^ byte) & 0xFF] ^ (crc >>> 8);
  return (crc ^ 0xFFFFFFFF) >>> 0;
}

// Bytes through a stream of the browser.
export async function through(bytes, stream) {
  return new Uint8Array(await new Response(new Blob([bytes]).stream().pipeThrough(stream)).arrayBuffer());
}

// Stored where the browser cannot pack, and where packing gains nothing.
async function packed(bytes) {
  try {
    const deflated = await through(bytes, new CompressionStream('deflate-raw'));
    if (deflated.length < bytes.length) return {method: 8, data: deflated};
  } catch {
    // An older browser knows only other forms.
  }
  return {method: 0, data: bytes};
}

// Numbers of two or four bytes, lowest byte first.
function numbers(...values) {
  const sizes = values.map(([, size]) => size);
  const bytes = new Uint8Array(sizes.reduce((sum, size) => sum + size, 0));
  const view = new DataView(bytes.buffer);
  let at = 0;
  values.forEach(([value, size]) => {
    if (size === 2) view.setUint16(at, value, true);
    else view.setUint32(at, value, true);
    at += size;
  });
  return bytes;
}

const UTF8_NAMES = 0x0800;
const VERSION = 20;

function dosTime(date) {
  const time = (date.getHours() << 11) | (date.getMinutes() << 5) | (date.getSeconds() >> 1);
  const day = ((Math.max(date.getFullYear(), 1980) - 1980) << 9) | ((date.getMonth() + 1) << 5) | date.getDate();
  return [time, day];
}

// The archive of files [{name, bytes}].
export async function zip(files, date = new Date()) {
  const [time, day] = dosTime(date);
  const parts = [];
  const directory = [];
  let at = 0;
  for (const {name, bytes} of files) {
    const {method, data} = await packed(bytes);
    const title = new TextEncoder().encode(name);
    const common = [[VERSION, 2], [UTF8_NAMES, 2], [method, 2], [time, 2], [day, 2], [crc32(bytes), 4], [data.length, 4], [bytes.length, 4], [title.length, 2], [0, 2]];
    parts.push(numbers([0x04034B50, 4], ...common), title, data);
    directory.push(numbers([0x02014B50, 4], [VERSION, 2], ...common, [0, 2], [0, 2], [0, 2], [0, 4], [at, 4]), title);
    at += 30 + title.length + data.length;
  }
  const size = directory.reduce((sum, part) => sum + part.length, 0);
  const end = numbers([0x06054B50, 4], [0, 2], [0, 2], [files.length, 2], [files.length, 2], [size, 4], [at, 4], [0, 2]);
  return new Blob([...parts, ...directory, end], {type: 'application/zip'});
}
