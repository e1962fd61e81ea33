// A class, a course or a segment: the choice of it, and the tabs with its views.
import {h} from './dom.js';
import {openSet} from './data.js';
import {countOfRunners, t} from './language.js';
import {countText, courseText, setAddress, setTitle, unknownPlace} from './parts.js';
import {address, setKeyOf} from './route.js';
import {legsView} from './view_legs.js';
import {raceView} from './view_race.js';
import {resultsView} from './view_results.js';
import {splitsView} from './view_splits.js';

const TABS = {results: resultsView, splits: splitsView, race: raceView, legs: legsView};

export function tabOf(query) {
  return TABS[query.view] ? query.view : 'results';
}

export function setView(app) {
  const {event, query} = app;
  const found = event.byKey.get(setKeyOf(query));
  if (!found) return unknownPlace(query.class ?? query.course ?? query.segment);
  const set = openSet(event, found);
  const tab = set.legs > 0 ? tabOf(query) : 'results';
  return [
    h('h1.unseen', {tabindex: -1}, `${setTitle(set)} – ${t(tab)}`),
    h('div.pick', setChoice(app, set, tab), scopeLink(event, set, query)),
    h('p.eyebrow', [courseText(set), set.kind === 'segment' ? countOfRunners(set.finishers.length) : t('finishedOf', set.placed.length, set.listed.length + set.withoutLaps.length)].filter(Boolean).join(' · ')),
    set.legs === 0 ? h('p.card.before-list', t('noLaps')) : h('nav.tabs', {'aria-label': setTitle(set)}, Object.keys(TABS).map((name) =>
      h('a', {href: setAddress(set, {view: name === 'results' ? '' : name}), 'aria-current': name === tab ? 'page' : null}, t(name)))),
    set.others > 0 && tab !== 'results' ? h('p.sm.mut.before-list', t('onOtherCourses', set.others)) : null,
    TABS[tab](app, set),
  ];
}

function setChoice({event, go}, set, tab) {
  const group = (kind, label) => {
    const sets = event.sets.filter((other) => other.kind === kind);
    return sets.length === 0 ? null : h('optgroup', {label}, sets.map((other) =>
      h('option', {value: other.key, selected: other === set}, setTitle(other))));
  };
  return h('select.select.big', {
    id: 'set', 'aria-label': `${t('class')}, ${t('course')}, ${t('segment')}`,
    change: ({target}) => go(setAddress(event.byKey.get(target.value), {view: tab === 'results' ? '' : tab})),
  }, group('class', t('classes')), group('course', t('courses')), group('segment', t('segments')));
}

function scopeLink(event, set, query) {
  if (set.kind !== 'class') return null;
  const course = event.courseOfClass.get(set.name);
  return course ? h('a.chip', {href: address({course: course.name, view: query.view})}, t('wholeCourse')) : null;
}
