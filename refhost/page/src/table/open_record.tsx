// The record that was chosen, field by field, with its line in the capture.
import {useEffect, useState} from "preact/hooks";
import type {Capture} from "../base/report";
import {captureHash} from "../base/route";
import {rowLines} from "../base/row_lines";
import type {Rows} from "../base/rows";
import {visible} from "../base/text";
import {Panel} from "../parts/panel";
import {Text} from "./header_column";

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

export function OpenRecord({
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
