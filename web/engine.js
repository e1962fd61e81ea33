// The C interface of the library (keltrun2/c/keltrun2.h) as objects of JavaScript, over the module that
// the compiler made.

// An error of the library; its message is for the reader.
export class EngineError extends Error {}

// The whole library, in one language.
export class Engine {
  constructor(module, language) {
    this.module = module;
    const name = this.toText(language);
    module._keltrun2_set_language(name);
    module._free(name);
  }

  get version() {
    return this.module.UTF8ToString(this.module._keltrun2_version());
  }

  newEvent() {
    return new EngineEvent(this);
  }

  // The names that the library gives for 0, 1, 2 ... until it gives none.
  names(name) {
    const names = [];
    for (let at; (at = this.module[name](names.length)); ) names.push(this.module.UTF8ToString(at));
    return names;
  }

  get forms() {
    return this.names('_keltrun2_forms');
  }

  get inputFormats() {
    return this.names('_keltrun2_input_formats');
  }

  // A copy in the memory of the library, which the caller frees.
  toText(text) {
    const size = this.module.lengthBytesUTF8(text) + 1;
    const at = this.module._malloc(size);
    this.module.stringToUTF8(text, at, size);
    return at;
  }

  toBytes(bytes) {
    const at = this.module._malloc(bytes.length || 1);
    this.module.HEAPU8.set(bytes, at);
    return at;
  }
}

class EngineEvent {
  constructor(engine) {
    this.engine = engine;
    this.module = engine.module;
    this.handle = this.module._keltrun2_event_new();
    this.module._keltrun2_web_tell_progress(this.handle);
  }

  free() {
    this.module._keltrun2_event_free(this.handle);
    this.handle = 0;
  }

  check(status) {
    if (status !== 0) throw new EngineError(this.module.UTF8ToString(this.module._keltrun2_last_error(this.handle)));
  }

  // Calls a function with texts and bytes as arguments, which are freed afterwards.
  call(name, ...values) {
    const places = values.map((value) => (typeof value === 'string' ? this.engine.toText(value) : this.engine.toBytes(value)));
    const sizes = values.filter((value) => typeof value !== 'string').map((value) => value.length);
    try {
      this.check(this.module[name](this.handle, ...places, ...sizes));
    } finally {
      places.forEach((place) => this.module._free(place));
    }
  }

  set(option, value) {
    this.call('_keltrun2_set', option, value);
  }

  open(name, bytes) {
    this.call('_keltrun2_open', name, bytes);
  }

  merge(name, bytes) {
    this.call('_keltrun2_merge', name, bytes);
  }

  // The files of a form: [{name, bytes}]. The options hold for this export only.
  export(form, options = {}) {
    const {module} = this;
    Object.entries(options).forEach(([option, value]) => this.set(option, value));
    const place = module._malloc(4);
    const word = this.engine.toText(form);
    try {
      this.check(module._keltrun2_export(this.handle, word, place));
      const output = module.HEAPU32[place >> 2];
      const files = Array.from({length: module._keltrun2_output_count(output)}, (_, index) => {
        const at = module._keltrun2_output_bytes(output, index);
        const bytes = module.HEAPU8.slice(at, at + module._keltrun2_output_size(output, index));
        return {name: module.UTF8ToString(module._keltrun2_output_name(output, index)), bytes};
      });
      module._keltrun2_output_free(output);
      return files;
    } finally {
      module._free(place);
      module._free(word);
      Object.keys(options).forEach((option) => this.set(option, ''));
    }
  }

  // The only file of a form, as text.
  text(form, options) {
    return new TextDecoder().decode(this.export(form, options)[0].bytes);
  }
}
