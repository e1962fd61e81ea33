// --- The split table. ---

// Rows come by the screenful: the first at once, some more while the browser is idle, the others when
// they are scrolled to. A table of thousands of rows would keep the browser busy for seconds.
const ROWS_AT_ONCE = 40;
const ROWS_WHEN_IDLE = 200;
const PIXELS_AHEAD = 2000;

// Figures of a runner beside the legs. `value` is what the column is sorted by.
const COLUMNS = [
  {key: 'rank', value: (runner) => runner.order, show: (runner) => runner.place},
  {key: 'name', value: (runner) => folded(runner.name)},
  {key: 'result', value: (runner) => runner.order, show: (runner) => runner.result},
  {key: 'cruise', value: (runner) => runner.cruiseSpeed || null, show: percentText},
  {key: 'rate', value: (runner) => runner.missRate || null, show: percentText},
  {key: 'lost', value: (runner) => runner.missTimeTotal, show: timeText},
  {key: 'clean', value: (runner) => runner.totalTimeWithoutMiss, show: timeText},
];

// What the second line of a leg's cell may hold: its value, text, and rank where it has one.
const SECOND = {
  split: {value: (runner, leg) => runner.split[leg], show: markedText,
          rank: (runner, leg) => runner.splitRank[leg]},
  loss: {value: (runner, leg) => runner.missTime[leg], show: signedTimeText},
  relative: {value: (runner, leg) => runner.lapRelative[leg], show: percentText},
  gap: {value: (runner, leg, base) => difference(runner.splits[leg + 1], base.splits[leg + 1]),
        show: signedTimeText},
  legGap: {value: (runner, leg, base) => difference(runner.modifiedLap[leg] || null, base.laps[leg]),
           show: signedTimeText},
};

function difference(value, from) {
  return value == null || from == null ? null : value - from;
}

// --- Sorting: "name", "-name", "lap5" (legs from 1), "second5". ---

function sortValue(app, sort) {
  const [, column, number] = /^-?(\D*)(\d*)$/.exec(sort) ?? [];
  const leg = Number(number) - 1;
  const base = baseline(app.set, referenceRunner(app));
  if (column === 'lap' && leg >= 0 && leg < app.set.legs) return (runner) => runner.lap[leg];
  if (column === 'second' && leg >= 0 && leg < app.set.legs) {
    return (runner) => SECOND[app.state.second].value(runner, leg, base);
  }
  return COLUMNS.find(({key}) => key === column)?.value;
}

// Markers and missing figures come last in both directions; equal ones stay in result order.
function sortedRunners(app) {
  const runners = matchingRunners(app);
  const value = sortValue(app, app.state.sort);
  if (!value) return runners;
  const direction = app.state.sort.startsWith('-') ? -1 : 1;
  const keyed = runners.map((runner) => ({runner, key: value(runner)}));
  const isMark = (key) => /^-?(lap|second)/.test(app.state.sort) && Object.hasOwn(MARKS, key);
  const isKey = (key) => typeof key === 'number' || (typeof key === 'string' && !isMark(key));
  keyed.sort((a, b) => {
    if (!isKey(a.key) || !isKey(b.key)) return isKey(b.key) - isKey(a.key);
    return direction * (a.key < b.key ? -1 : a.key > b.key ? 1 : 0);
  });
  return keyed.map(({runner}) => runner);
}

// --- Head ---

function sortButton(app, sort, label) {
  const control = button({'data-sort': sort}, label);
  control.addEventListener('click', () => app.change({sort: app.state.sort === sort ? `-${sort}` : sort}));
  return control;
}

function legHead(app, leg) {
  const code = app.set.info.codes?.[leg];
  const second = `(${code ?? app.set.controlNames[leg + 1]})`;
  return el('th', {scope: 'col', class: 'leg'}, sortButton(app, `lap${leg + 1}`, app.set.labels[leg]),
      sortButton(app, `second${leg + 1}`, second));
}

// The row of the laps that runners are compared with.
function referenceRow(app) {
  const runner = referenceRunner(app);
  const base = baseline(app.set, runner);
  const total = base.splits[app.set.legs];
  const cells = COLUMNS.map(({key}) => {
    if (key === 'name') return el('th', {scope: 'row', class: key}, runner?.name ?? text('upperLaps'));
    if (key === 'result') return el('td', {class: key}, total ? timeText(total) : '');
    return el('td', {class: key}, key === 'rank' ? '⇄' : '');
  });
  const shown = (time) => (time ? timeText(time) : NO_DATA);
  const legs = base.laps.map((lap, leg) => el('td', {class: 'leg'}, el('b', {}, shown(lap)), rankMark(0),
      el('br'), shown(base.splits[leg + 1]), rankMark(0)));
  return el('tr', {class: 'reference-laps'}, ...cells, ...legs);
}

function tableHead(app) {
  const figures = COLUMNS.map(({key}) =>
    el('th', {scope: 'col', class: key}, sortButton(app, key, text(key))));
  const legs = app.set.labels.map((_, leg) => legHead(app, leg));
  return el('thead', {}, el('tr', {}, ...figures, ...legs), referenceRow(app));
}

function markSorted(app) {
  const {sort} = app.state;
  for (const control of byId('splits').querySelectorAll('[data-sort]')) {
    const direction = sort === control.dataset.sort ? 'up' : sort === `-${control.dataset.sort}` ? 'down' : '';
    control.className = direction;
    const head = control.parentElement;
    if (direction) head.ariaSort = direction === 'up' ? 'ascending' : 'descending';
    else if (!head.querySelector('.up, .down')) head.ariaSort = null;
  }
}

// --- Rows ---

function rankMark(rank) {
  return rank > 0 ? ` ${String(rank).padStart(2, '\u2007')}` : ' \u2007\u2007';
}

function appendLine(cell, tag, shown, rank) {
  const colored = rank >= 1 && rank <= 3;
  cell.append(el(tag, colored ? {class: `r${rank}`} : null, shown), rankMark(rank));
}

function legCell(app, runner, leg, base) {
  const step = lossStep(app.set, runner.missTime[leg]);
  const cell = el('td', {class: step > 0 ? `leg l${step}` : 'leg'});
  appendLine(cell, 'b', markedText(runner.lap[leg]), runner.lapRank[leg]);
  cell.append(el('br'));
  const second = SECOND[app.state.second];
  const value = second.value(runner, leg, base);
  const shown = isTime(value) ? second.show(value) : markedText(value);
  if (second.rank) appendLine(cell, 'span', shown, second.rank(runner, leg));
  else cell.append(shown);
  return cell;
}

function nameCell(app, runner) {
  const pick = button({class: 'pick'}, runner.name || NO_DATA);
  pick.addEventListener('click', () => app.change({runners: toggled(app, runner)}));
  const about = app.set.info.mix ? [runner.class, runner.club].filter(Boolean).join(' · ') : runner.club;
  return el('th', {scope: 'row', class: 'name'}, pick, el('small', {}, about));
}

function figureCell(runner, {key, value, show}) {
  if (key === 'rank' || key === 'result') return el('td', {class: key}, show(runner));
  const figure = value(runner);
  return el('td', {class: key}, figure == null ? NO_DATA : show(figure));
}

function tableRow(app, runner, base) {
  const row = el('tr', {'data-serial': runner.serial});
  for (const column of COLUMNS) {
    row.append(column.key === 'name' ? nameCell(app, runner) : figureCell(runner, column));
  }
  for (let leg = 0; leg < app.set.legs; ++leg) row.append(legCell(app, runner, leg, base));
  return row;
}

function markRow(app, row) {
  const runner = app.set.bySerial.get(Number(row.dataset.serial));
  const chosen = app.state.runners.includes(runner.serial);
  row.className = [chosen ? `chosen ${colorClass(app, runner)}` : '',
    app.state.ref === runner.serial ? 'is-reference' : ''].join(' ').trim();
  row.querySelector('.pick').ariaPressed = String(chosen);
}

const whenIdle = window.requestIdleCallback ?? ((work) => setTimeout(work, 1));

// Rows that are still to come; a new table forgets those of the table before.
let waitingRows = null;

function appendRows(app, most) {
  const {runners, base} = waitingRows;
  const rows = runners.splice(0, most).map((runner) => tableRow(app, runner, base));
  for (const row of rows) markRow(app, row);
  byId('splits').append(el('tbody', {}, ...rows));  // of its own, so that the others stay laid out
}

function appendRowsWhenIdle(app, waiting) {
  whenIdle(() => {
    const shown = waiting.count - waiting.runners.length;
    if (waiting !== waitingRows || waiting.runners.length === 0 || shown >= ROWS_WHEN_IDLE) return;
    appendRows(app, ROWS_AT_ONCE);
    appendRowsWhenIdle(app, waiting);
  });
}

function appendRowsInSight(app) {
  const {scrollTop, clientHeight, scrollHeight} = byId('table-view');
  if (!waitingRows?.runners.length || scrollTop + clientHeight + PIXELS_AHEAD < scrollHeight) return;
  appendRows(app, ROWS_AT_ONCE);
}

// What is printed is the whole table.
function appendAllRows(app) {
  if (waitingRows?.runners.length) appendRows(app, Infinity);
}

function renderTable(app) {
  const runners = sortedRunners(app);
  const focused = document.activeElement.dataset.sort;
  waitingRows = {runners, count: runners.length, base: baseline(app.set, referenceRunner(app))};
  byId('splits').replaceChildren(tableColumns(app), tableHead(app), ...(runners.length ? [] : [emptyBody(app)]));
  byId('splits').style.setProperty('--legs', app.set.legs);
  markSorted(app);
  appendRows(app, ROWS_AT_ONCE);
  if (focused) byId('splits').querySelector(`[data-sort="${focused}"]`)?.focus();
  appendRowsWhenIdle(app, waitingRows);
}

function emptyBody(app) {
  const cell = el('td', {class: 'empty', colspan: COLUMNS.length + app.set.legs}, text('noRunners'));
  return el('tbody', {}, el('tr', {}, cell));
}

function tableColumns(app) {
  const figures = COLUMNS.map(({key}) => el('col', {class: key}));
  const legs = app.set.labels.map(() => el('col', {class: 'leg'}));
  return el('colgroup', {}, ...figures, ...legs);
}

function markTableRows(app) {
  for (const row of byId('splits').querySelectorAll('tr[data-serial]')) markRow(app, row);
}

// The shades of a loss with what they stand for.
function renderLegend(app) {
  const first = lossOfFirstStep(app.set);
  const ranks = [1, 2, 3].map((rank) => el('b', {class: `r${rank}`}, text('position', rank)));
  const shades = [1, 2, 3, 4, 5].map((step) =>
    el('span', {class: `shade l${step}`}, `≥ ${timeText(first * 2 ** (step - 1))}`));
  byId('legend').replaceChildren(`${text('legend')} `, ...ranks, ...shades);
}
