// One burst, chosen with the slider or by a click into a picture.
import { byId, fact } from "./dom.js";
import { burstName, classOf, classWords, number, plain, sourceText, withUnit, wordsOf } from "./words.js";

// In the order of reading; what the file does not have is left out, simulated truth and all.
const shownFirst = ["hm0", "tp", "tm02", "tm_10", "peak_direction", "mean_direction", "peak_spread", "h_third", "h_tenth", "h_max", "t_max", "tz", "current_speed", "current_direction", "water_depth"];

// What is said of a value instead of the file's longer text.
const shortText = {
  hm0: "significant height Hm0", tp: "peak period Tp", tm02: "mean period Tm02", tm_10: "energy period Tm-1,0", peak_direction: "direction at the peak",
  mean_direction: "mean direction", peak_spread: "spread at the peak", h_third: "height of the highest third", h_tenth: "height of the highest tenth", h_max: "greatest wave",
  t_max: "its period", tz: "mean zero-crossing period", current_speed: "current speed", current_direction: "current goes to", water_depth: "water depth",
};

export class BurstChooser {
  constructor(deployment, first, changed) {
    this.deployment = deployment;
    this.changed = changed;
    this.slider = byId("burst-slider");
    this.slider.max = String(deployment.count - 1);
    this.slider.disabled = deployment.count === 1;
    this.slider.addEventListener("input", () => this.choose(Number(this.slider.value)));
    byId("burst-before").addEventListener("click", () => this.choose(this.burst - 1));
    byId("burst-after").addEventListener("click", () => this.choose(this.burst + 1));
    this.burst = first;
    this.show();
  }

  choose(burst) {
    if (burst < 0 || burst >= this.deployment.count || burst === this.burst) return;
    this.burst = burst;
    this.show();
    this.changed();
  }

  show() {
    const { deployment, burst } = this;
    const flags = wordsOf(deployment, burst).map((word) => plain(word.word)).join(", ");
    const name = `${burstName(deployment, burst)}: ${classWords[classOf(deployment, burst)]}${flags ? ` (${flags})` : ""}`;
    byId("burst-name").textContent = name;
    this.slider.value = String(burst);
    this.slider.setAttribute("aria-valuetext", name);
    byId("burst-before").disabled = burst === 0;
    byId("burst-after").disabled = burst === deployment.count - 1;
    const facts = shownFirst.filter((value) => deployment.has(value) && number(deployment, value, burst) !== "\u2013").map((value) => {
      const node = fact(shortText[value], withUnit(deployment, value, burst));
      node.dataset.value = value;
      return node;
    });
    byId("burst-values").replaceChildren(...facts, fact("spectrum from", sourceText(deployment, burst)));
    byId("burst-notes").textContent = [deployment.reasons[burst], deployment.notes[burst]].filter((text) => text).join(" ");
  }
}
