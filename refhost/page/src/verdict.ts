// What the collection's verdict says, as the page shows it. It comes with the report; nothing here judges.
import type {Drive, Finding, Overview, Place, Severity} from "./data";

const SEVERITIES: Severity[] = ["critical", "warning", "unknown", "notice"];

// The findings of each severity, the worst first; none without findings.
export function bySeverity(findings: Finding[]): {severity: Severity; findings: Finding[]}[] {
  return SEVERITIES.map(severity => ({
    severity,
    findings: findings.filter(finding => finding.severity === severity),
  })).filter(group => group.findings.length > 0);
}

// What was missing for a verdict, each in its words, with the subsystems that lack it.
export function missing(overview: Overview): {words: string; subsystems: string[]}[] {
  const all = new Map<string, string[]>();
  for (const {subsystem, missing} of overview.health ?? []) {
    for (const words of missing) all.set(words, [...(all.get(words) ?? []), subsystem]);
  }
  return [...all].map(([words, subsystems]) => ({words, subsystems}));
}

export function findingsAt(overview: Overview, capture: string, line: number): Finding[] {
  return (overview.findings ?? []).filter(finding =>
    finding.evidence.some(place => place.capture === capture && place.line === line),
  );
}

const worse = (a: Severity | undefined, b: Severity) =>
  a === undefined || SEVERITIES.indexOf(b) < SEVERITIES.indexOf(a) ? b : a;

// The worst finding of an entity, by where the entity stands.
export function severities(overview: Overview): (place: Place) => Severity | undefined {
  const key = ({capture, line}: Place) => `${line} ${capture}`;
  const all = new Map<string, Severity>();
  for (const {severity, evidence} of overview.findings ?? []) {
    for (const place of evidence) all.set(key(place), worse(all.get(key(place)), severity));
  }
  return place => all.get(key(place));
}

export function drivePlace(drive: Drive): string {
  return drive.slot === undefined ? (drive.device ?? "") : `${drive.enclosure ?? ""}:${drive.slot}`;
}

// The worst finding of a drive. What is said of its counters stands in its details, not where the drive
// stands; such findings begin with the drive's name: "Drive 10:4 of controller 0, EX1200MM0129, ...".
export function driveSeverities(overview: Overview): (drive: Drive) => Severity | undefined {
  const here = severities(overview);
  const named = new Map<string, Severity>();
  for (const {severity, subject} of overview.findings ?? []) {
    const name = subject.split(", ")[0]!;
    named.set(name, worse(named.get(name), severity));
  }
  return drive => {
    const of = drive.controller === undefined ? "" : ` of controller ${drive.controller}`;
    const [a, b] = [here(drive), named.get(`Drive ${drivePlace(drive)}${of}`)];
    return b === undefined ? a : worse(a, b);
  };
}
