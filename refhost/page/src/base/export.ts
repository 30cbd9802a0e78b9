// What is shown, taken along: to the clipboard, or as a CSV file.
import type {Rows} from "./rows";
import {csvCell, oneLine} from "./text";

export interface Shown {
  rows: Rows;
  order: ArrayLike<number>;
  columns: number[];
}

function lines(
  {rows, order, columns}: Shown,
  separator: string,
  end: string,
  cell: (value: string | number | null) => string,
): string[] {
  const all = [columns.map(column => cell(rows.table.columns[column]!.label)).join(separator) + end];
  for (let at = 0; at < order.length; ++at)
    all.push(columns.map(column => cell(rows.cell(order[at]!, column))).join(separator) + end);
  return all;
}

export function csv(shown: Shown): Blob {
  return new Blob(lines(shown, ",", "\r\n", csvCell), {type: "text/csv;charset=utf-8"});
}

export function tabSeparated(shown: Shown): string {
  return lines(shown, "\t", "\n", value => oneLine(value)).join("");
}

export function save(blob: Blob, name: string): void {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}

// Pages opened from disk may be refused the clipboard; then the old way.
export async function copy(text: string): Promise<void> {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const area = document.createElement("textarea");
    area.value = text;
    area.className = "unseen";
    document.body.append(area);
    area.select();
    document.execCommand("copy");
    area.remove();
  }
}
