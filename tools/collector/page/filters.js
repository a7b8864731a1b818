// The row of filters. They are kept in the address's fragment, so that a view can be linked to.

import {exportAddress} from './api.js';
import {make, showNumber, showTime, visible} from './dom.js';
import {noFilter} from './hits.js';

const inSelects = ['tracker', 'kind', 'product', 'verdict'];

function readFragment() {
  return {...noFilter, ...Object.fromEntries(new URLSearchParams(location.hash.slice(1)))};
}

function makeOptions(counts, chosen) {
  const values = [...counts.keys()].filter(value => value !== '').sort();
  if (chosen && !values.includes(chosen)) values.push(chosen);
  return values.map(value => new Option(
    `${visible(value, 40)} (${showNumber(counts.get(value) ?? 0)})`, value, false, value === chosen));
}

function makeVerdictOptions({verdict, code}, chosen) {
  const invalid = (verdict.get('warning') ?? 0) + (verdict.get('error') ?? 0);
  const group = make('optgroup', {label: 'reasons'}, ...makeOptions(code, code.has(chosen) ? chosen : ''));
  const severities = new Map([...verdict, ['invalid', invalid]]);
  return [...makeOptions(severities, severities.has(chosen) ? chosen : ''), group];
}

// Events: "filter" with the filter chosen.
export class Filters extends EventTarget {
  filter = readFragment();

  constructor(form) {
    super();
    this.form = form;
    this.chips = form.querySelector('#chips');
    form.elements.text.value = this.filter.text;
    addEventListener('hashchange', () => this.set(readFragment()));
    form.addEventListener('submit', event => event.preventDefault());
    form.addEventListener('change', event => {
      if (event.target.name !== 'text') this.set({[event.target.name]: event.target.value});
    });
    form.elements.text.addEventListener('input', () => {
      clearTimeout(this.typing);
      this.typing = setTimeout(() => this.set({text: form.elements.text.value}), 200);
    });
    this.showChips();
    this.showExports();
  }

  get isEmpty() {
    return Object.values(this.filter).every(value => value === '');
  }

  set(changes) {
    this.filter = {...this.filter, ...changes};
    const used = Object.entries(this.filter).filter(([, value]) => value !== '');
    history.replaceState(null, '', `#${new URLSearchParams(used)}`);
    if (changes.text !== undefined) this.form.elements.text.value = changes.text;
    this.showChips();
    this.showExports();
    this.dispatchEvent(new CustomEvent('filter', {detail: this.filter}));
  }

  drop() {
    this.set({...noFilter});
  }

  showCounts(counts) {
    for (const name of inSelects) {
      const options = name === 'verdict' ? makeVerdictOptions(counts, this.filter.verdict)
                                         : makeOptions(counts[name], this.filter[name]);
      const select = this.form.elements[name];
      if (select !== document.activeElement) {
        select.replaceChildren(new Option('all', ''), ...options);
        select.value = this.filter[name];
      }
    }
  }

  showChips() {
    const {visitor, session, from, to} = this.filter;
    const chips = [];
    if (visitor) chips.push([`visitor ${visible(visitor, 20)}${session && `, session ${visible(session, 10)}`}`,
                             {visitor: '', session: ''}]);
    if (from) chips.push([`${showTime(+from)} to ${showTime(+to)}`, {from: '', to: ''}]);
    this.chips.replaceChildren(...chips.map(([text, changes]) => {
      const chip = make('button', {type: 'button', title: 'Drop this filter'}, `${text} ×`);
      chip.addEventListener('click', () => this.set(changes));
      return chip;
    }));
  }

  // The interface knows no stretch of time and no session: an export has all of the visitor's.
  showExports() {
    const {session, from, to, ...filter} = this.filter;
    for (const link of this.form.querySelectorAll('a[data-format]'))
      link.href = exportAddress(link.dataset.format, filter);
  }
}
