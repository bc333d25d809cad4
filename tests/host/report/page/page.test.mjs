// The page of an ordinary deployment: what it shows, and how it is used.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { Folder, launch, open, orvik, packedData, picture, rows, text, valuesOf } from "./browser.mjs";

const folder = new Folder();
let browser;
let storm;
let tab;

before(async () => {
  browser = await launch();
  storm = folder.deployment("storm", { sea: ["--bursts", "30", "--samples", "1024"] });
  tab = await open(browser, storm.page);
});
after(async () => {
  await browser.close();
  folder.remove();
});

const shownOr = (value, decimals) => (Number.isNaN(value) ? "\u2013" : value.toFixed(decimals));

test("every part is there, named for those who do not see it", async () => {
  for (const id of ["time-chart", "spectrogram-chart", "polar-chart", "spectrum-chart", "rose-chart", "scatter-chart"]) {
    const box = await tab.locator(`#${id} canvas`).first().boundingBox();
    assert.ok(box.width > 300 && box.height > 200, `${id} is ${box.width} x ${box.height}`);
    assert.ok((await tab.getAttribute(`#${id}`, "aria-label")).length > 20, id);
  }
  assert.equal(await tab.title(), "Waves of storm.nc");
  assert.equal(await text(tab, "#summary"), "30 bursts from 2024-11-05 00:00 to 2024-11-06 05:00 UTC: 30 not flagged.");
  assert.equal(await text(tab, "#quality-list"), "No burst was flagged.");
  assert.match(await text(tab, "#facts"), /4: maximum likelihood of the beams, height and period from the surface track/);
  assert.match(await text(tab, "#rose-caption"), /waves come from, as shares of 30 bursts/);
});

test("the table has the file's values", async () => {
  const columns = [["hm0", 2], ["tp", 2], ["tm02", 2], ["peak_direction", 0], ["mean_direction", 0], ["peak_spread", 1], ["h_max", 2], ["current_speed", 2], ["current_direction", 0], ["water_depth", 2]];
  const shown = await rows(tab);
  assert.equal(shown.length, 30);
  columns.forEach(([name, decimals], column) => {
    const expected = valuesOf(storm.result, name).map((value) => shownOr(value, decimals));
    assert.deepEqual(shown.map((row) => row[column + 2]), expected, name);
  });
});

test("the table has the values that orvik show prints", async () => {
  const shown = await rows(tab);
  const printed = orvik("show", storm.result).split("\n").filter((line) => /^ +\d+  2024-/.test(line)).map((line) => line.trim().split(/\s+/));
  assert.equal(printed.length, 30);
  printed.forEach(([burst, , , height, period, peak, mean, spread], i) => {
    assert.deepEqual([shown[i][0], shown[i][2], shown[i][3], shown[i][5], shown[i][6], shown[i][7]], [burst, height, period, peak, mean, spread]);
  });
});

test("spectra are the file's, rounded to the digits they are shown with", async () => {
  const { Deployment } = await import(pathToFileURL(`${process.env.ORVIK_PAGE}/src/data.js`).href);
  const deployment = new Deployment(packedData(storm.page));
  for (const name of ["variance_density", "variance_density_pressure", "variance_density_velocity", "variance_density_surface_track"]) {
    const expected = valuesOf(storm.result, name);
    const least = 10 ** (Math.floor(Math.log10(Math.max(...expected.filter(Number.isFinite)))) - 8);
    deployment.spectra(name).forEach((value, i) => {
      if (Number.isNaN(expected[i])) assert.ok(Number.isNaN(value), `${name} ${i}`);
      else assert.equal(Number(value.toPrecision(3)), expected[i] < least ? 0 : Number(expected[i].toPrecision(3)), `${name} ${i}`);
    });
  }
  const energy = valuesOf(storm.result, "efth");
  const size = energy.length / 30;
  for (const burst of [0, 17, 29]) {
    const expected = energy.slice(burst * size, (burst + 1) * size);
    const least = 10 ** (Math.floor(Math.log10(Math.max(...expected.filter(Number.isFinite)))) - 3);
    deployment.directional(burst).forEach((value, i) => {
      if (Number.isNaN(expected[i])) assert.ok(Number.isNaN(value), `efth ${i}`);
      else assert.equal(Number(value.toPrecision(2)), Number(expected[i].toPrecision(2)) < least ? 0 : Number(expected[i].toPrecision(2)), `efth ${i}`);
    });
  }
});

test("the slider changes burst, values and the polar picture", async () => {
  const energy = valuesOf(storm.result, "efth");
  const heights = valuesOf(storm.result, "hm0");
  const size = energy.length / 30;
  const pictures = new Set();
  for (const burst of [0, 12, 29]) {
    await tab.fill("#burst-slider", String(burst));
    assert.match(await text(tab, "#burst-name"), new RegExp(`^Burst ${burst}, 2024-11-0`));
    assert.equal(await text(tab, '[data-value="hm0"] dd'), `${heights[burst].toFixed(2)} m`);
    const greatest = Math.max(...energy.slice(burst * size, (burst + 1) * size).filter(Number.isFinite));
    assert.equal(Number(await tab.getAttribute("#polar-chart", "data-greatest")), Number(greatest.toPrecision(2)));
    assert.equal(await tab.$eval("tr.chosen", (row) => row.dataset.burst), String(burst));
    pictures.add(await picture(tab, "polar-chart"));
  }
  assert.equal(pictures.size, 3);
});

test("the polar picture has the energy where it comes from", async () => {
  await tab.fill("#burst-slider", "5");
  const direction = valuesOf(storm.result, "mean_direction")[5];
  // Mean bearing of the picture's pixels, weighted by how far their colour is from paper.
  await picture(tab, "polar-chart");
  const bearing = await tab.evaluate(() => {
    const canvas = document.querySelector("#polar-chart canvas");
    const { width, height } = canvas;
    const { data } = canvas.getContext("2d").getImageData(0, 0, width, height);
    const radius = 0.4 * Math.min(width, height);
    let east = 0;
    let north = 0;
    for (let y = 0; y < height; y += 1) {
      for (let x = 0; x < width; x += 1) {
        const [dx, dy] = [x - width / 2, height / 2 - y];
        const at = 4 * (y * width + x);
        const isColoured = data[at + 2] > data[at] + 60; // blue
        if (isColoured && Math.hypot(dx, dy) < radius) {
          east += dx / Math.hypot(dx, dy);
          north += dy / Math.hypot(dx, dy);
        }
      }
    }
    return (Math.atan2(east, north) * 180) / Math.PI;
  });
  const apart = Math.abs(((bearing - direction + 540) % 360) - 180);
  assert.ok(apart < 25, `the picture's energy lies at ${bearing}, the file's mean direction is ${direction}`);
});

test("a click into the pictures of time chooses the burst there", async () => {
  await tab.fill("#burst-slider", "29");
  const box = await tab.locator("#spectrogram-chart").boundingBox();
  await tab.locator("#spectrogram-chart").click({ position: { x: 70, y: box.height / 2 } });
  assert.match(await text(tab, "#burst-name"), /^Burst 0,/);
});

test("pointing at a burst tells its values", async () => {
  const box = await tab.locator("#time-chart").boundingBox();
  const heights = valuesOf(storm.result, "hm0");
  await tab.locator("#time-chart").hover({ position: { x: box.width / 2, y: 100 } });
  const tip = tab.locator("#time-chart div", { hasText: "significant height Hm0" }).last();
  await tip.waitFor();
  const [, burst, height] = /Burst (\d+),.*significant height Hm0: ([\d.]+) m/s.exec(await tip.innerText());
  assert.equal(height, heights[Number(burst)].toFixed(2));
});

test("keys alone reach and use everything", async () => {
  const fresh = await open(browser, storm.page);
  const seen = [];
  for (let i = 0; i < 40; i += 1) {
    await fresh.keyboard.press("Tab");
    const [name, outline] = await fresh.evaluate(() => [document.activeElement.id || document.activeElement.textContent.trim(), getComputedStyle(document.activeElement).outlineStyle]);
    if (name === "" || seen.includes(name) || (await fresh.evaluate(() => document.activeElement === document.body))) break;
    assert.notEqual(outline, "none", `${name} shows that it has the focus`);
    seen.push(name);
  }
  for (const name of ["Skip to the pictures", "Through time", "Whole deployment", "burst-before", "burst-slider", "burst-after", "whole-axis", "rows", "Licences of the libraries in this page"]) {
    assert.ok(seen.includes(name), `${name} is not among ${seen.join("; ")}`);
  }
  await fresh.context().close();
  await tab.fill("#burst-slider", "10");
  await tab.focus("#burst-slider");
  const named = async (key) => {
    await tab.keyboard.press(key);
    return /^Burst (\d+)/.exec(await text(tab, "#burst-name"))[1];
  };
  assert.equal(await named("ArrowRight"), "11");
  assert.equal(await named("ArrowLeft"), "10");
  assert.equal(await named("End"), "29");
  assert.equal(await named("Home"), "0");
  assert.ok(await tab.isDisabled("#burst-before"));
  await tab.focus("#burst-after");
  assert.equal(await named("Enter"), "1");
  const before = await picture(tab, "polar-chart");
  await tab.focus("#whole-axis");
  await tab.keyboard.press("Space");
  assert.notEqual(await picture(tab, "polar-chart"), before);
  await tab.keyboard.press("Space");
  await tab.focus("#rows");
  await tab.keyboard.press("End");
  await tab.waitForFunction(() => document.getElementById("rows").scrollTop > 0);
});

test("a day around the burst fills the pictures of time", async () => {
  const whole = [await picture(tab, "time-chart"), await picture(tab, "spectrogram-chart")];
  await tab.click("text=1 day around the burst");
  assert.equal(await tab.getAttribute("text=1 day around the burst", "aria-pressed"), "true");
  assert.notEqual(await picture(tab, "time-chart"), whole[0]);
  assert.notEqual(await picture(tab, "spectrogram-chart"), whole[1], "the spectrum over time follows");
  await tab.click("text=Whole deployment");
  assert.equal(await picture(tab, "time-chart"), whole[0]);
});

test("nothing is fetched and nothing complains", () => {
  assert.deepEqual(tab.faults, []);
});

test("a telephone shows it without scrolling sideways", async () => {
  for (const width of [320, 360, 768]) {
    const narrow = await open(browser, storm.page, { viewport: { width, height: 800 } });
    assert.ok((await narrow.evaluate(() => document.documentElement.scrollWidth)) <= width, `${width} pixels`);
    const canvas = await narrow.locator("#polar-chart canvas").first().boundingBox();
    assert.ok(canvas.x >= 0 && canvas.x + canvas.width <= width);
    assert.deepEqual(narrow.faults, []);
    await narrow.context().close();
  }
});

test("a window that changes its width takes the pictures along", async () => {
  const other = await open(browser, storm.page);
  await other.setViewportSize({ width: 600, height: 800 });
  await other.waitForFunction(() => document.querySelector("#time-chart canvas").getBoundingClientRect().width < 600);
  assert.ok((await other.evaluate(() => document.documentElement.scrollWidth)) <= 600);
  await other.context().close();
});

test("a dark screen gets a dark page, and paper a light one", async () => {
  const dark = await open(browser, storm.page, { colorScheme: "dark" });
  const ground = () => dark.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const corner = () => dark.evaluate(() => [...document.querySelector("#rose-chart canvas").getContext("2d").getImageData(0, 0, 1, 1).data]);
  assert.equal(await ground(), "rgb(15, 20, 26)");
  const seen = await picture(dark, "time-chart");
  await dark.emulateMedia({ media: "print" });
  await dark.waitForFunction(() => document.documentElement.dataset.theme === "light");
  assert.equal(await ground(), "rgb(255, 255, 255)");
  assert.deepEqual((await corner()).slice(3), [0], "pictures have no ground of their own");
  assert.notEqual(await picture(dark, "time-chart"), seen, "pictures are drawn for paper");
  for (const selector of ["nav", ".choice", "#spans", "footer"]) assert.ok(!(await dark.isVisible(selector)), `${selector} is no use on paper`);
  assert.ok((await dark.$eval("#rows", (node) => node.scrollHeight - node.clientHeight)) <= 1, "the whole table is printed");
  await dark.emulateMedia({ media: "screen" });
  await dark.waitForFunction(() => document.documentElement.dataset.theme === "dark");
  assert.deepEqual(dark.faults, []);
  await dark.context().close();
});

test("its print has a few pages of paper size", async () => {
  const pdf = (await tab.pdf({ format: "A4" })).toString("latin1");
  const pages = pdf.match(/\/Type\s*\/Page\b/g).length;
  assert.ok(pages >= 2 && pages <= 6, `${pages} pages`);
});
