// What the collection's verdict says, as the page shows it. It comes with the report; nothing here judges.
import type {Drive, Finding, Overview, Place, PowerSupply, Sensor, Severity, Volume} from "./report";

const SEVERITIES: Severity[] = ["critical", "warning", "unknown", "notice"];

// Whether those who look after the server know of it: such a notice is never folded away.
export function isAcknowledged({acknowledged}: Finding): boolean {
  return acknowledged !== undefined && acknowledged !== null;
}

// Since when it is there, where that is not only since this collection, nor its own time.
export function sinceOf({meta}: Overview, {first_seen, time}: Finding): string | undefined {
  if (first_seen === undefined || first_seen === null || first_seen === time) return undefined;
  return first_seen < (meta["started"] ?? "") ? first_seen : undefined;
}

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

// What it says beside its subject. Of a capture the verdict's words begin with the capture's name, as they stand alone
// elsewhere: "sel.txt, line 1: Node busy".
export function saysBesideSubject({subject, says}: Finding): string {
  const rest = says.startsWith(subject) ? says.slice(subject.length) : "";
  return /^[:,] ./.test(rest) ? rest.slice(2) : says;
}

// Findings by a text that stands for an entity: where it stands, or its name.
class Index {
  private readonly all = new Map<string, Finding[]>();

  add(key: string, finding: Finding) {
    const known = this.all.get(key);
    if (known === undefined) this.all.set(key, [finding]);
    else if (!known.includes(finding)) known.push(finding);
  }

  get(key: string): Finding[] {
    return this.all.get(key) ?? [];
  }
}

export function worst(findings: Finding[]): Severity | undefined {
  return SEVERITIES.find(severity => findings.some(finding => finding.severity === severity));
}

type About<Entity> = (entity: Entity) => Finding[];

// The findings of an entity, by where the entity stands.
export function findingsHere(overview: Overview): About<Place> {
  const key = ({capture, line}: Place) => `${line} ${capture}`;
  const all = new Index();
  for (const finding of overview.findings ?? []) for (const place of finding.evidence) all.add(key(place), finding);
  return place => all.get(key(place));
}

// By where it stands or by its name. What is said of a drive's counters or of a sensor's states stands on
// other lines; such findings begin with the name: "Drive 10:4 of controller 0, EX1200MM0129, ...".
function findingsNamed(overview: Overview): (place: Place, name: string) => Finding[] {
  const here = findingsHere(overview);
  const named = new Index();
  for (const finding of overview.findings ?? [])
    for (const name of [finding.subject, finding.subject.split(", ")[0]!]) named.add(name, finding);
  return (place, name) => [...new Set([...here(place), ...named.get(name)])];
}

// Readings of sensors stand where the sensors do, and names of sensors need not be unique.
export function sensorFindings(overview: Overview): About<Sensor> {
  const [here, named] = [findingsHere(overview), findingsNamed(overview)];
  return sensor => (sensor.reading === undefined ? named(sensor, `Sensor ${sensor.name ?? ""}`) : here(sensor));
}

// As findings name a drive: "10:4", "device 7", "/dev/sda".
export function drivePlace(drive: Drive): string {
  if (drive.slot !== undefined) return `${drive.enclosure ?? ""}:${drive.slot}`;
  return drive.device_id === undefined ? (drive.device ?? "") : `device ${drive.device_id}`;
}

export function driveFindings(overview: Overview): About<Drive> {
  const named = findingsNamed(overview);
  return drive => {
    const of = drive.controller === undefined ? "" : ` of controller ${drive.controller}`;
    return named(drive, `Drive ${drivePlace(drive)}${of}`);
  };
}

// As findings name a volume: "Volume 2 "data pool" of controller 0 (RAID5)".
export function volumeFindings(overview: Overview): About<Volume> {
  const named = findingsNamed(overview);
  return volume => {
    const {controller, number, name, device, raid} = volume;
    const words = [
      "Volume",
      number,
      name && `"${name}"`,
      controller === undefined ? device : `of controller ${controller}`,
      raid && `(${raid})`,
    ];
    return named(volume, words.filter(word => word !== undefined && word !== "").join(" "));
  };
}

export function supplyFindings(overview: Overview): About<PowerSupply> {
  const named = findingsNamed(overview);
  return supply => named(supply, `${/^Power/.test(supply.slot ?? "") ? "" : "Power supply "}${supply.slot ?? ""}`);
}
