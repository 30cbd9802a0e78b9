// What the report calls its server: host name, product and serial number, where the collection tells them.
import type {Overview} from "./report";
import {visible} from "./text";

const fact = ({facts}: Overview, wanted: string) => visible(facts.find(({label}) => label === wanted)?.value ?? "");

export const hostName = (overview: Overview) => visible(overview.meta["host"] ?? "");
export const productName = (overview: Overview) => fact(overview, "Product");
export const serialNumber = (overview: Overview) => fact(overview, "Serial number");

export function serverName(overview: Overview): string {
  const names = [hostName(overview), productName(overview), serialNumber(overview)].filter(name => name !== "");
  return names.length > 0 ? names.join(", ") : "Server report";
}
