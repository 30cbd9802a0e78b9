// A subject: how its subsystems are, its picture, what was found in it.
import type {ComponentChildren} from "preact";
import type {Overview} from "../base/report";
import type {Subject} from "../base/subjects";
import {sensorFindings} from "../base/verdict";
import {FindingsView} from "./findings";
import {HealthView} from "./health";

export function SubjectView({
  subject,
  overview,
  children,
}: {
  subject: Subject;
  overview: Overview;
  children: ComponentChildren;
}) {
  const own = <One extends {subsystem: string}>(list: One[] | undefined) =>
    (list ?? []).filter(({subsystem}) => subject.subsystems.includes(subsystem));
  // A voltage's finding belongs to the power supply's health, and its sensor stands among the sensors.
  const ofSensors = subject.view === "sensors" ? overview.inventory?.sensors.flatMap(sensorFindings(overview)) : [];
  const wanted = new Set([...own(overview.findings), ...(ofSensors ?? [])]);
  const health = own(overview.health);
  const findings = (overview.findings ?? []).filter(finding => wanted.has(finding));
  return (
    <>
      <h1>{subject.title}</h1>
      {health.length > 0 && <HealthView overview={overview} health={health} />}
      {children}
      {findings.length > 0 && (
        <section aria-labelledby="findings">
          <h2 id="findings">Findings</h2>
          <FindingsView overview={overview} findings={findings} />
        </section>
      )}
    </>
  );
}
