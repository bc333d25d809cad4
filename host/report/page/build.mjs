// Bundles scripts and style into one HTML page and writes it as a C++ array: node build.mjs OUTPUT.cpp
import { readFileSync, writeFileSync, existsSync } from "node:fs";
import { build } from "esbuild";

const bundle = await build({
  entryPoints: ["src/main.js"],
  bundle: true,
  minify: true,
  format: "iife",
  target: "es2020",
  charset: "ascii", // the page then reads the same whatever an editor or a server takes it for
  legalComments: "none", // the licences come whole
  metafile: true,
  write: false,
});
const style = await build({ entryPoints: ["style.css"], minify: true, write: false });

function licences() {
  const packages = new Set();
  for (const input of Object.keys(bundle.metafile.inputs)) {
    const match = /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(input);
    if (match) packages.add(match[1]);
  }
  return [...packages].sort().map((name) => {
    const folder = `node_modules/${name}/`;
    const { version, license } = JSON.parse(readFileSync(folder + "package.json", "utf8"));
    const texts = ["LICENSE", "LICENSE.txt", "NOTICE"].filter((file) => existsSync(folder + file));
    if (!texts.some((file) => file.startsWith("LICENSE"))) throw new Error(`${name} comes without its licence`);
    return [`${name} ${version} (${license})`, ...texts.map((file) => readFileSync(folder + file, "utf8"))].join("\n\n");
  }).join("\n\n");
}

const escaped = (text) => text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/[^\x00-\x7f]/g, (c) => `&#${c.codePointAt(0)};`);
const parts = {
  "@STYLE@": style.outputFiles[0].text,
  "@SCRIPT@": bundle.outputFiles[0].text,
  "@LICENCES@": escaped(licences()),
};
const page = readFileSync("page.html", "utf8").replace(/@(STYLE|SCRIPT|LICENCES)@/g, (mark) => parts[mark]);
if (page.split("@ORVIK_DATA@").length !== 2) throw new Error("the mark of the data must stand in the page once");

const bytes = [...Buffer.from(page, "utf8")];
const lines = [];
for (let i = 0; i < bytes.length; i += 40) lines.push(bytes.slice(i, i + 40).join(","));
writeFileSync(process.argv[2], `// Written by the build.
#include "report/page.hpp"

namespace orvik {

namespace {

constexpr char kPage[] = {
${lines.join(",\n")}};

} // namespace

std::string_view reportPage() { return {kPage, sizeof kPage}; }
std::string_view reportPageMissing() { return {}; }

} // namespace orvik
`);
