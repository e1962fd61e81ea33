// Finding runners, clubs and classes.
import {bare, folded} from './format.js';

function wordsOf(text) {
  return folded(text).trim().split(' ').filter(Boolean);
}

// All words must occur in name, club or class; in names also without blanks and punctuation. Hits in
// names come first, then the order of the runners: class and result.
export function search(event, text) {
  const words = wordsOf(text);
  if (words.length === 0) return {runners: [], clubs: [], classes: []};
  const bareWords = words.map(bare);
  const inName = (runner, i) => runner.searchedName.includes(words[i]) ||
    (bareWords[i] !== '' && runner.bareName.includes(bareWords[i]));
  const matches = (runner) => words.every((word, i) => runner.searched.includes(word) || inName(runner, i));
  const named = (runner) => words.every((_, i) => inName(runner, i));
  const found = event.runners.filter(matches);
  const has = (name) => words.every((word) => folded(name).includes(word));
  return {
    runners: [...found.filter(named), ...found.filter((runner) => !named(runner))],
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
