// What is wrong, the worst first, each with the lines that say so.
import type {Finding, Overview, Severity} from "../base/report";
import {count, visible} from "../base/text";
import {bySeverity, isAcknowledged, saysBesideSubject, sinceOf} from "../base/verdict";
import {addressOf, Evidence} from "./evidence";
import {SeverityMark} from "./severity_mark";

const TITLES: Record<Severity, [one: string, many: string]> = {
  critical: ["critical finding", "critical findings"],
  warning: ["warning", "warnings"],
  unknown: ["thing that nobody can tell", "things that nobody can tell"],
  notice: ["notice", "notices"],
};

function FindingLine({finding, overview}: {finding: Finding; overview: Overview}) {
  const address = finding.evidence[0] && addressOf(overview, finding.evidence[0]);
  const since = sinceOf(overview, finding);
  const subject = <bdi>{visible(finding.subject)}</bdi>;
  return (
    <li class={`finding ${finding.severity}`}>
      <SeverityMark of={finding.severity} />
      <div>
        <p>
          <span class="unseen">{finding.severity}: </span>
          {address === undefined ? <strong>{subject}</strong> : <a href={address}>{subject}</a>}{" "}
          <bdi class="says">{visible(saysBesideSubject(finding))}</bdi>
        </p>
        <p class="from">
          <span>{visible(finding.subsystem)}</span>
          {finding.time !== null && <time dateTime={finding.time}>{visible(finding.time.replace("T", " "))}</time>}
          {since !== undefined && (
            <span>
              since <time dateTime={since}>{visible(since.replace("T", " "))}</time>
            </span>
          )}
          {finding.count > 1 && <span>{count(finding.count, "time")}</span>}
          {finding.evidence.map((place, at) => (
            <Evidence key={at} overview={overview} place={place} />
          ))}
        </p>
      </div>
    </li>
  );
}

export function FindingsView({overview, findings: all}: {overview: Overview; findings: Finding[]}) {
  if (all.length === 0) return <p class="empty">No rule found anything in what was read.</p>;
  const known = all.filter(isAcknowledged);
  const listOf = (findings: Finding[]) => (
    <ul class="findings">
      {findings.map(finding => (
        <FindingLine key={finding.id} finding={finding} overview={overview} />
      ))}
    </ul>
  );
  const groups = bySeverity(all.filter(finding => !isAcknowledged(finding))).map(({severity, findings}) => ({
    severity,
    title: count(findings.length, ...TITLES[severity]),
    list: listOf(findings),
  }));
  return (
    <>
      {groups
        .filter(({severity}) => severity !== "notice")
        .map(({severity, title, list}) => (
          <section key={severity}>
            <h3>{title}</h3>
            {list}
          </section>
        ))}
      {known.length > 0 && (
        <section>
          <h3>{count(known.length, "acknowledged finding")}</h3>
          {listOf(known)}
        </section>
      )}
      {groups
        .filter(({severity}) => severity === "notice")
        .map(({severity, title, list}) => (
          <details key={severity} class="notices">
            <summary>{title}</summary>
            {list}
          </details>
        ))}
    </>
  );
}
