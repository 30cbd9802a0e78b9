// Which events are about memory, and which slot one names.
import type {Event} from "./event";

const WORDS = /\b(memory|DIMM|EDAC|ECC)\b/i;

export const isOfMemory = (event: Event) => WORDS.test(`${event.subject} ${event.text}`);

// Whether the event has the slot's name as a word of its own: "DIMM_A1", not "DIMM_A12".
export function named({subject, text}: Event, slot: string): boolean {
  if (slot === "") return false;
  const escaped = slot.replace(/[.*+?^${}()|[\]\\]/g, "\\$&");
  return new RegExp(`(^|[^\\w])${escaped}($|[^\\w])`, "i").test(`${subject} ${text}`);
}
