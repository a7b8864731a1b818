// What every part of the page builds its elements with. Texts come off the wire and can hold
// anything: they go into the document as text only, through make() and visible().

// An element with properties, data-* values and children: elements and texts.
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  const {data = {}, ...rest} = properties;
  for (const [name, value] of Object.entries(rest))
    if (name in element && name !== 'role') element[name] = value;
    else element.setAttribute(name, value);
  Object.assign(element.dataset, data);
  element.append(...children.filter(child => child !== null));
  return element;
}

const unprintable = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]/g;

function name(character) {
  const code = character.codePointAt(0);
  if (code < 0x20) return String.fromCodePoint(0x2400 + code);
  return code === 0x7f ? '\u2421' : `\u27e8U+${code.toString(16).toUpperCase().padStart(4, '0')}\u27e9`;
}

// The text with controls, and what turns or hides text, made visible; cut to `most` characters.
export function visible(text, most = Infinity) {
  const cut = text.length > most ? `${text.slice(0, most)}…` : text;
  return cut.replace(unprintable, name);
}

const clock = new Intl.DateTimeFormat('en-GB', {hour: '2-digit', minute: '2-digit', second: '2-digit',
                                               fractionalSecondDigits: 3});
const day = new Intl.DateTimeFormat('sv-SE', {year: 'numeric', month: '2-digit', day: '2-digit'});

export const showTime = time => clock.format(time);
export const showDay = time => day.format(time);
export const showNumber = number => number.toLocaleString('en');

// "104 ms", "2.5 s", "3 min 20 s", "5 h 12 min", "2 d 3 h".
export function showDuration(milliseconds) {
  if (milliseconds < 1000) return `${Math.round(milliseconds)} ms`;
  if (milliseconds < 60_000) return `${+(milliseconds / 1000).toFixed(1)} s`;
  const minutes = Math.floor(milliseconds / 60_000);
  if (minutes < 60) return `${minutes} min ${Math.floor(milliseconds / 1000) % 60} s`;
  const hours = Math.floor(minutes / 60);
  return hours < 48 ? `${hours} h ${minutes % 60} min` : `${Math.floor(hours / 24)} d ${hours % 24} h`;
}

// Calls `act` once for any number of calls within one frame.
export function oncePerFrame(act) {
  let due = false;
  return () => {
    if (due) return;
    due = true;
    requestAnimationFrame(() => { due = false; act(); });
  };
}
