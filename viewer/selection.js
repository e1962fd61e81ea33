// --- Selected runners: colours, chips above the view, the list beside a chart. ---

// The colour class of a runner, '' for none. The selected have theirs in the order of selection;
// while nobody is selected, the leaders have one.
function colorClass(app, runner) {
  const chosen = selectedRunners(app);
  const place = chosen.length > 0 ? chosen.indexOf(runner) : runner.order < LEADERS ? runner.order : -1;
  return place < 0 ? '' : `c${place % PALETTE_SIZE}`;
}

function selectedRunners(app) {
  return app.state.runners.map((serial) => app.set.bySerial.get(serial)).filter(Boolean);
}

function referenceRunner(app) {
  return app.set.bySerial.get(app.state.ref) ?? null;
}

function toggled(app, runner) {
  const {runners} = app.state;
  if (runners.includes(runner.serial)) return runners.filter((serial) => serial !== runner.serial);
  return [...runners, runner.serial];
}

// The runners with every word of the search, in result order.
function matchingRunners(app) {
  const words = folded(app.state.search).split(/\s+/);
  return app.set.runners.filter((runner) => words.every((word) => runner.searchText.includes(word)));
}

function compareButton(app, runner) {
  const label = text('compare', runner.name);
  const control = button({class: 'compare', title: label, 'aria-label': label,
    'aria-pressed': String(app.state.ref === runner.serial)}, '⇄');
  control.addEventListener('click', () =>
    app.change({ref: app.state.ref === runner.serial ? 0 : runner.serial}));
  return control;
}

function chip(app, runner) {
  const label = text('remove', runner.name);
  const remove = button({title: label, 'aria-label': label}, '×');
  remove.addEventListener('click', () => app.change({runners: toggled(app, runner)}));
  return el('li', {class: colorClass(app, runner)}, el('i', {class: 'swatch'}), runner.name,
      compareButton(app, runner), remove);
}

function renderChips(app) {
  const chosen = selectedRunners(app);
  byId('chips').replaceChildren(...chosen.map((runner) => chip(app, runner)));
  if (chosen.length === 0) return;
  const clear = button({}, text('clear'));
  clear.addEventListener('click', () => app.change({runners: []}));
  byId('chips').append(el('li', {class: 'clear'}, clear));
}

function listItem(app, runner) {
  const pick = button({class: 'pick'}, el('i', {class: 'swatch'}), el('b', {}, runner.place),
      el('span', {}, runner.name), el('small', {}, runner.result));
  pick.addEventListener('click', () => app.change({runners: toggled(app, runner)}));
  return el('li', {'data-serial': runner.serial}, pick, compareButton(app, runner));
}

function renderRunnerList(app) {
  const items = matchingRunners(app).map((runner) => listItem(app, runner));
  byId('runner-list').replaceChildren(...(items.length ? items : [el('li', {}, text('noRunners'))]));
  markListedRunners(app);
}

// Shows the selection in the list as it stands, which keeps the keyboard's place in it.
function markListedRunners(app) {
  for (const item of byId('runner-list').querySelectorAll('[data-serial]')) {
    const runner = app.set.bySerial.get(Number(item.dataset.serial));
    item.className = colorClass(app, runner);
    item.querySelector('.pick').ariaPressed = String(app.state.runners.includes(runner.serial));
    item.querySelector('.compare').ariaPressed = String(app.state.ref === runner.serial);
  }
}
