// A subject: how its subsystems are, its picture, what was found in it.
import type {ComponentChildren} from "preact";
import type {Overview} from "./data";
import {FindingsView} from "./findings";
import {HealthView} from "./health";
import type {Subject} from "./subjects";

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
  const [health, findings] = [own(overview.health), own(overview.findings)];
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
