// Puts the report together.
import { BurstChooser } from "./burst_view.js";
import { fitAll, linkInTime, redrawAll } from "./charts.js";
import { chooseTheme } from "./colours.js";
import { readDeployment } from "./data.js";
import { byId, element } from "./dom.js";
import { polarView } from "./polar_view.js";
import { roseView } from "./rose_view.js";
import { scatterView } from "./scatter_view.js";
import { nearestBurst, spectrogramView } from "./spectrogram_view.js";
import { spectrumView } from "./spectrum_view.js";
import { drawFacts, drawHead, drawQuality, drawTable, drawTiles, markRow } from "./text.js";
import { drawTimeKey, timeView } from "./time_view.js";
import { classOf, kDiscard } from "./words.js";

const dark = matchMedia("(prefers-color-scheme: dark)");
const print = matchMedia("print");
const wantedTheme = () => (dark.matches && !print.matches ? "dark" : "light");

const roundedUp = (frequency) => Number((Math.ceil(10 * frequency - 1e-4) / 10).toFixed(1)); // [Hz]

// The frequency below which 98 % of the deployment's energy lies; the rest of the axis is mostly empty.
function usualLimit(deployment) {
  const { main } = deployment.frequencies;
  const sums = new Float64Array(main.length);
  deployment.spectra("variance_density").forEach((value, i) => {
    if (value > 0 && classOf(deployment, Math.floor(i / main.length)) !== kDiscard) sums[i % main.length] += value;
  });
  const total = sums.reduce((sum, value) => sum + value, 0);
  let below = 0;
  const bin = sums.findIndex((value) => (below += value) >= 0.98 * total);
  return roundedUp(main[total > 0 ? bin : main.length - 1]);
}

function frequencyAxis(deployment) {
  const usual = usualLimit(deployment);
  const whole = byId("whole-axis");
  const limit = () => (whole.checked ? roundedUp(deployment.frequencies.main[deployment.frequencies.main.length - 1]) : usual);
  return { limit, step: () => (limit() > 0.6 ? 0.2 : 0.1) };
}

// The highest burst that is fit for use is the one to look at first.
function firstBurst(deployment) {
  const heights = deployment.values("hm0");
  let best = 0;
  let most = -1;
  for (let burst = 0; burst < deployment.count; burst += 1) {
    if (classOf(deployment, burst) !== kDiscard && heights[burst] > most) {
      best = burst;
      most = heights[burst];
    }
  }
  return best;
}

// A line at the chosen burst, beside the chart's own drawing, so that moving it draws nothing anew.
function cursor(deployment, chart, grids) {
  const node = element("div", { class: "cursor" });
  chart.node.append(node);
  const place = (burst) => {
    const [x] = chart.echart.convertToPixel({ xAxisIndex: 0, yAxisIndex: 0 }, [deployment.place(burst), 0]) ?? [NaN];
    const grid = chart.echart.getModel().getComponent("grid", 0).coordinateSystem.getRect();
    const last = chart.echart.getModel().getComponent("grid", grids - 1).coordinateSystem.getRect();
    node.hidden = !(x >= grid.x - 1 && x <= grid.x + grid.width + 1);
    node.style.left = `${x - 1}px`;
    node.style.top = `${grid.y}px`;
    node.style.height = `${last.y + last.height - grid.y}px`;
  };
  return place;
}

function spanButtons(deployment, chart, chosen) {
  if (!deployment.hasTimes) return;
  const places = deployment.inOrder.map((burst) => deployment.place(burst));
  const [first, last] = [places[0] - deployment.interval / 2, places[places.length - 1] + deployment.interval / 2];
  const day = 24 * 3600e3;
  const spans = [["All", Infinity], ["7 days", 7 * day], ["1 day", day]].filter(([, length]) => length === Infinity || length < last - first);
  if (spans.length === 1) return;
  const buttons = spans.map(([text, length]) => {
    const button = element("button", { type: "button", "aria-pressed": String(length === Infinity) }, text === "All" ? "Whole deployment" : `${text} around the burst`);
    button.addEventListener("click", () => {
      const middle = deployment.place(chosen());
      const from = length === Infinity ? first : Math.min(Math.max(first, middle - length / 2), last - length);
      chart.echart.dispatchAction({ type: "dataZoom", startValue: from, endValue: length === Infinity ? last : from + length });
      buttons.forEach((other) => other.setAttribute("aria-pressed", String(other === button)));
    });
    return button;
  });
  byId("spans").replaceChildren(...buttons);
}

function follow(deployment, chooser, charts) {
  const cursors = charts.map((chart) => cursor(deployment, chart, chart.echart.getOption().grid.length));
  const move = () => {
    cursors.forEach((place) => place(chooser.burst));
    markRow(chooser.burst);
  };
  charts.forEach((chart) => {
    chart.echart.on("datazoom", move);
    chart.after = ((before) => () => {
      before();
      move();
    })(chart.after);
  });
  move();
  return move;
}

function start() {
  const deployment = readDeployment();
  chooseTheme(wantedTheme());
  drawHead(deployment);
  drawTiles(deployment);
  drawQuality(deployment);
  drawFacts(deployment);
  drawTimeKey(deployment);

  const axis = frequencyAxis(deployment);
  let update = () => {};
  const chooser = new BurstChooser(deployment, firstBurst(deployment), () => update());
  const chosen = () => chooser.burst;
  const chooseNear = (place) => chooser.choose(nearestBurst(deployment, place));
  const time = timeView(deployment, chooseNear);
  const spectrogram = spectrogramView(deployment, axis, chooseNear);
  const polar = polarView(deployment, axis, chosen);
  const spectrum = spectrumView(deployment, axis, chosen);
  roseView(deployment);
  scatterView(deployment, (burst) => chooser.choose(burst));
  drawTable(deployment); // after the charts, which ask for their width: laying out a long table takes time
  linkInTime(time, spectrogram);
  spanButtons(deployment, time, chosen);
  const move = follow(deployment, chooser, [time, spectrogram]);
  update = () => {
    polar.update();
    spectrum.update();
    move();
  };

  byId("whole-axis").addEventListener("change", () => {
    redrawAll();
    polar.update();
  });
  const dress = () => {
    if (chooseTheme(wantedTheme())) {
      drawTimeKey(deployment);
      redrawAll();
    }
    fitAll();
  };
  dark.addEventListener("change", dress);
  print.addEventListener("change", dress);
  addEventListener("beforeprint", dress);
  addEventListener("afterprint", dress);
  document.documentElement.dataset.ready = "true";
}

start();
