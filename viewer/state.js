// --- What is shown, as the part of the address behind "#". ---

const KINDS = ['class', 'course', 'segment'];
const LINE_CHARTS = ['normal', 'real', 'relative', 'relative110', 'relative130'];
const MARK_CHARTS = ['loss', 'half', 'map'];
const CHARTS = [...LINE_CHARTS, ...MARK_CHARTS];
const SECOND_LINES = ['split', 'loss', 'relative', 'gap', 'legGap'];
const SHOWN = ['all', '3', '10', '30', 'selected'];

// Runners and the reference are serial numbers, which are the same in all sets; 0 = none.
const START_STATE = {
  kind: '', name: '', view: 'table', chart: 'relative', shown: 'all', second: 'split',
  runners: [], ref: 0, sort: '', search: '',
};

function oneOf(values, value, otherwise) {
  return values.includes(value) ? value : otherwise;
}

function serialNumbers(list) {
  return [...new Set((list ?? '').split(',').map(Number).filter((n) => Number.isInteger(n) && n > 0))];
}

function readAddress(hash) {
  const parts = new URLSearchParams(hash.replace(/^#/, ''));
  const kind = KINDS.find((word) => parts.has(word)) ?? '';
  const chart = oneOf(CHARTS, parts.get('chart'), '');
  return {
    ...START_STATE,
    kind, name: parts.get(kind) ?? '',
    view: oneOf(['table', 'chart'], parts.get('view'), chart ? 'chart' : 'table'),
    chart: chart || START_STATE.chart,
    shown: oneOf(SHOWN, parts.get('show'), START_STATE.shown),
    second: oneOf(SECOND_LINES, parts.get('line'), START_STATE.second),
    runners: serialNumbers(parts.get('runners')),
    ref: serialNumbers(parts.get('ref'))[0] ?? 0,
    sort: parts.get('sort') ?? '',
    search: parts.get('q') ?? '',
    language: oneOf(['ja', 'en'], parts.get('lang'), pageLanguage),
  };
}

// Only what differs from the start is written.
function writeAddress(state) {
  const parts = [[state.kind, state.name]];
  if (state.view === 'chart') parts.push(['chart', state.chart]);
  if (state.shown !== START_STATE.shown) parts.push(['show', state.shown]);
  if (state.second !== START_STATE.second) parts.push(['line', state.second]);
  if (state.runners.length > 0) parts.push(['runners', state.runners.join(',')]);
  if (state.ref) parts.push(['ref', state.ref]);
  if (state.sort) parts.push(['sort', state.sort]);
  if (state.search) parts.push(['q', state.search]);
  if (language !== pageLanguage) parts.push(['lang', language]);
  const encoded = (value) => encodeURIComponent(value).replaceAll('%2C', ',');
  return '#' + parts.map(([key, value]) => `${key}=${encoded(value)}`).join('&');
}
