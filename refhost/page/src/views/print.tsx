// Two to four pages for paper: who and when, what is missing, health, findings, storage, sensors that are not ok,
// the newest events.
import type {Overview, Sensor} from "../base/report";
import {count, oneLine, visible} from "../base/text";
import {isAcknowledged, sensorFindings, worst} from "../base/verdict";
import {FindingsView} from "../parts/findings";
import {IncompleteNotice} from "../parts/incomplete_notice";
import {MachineFacts} from "../parts/machine";
import {SeverityMark} from "../parts/severity_mark";
import {useEventsWith} from "../events/use_events";
import {isUnread, stateWords} from "../pictures/sensor_words";
import {spoken} from "../pictures/sensors";
import {hasStorage, StorageDrawing} from "../pictures/storage";
import {Collected, ServerHeading} from "./overview";

const NEWEST = 25;
const SAID_ONCE = ["ok", "na", "ns"]; // states of which a sensor without a finding needs no line

function HealthTable({overview}: {overview: Overview}) {
  return (
    <table class="printed">
      <thead>
        <tr>
          <th scope="col">Subsystem</th>
          <th scope="col">Health</th>
          <th scope="col">Findings, or what is missing</th>
        </tr>
      </thead>
      <tbody>
        {overview.health!.map(({subsystem, health, missing}) => {
          const found = overview.findings!.filter(one => one.subsystem === subsystem && one.severity !== "notice");
          return (
            <tr key={subsystem}>
              <td>{subsystem === "bmc" ? "BMC" : visible(subsystem)}</td>
              <td>
                <SeverityMark of={health} /> {health}
              </td>
              <td>
                {[...(found.length > 0 ? [count(found.length, "finding")] : []), ...missing].map(visible).join("; ")}
              </td>
            </tr>
          );
        })}
      </tbody>
    </table>
  );
}

function readingOf(sensor: Sensor): string {
  if (sensor.kind === "discrete") return stateWords(sensor);
  if (sensor.reading === undefined) return "no reading";
  return [sensor.reading, sensor.unit].filter(part => part !== undefined).join(" ");
}

function NotOk({overview}: {overview: Overview}) {
  const sensors = overview.inventory?.sensors ?? [];
  const found = sensorFindings(overview);
  const isOdd = (sensor: Sensor) => {
    const severity = worst(found(sensor));
    if (severity !== undefined && severity !== "notice") return true;
    return sensor.kind !== "discrete" && sensor.status !== undefined && !SAID_ONCE.includes(sensor.status);
  };
  const odd = sensors.filter(isOdd);
  const unread = sensors.filter(isUnread);
  if (sensors.length === 0) return <p>No sensor was read.</p>;
  return (
    <>
      <p>
        {odd.length === 0 ? "None" : odd.length} of {count(sensors.length, "sensor")}.
        {unread.length > 0 &&
          ` ${unread.length} gave no reading: ${unread.map(({name}) => visible(name ?? "without a name")).join(", ")}.`}
      </p>
      {odd.length > 0 && (
        <table class="printed">
          <thead>
            <tr>
              <th scope="col">Sensor</th>
              <th scope="col">Reading</th>
              <th scope="col">Status</th>
              <th scope="col">Thresholds</th>
            </tr>
          </thead>
          <tbody>
            {odd.map((sensor, at) => (
              <tr key={at}>
                <td>{visible(sensor.name ?? "")}</td>
                <td>{visible(readingOf(sensor))}</td>
                <td>{sensor.kind === "discrete" ? "" : visible(sensor.status ?? "")}</td>
                <td>{sensor.kind === "discrete" ? "" : spoken(sensor)}</td>
              </tr>
            ))}
          </tbody>
        </table>
      )}
    </>
  );
}

function Newest({overview}: {overview: Overview}) {
  const {found, reading, failure} = useEventsWith(overview, () => true, "newest");
  if (reading) return <p role="status">Reading the events ...</p>;
  if (failure !== "") return <p class="problem">{failure}</p>;
  if (found.length === 0) return <p>No capture tells of an event.</p>;
  return (
    <>
      <p>
        The newest {Math.min(NEWEST, found.length)} of {count(found.length, "event")}, each by its source's clock.
      </p>
      <table class="printed">
        <thead>
          <tr>
            <th scope="col">Time</th>
            <th scope="col">Severity</th>
            <th scope="col">Source</th>
            <th scope="col">Event</th>
          </tr>
        </thead>
        <tbody>
          {found.slice(0, NEWEST).map(event => (
            <tr key={event.row}>
              <td class="time">{event.time === "" ? "no clock" : visible(event.time.replace("T", " "))}</td>
              <td>{visible(event.severity)}</td>
              <td class="source">{visible(event.source)}</td>
              <td>{oneLine([event.subject, event.text].filter(text => text !== "").join(": "))}</td>
            </tr>
          ))}
        </tbody>
      </table>
    </>
  );
}

export function PrintView({overview}: {overview: Overview}) {
  return (
    <div class="whole">
      <ServerHeading overview={overview} />
      <p class="lead">
        <Collected overview={overview} />
        {overview.meta["run_as"] && `, by ${visible(overview.meta["run_as"])}`}; qvhost{" "}
        {visible(overview.meta["qvhost"] ?? "")}.{" "}
        <button type="button" class="screen" onClick={() => window.print()}>
          Print
        </button>
      </p>
      <IncompleteNotice overview={overview} whole />
      {overview.health === undefined ? (
        <p class="empty">This report holds no verdict: nothing in it says how the server is.</p>
      ) : (
        <>
          <h2>Health</h2>
          <HealthTable overview={overview} />
          <h2>Findings</h2>
          <FindingsView
            overview={overview}
            findings={overview.findings!.filter(one => one.severity !== "notice" || isAcknowledged(one))}
          />
        </>
      )}
      <h2>The machine</h2>
      <MachineFacts overview={overview} />
      {hasStorage(overview) && (
        <>
          <h2>Storage</h2>
          <StorageDrawing overview={overview} />
        </>
      )}
      {overview.inventory !== undefined && (
        <>
          <h2>Sensors that are not ok</h2>
          <NotOk overview={overview} />
        </>
      )}
      {overview.events !== undefined && (
        <>
          <h2>Newest events</h2>
          <Newest overview={overview} />
        </>
      )}
    </div>
  );
}
