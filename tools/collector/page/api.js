// The collector's HTTP interface (docs/collector-api.md).

async function ask(path, options) {
  const answer = await fetch(path, options);
  const body = await answer.json();
  if (!answer.ok) throw new Error(body.error ?? answer.statusText);
  return body;
}

function query(parameters) {
  const given = Object.entries(parameters).filter(([, value]) => value !== '');
  return new URLSearchParams(given).toString();
}

export const getHit = id => ask(`/api/hits/${id}`);
export const getVisitors = async () => (await ask('/api/visitors')).visitors;
export const reset = () => ask('/api/reset', {method: 'POST'});
export const exportAddress = (format, filter) => `/api/export?${query({format, ...filter})}`;

// All hits that `filter` chooses beyond the id `after`, in pieces, so that the page stays awake.
export async function* readHits(filter, after = 0, signal = undefined) {
  for (;;) {
    const {hits, more} = await ask(`/api/hits?${query({...filter, after, limit: 5000})}`, {signal});
    if (hits.length) yield hits;
    if (!more) return;
    after = hits[hits.length - 1].id;
  }
}

// What arrives after the hit `after`: calls `onHit` with a summary, `onReset`, `onOpen` once the
// collector answers and `onLost`, the last call, when it does not any more.
export function listen(after, {onHit, onReset, onOpen, onLost}) {
  const events = new EventSource(`/api/events?after=${after}`);
  events.addEventListener('hit', event => onHit(JSON.parse(event.data)));
  events.addEventListener('reset', onReset);
  events.addEventListener('open', onOpen);
  events.addEventListener('error', () => {
    events.close();
    onLost();
  });
}
