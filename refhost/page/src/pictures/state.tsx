// The state of a thing as its tool prints it, marked where a finding says so.
import type {Severity} from "../base/report";
import {visible} from "../base/text";
import {SeverityMark} from "../parts/severity_mark";
import {levelOf} from "./level";

export function State({
  printed,
  words,
  severity,
}: {
  printed: string;
  words?: Map<string, string>;
  severity: Severity | undefined;
}) {
  const meaning = words?.get(printed);
  return (
    <span class={`state ${levelOf(severity)}`}>
      {severity !== undefined && severity !== "notice" && (
        <>
          <SeverityMark of={severity} />
          <span class="unseen">{severity}: </span>
        </>
      )}
      <bdi>{visible(printed)}</bdi>
      {meaning !== undefined && <small> {meaning}</small>}
    </span>
  );
}
