// Links to captures. A module's link text is markup; only the one exact form that names a file of
// this report becomes a link, everything else is shown as the text it is.
import type {Capture, Value} from "./report";

const LINK = /^\n<pre>\n<a href='\.\.\/([^/]+?)' target='_blank'>\.\.\/([^/]+)<\/a>\n<pre>\n$/;

// The capture that a value leads to. The text behind "../" may end in the quote that closed the
// name in the command line; it is no part of the file's name.
export function linkedCapture(value: Value, captures: Map<string, Capture>): Capture | undefined {
  if (typeof value !== "string") return undefined;
  const match = LINK.exec(value);
  if (!match || match[1] !== match[2]) return undefined;
  const name = match[1]!;
  return captures.get(name) ?? captures.get(name.replace(/'$/, ""));
}

// What a browser shows as text, saves, or lists; anything else it might run as a page.
const HARMLESS = /^[^.]*$|\.(txt|log|out|conf|txz|tgz|tbz|gz|xz|bz2|zst|tar|zip)$/i;

// The address of the file itself, if opening it is safe.
export function captureAddress(capture: Capture): string | undefined {
  if (capture.kind === "other" || capture.name === "" || !HARMLESS.test(capture.name)) return undefined;
  return `../${encodeURIComponent(capture.name)}`;
}
