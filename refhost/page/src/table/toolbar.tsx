// What one sets above a table: words, order, columns; copying; and how many records are left.
import {useState} from "preact/hooks";
import {copy, csv, save, tabSeparated, type Shown} from "../base/export";
import type {Table} from "../base/report";
import {count, oneLine} from "../base/text";
import {everything, type Wanted} from "../base/view_rows";
import {SearchBox} from "../parts/search_box";

const SAID_MS = 3000;

const isFiltered = ({search, filters}: Wanted) => search !== "" || [...filters.values()].some(text => text !== "");

// Copies rows, and says so for a while.
export function useCopy(): [said: string, copyRows: (shown: Shown) => void] {
  const [said, setSaid] = useState("");
  const tell = (text: string) => {
    setSaid(text);
    setTimeout(() => setSaid(""), SAID_MS);
  };
  return [said, shown => void copy(tabSeparated(shown)).then(() => tell(`${count(shown.order.length, "row")} copied`))];
}

function SortChoice({table, wanted, setWanted}: {table: Table} & Choice) {
  return (
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
  );
}

function ColumnChoice({
  table,
  isShown,
  setShown,
}: {
  table: Table;
  isShown: boolean[];
  setShown: (isShown: boolean[]) => void;
}) {
  const isOnly = isShown.filter(shown => shown).length === 1;
  return (
    <details class="choice">
      <summary>Columns</summary>
      <fieldset>
        <legend class="unseen">Columns to show</legend>
        {table.columns.map((column, at) => (
          <label key={at}>
            <input
              type="checkbox"
              checked={isShown[at]}
              disabled={isShown[at] && isOnly}
              onChange={() => setShown(isShown.map((shown, i) => (i === at ? !shown : shown)))}
            />{" "}
            {oneLine(column.label)}
          </label>
        ))}
      </fieldset>
    </details>
  );
}

interface Choice {
  wanted: Wanted;
  setWanted: (wanted: Wanted, isStep?: boolean) => void;
}

export function Toolbar({
  table,
  wanted,
  setWanted,
  asSheet,
  visibleColumns,
  setVisibleColumns,
  loaded,
  found,
  ready,
  shown,
  said,
  copyRows,
}: Choice & {
  table: Table;
  asSheet: boolean;
  visibleColumns: boolean[];
  setVisibleColumns: (isShown: boolean[]) => void;
  loaded: number;
  found: number;
  ready: boolean; // all that is wanted is found
  shown: Shown | null;
  said: string;
  copyRows: (shown: Shown) => void;
}) {
  const filtered = isFiltered(wanted);
  return (
    <div class="tools" role="toolbar" aria-label="Table">
      <SearchBox what="Search this table" text={wanted.search} onText={search => setWanted({...wanted, search})} />
      <span class="count" role="status">
        {loaded < table.records
          ? `loading, ${loaded.toLocaleString("en")} of ${count(table.records, "record")}`
          : filtered
            ? `${found.toLocaleString("en")} of ${count(table.records, "record")}`
            : count(table.records, "record")}
        {ready ? "" : " ..."}
      </span>
      {!asSheet && <SortChoice table={table} wanted={wanted} setWanted={setWanted} />}
      {table.columns.length > 1 && <ColumnChoice table={table} isShown={visibleColumns} setShown={setVisibleColumns} />}
      <button type="button" disabled={!ready} onClick={() => shown && copyRows(shown)}>
        Copy
      </button>
      <button
        type="button"
        disabled={!ready}
        onClick={() => shown && save(csv(shown), `${table.id.replace(/[^\w.-]/g, "_")}.csv`)}
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
  );
}
