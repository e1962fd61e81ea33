// equal_test.mjs ENGINE EXPORT_ALL FOLDER ...: every file of the folders, opened by the library as
// WebAssembly and by the native one (tests/c/export_all.c), gives the same bytes in every form of
// export, and the same errors.
import {execFileSync} from 'node:child_process';
import fs from 'node:fs';
import {createRequire} from 'node:module';
import os from 'node:os';
import path from 'node:path';
import {fileURLToPath} from 'node:url';
import {Engine, EngineError} from '../../web/engine.js';

const EPOCH = '1760000000';
const ONE_SET = ['results-html', 'analyze-html', 'analyze-mail', 'analyze-macro-csv', 'analyze-splitsbrowser'];

function filesIn(folder) {
  return fs.readdirSync(folder, {withFileTypes: true}).flatMap((entry) => {
    const name = path.join(folder, entry.name);
    return entry.isDirectory() ? filesIn(name) : [name];
  });
}

async function loadEngine(file) {
  const create = createRequire(import.meta.url)(path.resolve(file));
  const module = await create({
    wasmBinary: fs.readFileSync(file.replace(/\.js$/, '.wasm')),
    preRun: [(made) => { made.ENV.SOURCE_DATE_EPOCH = EPOCH; }],
  });
  return new Engine(module, 'en');
}

function firstClass(event) {
  const name = /"classes":\[.*?"name":"([^"]*)"/s.exec(event.text('info-json'))?.[1];
  return name === undefined ? {} : {class: name};
}

// What the engine makes of a file, by the names that export_all gives to its outputs.
function outputsOf(engine, number, file, outputs) {
  const event = engine.newEvent();
  const keep = (form, make) => {
    try {
      make().forEach(({bytes}, index) => outputs.set(`${number}-${form}-${index}`, Buffer.from(bytes)));
    } catch (error) {
      if (!(error instanceof EngineError)) throw error;
      outputs.set(`${number}-${form}-error`, Buffer.from(error.message));
    }
  };
  keep('open', () => {
    event.open(file, fs.readFileSync(file));
    engine.forms.forEach((form) => keep(form, () => event.export(form, ONE_SET.includes(form) ? firstClass(event) : {})));
    return [];
  });
  event.free();
}

// The library in the page leaves the script and style of reports to the page, which has them.
function withGaps(bytes) {
  return Buffer.from(bytes.toString()
    .replace(/style-src 'sha256-[^']*'/, "style-src '{style_hash}'").replace(/script-src 'sha256-[^']*'/, "script-src '{script_hash}'")
    .replace(/<style>[^]*?<\/style>/, '<style>{style}</style>').replace(/<script type="module">[^]*?<\/script>/, '<script type="module">{script}</script>'));
}

function nativeOutput(name) {
  const file = path.join(folder, name);
  if (!fs.existsSync(file)) return null;
  return /-(report|site)-0$/.test(name) ? withGaps(fs.readFileSync(file)) : fs.readFileSync(file);
}

function difference(native, web) {
  if (!native || !web) return `only ${native ? 'native' : 'web'}`;
  const at = native.findIndex((byte, index) => byte !== web[index]);
  const place = at < 0 ? native.length : at;
  const part = (bytes) => JSON.stringify(bytes.subarray(Math.max(0, place - 40), place + 40).toString());
  return `differ at byte ${place} of ${native.length} and ${web.length}: native ${part(native)}, web ${part(web)}`;
}

const [engineFile, exportAll, ...folders] = process.argv.slice(2);
const files = folders.flatMap(filesIn).filter((file) => fs.statSync(file).size > 0).sort();
const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'keltrun2-equal-'));
let faults = 0;
try {
  execFileSync(exportAll, [folder, ...files], {env: {...process.env, SOURCE_DATE_EPOCH: EPOCH}});
  const engine = await loadEngine(engineFile);
  const web = new Map();
  files.forEach((file, number) => outputsOf(engine, number, file, web));
  const names = new Set([...fs.readdirSync(folder), ...web.keys()]);
  for (const name of [...names].sort()) {
    const native = nativeOutput(name);
    if (native && web.get(name) && native.equals(web.get(name))) continue;
    const [number, ...form] = name.split('-');
    // The browser's library reads no archives, and says so.
    if (files[number].endsWith('.lzh') && form[0] !== 'open') continue;
    if (files[number].endsWith('.lzh') && /reads no archives/.test(web.get(name))) continue;
    faults += 1;
    console.error(`${files[number]} ${form.join('-')}: ${difference(native, web.get(name))}`);
  }
  console.log(`${path.basename(fileURLToPath(import.meta.url))}: ${files.length} files, ${names.size} outputs, ${faults} differ`);
} finally {
  fs.rmSync(folder, {recursive: true});
}
process.exit(faults > 0 || files.length === 0 ? 1 : 0);
