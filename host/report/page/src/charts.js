// Charts that follow their container's width and the page's theme.
import { BarChart, CustomChart, LineChart, ScatterChart } from "echarts/charts";
import { DataZoomInsideComponent, GridComponent, PolarComponent, TooltipComponent } from "echarts/components";
import { connect, init, use } from "echarts/core";
import { CanvasRenderer } from "echarts/renderers";
import { colours } from "./colours.js";

use([BarChart, CanvasRenderer, CustomChart, DataZoomInsideComponent, GridComponent, LineChart, PolarComponent, ScatterChart, TooltipComponent]);

const charts = [];

export class Chart {
  // `option` makes the chart's description from its width; `after` runs when it was drawn.
  constructor(node, option, after = () => {}) {
    this.node = node;
    this.option = option;
    this.after = after;
    this.echart = init(node, null, { renderer: "canvas", devicePixelRatio: Math.max(2, window.devicePixelRatio) });
    this.width = node.clientWidth;
    this.draw();
    new ResizeObserver(() => this.fit()).observe(node);
    charts.push(this);
  }

  draw() {
    this.echart.setOption({ animation: false, useUTC: true, textStyle: { fontFamily: "inherit" }, ...this.option(this.node.clientWidth) }, { notMerge: true });
    this.after();
  }

  fit() {
    if (this.node.clientWidth === this.width) return;
    this.width = this.node.clientWidth;
    this.echart.resize();
    this.draw();
  }

  describe(text) {
    this.node.setAttribute("aria-label", text);
  }
}

export const redrawAll = () => charts.forEach((chart) => chart.draw());
export const fitAll = () => charts.forEach((chart) => {
  chart.fit();
  chart.echart.getZr().flush();
});
export const linkInTime = (...linked) => connect(linked.map((chart) => chart.echart));

export const axisStyle = () => ({
  axisLine: { lineStyle: { color: colours().quiet } },
  axisTick: { lineStyle: { color: colours().quiet } },
  axisLabel: { color: colours().ink, hideOverlap: true },
  splitLine: { lineStyle: { color: colours().line } },
  nameTextStyle: { color: colours().ink },
});

export const tooltipStyle = () => ({
  backgroundColor: colours().ground,
  borderColor: colours().quiet,
  textStyle: { color: colours().ink, fontSize: 13 },
  confine: true,
});

// The axis of time, or of bursts where there are no times, with half an interval to spare at both ends.
export function timeAxis(deployment) {
  const half = deployment.interval / 2;
  const places = deployment.inOrder.map((burst) => deployment.place(burst));
  return {
    type: deployment.hasTimes ? "time" : "value",
    min: (places[0] ?? 0) - half,
    max: (places[places.length - 1] ?? 0) + half,
    ...(deployment.hasTimes ? {} : { minInterval: 1 }),
    ...axisStyle(),
    axisLabel: {
      color: colours().ink, hideOverlap: true,
      ...(deployment.hasTimes ? { formatter: { year: "{yyyy}", month: "{MMM} {yyyy}", day: "{MMM} {d}", hour: "{HH}:{mm}", minute: "{HH}:{mm}" } } : { showMinLabel: false, showMaxLabel: false }),
    },
    splitLine: { show: true, lineStyle: { color: colours().line } },
  };
}

// One item that is a picture: `paint` fills a canvas of the given size, in device pixels.
export function picture(data, areaOf, paint) {
  return {
    type: "custom",
    z: 1,
    silent: true,
    animation: false,
    data: [data],
    renderItem(params, api) {
      const area = areaOf(params.coordSys);
      const canvas = document.createElement("canvas");
      const ratio = Math.max(2, window.devicePixelRatio);
      canvas.width = Math.max(1, Math.round(area.width * ratio));
      canvas.height = Math.max(1, Math.round(area.height * ratio));
      const context = canvas.getContext("2d");
      const image = context.createImageData(canvas.width, canvas.height);
      paint(image, api, area);
      context.putImageData(image, 0, 0);
      return { type: "image", style: { image: canvas, ...area } };
    },
  };
}

export function setPixel(image, at, colour, alpha = 255) {
  image.data[at] = colour[0];
  image.data[at + 1] = colour[1];
  image.data[at + 2] = colour[2];
  image.data[at + 3] = alpha;
}
