// The visitors with their sessions.

import {getVisitors} from './api.js';
import {make, showDay, showDuration, showNumber, showTime, visible} from './dom.js';

const mostRows = 500;

// Events: "choose" with {visitor, session} (session may be empty).
export class Visitors extends EventTarget {
  constructor(element) {
    super();
    this.element = element;
  }

  get isOpen() {
    return !this.element.hidden;
  }

  // Asks the collector again, at most once a second.
  refresh() {
    if (!this.isOpen) return;
    this.due ??= setTimeout(() => { this.due = null; this.load(); }, 1000);
  }

  async load() {
    const visitors = await getVisitors();
    const rows = visitors.flatMap(visitor => this.makeRows(visitor));
    const heads = ['tracker', 'visitor', 'product', 'session', 'begins', 'lasts', 'hits', 'unusual'];
    this.element.replaceChildren(
      make('table', {}, make('thead', {}, make('tr', {}, ...heads.map(head => make('th', {scope: 'col'}, head)))),
           make('tbody', {}, ...rows.slice(0, mostRows))),
      rows.length > mostRows ? make('p', {}, `and ${showNumber(rows.length - mostRows)} more sessions`) : '');
  }

  makeRows({tracker, visitor, product, sessions}) {
    return sessions.map(({session, first, last, hits, invalid}, index) => make(
      'tr', {className: index === 0 ? 'first' : ''},
      make('td', {}, index === 0 ? tracker : ''),
      make('td', {}, index === 0 ? this.makeChoice(visitor, {visitor, session: ''}) : ''),
      make('td', {}, index === 0 ? visible(product, 60) : ''),
      make('td', {}, this.makeChoice(session, {visitor, session})),
      make('td', {}, `${showDay(first)} ${showTime(first)}`), make('td', {}, showDuration(last - first)),
      make('td', {className: 'number'}, showNumber(hits)),
      make('td', {className: 'number', data: {verdict: invalid ? 'warning' : ''}}, invalid ? showNumber(invalid) : '')));
  }

  makeChoice(text, choice) {
    const button = make('button', {type: 'button', title: 'Show these hits'}, visible(text, 40) || 'none');
    button.addEventListener('click', () => this.dispatchEvent(new CustomEvent('choose', {detail: choice})));
    return button;
  }
}
