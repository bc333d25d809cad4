// The deployment as the program packed it. Numbers come back rounded to the digits they were packed with.
import { unzlibSync } from "fflate";

function bytesOf(text) {
  const raw = atob(text);
  const bytes = new Uint8Array(raw.length);
  for (let i = 0; i < raw.length; i += 1) bytes[i] = raw.charCodeAt(i);
  return unzlibSync(bytes);
}

function floatsOf(text) {
  const bytes = bytesOf(text);
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  return Float32Array.from({ length: bytes.length / 4 }, (_, i) => view.getFloat32(4 * i, true));
}

function codesOf(text) {
  const bytes = bytesOf(text);
  const codes = new Uint16Array(bytes.length / 2);
  for (let i = 0; i < codes.length; i += 1) codes[i] = (bytes[i] << 8) | bytes[codes.length + i];
  return codes;
}

// Values by code: NaN for a missing value, 0 for one too small.
const decimalTables = new Map();
function decimalTable(digits, lowest) {
  const key = `${digits} ${lowest}`;
  if (!decimalTables.has(key)) {
    const first = 10 ** (digits - 1);
    const perDecade = 9 * first;
    const table = new Float64Array(2 ** 16);
    table[0] = NaN;
    for (let code = 2; code < table.length; code += 1) {
      const mantissa = first + ((code - 2) % perDecade);
      const exponent = lowest + Math.floor((code - 2) / perDecade) - digits + 1;
      table[code] = exponent < 0 ? mantissa / 10 ** -exponent : mantissa * 10 ** exponent;
    }
    decimalTables.set(key, table);
  }
  return decimalTables.get(key);
}

function lookedUp(codes, table) {
  const values = new Float64Array(codes.length);
  for (let i = 0; i < codes.length; i += 1) values[i] = table[codes[i]];
  return values;
}

function spectrumOf(packed) {
  const codes = codesOf(packed.data);
  if (packed.step !== undefined) {
    return Float64Array.from(codes, (code) => (code === 0 ? NaN : (code - 1) * packed.step));
  }
  return lookedUp(codes, decimalTable(packed.digits, packed.lowest));
}

const numberOrNaN = (value) => (value === null ? NaN : value);

export class Deployment {
  constructor(packed) {
    this.file = packed.file;
    this.comingFrom = packed.comingFrom;
    this.attributes = packed.attributes;
    this.quality = packed.quality;
    this.flags = packed.flags;
    this.source = packed.source;
    this.reasons = packed.reasons ?? [];
    this.notes = packed.notes ?? [];
    this.count = packed.flags.length;
    this.number = packed.number ?? packed.flags.map((_, i) => i);
    this.times = packed.times.map((time) => 1000 * numberOrNaN(time)); // [ms since 1970]
    this.hasTimes = this.times.some(Number.isFinite);
    this.frequencies = { main: packed.freq, fine: packed.fine ?? [] };
    this.directions = packed.dir;
    this.packedValues = packed.values;
    this.packedSpectra = packed.spectra;
    this.distribution = packed.distribution;
    this.opened = new Map();
    // Bursts that have a place on the axis of time, in its order.
    this.inOrder = [...Array(this.count).keys()]
      .filter((burst) => Number.isFinite(this.place(burst)))
      .sort((a, b) => this.place(a) - this.place(b));
    this.interval = this.medianInterval();
  }

  // Where a burst stands on the axis of time, or of bursts when there are no times.
  place(burst) {
    return this.hasTimes ? this.times[burst] : this.number[burst];
  }

  // Median distance of neighbours on that axis; an hour for a burst that stands alone.
  medianInterval() {
    const gaps = this.inOrder.slice(1).map((burst, i) => this.place(burst) - this.place(this.inOrder[i])).filter((gap) => gap > 0);
    return gaps.length > 0 ? gaps.sort((a, b) => a - b)[gaps.length >> 1] : this.hasTimes ? 3600e3 : 1;
  }

  has(name) {
    return this.packedValues[name] !== undefined;
  }

  facts(name) {
    return this.packedValues[name];
  }

  // A number for each burst, NaN where the file has none.
  values(name) {
    if (!this.opened.has(name)) {
      this.opened.set(name, this.has(name) ? floatsOf(this.packedValues[name].data) : new Float32Array(this.count).fill(NaN));
    }
    return this.opened.get(name);
  }

  hasSpectrum(name) {
    return this.packedSpectra[name] !== undefined;
  }

  spectra(name) {
    const key = `spectrum ${name}`;
    if (!this.opened.has(key)) this.opened.set(key, spectrumOf(this.packedSpectra[name]));
    return this.opened.get(key);
  }

  // Of the bursts that are to be kept; a discarded one may hold more.
  greatest(name) {
    return this.packedSpectra[name].greatest;
  }

  spectrum(name, burst) {
    const all = this.spectra(name);
    const bins = all.length / this.count;
    return all.subarray(burst * bins, (burst + 1) * bins);
  }

  // Variance density by frequency and direction; null where the burst has none.
  directional(burst) {
    const { digits, lowest, bursts } = this.distribution;
    if (bursts[burst] === "") return null;
    return lookedUp(codesOf(bursts[burst]), decimalTable(digits, lowest[burst]));
  }
}

export const readDeployment = () => new Deployment(JSON.parse(document.getElementById("data").textContent));
