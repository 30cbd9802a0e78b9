// Where in the page: "#SENSORINFO" is a table, "#SENSORINFO@12" its 12th record, "#SENSORINFO/fan" its
// records with "fan", "#/..." a view, "#/capture/NAME@7" line 7 of a capture.

export interface Route {
  view: "overview" | "table" | "sensors" | "drives" | "events" | "captures" | "capture" | "search" | "print";
  name: string; // of the table or capture, or what is searched
  row: number; // of a table, or the line of a capture; from 0; -1: none
  search: string;
}

const VIEWS = ["overview", "sensors", "drives", "events", "captures", "capture", "search", "print"] as const;

function decoded(text: string): string {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

export function routeOf(hash: string): Route {
  const text = hash.replace(/^#/, "");
  const overview: Route = {view: "overview", name: "", row: -1, search: ""};
  if (text === "") return overview;
  if (text.startsWith("/")) {
    const [view, ...rest] = text.slice(1).split("/");
    const known = VIEWS.find(v => v === view);
    if (!known) return overview;
    const [, name, line] = /^(.*?)(?:@(\d+))?$/s.exec(rest.join("/"))!;
    return {...overview, view: known, name: decoded(name!), row: Number(line ?? 0) - 1};
  }
  const [, name, row, search] = /^([^@/]*)(?:@(\d+))?(?:\/(.*))?$/s.exec(text) ?? [text, text];
  return {view: "table", name: decoded(name!), row: Number(row ?? 0) - 1, search: decoded(search ?? "")};
}

// encodeURIComponent leaves nothing that routeOf reads: "@" and "/" become %40 and %2F.
export function tableHash(id: string, row = -1, search = ""): string {
  return `#${encodeURIComponent(id)}${row >= 0 ? `@${row + 1}` : ""}${search === "" ? "" : `/${encodeURIComponent(search)}`}`;
}

export function viewHash(view: Route["view"], name = ""): string {
  return `#/${view}${name === "" ? "" : `/${encodeURIComponent(name)}`}`;
}

// A line of a capture; 0: the capture as a whole.
export function captureHash(name: string, line = 0): string {
  return `${viewHash("capture", name)}${line > 0 ? `@${line}` : ""}`;
}
