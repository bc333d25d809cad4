// Numbers and facts as people read them.

export const kGood = "good";
export const kNote = "note";
export const kDiscard = "discard";

export const classWords = {
  [kGood]: "not flagged",
  [kNote]: "flagged, usable with care",
  [kDiscard]: "flagged, better not used",
};

// Digits that are shown of each value: those of the program's own table.
const decimals = { m: 2, s: 2, degree: 0, "m s-1": 2, Hz: 3, "1": 2 };
const unitText = { degree: "\u00b0", "m s-1": "m/s", "1": "" };
const wholeNumbers = new Set(["cell_used", "surface_track_bad", "surface_track_spikes", "method_used"]);
const oneDecimal = new Set(["peak_spread"]);

export const unit = (deployment, name) => {
  const text = deployment.facts(name)?.unit ?? "";
  return unitText[text] ?? text;
};

export function number(deployment, name, burst) {
  const value = deployment.values(name)[burst];
  if (!Number.isFinite(value)) return "\u2013";
  const unitName = deployment.facts(name).unit;
  return value.toFixed(wholeNumbers.has(name) ? 0 : oneDecimal.has(name) ? 1 : decimals[unitName] ?? 2);
}

export function withUnit(deployment, name, burst) {
  const text = number(deployment, name, burst);
  const symbol = unit(deployment, name);
  return text === "\u2013" || symbol === "" ? text : symbol === "\u00b0" ? text + symbol : `${text} ${symbol}`;
}

export const timeText = (ms) => (Number.isFinite(ms) ? new Date(ms).toISOString().slice(0, 16).replace("T", " ") : "\u2013");

export const burstName = (deployment, burst) =>
  `Burst ${deployment.number[burst]}${Number.isFinite(deployment.times[burst]) ? `, ${timeText(deployment.times[burst])} UTC` : ""}`;

export const wordsOf = (deployment, burst) => deployment.quality.filter((word) => (deployment.flags[burst] & word.mask) !== 0);

export const plain = (word) => word.replace(/_/g, " ");

export function classOf({ quality, flags }, burst) {
  const raised = (word) => (flags[burst] & word.mask) !== 0;
  if (flags[burst] === 0 || !quality.some(raised)) return kGood;
  return quality.some((word) => word.discard && raised(word)) ? kDiscard : kNote;
}

export function sourceText(deployment, burst) {
  const isRejected = !Number.isFinite(deployment.values("hm0")[burst]);
  if (deployment.source === undefined || isRejected) return "\u2013";
  return { 0: "pressure", 1: "velocity", 3: "surface track" }[deployment.source[burst]] ?? "\u2013";
}

export const sense = (deployment) => (deployment.comingFrom ? "come from" : "go to");

const compass = ["N", "NNE", "NE", "ENE", "E", "ESE", "SE", "SSE", "S", "SSW", "SW", "WSW", "W", "WNW", "NW", "NNW"];
export const compassNames = compass;
export const sectorOf = (degrees) => Math.round((((degrees % 360) + 360) % 360) / 22.5) % 16;

export const bursts = (count) => (count === 1 ? "1 burst" : `${count} bursts`);

// "0-3, 7, 9-11"
export function ranges(numbers) {
  const parts = [];
  for (let i = 0; i < numbers.length; i += 1) {
    const first = numbers[i];
    while (i + 1 < numbers.length && numbers[i + 1] === numbers[i] + 1) i += 1;
    parts.push(first === numbers[i] ? `${first}` : `${first}\u2013${numbers[i]}`);
  }
  return parts.join(", ");
}

export const scientific = (value) => (value === 0 ? "0" : value >= 0.01 && value < 1000 ? String(Number(value.toPrecision(3))) : value.toExponential().replace("e+", "e"));
