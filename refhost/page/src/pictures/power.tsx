// The bays of the power supplies, and the input behind each.
import type {PowerSupply} from "../base/report";
import {visible} from "../base/text";
import {supplyFindings, worst} from "../base/verdict";
import type {ViewProps} from "../base/view_props";
import {Standing} from "../parts/evidence";
import {EmptyPicture} from "./empty_picture";
import {levelOf} from "./level";
import {State} from "./state";

const about = ({model, part, serial, firmware}: PowerSupply) =>
  [model, part !== model && part && `part ${part}`, serial && `serial ${serial}`, firmware && `firmware ${firmware}`]
    .filter(text => text)
    .map(text => visible(String(text)));

export function PowerPicture({overview}: ViewProps) {
  const supplies = overview.inventory?.power_supplies ?? [];
  if (supplies.length === 0) return <EmptyPicture overview={overview} of="power supplies" />;
  const found = supplyFindings(overview);
  return (
    <ul class="slots supplies">
      {supplies.map((supply, at) => {
        const severity = worst(found(supply));
        const {present, state, input_state: input, input_watts: watts} = supply;
        return (
          <li key={at} class={`slot ${present === false ? "empty" : levelOf(severity)}`}>
            <Standing overview={overview} place={supply}>
              <strong>
                <bdi>{visible(supply.slot ?? "no slot")}</bdi>
              </strong>
              <State
                printed={present === false ? "none in the bay" : (state ?? "state not told")}
                severity={severity}
              />
              {present !== false && (
                <span class="what">
                  input:{" "}
                  <bdi>
                    {visible(input ?? "not told")}
                    {watts !== undefined && `, ${watts} W`}
                  </bdi>
                </span>
              )}
              {about(supply).map(text => (
                <span key={text} class="what">
                  <bdi>{text}</bdi>
                </span>
              ))}
            </Standing>
          </li>
        );
      })}
    </ul>
  );
}
