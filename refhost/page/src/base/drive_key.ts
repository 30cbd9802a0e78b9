// What names a drive in an address and in its heading: "c0 e252 s3".
import type {Drive} from "./report";

export function driveKey({controller, enclosure, slot, device_id, device}: Drive): string {
  return [
    controller === undefined ? "" : `c${controller}`,
    enclosure === undefined ? "" : `e${enclosure}`,
    slot === undefined ? (device_id === undefined ? (device ?? "") : `d${device_id}`) : `s${slot}`,
  ]
    .filter(part => part !== "")
    .join(" ");
}
