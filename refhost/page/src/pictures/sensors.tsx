// Each sensor's reading against its thresholds, grouped by unit.
import {scaleLinear} from "d3-scale";
import type {Table} from "../data";
import {tableHash} from "../route";
import {count} from "../text";
import {isBad, sensorsOf, THRESHOLDS, type Sensor} from "./readings";
import {useRows} from "./use_rows";

const WIDTH = 360;
const HEIGHT = 26;

const TITLES: Record<string, string> = {
  "degrees C": "Temperatures, degrees C",
  RPM: "Fans, RPM",
  Volts: "Voltages, Volts",
  Watts: "Power, Watts",
  Amps: "Currents, Amps",
};

// Between the outermost thresholds, or from zero where there are none below.
function scaleOf(sensor: Sensor) {
  const known = [...sensor.thresholds, sensor.value].filter(value => !Number.isNaN(value));
  const hasLower = sensor.thresholds.slice(0, 3).some(value => !Number.isNaN(value));
  const low = hasLower ? Math.min(...known) : Math.min(0, ...known);
  const high = Math.max(...known);
  const room = (high - low || Math.abs(high) || 1) * 0.08;
  return scaleLinear()
    .domain([hasLower || low < 0 ? low - room : low, high + room])
    .range([0, WIDTH]);
}

function Bar({sensor}: {sensor: Sensor}) {
  const x = scaleOf(sensor);
  const [lnr, lcr, lnc, unc, ucr, unr] = sensor.thresholds as [number, number, number, number, number, number];
  const first = (...values: number[]) => values.find(value => !Number.isNaN(value));
  // From a threshold outwards to the next one, or to the end of the scale.
  const zone = (kind: string, from: number | undefined, to: number | undefined) => {
    const [begin, end] = [from === undefined ? 0 : x(from), to === undefined ? WIDTH : x(to)];
    return <rect class={kind} x={Math.min(begin, end)} y={8} width={Math.abs(end - begin)} height={10} />;
  };
  const lowest = first(lcr, lnr);
  const highest = first(ucr, unr);
  return (
    <svg class="bar" viewBox={`0 0 ${WIDTH} ${HEIGHT}`} preserveAspectRatio="none" aria-hidden="true">
      <rect class="zone within" x={0} y={8} width={WIDTH} height={10} />
      {!Number.isNaN(lnc) && zone("zone warning", undefined, lnc)}
      {!Number.isNaN(unc) && zone("zone warning", unc, undefined)}
      {lowest !== undefined && zone("zone critical", undefined, lowest)}
      {highest !== undefined && zone("zone critical", highest, undefined)}
      {sensor.thresholds.map(
        (threshold, at) =>
          !Number.isNaN(threshold) && (
            <line key={at} class="threshold" x1={x(threshold)} x2={x(threshold)} y1={5} y2={21} />
          ),
      )}
      <rect class={`mark ${sensor.position}`} x={x(sensor.value) - 2.5} y={1} width={5} height={24} />
    </svg>
  );
}

function spoken(sensor: Sensor): string {
  const limits = sensor.thresholds.flatMap((value, at) => (Number.isNaN(value) ? [] : [`${THRESHOLDS[at]} ${value}`]));
  return limits.length > 0 ? limits.join(", ") : "no thresholds";
}

function Line({sensor}: {sensor: Sensor}) {
  return (
    <li class={`sensor ${sensor.position}`}>
      <a href={tableHash("SENSORINFO", sensor.row)} title={spoken(sensor)}>
        <span class="name">
          <bdi>{sensor.name}</bdi>
        </span>
        {Number.isNaN(sensor.value) ? <span class="bar" /> : <Bar sensor={sensor} />}
        <span class="reading">
          <bdi>{sensor.reading}</bdi>
        </span>
        <span class="status">
          {isBad(sensor) && <b aria-label="outside its thresholds">{sensor.position === "critical" ? "▲▲" : "▲"}</b>}{" "}
          <bdi>{sensor.status}</bdi>
        </span>
        <span class="unseen">, {spoken(sensor)}</span>
      </a>
    </li>
  );
}

export function SensorsPicture({tables}: {tables: Map<string, Table>}) {
  const {rows, failure} = useRows(tables, ["SENSORINFO"]);
  if (failure)
    return (
      <p class="problem" role="alert">
        {failure}
      </p>
    );
  if (!rows) return <p>Reading the sensors ...</p>;
  const sensors = sensorsOf(rows.get("SENSORINFO")!);
  const units = new Map<string, Sensor[]>();
  for (const unit of Object.keys(TITLES)) units.set(unit, []);
  for (const sensor of sensors) {
    const unit = sensor.unit;
    if (!units.has(unit)) units.set(unit, []);
    units.get(unit)!.push(sensor);
  }
  const outside = sensors.filter(isBad);

  return (
    <>
      <h1>Sensors</h1>
      <p class="lead">
        {count(sensors.length, "sensor")},{" "}
        {outside.length === 0
          ? "none outside its thresholds"
          : `${outside.length} outside ${outside.length === 1 ? "its" : "their"} thresholds`}
        . <a href="#SENSORINFO">All values</a>.
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
      {[...units]
        .filter(([, all]) => all.length > 0)
        .map(([unit, all]) => (
          <section key={unit} class={unit === "discrete" || unit === "" ? "sensors states" : "sensors"}>
            <h2>{TITLES[unit] ?? (unit === "discrete" ? "States (discrete sensors)" : unit || "Without a unit")}</h2>
            <ul>
              {all.map(sensor => (
                <Line key={sensor.row} sensor={sensor} />
              ))}
            </ul>
          </section>
        ))}
    </>
  );
}
