// One shape a class of quality, the same in every picture: disc, hollow triangle, cross.
import { colours } from "./colours.js";
import { classWords, kDiscard, kGood, kNote } from "./words.js";

const cross = "path://M-5,-5L5,5M5,-5L-5,5";

export const classes = [kGood, kNote, kDiscard];

export const symbolOf = (quality, size = 7) => ({
  [kGood]: { symbol: "circle", symbolSize: size, itemStyle: { color: colours().good } },
  [kNote]: { symbol: "triangle", symbolSize: size + 3, itemStyle: { color: colours().ground, borderColor: colours().note, borderWidth: 2 } },
  [kDiscard]: { symbol: cross, symbolSize: size + 2, itemStyle: { color: "transparent", borderColor: colours().discard, borderWidth: 2 } },
})[quality];

const svg = (inside, text) => `<span><svg width="18" height="14" viewBox="-9 -7 18 14" aria-hidden="true">${inside}</svg>${text}</span>`;

export const symbolKey = () =>
  svg(`<circle r="4" fill="${colours().good}"/>`, classWords[kGood]) +
  svg(`<path d="M0,-5L5,4H-5Z" fill="none" stroke="${colours().note}" stroke-width="2"/>`, classWords[kNote]) +
  svg(`<path d="M-4,-4L4,4M4,-4L-4,4" stroke="${colours().discard}" stroke-width="2"/>`, classWords[kDiscard]);

export const lineKey = (colour, dashes, text) =>
  svg(`<path d="M-9,0H9" stroke="${colour}" stroke-width="2" stroke-dasharray="${dashes}"/>`, text);

export const dotKey = (colour, text) => svg(`<circle r="2.5" fill="${colour}"/>`, text);
export const boxKey = (colour, text) => svg(`<rect x="-7" y="-5" width="14" height="10" fill="${colour}" stroke="${colours().quiet}"/>`, text);
