// How often waves of which height came from, or went to, which direction.
import { axisStyle, Chart, tooltipStyle } from "./charts.js";
import { colourAt, colours } from "./colours.js";
import { byId } from "./dom.js";
import { boxKey } from "./symbols.js";
import { bursts, classOf, compassNames, kDiscard, sectorOf, sense } from "./words.js";

const kClasses = 5;
const niceSteps = [0.05, 0.1, 0.2, 0.25, 0.5, 1, 2, 5];

function heightBounds(heights) {
  const most = Math.max(...heights);
  const step = niceSteps.find((candidate) => candidate * kClasses >= most) ?? 10;
  return Array.from({ length: kClasses }, (_, i) => Number((i * step).toFixed(2))).filter((bound) => bound <= most);
}

// Share of all counted bursts by class of height and sector.
function count(deployment) {
  const heights = deployment.values("hm0");
  const directions = deployment.values("mean_direction");
  const counted = [...heights.keys()].filter((burst) => classOf(deployment, burst) !== kDiscard && Number.isFinite(heights[burst]) && Number.isFinite(directions[burst]));
  const bounds = counted.length > 0 ? heightBounds(counted.map((burst) => heights[burst])) : [];
  const shares = bounds.map(() => new Array(16).fill(0));
  for (const burst of counted) {
    const level = bounds.length - 1 - [...bounds].reverse().findIndex((bound) => heights[burst] >= bound);
    shares[level][sectorOf(directions[burst])] += 100 / counted.length;
  }
  return { counted: counted.length, bounds, shares };
}

const shadeOf = (level, levels) => colourAt(levels === 1 ? 0.6 : 0.2 + (0.8 * level) / (levels - 1));
const classText = (bounds, level) => (level + 1 < bounds.length ? `${bounds[level]} to ${bounds[level + 1]} m` : `${bounds[level]} m and more`);

export function roseView(deployment) {
  const { counted, bounds, shares } = count(deployment);
  const totals = compassNames.map((_, sector) => shares.reduce((sum, share) => sum + share[sector], 0));
  const main = totals.indexOf(Math.max(...totals));

  function option() {
    return {
      polar: { radius: "80%" },
      angleAxis: { type: "category", data: compassNames, startAngle: 90 + 11.25, ...axisStyle(), axisTick: { show: false }, axisLabel: { color: colours().ink, interval: 0, formatter: (text) => (text.length === 3 ? "" : text) } },
      radiusAxis: { type: "value", ...(Math.max(...totals) > 75 ? { max: 100, interval: 25 } : { splitNumber: 3 }), ...axisStyle(), axisLine: { show: false }, axisTick: { show: false }, z: 6, axisLabel: { color: colours().ink, formatter: "{value} %", showMinLabel: false, backgroundColor: colours().ground, padding: [0, 2], margin: -6 } },
      tooltip: { ...tooltipStyle(), formatter: ({ name, seriesName, value }) => `${name}, ${seriesName}: ${value.toFixed(1)} % of bursts` },
      series: bounds.map((_, level) => ({
        type: "bar", coordinateSystem: "polar", stack: "all", name: classText(bounds, level), data: shares[level], barCategoryGap: "12%",
        itemStyle: { color: shadeOf(level, bounds.length), borderColor: colours().quiet, borderWidth: 0.5 },
      })),
    };
  }

  const chart = new Chart(byId("rose-chart"), option, () => {
    byId("rose-key").innerHTML = bounds.map((_, level) => boxKey(shadeOf(level, bounds.length), `Hm0 ${classText(bounds, level)}`)).join("");
  });
  const text = counted === 0
    ? "No burst has both a height and a mean direction."
    : `Mean directions that waves ${sense(deployment)}, as shares of ${bursts(counted)}. Most: ${compassNames[main]}, ${totals[main].toFixed(1)} %.`
      + (counted < deployment.count ? ` Not counted: ${bursts(deployment.count - counted)}, rejected, better not used or without direction.` : "");
  byId("rose-caption").textContent = text;
  chart.describe(`Wave rose. ${text}`);
  return chart;
}
