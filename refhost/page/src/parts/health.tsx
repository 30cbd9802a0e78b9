// How each subsystem is, with what its word rests on.
import type {Health, Overview} from "../base/report";
import {count, visible} from "../base/text";
import {Evidence} from "./evidence";
import {SeverityMark} from "./severity_mark";

function Subsystem({health, overview}: {health: Health; overview: Overview}) {
  const {judged_by, missing} = health;
  const own = (overview.findings ?? []).filter(
    ({subsystem, severity}) => subsystem === health.subsystem && severity !== "notice",
  );
  const why = [...(own.length > 0 ? [count(own.length, "finding")] : []), ...missing.slice(0, 1).map(visible)].join(
    "; ",
  );
  const reason = [
    ...missing.map(words => `missing: ${visible(words)}`),
    ...(judged_by.length > 0 ? [`judged by ${judged_by.map(visible).join(", ")}`] : []),
  ].join("\n");
  return (
    <li class={`subsystem ${health.health}`}>
      <details title={reason}>
        <summary>
          <SeverityMark of={health.health} />
          <span class="name">{health.subsystem === "bmc" ? "BMC" : visible(health.subsystem)}</span>{" "}
          <strong class="word">{health.health}</strong>
          {why !== "" && (
            <small class="why">
              <bdi>{why}</bdi>
            </small>
          )}
        </summary>
        {own.length > 0 && (
          <p>
            {count(own.length, "finding")}: <bdi>{own.map(({subject}) => visible(subject)).join("; ")}</bdi>
          </p>
        )}
        {missing.length > 0 && (
          <>
            <p>Missing:</p>
            <ul class="dashed">
              {missing.map(words => (
                <li key={words}>
                  <bdi>{visible(words)}</bdi>
                </li>
              ))}
            </ul>
          </>
        )}
        {judged_by.length > 0 && (
          <p>
            Judged by{" "}
            {judged_by.map((capture, at) => (
              <span key={capture}>
                {at > 0 && ", "}
                <Evidence overview={overview} place={{capture, line: 0}} />
              </span>
            ))}
            .
          </p>
        )}
      </details>
    </li>
  );
}

export function HealthView({overview, health}: {overview: Overview; health: Health[]}) {
  return (
    <ul class="health">
      {health.map(health => (
        <Subsystem key={health.subsystem} health={health} overview={overview} />
      ))}
    </ul>
  );
}
