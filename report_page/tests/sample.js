// A small event in the form of the data block: two classes on one course of three legs, of which the
// second was not timed, and a segment that they share.
const WINNER = [1, 'Anna Berg', 1, 0, 36000, '0:05:00', 'ok', [100, null, 200], [1, 0, 0, [98, null, 199], [6, null, 9], [6, null, 9], [0, null, 1], '000', 0, 4]];
const SECOND = [2, "Tom O'Hara", 2, 0, 36060, '0:06:40', 'ok', [150, null, 250], [1.2, 60, 1, [110, null, 240], [10, null, 9], [12, null, 9], [35, null, 2], '200', 40, 90]];
const SKIPPER = [3, 'さとう けん', 2, 0, 0, 'MP', 'mp', ['skip', null, 420], null];
const ABSENT = [4, 'Nils Holm', 0, 0, 0, 'DNS', 'dns', [], null];
const OTHER = [5, 'Äsa Ek', 1, 1, 0, '0:05:30', 'ok', [120, null, 210], null];

function row(index, rank, time, lapRank, position, extras = {}) {
  return [index, rank, time, 1.1, 0.05, 20, time && time - 20, 1.1, 1.2, lapRank, position, extras];
}

function set(kind, name, rows, more = {}) {
  return {kind, name, controls: 2, length: 3000, climb: 50, points: ['S', '31', '32', 'F'], ref: [100, 0, 200], timed: [1, 0, 1],
    legs: [[2, 1, 20, 50], [0, 0, 0, 0], [2, 0, 1, 10]], rows, ...more};
}

export function sampleData() {
  return {
    generator: 'Keltrun 2.27', event: {name: 'Sample', date: '2025-10-18', terrain: '', memo: '', site: ''},
    classes: [{name: 'A', runners: 4}, {name: 'B', runners: 1}],
    runners: [WINNER, SECOND, SKIPPER, ABSENT, OTHER], clubs: ['', 'OK North', 'O-Club'],
    sets: [
      set('class', 'A', [row(0, '1', 300, [1, 0, 1], [1, 1, 1]), row(1, '(2)', 400, [2, 0, 2], [2, 2, 2], {loss: [9, null, 9]}),
        row(2, '', null, [0, 0, 0], [0, 0, 0], {ranges: [1, 3], split: [140, 0, 420], loss: [null, null, 90]})]),
      set('class', 'B', [row(4, '1', 330, [1, 0, 1], [1, 1, 1], {loss: [5, null, -5]})]),
      set('course', 'A/B', [row(0, '1', 300, [1, 0, 1], [1, 1, 1]), row(4, '2', 330, [2, 0, 2], [2, 2, 2], {loss: [5, null, -5]}),
        row(1, '3', 400, [3, 0, 3], [3, 3, 3], {loss: [9, null, 9]})]),
      set('segment', '32-F', [row(1, '1', 250, [1], [1], {from: 2}), row(4, '', null, [0], [0], {from: 1, result: 'N/A'})],
        {controls: 0, points: ['32', 'F'], ref: [60], timed: [1], legs: [[2, 0, 2, 10]]}),
    ],
  };
}
