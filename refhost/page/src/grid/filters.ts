// The row of filters under the grid's titles, a field for each column.
import type {SlickGrid} from "slickgrid";
import type {Table} from "../base/report";
import {oneLine} from "../base/text";

// Before the grid is drawn. What is returned sets the texts, but that of the field in which somebody types.
export function addFilters(
  host: HTMLElement,
  grid: SlickGrid,
  table: Table,
  filter: (column: number, text: string) => void,
): (texts: Map<number, string>) => void {
  let shown: Map<number, string> = new Map();
  grid.onHeaderRowCellRendered.subscribe((_event, {node, column}) => {
    const at = Number(column.field);
    const input = document.createElement("input");
    input.type = "search";
    input.spellcheck = false;
    input.dataset["column"] = String(at);
    input.value = shown.get(at) ?? "";
    input.setAttribute("aria-label", `Filter ${oneLine(table.columns[at]!.label)}`);
    input.placeholder = "filter";
    input.addEventListener("input", () => filter(at, input.value));
    input.tabIndex = -1;
    node.setAttribute("role", "gridcell");
    node.replaceChildren(input);
  });
  return texts => {
    shown = new Map(texts);
    for (const input of host.querySelectorAll<HTMLInputElement>(".slick-headerrow-column input")) {
      if (input !== document.activeElement) input.value = texts.get(Number(input.dataset["column"])) ?? "";
    }
  };
}
