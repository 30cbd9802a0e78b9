// What calls for attention, as a list that leads to the records.
import {useEffect, useState} from "preact/hooks";
import {attention, type Attention} from "./attention";
import type {Table} from "./data";
import {tableHash} from "./route";

export function Concerns({tables}: {tables: Map<string, Table>}) {
  const [found, setFound] = useState<Attention | null>(null);
  useEffect(() => void attention(tables).then(setFound), [tables]);
  if (found === null) return <p>Reading the tables ...</p>;
  if (found.looked.length === 0) return <p class="empty">No sensors, drives or arrays were collected.</p>;
  if (found.concerns.length === 0) return <p class="fine">Nothing stands out in {found.looked.join(", ")}.</p>;
  return (
    <ul class="concerns">
      {found.concerns.map((concern, at) => (
        <li key={at} class={concern.level}>
          <a href={tableHash(concern.table, concern.row)}>
            <bdi>{concern.what}</bdi>
          </a>{" "}
          <bdi>{concern.says}</bdi>
        </li>
      ))}
    </ul>
  );
}
