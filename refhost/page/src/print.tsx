// The whole report as one document, for paper or a PDF.
import {render} from "preact";
import {useEffect, useRef, useState} from "preact/hooks";
import {loadRows, type Overview} from "./data";
import {Verdict} from "./overview";
import {plainTable} from "./plain_table";
import {serverName} from "./server_name";
import {Sheet} from "./sheet";
import {tableName} from "./table_name";
import {count, visible} from "./text";

const ROWS_EACH = 200;

export function PrintView({overview}: {overview: Overview}) {
  const [state, setState] = useState("Putting the tables together ...");
  const paper = useRef<HTMLDivElement>(null);
  useEffect(() => {
    let alive = true;
    const captures = new Map(overview.captures.map(capture => [capture.name, capture]));
    const write = async () => {
      for (const module of overview.modules) {
        for (const table of module.tables) {
          if (table.records === 0) continue;
          const rows = await loadRows(table);
          if (!alive) return;
          const part = document.createElement("section");
          const title = document.createElement("h2");
          title.textContent = `${tableName(table)} (${visible(module.display)}), ${count(table.records, "record")}`;
          part.append(title);
          if (table.reason !== "") {
            const note = document.createElement("p");
            note.className = "problem";
            note.textContent = `Partial: ${visible(table.reason)}.`;
            part.append(note);
          }
          const columns = table.columns.map((_, at) => at);
          const order = Array.from({length: rows.count}, (_, row) => row);
          if (table.kind === "columns" && rows.count <= 6) {
            const sheet = document.createElement("div");
            render(<Sheet rows={rows} columns={columns} order={order} captures={captures} active={-1} />, sheet);
            part.append(sheet);
          } else {
            part.append(plainTable(rows, order, columns, ROWS_EACH));
          }
          paper.current?.append(part);
        }
      }
      setState("");
    };
    write().catch((error: Error) => setState(error.message));
    return () => {
      alive = false;
    };
  }, [overview]);
  return (
    <>
      <h1>{serverName(overview)}</h1>
      <p class="lead">
        {state !== ""
          ? state
          : `Collected ${visible(overview.meta["started"] ?? "")}; up to ${ROWS_EACH} rows of each table.`}{" "}
        <button type="button" class="screen" disabled={state !== ""} onClick={() => window.print()}>
          Print
        </button>
      </p>
      <Verdict overview={overview} />
      <h2>The machine</h2>
      <dl class="facts">
        {overview.facts.map(fact => (
          <div key={fact.label}>
            <dt>{fact.label}</dt>
            <dd>
              <bdi>{visible(fact.value)}</bdi>
            </dd>
          </div>
        ))}
      </dl>
      <div class="whole" ref={paper} />
    </>
  );
}
