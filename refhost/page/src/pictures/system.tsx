// The machine: what it is, its processors, its management controller, its replaceable units.
import type {Place} from "../base/report";
import {visible} from "../base/text";
import type {ViewProps} from "../base/view_props";
import {Evidence} from "../parts/evidence";
import {MachineFacts} from "../parts/machine";

// The fields of entities side by side; of a field that none of them has there is no column.
function Entities<One extends Place>({
  title,
  list,
  fields,
  overview,
}: {
  title: string;
  list: One[];
  fields: [label: string, field: keyof One][];
  overview: ViewProps["overview"];
}) {
  if (list.length === 0) return null;
  const known = fields.filter(([, field]) => list.some(one => one[field] !== undefined));
  return (
    <section>
      <h2>{title}</h2>
      <div class="scroll" tabIndex={0} role="region" aria-label={title}>
        <table class="list">
          <thead>
            <tr>
              {known.map(([label]) => (
                <th key={label} scope="col">
                  {label}
                </th>
              ))}
              <th scope="col">Told by</th>
            </tr>
          </thead>
          <tbody>
            {list.map((one, at) => (
              <tr key={at}>
                {known.map(([label, field]) => (
                  <td key={label}>
                    <bdi>{visible(String(one[field] ?? ""))}</bdi>
                  </td>
                ))}
                <td>
                  <Evidence overview={overview} place={one} />
                </td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </section>
  );
}

export function SystemPicture({overview}: ViewProps) {
  const {inventory} = overview;
  return (
    <>
      <section>
        <h2>The machine</h2>
        <MachineFacts overview={overview} />
      </section>
      {inventory !== undefined && (
        <>
          <Entities
            title="Processors"
            list={inventory.processors}
            fields={[
              ["Socket", "socket"],
              ["Model", "model"],
              ["Cores", "cores"],
              ["Threads", "threads"],
              ["State", "state"],
            ]}
            overview={overview}
          />
          <Entities
            title="Management controller (BMC)"
            list={inventory.bmcs}
            fields={[
              ["Firmware", "firmware"],
              ["IPMI", "ipmi"],
              ["Self test", "self_test"],
              ["Address", "address"],
              ["MAC", "mac"],
            ]}
            overview={overview}
          />
          <Entities
            title="Replaceable units (FRU)"
            list={inventory.frus}
            fields={[
              ["Device", "device"],
              ["Manufacturer", "manufacturer"],
              ["Product", "product"],
              ["Part", "part"],
              ["Serial", "serial"],
            ]}
            overview={overview}
          />
        </>
      )}
    </>
  );
}
