// What the library leaves out for screen readers.
import type {Table} from "../base/report";
import {count} from "../base/text";

// How many rows there are, and which those are that are drawn.
export function describeRows(host: HTMLElement, table: Table, rows: number): void {
  host.setAttribute("aria-rowcount", String(rows + 1));
  host.setAttribute("aria-label", `${table.id}, ${count(rows, "row")}`);
  for (const row of host.querySelectorAll<HTMLElement>(".slick-row"))
    row.setAttribute("aria-rowindex", String(Number(row.dataset["row"]) + 2));
}

export function describeSorting(host: HTMLElement, sort: {column: number; ascending: boolean} | null): void {
  for (const header of host.querySelectorAll<HTMLElement>(".slick-header-column")) {
    const mine = sort && header.dataset["id"] === `c${sort.column}`;
    if (mine) header.setAttribute("aria-sort", sort.ascending ? "ascending" : "descending");
    else header.removeAttribute("aria-sort");
  }
}

// What stands in for the cursor and the row of filters need roles that a grid may have.
export function addRoles(host: HTMLElement): void {
  for (const part of host.querySelectorAll(":scope > div[tabindex], .slick-viewport[tabindex], .slick-headerrow"))
    part.setAttribute("role", "rowgroup");
  for (const filters of host.querySelectorAll(".slick-headerrow-columns")) filters.setAttribute("role", "row");
}
