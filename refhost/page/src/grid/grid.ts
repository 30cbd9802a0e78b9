// The scrolling table, for any number of rows.
import {SlickGrid, type Column as GridColumn, type GridOption} from "slickgrid";
import type {Capture, Rows, Value} from "../base/data";
import {linkedCapture} from "../base/link";
import {count, number, oneLine} from "../base/text";
import {captureLink} from "../parts/capture_link";
import {oneTabStop} from "./grid_keys";

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

const LEAST_WIDTH = 64;
const MOST_WIDTH = 480;
const SAMPLED = 200; // rows that are measured

// As wide as the layout says, but never too narrow for a label or the first rows' values.
function widths(host: HTMLElement, rows: Rows, room: number): number[] {
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
  const wide = widths(host, rows, host.clientWidth - 20);
  const all: GridColumn[] = table.columns.map((column, at) => ({
    id: `c${at}`,
    field: String(at),
    name: oneLine(column.label) || " ",
    sortable: true,
    width: wide[at]!,
    minWidth: 40,
    formatter: (_row: number, _cell: number, _value: unknown, _column: unknown, item: {row: number}) =>
      (look?.cell(item.row, at) as HTMLElement | undefined) ?? cell(source.cell(item.row, at)),
  }));
  // The last column that is shown takes the room that is left; when another is the last, it is as wide as before.
  let stretched: {column: GridColumn; before: number; now: number} | undefined;
  function filling(shown: GridColumn[]): GridColumn[] {
    if (stretched && stretched.column.width === stretched.now) stretched.column.width = stretched.before;
    const column = shown.at(-1);
    const left = host.clientWidth - 20 - shown.reduce((sum, one) => sum + one.width!, 0);
    if (column && left > 0) {
      stretched = {column, before: column.width!, now: column.width! + left};
      column.width = stretched.now;
    }
    return shown;
  }

  function cell(value: Value): HTMLElement {
    const element = document.createElement("bdi");
    const capture = linkedCapture(value, captures);
    if (capture) element.append(captureLink(capture));
    else element.textContent = oneLine(value, single);
    if (!Number.isNaN(number(value)) && !/x/i.test(String(value))) element.className = "number";
    return element;
  }

  const options: GridOption = {
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
  const grid = new SlickGrid(host, data as never, filling([...all]), options);
  const filterTexts = new Map<number, string>();

  grid.onHeaderRowCellRendered.subscribe((_event, {node, column}) => {
    const at = Number(column.field);
    const input = document.createElement("input");
    input.type = "search";
    input.spellcheck = false;
    input.dataset["column"] = String(at);
    input.value = filterTexts.get(at) ?? "";
    input.setAttribute("aria-label", `Filter ${oneLine(table.columns[at]!.label)}`);
    input.placeholder = "filter";
    input.addEventListener("input", () => events.filter(at, input.value));
    input.tabIndex = -1;
    node.setAttribute("role", "gridcell");
    node.replaceChildren(input);
  });
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
  grid.onRendered.subscribe(describe);

  // What the library leaves out for screen readers: how many rows there are and which these are.
  function describe() {
    host.setAttribute("aria-rowcount", String(order.length + 1));
    host.setAttribute("aria-label", `${table.id}, ${count(order.length, "row")}`);
    for (const row of host.querySelectorAll<HTMLElement>(".slick-row"))
      row.setAttribute("aria-rowindex", String(Number(row.dataset["row"]) + 2));
  }

  grid.init();
  const keys = oneTabStop(host, grid);
  // What stands in for the cursor and the row of filters need roles that a grid may have.
  for (const part of host.querySelectorAll(":scope > div[tabindex], .slick-viewport[tabindex], .slick-headerrow"))
    part.setAttribute("role", "rowgroup");
  for (const filters of host.querySelectorAll(".slick-headerrow-columns")) filters.setAttribute("role", "row");

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
      grid.setColumns(filling(all.filter((_, at) => shown[at])));
    },
    sorting(sort) {
      grid.setSortColumns(sort ? [{columnId: `c${sort.column}`, sortAsc: sort.ascending}] : []);
      for (const header of host.querySelectorAll<HTMLElement>(".slick-header-column")) {
        const mine = sort && header.dataset["id"] === `c${sort.column}`;
        if (mine) header.setAttribute("aria-sort", sort.ascending ? "ascending" : "descending");
        else header.removeAttribute("aria-sort");
      }
    },
    select(row) {
      const at = order.indexOf(row);
      if (at < 0) return;
      grid.scrollRowIntoView(at, false);
      grid.setActiveCell(at, grid.getActiveCell()?.cell ?? 0, false, true, true);
      grid.focus();
    },
    filters(texts) {
      filterTexts.clear();
      for (const [column, text] of texts) filterTexts.set(column, text);
      for (const input of host.querySelectorAll<HTMLInputElement>(".slick-headerrow-column input")) {
        if (input !== document.activeElement) input.value = texts.get(Number(input.dataset["column"])) ?? "";
      }
    },
    resize() {
      grid.resizeCanvas();
    },
    destroy() {
      grid.destroy(true);
    },
  };
}
