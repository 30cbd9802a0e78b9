// What the report holds. The overview comes with the page; rows and captures lie in files of their
// own, each a script that calls qv.rows() or qv.capture(), because a page opened from disk may load
// scripts but not fetch files.

export type Value = string | number | null;

export interface Column {
  id: string;
  label: string;
  width: number; // a share of the table's width; 0: none given
}

export interface Table {
  id: string;
  title: string; // empty: the plug-in declares none
  module: string;
  kind: "columns" | "rows" | "";
  columns: Column[];
  records: number;
  capture?: string; // the file that its tool leaves; empty: nobody declares one
  reason: string; // why it is empty; with records, why these are not all
  chunk_rows: number;
  chunks: string[];
}

export interface Module {
  name: string;
  display: string;
  tables: Table[];
}

export interface Fact {
  label: string;
  value: string;
  source: string; // the capture that says so; empty: the program itself
}

export interface Command {
  text: string;
  started?: string; // UTC; empty: nobody noted when
  seconds: number;
  outcome: string; // empty: all went well
  cut_off: boolean;
  stderr?: string; // what it printed to standard error
}

export interface Capture {
  name: string;
  size: number;
  kind: "text" | "binary" | "directory" | "other";
  data: string; // the file with its text, for this page; empty: none
  shown: number; // bytes of it in there
  commands: number[];
}

// Where something stands: the line counted from 1; 0: nowhere in particular.
export interface Place {
  capture: string;
  line: number;
}

export type Severity = "critical" | "warning" | "unknown" | "notice";
export type HealthWord = "critical" | "warning" | "unknown" | "ok" | "absent";

export interface Health {
  subsystem: string;
  health: HealthWord;
  judged_by: string[]; // the captures that it rests on
  missing: string[]; // what could not be judged, in words
}

export interface Finding {
  id: string;
  rule: string;
  severity: Severity;
  subsystem: string;
  subject: string;
  says: string;
  time: string | null; // of the latest event, by its source's clock
  count: number;
  evidence: Place[];
  first_seen?: string | null; // the first run that has it (UTC, "...Z"), or the event that began it; null: not known
  acknowledged?: {until: string; by: string | null; why: string | null} | null; // `says` tells it in words
}

// Entities of the inventory; a field that no capture tells is not there. docs/inventory.md has them all.
export interface Sensor extends Place {
  name?: string;
  kind?: string;
  reading?: number;
  unit?: string;
  status?: string;
  lnr?: number;
  lc?: number;
  lnc?: number;
  unc?: number;
  uc?: number;
  unr?: number;
  states: string[];
}

export interface Controller extends Place {
  number?: number;
  model?: string;
  serial?: string;
  firmware?: string;
  status?: string;
  volumes?: number;
  drives?: number;
}

export interface Battery extends Place {
  controller?: number;
  model?: string;
  state?: string;
  charge_percent?: number;
  temperature_celsius?: number;
}

export interface Enclosure extends Place {
  controller?: number;
  number?: number;
  slots?: number;
  state?: string;
  model?: string;
  serial?: string;
}

export interface Volume extends Place {
  controller?: number;
  drive_group?: number;
  number?: number;
  raid?: string;
  state?: string;
  access?: string;
  consistent?: boolean;
  capacity_bytes?: number;
  cache?: string;
  name?: string;
  device?: string;
  operation?: string;
  progress_percent?: number;
}

export interface Drive extends Place {
  controller?: number;
  enclosure?: number;
  slot?: number;
  device_id?: number;
  state?: string;
  drive_group?: number;
  is_foreign?: boolean;
  spare?: string;
  rebuild_percent?: number;
  capacity_bytes?: number;
  interface?: string;
  media?: string;
  sector_bytes?: number;
  model?: string;
  serial?: string;
  wwn?: string;
  firmware?: string;
  device?: string;
  temperature_celsius?: number;
  media_errors?: number;
  other_errors?: number;
  predicted_failures?: number;
  shield_counter?: number;
  smart_alert?: boolean;
  percentage_used?: number;
  available_spare_percent?: number;
  power_on_hours?: number;
}

// A drive's place in a volume, or a hot spare's.
export interface VolumeMember extends Place {
  controller?: number; // the volume's
  drive_group?: number;
  volume?: number; // its number
  volume_name?: string;
  span?: number;
  position?: number;
  is_spare?: boolean;
  state?: string;
  enclosure?: number; // the drive's
  slot?: number;
  device_id?: number;
  device?: string;
  serial?: string;
}

export interface PowerSupply extends Place {
  slot?: string;
  present?: boolean;
  state?: string;
  input_state?: string;
  input_watts?: number;
  model?: string;
  serial?: string;
  part?: string;
  firmware?: string;
}

export interface MemoryModule extends Place {
  slot?: string;
  capacity_bytes?: number;
  type?: string;
  speed_mts?: number;
  manufacturer?: string;
  serial?: string;
  part?: string;
}

export interface Processor extends Place {
  socket?: string;
  model?: string;
  cores?: number;
  threads?: number;
  state?: string;
}

export interface Bmc extends Place {
  firmware?: string;
  ipmi?: string;
  self_test?: string;
  address?: string;
  mac?: string;
}

export interface Fru extends Place {
  device?: string;
  manufacturer?: string;
  product?: string;
  part?: string;
  serial?: string;
}

export interface Inventory {
  processors: Processor[];
  memory_modules: MemoryModule[];
  bmcs: Bmc[];
  power_supplies: PowerSupply[];
  frus: Fru[];
  sensors: Sensor[];
  controllers: Controller[];
  batteries: Battery[];
  enclosures: Enclosure[];
  volumes: Volume[];
  drives: Drive[];
  volume_members: VolumeMember[];
}

export interface Overview {
  apart: boolean; // the page is not beside the captures and report.json
  meta: Record<string, string>;
  facts: Fact[];
  modules: Module[];
  commands: Command[];
  captures: Capture[];
  // Of a report without a verdict: none of them.
  health?: Health[];
  findings?: Finding[];
  inventory?: Inventory;
  events?: Table & {captures: string[]}; // of all sources, each in its order; and where they stand
}

// The rows of one table, as far as they are loaded: for each chunk, for each column, the values.
export class Rows {
  private readonly chunks: Value[][][] = [];
  private readonly firsts: number[] = []; // of each chunk: the number of its first row
  readonly names: {first: number; name: string; index: number}[] = [];
  count = 0;

  constructor(readonly table: Table) {}

  // The rows behind those that are there.
  add(chunk: Value[][], rows: number): void {
    this.firsts.push(this.count);
    this.chunks.push(chunk);
    this.count += rows;
  }

  cell(row: number, column: number): Value {
    const at = this.chunkOf(row);
    return this.chunks[at]?.[column]?.[row - this.firsts[at]!] ?? null;
  }

  // Most chunks have chunk_rows rows, and none has more.
  private chunkOf(row: number): number {
    let low = Math.floor(row / this.table.chunk_rows);
    let high = this.firsts.length - 1;
    if (low >= high || this.firsts[low + 1]! > row) return low;
    while (low < high) {
      const middle = Math.ceil((low + high) / 2);
      if (this.firsts[middle]! <= row) low = middle;
      else high = middle - 1;
    }
    return low;
  }

  record(row: number): Value[] {
    return this.table.columns.map((_, column) => this.cell(row, column));
  }

  // The record's own name, as its module gave it.
  name(row: number): string {
    let found = "";
    for (const run of this.names) {
      if (run.first > row) break;
      found = run.name;
    }
    return found;
  }
}

// A reader of values by property id.
export function valueReader(rows: Rows): (row: number, id: string) => Value {
  const places = new Map(rows.table.columns.map((column, at) => [column.id, at]));
  return (row, id) => {
    const at = places.get(id);
    return at === undefined ? null : rows.cell(row, at);
  };
}

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
