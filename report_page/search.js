// Finding runners, clubs and classes.
import {bare, folded} from './format.js';

// What is searched for each runner, found when the event is first searched.
const textsOf = new WeakMap();

function searchedTexts(event) {
  if (!textsOf.has(event)) {
    textsOf.set(event, event.runners.map(({name, club, className}) => ({
      all: folded(`${name} ${club} ${className}`), name: folded(name), bareName: bare(name),
    })));
  }
  return textsOf.get(event);
}

function wordsOf(text) {
  return folded(text).trim().split(' ').filter(Boolean);
}

// All words must occur in name, club or class; in names also without blanks and punctuation. Hits in
// names come first, then the order of the runners: class and result.
export function search(event, text) {
  const words = wordsOf(text);
  if (words.length === 0) return {runners: [], clubs: [], classes: []};
  const bareWords = words.map(bare);
  const texts = searchedTexts(event);
  const inName = ({name, bareName}, i) => name.includes(words[i]) || (bareWords[i] !== '' && bareName.includes(bareWords[i]));
  const matches = (text) => words.every((word, i) => text.all.includes(word) || inName(text, i));
  const [named, others] = [[], []];
  event.runners.forEach((runner, number) => {
    const found = texts[number];
    if (matches(found)) (words.every((_, i) => inName(found, i)) ? named : others).push(runner);
  });
  const has = (name) => words.every((word) => folded(name).includes(word));
  return {
    runners: [...named, ...others],
    clubs: event.clubs.filter(([name]) => has(name)),
    classes: event.classSets.filter((set) => has(set.name)),
  };
}

// The text in three parts, of which the second is the first word that was searched for; one part
// when it is not in it.
export function markedParts(text, searched) {
  const [word] = wordsOf(searched);
  const plain = folded(text);
  const at = word && plain.length === text.length ? plain.indexOf(word) : -1;
  return at < 0 ? [text] : [text.slice(0, at), text.slice(at, at + word.length), text.slice(at + word.length)];
}
