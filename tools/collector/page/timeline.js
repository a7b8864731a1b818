// A plot of the shown hits over time: a lane for each visitor, a bar for each session, a stroke for
// each hit. Where many fall on one pixel the stroke is higher; a repeated one has a ring.

import {oncePerFrame, showDay, showDuration, showTime, visible} from './dom.js';

const laneHeight = 24;
const axisHeight = 18;
const labelWidth = 150;
const mostLanes = 40; // beyond, visitors share the last lane
const heaviest = ['valid', 'note', 'warning', 'error'];
const steps = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 15e3, 30e3, 60e3, 120e3, 300e3, 900e3,
               1800e3, 3600e3, 7200e3, 21600e3, 43200e3, 86400e3, 604800e3];

class Lane {
  sessions = new Map(); // number to {first, last}
  strokes = new Map();  // pixel to {count, weight, repeated, hit}

  constructor(name) {
    this.name = name;
  }

  add(hit, x) {
    const session = this.sessions.get(hit.visitor + hit.session);
    if (session) session.last = x;
    else this.sessions.set(hit.visitor + hit.session, {first: x, last: x});
    const stroke = this.strokes.get(x) ?? {count: 0, weight: 0, repeated: false, hit};
    stroke.count += 1;
    stroke.weight = Math.max(stroke.weight, heaviest.indexOf(hit.verdict));
    stroke.repeated ||= hit.codes.includes('twice');
    this.strokes.set(x, stroke);
  }
}

// Events: "range" with {from, to} in milliseconds when a stretch was dragged over, "pick" with a hit.
export class Timeline extends EventTarget {
  hits = [];

  constructor(element) {
    super();
    this.canvas = element.querySelector('canvas');
    this.caption = element.querySelector('p');
    this.redraw = oncePerFrame(() => this.draw());
    new ResizeObserver(this.redraw).observe(element);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', this.redraw);
    this.canvas.addEventListener('pointerdown', event => this.begin(event));
    this.canvas.addEventListener('pointermove', event => this.follow(event));
    this.canvas.addEventListener('pointerup', event => this.end(event));
    this.canvas.addEventListener('pointercancel', () => { this.drag = null; this.redraw(); });
  }

  show(hits) {
    this.hits = hits;
    if (hits.length < 5000) this.redraw();
    else this.later ??= setTimeout(() => { this.later = null; this.redraw(); }, 250);
  }

  getX(time) {
    return labelWidth + Math.round((time - this.first) / this.span * (this.width - labelWidth - 8));
  }

  getTime(x) {
    return this.first + (x - labelWidth) / (this.width - labelWidth - 8) * this.span;
  }

  // Clocks can be set back while hits arrive: the first is not always the earliest.
  measure() {
    this.first = Infinity;
    let last = -Infinity;
    for (const {time} of this.hits) {
      if (time < this.first) this.first = time;
      if (time > last) last = time;
    }
    this.span = Math.max(1, last - this.first);
    this.width = this.canvas.parentElement.clientWidth;
  }

  sort() {
    this.lanes = [];
    const byName = new Map();
    for (const hit of this.hits) {
      const name = `${hit.tracker} ${hit.visitor}`;
      let lane = byName.get(name);
      if (!lane) {
        if (this.lanes.length < mostLanes) this.lanes.push(new Lane(name));
        lane = this.lanes[this.lanes.length - 1];
        byName.set(name, lane);
      }
      lane.add(hit, this.getX(hit.time));
    }
    if (byName.size > mostLanes) this.lanes[mostLanes - 1].name = `${byName.size - mostLanes + 1} others`;
  }

  draw() {
    this.measure();
    this.sort();
    const height = this.lanes.length * laneHeight + axisHeight;
    const scale = devicePixelRatio;
    this.canvas.width = this.width * scale;
    this.canvas.height = height * scale;
    this.canvas.style.height = `${height}px`;
    this.canvas.dataset.lanes = this.lanes.length;
    if (!this.hits.length) {
      this.caption.textContent = '';
      return;
    }
    const pen = this.canvas.getContext('2d');
    pen.scale(scale, scale);
    pen.font = '12px system-ui, sans-serif';
    this.drawAxis(pen, height);
    this.lanes.forEach((lane, index) => this.drawLane(pen, lane, axisHeight + index * laneHeight));
    if (this.drag) this.drawDrag(pen, height);
    this.describe();
  }

  // Colours come as light-dark(): the style of an element resolves them.
  resolve(name) {
    this.canvas.style.color = `var(--${name})`;
    return getComputedStyle(this.canvas).color;
  }

  drawAxis(pen, height) {
    const wanted = this.span / Math.max(1, (this.width - labelWidth) / 110);
    const step = steps.find(one => one >= wanted) ?? steps[steps.length - 1];
    const shift = new Date(this.first).getTimezoneOffset() * 60_000;
    const line = this.resolve('line');
    const text = this.resolve('dim');
    for (let time = Math.ceil((this.first - shift) / step) * step + shift; time <= this.first + this.span; time += step) {
      const x = this.getX(time);
      pen.fillStyle = line;
      pen.fillRect(x, axisHeight, 1, height - axisHeight);
      pen.fillStyle = text;
      const label = step >= 86400e3 ? showDay(time) : showTime(time).slice(0, step < 1000 ? 12 : 8);
      if (x + pen.measureText(label).width <= this.width) pen.fillText(label, x, axisHeight - 6);
    }
  }

  drawLane(pen, lane, top) {
    const middle = top + laneHeight / 2;
    pen.fillStyle = this.resolve('dim');
    pen.fillText(visible(lane.name, 20), 4, middle + 4, labelWidth - 12);
    pen.fillStyle = this.resolve('session');
    for (const {first, last} of lane.sessions.values()) {
      pen.beginPath();
      pen.roundRect(first - 4, top + 3, last - first + 8, laneHeight - 6, 4);
      pen.fill();
    }
    const colours = heaviest.map(name => this.resolve(name));
    for (const [x, {count, weight, repeated}] of lane.strokes) {
      const half = Math.min(laneHeight / 2 - 1, 4 + 2 * Math.log2(count));
      pen.fillStyle = pen.strokeStyle = colours[weight];
      pen.fillRect(x - 1, middle - half, 2, 2 * half);
      if (!repeated) continue;
      pen.lineWidth = 2;
      pen.beginPath();
      pen.arc(x, middle, 6, 0, 2 * Math.PI);
      pen.stroke();
    }
  }

  drawDrag(pen, height) {
    pen.globalAlpha = 0.25;
    pen.fillStyle = this.resolve('accent');
    pen.fillRect(Math.min(this.drag.from, this.drag.to), 0, Math.abs(this.drag.to - this.drag.from), height);
    pen.globalAlpha = 1;
  }

  describe() {
    const visitors = this.lanes.length === 1 ? '1 lane' : `${this.lanes.length} lanes`;
    this.caption.textContent = `${visitors} over ${showDuration(this.span)}. Drag to look closer, click for a hit.`;
  }

  begin(event) {
    if (event.button !== 0 || !this.hits.length) return;
    this.canvas.setPointerCapture(event.pointerId);
    this.drag = {from: event.offsetX, to: event.offsetX};
  }

  follow(event) {
    if (this.drag) {
      this.drag.to = event.offsetX;
      this.redraw();
      return;
    }
    const stroke = this.findStroke(event);
    if (!stroke) return this.hits.length ? this.describe() : undefined;
    const {count, hit} = stroke;
    const more = count > 1 ? ` and ${count - 1} more` : '';
    this.caption.textContent = `${showTime(hit.time)} ${visible(hit.sentence, 120)}${more}`;
  }

  end(event) {
    if (!this.drag) return;
    const {from, to} = this.drag;
    this.drag = null;
    this.redraw();
    if (Math.abs(to - from) > 4) {
      const [start, stop] = [from, to].sort((a, b) => a - b).map(x => Math.round(this.getTime(x)));
      this.dispatchEvent(new CustomEvent('range', {detail: {from: start, to: stop}}));
      return;
    }
    const stroke = this.findStroke(event);
    if (stroke) this.dispatchEvent(new CustomEvent('pick', {detail: stroke.hit}));
  }

  // The stroke nearest to the pointer, within a few pixels.
  findStroke({offsetX, offsetY}) {
    const lane = this.lanes?.[Math.floor((offsetY - axisHeight) / laneHeight)];
    for (let distance = 0; lane && distance < 6; ++distance)
      for (const x of [offsetX - distance, offsetX + distance])
        if (lane.strokes.has(Math.round(x))) return lane.strokes.get(Math.round(x));
    return null;
  }
}
