// The grid's columns: their titles, and how wide they are.
import type {Column as GridColumn} from "slickgrid";
import type {Rows} from "../base/rows";
import {oneLine} from "../base/text";

const LEAST_WIDTH = 64;
const MOST_WIDTH = 480;
const SCROLLBAR = 20; // room for it
const SAMPLED = 200; // rows that are measured

// As wide as the layout says, but never too narrow for a label or the first rows' values.
function widths(host: HTMLElement, rows: Rows): number[] {
  const room = host.clientWidth - SCROLLBAR;
  const columns = rows.table.columns;
  const total = columns.reduce((sum, column) => sum + column.width, 0);
  const ruler = document.createElement("canvas").getContext("2d")!;
  const {fontSize, fontFamily} = getComputedStyle(host);
  const measure = (text: string, weight: string) => {
    ruler.font = `${weight} ${fontSize} ${fontFamily}`;
    return ruler.measureText(text).width;
  };
  return columns.map((column, at) => {
    let longest = measure(oneLine(column.label), "600") + 20; // room for the sorting mark
    for (let row = 0; row < Math.min(rows.count, SAMPLED); ++row)
      longest = Math.max(longest, Math.min(measure(oneLine(rows.cell(row, at)), "400"), MOST_WIDTH));
    const asked = total > 0 ? (room * column.width) / Math.max(total, 100) : 0;
    return Math.ceil(Math.max(LEAST_WIDTH, asked, longest + 20));
  });
}

export function columnsOf(
  host: HTMLElement,
  rows: Rows,
  cell: (row: number, column: number) => HTMLElement,
): GridColumn[] {
  const wide = widths(host, rows);
  return rows.table.columns.map((column, at) => ({
    id: `c${at}`,
    field: String(at),
    name: oneLine(column.label) || " ",
    sortable: true,
    width: wide[at]!,
    minWidth: 40,
    formatter: (_row: number, _cell: number, _value: unknown, _column: unknown, item: {row: number}) =>
      cell(item.row, at),
  }));
}

// The last column that is shown takes the room that is left; when another is the last, it is as wide as before.
export function stretcher(host: HTMLElement): (shown: GridColumn[]) => GridColumn[] {
  let stretched: {column: GridColumn; before: number; now: number} | undefined;
  return shown => {
    if (stretched && stretched.column.width === stretched.now) stretched.column.width = stretched.before;
    const column = shown.at(-1);
    const left = host.clientWidth - SCROLLBAR - shown.reduce((sum, one) => sum + one.width!, 0);
    if (column && left > 0) {
      stretched = {column, before: column.width!, now: column.width! + left};
      column.width = stretched.now;
    }
    return shown;
  };
}
