// How values look. Whatever a tool printed is text: nothing here makes markup of it.
import type {Value} from "./report";

// Control characters, and marks that turn the direction of what follows, would hide or disguise
// what a value says.
const HIDDEN =
  /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u00ad\u061c\u115f\u1160\u17b4\u17b5\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f\u3164\ufeff\uffa0\ufff0-\ufffb\u{1bca0}-\u{1bca3}\u{1d173}-\u{1d17a}\u{e0000}-\u{e0fff}]|\u034f|[\u180b-\u180d\u180f]|[\ufe00-\ufe0f]/gu;

function symbol(character: string): string {
  const code = character.codePointAt(0) ?? 0;
  if (code < 0x20) return String.fromCharCode(0x2400 + code);
  if (code === 0x7f) return "\u2421";
  return `[U+${code.toString(16).toUpperCase().padStart(4, "0")}]`;
}

export function plain(value: Value): string {
  return value === null ? "" : String(value);
}

// The text with hidden characters made visible; line ends and tabs stay.
export function visible(value: Value): string {
  return plain(value).replace(/\r\n/g, "\n").replace(HIDDEN, symbol);
}

// Without the blanks and line ends that tools pad values with.
export function trimmed(value: Value): string {
  return visible(plain(value).trim());
}

// One line, for a row of a table.
export function oneLine(value: Value, keepIndent = false): string {
  const text = plain(value);
  const cut = keepIndent ? text.replace(/[\s]+$/, "") : text.trim();
  return visible(cut)
    .replace(/\n+/g, " \u21b5 ")
    .replace(/\t/g, keepIndent ? "    " : " ");
}

// The text cut at one of its lines: what comes before it, the line, what follows. Without that line all
// of it comes before.
export function cutAtLine(
  text: string,
  line: number,
): {before: string; marked: string | null; after: string; lines: number} {
  let lines = 0;
  let [begin, end] = [-1, -1];
  for (let at = 0; at < text.length; ) {
    const stop = text.indexOf("\n", at);
    const next = stop < 0 ? text.length : stop;
    if (++lines === line) [begin, end] = [at, next];
    at = next + 1;
  }
  if (begin < 0) return {before: text, marked: null, after: "", lines};
  return {before: text.slice(0, begin), marked: text.slice(begin, end), after: text.slice(end), lines};
}

const NUMBER = /^[+-]?(\d+(\.\d*)?|\.\d+)(e[+-]?\d+)?$/i;

// The number that a value is, whole; NaN for everything else ("na", "31C (87.80 F)").
export function number(value: Value): number {
  if (typeof value === "number") return value;
  const text = plain(value).trim();
  if (NUMBER.test(text)) return Number(text);
  if (/^0x[0-9a-f]{1,12}$/i.test(text)) return parseInt(text, 16);
  return NaN;
}

export function count(n: number, one: string, many = `${one}s`): string {
  return `${n.toLocaleString("en")} ${n === 1 ? one : many}`;
}

export function bytes(n: number): string {
  if (n < 1024) return `${n} B`;
  const units = ["KiB", "MiB", "GiB", "TiB"];
  let size = n;
  let unit = -1;
  do {
    size /= 1024;
    ++unit;
  } while (size >= 1024 && unit < units.length - 1);
  return `${size.toFixed(size < 10 ? 1 : 0)} ${units[unit]}`;
}

// A capacity to three decimals, as storage tools print it: "1.089 TiB".
export function capacity(n: number): string {
  const units = ["B", "KiB", "MiB", "GiB", "TiB", "PiB"];
  let size = n;
  let unit = 0;
  while (size >= 1024 && unit < units.length - 1) {
    size /= 1024;
    ++unit;
  }
  return `${Number(size.toFixed(3))} ${units[unit]}`;
}

// A time as its clock said it: "2026-11-17 21:12:03".
export function written(time: number): string {
  return new Date(time).toISOString().slice(0, 19).replace("T", " ");
}

export function seconds(n: number): string {
  if (n < 0.1) return "< 0.1 s";
  if (n < 10) return `${n.toFixed(1)} s`;
  if (n < 120) return `${Math.round(n)} s`;
  return `${Math.floor(n / 60)} min ${Math.round(n % 60)} s`;
}

// What spreadsheets take for a formula, also behind blanks, quotes and delimiters; and where such a sign stands
// behind a line end or a delimiter that other spreadsheets use, which would begin a cell there.
const FORMULA = /^(?:[\s"',;|]*[=+\-@\uff1d\uff0b\uff0d\uff20]|[\u0000-\u001f\u007f])/;
const FORMULAS_WITHIN = /([;|\t\r\n][\s"']*)(?=[=+\-@\uff1d\uff0b\uff0d\uff20])/g;

// RFC 4180. An apostrophe makes a text of what a spreadsheet would take for a formula.
export function csvCell(value: Value): string {
  let text = plain(value);
  if (typeof value !== "number" && Number.isNaN(number(text))) {
    const begins = FORMULA.test(text);
    text = text.replace(FORMULAS_WITHIN, "$1'");
    if (begins) text = `'${text}`;
  }
  return /[",;|\t\r\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}
