// What the report calls its server: the product, where a capture tells it.
import type {Overview} from "./data";
import {visible} from "./text";

export function serverName(overview: Overview): string {
  const product = overview.facts.find(fact => fact.label === "Product");
  return product ? visible(product.value) : "Server report";
}
