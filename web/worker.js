// The library in a worker, so that the page stays alive while it works. It answers requests
// {id, call, values} with {id, result} or {id, error}, and tells {percent} of a load in between. After
// createEngine, which the compiler made, and engine.js.
import {Engine, EngineError} from './engine.js';

let engine = null;
const events = new Map();

const CALLS = {
  // The packed module, and the language of what is exported.
  async start(packed, language) {
    const unpacked = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
    const wasmBinary = await new Response(unpacked).arrayBuffer();
    const module = await createEngine({wasmBinary, onProgress: (percent) => postMessage({percent})});
    engine = new Engine(module, language);
    return engine.version;
  },

  open(key, name, bytes) {
    const event = engine.newEvent();
    try {
      event.open(name, bytes);
    } catch (error) {
      event.free();
      throw error;
    }
    events.set(key, event);
  },

  merge(key, name, bytes) {
    const event = events.get(key);
    event.set('prefer', 'new');  // it is the later file
    event.merge(name, bytes);
  },

  export(key, form) {
    return events.get(key).export(form);
  },

  close(key) {
    events.get(key)?.free();
    events.delete(key);
  },
};

self.onmessage = async ({data: {id, call, values}}) => {
  try {
    const result = await CALLS[call](...values);
    const moved = Array.isArray(result) ? result.map(({bytes}) => bytes.buffer) : [];
    postMessage({id, result}, moved);
  } catch (error) {
    const isMemory = !(error instanceof EngineError) && /memory/i.test(String(error));
    postMessage({id, error: error instanceof EngineError || !isMemory ? String(error.message ?? error) : 'There is not enough memory for this file.'});
  }
};
