// One hit in full: verdicts, parameters in the order of the wire, headers, connection, body.

import {getHit} from './api.js';
import {make, showDay, showDuration, showNumber, showTime, visible} from './dom.js';

const longest = 2000; // characters of one text that are shown unasked

// The text; a long one cut, with a button that shows the rest.
function makeText(text) {
  const shown = make('bdi', {className: 'wire'}, visible(text, longest));
  if (text.length <= longest) return shown;
  const more = make('button', {type: 'button'}, `all ${showNumber(text.length)} characters`);
  more.addEventListener('click', () => {
    shown.textContent = visible(text);
    more.remove();
  });
  return make('span', {}, shown, ' ', more);
}

function makeTable(className, heads, rows) {
  return make('table', {className},
              make('thead', {}, make('tr', {}, ...heads.map(head => make('th', {scope: 'col'}, head)))),
              make('tbody', {}, ...rows));
}

const makeCells = cells => make('tr', {}, ...cells.map(cell => make('td', {}, cell)));

function makeVerdict({severity, code, parameter, explanation}) {
  return make('li', {data: {verdict: severity}},
              make('strong', {}, severity), ` ${code}`, parameter ? make('code', {}, visible(parameter, 100)) : null,
              make('p', {}, makeText(explanation)));
}

function makeParameter(parameter) {
  const {name, raw, decoded, meaning} = parameter;
  return makeCells([make('code', {}, visible(name, 200)), visible(meaning, 200), makeText(decoded),
                    raw === decoded ? make('span', {className: 'same'}, 'same') : makeText(raw)]);
}

function makeFacts(hit) {
  const {method, version} = hit.request;
  const facts = [
    ['time', `${showDay(hit.time)} ${showTime(hit.time)}`],
    ['since the previous hit', hit.previous === null ? 'this is the first one' : showDuration(hit.sincePrevious)],
    ['product', visible(hit.product, 200)], ['visitor', visible(hit.visitor, 200)],
    ['session', visible(hit.session, 200)],
    ['request', `${method} ${visible(hit.endpoint, 200)} ${version}`], ['connection', String(hit.connection)],
  ];
  return make('dl', {}, ...facts.filter(([, value]) => value)
                                .flatMap(([name, value]) => [make('dt', {}, name), make('dd', {}, value)]));
}

// A section that is left out when it has nothing to show.
const makeSection = (title, content) => content ? [make('h3', {}, title), content] : [];

function makeContent(hit) {
  const {target, body} = hit.request;
  const verdicts = hit.verdicts.length
    ? make('ul', {className: 'verdicts'}, ...hit.verdicts.map(makeVerdict))
    : make('p', {className: 'verdicts', data: {verdict: 'valid'}}, 'Valid: nothing to say about this hit.');
  return [
    make('h2', {}, `${hit.id}. `, make('bdi', {}, visible(hit.sentence, 300))), verdicts, makeFacts(hit),
    ...makeSection(`Parameters (${hit.parameters.length})`,
                   makeTable('parameters', ['name', 'meaning', 'decoded', 'raw'], hit.parameters.map(makeParameter))),
    ...makeSection('Headers', makeTable('headers', ['name', 'value'], hit.headers.map(
      ([name, value]) => makeCells([make('code', {}, visible(name, 200)), makeText(value)])))),
    ...makeSection('Target', makeText(target)),
    ...makeSection('Body', body && makeText(body)),
  ];
}

export class Detail {
  wanted = null; // id

  constructor(element, onClose) {
    this.element = element;
    this.onClose = onClose;
  }

  get isOpen() {
    return !this.element.hidden;
  }

  async show(id) {
    if (this.wanted === id) return;
    this.wanted = id;
    const content = await getHit(id).then(makeContent, failure => [make('p', {}, visible(failure.message))]);
    if (this.wanted !== id) return; // another one is wanted by now
    const close = make('button', {type: 'button', className: 'close', title: 'Close (Esc)', ariaLabel: 'Close'}, '×');
    close.addEventListener('click', this.onClose);
    this.element.replaceChildren(close, ...content);
    this.element.scrollTop = 0;
    this.element.hidden = false;
  }

  hide() {
    this.wanted = null;
    this.element.hidden = true;
    this.element.replaceChildren();
  }
}
