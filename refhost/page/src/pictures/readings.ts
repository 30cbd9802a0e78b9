// Sensor readings against their thresholds, as `ipmitool sensor` lists them: name, reading, unit,
// status, then the lower non-recoverable, critical and non-critical and the upper non-critical,
// critical and non-recoverable threshold.
import type {Rows} from "../data";
import {number, trimmed} from "../text";

export interface Sensor {
  row: number;
  name: string;
  reading: string;
  unit: string;
  status: string;
  value: number; // NaN: the reading is no number
  thresholds: number[]; // LNR, LCR, LNC, UNC, UCR, UNR; NaN: none
  position: "within" | "warning" | "critical" | "unknown";
}

export const THRESHOLDS = ["LNR", "LCR", "LNC", "UNC", "UCR", "UNR"] as const;

// A sensor is outside as soon as it reaches a threshold (IPMI 2.0, 35.13: "at or below", "at or above").
function positionOf(value: number, [lnr, lcr, lnc, unc, ucr, unr]: number[]): Sensor["position"] {
  if (Number.isNaN(value)) return "unknown";
  if (value <= lnr! || value <= lcr! || value >= ucr! || value >= unr!) return "critical";
  if (value <= lnc! || value >= unc!) return "warning";
  return "within";
}

export function sensorsOf(rows: Rows): Sensor[] {
  const places = new Map(rows.table.columns.map((column, at) => [column.id, at]));
  const cell = (row: number, item: number) => rows.cell(row, places.get(`item${item}`) ?? -1);
  return Array.from({length: rows.count}, (_, row) => {
    const unit = trimmed(cell(row, 3));
    // A discrete sensor's reading is a set of bits, also where it looks like a number.
    const value = unit === "discrete" ? NaN : number(cell(row, 2));
    const thresholds = THRESHOLDS.map((_, at) => number(cell(row, 5 + at)));
    return {
      row,
      unit,
      value,
      thresholds,
      name: trimmed(cell(row, 1)),
      reading: trimmed(cell(row, 2)),
      status: trimmed(cell(row, 4)),
      position: positionOf(value, thresholds),
    };
  });
}

export function isBad(sensor: Sensor): boolean {
  return sensor.position === "warning" || sensor.position === "critical";
}
