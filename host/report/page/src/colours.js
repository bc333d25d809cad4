// Colours that stay apart for the colour-blind and, by their lightness, in grey. Quality is told by shape as well.

const themes = {
  light: {
    ink: "#17202a", quiet: "#55606b", line: "#dfe4e9", ground: "#ffffff", absent: "#e9ecef",
    good: "#0060a8", note: "#c45a00", discard: "#17202a", second: "#6b7682", third: "#00796b",
    // dark for much energy: little ink on paper
    scale: ["#ffffe0", "#d5eeb3", "#97d6b9", "#47b1c0", "#2a82ba", "#274a9d", "#0c1f5c"],
  },
  dark: {
    ink: "#e6eaee", quiet: "#a5b0bb", line: "#2b3540", ground: "#0f141a", absent: "#262e37",
    good: "#6cb8f5", note: "#ffa043", discard: "#e6eaee", second: "#8e9aa6", third: "#5fd3bc",
    scale: ["#10233f", "#173f74", "#1f679b", "#3292ab", "#5cbfa8", "#aee19a", "#ffffc8"],
  },
};

let name = "light";
export const colours = () => themes[name];

export function chooseTheme(theme) {
  const isNew = theme !== name;
  name = theme;
  document.documentElement.dataset.theme = theme;
  document.documentElement.style.setProperty("--note", colours().note);
  return isNew;
}

const channels = (colour) => [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));

// 256 steps from little to much, as rows of red, green, blue.
export function colourTable() {
  const stops = colours().scale.map(channels);
  return Array.from({ length: 256 }, (_, i) => {
    const at = (i / 255) * (stops.length - 1);
    const low = Math.min(Math.floor(at), stops.length - 2);
    return stops[low].map((from, k) => Math.round(from + (at - low) * (stops[low + 1][k] - from)));
  });
}

export const colourAt = (share) => `rgb(${colourTable()[Math.round(255 * share)].join(",")})`;
export const gradient = () => `linear-gradient(to right, ${colours().scale.join(", ")})`;

// Logarithmic: index of a value's colour over the decades below the greatest one, -1 below them.
export function logIndex(value, greatest, decades) {
  const share = 1 + Math.log10(value / greatest) / decades;
  return share < 0 || !(value > 0) ? -1 : Math.min(255, Math.round(255 * share));
}
