// How the report is loaded. The overview comes with the page; rows and captures lie in files of their own, each a script
// that calls qv.rows() or qv.capture(), because a page opened from disk may load scripts but not fetch files.
import type {Capture, Overview, Table, Value} from "./report";
import {Rows} from "./rows";

// A column that repeats a few values has each of them once.
type ArrivedColumn = Value[] | {words: Value[]; at: number[]};

interface Arrived {
  count: number;
  names: [number, string, number][];
  columns: ArrivedColumn[];
}

let arrived: Arrived | string | undefined;
let onOverview: (overview: Overview) => void = () => {};

declare global {
  interface Window {
    qv: {
      overview(json: string): void;
      rows(json: string): void;
      capture(json: string): void;
    };
  }
}

window.qv = {
  overview: json => onOverview(JSON.parse(json) as Overview),
  rows: json => {
    arrived = JSON.parse(json) as Arrived;
  },
  capture: json => {
    arrived = JSON.parse(json) as string;
  },
};

export function whenOverviewComes(take: (overview: Overview) => void): void {
  onOverview = take;
}

// Scripts load one after another, so that what arrives is what was asked for.
let queue: Promise<unknown> = Promise.resolve();

function load(file: string): Promise<Arrived | string> {
  const next = queue.then(
    () =>
      new Promise<Arrived | string>((resolve, reject) => {
        const script = document.createElement("script");
        arrived = undefined;
        script.src = file;
        script.onload = () => {
          script.remove();
          if (arrived === undefined) reject(new Error(`${file} is damaged`));
          else resolve(arrived);
          arrived = undefined;
        };
        script.onerror = () => {
          script.remove();
          reject(new Error(`${file} is missing beside this page`));
        };
        document.head.append(script);
      }),
  );
  queue = next.catch(() => {});
  return next;
}

const values = (column: ArrivedColumn): Value[] =>
  Array.isArray(column) ? column : column.at.map(at => column.words[at] ?? null);

const loading = new Map<Table, {rows: Rows; all: Promise<Rows>}>();

// Loads a table's rows, once. `progress` is called for each part that arrives.
export function loadRows(table: Table, progress?: (rows: Rows) => void): Promise<Rows> {
  const known = loading.get(table);
  if (known) {
    if (known.rows.count > 0) progress?.(known.rows);
    return known.all;
  }
  const rows = new Rows(table);
  const all = (async () => {
    for (const file of table.chunks) {
      const part = (await load(file)) as Arrived;
      let first = rows.count;
      for (const [count, name, index] of part.names) {
        rows.names.push({first, name, index});
        first += count;
      }
      rows.add(part.columns.map(values), part.count);
      progress?.(rows);
    }
    return rows;
  })();
  loading.set(table, {rows, all});
  all.catch(() => loading.delete(table));
  return all;
}

const captures = new Map<string, Promise<string>>();

export function loadCapture(capture: Capture): Promise<string> {
  const known = captures.get(capture.data) ?? (load(capture.data) as Promise<string>);
  captures.set(capture.data, known);
  return known;
}
