// Long lists. A list comes in blocks of rows, each a body of its table. Only blocks near the window
// are in the page; an empty body before and one after them keep the place of the others. So a list
// of thousands costs no more than what is seen of it.
import {h} from './dom.js';
import {sum} from './figures.js';

const ALL_AT_ONCE = 1000;   // cells; fewer are not worth the trouble
const CELLS_IN_BLOCK = 24;
const FIRST_SHOWN = 16;     // blocks, before it is known how much is seen
const MARGIN = 250;         // pixels beyond the window, to where the reader scrolls
const BEHIND = 100;         // the same on the side that the reader comes from
const FRAME_TIME = 20;      // milliseconds, with layout and painting; single frames take twice as long as others
const LARGEST_PACE = 6;     // blocks in a frame

// Heights of blocks that have been seen, by address and width, so that going back finds its place.
const heightsOf = new Map();
let made = [];     // long lists of the view that is being made
let watched = [];  // those in the page
let pace = 2;      // blocks in a frame, as this device can

// The table bodies of items. `rowHeight` is a guess; `mine` is the row to go to; the more `cells` a
// row has, the fewer rows are in a block.
export function rowBodies(items, makeRow, {rowHeight, mine = -1, cells = 8}) {
  if (items.length * cells <= ALL_AT_ONCE) return [h('tbody', items.map(makeRow))];
  const list = new LongList(items, makeRow, Math.max(1, Math.round(CELLS_IN_BLOCK / cells)), rowHeight, mine);
  made.push(list);
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

// An empty body, and the height of what it stands for.
function makeGap() {
  return h('tbody', h('tr', {'aria-hidden': 'true'}, h('td.gap')));
}

function keepPlace(gap, height) {
  const row = gap.rows[0];
  row.hidden = height === 0;
  row.cells[0].style.height = `${height}px`;
}

class LongList {
  constructor(items, makeRow, size, rowHeight, mine) {
    Object.assign(this, {items, makeRow, size, mine, shown: [], above: [], down: true, top: 0});
    const count = Math.ceil(items.length / size);
    this.heights = keptHeights(Array.from({length: count}, (_, i) => rowHeight * Math.min(size, items.length - i * size)));
    [this.before, this.after] = [makeGap(), makeGap()];
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
    keepPlace(this.before, sum(this.heights.slice(0, this.first)));
    keepPlace(this.after, sum(this.heights.slice(this.last + 1)));
  }

  // Measures what is shown and finds what should be. Called at the beginning of a frame, when the page is
  // laid out, so that measuring costs nothing.
  look() {
    this.shown.forEach((body, i) => this.heights[this.first + i] = body.getBoundingClientRect().height);
    const frame = this.root?.getBoundingClientRect() ?? {top: 0, bottom: innerHeight};
    const top = this.before.getBoundingClientRect().top;
    if (top !== this.top) this.down = top < this.top;
    this.top = top;
    const [above, below] = this.down ? [BEHIND, MARGIN] : [MARGIN, BEHIND];
    this.wanted = blocksWithin(this.heights, frame.top - above - top, frame.bottom + below - top);
  }

  // Adds up to `most` blocks that are wanted and removes as many that are not; returns how many changed.
  work(most) {
    let steps = 0;
    while (steps < most && this.step()) ++steps;
    if (steps > 0) this.keepPlaces();
    this.keepView();
    return steps;
  }

  // One block comes and one goes; false when there is nothing to do.
  step() {
    const added = this.add();
    return this.drop() || added;
  }

  add() {
    const [first, last] = this.wanted;
    if (last < this.first || first > this.last) this.startAgain(first);
    else if (this.last < last) this.addAfter();
    else if (this.first > first) this.addBefore();
    else return false;
    return true;
  }

  // What has the focus stays.
  drop() {
    const [first, last] = this.wanted;
    const gone = this.first < first - 1 ? this.shown[0] : this.last > last + 1 ? this.shown.at(-1) : null;
    if (gone === null || gone.contains(document.activeElement)) return false;
    gone.remove();
    if (gone === this.shown[0]) this.shown.shift(), ++this.first;
    else this.shown.pop(), --this.last;
    return true;
  }

  startAgain(number) {
    this.above = [];
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

  addBefore() {
    const body = this.makeBlock(--this.first);
    this.shown.unshift(body);
    this.before.after(body);
    this.above.push(body);
  }

  // What is seen must not move when the rows above it are not as high as they were thought to be. All
  // that came in a frame are measured together, because that lays out the page.
  keepView() {
    let more = 0;
    for (const body of this.above.splice(0)) {
      const number = this.first + this.shown.indexOf(body);
      const {height} = body.getBoundingClientRect();
      more += height - this.heights[number];
      this.heights[number] = height;
    }
    if (more !== 0) (this.root ?? document.scrollingElement).scrollTop += more;
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
export function watchRows() {
  watched = made.filter((list) => list.before.isConnected);
  made = [];
  for (const list of watched) {
    const table = list.before.closest('table');
    table.setAttribute('aria-rowcount', list.items.length + 1);
    list.root = table.closest('.scroll');
    list.root?.addEventListener('scroll', lookSoon, {passive: true});
  }
  lookSoon();
}

let looking = false;

// Once in a frame, however often the page is scrolled in it.
export function lookSoon() {
  if (looking || watched.length === 0) return;
  looking = true;
  requestAnimationFrame(workInFrame);
}

// A few blocks in a frame, so that the page always answers.
function workInFrame() {
  const began = performance.now();
  looking = false;
  watched = watched.filter((list) => list.before.isConnected);  // another view may have taken their place
  for (const list of watched) list.look();
  const steps = sum(watched.map((list) => list.work(pace)));
  if (steps === 0) return;
  lookSoon();
  setTimeout(() => keepPace(performance.now() - began));  // after the frame has been painted
}

// Fewer when the last frame took long, more when it did not.
function keepPace(frameTime) {
  if (frameTime < FRAME_TIME) pace = Math.min(LARGEST_PACE, pace + 1);
  else if (frameTime > 1.5 * FRAME_TIME) pace = Math.max(1, pace - 1);
}

export function showMyRow() {
  for (const list of watched) if (list.mine >= 0) list.showMine();
}
