// What the reader chose, kept by the browser; in memory where it keeps nothing, as for some files.
const memory = new Map();

export function stored(key) {
  try {
    return localStorage.getItem(key) ?? memory.get(key);
  } catch {
    return memory.get(key);
  }
}

export function store(key, value) {
  if (value === null) memory.delete(key);
  else memory.set(key, value);
  try {
    if (value === null) localStorage.removeItem(key);
    else localStorage.setItem(key, value);
  } catch {
    // The memory has it as long as the page is open.
  }
}
