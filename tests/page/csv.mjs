// Reads RFC 4180.
export function parse(text) {
  const rows = [];
  let row = [];
  let cell = "";
  let quoted = false;
  for (let at = 0; at < text.length; ++at) {
    const c = text[at];
    if (quoted) {
      if (c !== '"') cell += c;
      else if (text[at + 1] === '"') cell += text[++at];
      else quoted = false;
    } else if (c === '"') {
      quoted = true;
    } else if (c === ",") {
      row.push(cell);
      cell = "";
    } else if (c === "\r" && text[at + 1] === "\n") {
      rows.push([...row, cell]);
      [row, cell] = [[], ""];
      ++at;
    } else {
      cell += c;
    }
  }
  return rows;
}
