// The drives of each controller as a row of slots, and its arrays with their members.
import {valueReader, type Rows, type Table} from "../data";
import {tableHash} from "../route";
import {count, number, trimmed, visible} from "../text";
import {driveStates, volumeStates, type State} from "./states";
import {useRows} from "./use_rows";

// Records of one controller follow one another under one name ("Controller 0 PDLIST").
function controllers(rows: Rows | undefined): Map<string, number[]> {
  const found = new Map<string, number[]>();
  for (let row = 0; rows && row < rows.count; ++row) {
    const name = visible(rows.name(row)).replace(
      /\s+(PDLIST|Physical Drive List|TOPOLOGY INFO|Virtual Drive List)$/i,
      "",
    );
    if (!found.has(name)) found.set(name, []);
    found.get(name)!.push(row);
  }
  return found;
}

function StateText({code, states}: {code: string; states: Map<string, State>}) {
  const state = states.get(code);
  return (
    <span class={`state ${state?.level ?? "unknown"}`}>
      {state && state.level !== "good" && <b aria-hidden="true">▲ </b>}
      <bdi>{code}</bdi>
      {state && state.words !== code.toLowerCase() && <small> {state.words}</small>}
    </span>
  );
}

const COUNTERS = [
  ["MediaErrorCount", "media errors"],
  ["OtherErrorCount", "other errors"],
  ["PredictiveFail", "predicted failures"],
] as const;

function Health({rows, row}: {rows: Rows; row: number}) {
  const value = valueReader(rows);
  const smart = trimmed(value(row, "SMARTflag"));
  return (
    <>
      <div class="temperature">
        <bdi>{trimmed(value(row, "DriveTemperature"))}</bdi>
      </div>
      <ul class="counters">
        {COUNTERS.map(([id, words]) => {
          const text = trimmed(value(row, id));
          return (
            text !== "" && (
              <li key={id} class={number(text) > 0 ? "raised" : ""}>
                <bdi>{text}</bdi> {words}
              </li>
            )
          );
        })}
        {smart !== "" && (
          <li class={/^yes$/i.test(smart) ? "raised" : ""}>
            SMART alert: <bdi>{smart}</bdi>
          </li>
        )}
      </ul>
    </>
  );
}

function Slots({
  list,
  listed,
  details,
  detailed,
}: {
  list: Rows | undefined;
  listed: number[];
  details: Rows | undefined;
  detailed: number[];
}) {
  const value = list && valueReader(list);
  const detail = details && valueReader(details);
  // storcli prints both lists by enclosure and slot. With the same number of drives in both, the
  // n-th of one is the n-th of the other; otherwise nothing says which belongs to which.
  const paired = listed.length === detailed.length;
  const slots = listed.length > 0 ? listed : detailed;
  return (
    <>
      {!paired && listed.length > 0 && detailed.length > 0 && (
        <p class="note">
          {count(listed.length, "drive")} listed in <a href="#PINFO">PINFO</a>, {detailed.length} described in{" "}
          <a href="#PDLIST">PDLIST</a>: which belongs to which is not known, so temperatures and error counters are not
          shown here.
        </p>
      )}
      <ul class="slots">
        {slots.map((row, at) => {
          const state = value && listed.length > 0 ? trimmed(value(row, "State")) : "";
          const other = detailed[at];
          return (
            <li key={row} class={`slot ${driveStates.get(state)?.level ?? "unknown"}`}>
              {value && listed.length > 0 && (
                <a href={tableHash("PINFO", row)}>
                  <strong>
                    <bdi>{trimmed(value(row, "EID"))}</bdi>
                  </strong>
                  <StateText code={state} states={driveStates} />
                  <span class="what">
                    <bdi>{["Size", "Intf", "Med"].map(id => trimmed(value(row, id))).join(" ")}</bdi>
                  </span>
                  <span class="what">
                    <bdi>{trimmed(value(row, "Model"))}</bdi>
                  </span>
                </a>
              )}
              {details && detail && other !== undefined && (listed.length === 0 || paired) && (
                <a class="health" href={tableHash("PDLIST", other)}>
                  <span class="what">
                    <bdi>{trimmed(detail(other, "SN"))}</bdi>
                  </span>
                  <Health rows={details} row={other} />
                </a>
              )}
            </li>
          );
        })}
      </ul>
    </>
  );
}

function Arrays({
  topology,
  members,
  volumes,
  volumeRows,
  slots,
}: {
  topology: Rows;
  members: number[];
  volumes: Rows | undefined;
  volumeRows: number[];
  slots: Map<string, number>;
}) {
  const value = valueReader(topology);
  const volume = volumes && valueReader(volumes);
  const groups = new Map<string, number[]>();
  for (const row of members) {
    const group = trimmed(value(row, "DG"));
    if (!groups.has(group)) groups.set(group, []);
    groups.get(group)!.push(row);
  }
  const isDrive = (row: number) => trimmed(value(row, "Type")) === "DRIVE";
  return (
    <div class="arrays">
      {[...groups].map(([group, rows]) => {
        // The group's own row comes first; rows of its arrays and spans repeat it.
        const own = rows.find(row => !isDrive(row));
        const of = volume ? volumeRows.filter(row => trimmed(volume(row, "DG")).split("/")[0] === group) : [];
        return (
          <article key={group} class="array">
            <h3>
              {group === "-" ? (
                "In no drive group"
              ) : (
                <>
                  Drive group <bdi>{group}</bdi>
                </>
              )}
              {own !== undefined && (
                <a href={tableHash("TINFO", own)}>
                  <bdi>{trimmed(value(own, "Type"))}</bdi>{" "}
                  <StateText code={trimmed(value(own, "State"))} states={volumeStates} />{" "}
                  <small>
                    <bdi>{trimmed(value(own, "Size"))}</bdi>
                  </small>
                </a>
              )}
            </h3>
            {volume && of.length > 0 && (
              <ul class="volumes">
                {of.map(row => (
                  <li key={row}>
                    <a href={tableHash("VINFO", row)}>
                      <bdi>
                        {trimmed(volume(row, "DG"))} {trimmed(volume(row, "Name"))}
                      </bdi>
                      <StateText code={trimmed(volume(row, "State"))} states={volumeStates} />
                      <small>
                        <bdi>
                          {trimmed(volume(row, "TYPE"))} {trimmed(volume(row, "Size"))}
                        </bdi>
                      </small>
                    </a>
                  </li>
                ))}
              </ul>
            )}
            <ul class="members">
              {rows.filter(isDrive).map(row => {
                const place = trimmed(value(row, "EID"));
                const listed = slots.get(place);
                const state = trimmed(value(row, "State"));
                return (
                  <li key={row} class={`slot ${driveStates.get(state)?.level ?? "unknown"}`}>
                    <a href={listed === undefined ? tableHash("TINFO", row) : tableHash("PINFO", listed)}>
                      <strong>
                        <bdi>{place}</bdi>
                      </strong>
                      <StateText code={state} states={driveStates} />
                      <span class="what">
                        <bdi>{trimmed(value(row, "Size"))}</bdi>
                      </span>
                    </a>
                  </li>
                );
              })}
            </ul>
          </article>
        );
      })}
    </div>
  );
}

export function DrivesPicture({tables}: {tables: Map<string, Table>}) {
  const {rows, failure} = useRows(tables, ["PINFO", "PDLIST", "TINFO", "VINFO"]);
  if (failure)
    return (
      <p class="problem" role="alert">
        {failure}
      </p>
    );
  if (!rows) return <p>Reading the drives ...</p>;
  const [list, details, topology, volumes] = ["PINFO", "PDLIST", "TINFO", "VINFO"].map(id => rows.get(id));
  const parts = [list, details, topology, volumes].map(controllers);
  const names = [...new Set(parts.flatMap(part => [...part.keys()]))];
  return (
    <>
      <h1>Drives and arrays</h1>
      {names.map(name => {
        const [listed, detailed, members, volumeRows] = parts.map(part => part.get(name) ?? []) as [
          number[],
          number[],
          number[],
          number[],
        ];
        const eid = list && valueReader(list);
        const slots = new Map(eid ? listed.map(row => [trimmed(eid(row, "EID")), row] as const) : []);
        return (
          <section key={name} class="controller">
            <h2>
              <bdi>{name}</bdi>
            </h2>
            {listed.length + detailed.length > 0 && (
              <>
                <h3 class="part">{count(Math.max(listed.length, detailed.length), "drive")}</h3>
                <Slots list={list} listed={listed} details={details} detailed={detailed} />
              </>
            )}
            {topology && members.length > 0 && (
              <>
                <h3 class="part">Arrays and their members</h3>
                <Arrays topology={topology} members={members} volumes={volumes} volumeRows={volumeRows} slots={slots} />
              </>
            )}
          </section>
        );
      })}
    </>
  );
}
