// The library, as the page sees it: promises of what the worker does.
import {byId} from '../report_page/dom.js';
import {language} from '../report_page/language.js';

// The text of a worker as an address. Only this page's own text is ever passed.
function addressOf(text) {
  const url = URL.createObjectURL(new Blob([text], {type: 'text/javascript'}));
  if (!self.trustedTypes) return url;
  return self.trustedTypes.createPolicy('keltrun', {createScriptURL: (own) => own}).createScriptURL(url);
}

function bytesOf(base64) {
  return Uint8Array.from(atob(base64.trim()), (letter) => letter.charCodeAt(0));
}

export class Library {
  constructor(onPercent) {
    this.waiting = new Map();
    this.last = 0;
    this.worker = new Worker(addressOf(byId('worker-script').textContent));
    this.worker.onmessage = ({data}) => {
      if ('percent' in data) onPercent(data.percent);
      else this.settle(data);
    };
    this.started = this.start();
    this.started.catch(() => {});  // who calls next hears of it
  }

  settle({id, result, error}) {
    const {resolve, reject} = this.waiting.get(id);
    this.waiting.delete(id);
    if (error === undefined) resolve(result);
    else reject(new Error(error));
  }

  request(call, values, moved = []) {
    const id = ++this.last;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, {resolve, reject});
      this.worker.postMessage({id, call, values}, moved);
    });
  }

  start() {
    const packed = bytesOf(byId('engine').textContent);
    byId('engine').remove();
    return this.request('start', [packed, language], [packed.buffer]);
  }

  async call(name, ...values) {
    await this.started;
    const moved = values.filter((value) => value instanceof Uint8Array).map((value) => value.buffer);
    return this.request(name, values, moved);
  }

  // A form as text and as files.
  async text(key, form) {
    const [{bytes}] = await this.call('export', key, form);
    return new TextDecoder().decode(bytes);
  }
}
