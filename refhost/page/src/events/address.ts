// What the address says of the list of events: which are shown, in which order, and which one is open.
import {viewHash, type Route, type State} from "../base/route";
import {timeOf} from "./event";
import type {WantedEvents} from "./shown";

export const DAY = 24 * 3600 * 1000;
export const SPANS: [id: string, title: string, length: number][] = [
  ["", "All", Infinity],
  ["365d", "Year", 365 * DAY],
  ["30d", "30 days", 30 * DAY],
  ["7d", "7 days", 7 * DAY],
  ["1d", "24 hours", DAY],
];

const COLUMNS = ["time", "time_utc", "severity", "source", "subject", "text"];

export interface Shown extends Omit<WantedEvents, "from" | "to"> {
  span: string;
  from: string;
  to: string;
  open: number; // the row; -1: none
  line: string; // "CAPTURE@LINE": open the event that stands there
}

export function readAddress({state}: Route): Shown {
  const sort = state["sort"] ?? "-time";
  const column = COLUMNS.indexOf(sort.replace(/^-/, ""));
  return {
    text: state["text"] ?? "",
    severities: (state["severity"] ?? "").split(",").filter(word => word !== ""),
    source: state["source"] ?? "",
    span: state["span"] ?? "",
    from: state["from"] ?? "",
    to: state["to"] ?? "",
    folded: state["fold"] !== "no",
    sort: {column: Math.max(0, column), ascending: !sort.startsWith("-")},
    open: Number(state["open"] ?? 0) - 1,
    line: state["line"] ?? "",
  };
}

function stateOf({sort, ...shown}: Shown): State {
  const order = `${sort.ascending ? "" : "-"}${COLUMNS[sort.column]}`;
  return {
    text: shown.text,
    severity: shown.severities.join(","),
    source: shown.source,
    span: shown.span,
    from: shown.from,
    to: shown.to,
    fold: shown.folded ? "" : "no",
    sort: order === "-time" ? "" : order,
    open: shown.open < 0 ? "" : String(shown.open + 1),
    line: shown.line,
  };
}

export const hashOfAddress = (shown: Shown) => viewHash("events", "", stateOf(shown));

// A span reaches back from the end of the collection.
export function wantedOf(shown: Shown, collected: number): WantedEvents {
  const span = SPANS.find(([id]) => id === shown.span && id !== "");
  const [from, to] = span ? [collected - span[2], collected + 1] : [timeOf(shown.from), timeOf(shown.to)];
  return {...shown, from, to};
}
