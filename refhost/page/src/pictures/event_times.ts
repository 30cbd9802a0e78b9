// Events with their time and class, from rows as the tools print them.
import {valueReader, type Rows} from "../data";
import {oneLine, plain, trimmed} from "../text";

export interface Event {
  time: number; // milliseconds since 1970, taking the written time for UTC; NaN: none, or no clock
  lane: string;
  table: string;
  row: number;
  text: string;
}

export interface Lane {
  id: string;
  title: string;
  level: "bad" | "poor" | "good" | "minor";
}

const MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

// A clock that nobody has set begins in 1970: what it says is no time.
const FIRST = Date.UTC(2000, 0, 1);

function clockTime(time: number): number {
  return time < FIRST ? NaN : time;
}

// "Tue Nov 17 21:12:03 2026", as storcli dates events once the host has told it the time.
const WRITTEN = /^[A-Z][a-z]{2} ([A-Z][a-z]{2}) +(\d{1,2}) (\d{2}):(\d{2}):(\d{2}) (\d{4})$/;

export function writtenTime(text: string): number {
  const match = WRITTEN.exec(text);
  const month = match ? MONTHS.indexOf(match[1]!) : -1;
  if (!match || month < 0) return NaN;
  return clockTime(
    Date.UTC(Number(match[6]), month, Number(match[2]), Number(match[3]), Number(match[4]), Number(match[5])),
  );
}

// storcli's event classes, as its manual numbers them.
const CLASSES: Lane[] = [
  {id: "4", title: "4, dead", level: "bad"},
  {id: "3", title: "3, fatal", level: "bad"},
  {id: "2", title: "2, critical", level: "bad"},
  {id: "1", title: "1, warning", level: "poor"},
  {id: "0", title: "0, information", level: "good"},
  {id: "-1", title: "-1, progress", level: "minor"},
  {id: "-2", title: "-2, debug", level: "minor"},
];

export function controllerEvents(logs: Rows[]): {events: Event[]; lanes: Lane[]} {
  const events: Event[] = [];
  for (const rows of logs) {
    const value = valueReader(rows);
    for (let row = 0; row < rows.count; ++row) {
      events.push({
        time: writtenTime(plain(value(row, "Time")).trim()),
        lane: trimmed(value(row, "Class")),
        table: rows.table.id,
        row,
        text: oneLine(value(row, "EventDescription")),
      });
    }
  }
  return {events, lanes: withOthers(CLASSES, events)};
}

// ipmiutil sel: "0005 11/15/23 02:13:48 MAJ BMC  Fan #17  Lo Crit thresh act=04 thr=06"
const SEL_LINE = /^([0-9a-f]{4}) (\d\d)\/(\d\d)\/(\d\d) (\d\d):(\d\d):(\d\d) ([A-Z]{3}) (.*)$/;
const SEL_UNDATED = /^([0-9a-f]{4}) (?!\d\d\/\d\d\/\d\d ).*? ([A-Z]{3}) (.*)$/;

// Two digits from 1970, when IPMI's time begins, to 2069.
function fullYear(digits: number): number {
  return digits < 70 ? 2000 + digits : 1900 + digits;
}

const SEVERITIES: Lane[] = [
  {id: "CRT", title: "CRT, critical", level: "bad"},
  {id: "MAJ", title: "MAJ, major", level: "bad"},
  {id: "MIN", title: "MIN, minor", level: "poor"},
  {id: "INF", title: "INF, information", level: "good"},
];

export function systemEvents(rows: Rows): {events: Event[]; lanes: Lane[]} {
  const events: Event[] = [];
  for (let row = 0; row < rows.count; ++row) {
    const line = plain(rows.cell(row, 0)).trimEnd();
    const match = SEL_LINE.exec(line);
    if (match) {
      const [, , month, date, year, hour, minute, second, severity, text] = match;
      events.push({
        time: clockTime(
          Date.UTC(
            fullYear(Number(year)),
            Number(month) - 1,
            Number(date),
            Number(hour),
            Number(minute),
            Number(second),
          ),
        ),
        lane: severity!,
        table: rows.table.id,
        row,
        text: oneLine(text!),
      });
      continue;
    }
    const undated = SEL_UNDATED.exec(line);
    if (undated) events.push({time: NaN, lane: undated[2]!, table: rows.table.id, row, text: oneLine(undated[3]!)});
  }
  return {events, lanes: withOthers(SEVERITIES, events)};
}

// A class that the list does not know keeps its own name.
function withOthers(known: Lane[], events: Event[]): Lane[] {
  const ids = new Set(known.map(lane => lane.id));
  const others = new Set(events.map(event => event.lane).filter(id => !ids.has(id)));
  return [...known, ...[...others].map(id => ({id, title: id === "" ? "no class" : id, level: "minor" as const}))];
}
