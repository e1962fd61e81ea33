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

function fill(element, parts) {
  const [first, ...rest] = parts;
  if (isAttributes(first)) setAttributes(element, first);
  element.append(...(isAttributes(first) ? rest : parts).flat(4)
    .filter((part) => part !== null && part !== undefined && part !== false && part !== ''));
  return element;
}

// h('a.card.me', {href}, children ...): the children are elements, texts, numbers and lists of them.
export function h(name, ...parts) {
  const [tag, ...classes] = name.split('.');
  const element = document.createElement(tag);
  if (classes.length > 0) element.className = classes.join(' ');
  return fill(element, parts);
}

// The same for the elements of drawings.
export function s(name, ...parts) {
  const [tag, ...classes] = name.split('.');
  const element = document.createElementNS(SVG, tag);
  if (classes.length > 0) element.setAttribute('class', classes.join(' '));
  return fill(element, parts);
}

export function byId(id) {
  return document.getElementById(id);
}
