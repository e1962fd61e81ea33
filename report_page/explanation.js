// What is said about one lap: how it compares with own pace, whether it was a mistake, and how the
// others did there.
import {h} from './dom.js';
import {lossClass} from './parts.js';
import {isMistake, leastTold, othersOnLeg} from './figures.js';
import {isNumber, timeText} from './format.js';
import {ordinal, rich, t} from './language.js';

const JOINT = {others: 'whyOthers', hard: 'whyHard', own: 'whyOwn'};

// Whether a loss is worth saying why.
export function isTold(set, row, leg) {
  return isNumber(row.loss[leg]) && row.loss[leg] >= leastTold(set);
}

// The word for the leg: how likely a mistake is, or that the leg was hard for everybody. null when
// there is nothing to say.
export function verdictOf(set, row, leg) {
  if (!isTold(set, row, leg)) return null;
  const {verdict} = othersOnLeg(set, row, leg);
  if (verdict === 'hard') return {kind: 'hard', text: t('hard')};
  const word = row.word[leg];
  if (word > 0) return {kind: verdict === 'own' ? 'own' : 'others', text: t(`word${word}`)};
  return isMistake(set, row, leg) ? {kind: verdict, text: t(verdict)} : null;
}

function whyText(set, row, leg) {
  const {count, faulty, verdict} = othersOnLeg(set, row, leg);
  if (count === 0) return '';
  return t(faulty === 0 ? 'whyAlone' : JOINT[verdict], faulty, count);
}

function mistakeText(set, row, leg) {
  const word = row.word[leg];
  if (word === null) return '';
  if (word === 0) return Math.abs(row.loss[leg]) < set.first ? '' : row.loss[leg] > 0 ? t('usual') : '';
  const cost = row.cost[leg] >= 1 ? t('mistakeCost', timeText(row.cost[leg])) : '';
  return [h('b', t(`word${word}`)), t('lapOnly', '').trim(), ' ', cost];
}

function lossText(set, row, leg) {
  const loss = row.loss[leg];
  if (Math.abs(loss) < 0.5) return t('asUsual');
  const amount = t(loss > 0 ? 'lostHere' : 'gainedHere', timeText(loss));
  return [h(`b.${lossClass(set, loss) || 'plain'}`, amount), rangeText(row, leg), t('lapOnly', '').trim()];
}

// The range of a gain goes the other way round.
function rangeText(row, leg) {
  if (row.least[leg] === null) return '';
  const signed = (time) => (time < 0 ? '−' : '') + timeText(time);
  const ends = [row.least[leg], row.most[leg]];
  return t('between', ...(row.loss[leg] > 0 ? ends : ends.reverse().map((end) => -end)).map(signed));
}

// Sentences about a lap.
export function explainLap(set, row, leg) {
  const lap = row.laps[leg];
  if (!isNumber(lap)) return [row.inRange[leg] ? t('inRange') : t('noLap')];
  const rank = row.lapRank[leg];
  const intro = rank ? rich('lapIs', h('b', timeText(lap)), ordinal(rank), set.facts[leg].laps) : rich('lapOnly', h('b', timeText(lap)));
  if (!isNumber(row.loss[leg])) return [intro];
  const why = isTold(set, row, leg) && (row.word[leg] ?? 1) > 0 ? whyText(set, row, leg) : '';
  return [intro, ' ', t('ownPaceIs', timeText(row.own[leg])), ' ', lossText(set, row, leg), ' ',
    mistakeText(set, row, leg), ' ', why];
}
