// An event of any source, and when it happened.
import type {Rows} from "../base/rows";
import {plain} from "../base/text";

// The columns, in the order in which event_data.cpp writes them.
export const TIME = 0;
export const TIME_UTC = 1;
export const SEVERITY = 2;
export const SOURCE = 3;
export const SUBJECT = 4;
export const TEXT = 5;
export const CAPTURE = 6;
export const LINE = 7;

export interface Event {
  row: number;
  time: string; // as its source's clock said it; empty: it had none
  time_utc: string;
  severity: string;
  source: string;
  subject: string;
  text: string;
  capture: string;
  line: number;
}

// A clock that nobody has set begins in 1970: what it says is no time.
const FIRST = Date.UTC(2000, 0, 1);

// Milliseconds since 1970, taking a written time for UTC; NaN: no clock.
export function timeOf(text: string): number {
  const time = text === "" ? NaN : Date.parse(`${text.replace(/Z$/, "")}Z`);
  return time < FIRST ? NaN : time;
}

export function eventAt(rows: Rows, row: number): Event {
  const text = (column: number) => plain(rows.cell(row, column));
  const time = text(TIME);
  return {
    row,
    time: Number.isNaN(timeOf(time)) ? "" : time,
    time_utc: text(TIME_UTC),
    severity: text(SEVERITY),
    source: text(SOURCE),
    subject: text(SUBJECT),
    text: text(TEXT),
    capture: text(CAPTURE),
    line: Number(rows.cell(row, LINE) ?? 0),
  };
}

// "CAPTURE@LINE".
export function captureAt(text: string): [capture: string, line: number] {
  const [, capture, line] = /^(.*)@(\d+)$/s.exec(text) ?? [text, text, "0"];
  return [capture!, Number(line)];
}
