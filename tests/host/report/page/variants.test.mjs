// Deployments that are out of the ordinary.
import assert from "node:assert/strict";
import { existsSync, readdirSync } from "node:fs";
import { join } from "node:path";
import { after, afterEach, before, test } from "node:test";
import { blank, Folder, launch, open, picture, rows, text, valuesOf } from "./browser.mjs";

const folder = new Folder();
let browser;
let tab;

before(async () => {
  browser = await launch();
});
afterEach(async () => {
  if (tab) {
    assert.deepEqual(tab.faults, []);
    await tab.context().close();
    tab = undefined;
  }
});
after(async () => {
  await browser.close();
  folder.remove();
});

const short = ["--bursts", "6", "--samples", "512"];
const kNoResult = 32;
const kNoTrack = 1024;

test("rejected bursts are told with their reason and left out of the statistics", async () => {
  const made = folder.deployment("rejected", { sea: short, damage: (file) => [2, 3].forEach((burst) => blank(file, "pressure", String(burst))) });
  assert.deepEqual(valuesOf(made.result, "quality_flag").map((flags) => flags & kNoResult), [0, 0, 32, 32, 0, 0]);
  tab = await open(browser, made.page);
  assert.match(await text(tab, "#summary"), /: 4 not flagged; 2 flagged, better not used\.$/);
  const said = await text(tab, '[data-word="no_result"]');
  assert.match(said, /^no result: 2 bursts of 6/);
  assert.match(said, /The burst was rejected and has no results\./);
  assert.match(said, /Bursts 2\u20133: more than 10 % of the samples are missing/);
  await tab.emulateMedia({ media: "print" });
  assert.equal(await text(tab, '[data-word="no_result"]'), said, "paper tells it as well");
  await tab.emulateMedia({ media: "screen" });
  assert.deepEqual((await rows(tab))[2].slice(2, 5), ["\u2013", "\u2013", "\u2013"]);
  await tab.fill("#burst-slider", "2");
  assert.equal(await text(tab, "#polar-caption"), "Burst 2, 2024-11-05 02:00 UTC has no directional spectrum.");
  assert.match(await text(tab, "#spectrum-caption"), /has no spectrum/);
  assert.match(await text(tab, "#rose-caption"), /as shares of 4 bursts\..*Not counted: 2 bursts/);
});

test("nothing but rejected bursts", async () => {
  const made = folder.deployment("nothing", { sea: ["--bursts", "3", "--samples", "512"], damage: (file) => blank(file, "pressure") });
  tab = await open(browser, made.page);
  assert.match(await text(tab, "#tiles"), /no burst is fit for use/);
  assert.match(await text(tab, "#rose-caption"), /No burst has both a height and a mean direction/);
  assert.equal(await tab.getAttribute("#time-chart", "aria-label"), "No burst has wave parameters.");
});

test("without a surface track", async () => {
  const made = folder.deployment("track", { sea: [...short, "--track-drop", "1"] });
  assert.ok(valuesOf(made.result, "quality_flag").every((flags) => (flags & kNoTrack) !== 0));
  tab = await open(browser, made.page);
  assert.match(await text(tab, '[data-word="no_track"]'), /^no track: 6 bursts of 6\s+There was no usable surface track/);
  assert.match(await text(tab, "#summary"), /: 6 flagged, usable with care\.$/);
  assert.ok(!(await text(tab, "#spectrum-key")).includes("surface track"));
  assert.match(await text(tab, "#spectrum-caption"), /come from: (pressure|velocity)/);
});

test("directions that waves go to", async () => {
  const made = folder.deployment("going", { sea: short, process: ["--going-to"] });
  tab = await open(browser, made.page);
  for (const selector of ["#time-key", "#polar-caption", "#rose-caption", "#facts"]) assert.match(await text(tab, selector), /waves go to/, selector);
  assert.ok(!(await tab.innerText("main")).includes("come from:") || (await text(tab, "#spectrum-caption")).includes("come from:"));
  assert.equal((await rows(tab))[0][6], valuesOf(made.result, "mean_direction")[0].toFixed(0));
});

test("a single burst", async () => {
  const made = folder.deployment("single", { sea: ["--bursts", "1", "--samples", "512"] });
  tab = await open(browser, made.page);
  assert.equal(await text(tab, "#summary"), "1 burst of 2024-11-05 00:00 UTC: 1 not flagged.");
  for (const control of ["#burst-slider", "#burst-before", "#burst-after"]) assert.ok(await tab.isDisabled(control));
  assert.equal((await rows(tab)).length, 1);
});

test("a profile instrument", async () => {
  const made = folder.deployment("profile", { sea: [...short, "--instrument-type", "16"] });
  tab = await open(browser, made.page);
  assert.equal((await rows(tab))[4][2], valuesOf(made.result, "hm0")[4].toFixed(2));
  assert.match(await text(tab, "#facts"), /type 16/);
});

test("bursts without times stand by their number", async () => {
  const made = folder.deployment("timeless", { sea: short, damageResult: (file) => blank(file, "time") });
  tab = await open(browser, made.page);
  assert.match(await text(tab, "#summary"), /^6 bursts, without times:/);
  assert.match(await text(tab, "#burst-name"), /^Burst \d: /);
  assert.equal((await rows(tab))[0][1], "\u2013");
  const before = await picture(tab, "polar-chart");
  const box = await tab.locator("#spectrogram-chart").boundingBox();
  await tab.locator("#spectrogram-chart").click({ position: { x: 70, y: box.height / 2 } });
  assert.match(await text(tab, "#burst-name"), /^Burst 0:/);
  assert.notEqual(await picture(tab, "polar-chart"), before);
});

test("some bursts without times are said to be missing in the pictures", async () => {
  const made = folder.deployment("partly", { sea: short, damageResult: (file) => blank(file, "time", "3") });
  tab = await open(browser, made.page);
  assert.match(await text(tab, "#summary"), /1 burst without a time: not in the pictures of time\.$/);
  await tab.fill("#burst-slider", "3");
  assert.match(await text(tab, "#burst-name"), /^Burst 3: /);
  assert.ok(!(await tab.isVisible("#time-chart .cursor")));
});

test("names in the file stay text", async () => {
  const made = folder.deployment("sea <img src=x onerror=alert(1)> & co", { sea: ["--bursts", "1", "--samples", "512"] });
  tab = await open(browser, made.page);
  assert.equal(await text(tab, "h1"), "Waves of sea <img src=x onerror=alert(1)> & co.nc");
  assert.equal(await tab.locator("img").count(), 0);
});

test("field bursts", async (context) => {
  const data = process.env.ORVIK_FIELD_DATA;
  if (!existsSync(data)) {
    context.skip("no field bursts here");
    return;
  }
  for (const file of readdirSync(data).filter((name) => /^bursts_.*\.nc$/.test(name))) {
    const made = folder.report(file, join(data, file));
    const field = await open(browser, made.page);
    const heights = valuesOf(made.result, "hm0");
    assert.deepEqual((await rows(field)).map((row) => row[2]), heights.map((value) => (Number.isNaN(value) ? "\u2013" : value.toFixed(2))), file);
    assert.deepEqual(field.faults, []);
    await field.context().close();
  }
});
