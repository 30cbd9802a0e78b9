// One search over every table.
import {useEffect, useState} from "preact/hooks";
import {loadRows, type Overview, type Rows, type Table} from "./data";
import {tableHash} from "./route";
import {selected, Slicer} from "./slices";
import {count, oneLine, visible} from "./text";
import {searchTest} from "./view_rows";

interface Hits {
  table: Table;
  rows: Rows;
  found: Int32Array;
}

const SHOWN = 5;

export function SearchView({overview, text}: {overview: Overview; text: string}) {
  const [hits, setHits] = useState<Hits[]>([]);
  const [left, setLeft] = useState("");
  const [failures, setFailures] = useState<string[]>([]);

  useEffect(() => {
    const abort = new AbortController();
    const slicer = new Slicer(abort.signal);
    setHits([]);
    setFailures([]);
    const search = async () => {
      if (text === "") return;
      for (const table of overview.modules.flatMap(module => module.tables)) {
        if (table.records === 0) continue;
        setLeft(table.id);
        try {
          const rows = await loadRows(table);
          const found = await selected(rows.count, searchTest(rows, text), slicer);
          if (found.length > 0) setHits(all => [...all, {table, rows, found}]);
        } catch (error) {
          if (abort.signal.aborted) return;
          setFailures(all => [...all, (error as Error).message]);
        }
      }
      setLeft("");
    };
    void search().catch(() => {});
    return () => abort.abort();
  }, [text]);
  const total = hits.reduce((sum, hit) => sum + hit.found.length, 0);
  return (
    <>
      <h1>Search</h1>
      <p class="lead" role="status">
        {text === ""
          ? "Type what to look for at the top."
          : left !== ""
            ? `Looking for "${visible(text)}" in ${visible(left)} ...`
            : `"${visible(text)}": ${count(total, "record")} in ${count(hits.length, "table")}`}
      </p>
      {failures.map(failure => (
        <p key={failure} class="problem" role="alert">
          {failure}
        </p>
      ))}
      {hits.map(({table, rows, found}) => (
        <section key={table.id}>
          <h2>
            <a href={tableHash(table.id, -1, {search: text})}>{visible(table.id)}</a>{" "}
            <small>{count(found.length, "record")}</small>
          </h2>
          <ul class="hits">
            {[...found.slice(0, SHOWN)].map(row => (
              <li key={row}>
                <a href={tableHash(table.id, row)}>
                  <bdi>
                    <Marked
                      text={rows
                        .record(row)
                        .map(value => oneLine(value))
                        .filter(t => t !== "")
                        .join(" | ")}
                      search={text}
                    />
                  </bdi>
                </a>
              </li>
            ))}
          </ul>
        </section>
      ))}
    </>
  );
}

function Marked({text, search}: {text: string; search: string}) {
  const word = search.trim().split(/\s+/)[0]?.toLowerCase() ?? "";
  const at = word === "" ? -1 : text.toLowerCase().indexOf(word);
  const from = Math.max(0, at - 80);
  const cut = text.slice(from, from + 240);
  if (at < 0) return <>{cut}</>;
  return (
    <>
      {from > 0 && "... "}
      {text.slice(from, at)}
      <mark>{text.slice(at, at + word.length)}</mark>
      {text.slice(at + word.length, from + 240)}
      {from + 240 < text.length && " ..."}
    </>
  );
}
