// The rows of the hits. Only those in sight are in the document, however many hits there are.

import {make, oncePerFrame, showTime, visible} from './dom.js';

const rowHeight = 28; // pixels, as page.css has it
const spare = 8;      // rows drawn above and below those in sight
const columns = ['time', 'tracker', 'kind', 'sentence', 'verdict'];

function makeRow() {
  const row = make('div', {className: 'row', role: 'row'});
  for (const column of columns) row.append(make('span', {className: column, role: 'gridcell'}));
  return row;
}

function fillRow(row, hit, index, isSelected) {
  row.id = `hit-${hit.id}`;
  row.style.top = `${index * rowHeight}px`;
  row.dataset.verdict = hit.verdict;
  row.setAttribute('aria-rowindex', index + 1);
  row.setAttribute('aria-selected', isSelected);
  const texts = [showTime(hit.time), hit.tracker, hit.kind, visible(hit.sentence, 300),
                 hit.codes.length ? hit.codes.join(', ') : hit.verdict];
  texts.forEach((text, column) => { row.children[column].textContent = text; });
}

// Events: "select" when another hit is selected, "open" when its details are wanted.
export class List extends EventTarget {
  hits = [];
  selected = null;
  following = true; // the newest hit stays in sight

  constructor(element) {
    super();
    this.element = element;
    this.space = make('div', {className: 'space'});
    this.nothing = make('p', {className: 'nothing'});
    element.append(this.space, this.nothing);
    this.rows = [];
    this.redraw = oncePerFrame(() => this.draw());
    element.addEventListener('scroll', () => this.noteScroll());
    element.addEventListener('click', event => this.takeClick(event));
    new ResizeObserver(() => this.show(this.hits)).observe(element);
  }

  show(hits) {
    this.hits = hits;
    this.space.style.height = `${hits.length * rowHeight}px`;
    this.element.setAttribute('aria-rowcount', hits.length);
    if (this.following) this.element.scrollTop = this.element.scrollHeight;
    this.redraw();
  }

  explainEmptiness(text) {
    this.nothing.textContent = text;
  }

  noteScroll() {
    const {scrollTop, scrollHeight, clientHeight} = this.element;
    this.following = scrollTop + clientHeight >= scrollHeight - rowHeight;
    this.redraw();
  }

  draw() {
    const first = Math.max(0, Math.floor(this.element.scrollTop / rowHeight) - spare);
    const inSight = Math.ceil(this.element.clientHeight / rowHeight) + 2 * spare;
    const last = Math.min(this.hits.length, first + inSight);
    while (this.rows.length < last - first) this.rows.push(this.space.appendChild(makeRow()));
    while (this.rows.length > last - first) this.rows.pop().remove();
    for (let index = first; index < last; ++index)
      fillRow(this.rows[index - first], this.hits[index], index, this.hits[index] === this.selected);
    this.nothing.hidden = this.hits.length > 0;
    if (this.selected) this.element.setAttribute('aria-activedescendant', `hit-${this.selected.id}`);
  }

  takeClick(event) {
    const row = event.target.closest('.row');
    if (!row) return;
    this.select(this.hits[row.getAttribute('aria-rowindex') - 1]);
    this.dispatchEvent(new Event('open'));
  }

  select(hit) {
    this.selected = hit;
    this.bringIntoSight(this.hits.indexOf(hit));
    this.redraw();
    this.dispatchEvent(new Event('select'));
  }

  // Selects the hit so many rows further on; the first or the last one at the ends.
  move(by) {
    if (!this.hits.length) return;
    const at = this.selected ? this.hits.indexOf(this.selected) : -1;
    const from = at < 0 && by < 0 ? this.hits.length : at;
    this.select(this.hits[Math.min(this.hits.length - 1, Math.max(0, from + by))]);
  }

  get page() {
    return Math.max(1, Math.floor(this.element.clientHeight / rowHeight) - 1);
  }

  bringIntoSight(index) {
    const top = index * rowHeight;
    const {scrollTop, clientHeight} = this.element;
    if (index < 0) return;
    if (top < scrollTop) this.element.scrollTop = top;
    else if (top + rowHeight > scrollTop + clientHeight)
      this.element.scrollTop = top + rowHeight - clientHeight;
  }
}
