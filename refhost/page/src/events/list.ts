// All events with their place in time.
import type {Rows} from "../base/rows";
import type {Slicer} from "../base/slices";
import {plain} from "../base/text";
import {SOURCE, TIME, TIME_UTC, timeOf} from "./event";

export interface Source {
  name: string;
  events: number;
  undated: number;
  newest: number; // NaN: none has a time
  offset: number; // of its clock to UTC, milliseconds; NaN: not known
}

// Times of one day are read once.
function dayReader(): (text: string) => number {
  const days = new Map<string, number>();
  return text => {
    if (text === "") return NaN;
    const day = text.slice(0, 10);
    let start = days.get(day);
    if (start === undefined) {
      start = timeOf(`${day}T00:00:00`);
      days.set(day, start);
    }
    const digits = (at: number) => (text.charCodeAt(at) - 48) * 10 + text.charCodeAt(at + 1) - 48;
    return start + digits(11) * 3_600_000 + digits(14) * 60_000 + digits(17) * 1000;
  };
}

// Rows come in parts; grow() takes what has come since.
export class EventList {
  // When it happened, in UTC where the clock's offset is known, else as the clock said it. An event without a
  // clock stands where its source has it: at the time of the one before it, the first ones at that of the next.
  readonly times: Float64Array;
  readonly isDated: Uint8Array;
  readonly sources = new Map<string, Source>();
  count = 0;
  private readonly last = new Map<string, number>();
  private readonly first = new Map<string, number[]>(); // rows before any time of their source
  private readonly read = dayReader();

  constructor(readonly rows: Rows) {
    this.times = new Float64Array(rows.table.records).fill(NaN);
    this.isDated = new Uint8Array(rows.table.records);
  }

  async grow(slicer: Slicer): Promise<void> {
    while (this.count < this.rows.count) {
      this.take(this.count);
      ++this.count;
      if (this.count % 256 === 0 && slicer.due) await slicer.rest();
    }
  }

  private take(row: number): void {
    const name = plain(this.rows.cell(row, SOURCE));
    const local = this.read(plain(this.rows.cell(row, TIME)));
    const utc = this.read(plain(this.rows.cell(row, TIME_UTC)));
    const own = Number.isNaN(utc) ? local : utc;
    let source = this.sources.get(name);
    if (source === undefined) {
      source = {name, events: 0, undated: 0, newest: NaN, offset: NaN};
      this.sources.set(name, source);
    }
    ++source.events;
    if (!Number.isNaN(utc - local)) source.offset = local - utc;
    const waiting = this.first.get(name);
    if (!Number.isNaN(own)) {
      this.isDated[row] = 1;
      this.times[row] = own;
      this.last.set(name, own);
      source.newest = source.newest > own ? source.newest : own;
      for (const before of waiting ?? []) this.times[before] = own;
      this.first.delete(name);
      return;
    }
    ++source.undated;
    const before = this.last.get(name);
    if (before !== undefined) this.times[row] = before;
    else if (waiting !== undefined) waiting.push(row);
    else this.first.set(name, [row]);
  }
}
