import {useEffect, useState} from "preact/hooks";
import {loadRows, type Rows, type Table} from "../data";

// The rows of several tables, by id, once all are loaded.
export function useRows(
  tables: Map<string, Table>,
  ids: readonly string[],
): {rows: Map<string, Rows> | null; failure: string} {
  const [rows, setRows] = useState<Map<string, Rows> | null>(null);
  const [failure, setFailure] = useState("");
  useEffect(() => {
    let alive = true;
    const wanted = ids.flatMap(id => tables.get(id) ?? []).filter(table => table.records > 0);
    Promise.all(wanted.map(table => loadRows(table)))
      .then(all => alive && setRows(new Map(all.map(one => [one.table.id, one]))))
      .catch((error: Error) => alive && setFailure(error.message));
    return () => {
      alive = false;
    };
  }, [tables]);
  return {rows, failure};
}
