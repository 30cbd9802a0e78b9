// Work on a million rows without a frozen page: done in slices, between which the browser draws and
// answers.

const SLICE_MS = 12;
const BLOCK = 2048;

function pause(): Promise<void> {
  return new Promise(resolve => {
    const channel = new MessageChannel();
    channel.port1.onmessage = () => {
      channel.port1.close();
      resolve();
    };
    channel.port2.postMessage(0);
  });
}

// Lets the browser in when the slice is used up. Throws when the work is no longer wanted.
export class Slicer {
  private end = performance.now() + SLICE_MS;

  constructor(private readonly signal: AbortSignal) {}

  get due(): boolean {
    return performance.now() >= this.end;
  }

  async rest(): Promise<void> {
    await pause();
    this.signal.throwIfAborted();
    this.end = performance.now() + SLICE_MS;
  }
}

// The rows that pass, in order.
export async function selected(count: number, passes: (row: number) => boolean, slicer: Slicer): Promise<Int32Array> {
  const rows = new Int32Array(count);
  let size = 0;
  for (let row = 0; row < count; ++row) {
    if (passes(row)) rows[size++] = row;
    if (row % 256 === 255 && slicer.due) await slicer.rest();
  }
  return rows.slice(0, size);
}

// A stable merge sort, bottom up.
export async function sorted(
  rows: Int32Array,
  compare: (a: number, b: number) => number,
  slicer: Slicer,
): Promise<Int32Array> {
  let from = rows.slice();
  for (let begin = 0; begin < from.length; begin += BLOCK) {
    from.subarray(begin, begin + BLOCK).sort((a, b) => compare(a, b) || a - b);
    if (slicer.due) await slicer.rest();
  }
  let to = new Int32Array(from.length);
  for (let width = BLOCK; width < from.length; width *= 2) {
    for (let begin = 0; begin < from.length; begin += 2 * width) {
      const middle = Math.min(begin + width, from.length);
      const end = Math.min(begin + 2 * width, from.length);
      let left = begin;
      let right = middle;
      for (let at = begin; at < end; ++at) {
        const takeLeft = left < middle && (right >= end || compare(from[left]!, from[right]!) <= 0);
        to[at] = takeLeft ? from[left++]! : from[right++]!;
        if (at % 256 === 255 && slicer.due) await slicer.rest();
      }
    }
    [from, to] = [to, from];
  }
  return from;
}
