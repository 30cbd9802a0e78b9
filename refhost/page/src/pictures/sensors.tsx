// Each sensor's reading against its thresholds, grouped by kind. Those with a finding are marked.
import type {Overview, Sensor, Severity} from "../base/report";
import {scale} from "../base/scale";
import {count, visible} from "../base/text";
import {sensorFindings, worst} from "../base/verdict";
import type {ViewProps} from "../base/view_props";
import {Standing} from "../parts/evidence";
import {SeverityMark} from "../parts/severity_mark";
import {EmptyPicture} from "./empty_picture";
import {levelOf, type Level} from "./level";
import {isUnread, stateWords} from "./sensor_words";

const WIDTH = 360;
const HEIGHT = 26;

const TITLES: Record<string, string> = {
  temperature: "Temperatures",
  fan: "Fans",
  voltage: "Voltages",
  power: "Power",
  current: "Currents",
};
const STATES = "discrete";

const LOWER = ["lnr", "lc", "lnc"] as const;
const UPPER = ["unc", "uc", "unr"] as const;
const THRESHOLDS = [...LOWER, ...UPPER];
type ThresholdId = (typeof THRESHOLDS)[number];

// Between the outermost thresholds, or from zero where there are none below.
function scaleOf(sensor: Sensor) {
  const known = [...THRESHOLDS.map(id => sensor[id]), sensor.reading].filter(value => value !== undefined);
  const hasLower = LOWER.some(id => sensor[id] !== undefined);
  const low = hasLower ? Math.min(...known) : Math.min(0, ...known);
  const high = Math.max(...known);
  const room = (high - low || Math.abs(high) || 1) * 0.08;
  return scale(hasLower || low < 0 ? low - room : low, high + room, WIDTH);
}

// What lies beyond each threshold, the worse the later: it covers what is less bad.
const ZONES: [level: string, lower: (typeof LOWER)[number], upper: (typeof UPPER)[number]][] = [
  ["warning", "lnc", "unc"],
  ["critical", "lc", "uc"],
  ["beyond", "lnr", "unr"],
];

function Bar({sensor, reading, level}: {sensor: Sensor; reading: number; level: Level}) {
  const x = scaleOf(sensor);
  const zone = (kind: string, id: ThresholdId, from: number, to: number) => (
    <rect key={id} class={`zone ${kind}`} data-from={id} x={from} y={8} width={Math.max(0, to - from)} height={10} />
  );
  return (
    <svg class="bar" viewBox={`0 0 ${WIDTH} ${HEIGHT}`} preserveAspectRatio="none" aria-hidden="true">
      <rect class="zone within" x={0} y={8} width={WIDTH} height={10} />
      {ZONES.map(([kind, lower, upper]) => [
        sensor[lower] !== undefined && zone(kind, lower, 0, x(sensor[lower])),
        sensor[upper] !== undefined && zone(kind, upper, x(sensor[upper]), WIDTH),
      ])}
      {THRESHOLDS.map(id => {
        const threshold = sensor[id];
        return (
          threshold !== undefined && (
            <line key={id} class="threshold" x1={x(threshold)} x2={x(threshold)} y1={5} y2={21} />
          )
        );
      })}
      <rect class={`mark ${level}`} x={x(reading) - 2.5} y={1} width={5} height={24} />
    </svg>
  );
}

export function spoken(sensor: Sensor): string {
  const limits = THRESHOLDS.filter(id => sensor[id] !== undefined).map(id => `${id.toUpperCase()} ${sensor[id]}`);
  return limits.length > 0 ? limits.join(", ") : "no thresholds";
}

type Judge = (sensor: Sensor) => Severity | undefined;

function Mark({severity}: {severity: Severity | undefined}) {
  if (severity === undefined || severity === "notice") return null;
  return (
    <>
      <SeverityMark of={severity} />
      <span class="unseen">{severity}: </span>
    </>
  );
}

function Threshold({sensor, severity}: {sensor: Sensor; severity: Severity | undefined}) {
  const level = levelOf(severity);
  const {reading} = sensor;
  return (
    <>
      {reading === undefined ? (
        <span class="bar none">no reading</span>
      ) : (
        <Bar sensor={sensor} reading={reading} level={level} />
      )}
      <span class="reading">
        <bdi>{reading ?? ""}</bdi>
      </span>
      <span class="status">
        <Mark severity={severity} />
        <bdi>{visible(sensor.status ?? "")}</bdi>
      </span>
      <span class={level === "plain" ? "unseen" : "limits"}>{spoken(sensor)}</span>
    </>
  );
}

function Discrete({sensor, severity}: {sensor: Sensor; severity: Severity | undefined}) {
  return (
    <span class="reading">
      <Mark severity={severity} />
      <bdi>{visible(stateWords(sensor))}</bdi>
    </span>
  );
}

function Line({sensor, overview, severityOf}: {sensor: Sensor; overview: Overview; severityOf: Judge}) {
  const severity = severityOf(sensor);
  const isDiscrete = sensor.kind === STATES;
  const Told = isDiscrete ? Discrete : Threshold;
  const title = isDiscrete ? `status ${visible(sensor.status ?? "not told")}` : spoken(sensor);
  return (
    <li class={`sensor ${levelOf(severity)}`}>
      <Standing overview={overview} place={sensor} title={title}>
        <span class="name">
          <bdi>{visible(sensor.name ?? "")}</bdi>
        </span>
        <Told sensor={sensor} severity={severity} />
      </Standing>
    </li>
  );
}

function titleOf(kind: string, sensors: Sensor[]): string {
  if (kind === STATES) return "States (discrete sensors)";
  const units = [...new Set(sensors.flatMap(sensor => sensor.unit ?? []))].map(visible);
  return [TITLES[kind] ?? (visible(kind) || "Others"), ...units].join(", ");
}

// "19 sensors, 2 with a finding, 1 without a reading"
function tally(sensors: Sensor[], severityOf: Judge): string {
  const marked = sensors.filter(sensor => levelOf(severityOf(sensor)) !== "plain").length;
  const unread = sensors.filter(isUnread).length;
  return [
    count(sensors.length, "sensor"),
    `${marked === 0 ? "none" : marked} with a finding`,
    unread > 0 && `${unread} without a reading`,
  ]
    .filter(text => text !== false)
    .join(", ");
}

export function SensorsPicture({overview}: ViewProps) {
  const sensors = overview.inventory?.sensors ?? [];
  if (sensors.length === 0) return <EmptyPicture overview={overview} of="sensors" />;
  const found = sensorFindings(overview);
  const severityOf: Judge = sensor => worst(found(sensor));
  const kinds = new Set([...Object.keys(TITLES), ...sensors.map(({kind}) => kind ?? "")]);
  kinds.delete(STATES); // they come last
  const groups = [...kinds, STATES].map((kind): [string, Sensor[]] => [
    kind,
    sensors.filter(sensor => (sensor.kind ?? "") === kind),
  ]);

  return (
    <>
      <p class="lead">{tally(sensors, severityOf)}. Each leads to its line in the capture.</p>
      <ul class="legend">
        <li>
          <i class="within" /> within
        </li>
        <li>
          <i class="warning" /> non-critical
        </li>
        <li>
          <i class="critical" /> critical
        </li>
        <li>
          <i class="beyond" /> non-recoverable
        </li>
        <li>lines: thresholds; each scale is the sensor's own</li>
      </ul>
      {groups
        .filter(([, all]) => all.length > 0)
        .map(([kind, all]) => (
          <section key={kind} class={kind === STATES ? "sensors states" : "sensors"}>
            <h2>
              {titleOf(kind, all)} <small>{tally(all, severityOf)}</small>
            </h2>
            <ul>
              {all.map((sensor, at) => (
                <Line key={at} sensor={sensor} overview={overview} severityOf={severityOf} />
              ))}
            </ul>
          </section>
        ))}
    </>
  );
}
