// One capture as evidence: the command that made it, its text with a line marked, numbers that can be linked.
import {useEffect, useLayoutEffect, useMemo, useRef, useState} from "preact/hooks";
import {captureAddress} from "../base/link";
import {loadCapture} from "../base/load";
import type {Capture, Command, Overview} from "../base/report";
import {captureHash, type Route} from "../base/route";
import {bytes, count, cutAtLine, seconds, visible} from "../base/text";
import {useAddress} from "../base/use_address";
import {findingsAt, saysBesideSubject} from "../base/verdict";
import {LineLinks} from "../parts/line_links";
import {SeverityMark} from "../parts/severity_mark";

const MOST_FOUND = 5000; // places that are highlighted

interface Shown {
  line: number; // 0: none
  find: string;
}

// Where the words stand, and in which lines.
function places(text: string, find: string): {starts: number[]; lines: number[]} {
  const wanted = find.toLowerCase();
  const starts: number[] = [];
  const lines: number[] = [];
  if (wanted === "") return {starts, lines};
  const lower = text.toLowerCase();
  // A few letters are longer in lower case: then places would be others.
  const where = lower.length === text.length ? lower : text;
  let [line, counted] = [1, 0];
  for (let at = where.indexOf(wanted); at >= 0; at = where.indexOf(wanted, at + wanted.length)) {
    for (let end = where.indexOf("\n", counted); end >= 0 && end < at; end = where.indexOf("\n", counted)) {
      ++line;
      counted = end + 1;
    }
    if (starts.length < MOST_FOUND) starts.push(at);
    if (lines.at(-1) !== line) lines.push(line);
  }
  return {starts, lines};
}

// Marks what was found without touching the text; a browser that cannot leaves it out.
function highlight(element: HTMLElement | null, starts: number[], length: number): void {
  if (typeof Highlight === "undefined") return;
  CSS.highlights.delete("found");
  if (element === null || starts.length === 0) return;
  const ranges: Range[] = [];
  const walker = document.createTreeWalker(element, NodeFilter.SHOW_TEXT);
  let begin = 0;
  let next = 0;
  for (let node = walker.nextNode(); node !== null; node = walker.nextNode()) {
    const end = begin + (node as Text).length;
    for (; next < starts.length && starts[next]! < end; ++next) {
      const range = new Range();
      range.setStart(node, Math.max(0, starts[next]! - begin));
      range.setEnd(node, Math.min(starts[next]! + length, end) - begin);
      ranges.push(range);
    }
    begin = end;
  }
  CSS.highlights.set("found", new Highlight(...ranges));
}

function Numbers({name, lines}: {name: string; lines: number}) {
  const column = useRef<HTMLPreElement>(null);
  useEffect(() => {
    const all = document.createDocumentFragment();
    for (let line = 1; line <= lines; ++line) {
      const link = document.createElement("a");
      link.href = captureHash(name, line);
      link.tabIndex = -1;
      link.textContent = String(line);
      all.append(link, "\n");
    }
    column.current?.replaceChildren(all);
  }, [name, lines]);
  return <pre class="line-numbers" aria-hidden="true" ref={column} />;
}

function CaptureText({
  capture,
  text,
  route,
  overview,
}: {
  capture: Capture;
  text: string;
  route: Route;
  overview: Overview;
}) {
  const [{line, find}, setShown] = useAddress<Shown>(
    route,
    ({row, state}) => ({line: row + 1, find: state["find"] ?? ""}),
    shown => captureHash(capture.name, shown.line, {find: shown.find}),
  );
  const shownText = useMemo(() => visible(text), [text]);
  const {before, marked, after, lines} = useMemo(() => cutAtLine(shownText, line), [shownText, line]);
  const found = useMemo(() => places(shownText, find), [shownText, find]);
  const box = useRef<HTMLDivElement>(null);
  const mark = useRef<HTMLElement>(null);
  const pre = useRef<HTMLPreElement>(null);
  useLayoutEffect(() => {
    if (!mark.current || !box.current) return;
    // Within its box; the page no further than needed: what made the capture stays in sight above.
    box.current.scrollTop = mark.current.offsetTop - box.current.clientHeight / 2;
    const below = mark.current.getBoundingClientRect().bottom + 48 - innerHeight;
    if (below > 0) window.scrollBy(0, below);
  }, [text, line]);
  useEffect(() => {
    highlight(pre.current, found.starts, find.length);
    return () => highlight(null, [], 0);
  }, [found, line]);
  const at = found.lines.indexOf(line);
  const step = (by: number) => {
    const {lines} = found;
    if (lines.length === 0) return;
    // From the marked line on, and around the ends.
    const here = at >= 0 ? at : lines.filter(one => one < line).length - (by > 0 ? 1 : 0);
    setShown({line: lines[(here + by + lines.length) % lines.length]!, find});
  };
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
      <ul class="findings">
        {(line > 0 ? findingsAt(overview, capture.name, line) : []).map(finding => (
          <li key={finding.id} class={`finding ${finding.severity}`}>
            <SeverityMark of={finding.severity} />
            <p>
              <strong>{finding.severity}</strong>: <bdi>{visible(finding.subject)}</bdi>{" "}
              <bdi class="says">{visible(saysBesideSubject(finding))}</bdi>
            </p>
          </li>
        ))}
      </ul>
      <form
        class="tools"
        onSubmit={event => {
          event.preventDefault();
          step(1);
        }}
      >
        <label>
          <span class="unseen">Find in this capture</span>
          <input
            type="search"
            placeholder="Find in this capture"
            value={find}
            spellcheck={false}
            onInput={event => setShown({line, find: event.currentTarget.value})}
            onKeyDown={event => {
              if (event.key !== "Enter" || !event.shiftKey) return;
              event.preventDefault();
              step(-1);
            }}
          />
        </label>
        <button type="button" disabled={found.lines.length === 0} onClick={() => step(-1)}>
          Previous
        </button>
        <button type="submit" disabled={found.lines.length === 0}>
          Next
        </button>
        <span class="count" role="status">
          {find !== "" &&
            (at >= 0
              ? `${(at + 1).toLocaleString("en")} of ${count(found.lines.length, "line")}`
              : count(found.lines.length, "line"))}
        </span>
        <span class="count">
          {marked !== null && (
            <>
              Line {line} is marked. <LineLinks overview={overview} capture={capture.name} line={line} />
            </>
          )}
        </span>
      </form>
      <div class="capture-text" tabIndex={0} role="region" aria-label={`Text of ${visible(capture.name)}`} ref={box}>
        <Numbers name={capture.name} lines={lines} />
        <pre class="capture" ref={pre}>
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

function CommandLine({command}: {command: Command}) {
  const began = Date.parse(command.started ?? "");
  return (
    <div class="command">
      <code>
        <bdi>{visible(command.text)}</bdi>
      </code>
      <p>
        <small>
          {!Number.isNaN(began) && `at ${new Date(began).toISOString().slice(0, 19).replace("T", " ")} UTC, `}
          took {seconds(command.seconds)},{" "}
          <span class={command.outcome === "" ? "" : "raised"}>ended {visible(command.outcome) || "well"}</span>
        </small>
      </p>
      {command.stderr && (
        <details>
          <summary>What it printed to standard error</summary>
          <pre>{visible(command.stderr)}</pre>
        </details>
      )}
    </div>
  );
}

export function CaptureView({capture, route, overview}: {capture: Capture; route: Route; overview: Overview}) {
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
      {capture.commands
        .map(at => overview.commands[at])
        .filter(command => command !== undefined)
        .map((command, at) => (
          <CommandLine key={at} command={command} />
        ))}
      {capture.commands.length === 0 && <p class="note">No recorded command names it.</p>}
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
      {failure !== "" && (
        <p class="problem" role="alert">
          {failure}
        </p>
      )}
      {capture.kind !== "directory" && capture.size === 0 && <p class="empty">The file is empty.</p>}
      {capture.kind === "binary" && <p class="empty">Not a text.</p>}
      {capture.data !== "" && text === null && failure === "" && <p role="status">Reading ...</p>}
      {text !== null && capture.size > 0 && (
        <CaptureText capture={capture} text={text} route={route} overview={overview} />
      )}
    </>
  );
}
