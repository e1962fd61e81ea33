// --- The page: what is shown follows the state, the state follows the address. ---

const app = {
  sets: findSets(),
  state: readAddress(location.hash),
  set: null,  // the data set that is shown

  // Takes over what a control changes; a change of what the page is about can be undone by "back".
  change(changes) {
    const before = this.state;
    this.state = {...before, ...changes};
    const turns = ['kind', 'name', 'view', 'chart'].some((key) => this.state[key] !== before[key]);
    history[turns ? 'pushState' : 'replaceState'](null, '', writeAddress(this.state));
    return show(before);
  },
};

function notify(message) {
  byId('notice').textContent = message;
  byId('notice').hidden = !message;
}

// The entry that the state names; the first one when there is no such set.
function chosenEntry() {
  const {kind, name} = app.state;
  const found = app.sets.find((entry) => entry.kind === kind && entry.name === name);
  notify(kind && !found ? text('unknownSet', name) : '');
  return found ?? app.sets[0];
}

// --- Controls ---

function fillSetChoice() {
  const groups = KINDS.map((kind) => {
    const entries = app.sets.map((entry, index) => ({...entry, index})).filter((entry) => entry.kind === kind);
    const options = entries.map(({name, count, index}) =>
      el('option', {value: index}, `${name} (${text('people', count)})`));
    return options.length > 0 ? [el('optgroup', {label: text(kind)}, ...options)] : [];
  });
  byId('set').replaceChildren(...groups.flat());
}

function shownText(value) {
  if (value === 'all') return text('shownAll');
  return value === 'selected' ? text('shownSelected') : text('shownTop', value);
}

function fillControls() {
  const {state, set} = app;
  byId('set').value = app.sets.findIndex(({kind, name}) => kind === state.kind && name === state.name);
  setOptions(byId('chart-kind'), CHARTS.map((chart) => [chart, text(chart)]), state.chart);
  setOptions(byId('shown'), SHOWN.map((value) => [value, shownText(value)]), state.shown);
  setOptions(byId('second-line'), SECOND_LINES.map((line) =>
    [line, text(`second${line[0].toUpperCase()}${line.slice(1)}`)]), state.second);
  setOptions(byId('reference'), [[0, text('upperLaps')], ...set.runners.map((runner) =>
    [runner.serial, `${runner.place} ${runner.name}`.trim()])], state.ref);
  if (document.activeElement !== byId('search')) byId('search').value = state.search;
}

function markControls() {
  document.body.dataset.view = app.state.view;
  for (const tab of document.querySelectorAll('[data-view]')) {
    if (tab !== document.body) tab.ariaPressed = String(tab.dataset.view === app.state.view);
  }
  byId('reference').value = app.state.ref;
  byId('chart-kind').value = app.state.chart;
}

function fillHeading() {
  const {event, info, runners, general} = app.set;
  byId('event').textContent = event.name || info.name;
  byId('about').textContent = [event.date, event.terrain].filter(Boolean).join(' · ');
  byId('language').textContent = text('otherLanguage');
  byId('language').lang = language === 'ja' ? 'en' : 'ja';
  byId('set-name').textContent = info.name;
  byId('set-about').textContent = [
    info.classInfo, text('controls', info.controls), text('people', runners.length),
    general.upperLapTotal > 0 ? text('referenceTime', timeText(general.upperLapTotal)) : '',
  ].filter(Boolean).join(' · ');
  document.title = [info.name, event.name].filter(Boolean).join(' - ');
}

// --- Showing ---

// Keeps of the selection what the set holds.
function keepKnownRunners() {
  const {bySerial} = app.set;
  app.state.runners = app.state.runners.filter((serial) => bySerial.has(serial));
  if (!bySerial.has(app.state.ref)) app.state.ref = 0;
}

function showAll() {
  translatePage();
  fillSetChoice();
  fillControls();
  fillHeading();
  renderLegend(app);
}

// Shows the state. `before` is the state that is shown now, null for none.
async function show(before = null) {
  const entry = chosenEntry();
  let set;
  try {
    set = await loadSet(entry);
  } catch {
    return notify(text('damaged'));
  }
  if (entry !== chosenEntry()) return;  // another one was chosen in the meantime
  Object.assign(app.state, {kind: entry.kind, name: entry.name});
  const anew = !before || set !== app.set;
  app.set = set;
  keepKnownRunners();
  if (anew) showAll();
  markControls();
  renderChips(app);
  const differs = (...keys) => anew || keys.some((key) => before[key] !== app.state[key]);
  if (app.state.view === 'table') {
    if (differs('view', 'sort', 'second', 'ref', 'search')) renderTable(app);
    else markTableRows(app);
  } else {
    renderChart(app);
    if (differs('view', 'search')) renderRunnerList(app);
    else markListedRunners(app);
  }
  document.body.dataset.ready = `${app.state.kind}=${app.state.name}`;
}

function listen() {
  byId('set').addEventListener('change', ({target}) => {
    const {kind, name} = app.sets[target.value];
    app.change({kind, name});
  });
  for (const tab of document.querySelectorAll('.tabs [data-view]')) {
    tab.addEventListener('click', () => app.change({view: tab.dataset.view}));
  }
  const choices = {'chart-kind': 'chart', shown: 'shown', 'second-line': 'second'};
  for (const [id, key] of Object.entries(choices)) {
    byId(id).addEventListener('change', ({target}) => app.change({[key]: target.value}));
  }
  byId('reference').addEventListener('change', ({target}) => app.change({ref: Number(target.value)}));
  byId('search').addEventListener('input', ({target}) => app.change({search: target.value.trim()}));
  byId('language').addEventListener('click', () => {
    language = language === 'ja' ? 'en' : 'ja';
    history.replaceState(null, '', writeAddress(app.state));
    show();
  });
  window.addEventListener('hashchange', followAddress);
  byId('table-view').addEventListener('scroll', () => appendRowsInSight(app), {passive: true});
  window.addEventListener('beforeprint', () => appendAllRows(app));
  watchWidth();
}

// A chart is drawn anew when there is another width for it.
function watchWidth() {
  const watcher = new ResizeObserver(() => {
    const isShown = app.set && app.state.view === 'chart';
    if (isShown && byId('canvas').clientWidth !== scene?.width) renderChart(app);
  });
  watcher.observe(byId('canvas'));
}

// The page's own changes of the address raise no event; this is "back" or a link.
function followAddress() {
  if (location.hash === writeAddress(app.state)) return;
  app.state = readAddress(location.hash);
  language = app.state.language;
  show();
}

function start() {
  language = app.state.language;
  translatePage();
  if (app.sets.length === 0) return notify(text('noSets'));
  if (!window.DecompressionStream) return notify(text('oldBrowser'));
  listen();
  listenToChart(app);
  show();
}

start();
