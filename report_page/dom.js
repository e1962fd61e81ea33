// Elements. Texts from data become text nodes and attribute values; nothing is parsed as HTML.
const SVG = 'http://www.w3.org/2000/svg';

function isAttributes(value) {
  return value !== null && typeof value === 'object' && !(value instanceof Node) && !Array.isArray(value);
}

function setAttributes(element, attributes) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (typeof value === 'function') element.addEventListener(name, value);
    else if (name === 'style') Object.entries(value).forEach(([key, text]) => element.style.setProperty(key, text));
    else element.setAttribute(name, value === true ? '' : value);
  }
}

// Children are elements, texts, numbers and lists of them; nothing at all is left out.
function append(element, parts, from = 0) {
  for (let i = from; i < parts.length; ++i) {
    const part = parts[i];
    if (part === null || part === undefined || part === false || part === '') continue;
    if (Array.isArray(part)) append(element, part);
    else element.append(part);
  }
}

function fill(element, parts) {
  const hasAttributes = isAttributes(parts[0]);
  if (hasAttributes) setAttributes(element, parts[0]);
  append(element, parts, hasAttributes ? 1 : 0);
  return element;
}

const readNames = new Map();  // "a.card.me" to ["a", "card me"], because tables have many of the same

function readName(name) {
  let read = readNames.get(name);
  if (!read) {
    const [tag, ...classes] = name.split('.');
    readNames.set(name, read = [tag, classes.join(' ')]);
  }
  return read;
}

// h('a.card.me', {href}, children ...)
export function h(name, ...parts) {
  const [tag, classes] = readName(name);
  const element = document.createElement(tag);
  if (classes) element.className = classes;
  return fill(element, parts);
}

// The same for the elements of drawings.
export function s(name, ...parts) {
  const [tag, classes] = readName(name);
  const element = document.createElementNS(SVG, tag);
  if (classes) element.setAttribute('class', classes);
  return fill(element, parts);
}

export function byId(id) {
  return document.getElementById(id);
}
