// Which rows of a table are shown, and in which order.
import type {Rows} from "./rows";
import {selected, Slicer, sorted} from "./slices";
import {number, plain} from "./text";

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
const FEW = 1000; // different values: each is compared with the others once, not row by row
export const natural = new Intl.Collator("en", {numeric: true});

// Orders rows by a column: numbers first, as numbers.
export async function comparison(
  rows: Rows,
  column: number,
  slicer: Slicer,
): Promise<(a: number, b: number) => number> {
  const text = (row: number) => plain(rows.cell(row, column)).trim();
  const numbers = new Float64Array(rows.count);
  const values = new Map<string, number>();
  const firsts: number[] = []; // a row of each value
  const places = new Int32Array(rows.count); // of each row's value in there
  for (let row = 0; row < rows.count; ++row) {
    numbers[row] = number(rows.cell(row, column));
    if (firsts.length <= FEW) {
      const value = text(row);
      let place = values.get(value);
      if (place === undefined) {
        place = firsts.push(row) - 1;
        values.set(value, place);
      }
      places[row] = place;
    }
    if (row % 256 === 255 && slicer.due) await slicer.rest();
  }
  const isFew = firsts.length <= FEW;
  // "disk 9" before "disk 10" costs too much where there are many.
  const texts = rows.count > MANY && !isFew ? (a: string, b: string) => (a < b ? -1 : a > b ? 1 : 0) : natural.compare;
  const compare = (a: number, b: number) => {
    const x = numbers[a]!;
    const y = numbers[b]!;
    const isX = !Number.isNaN(x);
    const isY = !Number.isNaN(y);
    if (isX && isY) return x - y;
    if (isX !== isY) return isX ? -1 : 1;
    return texts(text(a), text(b));
  };
  if (!isFew) return compare;
  const ranks = new Int32Array(firsts.length);
  let [rank, last] = [0, -1];
  for (const row of firsts.slice().sort(compare)) {
    if (last >= 0 && compare(last, row) !== 0) ++rank;
    ranks[places[row]!] = rank;
    last = row;
  }
  return (a, b) => ranks[places[a]!]! - ranks[places[b]!]!;
}

export async function shownRows(rows: Rows, wanted: Wanted, signal: AbortSignal): Promise<Int32Array> {
  const slicer = new Slicer(signal);
  const all = tests(rows, wanted);
  let shown = await selected(rows.count, row => all.every(test => test(row)), slicer);
  if (wanted.sort) {
    const {column, ascending} = wanted.sort;
    const compare = await comparison(rows, column, slicer);
    shown = await sorted(shown, ascending ? compare : (a, b) => compare(b, a), slicer);
  }
  return shown;
}
