// One table: search, filters, sorting, columns, copying, and the record that was chosen.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import type {Capture, Rows, Table} from "../base/data";
import {loadRows} from "../base/data";
import {copy, csv, save, tabSeparated, type Shown} from "../base/export";
import {captureHash, tableHash, type Route, type State} from "../base/route";
import {rowLines} from "../base/row_lines";
import {tableName} from "../base/table_name";
import {count, oneLine, visible} from "../base/text";
import {useAddress} from "../base/use_address";
import {everything, shownRows, type Wanted} from "../base/view_rows";
import {Panel} from "../parts/panel";
import {SearchBox} from "../parts/search_box";
import {Sheet, Text} from "../parts/sheet";
import {GridHost} from "../grid/grid_host";
import {plainTable} from "../grid/plain_table";

const MOST_BESIDE = 24; // more records than that are easier to read as rows
const LOADING_MS = 120; // while rows arrive, the first of them are enough to begin with

// What the address says: what is shown, and which record is open.
interface Address {
  wanted: Wanted;
  row: number; // -1: none
}

const FILTER = "filter.";

function readAddress(table: Table, {row, state}: Route): Address {
  const column = (id: string) => table.columns.findIndex(one => one.id === id);
  const sort = state["sort"] ?? "";
  const sorted = column(sort.replace(/^-/, ""));
  const filters = Object.entries(state)
    .filter(([key]) => key.startsWith(FILTER))
    .map(([key, text]): [number, string] => [column(key.slice(FILTER.length)), text])
    .filter(([at]) => at >= 0);
  return {
    row,
    wanted: {
      search: state["search"] ?? "",
      filters: new Map(filters),
      sort: sorted < 0 ? null : {column: sorted, ascending: !sort.startsWith("-")},
    },
  };
}

function hashOfAddress(table: Table, {wanted: {search, filters, sort}, row}: Address): string {
  const id = (at: number) => table.columns[at]!.id;
  const state: State = {search};
  if (sort) state["sort"] = `${sort.ascending ? "" : "-"}${id(sort.column)}`;
  for (const [at, text] of filters) state[FILTER + id(at)] = text;
  return tableHash(table.id, row, state);
}

export function TableView({
  table,
  module,
  route,
  captures,
  nonce,
}: {
  table: Table;
  module: string;
  route: Route;
  captures: Map<string, Capture>;
  nonce: string;
}) {
  const [rows, setRows] = useState<Rows | null>(null);
  const [loaded, setLoaded] = useState(0);
  const [failure, setFailure] = useState("");
  const [address, setAddress] = useAddress(
    route,
    from => readAddress(table, from),
    now => hashOfAddress(table, now),
  );
  const {wanted, row: chosen} = address;
  const setWanted = (next: Wanted, isStep = false) => setAddress({row: chosen, wanted: next}, isStep);
  const choose = (row: number) => setAddress({wanted, row}, true);
  const [order, setOrder] = useState<Int32Array>(new Int32Array(0));
  const [visibleColumns, setVisibleColumns] = useState(() => table.columns.map(() => true));
  const [said, setSaid] = useState("");
  const [answered, setAnswered] = useState(""); // what `order` is the answer to
  const question = hashOfAddress(table, {wanted, row: -1});
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

  useEffect(() => {
    if (!rows) return;
    const abort = new AbortController();
    const timer = setTimeout(
      () => {
        shownRows(rows, wanted, abort.signal)
          .then(found => {
            setOrder(found);
            setAnswered(question);
          })
          .catch(() => {});
      },
      loaded === table.records || order.length === 0 ? 0 : LOADING_MS,
    );
    return () => {
      clearTimeout(timer);
      abort.abort();
    };
  }, [rows, loaded, question]);

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

  const capture = captures.get(table.capture ?? "");
  const told = capture !== undefined && (
    <p class="lead">
      Told by{" "}
      <a href={captureHash(capture.name)}>
        <bdi>{visible(capture.name)}</bdi>
      </a>
      .
    </p>
  );
  const partial = table.reason !== "" && <p class="problem">Partial: {visible(table.reason)}.</p>;
  const ready = loaded === table.records && answered === question;
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
      {told}
      {partial}
      <div class="tools" role="toolbar" aria-label="Table">
        <SearchBox what="Search this table" text={wanted.search} onText={search => setWanted({...wanted, search})} />
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
                setWanted({...wanted, sort: value === "" ? null : {column: Number(value), ascending: true}}, true);
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
          <button type="button" onClick={() => setWanted(everything(), true)}>
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
            sort={wanted.sort}
            onSort={sort => setWanted({...wanted, sort}, true)}
            filters={wanted.filters}
            onFilter={(column, text) => setWanted({...wanted, filters: new Map(wanted.filters).set(column, text)})}
            visibleColumns={visibleColumns}
            captures={captures}
            nonce={nonce}
            chosen={chosen}
            choose={choose}
          />
        ))}
      {rows && !asSheet && chosen >= 0 && chosen < rows.count && (
        <Chosen
          rows={rows}
          row={chosen}
          captures={captures}
          close={() => choose(-1)}
          take={() => take({rows, order: [chosen], columns: table.columns.map((_, at) => at)})}
        />
      )}
      <div class="paper" ref={paper} />
    </>
  );
}

// The row's line in the capture; 0: not certain, or not found yet.
function useLine(rows: Rows, row: number, capture: Capture | undefined): number {
  const [lines, setLines] = useState<Int32Array | null>(null);
  const whole = rows.count === rows.table.records;
  useEffect(() => {
    let alive = true;
    rowLines(rows, capture)
      .then(found => alive && setLines(found))
      .catch(() => {}); // the view of the capture says what is wrong with it
    return () => {
      alive = false;
    };
  }, [rows, capture, whole]);
  return lines?.[row] ?? 0;
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
  const capture = captures.get(rows.table.capture ?? "");
  const line = useLine(rows, row, capture);
  return (
    <Panel
      title={`Record ${row + 1}`}
      detail={visible(rows.name(row))}
      close={close}
      focus={false}
      actions={
        <button type="button" onClick={take}>
          Copy
        </button>
      }
    >
      <dl>
        {rows.table.columns.map((column, at) => (
          <div key={at}>
            <dt>{visible(column.label)}</dt>
            <dd>
              <Text value={rows.cell(row, at)} captures={captures} />
            </dd>
          </div>
        ))}
        {capture !== undefined && line > 0 && (
          <div>
            <dt>Told by</dt>
            <dd>
              <a class="evidence" href={captureHash(capture.name, line)}>
                <bdi>
                  {visible(capture.name)}, line {line}
                </bdi>
              </a>
            </dd>
          </div>
        )}
      </dl>
    </Panel>
  );
}
