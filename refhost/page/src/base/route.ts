// Where in the page, and what of it is shown: the whole state is in the address. "#SENSORINFO" is a table,
// "#SENSORINFO@12" its 12th record, "#/..." a view, "#/capture/NAME@7" line 7 of a capture; behind "?" stands
// what is filtered, sorted and open: "#/events?severity=critical&text=fan".

const VIEWS = [
  "overview",
  "storage",
  "sensors",
  "power",
  "memory",
  "events",
  "system",
  "captures",
  "capture",
  "tables",
  "search",
  "print",
] as const;

export type View = (typeof VIEWS)[number] | "table";
export type State = Record<string, string>;

export interface Route {
  view: View;
  name: string; // of the table or capture, or what is searched
  row: number; // of a table, or the line of a capture; from 0; -1: none
  state: State;
}

function decoded(text: string): string {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

function stateOf(text: string): State {
  const parts = text.split("&").filter(part => part !== "");
  return Object.fromEntries(
    parts.map(part => {
      const [, key, value] = /^([^=]*)=?(.*)$/s.exec(part)!;
      return [decoded(key!), decoded(value!)];
    }),
  );
}

export function routeOf(hash: string): Route {
  const [, text, query] = /^#?([^?]*)\??(.*)$/s.exec(hash)!;
  const state = stateOf(query!);
  const overview: Route = {view: "overview", name: "", row: -1, state};
  if (text === "") return overview;
  if (text!.startsWith("/")) {
    const [view, ...rest] = text!.slice(1).split("/");
    const known = VIEWS.find(v => v === view);
    if (!known) return overview;
    const [, name, line] = /^(.*?)(?:@(\d+))?$/s.exec(rest.join("/"))!;
    return {view: known, name: decoded(name!), row: Number(line ?? 0) - 1, state};
  }
  const [, name, row] = /^([^@]*)(?:@(\d+))?$/s.exec(text!) ?? [text, text];
  return {view: "table", name: decoded(name!), row: Number(row ?? 0) - 1, state};
}

// encodeURIComponent leaves nothing that routeOf reads: "@", "/", "?", "&" and "=" become %40, ...
export function hashOf({view, name, row, state}: Route): string {
  const path =
    view === "table" ? encodeURIComponent(name) : `/${view}${name === "" ? "" : `/${encodeURIComponent(name)}`}`;
  const query = Object.entries(state)
    .filter(([, value]) => value !== "")
    .map(([key, value]) => `${encodeURIComponent(key)}=${encodeURIComponent(value)}`)
    .join("&");
  return `#${path}${row >= 0 ? `@${row + 1}` : ""}${query === "" ? "" : `?${query}`}`;
}

export function tableHash(id: string, row = -1, state: State = {}): string {
  return hashOf({view: "table", name: id, row, state});
}

export function viewHash(view: View, name = "", state: State = {}): string {
  return hashOf({view, name, row: -1, state});
}

// A line of a capture; 0: the capture as a whole.
export function captureHash(name: string, line = 0, state: State = {}): string {
  return hashOf({view: "capture", name, row: line - 1, state});
}

// Goes there. Back leads to where one was.
export function visit(hash: string): void {
  location.hash = hash;
}

// Tells the address what is shown by now, without a step for the back button.
export function note(hash: string): void {
  if (hash !== location.hash) history.replaceState(history.state, "", hash);
}
