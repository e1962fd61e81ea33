// Numbers and names as texts. Nothing here depends on the language.
const MINUS = '\u2212';

export function isNumber(value) {
  return typeof value === 'number' && Number.isFinite(value);
}

function twoDigits(number) {
  return String(number).padStart(2, '0');
}

// "2:05", "1:02:03"; the sign is left out.
export function timeText(seconds) {
  if (!isNumber(seconds)) return '–';
  const whole = Math.round(Math.abs(seconds));
  const minutes = Math.floor(whole / 60);
  if (minutes < 60) return `${minutes}:${twoDigits(whole % 60)}`;
  return `${Math.floor(minutes / 60)}:${twoDigits(minutes % 60)}:${twoDigits(whole % 60)}`;
}

// With a sign: "+0:48", "−0:03", "±0:00".
export function signedTime(seconds) {
  if (!isNumber(seconds)) return '–';
  const whole = Math.round(seconds);
  return (whole > 0 ? '+' : whole < 0 ? MINUS : '±') + timeText(seconds);
}

// A time of day from seconds since midnight.
export function clockText(seconds) {
  const whole = Math.round(seconds);
  return [whole / 3600 % 24, whole / 60 % 60, whole % 60].map((part) => twoDigits(Math.floor(part))).join(':');
}

export function percentText(factor, decimals = 0) {
  return isNumber(factor) && factor !== 0 ? (factor * 100).toFixed(decimals) + '%' : '–';
}

// "5.7 km ↑70 m"
export function lengthText(length, climb) {
  const parts = [];
  if (length > 0) parts.push(`${(length / 1000).toFixed(1)} km`);
  if (climb > 0) parts.push(`↑${climb} m`);
  return parts.join(' ');
}

// A name for little room: "T. O'Hara"; names in other than Latin letters stay whole.
export function shortName(name) {
  const parts = name.trim().split(/\s+/u);
  const latin = !/[^\u0000-\u024f]/u.test(name);
  const text = latin && parts.length > 1 ? `${[...parts[0]][0]}. ${parts.slice(1).join(' ')}` : parts.join(' ');
  const letters = [...text];
  return letters.length > 14 ? letters.slice(0, 13).join('') + '…' : text;
}

// Texts that differ only in width, case or kind of kana become equal.
export function folded(text) {
  return text.normalize('NFKC').toLowerCase()
    .replace(/[\u3041-\u3096]/gu, (kana) => String.fromCharCode(kana.charCodeAt(0) + 96))
    .replace(/\s+/gu, ' ');
}

// The same without blanks, punctuation and accents: "ohara" for "O'Hara".
export function bare(text) {
  return folded(text).normalize('NFD').replace(/[^\p{L}\p{N}]/gu, '');
}
