// Height against period, with lines of equal steepness in deep water: s = 2 pi Hm0 / (g Tp^2).
import { axisStyle, Chart, tooltipStyle } from "./charts.js";
import { colours } from "./colours.js";
import { byId, escaped } from "./dom.js";
import { classes, lineKey, symbolKey, symbolOf } from "./symbols.js";
import { bursts, burstName, classOf, withUnit } from "./words.js";

const steepnesses = [0.005, 0.02, 0.05];
const gravity = 9.81;

export function scatterView(deployment, chooseBurst) {
  const heights = deployment.values("hm0");
  const periods = deployment.values("tp");
  const shown = [...heights.keys()].filter((burst) => Number.isFinite(heights[burst]) && Number.isFinite(periods[burst]));
  const nice = (value, step) => Math.ceil((1.05 * value) / step) * step;
  const most = shown.length > 0 ? { height: Math.max(...shown.map((b) => heights[b])), period: Math.max(...shown.map((b) => periods[b])) } : { height: 1, period: 10 };
  const top = nice(most.height, most.height > 2 ? 1 : most.height > 0.5 ? 0.25 : 0.05);
  const right = nice(most.period, 2);

  // Up to where the line leaves the picture.
  function steepnessLine(steepness) {
    const end = Math.min(right, Math.sqrt((2 * Math.PI * top) / (gravity * steepness)));
    const data = Array.from({ length: 41 }, (_, i) => (i / 40) * end).map((period) => [period, (steepness * gravity * period * period) / (2 * Math.PI)]);
    return {
      type: "line", data, showSymbol: false, silent: true, tooltip: { show: false }, lineStyle: { color: colours().second, width: 1, type: [5, 4] },
      endLabel: { show: true, formatter: `s ${steepness}`, color: colours().quiet, offset: end < right ? [-18, -7] : [-38, -9] }, z: 1,
    };
  }

  function option() {
    const size = shown.length > 400 ? 5 : 8;
    return {
      grid: { left: 48, right: 20, top: 36, bottom: 44 },
      xAxis: { type: "value", min: 0, max: right, name: "peak period Tp [s]", nameLocation: "middle", nameGap: 26, ...axisStyle() },
      yAxis: { type: "value", min: 0, max: top, name: "Hm0 [m]", ...axisStyle(), nameTextStyle: { color: colours().ink, align: "left", padding: [0, 0, 0, -32] } },
      tooltip: { ...tooltipStyle(), formatter: ({ value }) => `<b>${escaped(burstName(deployment, value[2]))}</b><br>Hm0 ${withUnit(deployment, "hm0", value[2])}, Tp ${withUnit(deployment, "tp", value[2])}` },
      series: [
        ...steepnesses.map(steepnessLine),
        ...classes.map((quality) => ({ type: "scatter", cursor: "pointer", z: 3, data: shown.filter((burst) => classOf(deployment, burst) === quality).map((burst) => [periods[burst], heights[burst], burst]), ...symbolOf(quality, size) })),
      ],
    };
  }

  const chart = new Chart(byId("scatter-chart"), option, () => {
    byId("scatter-key").innerHTML = symbolKey() + lineKey(colours().second, "5 4", "equal steepness s in deep water");
  });
  const text = shown.length > 0 ? `Significant height against peak period of ${bursts(shown.length)}.` : "No burst has both a height and a peak period.";
  byId("scatter-caption").textContent = text;
  chart.describe(`Scatter. ${text}`);
  chart.echart.on("click", ({ value }) => value?.[2] !== undefined && chooseBurst(value[2]));
  return chart;
}
