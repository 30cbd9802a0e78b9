// What the collection did not bring, so that nobody takes silence for health.
import type {Overview} from "../base/report";
import {tableHash} from "../base/route";
import {count, visible} from "../base/text";
import {missing} from "../base/verdict";

const SHOWN = 2; // the others are one click off

export function isIncomplete(overview: Overview): boolean {
  const status = overview.meta["status"] ?? "";
  return status !== "" && status !== "complete";
}

export function IncompleteNotice({overview, whole = false}: {overview: Overview; whole?: boolean}) {
  const incomplete = isIncomplete(overview);
  const partial = overview.modules
    .flatMap(module => module.tables)
    .filter(table => table.records > 0 && table.reason !== "");
  const unjudged = missing(overview);
  if (!incomplete && partial.length === 0 && unjudged.length === 0) return null;
  const lines = unjudged.map(({words, subsystems}) => (
    <li key={words}>
      <bdi>{visible(words)}</bdi> <small>({visible(subsystems.join(", "))})</small>
    </li>
  ));
  const shown = whole ? lines.length : SHOWN;
  return (
    <div class="problem" role="alert">
      {incomplete && (
        <p>
          This collection is <bdi>{visible(overview.meta["status"] ?? "")}</bdi>.
        </p>
      )}
      {partial.length > 0 && (
        <p>
          Partial:{" "}
          {partial.map((table, at) => (
            <span key={table.id}>
              {at > 0 && ", "}
              <a href={tableHash(table.id)}>{visible(table.id)}</a>
            </span>
          ))}
          .
        </p>
      )}
      {unjudged.length > 0 && (
        <>
          <p>This collection lacks {count(unjudged.length, "thing")} that a verdict needs:</p>
          <ul class="dashed">{lines.slice(0, shown)}</ul>
          {lines.length > shown && (
            <details>
              <summary>{lines.length - shown} more</summary>
              <ul class="dashed">{lines.slice(shown)}</ul>
            </details>
          )}
        </>
      )}
    </div>
  );
}
