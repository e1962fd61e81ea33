// --- Numbers as texts. Times are in seconds. ---

const MARKS = {skip: '↓', disq: '×'};  // what stands in place of a time, as on the other pages
const NO_DATA = '－';
const MINUS = '−';

// m:ss, from an hour on h:mm:ss; whole seconds, without the sign.
function timeText(seconds) {
  const whole = Math.round(Math.abs(seconds));
  const two = (number) => String(number).padStart(2, '0');
  const minutes = Math.floor(whole / 60);
  if (minutes < 60) return `${minutes}:${two(whole % 60)}`;
  return `${Math.floor(minutes / 60)}:${two(minutes % 60)}:${two(whole % 60)}`;
}

function signedTimeText(seconds) {
  const sign = Math.round(seconds) > 0 ? '+' : Math.round(seconds) < 0 ? MINUS : '±';
  return sign + timeText(seconds);
}

// Hours and minutes of a time of day, which may lie beyond midnight.
function clockText(seconds) {
  const minutes = Math.floor(seconds / 60);
  return `${Math.floor(minutes / 60) % 24}:${String(minutes % 60).padStart(2, '0')}`;
}

// A time or its marker.
function markedText(value) {
  if (typeof value === 'number') return timeText(value);
  return MARKS[value] ?? NO_DATA;
}

function percentText(factor) {
  return (factor * 100).toFixed(1);
}

// A text in the form in which texts are compared: width, case and kind of kana make no difference.
function folded(value) {
  return value.normalize('NFKC').toLowerCase()
      .replace(/[\u3041-\u3096]/g, (kana) => String.fromCharCode(kana.charCodeAt(0) + 0x60));
}
