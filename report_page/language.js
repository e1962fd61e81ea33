// The language in use, and texts in it.
import {TEXTS_EN, HELP_EN} from './texts_en.js';
import {TEXTS_JA, HELP_JA} from './texts_ja.js';

export let language = 'en';

export function setLanguage(name) {
  language = name === 'ja' ? 'ja' : 'en';
}

// The language for a reader: that of the address, else the last choice, else the browser's.
export function chooseLanguage(ofAddress, ofStore, ofBrowser) {
  const known = [ofAddress, ofStore].find((name) => name === 'ja' || name === 'en');
  return known ?? (/^ja\b/i.test(ofBrowser ?? '') ? 'ja' : 'en');
}

export function isJapanese() {
  return language === 'ja';
}

export function helpTexts() {
  return isJapanese() ? HELP_JA : HELP_EN;
}

function textOf(key) {
  return (isJapanese() ? TEXTS_JA : TEXTS_EN)[key] ?? key;
}

// A text with values in its places.
export function t(key, ...values) {
  return textOf(key).replace(/\{(\d)\}/g, (_, place) => values[place]);
}

// The same as a list of texts and elements, for values that are elements.
export function rich(key, ...values) {
  return textOf(key).split(/(\{\d\})/).map((part) => {
    const place = /^\{(\d)\}$/.exec(part);
    return place ? values[place[1]] : part;
  });
}

export function countOfRunners(count) {
  return count === 1 ? t('runner1') : t('runnersN', count);
}

export function countOfControls(count) {
  return count === 1 ? t('control1') : t('controlsN', count);
}

// "3rd"; "3位". Ranks that are no numbers stay as they are.
export function ordinal(rank) {
  if (typeof rank !== 'number') return String(rank ?? '–');
  return isJapanese() ? `${rank}位` : rank + ordinalEnding(rank);
}

export function ordinalEnding(rank) {
  const teens = rank % 100 > 10 && rank % 100 < 14;
  return (teens ? '' : ['', 'st', 'nd', 'rd'][rank % 10]) || 'th';
}

// A date "2025-10-18" in words; `short` for narrow screens.
export function dateText(date, short = false) {
  const [year, month, day] = (date ?? '').split('-').map(Number);
  if (!year) return '';
  const options = {day: 'numeric', month: short && !isJapanese() ? 'short' : 'long', year: 'numeric'};
  if (!short || isJapanese()) options.weekday = isJapanese() ? 'short' : 'long';
  return new Date(year, month - 1, day).toLocaleDateString(isJapanese() ? 'ja-JP' : 'en-GB', options);
}
