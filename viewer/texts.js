// --- Texts of the page in both languages. {0}, {1} are filled in. ---

const TEXTS = {
  ja: {
    otherLanguage: 'English', settings: '表示の設定', dataSet: 'クラス・コース', view: '表示',
    class: 'クラス', course: 'コース', segment: '区間',
    table: 'ラップ表', chart: 'グラフ', chartKind: 'グラフの種類', shown: '表示する選手',
    secondLine: '２行目', compareWith: '比較の基準', search: '検索（氏名・所属）',
    selected: '選択した選手', runners: '選手', clear: '選択を解除',
    upperLaps: '上位３人の平均', remove: '{0} の選択を解除', compare: '{0} を基準にする',
    normal: '経過時間', real: '実時刻', relative: '基準との差',
    relative110: '基準×110％との差', relative130: '基準×130％との差',
    loss: '巡航速度とミス率', half: '巡航速度と後半／前半', map: 'ミスの地図',
    shownAll: '全員', shownTop: '上位 {0} 人', shownSelected: '選択した選手のみ',
    secondSplit: '通過タイム', secondLoss: 'ミスタイム', secondRelative: '基準ラップ比 (%)',
    secondGap: '通過の基準との差', secondLegGap: 'ラップの基準との差',
    rank: '順位', name: '氏名', result: '記録', cruise: '巡航 (%)', rate: 'ミス率 (%)',
    lost: 'ミス計', clean: 'ミスなし', reference: '基準',
    people: '{0} 人', controls: '{0} コントロール', referenceTime: '基準タイム {0}',
    legend: '色：1～3位。網掛け：ミスタイム',
    lap: 'ラップ', split: '通過', lossOfLeg: 'ミス', gap: '基準との差', start: 'スタート',
    cruiseAxis: '巡航速度 (%)', rateAxis: 'ミス率 (%)', halfAxis: '後半／前半の巡航速度 (%)',
    noLoss: 'ミスなし', ratio: '後半／前半',
    mapHint: '近い選手ほど同じレッグで同じようにミスをしています。',
    chartHint: 'クリック・タップで選手を選択。キーボード：← → レッグ、↑ ↓ 選手、Enter 選択、Esc 解除。',
    noRunners: '該当する選手がいません。', noFigures: 'このグラフに必要なデータがありません。',
    noMap: 'この選手たちの地図はありません。',
    unknownSet: '{0} はこの大会にありません。', noSets: 'データがありません。',
    damaged: 'このページのデータは壊れています。',
    oldBrowser: 'このブラウザではデータを展開できません。新しい版をお使いください。',
    chartLabel: '{0}：{1}', position: '{0} 位',
  },
  en: {
    otherLanguage: '日本語', settings: 'Settings', dataSet: 'Class or course', view: 'View',
    class: 'Classes', course: 'Courses', segment: 'Segments',
    table: 'Splits', chart: 'Charts', chartKind: 'Chart', shown: 'Runners shown',
    secondLine: 'Second line', compareWith: 'Compare with', search: 'Search (name, club)',
    selected: 'Selected runners', runners: 'Runners', clear: 'Clear selection',
    upperLaps: 'Mean of the best three', remove: 'Deselect {0}', compare: 'Compare with {0}',
    normal: 'Running time', real: 'Time of day', relative: 'Behind the reference',
    relative110: 'Behind 110 % of the reference', relative130: 'Behind 130 % of the reference',
    loss: 'Cruise speed and time lost', half: 'Cruise speed and second half', map: 'Map of losses',
    shownAll: 'All', shownTop: 'Best {0}', shownSelected: 'Selected only',
    secondSplit: 'Split', secondLoss: 'Time lost', secondRelative: 'Lap / reference lap (%)',
    secondGap: 'Split behind the reference', secondLegGap: 'Lap behind the reference',
    rank: 'Rank', name: 'Name', result: 'Result', cruise: 'Cruise %', rate: 'Loss %',
    lost: 'Lost', clean: 'No loss', reference: 'Reference',
    people: '{0} runners', controls: '{0} controls', referenceTime: 'reference time {0}',
    legend: 'Colours: ranks 1 to 3. Shading: time lost',
    lap: 'Lap', split: 'Split', lossOfLeg: 'Lost', gap: 'Behind reference', start: 'Start',
    cruiseAxis: 'Cruise speed (%)', rateAxis: 'Time lost (%)',
    halfAxis: 'Cruise speed, second half / first half (%)',
    noLoss: 'no loss', ratio: 'Second / first half',
    mapHint: 'Runners close together lost time in the same way on the same legs.',
    chartHint: 'Click or tap to select a runner. Keys: ← → leg, ↑ ↓ runner, Enter select, Esc clear.',
    noRunners: 'No runner matches.', noFigures: 'There are no figures for this chart.',
    noMap: 'There is no map of these runners.',
    unknownSet: '{0} is not in this event.', noSets: 'There are no data.',
    damaged: 'The data of this page is damaged.',
    oldBrowser: 'This browser cannot unpack the data. Please use a newer one.',
    chartLabel: '{0}: {1}', position: 'rank {0}',
  },
};

let language = document.documentElement.lang === 'ja' ? 'ja' : 'en';
const pageLanguage = language;

function text(key, ...values) {
  return TEXTS[language][key].replace(/\{(\d)\}/g, (gap, index) => values[index]);
}

// Fills in the texts of the page's fixed parts.
function translatePage() {
  document.documentElement.lang = language;
  for (const part of document.querySelectorAll('[data-text]')) part.textContent = text(part.dataset.text);
  for (const part of document.querySelectorAll('[data-label]')) part.ariaLabel = text(part.dataset.label);
}
