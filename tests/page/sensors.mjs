// What the sensors view draws, against the inventory.
import assert from "node:assert/strict";

const THRESHOLDS = ["lnr", "lc", "lnc", "unc", "uc", "unr"];
const WIDTH = 360;
const LEVELS = {lnc: "warning", unc: "warning", lc: "critical", uc: "critical", lnr: "beyond", unr: "beyond"};

// A number of `a` drawn at a.x and one of `b` at b.x: where any other number has to be.
const between = (a, b) => value => a.x + ((value - a.value) / (b.value - a.value)) * (b.x - a.x);

const isAt = (x, wanted, what) => assert.ok(Math.abs(x - wanted) < 0.01, `${what}: at ${x}, not ${wanted}`);

function checkBar(sensor, bar) {
  const known = THRESHOLDS.filter(id => sensor[id] !== null);
  assert.equal(bar.lines.length, known.length, sensor.name);
  assert.deepEqual(
    bar.zones.map(({from, level}) => [from, level]).toSorted(),
    known.map(id => [id, LEVELS[id]]).toSorted(),
    sensor.name,
  );
  const drawn = known.map((id, at) => ({id, value: sensor[id], x: bar.lines[at]}));
  for (const {from, begin, end} of bar.zones) {
    const {x} = drawn.find(({id}) => id === from);
    // From the threshold to the end of the scale.
    const [inner, outer, rim] = from.startsWith("l") ? [end, begin, 0] : [begin, end, WIDTH];
    isAt(inner, x, `${sensor.name}, band from ${from}`);
    isAt(outer, rim, `${sensor.name}, end of the band from ${from}`);
  }
  const distinct = drawn.filter(({value}, at) => at === 0 || value !== drawn[0].value);
  if (distinct.length < 2) return 0;
  const place = between(distinct[0], distinct.at(-1));
  for (const {id, value, x} of drawn) isAt(x, place(value), `${sensor.name}, ${id} ${value}`);
  isAt(bar.mark, place(sensor.reading), `${sensor.name}, reading ${sensor.reading}`);
  return 1;
}

// Compares every sensor that is drawn; gives how many bars were checked against their numbers.
export async function checkSensors(page, sensors) {
  const shown = await page.locator(".sensor").evaluateAll(lines =>
    lines.map(line => {
      const bar = line.querySelector("svg.bar");
      return {
        name: line.querySelector(".name").textContent,
        reading: line.querySelector(".reading").textContent,
        isState: line.closest(".states") !== null,
        unread: line.querySelector(".bar.none")?.textContent ?? "",
        bar: bar && {
          lines: [...bar.querySelectorAll("line.threshold")].map(one => one.x1.baseVal.value),
          zones: [...bar.querySelectorAll("rect[data-from]")].map(one => ({
            from: one.dataset.from,
            level: one.classList[1],
            begin: one.x.baseVal.value,
            end: one.x.baseVal.value + one.width.baseVal.value,
          })),
          mark: bar.querySelector("rect.mark").x.baseVal.value + 2.5,
        },
      };
    }),
  );
  assert.equal(shown.length, sensors.length);
  let checked = 0;
  const left = [...shown];
  for (const sensor of sensors) {
    const isState = sensor.kind === "discrete";
    // Names need not be unique; those of one name and kind stand in the inventory's order.
    const at = left.findIndex(one => one.name === (sensor.name ?? "") && one.isState === isState);
    assert.ok(at >= 0, `${sensor.name} is not drawn`);
    const [one] = left.splice(at, 1);
    if (isState) {
      assert.equal(one.bar, null);
      if (sensor.states.length > 0) assert.ok(one.reading.includes(sensor.states.join(", ")), sensor.name);
      else assert.match(one.reading, /no state told|no reading|no state is set|states? [\d, ]+, not named/);
    } else if (sensor.reading === null) {
      assert.deepEqual([one.bar, one.reading, one.unread], [null, "", "no reading"], sensor.name);
    } else {
      assert.equal(one.reading, String(sensor.reading));
      checked += checkBar(sensor, one.bar);
    }
  }
  return checked;
}
