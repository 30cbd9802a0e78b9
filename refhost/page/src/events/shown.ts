// Which events are shown, in which order, the repeated ones folded.
import {selected, Slicer, sorted} from "../base/slices";
import {plain} from "../base/text";
import {comparison} from "../base/view_rows";
import {SEVERITY, SOURCE, SUBJECT, TEXT, TIME} from "./event";
import type {EventList} from "./list";

export interface WantedEvents {
  text: string;
  severities: string[]; // empty: all
  source: string; // empty: all
  from: number; // NaN: no limit
  to: number; // the first moment that is not wanted
  folded: boolean;
  sort: {column: number; ascending: boolean};
}

export interface ShownEvents {
  order: Int32Array; // of those that are folded the first, as sorted
  found: number; // without folding
  times: Int32Array; // by row of `order`: how often
  others: Int32Array; // by row of `order`: the last one of its kind
  bins: Bins;
}

export const BINS = 72;
export const LEVELS = ["critical", "warning", ""]; // the last: all others

export interface Bins {
  start: number;
  end: number;
  counts: Int32Array; // LEVELS for each bin
}

function passes(list: EventList, wanted: WantedEvents): (row: number) => boolean {
  const {rows, times, isDated} = list;
  const words = wanted.text
    .toLowerCase()
    .split(/\s+/)
    .filter(word => word !== "");
  const severities = new Set(wanted.severities);
  const all: ((row: number) => boolean)[] = [];
  if (severities.size > 0) all.push(row => severities.has(plain(rows.cell(row, SEVERITY))));
  if (wanted.source !== "") all.push(row => rows.cell(row, SOURCE) === wanted.source);
  if (!Number.isNaN(wanted.from)) all.push(row => isDated[row] === 1 && times[row]! >= wanted.from);
  if (!Number.isNaN(wanted.to)) all.push(row => isDated[row] === 1 && times[row]! < wanted.to);
  if (words.length > 0)
    all.push(row => {
      const text = `${rows.cell(row, SUBJECT) ?? ""} ${rows.cell(row, TEXT) ?? ""}`.toLowerCase();
      return words.every(word => text.includes(word));
    });
  return row => all.every(test => test(row));
}

// By time the later first, of one time the one that its source has later. Those without any time are the oldest.
function byTime({times}: EventList, ascending: boolean): (a: number, b: number) => number {
  const when = (row: number) => (Number.isNaN(times[row]) ? -Infinity : times[row]!);
  const later = (a: number, b: number) => {
    const [x, y] = [when(a), when(b)];
    return x === y ? b - a : y - x;
  };
  return ascending ? (a, b) => later(b, a) : later;
}

const KIND = [SEVERITY, SOURCE, SUBJECT, TEXT];

// Leaves the first of those that say the same. Found by a hash of what they say, since a map of a million texts
// would take more memory than the texts. Severities and sources are few: only same() looks at them.
async function folded(list: EventList, order: Int32Array, slicer: Slicer) {
  const {rows} = list;
  const times = new Int32Array(list.count);
  const others = new Int32Array(list.count);
  const places = new Int32Array(2 ** Math.ceil(Math.log2(order.length * 2 + 2))).fill(-1);
  const kept = new Int32Array(order.length);
  let size = 0;
  const hash = (row: number) => {
    let sum = 0x811c9dc5;
    for (const column of [SUBJECT, TEXT]) {
      const text = plain(rows.cell(row, column));
      for (let at = 0; at < text.length; ++at) sum = Math.imul(sum ^ text.charCodeAt(at), 0x01000193);
      sum = Math.imul(sum ^ 0x1f, 0x01000193);
    }
    return sum >>> 0;
  };
  const same = (a: number, b: number) => KIND.every(column => rows.cell(a, column) === rows.cell(b, column));
  for (let at = 0; at < order.length; ++at) {
    const row = order[at]!;
    let place = hash(row) & (places.length - 1);
    while (places[place] !== -1 && !same(places[place]!, row)) place = (place + 1) & (places.length - 1);
    if (places[place] === -1) {
      places[place] = row;
      kept[size++] = row;
    }
    const first = places[place]!;
    times[first] = times[first]! + 1;
    others[first] = row;
    if (at % 256 === 255 && slicer.due) await slicer.rest();
  }
  return {order: kept.slice(0, size), times, others};
}

async function binned(list: EventList, rows: Int32Array, wanted: WantedEvents, slicer: Slicer): Promise<Bins> {
  let [start, end] = [Infinity, -Infinity];
  for (const row of rows) {
    if (list.isDated[row] === 0) continue;
    start = Math.min(start, list.times[row]!);
    end = Math.max(end, list.times[row]! + 1);
  }
  if (!Number.isNaN(wanted.from)) start = wanted.from;
  if (!Number.isNaN(wanted.to)) end = wanted.to;
  const counts = new Int32Array(BINS * LEVELS.length);
  if (!(start < end)) return {start: NaN, end: NaN, counts};
  for (let at = 0; at < rows.length; ++at) {
    const row = rows[at]!;
    if (list.isDated[row] === 1) {
      const bin = Math.min(BINS - 1, Math.floor(((list.times[row]! - start) / (end - start)) * BINS));
      const level = LEVELS.indexOf(plain(list.rows.cell(row, SEVERITY)));
      const place = bin * LEVELS.length + (level < 0 ? LEVELS.length - 1 : level);
      counts[place] = counts[place]! + 1;
    }
    if (at % 256 === 255 && slicer.due) await slicer.rest();
  }
  return {start, end, counts};
}

export async function shownEvents(list: EventList, wanted: WantedEvents, signal: AbortSignal): Promise<ShownEvents> {
  const slicer = new Slicer(signal);
  await list.grow(slicer);
  const found = await selected(list.count, passes(list, wanted), slicer);
  const {column, ascending} = wanted.sort;
  const other = column === TIME ? undefined : await comparison(list.rows, column, slicer);
  const compare =
    other === undefined ? byTime(list, ascending) : ascending ? other : (a: number, b: number) => other(b, a);
  const order = await sorted(found, compare, slicer);
  const bins = await binned(list, found, wanted, slicer);
  if (!wanted.folded) return {order, found: found.length, times: new Int32Array(0), others: new Int32Array(0), bins};
  return {...(await folded(list, order, slicer)), found: found.length, bins};
}
