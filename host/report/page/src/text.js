// What the report says in words and numbers.
import { byId, element, fact } from "./dom.js";
import { bursts, classOf, classWords, compassNames, kDiscard, kGood, kNote, number, plain, ranges, sectorOf, sense, sourceText, timeText, unit, withUnit, wordsOf } from "./words.js";

const methods = {
  1: "1: moments of pressure and velocity",
  2: "2: moments of surface track and velocity",
  3: "3: maximum likelihood of the beams",
  4: "4: maximum likelihood of the beams, height and period from the surface track",
};

function span(deployment) {
  const times = deployment.times.filter(Number.isFinite);
  return times.length === 0 ? "" : [timeText(Math.min(...times)), timeText(Math.max(...times))];
}

export function drawHead(deployment) {
  const name = deployment.attributes.burst_file ?? deployment.file;
  document.title = `Waves of ${name}`;
  byId("title").textContent = `Waves of ${name}`;
  const ends = span(deployment);
  const of = (quality) => deployment.flags.filter((_, burst) => classOf(deployment, burst) === quality).length;
  const counts = [kGood, kNote, kDiscard].filter((quality) => of(quality) > 0).map((quality) => `${of(quality)} ${classWords[quality]}`);
  const unplaced = deployment.count - deployment.inOrder.length;
  byId("summary").textContent = `${bursts(deployment.count)}${ends === "" ? ", without times" : ends[0] === ends[1] ? ` of ${ends[0]} UTC` : ` from ${ends[0]} to ${ends[1]} UTC`}: ${counts.join("; ")}.`
    + (unplaced > 0 ? ` ${bursts(unplaced)} without a time: not in the pictures of time.` : "");
}

export function drawTiles(deployment) {
  const usable = [...Array(deployment.count).keys()].filter((burst) => classOf(deployment, burst) !== kDiscard && Number.isFinite(deployment.values("hm0")[burst]));
  if (usable.length === 0) {
    byId("tiles").replaceChildren(fact("Wave parameters", "none", element("small", {}, "no burst is fit for use")));
    return;
  }
  const heights = deployment.values("hm0");
  const highest = usable.reduce((best, burst) => (heights[burst] > heights[best] ? burst : best));
  const mean = usable.reduce((sum, burst) => sum + heights[burst], 0) / usable.length;
  const middle = (name) => [...usable].filter((burst) => Number.isFinite(deployment.values(name)[burst])).sort((a, b) => deployment.values(name)[a] - deployment.values(name)[b]);
  const periods = middle("tp");
  const direction = deployment.values("mean_direction")[highest];
  const tiles = [
    fact("Highest Hm0", withUnit(deployment, "hm0", highest), element("small", {}, deployment.hasTimes ? `${timeText(deployment.times[highest])} UTC` : `burst ${deployment.number[highest]}`)),
    fact("At that time", `${withUnit(deployment, "tp", highest)}, ${withUnit(deployment, "mean_direction", highest)}${Number.isFinite(direction) ? ` ${compassNames[sectorOf(direction)]}` : ""}`, element("small", {}, "peak period, mean direction")),
    fact("Mean Hm0", `${mean.toFixed(2)} m`, element("small", {}, `of ${bursts(usable.length)} fit for use`)),
  ];
  if (periods.length > 0) tiles.push(fact("Median Tp", withUnit(deployment, "tp", periods[periods.length >> 1])));
  byId("tiles").replaceChildren(...tiles);
}

// Each reason of a rejection once, with the bursts it holds for.
function reasonsOf(deployment, rejected) {
  const byReason = new Map();
  for (const burst of rejected.filter((candidate) => deployment.reasons[candidate])) {
    byReason.set(deployment.reasons[burst], [...(byReason.get(deployment.reasons[burst]) ?? []), deployment.number[burst]]);
  }
  return [...byReason].map(([reason, numbers]) => element("p", {}, `${numbers.length === 1 ? "Burst" : "Bursts"} ${ranges(numbers)}: ${reason}`));
}

export function drawQuality(deployment) {
  const entries = deployment.quality.map((word) => ({ word, found: [...deployment.flags.keys()].filter((burst) => (deployment.flags[burst] & word.mask) !== 0) }))
    .filter(({ found }) => found.length > 0)
    .map(({ word, found }) => {
      const node = element("div", { class: `flag ${word.discard ? kDiscard : kNote}`, "data-word": word.word },
        element("h3", {}, `${plain(word.word)}: ${bursts(found.length)} of ${deployment.count}`),
        element("p", {}, `${word.meaning} ${word.advice}`),
        element("p", { class: "hint" }, `${found.length === 1 ? "Burst" : "Bursts"} ${ranges(found.map((burst) => deployment.number[burst]))}`));
      if (word.word === "no_result") node.append(...reasonsOf(deployment, found));
      return node;
    });
  byId("quality-list").replaceChildren(...(entries.length > 0 ? entries : [element("p", {}, "No burst was flagged.")]));
}

function depthText(deployment) {
  const depths = [...deployment.values("water_depth")].filter(Number.isFinite);
  return depths.length === 0 ? undefined : [...new Set([Math.min(...depths), Math.max(...depths)].map((depth) => depth.toFixed(2)))].join(" to ") + " m";
}

export function drawFacts(deployment) {
  const { attributes } = deployment;
  const hours = deployment.interval / 3600e3;
  const method = attributes.processing_method;
  const facts = [
    ["Burst file", attributes.burst_file],
    ["Result file", deployment.file],
    ["Bursts", `${deployment.count}${deployment.hasTimes && deployment.inOrder.length > 1 ? `, one every ${hours >= 1 ? `${Number(hours.toFixed(2))} h` : `${Number((60 * hours).toFixed(2))} min`}` : ""}`],
    ["Water depth", depthText(deployment)],
    ["Instrument", attributes.instrument],
    ["Method", methods[method] ?? method],
    ["Processing", attributes.processing_parameters],
    ["Values given by hand", attributes.values_given],
    ["Directions", attributes.direction_convention ?? `directions that waves ${sense(deployment)}`],
    ["Source", attributes.source],
    ["History", attributes.history],
  ];
  byId("facts").replaceChildren(...facts.filter(([, text]) => text !== undefined && text !== "").flatMap(([term, text]) => [element("dt", {}, term), element("dd", {}, text)]));
}

const columns = [
  ["hm0", "Hm0"], ["tp", "Tp"], ["tm02", "Tm02"], ["peak_direction", "peak dir."], ["mean_direction", "mean dir."], ["peak_spread", "spread"], ["h_max", "Hmax"],
  ["current_speed", "current"], ["current_direction", "to"], ["water_depth", "depth"],
];

export function drawTable(deployment) {
  const present = columns.filter(([name]) => deployment.has(name));
  const head = element("tr", {}, element("th", { scope: "col" }, "burst"), element("th", { scope: "col", class: "text" }, "start", element("small", {}, "UTC")),
    ...present.map(([name, text]) => element("th", { scope: "col" }, text, element("small", {}, unit(deployment, name)))),
    element("th", { scope: "col", class: "text" }, "spectrum from"), element("th", { scope: "col", class: "text" }, "flagged"));
  const body = element("tbody");
  for (let burst = 0; burst < deployment.count; burst += 1) {
    const flags = wordsOf(deployment, burst).map((word) => plain(word.word)).join(", ");
    body.append(element("tr", { "data-burst": String(burst) }, element("td", {}, String(deployment.number[burst])), element("td", { class: "text" }, timeText(deployment.times[burst])),
      ...present.map(([name]) => element("td", {}, number(deployment, name, burst))),
      element("td", { class: "text" }, sourceText(deployment, burst)), element("td", { class: "text flags" }, flags)));
  }
  byId("rows").replaceChildren(element("table", {}, element("thead", {}, head), body));
}

export function markRow(burst) {
  for (const row of document.querySelectorAll("tr.chosen")) row.classList.remove("chosen");
  document.querySelector(`tr[data-burst="${burst}"]`)?.classList.add("chosen");
}
