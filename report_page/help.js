// What the words mean: a dialog for one of them, and a page with all and how they are computed.
import {h} from './dom.js';
import {classSetOf, openList, openSet} from './data.js';
import {costliestLegs} from './figures.js';
import {isNumber, percentText, signedTime, timeText} from './format.js';
import {helpTexts, ordinal, t} from './language.js';
import {address, runnerKey, runnerOfKey} from './route.js';

// The row that examples are about: that of a runner who is shown, else one with a good story, who
// finished and lost time.
function exampleRow(event, runner) {
  const sets = runner ? [classSetOf(event, runner)].filter(Boolean) : event.classSets;
  for (const set of sets) {
    openList(event, set);
    const row = runner ? set.byRunner.get(runner) : set.finishers[1];
    if (row && isNumber(row.time) && openSet(event, set).legs > 0) return {set, row};
  }
  return null;
}

// Examples with figures of this event, by the key of the word.
const EXAMPLES = {
  speed: ({row}) => row.speed && t('exSpeed', row.runner.name, percentText(row.speed, 1), timeText(120), timeText(120 * row.speed)),
  own: ({set, row, leg}) => leg !== undefined && isNumber(row.own[leg]) && t('exOwn', row.runner.name, set.labels[leg], timeText(row.own[leg]), timeText(row.laps[leg])),
  lost: ({row}) => isNumber(row.lost) && t('exLost', row.runner.name, timeText(row.lost), timeText(row.time)),
  mistakes: ({set, row, leg}) => leg !== undefined && row.word[leg] > 0 && t('exMistake', row.runner.name, set.labels[leg], signedTime(row.loss[leg]), t(`word${row.word[leg]}`)),
  clean: ({row}) => isNumber(row.clean) && t('exClean', row.runner.name, timeText(row.time), timeText(row.lost), timeText(row.clean)),
  behind: ({set, row}) => row !== set.leader && t('exBehind', set.leader.runner.name, timeText(set.leader.time), row.runner.name, timeText(row.time), signedTime(row.time - set.leader.time)),
  ref: ({set}) => t('exRef', set.labels[0], timeText(set.reference[0]), set.name),
  hard: ({set}) => {
    const leg = set.facts.reduce((most, facts, i) => (facts.cost > set.facts[most].cost ? i : most), 0);
    return set.facts[leg].laps > 1 && t('exHard', set.labels[leg], set.name, set.facts[leg].mistakes, set.facts[leg].laps);
  },
  decisive: ({set}) => set.decisive !== null && t('exDecisive', set.labels[set.decisive], set.name, timeText(set.facts[set.decisive].decisive)),
  position: ({set, row}) => row.position[0] > 0 && t('exPosition', row.runner.name, ordinal(row.position[0]), set.names[1]),
};

function exampleOf(key, event, runner) {
  const found = exampleRow(event, runner);
  if (!found) return null;
  const [leg] = costliestLegs(found.set, found.row, 1);
  return EXAMPLES[key]?.({...found, leg}) || null;
}

function item(key, {event}, runner, {titled = true, explained = false} = {}) {
  const [name, sentence, example, explanation] = helpTexts()[key];
  return h('div.word', titled ? h('h2.h3', name) : null, h('p', sentence), h('p.example', exampleOf(key, event, runner) ?? example),
    explained ? h('p.sm.mut', explanation) : h('p.sm', h('a.link', {href: address({help: key, of: runner ? runnerKey(runner) : ''})}, t('explain'))));
}

// The contents of the dialog: one word, or all for an unknown key.
export function helpDialog(app, key, runner) {
  const known = helpTexts()[key] !== undefined;
  return {title: known ? helpTexts()[key][0] : t('terms'),
    body: known ? [item(key, app, runner, {titled: false}), h('a.btn', {href: address({help: '', of: runner ? runnerKey(runner) : ''})}, t('allTerms'))] :
      Object.keys(helpTexts()).map((each) => item(each, app, runner))};
}

export function helpView(app) {
  const {event, query, me} = app;
  const runner = query.of ? runnerOfKey(query.of, event.runners) : me;
  const keys = Object.keys(helpTexts());
  const first = keys.includes(query.help) ? [query.help, ...keys.filter((key) => key !== query.help)] : keys;
  return [h('h1.h1', {tabindex: -1}, t('terms')), h('div.words', first.map((key) => h('div.card', item(key, app, runner, {explained: true}))))];
}
