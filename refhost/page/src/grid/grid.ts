// The scrolling table, for any number of rows.
import {SlickGrid, type GridOption} from "slickgrid";
import {linkedCapture} from "../base/link";
import type {Capture, Value} from "../base/report";
import type {Rows} from "../base/rows";
import {number, oneLine} from "../base/text";
import {captureLink} from "../parts/capture_link";
import {columnsOf, stretcher} from "./columns";
import {addFilters} from "./filters";
import {oneTabStop} from "./grid_keys";
import {addRoles, describeRows, describeSorting} from "./screen_reader";

export interface GridEvents {
  sort(column: number, ascending: boolean): void;
  open(row: number): void;
  filter(column: number, text: string): void;
}

// What a view does differently from a table of records.
export interface Look {
  filters: boolean; // a field for each column
  cell(row: number, column: number): Node | undefined; // undefined: the value as it is
}

export interface Grid {
  show(rows: Rows, order: Int32Array): void;
  columns(shown: boolean[]): void;
  sorting(sort: {column: number; ascending: boolean} | null): void;
  select(row: number): void;
  filters(texts: Map<number, string>): void;
  resize(): void;
  destroy(): void;
}

function cellOf(value: Value, captures: Map<string, Capture>, single: boolean): HTMLElement {
  const element = document.createElement("bdi");
  const capture = linkedCapture(value, captures);
  if (capture) element.append(captureLink(capture));
  else element.textContent = oneLine(value, single);
  if (!Number.isNaN(number(value)) && !/x/i.test(String(value))) element.className = "number";
  return element;
}

function optionsOf(single: boolean, nonce: string, look: Look | undefined): GridOption {
  return {
    enableHtmlRendering: false,
    enableColumnReorder: false,
    enableCellNavigation: true,
    enableTextSelectionOnCells: true,
    explicitInitialization: true,
    forceFitColumns: false,
    fullWidthRows: true,
    multiColumnSort: false,
    nonce,
    rowHeight: 28,
    headerRowHeight: 34,
    showHeaderRow: !single && look?.filters !== false,
    tristateMultiColumnSort: false,
  };
}

export function createGrid(
  host: HTMLElement,
  rows: Rows,
  captures: Map<string, Capture>,
  nonce: string,
  events: GridEvents,
  look?: Look,
): Grid {
  const table = rows.table;
  const single = table.columns.length === 1;
  let source = rows;
  let order = new Int32Array(0);

  const data = {
    getLength: () => order.length,
    getItem: (at: number) => ({row: order[at]!}),
    getItemMetadata: () => null,
  };
  const all = columnsOf(
    host,
    rows,
    (row, column) =>
      (look?.cell(row, column) as HTMLElement | undefined) ?? cellOf(source.cell(row, column), captures, single),
  );
  const stretched = stretcher(host);
  const grid = new SlickGrid(host, data as never, stretched([...all]), optionsOf(single, nonce, look));
  const setFilters = addFilters(host, grid, table, events.filter);
  grid.onSort.subscribe((_event, args) => {
    if ("sortCol" in args && args.sortCol) events.sort(Number(args.sortCol.field), args.sortAsc ?? true);
  });
  const openAt = (at: number) => {
    const row = order[at];
    if (row !== undefined) events.open(row);
  };
  grid.onClick.subscribe((_event, args) => openAt(args.row));
  grid.onKeyDown.subscribe((event, args) => {
    if ((event as unknown as KeyboardEvent).key === "Enter") openAt(args.row);
  });
  const describe = () => describeRows(host, table, order.length);
  grid.onRendered.subscribe(describe);
  grid.init();
  const keys = oneTabStop(host, grid);
  addRoles(host);

  return {
    show(newRows, newOrder) {
      const hadCursor = document.activeElement?.closest(".slick-cell") && host.contains(document.activeElement);
      source = newRows;
      order = newOrder as Int32Array<ArrayBuffer>;
      grid.invalidateAllRows();
      grid.updateRowCount();
      grid.render();
      describe();
      if (hadCursor) keys.restore();
    },
    columns(shown) {
      grid.setColumns(stretched(all.filter((_, at) => shown[at])));
    },
    sorting(sort) {
      grid.setSortColumns(sort ? [{columnId: `c${sort.column}`, sortAsc: sort.ascending}] : []);
      describeSorting(host, sort);
    },
    select(row) {
      const at = order.indexOf(row);
      if (at < 0) return;
      grid.scrollRowIntoView(at, false);
      grid.setActiveCell(at, grid.getActiveCell()?.cell ?? 0, false, true, true);
      grid.focus();
    },
    filters: setFilters,
    resize() {
      grid.resizeCanvas();
    },
    destroy() {
      grid.destroy(true);
    },
  };
}
