// The rows of one table, as far as they are loaded: for each chunk, for each column, the values.
import type {Table, Value} from "./report";

export class Rows {
  private readonly chunks: Value[][][] = [];
  private readonly firsts: number[] = []; // of each chunk: the number of its first row
  readonly names: {first: number; name: string; index: number}[] = [];
  count = 0;

  constructor(readonly table: Table) {}

  // The rows behind those that are there.
  add(chunk: Value[][], rows: number): void {
    this.firsts.push(this.count);
    this.chunks.push(chunk);
    this.count += rows;
  }

  cell(row: number, column: number): Value {
    const at = this.chunkOf(row);
    return this.chunks[at]?.[column]?.[row - this.firsts[at]!] ?? null;
  }

  // Most chunks have chunk_rows rows, and none has more.
  private chunkOf(row: number): number {
    let low = Math.floor(row / this.table.chunk_rows);
    let high = this.firsts.length - 1;
    if (low >= high || this.firsts[low + 1]! > row) return low;
    while (low < high) {
      const middle = Math.ceil((low + high) / 2);
      if (this.firsts[middle]! <= row) low = middle;
      else high = middle - 1;
    }
    return low;
  }

  record(row: number): Value[] {
    return this.table.columns.map((_, column) => this.cell(row, column));
  }

  // The record's own name, as its module gave it.
  name(row: number): string {
    let found = "";
    for (const run of this.names) {
      if (run.first > row) break;
      found = run.name;
    }
    return found;
  }
}
