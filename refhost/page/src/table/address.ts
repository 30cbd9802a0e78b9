// What the address says of a table: which records are shown, in which order, and which one is open.
import type {Table} from "../base/report";
import {tableHash, type Route, type State} from "../base/route";
import type {Wanted} from "../base/view_rows";

export interface Address {
  wanted: Wanted;
  row: number; // -1: none
}

const FILTER = "filter.";

export function readAddress(table: Table, {row, state}: Route): Address {
  const column = (id: string) => table.columns.findIndex(one => one.id === id);
  const sort = state["sort"] ?? "";
  const sorted = column(sort.replace(/^-/, ""));
  const filters = Object.entries(state)
    .filter(([key]) => key.startsWith(FILTER))
    .map(([key, text]): [number, string] => [column(key.slice(FILTER.length)), text])
    .filter(([at]) => at >= 0);
  return {
    row,
    wanted: {
      search: state["search"] ?? "",
      filters: new Map(filters),
      sort: sorted < 0 ? null : {column: sorted, ascending: !sort.startsWith("-")},
    },
  };
}

export function hashOfAddress(table: Table, {wanted: {search, filters, sort}, row}: Address): string {
  const id = (at: number) => table.columns[at]!.id;
  const state: State = {search};
  if (sort) state["sort"] = `${sort.ascending ? "" : "-"}${id(sort.column)}`;
  for (const [at, text] of filters) state[FILTER + id(at)] = text;
  return tableHash(table.id, row, state);
}
