// How the pictures colour what has a finding; what has none has no colour.
import type {Severity} from "../base/report";

export type Level = "bad" | "poor" | "plain";

export function levelOf(severity: Severity | undefined): Level {
  if (severity === "critical") return "bad";
  return severity === "warning" || severity === "unknown" ? "poor" : "plain";
}
