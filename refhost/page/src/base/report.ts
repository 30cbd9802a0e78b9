// What the report holds, as the overview and the files beside it tell it.

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
