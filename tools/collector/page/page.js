// The collector's page: puts its parts together and gives them keys.

import {listen, readHits, reset} from './api.js';
import {Detail} from './detail.js';
import {make, oncePerFrame, showNumber} from './dom.js';
import {Filters} from './filters.js';
import {Hits} from './hits.js';
import {List} from './list.js';
import {Timeline} from './timeline.js';
import {Visitors} from './visitors.js';

const find = id => document.getElementById(id);

const hits = new Hits();
const filters = new Filters(find('filters'));
const list = new List(find('list'));
const timeline = new Timeline(find('timeline'));
const visitors = new Visitors(find('visitors'));
const detail = new Detail(find('detail'), closeDetail);

// --- what is shown --------------------------------------------------------------------------------

let state = 'connecting';

const showCounts = oncePerFrame(() => {
  const {counts, all, shown, held} = hits;
  find('counts').replaceChildren(...['valid', 'note', 'warning', 'error'].map(verdict => {
    const button = make('button', {type: 'button', data: {verdict}, ariaPressed: filters.filter.verdict === verdict},
                        make('b', {}, showNumber(counts.verdict.get(verdict) ?? 0)), ` ${verdict}`);
    button.addEventListener('click', () => filters.set({verdict: filters.filter.verdict === verdict ? '' : verdict}));
    return button;
  }));
  filters.showCounts(counts);
  find('shown').textContent = shown.length === all.length
    ? `${showNumber(all.length)} hits` : `${showNumber(shown.length)} of ${showNumber(all.length)} hits`;
  find('state').textContent = hits.paused ? `paused, ${showNumber(held.length)} waiting` : state;
  find('state').className = hits.paused ? 'paused' : state;
});

function showState(text) {
  state = text;
  showCounts();
}

hits.addEventListener('change', ({detail: {anew}}) => {
  list.explainEmptiness(hits.all.length ? 'No hit passes the filters.' : 'No hit has arrived yet.');
  list.show(hits.shown);
  timeline.show(hits.shown);
  visitors.refresh();
  showCounts();
  if (anew && list.selected) list.bringIntoSight(hits.shown.indexOf(list.selected));
});
hits.addEventListener('hold', showCounts);

// --- what the user does ---------------------------------------------------------------------------

filters.addEventListener('filter', ({detail: filter}) => hits.setFilter(filter));
list.addEventListener('open', openDetail);
list.addEventListener('select', () => { if (detail.isOpen) openDetail(); });
timeline.addEventListener('range', ({detail: range}) => filters.set(range));
timeline.addEventListener('pick', ({detail: hit}) => { showVisitors(false); list.select(hit); openDetail(); });
visitors.addEventListener('choose', ({detail: choice}) => { showVisitors(false); filters.set(choice); });

function openDetail() {
  if (list.selected) detail.show(list.selected.id);
}

function closeDetail() {
  detail.hide();
  find('list').focus();
}

function showVisitors(show) {
  find('visitors').hidden = !show;
  find('list').hidden = show;
  find('view').ariaPressed = show;
  if (show) visitors.load();
}

function pause(paused) {
  hits.pause(paused);
  find('pause').ariaPressed = paused;
  showCounts();
}

function chooseTheme(theme) {
  document.documentElement.dataset.theme = theme;
  localStorage.setItem('theme', theme);
  timeline.redraw();
}

function changeTheme() {
  const isDark = getComputedStyle(document.documentElement).getPropertyValue('color-scheme') === 'dark' ||
    (!document.documentElement.dataset.theme && matchMedia('(prefers-color-scheme: dark)').matches);
  chooseTheme(isDark ? 'light' : 'dark');
}

function leave() {
  if (detail.isOpen) closeDetail();
  else if (!filters.isEmpty) filters.drop();
}

const keys = {
  ArrowDown: () => list.move(1), j: () => list.move(1), ArrowUp: () => list.move(-1), k: () => list.move(-1),
  PageDown: () => list.move(list.page), PageUp: () => list.move(-list.page),
  Home: () => list.move(-Infinity), End: () => list.move(Infinity),
  Enter: openDetail, Escape: leave,
  '/': () => find('filters').elements.text.select(),
  p: () => pause(!hits.paused), v: () => showVisitors(!visitors.isOpen), t: changeTheme,
  '?': () => find('keys').showModal(),
};

// Keys that scroll or press what has the focus are the list's only while it is the list.
const ofTheList = ['ArrowDown', 'ArrowUp', 'PageDown', 'PageUp', 'Home', 'End', 'Enter'];

document.addEventListener('keydown', event => {
  const isTyping = event.target.matches('input, select');
  if (event.ctrlKey || event.altKey || event.metaKey || find('keys').open) return;
  if (isTyping && event.key !== 'Escape') return;
  const isElsewhere = event.target !== document.body && event.target !== find('list');
  if (!(event.key in keys) || (isElsewhere && ofTheList.includes(event.key))) return;
  if (isTyping) find('list').focus();
  event.preventDefault();
  keys[event.key]();
});

find('view').addEventListener('click', keys.v);
find('pause').addEventListener('click', keys.p);
find('theme').addEventListener('click', changeTheme);
find('help').addEventListener('click', keys['?']);
find('reset').addEventListener('click', () => { if (confirm('Forget all hits, those of the database, too?')) reset(); });

// --- what arrives ---------------------------------------------------------------------------------

let arrived = [];
const takeArrived = oncePerFrame(() => hits.add(arrived.splice(0)));

function forgetAll() {
  arrived = [];
  list.selected = null;
  detail.hide();
  hits.clear();
}

async function begin() {
  showState('loading');
  forgetAll();
  for await (const piece of readHits({})) hits.add(piece);
  listen(hits.lastId, {
    onHit: hit => { arrived.push(hit); takeArrived(); },
    onReset: forgetAll,
    onOpen: () => showState('live'),
    onLost: beginAgain,
  });
}

// Whoever answers next may be another collector, with other hits.
function beginAgain() {
  showState('lost');
  setTimeout(() => begin().catch(beginAgain), 1000);
}

if (localStorage.getItem('theme')) chooseTheme(localStorage.getItem('theme'));
hits.setFilter(filters.filter);
begin().catch(beginAgain);
