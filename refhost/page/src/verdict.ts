// What the collection's verdict says, as the page shows it. It comes with the report; nothing here judges.
import type {Drive, Finding, Overview, Place, Sensor, Severity} from "./data";

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

// The worst finding of an entity, by where it stands or by its name. What is said of a drive's counters or
// of a sensor's states stands on other lines; such findings begin with the name: "Drive 10:4 of controller
// 0, EX1200MM0129, ...".
function namedSeverities(overview: Overview): (place: Place, name: string) => Severity | undefined {
  const here = severities(overview);
  const named = new Map<string, Severity>();
  for (const {severity, subject} of overview.findings ?? []) {
    for (const name of new Set([subject, subject.split(", ")[0]!])) named.set(name, worse(named.get(name), severity));
  }
  return (place, name) => {
    const [a, b] = [here(place), named.get(name)];
    return b === undefined ? a : worse(a, b);
  };
}

// Readings of sensors stand where the sensors do, and names of sensors need not be unique.
export function sensorSeverities(overview: Overview): (sensor: Sensor) => Severity | undefined {
  const [here, named] = [severities(overview), namedSeverities(overview)];
  return sensor => (sensor.reading === undefined ? named(sensor, `Sensor ${sensor.name ?? ""}`) : here(sensor));
}

export function driveSeverities(overview: Overview): (drive: Drive) => Severity | undefined {
  const named = namedSeverities(overview);
  return drive => {
    const of = drive.controller === undefined ? "" : ` of controller ${drive.controller}`;
    return named(drive, `Drive ${drivePlace(drive)}${of}`);
  };
}
