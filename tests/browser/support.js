// Shared by the browser tests: running the built tool, a generator of long
// playlists, and Debian's chromium driven by playwright-core with a fresh
// profile and nothing that reaches the network.
"use strict";
const { execFileSync, spawnSync } = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { chromium } = require("playwright-core");

const root = path.resolve(__dirname, "../..");
const tool = process.env.TIMELINE_CONVERT || path.join(root, "build/ci/tools/timeline-convert");
const screenshots = process.env.SCREENSHOT_DIR || path.join(root, "build/browser-screenshots");
const work = fs.mkdtempSync(path.join(os.tmpdir(), "timeline-viewer-"));

// Writes the viewer page of a document and returns its path and exit status.
function render(document, name) {
  const output = path.join(work, name + ".html");
  const run = spawnSync(tool, ["render", "--html", document, "-o", output], { encoding: "utf8" });
  return { page: output, status: run.status, stderr: run.stderr };
}

// A playlist of `count` elements over a few hundred clips, with transitions,
// speed changes and an aux clip, as JSON text.
function longPlaylist(count) {
  const clips = 300;
  const assets = [];
  for (let clip = 0; clip < clips; clip++) {
    assets.push({ umId: "C" + String(clip).padStart(5, "0"), timeBounds: [{ start: 0, end: 600000000 }], operatorVideoRate: 50 });
  }
  assets.push({ umId: "AUX-01", timeBounds: [{ start: 0, end: 900000000 }], operatorVideoRate: 50 });
  const elements = [];
  for (let index = 0; index < count; index++) {
    const length = 120 + (index % 9) * 20;
    const element = {
      number: index + 1, serverId: 7, playlistNumber: 12, itemNumber: index + 1,
      umId: "C" + String(index % clips).padStart(5, "0"),
      inBoundaryKind: "sameLimit", outBoundaryKind: "oppositeLimit",
      videoInValue: 100, videoOutValue: 100 + length, audioInValue: 100, audioOutValue: 100 + length,
    };
    if (index % 5 === 1) Object.assign(element, { transitionType: 2, videoTransitionDuration: 20 });
    if (index % 11 === 3) element.speed = { numerator: 1, denominator: 2 };
    if (index % 11 === 4) element.speed = { numerator: 1, denominator: 1 };
    elements.push(element);
  }
  return JSON.stringify({
    playlist: { serverId: 7, number: 12, umId: "LONG-" + count, durationInFields: 0,
      rate: { numerator: 50, denominator: 1 }, auxTrackUmId: "AUX-01", audioVideoTrack: { elements } },
    assets,
  });
}

function writeLongPlaylist(count) {
  const file = path.join(work, "long-" + count + ".json");
  fs.writeFileSync(file, longPlaylist(count));
  return file;
}

// A browser with a profile of its own (playwright passes it as
// --user-data-dir), closed with close().
async function launch() {
  return chromium.launchPersistentContext(fs.mkdtempSync(path.join(work, "profile-")), {
    executablePath: process.env.CHROMIUM || "/usr/bin/chromium",
    headless: true,
    viewport: { width: 1400, height: 520 },
    args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
      "--disable-background-networking", "--disable-component-update", "--disable-sync"],
  });
}

// A page that records console errors, page errors and any request that
// would leave the file.
async function open(browser, file, hash = "", { width = 1400, height = 800, scheme = "light" } = {}) {
  const page = await browser.newPage();
  await page.setViewportSize({ width, height });
  await page.emulateMedia({ colorScheme: scheme });
  const problems = [];
  page.on("console", (message) => { if (message.type() === "error") problems.push("console: " + message.text()); });
  page.on("pageerror", (error) => problems.push("page error: " + error.message));
  page.on("request", (request) => { if (!request.url().startsWith("file:")) problems.push("request: " + request.url()); });
  await page.goto("file://" + file + hash);
  await page.waitForFunction(() => document.body.dataset.ready === "true");
  return { page, problems };
}

// A copy of a rendered page with findings added to its data, for kinds the
// tool may not produce for any shipped document; each finding is
// [kind, severity, element, place, message, pointer, numbers].
function withFindings(file, name, findings, change = () => {}) {
  const text = fs.readFileSync(file, "utf8");
  const open = '<script type="application/json" id="timeline-data">';
  const from = text.indexOf(open) + open.length, to = text.indexOf("</script>", from);
  const data = JSON.parse(text.slice(from, to));
  // The page's own findings give way, so that each test states every finding it draws.
  data.findings = findings;
  change(data);
  const output = path.join(work, name + ".html");
  fs.writeFileSync(output, text.slice(0, from) + JSON.stringify(data).replace(/</g, "\\u003c") + text.slice(to));
  return output;
}

async function screenshot(page, name) {
  fs.mkdirSync(screenshots, { recursive: true });
  await page.screenshot({ path: path.join(screenshots, name + ".png") });
}

module.exports = { withFindings, longPlaylist, root, tool, render, writeLongPlaylist, launch, open, screenshot, execFileSync };
