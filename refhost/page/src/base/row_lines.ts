// Which line of its capture each row of a table stands in, where that is certain. Records do not say it; it is
// found again in the text, and nothing is said of rows that could stand in more than one place.
import {loadCapture} from "./load";
import type {Capture} from "./report";
import type {Rows} from "./rows";
import {Slicer} from "./slices";
import {plain} from "./text";

// What is left of a line or a row without its blanks and separators.
const bare = (text: string) => text.replace(/[|\s]+/g, " ").trim();

const SHORTEST = 6; // characters of a value that alone tells a line

// Rows that are whole lines: the line has the row's values in their order and nothing else. Rows that say the same
// stand in as many lines, in the same order.
async function wholeLines(rows: Rows, lines: string[], slicer: Slicer): Promise<Int32Array> {
  const places = new Map<string, {rows: number[]; lines: number[]}>();
  for (let row = 0; row < rows.count; ++row) {
    const text = bare(rows.record(row).map(plain).join(" "));
    const known = places.get(text);
    if (known) known.rows.push(row);
    else if (text !== "") places.set(text, {rows: [row], lines: []});
    if (row % 256 === 255 && slicer.due) await slicer.rest();
  }
  for (const [at, line] of lines.entries()) {
    places.get(bare(line))?.lines.push(at + 1);
    if (at % 256 === 255 && slicer.due) await slicer.rest();
  }
  const found = new Int32Array(rows.count);
  for (const place of places.values()) {
    if (place.rows.length !== place.lines.length) continue;
    for (const [at, row] of place.rows.entries()) found[row] = place.lines[at]!;
  }
  return found;
}

interface Said {
  values: string[];
  lines: number[];
}

// "KEY: VALUE" and "KEY = VALUE": for each key its values from top to bottom.
async function saidByKeys(lines: string[], slicer: Slicer): Promise<Map<string, Said>> {
  const keys = new Map<string, Said>();
  for (const [at, line] of lines.entries()) {
    const [, key, value] = /^\s*([^:=]*[^:=\s])\s*[:=]\s*(.*?)\s*$/.exec(line) ?? [];
    if (key !== undefined && value !== undefined) {
      const said = keys.get(key) ?? {values: [], lines: []};
      said.values.push(bare(value));
      said.lines.push(at + 1);
      keys.set(key, said);
    }
    if (at % 256 === 255 && slicer.due) await slicer.rest();
  }
  return keys;
}

// Where in the values of a key those of a column stand, one after another.
function placesOf(values: string[], within: string[]): number[] {
  const places: number[] = [];
  for (let at = within.indexOf(values[0]!); at >= 0; at = within.indexOf(values[0]!, at + 1))
    if (values.every((value, nth) => within[at + nth] === value)) places.push(at);
  return places;
}

// Rows of several lines: a column of which each value is another one, and one key that says these values in this
// order, in one place. A row stands where its own value does.
function keyedLines(rows: Rows, keys: Map<string, Said>): Int32Array | undefined {
  for (let column = 0; column < rows.table.columns.length; ++column) {
    const values = Array.from({length: rows.count}, (_, row) => bare(plain(rows.cell(row, column))));
    if (new Set(values).size < values.length || values.some(value => value.length < SHORTEST)) continue;
    const all = [...keys.values()].flatMap(said => placesOf(values, said.values).map(place => ({said, place})));
    if (all.length !== 1) continue;
    const {said, place} = all[0]!;
    return Int32Array.from(values, (_, row) => said.lines[place + row]!);
  }
  return undefined;
}

// For each row its line, counted from 1; 0: not certain.
export async function linesOf(rows: Rows, text: string, slicer: Slicer): Promise<Int32Array> {
  const lines = text.split("\n");
  const whole = await wholeLines(rows, lines, slicer);
  if (whole.some(line => line > 0)) return whole;
  return keyedLines(rows, await saidByKeys(lines, slicer)) ?? whole;
}

const known = new WeakMap<Rows, Promise<Int32Array>>();

// Of a capture that is not shown to its end nothing is certain.
export function rowLines(rows: Rows, capture: Capture | undefined): Promise<Int32Array> {
  const none = () => Promise.resolve(new Int32Array(rows.count));
  if (capture === undefined || capture.data === "" || capture.shown < capture.size) return none();
  if (rows.count < rows.table.records) return none();
  const found =
    known.get(rows) ?? loadCapture(capture).then(text => linesOf(rows, text, new Slicer(new AbortController().signal)));
  known.set(rows, found);
  found.catch(() => known.delete(rows));
  return found;
}
