// --- Elements. Texts from data only ever become text nodes and attribute values. ---

const byId = (id) => document.getElementById(id);

function fill(node, attributes, children) {
  for (const [name, value] of Object.entries(attributes ?? {})) {
    if (value === false || value == null) continue;
    node.setAttribute(name, value === true ? '' : value);
  }
  node.append(...children);
  return node;
}

function el(tag, attributes, ...children) {
  return fill(document.createElement(tag), attributes, children);
}

function svg(tag, attributes, ...children) {
  return fill(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
}

function button(attributes, ...children) {
  return el('button', {type: 'button', ...attributes}, ...children);
}

// Options of a select from pairs of value and text.
function setOptions(select, pairs, chosen) {
  select.replaceChildren(...pairs.map(([value, label]) => el('option', {value}, label)));
  select.value = chosen;
}
