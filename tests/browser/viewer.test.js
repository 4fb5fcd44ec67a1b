// The viewer page of `timeline-convert render --html` in a real browser: it
// loads clean and offline, deep links select, zoom moves the visible range,
// the refusal banner leads to the refused element, search finds, and a
// 100,000-element page becomes interactive in bounded time. Screenshots of
// the shipped examples at a few zoom levels go to build/browser-screenshots
// for a person to look at; nothing compares them.
"use strict";
const assert = require("node:assert/strict");
const path = require("node:path");
const { test, before, after } = require("node:test");
const support = require("./support.js");

// Measured on a shared 2-core machine: ready after 3 to 5 s, a zoom drawn
// within 0.1 s (docs/performance.md). The limits leave room for a busy CI.
const LONG_ELEMENTS = 100000;
const READY_LIMIT_MS = 15000;
const ZOOM_LIMIT_MS = 1500;

let browser;
const pages = {};
before(async () => {
  browser = await support.launch();
  for (const name of ["highlight", "refused"]) {
    pages[name] = support.render(path.join(support.root, "examples", name + ".json"), name);
  }
});
after(async () => {
  if (browser) await browser.close();
});

function itemIdOf(elementNumber) {
  const timeline = JSON.parse(support.execFileSync(support.tool,
    ["convert", path.join(support.root, "examples/highlight.json")], { encoding: "utf8" }));
  const suffix = "-" + String(elementNumber).padStart(4, "0") + "-0000-000700000000";
  return timeline.tracks[0].items.find((item) => item.type === 1 && item.id.endsWith(suffix)).id;
}

const visible = (page) => page.evaluate(() => window.timelineViewer.visibleRange());

async function drawn(page, action) {
  const started = Date.now();
  await action();
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
  return Date.now() - started;
}

test("shipped examples load offline without console errors", async () => {
  assert.equal(pages.highlight.status, 0);
  assert.equal(pages.refused.status, 2);
  for (const name of ["highlight", "refused"]) {
    const { page, problems } = await support.open(browser, pages[name].page);
    for (const [zoom, factor] of [["fit", 1], ["zoom4", 4], ["zoom16", 4]]) {
      await drawn(page, () => page.evaluate((f) => window.timelineViewer.zoom(f), factor));
      await support.screenshot(page, name + "-" + zoom);
    }
    assert.deepEqual(problems, [], name);
    await page.close();
  }
});

test("#item= selects the item, shows its fields and follows selection back", async () => {
  const id = itemIdOf(3);
  const { page, problems } = await support.open(browser, pages.highlight.page, "#item=" + id);
  assert.equal(await page.evaluate(() => window.timelineViewer.selectedId()), id);
  assert.equal(await page.evaluate(() => window.timelineViewer.selectedNumber()), "#3");
  const details = await page.textContent("#details");
  for (const text of [id, "CAM-SSM-001", "media video length", "\u00d70.5", "audioVideoTrack.elements[2]"]) {
    assert.ok(details.includes(text), text);
  }
  // Item 3 starts at frame 240 and is now in view.
  const [start, end] = await visible(page);
  assert.ok(start <= 240 && 240 <= end, `${start}..${end}`);
  await support.screenshot(page, "highlight-item3");
  // Clicking item 1 (picture row of track 1, near the left edge) updates the address.
  const box = await page.locator("#timeline").boundingBox();
  await page.keyboard.press("0");
  await page.mouse.click(box.x + 130, box.y + 40 + 4 + 10);
  assert.equal(await page.evaluate(() => location.hash), "#item=" + itemIdOf(1));
  assert.deepEqual(problems, []);
  await page.close();
});

test("zoom by key, button and ctrl+wheel changes the visible range", async () => {
  const { page } = await support.open(browser, pages.highlight.page);
  const fitted = await visible(page);
  await drawn(page, () => page.keyboard.press("+"));
  const zoomed = await visible(page);
  assert.ok(zoomed[1] - zoomed[0] < (fitted[1] - fitted[0]) * 0.6, JSON.stringify([fitted, zoomed]));
  await drawn(page, () => page.click("#zoom-out"));
  const back = await visible(page);
  assert.ok(Math.abs((back[1] - back[0]) - (fitted[1] - fitted[0])) < 1, JSON.stringify(back));
  const box = await page.locator("#timeline").boundingBox();
  await page.mouse.move(box.x + 400, box.y + 60);
  await page.keyboard.down("Control");
  await page.mouse.wheel(0, -300);
  await page.keyboard.up("Control");
  await drawn(page, async () => {});
  const wheeled = await visible(page);
  assert.ok(wheeled[1] - wheeled[0] < (fitted[1] - fitted[0]) * 0.6, JSON.stringify(wheeled));
  await drawn(page, () => page.keyboard.press("ArrowRight"));
  const panned = await visible(page);
  assert.ok(panned[0] > wheeled[0], JSON.stringify([wheeled, panned]));
  await page.close();
});

test("the refusal banner shows the library's text and selects the refused element", async () => {
  const { page, problems } = await support.open(browser, pages.refused.page);
  const banner = page.locator("#refusal-banner");
  assert.ok(await banner.isVisible());
  assert.match(await banner.textContent(), /^Refused: The playlist PL13 cannot be edited - contains track item \(2\)/);
  await banner.click();
  assert.equal(await page.evaluate(() => window.timelineViewer.selectedNumber()), "#2");
  assert.match(await page.textContent("#details h2"), /^Refused element #2/);
  assert.equal(await page.evaluate(() => location.hash), "#element=1");
  await support.screenshot(page, "refused-selected");
  assert.deepEqual(problems, []);
  await page.close();
});

test("search finds an element number, an item id and a clip name", async () => {
  const { page } = await support.open(browser, pages.highlight.page);
  for (const [query, number] of [["4", "#4"], [itemIdOf(2), "#2"], ["ssm", "#3"]]) {
    await page.fill("#search", query);
    await page.press("#search", "Enter");
    assert.equal(await page.evaluate(() => window.timelineViewer.selectedNumber()), number, query);
  }
  await page.close();
});

// Documents made to show one fault each (shared with the check command's tests).
const flagged = [
  { document: "check-negative-speed", query: "1", texts: ["negative length on the timeline", "\u00d7-1"] },
  { document: "check-negative-duration", query: "1", texts: ["negative length on the timeline"] },
  { document: "check-overlap", query: "3", texts: ["starts before the part before it ends, with no transition"] },
  { document: "check-aux-no-marked-range", query: "aux", texts: ["aux item plays 0 frames: the asset has no marked range (shortBounds)"] },
  { document: "check-aux-open-end", query: "aux", texts: ["the asset's marked range (shortBounds) has an open end"] },
];
for (const row of flagged) {
  test(`flags in ${row.document}`, async () => {
    const rendered = support.render(path.join(support.root, "tests/tools/documents", row.document + ".json"), row.document);
    assert.equal(rendered.status, 0, rendered.stderr);
    const { page, problems } = await support.open(browser, rendered.page);
    await page.fill("#search", row.query);
    await page.press("#search", "Enter");
    const details = await page.textContent("#details");
    for (const text of row.texts) assert.ok(details.includes(text), `${text} in ${details}`);
    await drawn(page, () => page.click("#zoom-fit"));
    await support.screenshot(page, row.document);
    assert.deepEqual(problems, []);
    await page.close();
  });
}

test(`a ${LONG_ELEMENTS}-element page is interactive within ${READY_LIMIT_MS / 1000} s`, async () => {
  const long = support.render(support.writeLongPlaylist(LONG_ELEMENTS), "long");
  assert.equal(long.status, 0, long.stderr);
  const started = Date.now();
  const { page, problems } = await support.open(browser, long.page);
  const ready = Date.now() - started;
  const zoom = await drawn(page, () => page.keyboard.press("+"));
  await support.screenshot(page, "long-zoom2");
  const deep = await drawn(page, () => page.evaluate(() => window.timelineViewer.zoom(512)));
  await support.screenshot(page, "long-zoom1024");
  console.log(`# ${LONG_ELEMENTS} elements: ready after ${ready} ms, zoom drawn in ${zoom} ms, ` +
    `deep zoom in ${deep} ms`);
  assert.ok(ready < READY_LIMIT_MS, `ready after ${ready} ms`);
  assert.ok(zoom < ZOOM_LIMIT_MS && deep < ZOOM_LIMIT_MS, `zoom ${zoom} ms, ${deep} ms`);
  assert.deepEqual(problems, []);
  await page.close();
});
