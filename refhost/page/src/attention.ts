// What a technician would look at first, drawn from the small tables. A state is quoted, never
// interpreted beyond what its tool documents.
import {loadRows, valueReader, type Rows, type Table} from "./data";
import {isBad, sensorsOf} from "./pictures/readings";
import {driveStates, volumeStates} from "./pictures/states";
import {number, trimmed} from "./text";

export interface Concern {
  level: "bad" | "poor";
  table: string;
  row: number;
  what: string;
  says: string;
}

async function rowsOf(tables: Map<string, Table>, id: string): Promise<Rows | null> {
  const table = tables.get(id);
  if (!table || table.records === 0 || table.records > 20_000) return null;
  return loadRows(table);
}

async function sensors(tables: Map<string, Table>): Promise<Concern[]> {
  const rows = await rowsOf(tables, "SENSORINFO");
  if (!rows) return [];
  return sensorsOf(rows)
    .filter(isBad)
    .map(sensor => ({
      level: sensor.position === "critical" ? "bad" : "poor",
      table: "SENSORINFO",
      row: sensor.row,
      what: sensor.name,
      says: `${sensor.reading} ${sensor.unit}, status ${sensor.status}`,
    }));
}

async function drives(tables: Map<string, Table>): Promise<Concern[]> {
  const found: Concern[] = [];
  const list = await rowsOf(tables, "PINFO");
  if (list) {
    const value = valueReader(list);
    for (let row = 0; row < list.count; ++row) {
      const state = trimmed(value(row, "State"));
      const meaning = driveStates.get(state);
      if (!meaning || meaning.level === "good") continue;
      found.push({
        level: meaning.level,
        table: "PINFO",
        row,
        what: `Drive ${trimmed(value(row, "EID"))}`,
        says: `${state} (${meaning.words})`,
      });
    }
  }
  const details = await rowsOf(tables, "PDLIST");
  if (details) {
    const value = valueReader(details);
    for (let row = 0; row < details.count; ++row) {
      const counters = [
        ["MediaErrorCount", "media errors"],
        ["PredictiveFail", "predicted failures"],
      ] as const;
      const says = counters
        .filter(([id]) => number(value(row, id)) > 0)
        .map(([id, words]) => `${trimmed(value(row, id))} ${words}`);
      if (/^yes$/i.test(trimmed(value(row, "SMARTflag")))) says.push("SMART alert");
      if (says.length > 0) {
        found.push({
          level: "poor",
          table: "PDLIST",
          row,
          what: `Drive ${trimmed(value(row, "SN"))}`,
          says: says.join(", "),
        });
      }
    }
  }
  return found;
}

async function volumes(tables: Map<string, Table>): Promise<Concern[]> {
  const rows = await rowsOf(tables, "VINFO");
  if (!rows) return [];
  const value = valueReader(rows);
  const found: Concern[] = [];
  for (let row = 0; row < rows.count; ++row) {
    const state = trimmed(value(row, "State"));
    const meaning = volumeStates.get(state);
    if (!meaning || meaning.level === "good") continue;
    const name = trimmed(value(row, "Name"));
    found.push({
      level: meaning.level,
      table: "VINFO",
      row,
      what: `Virtual drive ${trimmed(value(row, "DG"))}${name ? ` "${name}"` : ""}`,
      says: `${state} (${meaning.words})`,
    });
  }
  return found;
}

export interface Attention {
  looked: string[]; // at what there was to look at
  concerns: Concern[];
}

const PARTS = [
  {name: "arrays", tables: ["VINFO"], find: volumes},
  {name: "drives", tables: ["PINFO", "PDLIST"], find: drives},
  {name: "sensors", tables: ["SENSORINFO"], find: sensors},
];

export async function attention(tables: Map<string, Table>): Promise<Attention> {
  const all: Attention = {looked: [], concerns: []};
  for (const part of PARTS) {
    if (!part.tables.some(id => (tables.get(id)?.records ?? 0) > 0)) continue;
    try {
      all.concerns.push(...(await part.find(tables)));
      all.looked.push(part.name);
    } catch {
      // A missing data file is told where its table is opened.
    }
  }
  const bad = all.concerns.filter(concern => concern.level === "bad");
  const poor = all.concerns.filter(concern => concern.level === "poor");
  return {...all, concerns: [...bad, ...poor]};
}
