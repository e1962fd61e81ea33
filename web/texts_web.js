// Texts of the page around the report, in the report's language.
import {isJapanese} from '../report_page/language.js';
import {WEB_EN} from './texts_web_en.js';
import {WEB_JA} from './texts_web_ja.js';

// A text with values in its places.
export function w(key, ...values) {
  return (isJapanese() ? WEB_JA : WEB_EN)[key].replace(/\{(\d)\}/g, (_, place) => values[place]);
}
