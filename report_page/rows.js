// Long lists. A list comes in blocks of rows, each a body of its table. Only blocks near the window
// are in the page; an empty body before and one after them keep the place of the others. So a list
// of thousands costs no more than what is seen of it.
import {h} from './dom.js';
import {sum} from './figures.js';

const ALL_AT_ONCE = 1000;   // cells; fewer are not worth the trouble
const CELLS_IN_BLOCK = 40;
const FIRST_SHOWN = 8;      // blocks, before it is known how much is seen
const MARGIN = 700;         // pixels above and below the window

// Heights of blocks that have been seen, by address and width, so that going back finds its place.
const heightsOf = new Map();
const lists = new WeakMap();  // by their first body
let watched = [];

// The table bodies of items. `rowHeight` is a guess; `mine` is the row to go to; the more `cells` a
// row has, the fewer rows are in a block.
export function rowBodies(items, makeRow, {rowHeight, mine = -1, cells = 8}) {
  if (items.length * cells <= ALL_AT_ONCE) return [h('tbody', items.map(makeRow))];
  const list = new LongList(items, makeRow, Math.max(2, Math.round(CELLS_IN_BLOCK / cells)), rowHeight, mine);
  lists.set(list.before, list);
  return list.bodies();
}

// Which blocks are within a stretch of the list: [first, last], last included. At least one.
export function blocksWithin(heights, from, to) {
  let top = 0;
  let first = 0;
  while (first < heights.length - 1 && top + heights[first] <= from) top += heights[first++];
  let last = first;
  top += heights[last];
  while (last < heights.length - 1 && top < to) top += heights[++last];
  return [first, last];
}

function keptHeights(guesses) {
  const key = `${location.hash} ${innerWidth}`;
  const kept = heightsOf.get(key);
  if (kept?.length === guesses.length) return kept;
  heightsOf.set(key, guesses);
  return guesses;
}

class LongList {
  constructor(items, makeRow, size, rowHeight, mine) {
    Object.assign(this, {items, makeRow, size, mine, working: false, shown: []});
    const count = Math.ceil(items.length / size);
    this.heights = keptHeights(Array.from({length: count}, (_, i) => rowHeight * Math.min(size, items.length - i * size)));
    this.before = h('tbody');
    this.after = h('tbody');
    [this.first, this.last] = [0, Math.min(FIRST_SHOWN, count) - 1];
    for (let i = this.first; i <= this.last; ++i) this.shown.push(this.makeBlock(i));
    this.keepPlaces();
  }

  bodies() {
    return [this.before, ...this.shown, this.after];
  }

  makeBlock(number) {
    const first = number * this.size;
    return h('tbody', this.items.slice(first, first + this.size).map((item, i) => {
      const row = this.makeRow(item);
      row.setAttribute('aria-rowindex', first + i + 2);  // after the head
      return row;
    }));
  }

  // The empty bodies are as high as what they stand for.
  keepPlaces() {
    const empty = (body, heights) => {
      const height = sum(heights);
      body.replaceChildren(...height > 0 ? [h('tr', {'aria-hidden': 'true'}, h('td.gap', {style: {height: `${height}px`}}))] : []);
    };
    empty(this.before, this.heights.slice(0, this.first));
    empty(this.after, this.heights.slice(this.last + 1));
  }

  // Called when the page has been laid out, so that measuring costs nothing.
  look() {
    if (this.working || !this.before.isConnected) return;
    this.shown.forEach((body, i) => this.heights[this.first + i] = body.getBoundingClientRect().height);
    const frame = this.root?.getBoundingClientRect() ?? {top: 0, bottom: innerHeight};
    const top = this.before.getBoundingClientRect().top;
    this.wanted = blocksWithin(this.heights, frame.top - MARGIN - top, frame.bottom + MARGIN - top);
    if (!this.step()) return;
    this.working = true;
    setTimeout(() => this.workOff());
  }

  // One block in a task, so that the page always answers.
  workOff() {
    if (this.before.isConnected && this.step()) {
      setTimeout(() => this.workOff());
      return;
    }
    this.working = false;
    requestAnimationFrame(() => this.look());
  }

  // Adds or removes one block; false when there is nothing to do.
  step() {
    const [first, last] = this.wanted;
    if (last < this.first || first > this.last) this.startAgain(first);
    else if (this.last < last) this.addAfter();
    else if (this.first > first) this.addBefore();
    else if (this.first < first - 1 && this.drop(this.shown[0])) this.shown.shift(), ++this.first;
    else if (this.last > last + 1 && this.drop(this.shown.at(-1))) this.shown.pop(), --this.last;
    else return false;
    this.keepPlaces();
    return true;
  }

  startAgain(number) {
    for (const body of this.shown) body.remove();
    [this.first, this.last] = [number, number];
    this.shown = [this.makeBlock(number)];
    this.after.before(this.shown[0]);
  }

  addAfter() {
    const body = this.makeBlock(++this.last);
    this.shown.push(body);
    this.after.before(body);
  }

  // What is seen must not move when the rows above it are not as high as they were thought to be.
  addBefore() {
    const body = this.makeBlock(--this.first);
    this.shown.unshift(body);
    this.before.after(body);
    this.keepPlaces();
    const height = body.getBoundingClientRect().height;
    const more = height - this.heights[this.first];
    this.heights[this.first] = height;
    if (more !== 0) (this.root ?? document.scrollingElement).scrollTop += more;
  }

  // What has the focus stays.
  drop(body) {
    if (body.contains(document.activeElement)) return false;
    body.remove();
    return true;
  }

  // Scrolls to the row that is mine, which may not be there yet.
  showMine() {
    const block = Math.floor(this.mine / this.size);
    if (block < this.first || block > this.last) {
      this.wanted = [block, block];
      this.startAgain(block);
      this.keepPlaces();
    }
  }
}

// Watches the long lists of a view that has been put into the page.
export function watchRows(root) {
  watched = [...root.querySelectorAll('table')].flatMap((table) => [...table.tBodies].slice(0, 1).map((body) => lists.get(body)).filter(Boolean)
    .map((list) => {
      table.setAttribute('aria-rowcount', list.items.length + 1);
      list.root = table.closest('.scroll');
      list.root?.addEventListener('scroll', lookSoon, {passive: true});
      return list;
    }));
  if (watched.length > 0) lookSoon();
}

let looking = false;

// Once in a frame, however often the page is scrolled in it.
export function lookSoon() {
  if (looking || watched.length === 0) return;
  looking = true;
  requestAnimationFrame(() => {
    looking = false;
    for (const list of watched) list.look();
  });
}

export function showMyRow() {
  for (const list of watched) if (list.mine >= 0) list.showMine();
}
