// A table's name for people: its id, and its title if it has one.
import type {Table} from "./report";
import {oneLine, visible} from "./text";

export function tableName(table: Table): string {
  const title = oneLine(table.title);
  return visible(table.id) + (title === "" ? "" : `: ${title}`);
}
