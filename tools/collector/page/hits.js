// The hits that the page holds, and which of them the filters choose.

import {readHits} from './api.js';

export const mostHits = 200_000; // beyond, the oldest leave the page, not the database

export const noFilter = {tracker: '', kind: '', product: '', verdict: '', text: '',
                         visitor: '', session: '', from: '', to: ''};

const weight = {valid: 0, note: 1, warning: 2, error: 3};

// How many hits have each value of something.
class Counter extends Map {
  add(value, by) {
    const count = (this.get(value) ?? 0) + by;
    if (count > 0) this.set(value, count);
    else this.delete(value);
  }
}

function matchesVerdict(hit, verdict) {
  if (verdict === 'invalid') return weight[hit.verdict] >= weight.warning;
  return verdict in weight ? hit.verdict === verdict : hit.codes.includes(verdict);
}

// Events: "change" when other hits are shown, "hold" when one arrives during a pause.
export class Hits extends EventTarget {
  all = [];
  shown = [];
  filter = {...noFilter};
  held = []; // arrived during a pause
  paused = false;
  forget = () => {};

  constructor() {
    super();
    this.clear();
  }

  clear() {
    this.all = [];
    this.shown = [];
    this.held = [];
    this.lastId = 0;
    this.searchedTo = 0;
    this.found = this.filter.text ? new Set() : null; // ids that hold the searched text; null: no text is searched
    this.counts = {tracker: new Counter(), kind: new Counter(), product: new Counter(),
                   verdict: new Counter(), code: new Counter()};
    this.changed(true);
  }

  // Hits in the order of arrival.
  add(hits) {
    if (hits.length) this.lastId = hits[hits.length - 1].id;
    if (this.paused) {
      this.held.push(...hits);
      this.dispatchEvent(new Event('hold'));
      return;
    }
    for (const hit of hits) this.count(hit, 1);
    this.all.push(...hits);
    const tooMany = this.all.length - mostHits;
    if (tooMany > 0) {
      for (const hit of this.all.splice(0, tooMany)) this.count(hit, -1);
      this.choose();
      return;
    }
    if (this.found) this.search();
    else {
      for (const hit of hits) if (this.matches(hit)) this.shown.push(hit);
      this.changed(false);
    }
  }

  pause(paused) {
    this.paused = paused;
    if (!paused) this.add(this.held.splice(0));
  }

  setFilter(filter) {
    const searched = filter.text !== this.filter.text;
    this.filter = filter;
    if (searched) {
      this.found = filter.text ? new Set() : null;
      this.searchedTo = 0;
      if (this.found) this.search();
    }
    this.choose();
  }

  // The texts of targets and bodies are the collector's: it is asked which hits hold the text.
  async search() {
    this.forget();
    const stop = new AbortController();
    this.forget = () => stop.abort();
    const found = this.found;
    try {
      for await (const hits of readHits({text: this.filter.text}, this.searchedTo, stop.signal)) {
        if (found !== this.found) return;
        for (const hit of hits) found.add(hit.id);
        this.searchedTo = hits[hits.length - 1].id;
      }
      this.choose();
    } catch (failure) {
      if (failure.name !== 'AbortError') throw failure;
    }
  }

  choose() {
    this.shown = this.all.filter(hit => this.matches(hit));
    this.changed(true);
  }

  matches(hit) {
    const {tracker, kind, product, verdict, visitor, session, from, to} = this.filter;
    return (!tracker || hit.tracker === tracker) && (!kind || hit.kind === kind) &&
      (!product || hit.product === product) && (!verdict || matchesVerdict(hit, verdict)) &&
      (!visitor || hit.visitor === visitor) && (!session || hit.session === session) &&
      (!from || hit.time >= from) && (!to || hit.time <= to) &&
      (!this.found || this.found.has(hit.id));
  }

  count(hit, by) {
    for (const what of ['tracker', 'kind', 'product', 'verdict']) this.counts[what].add(hit[what], by);
    for (const code of hit.codes) this.counts.code.add(code, by);
  }

  // `anew`: the list is another one, not the old one with more at its end.
  changed(anew) {
    this.dispatchEvent(new CustomEvent('change', {detail: {anew}}));
  }
}
