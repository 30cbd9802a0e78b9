// One table: its records as a grid, or beside one another where they are few, and the record that was chosen.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import type {Shown} from "../base/export";
import {loadRows} from "../base/load";
import type {Capture, Table} from "../base/report";
import {captureHash, type Route} from "../base/route";
import type {Rows} from "../base/rows";
import {tableName} from "../base/table_name";
import {visible} from "../base/text";
import {useAddress} from "../base/use_address";
import {shownRows, type Wanted} from "../base/view_rows";
import {GridHost} from "../grid/grid_host";
import {hashOfAddress, readAddress} from "./address";
import {HeaderColumn} from "./header_column";
import {OpenRecord} from "./open_record";
import {plainTable} from "./plain_table";
import {Toolbar, useCopy} from "./toolbar";

const MOST_BESIDE = 24; // more records than that are easier to read as rows
const LOADING_MS = 120; // while rows arrive, the first of them are enough to begin with

function useRows(table: Table) {
  const [rows, setRows] = useState<Rows | null>(null);
  const [loaded, setLoaded] = useState(0);
  const [failure, setFailure] = useState("");
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
  return {rows, loaded, failure};
}

// The rows that are wanted, in their order. `ready`: these are all of them.
function useOrder(table: Table, rows: Rows | null, loaded: number, wanted: Wanted) {
  const [order, setOrder] = useState<Int32Array>(new Int32Array(0));
  const [answered, setAnswered] = useState(""); // what `order` is the answer to
  const question = hashOfAddress(table, {wanted, row: -1});
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
  return {order, ready: loaded === table.records && answered === question};
}

// The element that holds an ordinary table while something is printed.
function usePaper(shown: Shown | null, asSheet: boolean) {
  const latest = useRef(shown);
  latest.current = shown;
  const paper = useRef<HTMLDivElement>(null);
  useEffect(() => {
    if (asSheet) return;
    const fill = () => {
      const now = latest.current;
      if (now) paper.current?.replaceChildren(plainTable(now.rows, now.order, now.columns));
    };
    const empty = () => paper.current?.replaceChildren();
    window.addEventListener("beforeprint", fill);
    window.addEventListener("afterprint", empty);
    return () => {
      window.removeEventListener("beforeprint", fill);
      window.removeEventListener("afterprint", empty);
    };
  }, [asSheet]);
  return paper;
}

interface RecordsProps {
  table: Table;
  route: Route;
  captures: Map<string, Capture>;
  nonce: string;
}

function Records({table, route, captures, nonce, rows, loaded}: RecordsProps & {rows: Rows | null; loaded: number}) {
  const [{wanted, row: chosen}, setAddress] = useAddress(
    route,
    from => readAddress(table, from),
    now => hashOfAddress(table, now),
  );
  const setWanted = (next: Wanted, isStep = false) => setAddress({row: chosen, wanted: next}, isStep);
  const choose = (row: number) => setAddress({wanted, row}, true);
  const {order, ready} = useOrder(table, rows, loaded, wanted);
  const [visibleColumns, setVisibleColumns] = useState(() => table.columns.map(() => true));
  const columns = useMemo(() => visibleColumns.flatMap((shown, at) => (shown ? [at] : [])), [visibleColumns]);
  const asSheet = table.kind === "columns" && table.records <= MOST_BESIDE;
  const shown = rows ? {rows, order, columns} : null;
  const paper = usePaper(shown, asSheet);
  const [said, copyRows] = useCopy();

  return (
    <>
      <Toolbar
        table={table}
        wanted={wanted}
        setWanted={setWanted}
        asSheet={asSheet}
        visibleColumns={visibleColumns}
        setVisibleColumns={setVisibleColumns}
        loaded={loaded}
        found={order.length}
        ready={ready}
        shown={shown}
        said={said}
        copyRows={copyRows}
      />
      {rows &&
        (asSheet ? (
          <HeaderColumn rows={rows} columns={columns} order={[...order]} captures={captures} active={chosen} />
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
        <OpenRecord
          rows={rows}
          row={chosen}
          captures={captures}
          close={() => choose(-1)}
          take={() => copyRows({rows, order: [chosen], columns: table.columns.map((_, at) => at)})}
        />
      )}
      <div class="paper" ref={paper} />
    </>
  );
}

export function TableView({module, ...props}: RecordsProps & {module: string}) {
  const {table, captures} = props;
  const {rows, loaded, failure} = useRows(table);
  const capture = captures.get(table.capture ?? "");
  return (
    <>
      <header class="table-head">
        <h1>
          {tableName(table)} <small>{module}</small>
        </h1>
      </header>
      {failure ? (
        <p class="problem" role="alert">
          {failure}
        </p>
      ) : table.records === 0 ? (
        <p class="empty">No records{table.reason ? `: ${visible(table.reason)}` : "."}</p>
      ) : (
        <>
          {capture !== undefined && (
            <p class="lead">
              Told by{" "}
              <a href={captureHash(capture.name)}>
                <bdi>{visible(capture.name)}</bdi>
              </a>
              .
            </p>
          )}
          {table.reason !== "" && <p class="problem">Partial: {visible(table.reason)}.</p>}
          <Records {...props} rows={rows} loaded={loaded} />
        </>
      )}
    </>
  );
}
