// What a sensor says where it gives no number.
import type {Sensor} from "../base/report";

const NO_READING = ["na", "ns"];

export function isUnread({reading, states, status}: Sensor): boolean {
  return reading === undefined && states.length === 0 && NO_READING.includes(status ?? "");
}

// ipmitool sensor prints the states of a discrete sensor as two bytes: "0x0180". The first has the states 0 to 7, the
// second 8 to 14; the highest bit of the second is reserved and always set.
function numbers(status: string): number[] | undefined {
  const [, first, second] = /^0x([\da-f]{2})([\da-f]{2})$/i.exec(status) ?? [];
  if (first === undefined || second === undefined) return undefined;
  const bits = Number.parseInt(first, 16) | ((Number.parseInt(second, 16) & 0x7f) << 8);
  return Array.from({length: 15}, (_, at) => at).filter(at => bits & (1 << at));
}

// The states of a discrete sensor; where no capture names them, their numbers.
export function stateWords(sensor: Sensor): string {
  const {states, status = ""} = sensor;
  if (states.length > 0) return states.join(", ");
  if (isUnread(sensor)) return "no reading";
  const set = numbers(status);
  if (set === undefined) return status === "" || status === "ok" ? "no state told" : status;
  if (set.length === 0) return `no state is set (${status})`;
  return `${set.length === 1 ? "state" : "states"} ${set.join(", ")}, not named (${status})`;
}
