// The slots of an enclosure in their order.
import type {Drive} from "../base/report";
import {natural} from "../base/view_rows";

export interface PlacedSlot {
  number: number | undefined; // undefined: of a drive without a slot
  drive: Drive | undefined; // undefined: no capture lists a drive there
}

// Enclosures count their slots from 0 or from 1. A drive in slot 0, or in the slot of that number, tells which;
// without one of them only the slots between drives are drawn as empty.
export function slotsOf(drives: Drive[], slots: number | undefined): PlacedSlot[] {
  const named = drives.filter(drive => drive.slot !== undefined).sort((a, b) => a.slot! - b.slot!);
  const others = drives
    .filter(drive => drive.slot === undefined)
    .sort((a, b) => (a.device_id ?? 0) - (b.device_id ?? 0) || natural.compare(a.device ?? "", b.device ?? ""))
    .map(drive => ({number: undefined, drive}));
  if (named.length === 0) return others;
  let [first, last] = [named[0]!.slot!, named.at(-1)!.slot!];
  if (slots !== undefined && first === 0) last = Math.max(last, slots - 1);
  else if (slots !== undefined && last === slots) first = Math.min(first, 1);
  const placed: PlacedSlot[] = [];
  const MOST = 1000; // slots that no drive is in: more is a number read wrong
  let number = first;
  for (const drive of named) {
    for (; number < drive.slot! && placed.length < MOST; ++number) placed.push({number, drive: undefined});
    placed.push({number: drive.slot!, drive});
    number = drive.slot! + 1;
  }
  for (; number <= last && placed.length < MOST; ++number) placed.push({number, drive: undefined});
  return [...placed, ...others];
}
