// Height, period and direction through time, and under them which bursts were flagged.
import { axisStyle, Chart, timeAxis, tooltipStyle } from "./charts.js";
import { colours } from "./colours.js";
import { byId, escaped } from "./dom.js";
import { classes, dotKey, lineKey, symbolKey, symbolOf } from "./symbols.js";
import { burstName, classOf, kDiscard, plain, sense, withUnit, wordsOf } from "./words.js";

const kTop = 30;
const kPanel = 150;
const kBetween = 52;
const kFlagRow = 38;
const kBelow = 34;

// Marked values, a thin companion, and what a simulated sea really was.
const panels = [
  { title: "height [m]", main: "hm0", mainText: "significant height Hm0", companion: "h_max", companionText: "greatest wave", truth: "true_significant_height" },
  { title: "period [s]", main: "tp", mainText: "peak period Tp", companion: "tm02", companionText: "mean period Tm02", truth: "true_peak_period" },
  { title: "direction [\u00b0]", main: "peak_direction", mainText: "direction at the peak", companion: "mean_direction", companionText: "mean direction", truth: "true_peak_direction", isDirection: true },
];

const hasAny = (values) => values.some(Number.isFinite);
const turned = (degrees) => (degrees + 180) % 360;

function valuesOf(deployment, panel, name) {
  const values = deployment.values(name);
  // Of a simulated sea the file tells where waves come from, always.
  return panel.isDirection && name.startsWith("true_") && !deployment.comingFrom ? values.map(turned) : values;
}

// A line is broken where bursts are missing or better not used.
function lineData(deployment, values) {
  const points = [];
  deployment.inOrder.forEach((burst, i) => {
    const place = deployment.place(burst);
    const before = i > 0 ? deployment.place(deployment.inOrder[i - 1]) : place;
    if (place - before > 2.5 * deployment.interval) points.push([before + deployment.interval, null]);
    points.push([place, classOf(deployment, burst) === kDiscard || !Number.isFinite(values[burst]) ? null : values[burst], burst]);
  });
  return points;
}

function line(deployment, at, values, colour, type, width) {
  return {
    type: "line", xAxisIndex: at, yAxisIndex: at, data: lineData(deployment, values), showSymbol: false, silent: true, z: 2,
    lineStyle: { color: colour, type, width }, itemStyle: { color: colour },
  };
}

function dots(deployment, at, values, style) {
  const data = deployment.inOrder.filter((burst) => Number.isFinite(values[burst])).map((burst) => [deployment.place(burst), values[burst], burst]);
  return { type: "scatter", xAxisIndex: at, yAxisIndex: at, data, cursor: "pointer", z: 3, large: style.symbol === "circle", largeThreshold: 300, ...style };
}

function panelSeries(deployment, panel, at, size) {
  const series = [];
  const companion = valuesOf(deployment, panel, panel.companion);
  if (panel.isDirection) {
    series.push(dots(deployment, at, companion, { symbol: "circle", symbolSize: 3, itemStyle: { color: colours().second } }));
  } else {
    series.push(line(deployment, at, companion, colours().second, [6, 4], 1.5));
    series.push(line(deployment, at, deployment.values(panel.main), colours().good, "solid", 1));
  }
  if (deployment.has(panel.truth)) {
    const truth = valuesOf(deployment, panel, panel.truth);
    series.push(panel.isDirection
      ? dots(deployment, at, truth, { symbol: "rect", symbolSize: 3, itemStyle: { color: colours().third } })
      : line(deployment, at, truth, colours().third, [2, 3], 2));
  }
  const values = deployment.values(panel.main);
  for (const quality of classes) {
    const shown = values.map((value, burst) => (classOf(deployment, burst) === quality ? value : NaN));
    series.push(dots(deployment, at, shown, symbolOf(quality, size)));
  }
  return series;
}

function tooltip(deployment, burst) {
  const rows = panels.flatMap(({ main, mainText, companion, companionText }) => [[mainText, main], [companionText, companion]]);
  const flags = wordsOf(deployment, burst).map((word) => plain(word.word)).join(", ");
  return [`<b>${escaped(burstName(deployment, burst))}</b>`, ...rows.map(([text, name]) => `${text}: ${withUnit(deployment, name, burst)}`), ...(flags ? [`flagged: ${escaped(flags)}`] : [])].join("<br>");
}

const panelTop = (at) => kTop + at * (kPanel + kBetween);

export function timeView(deployment, choose) {
  const node = byId("time-chart");
  const words = deployment.quality.filter((word) => deployment.flags.some((flags) => (flags & word.mask) !== 0));
  const flagTop = panelTop(3);
  node.style.height = `${words.length > 0 ? flagTop + words.length * kFlagRow + kBelow : flagTop - kBetween + kBelow}px`;

  function option(width) {
    const isNarrow = width < 560;
    const side = { left: isNarrow ? 44 : words.length > 0 ? 168 : 56, right: 14 };
    const size = deployment.count > 400 ? 4 : 7;
    const axes = panels.map((panel, at) => ({
      type: "value", gridIndex: at, name: panel.title, nameLocation: "end", ...axisStyle(), scale: false,
      nameTextStyle: { color: colours().ink, align: "left", padding: [0, 0, 0, -side.left + 8] },
      ...(panel.isDirection ? { min: 0, max: 360, interval: 90, axisLabel: { color: colours().ink, formatter: (value) => ({ 0: "N 0", 90: "E 90", 180: "S 180", 270: "W 270", 360: "N 360" })[value] } } : { min: 0 }),
    }));
    const grids = panels.map((_, at) => ({ ...side, top: panelTop(at), height: kPanel }));
    const series = panels.flatMap((panel, at) => panelSeries(deployment, panel, at, size));
    if (words.length > 0) {
      grids.push({ ...side, top: flagTop, height: words.length * kFlagRow });
      axes.push({
        type: "category", gridIndex: 3, inverse: true, data: words.map((word) => plain(word.word)), name: "flagged", nameLocation: "start", ...axisStyle(),
        nameTextStyle: { color: colours().ink, align: "left", padding: [0, 0, 0, -side.left + 8] },
        axisLabel: { color: colours().ink, interval: 0, ...(isNarrow ? { inside: true, margin: 4, verticalAlign: "bottom", padding: [0, 0, 9, 0] } : {}) }, axisTick: { show: false },
        splitLine: { show: true, lineStyle: { color: colours().line } },
      });
      words.forEach((word, row) => series.push({
        type: "scatter", xAxisIndex: 3, yAxisIndex: 3, cursor: "pointer", ...symbolOf(word.discard ? "discard" : "note", size),
        data: deployment.inOrder.filter((burst) => (deployment.flags[burst] & word.mask) !== 0).map((burst) => [deployment.place(burst), row, burst]),
      }));
    }
    const last = grids.length - 1;
    return {
      grid: grids,
      xAxis: grids.map((_, at) => ({ ...timeAxis(deployment), gridIndex: at, ...(at === last && !deployment.hasTimes ? { name: "burst", nameLocation: "middle", nameGap: 22 } : {}) })),
      yAxis: axes,
      axisPointer: { link: [{ xAxisIndex: "all" }], lineStyle: { color: colours().quiet } },
      tooltip: {
        trigger: "axis", ...tooltipStyle(),
        formatter: (items) => {
          const item = [].concat(items).find(({ value }) => value[2] !== undefined);
          return item === undefined ? "" : tooltip(deployment, item.value[2]);
        },
      },
      dataZoom: [{ type: "inside", xAxisIndex: grids.map((_, at) => at), filterMode: "none", zoomOnMouseWheel: "ctrl", moveOnMouseMove: true, preventDefaultMouseMove: false }],
      series,
    };
  }

  const chart = new Chart(node, option);
  const named = panels.filter(({ main }) => hasAny(deployment.values(main)));
  chart.describe(named.length === 0 ? "No burst has wave parameters." : named.map(({ main, mainText }) => {
    const values = [...deployment.values(main)].filter(Number.isFinite);
    return `${mainText} from ${Math.min(...values).toFixed(2)} to ${Math.max(...values).toFixed(2)} ${deployment.facts(main).unit}`;
  }).join(", "));
  chart.echart.getZr().on("click", (event) => {
    const [place] = chart.echart.convertFromPixel({ gridIndex: 0 }, [event.offsetX, event.offsetY]);
    choose(place);
  });
  return chart;
}

export function drawTimeKey(deployment) {
  const isSimulated = panels.some(({ truth }) => deployment.has(truth));
  byId("time-key").innerHTML = symbolKey()
    + lineKey(colours().second, "6 4", "greatest wave; mean period Tm02") + dotKey(colours().second, "mean direction")
    + (isSimulated ? lineKey(colours().third, "2 3", "the simulated sea") : "")
    + `<span>Symbols: Hm0, Tp and the direction at the peak, where waves ${sense(deployment)}</span>`;
}
