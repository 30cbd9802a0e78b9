// Which rows of a table are shown, and in which order.
import type {Rows} from "./data";
import {number, plain} from "./text";
import {selected, Slicer, sorted} from "./slices";

export interface Sort {
  column: number;
  ascending: boolean;
}

export interface Wanted {
  search: string; // in any column
  filters: Map<number, string>; // by column
  sort: Sort | null;
}

export const everything = (): Wanted => ({search: "", filters: new Map(), sort: null});

type Test = (row: number) => boolean;

// "text" anywhere in it, "=text" all of it, "<5" and ">5" for numbers, "!..." the opposite.
export function cellTest(filter: string): (value: string | number | null) => boolean {
  const text = filter.trim().toLowerCase();
  if (text.startsWith("!") && text.length > 1) {
    const inner = cellTest(text.slice(1));
    return value => !inner(value);
  }
  const limit = number(text.slice(1));
  if (text.startsWith("<") && !Number.isNaN(limit)) return value => number(value) < limit;
  if (text.startsWith(">") && !Number.isNaN(limit)) return value => number(value) > limit;
  if (text.startsWith("=")) {
    const whole = text.slice(1).trim();
    return value => plain(value).trim().toLowerCase() === whole;
  }
  return value => plain(value).toLowerCase().includes(text);
}

export function searchTest(rows: Rows, search: string): Test {
  const words = search
    .toLowerCase()
    .split(/\s+/)
    .filter(word => word !== "");
  const columns = rows.table.columns.map((_, column) => column);
  return row => words.every(word => columns.some(column => plain(rows.cell(row, column)).toLowerCase().includes(word)));
}

function tests(rows: Rows, wanted: Wanted): Test[] {
  const all: Test[] = [];
  if (wanted.search.trim() !== "") all.push(searchTest(rows, wanted.search));
  for (const [column, filter] of wanted.filters) {
    if (filter.trim() === "") continue;
    const test = cellTest(filter);
    all.push(row => test(rows.cell(row, column)));
  }
  return all;
}

const MANY = 100_000;
export const natural = new Intl.Collator("en", {numeric: true});

export function comparison(rows: Rows, column: number): (a: number, b: number) => number {
  const numbers = new Float64Array(rows.count);
  for (let row = 0; row < rows.count; ++row) numbers[row] = number(rows.cell(row, column));
  // "disk 9" before "disk 10" costs too much where there are many.
  const texts = rows.count > MANY ? (a: string, b: string) => (a < b ? -1 : a > b ? 1 : 0) : natural.compare;
  return (a, b) => {
    const x = numbers[a]!;
    const y = numbers[b]!;
    const isX = !Number.isNaN(x);
    const isY = !Number.isNaN(y);
    if (isX && isY) return x - y;
    if (isX !== isY) return isX ? -1 : 1;
    return texts(plain(rows.cell(a, column)).trim(), plain(rows.cell(b, column)).trim());
  };
}

export async function shownRows(rows: Rows, wanted: Wanted, signal: AbortSignal): Promise<Int32Array> {
  const slicer = new Slicer(signal);
  const all = tests(rows, wanted);
  let shown = await selected(rows.count, row => all.every(test => test(row)), slicer);
  if (wanted.sort) {
    const {column, ascending} = wanted.sort;
    const compare = comparison(rows, column);
    shown = await sorted(shown, ascending ? compare : (a, b) => compare(b, a), slicer);
  }
  return shown;
}
