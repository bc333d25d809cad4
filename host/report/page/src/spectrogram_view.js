// Energy by frequency and time.
import { axisStyle, Chart, picture, setPixel, timeAxis } from "./charts.js";
import { colours, colourTable, gradient, logIndex } from "./colours.js";
import { byId, scale } from "./dom.js";
import { scientific } from "./words.js";

const kDecades = 3.5;
const channels = (colour) => [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));

// The burst that a place on the axis belongs to: the nearest one, no farther than half an interval; -1 in gaps.
function burstFinder(deployment) {
  const places = deployment.inOrder.map((burst) => deployment.place(burst));
  return (place) => {
    let low = 0;
    let high = places.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (places[middle] < place) low = middle + 1;
      else high = middle;
    }
    const nearest = low > 0 && (low === places.length || place - places[low - 1] < places[low] - place) ? low - 1 : low;
    return nearest < places.length && Math.abs(places[nearest] - place) <= deployment.interval * 0.51 ? deployment.inOrder[nearest] : -1;
  };
}

export function nearestBurst(deployment, place) {
  let best = -1;
  for (const burst of deployment.inOrder) {
    if (best < 0 || Math.abs(deployment.place(burst) - place) < Math.abs(deployment.place(best) - place)) best = burst;
  }
  return best;
}

// Column of every pixel, then its colours downwards: `limit` is at the top.
function paint(deployment, greatest, limit) {
  const density = deployment.spectra("variance_density");
  const frequencies = deployment.frequencies.main;
  const step = frequencies.length > 1 ? frequencies[1] - frequencies[0] : 1;
  const find = burstFinder(deployment);
  return (image, api, area) => {
    const table = colourTable();
    const absent = channels(colours().absent);
    const colourOf = Array.from(density, (value) => (Number.isNaN(value) ? absent : table[Math.max(0, logIndex(value, greatest, kDecades))]));
    const bins = Array.from({ length: image.height }, (_, y) => Math.round(((1 - (y + 0.5) / image.height) * limit - frequencies[0]) / step));
    const [left] = api.coord([deployment.place(deployment.inOrder[0]), 0]);
    const unitsPerPixel = deployment.interval / (api.coord([deployment.place(deployment.inOrder[0]) + deployment.interval, 0])[0] - left);
    const origin = deployment.place(deployment.inOrder[0]);
    for (let x = 0; x < image.width; x += 1) {
      const pixel = area.x + ((x + 0.5) / image.width) * area.width;
      const burst = find(origin + (pixel - left) * unitsPerPixel);
      for (let y = 0; burst >= 0 && y < image.height; y += 1) {
        const isOnAxis = bins[y] >= 0 && bins[y] < frequencies.length;
        if (isOnAxis) setPixel(image, 4 * (y * image.width + x), colourOf[burst * frequencies.length + bins[y]]);
      }
    }
  };
}

export function spectrogramView(deployment, axis, choose) {
  const greatest = deployment.greatest("variance_density");

  function option(width) {
    const hasPlace = deployment.inOrder.length > 0 && greatest > 0;
    const name = (text) => ({ name: text, nameTextStyle: { color: colours().ink, align: "left", padding: [0, 0, 0, -32] } });
    return {
      grid: { left: width < 560 ? 44 : 56, right: 14, top: 30, bottom: 40 },
      xAxis: { ...timeAxis(deployment), splitLine: { show: false }, ...(deployment.hasTimes ? {} : { name: "burst", nameLocation: "middle", nameGap: 24 }) },
      yAxis: { type: "value", min: 0, max: axis.limit(), interval: axis.step(), ...axisStyle(), splitLine: { show: false }, ...name("frequency [Hz]") },
      dataZoom: [{ type: "inside", filterMode: "none", zoomOnMouseWheel: "ctrl", preventDefaultMouseMove: false }],
      series: hasPlace ? [picture([deployment.place(deployment.inOrder[0]), 0], ({ x, y, width: w, height }) => ({ x, y, width: w, height }), paint(deployment, greatest, axis.limit()))] : [],
    };
  }

  const chart = new Chart(byId("spectrogram-chart"), option, () => {
    scale(byId("spectrogram-scale"), `up to ${scientific(Number((greatest / 10 ** kDecades).toPrecision(2)))}`, `${scientific(Number(greatest.toPrecision(3)))} m\u00b2 s variance density`).style.background = gradient();
  });
  byId("spectrogram-hint").textContent = "Grey: the burst has no spectrum. Blank: there is no burst.";
  chart.describe(`Variance density by frequency and time; the greatest is ${greatest.toPrecision(3)} square metres seconds.`);
  chart.echart.getZr().on("click", (event) => choose(chart.echart.convertFromPixel({ gridIndex: 0 }, [event.offsetX, event.offsetY])[0]));
  return chart;
}
