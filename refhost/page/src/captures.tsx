// The raw captures: what each tool wrote, with the command that made it.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import {loadCapture, type Capture, type Overview} from "./data";
import {captureAddress} from "./link";
import {viewHash} from "./route";
import {SeverityMark} from "./severity_mark";
import {bytes, count, cutAtLine, seconds, visible} from "./text";
import {findingsAt} from "./verdict";

export function CapturesView({overview}: {overview: Overview}) {
  return (
    <>
      <h1>Captures</h1>
      <p class="lead">{count(overview.captures.length, "file")} in the log directory, as the tools wrote them.</p>
      <div class="scroll" tabIndex={0} role="region" aria-label="Captures">
        <table class="list">
          <thead>
            <tr>
              <th scope="col">File</th>
              <th scope="col" class="number">
                Size
              </th>
              <th scope="col">Made by</th>
              <th scope="col" class="number">
                Took
              </th>
              <th scope="col">Ended</th>
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
                  <td>
                    {command ? (
                      <code>
                        <bdi>{visible(command.text)}</bdi>
                      </code>
                    ) : (
                      "no recorded command names it"
                    )}
                  </td>
                  <td class="number">{command ? seconds(command.seconds) : ""}</td>
                  <td class={command && command.outcome !== "" ? "raised" : ""}>
                    {command ? command.outcome || "well" : ""}
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
              <th scope="col">Command</th>
              <th scope="col" class="number">
                Took
              </th>
              <th scope="col">Ended</th>
            </tr>
          </thead>
          <tbody>
            {others.map((command, at) => (
              <tr key={at}>
                <td>
                  <code>
                    <bdi>{visible(command.text)}</bdi>
                  </code>
                </td>
                <td class="number">{seconds(command.seconds)}</td>
                <td class={command.outcome !== "" ? "raised" : ""}>{command.outcome || "well"}</td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </section>
  );
}

function CaptureText({
  capture,
  text,
  line,
  overview,
}: {
  capture: Capture;
  text: string;
  line: number;
  overview: Overview;
}) {
  const {before, marked, after, lines} = useMemo(() => cutAtLine(visible(text), line), [text, line]);
  const numbers = useMemo(() => Array.from({length: lines}, (_, at) => at + 1).join("\n"), [lines]);
  const mark = useRef<HTMLElement>(null);
  useEffect(() => mark.current?.scrollIntoView({block: "center", inline: "nearest"}), [text, line]);
  const whole = capture.shown === capture.size;
  return (
    <>
      {!whole && (
        <p class="note">
          The first {bytes(capture.shown)} of {bytes(capture.size)}.
        </p>
      )}
      {line > 0 && marked === null && (
        <p class="problem" role="alert">
          {whole
            ? `There is no line ${line}: the capture has ${count(lines, "line")}.`
            : `Line ${line} is not in the shown part, which is ${count(lines, "line")}.`}
        </p>
      )}
      {marked !== null && <p class="note">Line {line} is marked.</p>}
      <ul class="findings">
        {(line > 0 ? findingsAt(overview, capture.name, line) : []).map(finding => (
          <li key={finding.id} class={`finding ${finding.severity}`}>
            <SeverityMark of={finding.severity} />
            <p>
              <strong>{finding.severity}</strong>: <bdi>{visible(finding.subject)}</bdi>{" "}
              <bdi class="says">{visible(finding.says)}</bdi>
            </p>
          </li>
        ))}
      </ul>
      <div class="capture-text" tabIndex={0} role="region" aria-label={`Text of ${visible(capture.name)}`}>
        <pre class="line-numbers" aria-hidden="true">
          {numbers}
        </pre>
        <pre class="capture">
          {before}
          {marked !== null && (
            <mark ref={mark} data-line={line}>
              {marked}
            </mark>
          )}
          {after}
        </pre>
      </div>
    </>
  );
}

export function CaptureView({capture, line, overview}: {capture: Capture; line: number; overview: Overview}) {
  const [text, setText] = useState<string | null>(null);
  const [failure, setFailure] = useState("");
  useEffect(() => {
    if (capture.data === "") return;
    loadCapture(capture)
      .then(setText)
      .catch((error: Error) => setFailure(error.message));
  }, [capture]);
  const address = overview.apart ? undefined : captureAddress(capture);
  return (
    <>
      <h1>
        <bdi>{visible(capture.name)}</bdi>
      </h1>
      <p class="lead">
        {capture.kind === "directory" ? "A folder" : bytes(capture.size)}
        {address !== undefined ? (
          <>
            ,{" "}
            <a href={address} target="_blank" rel="noopener noreferrer">
              open the file itself
            </a>
          </>
        ) : (
          `, in the log directory${overview.apart ? "" : "; a browser might run it as a page, so it is shown as text only"}`
        )}
        .
      </p>
      {capture.commands
        .map(at => overview.commands[at])
        .filter(command => command !== undefined)
        .map((command, at) => (
          <p key={at} class="command">
            <code>
              <bdi>{visible(command.text)}</bdi>
            </code>
            <br />
            <small>
              took {seconds(command.seconds)}, ended {command.outcome || "well"}
            </small>
          </p>
        ))}
      {failure !== "" && (
        <p class="problem" role="alert">
          {failure}
        </p>
      )}
      {capture.kind !== "directory" && capture.size === 0 && <p class="empty">The file is empty.</p>}
      {capture.kind === "binary" && <p class="empty">Not a text.</p>}
      {capture.data !== "" && text === null && failure === "" && <p>Reading ...</p>}
      {text !== null && capture.size > 0 && (
        <CaptureText capture={capture} text={text} line={line} overview={overview} />
      )}
    </>
  );
}
