// One table: search, filters, sorting, columns, copying, and the record that was chosen.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import type {Capture, Rows, Table} from "./data";
import {loadRows} from "./data";
import {copy, csv, save, tabSeparated, type Shown} from "./export";
import {createGrid, type Grid} from "./grid";
import {plainTable} from "./plain_table";
import {Sheet, Text} from "./sheet";
import {tableName} from "./table_name";
import {count, oneLine, visible} from "./text";
import {everything, shownRows, type Wanted} from "./view_rows";

const MOST_BESIDE = 24; // more records than that are easier to read as rows
const TYPING_MS = 120;
const LOADING_MS = 120; // while rows arrive, the first of them are enough to begin with

export function TableView({
  table,
  module,
  row,
  search,
  captures,
  nonce,
}: {
  table: Table;
  module: string;
  row: number;
  search: string;
  captures: Map<string, Capture>;
  nonce: string;
}) {
  const [rows, setRows] = useState<Rows | null>(null);
  const [loaded, setLoaded] = useState(0);
  const [failure, setFailure] = useState("");
  const [wanted, setWanted] = useState<Wanted>({...everything(), search});
  const [order, setOrder] = useState<Int32Array>(new Int32Array(0));
  const [visibleColumns, setVisibleColumns] = useState(() => table.columns.map(() => true));
  const [chosen, setChosen] = useState(row);
  const [said, setSaid] = useState("");
  const [answered, setAnswered] = useState<Wanted | null>(null); // what `order` is the answer to
  const asSheet = table.kind === "columns" && table.records <= MOST_BESIDE;
  const columns = useMemo(() => visibleColumns.flatMap((shown, at) => (shown ? [at] : [])), [visibleColumns]);

  useEffect(() => {
    let alive = true;
    loadRows(table, part => {
      if (!alive) return;
      setRows(part);
      setLoaded(part.count);
    }).catch((error: Error) => alive && setFailure(error.message));
    return () => {
      alive = false;
    };
  }, [table]);

  useEffect(() => setChosen(row), [row]);

  useEffect(() => {
    if (!rows) return;
    const abort = new AbortController();
    const timer = setTimeout(
      () => {
        shownRows(rows, wanted, abort.signal)
          .then(found => {
            setOrder(found);
            setAnswered(wanted);
          })
          .catch(() => {});
      },
      loaded === table.records || order.length === 0 ? 0 : LOADING_MS,
    );
    return () => {
      clearTimeout(timer);
      abort.abort();
    };
  }, [rows, loaded, wanted]);

  const latest = useRef<Shown | null>(null);
  latest.current = rows ? {rows, order, columns} : null;
  const paper = useRef<HTMLDivElement>(null);
  useEffect(() => {
    if (asSheet) return;
    const fill = () => {
      const shown = latest.current;
      if (shown) paper.current?.replaceChildren(plainTable(shown.rows, shown.order, shown.columns));
    };
    const empty = () => paper.current?.replaceChildren();
    window.addEventListener("beforeprint", fill);
    window.addEventListener("afterprint", empty);
    return () => {
      window.removeEventListener("beforeprint", fill);
      window.removeEventListener("afterprint", empty);
    };
  }, [asSheet]);

  const heading = (
    <header class="table-head">
      <h1>
        {tableName(table)} <small>{module}</small>
      </h1>
    </header>
  );
  if (failure)
    return (
      <>
        {heading}
        <p class="problem" role="alert">
          {failure}
        </p>
      </>
    );
  if (table.records === 0) {
    return (
      <>
        {heading}
        <p class="empty">No records{table.reason ? `: ${visible(table.reason)}` : "."}</p>
      </>
    );
  }

  const partial = table.reason !== "" && <p class="problem">Partial: {visible(table.reason)}.</p>;
  const ready = loaded === table.records && answered === wanted;
  const filtered = wanted.search !== "" || [...wanted.filters.values()].some(text => text !== "");
  const tell = (text: string) => {
    setSaid(text);
    setTimeout(() => setSaid(""), 3000);
  };
  const take = (shown: Shown) =>
    void copy(tabSeparated(shown)).then(() => tell(`${count(shown.order.length, "row")} copied`));

  return (
    <>
      {heading}
      {partial}
      <div class="tools" role="toolbar" aria-label="Table">
        <label>
          <span class="unseen">Search this table</span>
          <input
            type="search"
            placeholder="Search this table"
            value={wanted.search}
            spellcheck={false}
            onInput={event => setWanted({...wanted, search: event.currentTarget.value})}
          />
        </label>
        <span class="count" role="status">
          {loaded < table.records
            ? `loading, ${loaded.toLocaleString("en")} of ${count(table.records, "record")}`
            : filtered
              ? `${order.length.toLocaleString("en")} of ${count(table.records, "record")}`
              : count(table.records, "record")}
          {ready ? "" : " ..."}
        </span>
        {!asSheet && (
          <label>
            Sort{" "}
            <select
              value={wanted.sort ? String(wanted.sort.column) : ""}
              onChange={event => {
                const value = event.currentTarget.value;
                setWanted({...wanted, sort: value === "" ? null : {column: Number(value), ascending: true}});
              }}
            >
              <option value="">as collected</option>
              {table.columns.map((column, at) => (
                <option key={at} value={String(at)}>
                  {oneLine(column.label)}
                </option>
              ))}
            </select>
          </label>
        )}
        {table.columns.length > 1 && (
          <details class="choice">
            <summary>Columns</summary>
            <fieldset>
              <legend class="unseen">Columns to show</legend>
              {table.columns.map((column, at) => (
                <label key={at}>
                  <input
                    type="checkbox"
                    checked={visibleColumns[at]}
                    disabled={visibleColumns[at] && columns.length === 1}
                    onChange={() => setVisibleColumns(visibleColumns.map((shown, i) => (i === at ? !shown : shown)))}
                  />{" "}
                  {oneLine(column.label)}
                </label>
              ))}
            </fieldset>
          </details>
        )}
        <button type="button" disabled={!ready} onClick={() => latest.current && take(latest.current)}>
          Copy
        </button>
        <button
          type="button"
          disabled={!ready}
          onClick={() => latest.current && save(csv(latest.current), `${table.id.replace(/[^\w.-]/g, "_")}.csv`)}
        >
          CSV
        </button>
        {(filtered || wanted.sort) && (
          <button type="button" onClick={() => setWanted(everything())}>
            Show all
          </button>
        )}
        <span class="said" role="status">
          {said}
        </span>
      </div>
      {rows &&
        (asSheet ? (
          <Sheet rows={rows} columns={columns} order={[...order]} captures={captures} active={chosen} />
        ) : (
          <GridHost
            rows={rows}
            order={order}
            wanted={wanted}
            setWanted={setWanted}
            visibleColumns={visibleColumns}
            captures={captures}
            nonce={nonce}
            chosen={chosen}
            choose={setChosen}
          />
        ))}
      {rows && !asSheet && chosen >= 0 && chosen < rows.count && (
        <Chosen
          rows={rows}
          row={chosen}
          captures={captures}
          close={() => setChosen(-1)}
          take={() => take({rows, order: [chosen], columns: table.columns.map((_, at) => at)})}
        />
      )}
      <div class="paper" ref={paper} />
    </>
  );
}

function GridHost({
  rows,
  order,
  wanted,
  setWanted,
  visibleColumns,
  captures,
  nonce,
  chosen,
  choose,
}: {
  rows: Rows;
  order: Int32Array;
  wanted: Wanted;
  setWanted: (wanted: Wanted) => void;
  visibleColumns: boolean[];
  captures: Map<string, Capture>;
  nonce: string;
  chosen: number;
  choose: (row: number) => void;
}) {
  const host = useRef<HTMLDivElement>(null);
  const grid = useRef<Grid | null>(null);
  const current = useRef(wanted);
  current.current = wanted;
  const jumped = useRef(false);

  useEffect(() => {
    let typing = 0;
    const made = createGrid(host.current!, rows, captures, nonce, {
      sort: (column, ascending) => setWanted({...current.current, sort: {column, ascending}}),
      open: choose,
      filter: (column, text) => {
        clearTimeout(typing);
        typing = window.setTimeout(
          () =>
            setWanted({
              ...current.current,
              filters: new Map(current.current.filters).set(column, text),
            }),
          TYPING_MS,
        );
      },
    });
    grid.current = made;
    const observer = new ResizeObserver(() => made.resize());
    observer.observe(host.current!);
    return () => {
      observer.disconnect();
      made.destroy();
    };
  }, []);
  useEffect(() => grid.current?.columns(visibleColumns), [visibleColumns]);
  useEffect(() => grid.current?.sorting(wanted.sort), [wanted.sort, visibleColumns]);
  useEffect(() => grid.current?.filters(wanted.filters), [wanted.filters]);
  useEffect(() => {
    grid.current?.show(rows, order);
    if (chosen >= 0 && !jumped.current && order.length > chosen) {
      jumped.current = true;
      grid.current?.select(chosen);
    }
  }, [rows, order]);
  useEffect(() => {
    if (chosen >= 0 && jumped.current) grid.current?.select(chosen);
  }, [chosen]);

  return <div class={chosen >= 0 ? "grid short" : "grid"} ref={host} />;
}

function Chosen({
  rows,
  row,
  captures,
  close,
  take,
}: {
  rows: Rows;
  row: number;
  captures: Map<string, Capture>;
  close: () => void;
  take: () => void;
}) {
  return (
    <section class="chosen" aria-label={`Record ${row + 1}`}>
      <header>
        <h2>
          Record {(row + 1).toLocaleString("en")} <small>{visible(rows.name(row))}</small>
        </h2>
        <button type="button" onClick={take}>
          Copy
        </button>
        <button type="button" onClick={close}>
          Close
        </button>
      </header>
      <dl>
        {rows.table.columns.map((column, at) => (
          <div key={at}>
            <dt>{visible(column.label)}</dt>
            <dd>
              <Text value={rows.cell(row, at)} captures={captures} />
            </dd>
          </div>
        ))}
      </dl>
    </section>
  );
}
