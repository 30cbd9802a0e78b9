// What the report calls its server: its host name and its product, where the collection tells them.
import type {Overview} from "./data";
import {visible} from "./text";

export function productName(overview: Overview): string {
  return visible(overview.facts.find(fact => fact.label === "Product")?.value ?? "");
}

export function hostName(overview: Overview): string {
  return visible(overview.meta["host"] ?? "");
}

export function serverName(overview: Overview): string {
  const names = [hostName(overview), productName(overview)].filter(name => name !== "");
  return names.length > 0 ? names.join(", ") : "Server report";
}
