// The frequency spectra of the chosen burst, by what they were measured with.
import { axisStyle, Chart, tooltipStyle } from "./charts.js";
import { colours } from "./colours.js";
import { byId, escaped } from "./dom.js";
import { lineKey } from "./symbols.js";
import { burstName, scientific, sourceText } from "./words.js";

const kDecades = 5;

const curves = () => [
  { name: "variance_density", text: "behind the wave parameters", colour: colours().good, type: "solid", width: 3 },
  { name: "variance_density_pressure", text: "from pressure", colour: colours().note, type: [8, 4], width: 1.5 },
  { name: "variance_density_velocity", text: "from velocity", colour: colours().third, type: [2, 3], width: 2 },
  { name: "variance_density_surface_track", text: "from the surface track", colour: colours().ink, type: "solid", width: 1, isFine: true },
];

function confidence(deployment, burst) {
  const [low, high] = ["confidence_lower_factor", "confidence_upper_factor"].map((name) => deployment.values(name)[burst]);
  return Number.isFinite(low) && Number.isFinite(high) ? ` 95 % confidence limits: ${low.toFixed(2)} and ${high.toFixed(2)} times the density.` : "";
}

export function spectrumView(deployment, axis, chosen) {
  function option() {
    const burst = chosen();
    const points = ({ name, isFine }) => {
      const frequencies = isFine ? deployment.frequencies.fine : deployment.frequencies.main;
      return [...deployment.spectrum(name, burst)].map((value, i) => [frequencies[i], value > 0 ? value : null]).filter(([frequency]) => frequency <= axis.limit() * 1.0001);
    };
    const known = curves().filter(({ name }) => deployment.hasSpectrum(name)).map((curve) => ({ ...curve, data: points(curve) }));
    const greatest = Math.max(0, ...known.flatMap(({ data }) => data.map(([, value]) => value ?? 0)));
    const top = 10 ** Math.ceil(Math.log10(greatest > 0 ? greatest : 1));
    const shown = known.filter(({ data }) => data.some(([, value]) => value > top / 10 ** kDecades));
    byId("spectrum-caption").textContent = shown.length > 0
      ? `Variance density by frequency. The wave parameters come from: ${sourceText(deployment, burst)}.${confidence(deployment, burst)}`
      : `${burstName(deployment, burst)} has no spectrum.`;
    byId("spectrum-key").innerHTML = shown.map(({ colour, type, text }) => lineKey(colour, [].concat(type).join(" ").replace("solid", "none"), text)).join("");
    return {
      grid: { left: 52, right: 14, top: 36, bottom: 44 },
      xAxis: { type: "value", min: 0, max: axis.limit(), interval: axis.step(), name: "frequency [Hz]", nameLocation: "middle", nameGap: 26, ...axisStyle() },
      yAxis: {
        type: "log", min: top / 10 ** kDecades, max: top, name: "m\u00b2 s", ...axisStyle(), nameTextStyle: { color: colours().ink, align: "left", padding: [0, 0, 0, -36] },
        axisLabel: { color: colours().ink, formatter: scientific },
      },
      tooltip: {
        trigger: "axis", ...tooltipStyle(),
        formatter: (items) => [`<b>${items[0].value[0].toFixed(3)} Hz</b>`, ...items.filter(({ value }) => value[1] !== null).map(({ seriesName, value }) => `${escaped(seriesName)}: ${scientific(value[1])} m\u00b2 s`)].join("<br>"),
      },
      series: shown.map((curve) => ({
        type: "line", name: curve.text, data: curve.data, showSymbol: false, connectNulls: false, clip: true,
        lineStyle: { color: curve.colour, type: curve.type, width: curve.width }, itemStyle: { color: curve.colour },
      })),
    };
  }

  const chart = new Chart(byId("spectrum-chart"), option);
  const describe = () => chart.describe(`Frequency spectra. ${byId("spectrum-caption").textContent}`);
  const update = () => {
    chart.draw();
    describe();
  };
  describe();
  return { chart, update };
}
