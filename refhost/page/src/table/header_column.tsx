// A header column: the labels down the side, records beside one another.
import {linkedCapture} from "../base/link";
import type {Capture, Value} from "../base/report";
import {viewHash} from "../base/route";
import type {Rows} from "../base/rows";
import {trimmed, visible} from "../base/text";

export function Text({value, captures}: {value: Value; captures: Map<string, Capture>}) {
  const capture = linkedCapture(value, captures);
  if (capture) return <a href={viewHash("capture", capture.name)}>{visible(capture.name)}</a>;
  return <bdi class="value">{trimmed(value)}</bdi>;
}

export function HeaderColumn({
  rows,
  columns,
  order,
  captures,
  active,
}: {
  rows: Rows;
  columns: number[];
  order: number[];
  captures: Map<string, Capture>;
  active: number;
}) {
  return (
    <div class="scroll" tabIndex={0} role="region" aria-label={`${rows.table.id}, records`}>
      <table class="sheet">
        <caption class="unseen">{visible(rows.table.id)}</caption>
        {order.length > 1 && (
          <thead>
            <tr>
              <td />
              {order.map(row => (
                <th scope="col" key={row} class={row === active ? "active" : ""}>
                  {`${visible(rows.name(row))} ${row + 1}`}
                </th>
              ))}
            </tr>
          </thead>
        )}
        <tbody>
          {columns.map(column => (
            <tr key={column}>
              <th scope="row">{visible(rows.table.columns[column]!.label)}</th>
              {order.map(row => (
                <td key={row} class={row === active ? "active" : ""}>
                  <Text value={rows.cell(row, column)} captures={captures} />
                </td>
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}
