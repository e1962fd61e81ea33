// Addresses: what is shown, as the part of the address after "#".
const KINDS = ['class', 'course', 'segment'];
const OLD_LINE_CHARTS = /^(normal|real|relative|relative110|relative130|loss|half|map)$/;

function decoded(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;  // a stray percent sign in an address that somebody typed
  }
}

// The keys and values of an address. Those of the page that came before this one still work.
export function readAddress(hash) {
  const query = Object.create(null);
  for (const part of hash.replace(/^#/, '').split('&')) {
    const at = part.indexOf('=');
    if (at > 0) query[decoded(part.slice(0, at))] = decoded(part.slice(at + 1));
  }
  if (query.view === 'table') query.view = 'splits';
  if (query.view === 'chart' || OLD_LINE_CHARTS.test(query.chart ?? '')) {
    query.view = 'race';
    delete query.chart;
  }
  const runners = query.runners?.split(',') ?? [];
  if (runners.length > 1 && query.compare === undefined) query.compare = query.runners;
  return query;
}

export function address(query) {
  const encoded = (value) => encodeURIComponent(value).replaceAll('%2C', ',').replaceAll('%7E', '~');
  return '#' + Object.entries(query)
    .filter(([key, value]) => value !== undefined && value !== null && (value !== '' || key === 'find' || key === 'compare' || key === 'help'))
    .map(([key, value]) => `${key}=${encoded(value)}`).join('&');
}

// Which view an address shows.
export function viewOf(query) {
  if (query.runner) return 'runner';
  if (query.compare !== undefined) return 'compare';
  if (query.club) return 'club';
  if (query.find !== undefined) return 'find';
  if (query.help !== undefined) return 'help';
  return KINDS.some((kind) => query[kind]) ? 'set' : 'event';
}

// "class=M21A", as sets are called; '' when the address names none.
export function setKeyOf(query) {
  const kind = KINDS.find((name) => query[name]);
  return kind ? setKey(kind, query[kind]) : '';
}

export function setKey(kind, name) {
  return `${kind}=${name}`;
}

// Runners have their number and, because a later version of the event may number them anew, their
// name: "31~Tom O'Hara".
export function runnerKey(runner) {
  return `${runner.serial}~${runner.name}`;
}

export function runnerOfKey(key, runners) {
  const at = (key ?? '').indexOf('~');
  const serial = Number(at < 0 ? key : key.slice(0, at));
  const name = at < 0 ? '' : key.slice(at + 1);
  const numbered = runners.find((runner) => runner.serial === serial);
  if (numbered && (!name || numbered.name === name)) return numbered;
  const named = name ? runners.filter((runner) => runner.name === name) : [];
  return named.length === 1 ? named[0] : null;
}

export function runnersOfKeys(keys, runners) {
  const found = (keys ?? '').split(',').map((key) => runnerOfKey(key, runners)).filter(Boolean);
  return [...new Set(found)];
}
