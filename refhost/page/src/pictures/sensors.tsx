// Each sensor's reading against its thresholds, grouped by kind. Those with a finding are marked.
import {scaleLinear} from "d3-scale";
import type {Overview, Sensor, Severity} from "../data";
import {Standing} from "../evidence";
import {SeverityMark} from "../severity_mark";
import {count, visible} from "../text";
import {sensorFindings, worst} from "../verdict";
import {levelOf, type Level} from "./level";
import {Nothing} from "./nothing";
import type {PictureProps} from "./props";

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

// Between the outermost thresholds, or from zero where there are none below.
function scaleOf(sensor: Sensor) {
  const known = [...THRESHOLDS.map(id => sensor[id]), sensor.reading].filter(value => value !== undefined);
  const hasLower = LOWER.some(id => sensor[id] !== undefined);
  const low = hasLower ? Math.min(...known) : Math.min(0, ...known);
  const high = Math.max(...known);
  const room = (high - low || Math.abs(high) || 1) * 0.08;
  return scaleLinear()
    .domain([hasLower || low < 0 ? low - room : low, high + room])
    .range([0, WIDTH]);
}

function Bar({sensor, reading, level}: {sensor: Sensor; reading: number; level: Level}) {
  const x = scaleOf(sensor);
  // From a threshold outwards to the next one, or to the end of the scale.
  const zone = (kind: string, from: number | undefined, to: number | undefined) => {
    const [begin, end] = [from === undefined ? 0 : x(from), to === undefined ? WIDTH : x(to)];
    return <rect class={kind} x={Math.min(begin, end)} y={8} width={Math.abs(end - begin)} height={10} />;
  };
  const lowest = sensor.lc ?? sensor.lnr;
  const highest = sensor.uc ?? sensor.unr;
  return (
    <svg class="bar" viewBox={`0 0 ${WIDTH} ${HEIGHT}`} preserveAspectRatio="none" aria-hidden="true">
      <rect class="zone within" x={0} y={8} width={WIDTH} height={10} />
      {sensor.lnc !== undefined && zone("zone warning", undefined, sensor.lnc)}
      {sensor.unc !== undefined && zone("zone warning", sensor.unc, undefined)}
      {lowest !== undefined && zone("zone critical", undefined, lowest)}
      {highest !== undefined && zone("zone critical", highest, undefined)}
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

function spoken(sensor: Sensor): string {
  const limits = THRESHOLDS.filter(id => sensor[id] !== undefined).map(id => `${id.toUpperCase()} ${sensor[id]}`);
  return limits.length > 0 ? limits.join(", ") : "no thresholds";
}

type Judge = (sensor: Sensor) => Severity | undefined;

function Line({sensor, overview, severityOf}: {sensor: Sensor; overview: Overview; severityOf: Judge}) {
  const severity = severityOf(sensor);
  const level = levelOf(severity);
  const {reading, states} = sensor;
  const thresholds = sensor.kind === STATES ? "" : spoken(sensor);
  return (
    <li class={`sensor ${level}`}>
      <Standing overview={overview} place={sensor} title={thresholds}>
        <span class="name">
          <bdi>{visible(sensor.name ?? "")}</bdi>
        </span>
        {reading === undefined ? <span class="bar" /> : <Bar sensor={sensor} reading={reading} level={level} />}
        <span class="reading">
          <bdi>{reading ?? (states.length > 0 ? visible(states.join(", ")) : "")}</bdi>
        </span>
        <span class="status">
          {severity !== undefined && severity !== "notice" && (
            <>
              <SeverityMark of={severity} />
              <span class="unseen">{severity}: </span>
            </>
          )}
          <bdi>{visible(sensor.status ?? "")}</bdi>
        </span>
        {thresholds !== "" && <span class="unseen">, {thresholds}</span>}
      </Standing>
    </li>
  );
}

function titleOf(kind: string, sensors: Sensor[]): string {
  if (kind === STATES) return "States (discrete sensors)";
  const units = [...new Set(sensors.flatMap(sensor => sensor.unit ?? []))].map(visible);
  return [TITLES[kind] ?? (visible(kind) || "Others"), ...units].join(", ");
}

export function SensorsPicture({overview}: PictureProps) {
  const sensors = overview.inventory?.sensors ?? [];
  if (sensors.length === 0) return <Nothing overview={overview} of="sensors" />;
  const found = sensorFindings(overview);
  const severityOf: Judge = sensor => worst(found(sensor));
  const kinds = new Map<string, Sensor[]>(Object.keys(TITLES).map(kind => [kind, []]));
  for (const sensor of sensors) {
    const kind = sensor.kind ?? "";
    if (!kinds.has(kind)) kinds.set(kind, []);
    kinds.get(kind)!.push(sensor);
  }
  const marked = sensors.filter(sensor => levelOf(severityOf(sensor)) !== "plain").length;

  return (
    <>
      <p class="lead">
        {count(sensors.length, "sensor")}, {marked === 0 ? "none" : marked} with a finding. Each leads to its line in
        the capture.
      </p>
      <ul class="legend">
        <li>
          <i class="within" /> within
        </li>
        <li>
          <i class="warning" /> non-critical
        </li>
        <li>
          <i class="critical" /> critical and beyond
        </li>
        <li>lines: thresholds; each scale is the sensor's own</li>
      </ul>
      {[...kinds]
        .filter(([, all]) => all.length > 0)
        .map(([kind, all]) => (
          <section key={kind} class={kind === STATES ? "sensors states" : "sensors"}>
            <h2>{titleOf(kind, all)}</h2>
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
