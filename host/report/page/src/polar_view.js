// The directional spectrum of the chosen burst: direction around, frequency outwards.
import { axisStyle, Chart, picture, setPixel } from "./charts.js";
import { colours, colourTable, gradient, logIndex } from "./colours.js";
import { byId, scale } from "./dom.js";
import { burstName, scientific, sense } from "./words.js";

const channels = (colour) => [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));
const labels = { 0: "N", 90: "E", 180: "S", 270: "W" };

function paint(deployment, energy, greatest, limit) {
  const { main: frequencies } = deployment.frequencies;
  const sectors = deployment.directions.length;
  const step = frequencies.length > 1 ? frequencies[1] - frequencies[0] : 1;
  return (image) => {
    const table = colourTable();
    const absent = channels(colours().absent);
    const radius = image.width / 2;
    for (let y = 0; y < image.height; y += 1) {
      for (let x = 0; x < image.width; x += 1) {
        const east = x + 0.5 - radius;
        const north = radius - y - 0.5;
        const frequency = (Math.hypot(east, north) / radius) * limit;
        const bin = Math.round((frequency - frequencies[0]) / step);
        if (frequency > limit || bin < 0 || bin >= frequencies.length) continue;
        const bearing = (Math.atan2(east, north) * 180) / Math.PI + 360;
        const value = energy[bin * sectors + (Math.round((bearing / 360) * sectors) % sectors)];
        const index = logIndex(value, greatest, deployment.distribution.decades);
        if (Number.isNaN(value)) setPixel(image, 4 * (y * image.width + x), absent);
        else if (index >= 0) setPixel(image, 4 * (y * image.width + x), table[index]);
      }
    }
  };
}

function caption(deployment, burst, energy, shownTo) {
  const said = `Direction that waves ${sense(deployment)}, around; frequency [Hz], outwards.`;
  if (energy === null) return `${burstName(deployment, burst)} has no directional spectrum.`;
  const limit = deployment.values("aliasing_frequency")[burst];
  if (limit >= shownTo || !energy.some(Number.isNaN)) return said;
  return `${said} Grey: no directions${Number.isFinite(limit) ? `, from ${limit.toFixed(3)} Hz on` : ""}.`;
}

export function polarView(deployment, axis, chosen) {
  let energy = null;
  let greatest = 0;

  function option() {
    const angle = axisStyle();
    return {
      polar: { radius: "82%", center: ["50%", "50%"] },
      angleAxis: {
        type: "value", min: 0, max: 360, interval: 30, startAngle: 90, clockwise: true, z: 5, ...angle,
        axisLabel: { color: colours().ink, formatter: (value) => labels[value] ?? (value === 360 ? "" : `${value}`) },
        splitLine: { show: true, lineStyle: { color: colours().quiet, opacity: 0.35 } },
      },
      radiusAxis: {
        type: "value", min: 0, max: axis.limit(), interval: axis.step(), z: 6, ...angle, axisLine: { show: false }, axisTick: { show: false },
        axisLabel: { color: colours().ink, showMinLabel: false, backgroundColor: colours().ground, padding: [0, 2], borderRadius: 2, margin: -6 },
        splitLine: { show: true, lineStyle: { color: colours().quiet, opacity: 0.35 } },
      },
      series: energy === null ? [] : [{
        ...picture([0, 0], ({ cx, cy, r }) => ({ x: cx - r, y: cy - r, width: 2 * r, height: 2 * r }), paint(deployment, energy, greatest, axis.limit())),
        coordinateSystem: "polar",
      }],
    };
  }

  function load() {
    energy = deployment.directional(chosen());
    greatest = energy === null ? 0 : energy.reduce((most, value) => (value > most ? value : most), 0);
    if (!(greatest > 0)) energy = null;
  }

  load();
  const chart = new Chart(byId("polar-chart"), option, () => {
    const { decades } = deployment.distribution;
    byId("polar-scale").style.visibility = energy === null ? "hidden" : "visible";
    scale(byId("polar-scale"), scientific(Number((greatest / 10 ** decades).toPrecision(2))), `${scientific(greatest)} m\u00b2 s/\u00b0`).style.background = gradient();
  });
  const describe = () => {
    const text = caption(deployment, chosen(), energy, axis.limit());
    byId("polar-caption").textContent = text;
    chart.describe(`Directional spectrum. ${text}`);
    chart.node.dataset.greatest = String(greatest);
  };
  const update = () => {
    load();
    chart.draw();
    describe();
  };
  describe();
  return { chart, update };
}
