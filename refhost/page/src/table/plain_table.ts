// An ordinary table, for paper.
import type {Rows} from "../base/rows";
import {count, oneLine, trimmed} from "../base/text";

export const PRINTED_ROWS = 1000;

function element(name: string, text = ""): HTMLElement {
  const made = document.createElement(name);
  made.textContent = text;
  return made;
}

export function plainTable(rows: Rows, order: ArrayLike<number>, columns: number[], most = PRINTED_ROWS): HTMLElement {
  const whole = document.createElement("div");
  const table = element("table");
  table.className = columns.length === 1 ? "printed lines" : "printed";
  const head = element("tr");
  for (const column of columns) {
    const header = element("th", oneLine(rows.table.columns[column]!.label));
    header.setAttribute("scope", "col");
    head.append(header);
  }
  table.append(element("thead"));
  table.firstElementChild!.append(head);
  const body = element("tbody");
  for (let at = 0; at < Math.min(order.length, most); ++at) {
    const line = element("tr");
    for (const column of columns) {
      const value = rows.cell(order[at]!, column);
      line.append(element("td", columns.length === 1 ? oneLine(value, true) : trimmed(value)));
    }
    body.append(line);
  }
  table.append(body);
  whole.append(table);
  if (order.length > most)
    whole.append(element("p", `${count(order.length - most, "more row")}: in the report's files, not on paper.`));
  return whole;
}
