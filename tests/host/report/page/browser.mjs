// Deployments made by orvik, and their pages in a browser.
import { execFileSync } from "node:child_process";
import { createHash } from "node:crypto";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const run = (program, args) => execFileSync(program, args, { encoding: "utf8", stdio: ["ignore", "pipe", "pipe"], maxBuffer: 2 ** 28 });
export const orvik = (...args) => run(process.env.ORVIK_PROGRAM, args);
export const blank = (...args) => run(process.env.ORVIK_NC_TOOL, ["blank", ...args]);
export const valuesOf = (file, variable) => run(process.env.ORVIK_NC_TOOL, ["values", file, variable]).trim().split("\n").map(Number);

export class Folder {
  constructor() {
    this.path = mkdtempSync(join(tmpdir(), "orvik-page-"));
  }
  file(name) {
    return join(this.path, name);
  }
  remove() {
    rmSync(this.path, { recursive: true, force: true });
  }
  // Simulated bursts, processed and reported; `damage` may change the burst file in between.
  deployment(name, { sea = [], process = [], damage = () => {}, damageResult = () => {} } = {}) {
    const bursts = this.file(`${name}.nc`);
    orvik("simulate", "-o", bursts, ...sea);
    damage(bursts);
    return this.report(name, bursts, process, damageResult);
  }
  report(name, bursts, process = [], damageResult = () => {}) {
    const result = this.file(`${name}.waves.nc`);
    const page = this.file(`${name}.html`);
    orvik("process", bursts, "-o", result, "--quiet", ...process);
    damageResult(result);
    orvik("report", result, "-o", page);
    return { result, page };
  }
}

export const packedData = (page) => JSON.parse(/<script type="application\/json" id="data">(.*?)<\/script>/s.exec(readFileSync(page, "utf8"))[1]);

export const launch = () => chromium.launch({ executablePath: process.env.ORVIK_CHROMIUM, args: ["--no-sandbox"] });

// A page that is drawn, with everything that went wrong in it: errors, warnings, requests to elsewhere.
export async function open(browser, page, options = {}) {
  const context = await browser.newContext({ viewport: { width: 1200, height: 900 }, ...options });
  const tab = await context.newPage();
  tab.faults = [];
  tab.on("console", (message) => tab.faults.push(`console: ${message.text()}`));
  tab.on("pageerror", (error) => tab.faults.push(`error: ${error.stack}`));
  tab.on("request", (request) => {
    if (!/^(file|data|about):/.test(request.url())) tab.faults.push(`request: ${request.url()}`);
  });
  await tab.goto(pathToFileURL(page).href);
  await tab.waitForSelector("html[data-ready]", { timeout: 60000, state: "attached" });
  return tab;
}

// What a chart shows, as a digest of its canvas; the mouse is taken away from it first.
export async function picture(tab, id) {
  await tab.mouse.move(0, 0);
  const content = await tab.evaluate((chart) => new Promise((done) => {
    requestAnimationFrame(() => requestAnimationFrame(() => done(document.querySelector(`#${chart} canvas`).toDataURL())));
  }), id);
  return createHash("sha256").update(content).digest("hex");
}

export const text = (tab, selector) => tab.locator(selector).first().innerText();
export const rows = (tab) => tab.$$eval("#rows tbody tr", (all) => all.map((row) => [...row.cells].map((cell) => cell.textContent)));
