// The raw captures: what each tool wrote, with the command that made it.
import type {Overview} from "../base/report";
import {viewHash} from "../base/route";
import {bytes, count, seconds, visible} from "../base/text";
import {HealthView} from "../parts/health";

export function CapturesView({overview}: {overview: Overview}) {
  return (
    <>
      <h1>Captures</h1>
      <p class="lead">{count(overview.captures.length, "file")} in the log directory, as the tools wrote them.</p>
      <HealthView
        overview={overview}
        health={(overview.health ?? []).filter(({subsystem}) => subsystem === "collection")}
      />
      <div class="scroll" tabIndex={0} role="region" aria-label="Captures">
        <table class="list">
          <thead>
            <tr>
              <th scope="col">File</th>
              <th scope="col" class="number">
                Size
              </th>
              <th scope="col">Ended</th>
              <th scope="col" class="number">
                Took
              </th>
              <th scope="col">Made by</th>
            </tr>
          </thead>
          <tbody>
            {overview.captures.map(capture => {
              const command = overview.commands[capture.commands.at(-1) ?? -1];
              return (
                <tr key={capture.name} class={capture.size === 0 ? "nothing" : ""}>
                  <td>
                    <a href={viewHash("capture", capture.name)}>
                      <bdi>{visible(capture.name)}</bdi>
                    </a>
                  </td>
                  <td class="number">{capture.kind === "directory" ? "folder" : bytes(capture.size)}</td>
                  <td class={command && command.outcome !== "" ? "raised" : ""}>
                    {command ? visible(command.outcome) || "well" : ""}
                  </td>
                  <td class="number">{command ? seconds(command.seconds) : ""}</td>
                  <td>
                    {command ? (
                      <code>
                        <bdi>{visible(command.text)}</bdi>
                      </code>
                    ) : (
                      "no recorded command names it"
                    )}
                  </td>
                </tr>
              );
            })}
          </tbody>
        </table>
      </div>
      <Others overview={overview} />
    </>
  );
}

// Commands whose output no capture holds.
function Others({overview}: {overview: Overview}) {
  const named = new Set(overview.captures.flatMap(capture => capture.commands));
  const others = overview.commands.filter((_, at) => !named.has(at));
  if (others.length === 0) return null;
  return (
    <section>
      <h2>Commands without a capture</h2>
      <div class="scroll" tabIndex={0} role="region" aria-label="Commands without a capture">
        <table class="list">
          <thead>
            <tr>
              <th scope="col">Ended</th>
              <th scope="col" class="number">
                Took
              </th>
              <th scope="col">Command</th>
            </tr>
          </thead>
          <tbody>
            {others.map((command, at) => (
              <tr key={at}>
                <td class={command.outcome !== "" ? "raised" : ""}>{visible(command.outcome) || "well"}</td>
                <td class="number">{seconds(command.seconds)}</td>
                <td>
                  <code>
                    <bdi>{visible(command.text)}</bdi>
                  </code>
                </td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </section>
  );
}
