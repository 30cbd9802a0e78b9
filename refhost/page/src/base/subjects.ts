// What people look for in a server, each with the subsystems whose health tells how it is.
import type {HealthWord, Overview} from "./report";
import type {View} from "./route";

export interface Subject {
  view: View;
  title: string;
  subsystems: string[] | "all";
}

export const subjects: Subject[] = [
  {view: "overview", title: "Health", subsystems: "all"},
  {view: "storage", title: "Storage", subsystems: ["storage"]},
  {view: "sensors", title: "Sensors", subsystems: ["temperature", "cooling"]},
  {view: "power", title: "Power", subsystems: ["power"]},
  {view: "memory", title: "Memory", subsystems: ["memory"]},
  {view: "events", title: "Events", subsystems: []},
  {view: "system", title: "System", subsystems: ["system", "processor", "bmc"]},
  {view: "captures", title: "Captures", subsystems: ["collection"]},
];

const WORST_FIRST: HealthWord[] = ["critical", "warning", "unknown", "ok", "absent"];

// The worst word of the subject's subsystems. A subsystem of which the verdict says nothing is unknown.
// Undefined: nothing judges the subject.
export function healthOf(overview: Overview, {subsystems}: Subject): HealthWord | undefined {
  const {health} = overview;
  if (health === undefined || subsystems.length === 0) return undefined;
  const asked = subsystems === "all" ? health.map(({subsystem}) => subsystem) : subsystems;
  const words = asked.map(name => health.find(({subsystem}) => subsystem === name)?.health ?? "unknown");
  return WORST_FIRST.find(word => words.includes(word));
}
