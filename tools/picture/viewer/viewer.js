// The timeline viewer: draws the marks that timeline-convert embedded in the
// page on a canvas, at any zoom. Marks narrower than a pixel are counted per
// pixel column and drawn as density bands, so a frame costs the same at any
// length; a sorted index per row finds what is in view without a full scan.
// Plain JavaScript without a library: the page must work offline from one
// file, and canvas drawing, hit testing and the controls stay short enough.
// One file of over 400 lines until it is split into modules (data, text,
// drawing, controls) joined when the tool is built.
(function () {
  "use strict";

  var data = JSON.parse(document.getElementById("timeline-data").textContent);
  var LABEL_WIDTH = 118, RULER_HEIGHT = 40, ROW_HEIGHT = 22, ROW_GAP = 4;
  var LANE_HEIGHT = 2 * ROW_HEIGHT + 3 * ROW_GAP + 4, REFUSED_WIDTH = 84;
  var KIND = { picture: 0, sound: 1, vfx: 2, afx: 3, refused: 4 };
  // Flag bits, problem words, the timecode's frames per second and speed texts
  // come from the tool, so that the page and the SVG say the same.
  var FLAG = data.words.flags;
  var PROBLEMS = FLAG.negative | FLAG.zero | FLAG.overlap | FLAG.auxZero | FLAG.refused;
  var fps = data.words.framesPerSecond;

  // ---- Page -------------------------------------------------------------
  function element(tag, attributes, text) {
    var node = document.createElement(tag);
    Object.keys(attributes || {}).forEach(function (name) { node.setAttribute(name, attributes[name]); });
    if (text !== undefined) node.textContent = text;
    return node;
  }
  var header = element("header");
  header.appendChild(element("h1", {}, data.title));
  header.appendChild(element("div", { "class": "subheader" },
    "duration " + data.duration + " frames (" + timecode(data.duration) + ") at " + data.rate[0] + "/" +
    data.rate[1] + ", " + data.tracks.length + " tracks, " + data.items.length + " items, duration mode " + data.mode));
  var banner = element("div", { id: "refusal-banner", role: "button", tabindex: "0" });
  header.appendChild(banner);
  // The findings, worded as check and the SVG word them: severity, kind, place, message.
  var findingList = element("ul", { id: "findings" });
  (data.findings || []).forEach(function (finding) {
    if (finding[1] === "refusal") return;
    findingList.appendChild(element("li", { "class": "finding" },
      finding[1] + " " + finding[0] + " " + (finding[3] ? finding[3] + ": " : "") + finding[4]));
  });
  if (findingList.childNodes.length) header.appendChild(findingList);
  var toolbar = element("div", { "class": "toolbar" });
  var zoomOut = element("button", { id: "zoom-out", title: "Zoom out (-)" }, "\u2212");
  var zoomIn = element("button", { id: "zoom-in", title: "Zoom in (+)" }, "+");
  var zoomFit = element("button", { id: "zoom-fit", title: "Show the whole timeline (0)" }, "Fit");
  var search = element("input", { id: "search", type: "search",
    placeholder: "Find: element or item number, item id, clip name", "aria-label": "Find" });
  var searchStatus = element("span", { id: "search-status" });
  var range = element("span", { id: "range" });
  [zoomOut, zoomIn, zoomFit, search, searchStatus, range].forEach(function (n) { toolbar.appendChild(n); });
  header.appendChild(toolbar);
  var legend = element("div", { "class": "legend" });
  [["picture part", "#3d6fc4"], ["sound part", "#2e9a5e"], ["video transition", "#f5b06a"],
   ["audio transition", "#c79ae6"], ["speed other than 1/1", "#3d6fc4", "#f0a000"],
   ["flagged: negative, 0 frames, overlap", "#ffd6dc", "#d0021b"], ["refused element", "#fff0f0", "#d0021b"],
   ["many items in one pixel (zoom in)", "#8091a8"]].forEach(function (key) {
    var span = element("span", {}, key[0]);
    span.style.setProperty("--key", key[1]);
    if (key[2]) span.style.setProperty("--edge", key[2]);
    legend.appendChild(span);
  });
  var main = element("main");
  var wrap = element("div", { id: "canvas-wrap", tabindex: "0", "aria-label": "Timeline" });
  var canvas = element("canvas", { id: "timeline" });
  var tooltip = element("div", { id: "tooltip" });
  wrap.appendChild(canvas);
  wrap.appendChild(tooltip);
  var details = element("aside", { id: "details" });
  main.appendChild(wrap);
  main.appendChild(details);
  document.body.appendChild(header);
  document.body.appendChild(main);
  document.body.appendChild(legend);
  var context = canvas.getContext("2d");

  // ---- Data -------------------------------------------------------------
  var elements = data.elements, items = data.items;
  // Identifiers come front-coded: characters shared with the previous one
  // of the same kind (transition or not), then the rest.
  var ids = new Array(items.length), previousIds = ["", ""], byId = new Map();
  items.forEach(function (item, index) {
    var kind = item[0] === 1 ? 1 : 0, id = previousIds[kind].slice(0, item[1]) + item[2];
    previousIds[kind] = ids[index] = id;
    if (id) byId.set(id, index);
  });
  function clipOf(e) { return data.clips[e[2]]; }
  function numberOf(index) {
    var item = items[index], base = item[3] >= 0 ? "#" + elements[item[3]][1] : item[4] > 0 ? "aux" : "#?";
    return item[0] === 1 ? base + (item[6] ? " audio fx" : " video fx") : base;
  }
  // Per row: marks as typed arrays, and the order by left edge with the
  // running maximum of right edges, for a binary search of what is in view.
  var rows = data.rows.map(function (row) {
    var count = row.marks.length / 5, low = new Float64Array(count), high = new Float64Array(count);
    var order = new Uint32Array(count), i;
    for (i = 0; i < count; i++) {
      var start = row.marks[5 * i], length = row.marks[5 * i + 1];
      low[i] = Math.min(start, start + length);
      high[i] = Math.max(start, start + length);
      order[i] = i;
    }
    // Marks come in track order, nearly always sorted already.
    var sorted = true;
    for (i = 1; i < count && sorted; i++) sorted = low[i - 1] <= low[i];
    if (!sorted) order.sort(function (a, b) { return low[a] - low[b]; });
    var reach = new Float64Array(count), most = -Infinity;
    for (i = 0; i < count; i++) { most = Math.max(most, high[order[i]]); reach[i] = most; }
    return { track: row.track, sound: row.sound === 1, marks: Float64Array.from(row.marks), low: low, high: high, order: order, reach: reach,
             columns: null, problems: null };
  });
  // The marks of one item, as [row, mark] pairs; looked up when needed.
  var marksCache = { item: -1, marks: [] };
  function marksOf(itemIndex) {
    if (marksCache.item === itemIndex) return marksCache.marks;
    var found = [];
    rows.forEach(function (row, rowIndex) {
      for (var i = 0; i < row.low.length; i++) if (row.marks[5 * i + 4] === itemIndex) found.push([rowIndex, i]);
    });
    marksCache = { item: itemIndex, marks: found };
    return found;
  }
  // Timeline in and length of the picture and sound parts: those of the marks.
  function placeOf(itemIndex) {
    var place = [0, 0, 0, 0];
    marksOf(itemIndex).forEach(function (m) {
      var row = rows[m[0]], at = row.sound ? 2 : 0;
      place[at] = row.marks[5 * m[1]];
      place[at + 1] = row.marks[5 * m[1] + 1];
    });
    return place;
  }
  var refusedItem = -1;
  items.forEach(function (item, index) { if (item[0] === 2) refusedItem = index; });

  // ---- View state -------------------------------------------------------
  var view = { start: data.first, scale: 1 }, width = 800, height = 200, selected = -1, pending = false;
  var hatch = {};
  function pattern(background, stripe) {
    var tile = document.createElement("canvas");
    tile.width = tile.height = 8;
    var c = tile.getContext("2d");
    c.fillStyle = background; c.fillRect(0, 0, 8, 8);
    c.strokeStyle = stripe; c.lineWidth = 2.5;
    c.beginPath(); c.moveTo(0, 8); c.lineTo(8, 0); c.moveTo(-2, 2); c.lineTo(2, -2); c.moveTo(6, 10); c.lineTo(10, 6); c.stroke();
    return context.createPattern(tile, "repeat");
  }
  hatch.vfx = pattern("#ffe2bd", "#e07b00");
  hatch.afx = pattern("#ead9f7", "#8e44c8");
  hatch.problem = pattern("#ffd6dc", "#d0021b");
  hatch.refused = pattern("#fff0f0", "#d0021b");

  function drawWidth() { return Math.max(10, width - LABEL_WIDTH - 16); }
  function fitScale() {
    return (drawWidth() - (data.refusal ? REFUSED_WIDTH + 8 : 8)) / Math.max(1, data.last - data.first);
  }
  function xOf(frame) { return LABEL_WIDTH + (frame - view.start) * view.scale; }
  function frameOf(x) { return view.start + (x - LABEL_WIDTH) / view.scale; }
  function rowTop(rowIndex) {
    var row = rows[rowIndex];
    return RULER_HEIGHT + row.track * LANE_HEIGHT + ROW_GAP + (row.sound ? ROW_HEIGHT + ROW_GAP : 0);
  }
  function clampView() {
    var minScale = fitScale() / 4, maxScale = 400;
    view.scale = Math.min(maxScale, Math.max(minScale, view.scale));
    var span = drawWidth() / view.scale, total = data.last - data.first;
    var lowest = data.first - span * 0.5, highest = data.first + Math.max(total, span) - span * 0.5;
    view.start = Math.min(highest, Math.max(lowest, view.start));
  }
  function fit() { view.scale = fitScale(); view.start = data.first; clampView(); redraw(); }
  function zoom(factor, x) {
    if (x === undefined) x = LABEL_WIDTH + drawWidth() / 2;
    var anchor = frameOf(x);
    view.scale *= factor;
    clampView();
    view.start = anchor - (x - LABEL_WIDTH) / view.scale;
    clampView();
    redraw();
  }
  function pan(pixels) { view.start += pixels / view.scale; clampView(); redraw(); }
  function visibleRange() { return [view.start, frameOf(LABEL_WIDTH + drawWidth())]; }

  // ---- Text -------------------------------------------------------------
  function timecode(frame) {
    var whole = Math.round(frame);
    if (!fps) return "frame " + whole;
    var magnitude = Math.abs(whole), seconds = Math.floor(magnitude / fps);
    function two(n) { return (n < 10 ? "0" : "") + n; }
    return (whole < 0 ? "-" : "") + two(Math.floor(seconds / 3600)) + ":" + two(Math.floor(seconds / 60) % 60) + ":" +
      two(seconds % 60) + ":" + two(magnitude % fps);
  }
  function speedText(numerator, denominator) {
    return data.words.speeds[numerator + "/" + denominator];
  }
  function assetText(item) {
    return item[10] >= 0 ? "A" + (item[10] + 1) + " " + data.assets[item[10]][1] : "A?";
  }
  function flagTexts(flags) {
    var texts = [];
    ["negative", "zero", "overlap"].forEach(function (name) {
      if (flags & FLAG[name]) texts.push(data.words.problems[name]);
    });
    if (flags & FLAG.auxZero) texts.push("aux item " + (data.auxReason || "plays 0 frames"));
    if (flags & FLAG.refused) texts.push("refused: " + data.refusal.message);
    return texts;
  }
  // As the SVG labels a mark: a negative part says by how many frames.
  function label(index, flags, frames) {
    var item = items[index];
    if (item[0] === 2) return [numberOf(index) + " refused", numberOf(index)];
    if (item[0] === 1) return ["kind " + item[7] + ", " + item[9] + "f", "k" + item[7] + " " + item[9], "k" + item[7]];
    var number = numberOf(index), text = number;
    if ((flags & FLAG.speed) && item[3] >= 0) text += " " + speedText(elements[item[3]][9], elements[item[3]][10]);
    if (flags & FLAG.negative) text += " " + Math.trunc(frames) + "f!";
    else if (flags & FLAG.overlap) text += " overlap!";
    return [text + " " + assetText(item), text, number];
  }
  function summary(itemIndex, flags) {
    var item = items[itemIndex], lines = [];
    if (item[0] === 0) {
      var place = placeOf(itemIndex);
      lines.push("item " + numberOf(itemIndex) + "  " + assetText(item));
      lines.push("picture: timeline " + place[0] + " + " + place[1] + ", media " + item[6] + " + " + item[7]);
      lines.push("sound:   timeline " + place[2] + " + " + place[3] + ", media " + item[8] + " + " + item[9]);
      if (item[3] >= 0) lines.push("speed " + speedText(elements[item[3]][9], elements[item[3]][10]));
    } else if (item[0] === 1) {
      lines.push((item[6] ? "audio" : "video") + " transition of " + numberOf(itemIndex).split(" ")[0]);
      lines.push("effect kind " + item[7] + ", offset " + item[8] + ", duration " + item[9] + " frames");
    } else {
      lines.push("element " + numberOf(itemIndex) + " refused");
    }
    flagTexts(flags).forEach(function (text) { lines.push("FLAG: " + text); });
    return lines.join("\n");
  }

  // ---- Drawing ----------------------------------------------------------
  function redraw() {
    if (!pending) { pending = true; requestAnimationFrame(draw); }
  }
  function resize() {
    var ratio = window.devicePixelRatio || 1;
    width = Math.max(300, wrap.clientWidth);
    height = RULER_HEIGHT + Math.max(1, data.tracks.length) * LANE_HEIGHT + 24;
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    canvas.style.width = width + "px";
    canvas.style.height = height + "px";
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
  }
  function firstVisible(row, frame) {
    var lo = 0, hi = row.reach.length;
    while (lo < hi) { var mid = (lo + hi) >> 1; if (row.reach[mid] < frame) lo = mid + 1; else hi = mid; }
    return lo;
  }
  function drawRow(rowIndex, transitions) {
    var row = rows[rowIndex], top = rowTop(rowIndex), visible = visibleRange();
    var columns = new Float32Array(Math.ceil(width)), problems = new Uint8Array(Math.ceil(width)), counts = new Uint32Array(Math.ceil(width));
    for (var k = firstVisible(row, visible[0] - 1); k < row.order.length; k++) {
      var i = row.order[k];
      if (row.low[i] > visible[1] + 1) break;
      var kind = row.marks[5 * i + 2], flags = row.marks[5 * i + 3], item = row.marks[5 * i + 4];
      var isTransition = kind === KIND.vfx || kind === KIND.afx;
      if (isTransition !== transitions) continue;
      var x = xOf(row.low[i]), w = (row.high[i] - row.low[i]) * view.scale;
      if (kind === KIND.refused) w = Math.max(w, REFUSED_WIDTH);
      var marker = (flags & (FLAG.zero | FLAG.auxZero)) || ((flags & FLAG.negative) && w < 2);
      if (w < 1.5 && !marker && kind !== KIND.refused) {
        var column = Math.max(0, Math.min(columns.length - 1, Math.floor(x)));
        columns[column] += Math.max(w, 0.05);
        counts[column] += 1;
        if (flags & PROBLEMS) problems[column] = 1;
        continue;
      }
      // The transition that opens an item comes just before it and covers its start.
      var cover = 0;
      if (!transitions && i > 0 && (row.marks[5 * i - 3] === KIND.vfx || row.marks[5 * i - 3] === KIND.afx) &&
          row.marks[5 * i - 5] <= row.low[i] && row.marks[5 * i - 5] + row.marks[5 * i - 4] > row.low[i]) {
        cover = xOf(row.marks[5 * i - 5] + row.marks[5 * i - 4]);
      }
      drawMark(kind, flags, item, x, w, top, marker, cover, row.marks[5 * i + 1]);
    }
    // Density bands: one pixel column per group of marks too narrow to
    // draw, darker where they cover more; transitions as a strip below.
    var runStart = -1, runCount = 0;
    for (var c = 0; c <= columns.length; c++) {
      if (c < columns.length && counts[c]) {
        context.globalAlpha = Math.min(1, 0.3 + 0.7 * columns[c]);
        context.fillStyle = transitions ? "#c45a00" : "#7d8ba1";
        if (transitions) context.fillRect(c, top + ROW_HEIGHT - 6, 1, 6); else context.fillRect(c, top + 1, 1, ROW_HEIGHT - 2);
        context.globalAlpha = 1;
        if (problems[c]) { context.fillStyle = "#d0021b"; context.fillRect(c, top - 3, 1, 3); context.fillRect(c, top + ROW_HEIGHT, 1, 3); }
        if (runStart < 0) runStart = c;
        runCount += counts[c];
      } else if (runStart >= 0) {
        if (!transitions && c - runStart > 150) {
          var text = runCount.toLocaleString("en") + " items, too many to draw one by one \u2013 zoom in";
          var at = Math.max(runStart, LABEL_WIDTH) + 6;
          context.font = "11px monospace";
          if (context.measureText(text).width < c - at - 6) { context.fillStyle = "#ffffff"; context.fillText(text, at, top + 15); }
        }
        runStart = -1; runCount = 0;
      }
    }
    if (!transitions) row.bandCounts = counts;
  }
  function drawMark(kind, flags, item, x, w, top, marker, cover, frames) {
    var isSelected = item === selected;
    if (marker) {
      context.strokeStyle = "#d0021b"; context.fillStyle = "#d0021b"; context.lineWidth = 2;
      context.beginPath(); context.moveTo(x, top); context.lineTo(x, top + ROW_HEIGHT); context.stroke();
      context.beginPath(); context.moveTo(x, top + 7); context.lineTo(x - 5, top); context.lineTo(x + 5, top); context.closePath(); context.fill();
      var text = flags & FLAG.auxZero ? "aux item " + (data.auxReason || "plays 0 frames") : numberOf(item) + (flags & FLAG.zero ? " 0f!" : " " + Math.trunc(frames) + "f!");
      context.font = "bold 11px monospace"; context.fillStyle = "#b00020"; context.fillText(text, x + 7, top + 15);
      if (isSelected) { context.strokeStyle = "#000000"; context.lineWidth = 2; context.strokeRect(x - 6, top - 1, 12, ROW_HEIGHT + 2); }
      return;
    }
    if (w < 2) { x -= (2 - w) / 2; w = 2; }
    var fill = kind === KIND.picture ? "#3d6fc4" : kind === KIND.sound ? "#2e9a5e" : kind === KIND.vfx ? hatch.vfx
      : kind === KIND.afx ? hatch.afx : hatch.refused;
    if (flags & FLAG.negative) fill = hatch.problem;
    context.fillStyle = fill;
    context.fillRect(x, top, w, ROW_HEIGHT);
    context.lineWidth = 1;
    context.setLineDash([]);
    context.strokeStyle = kind === KIND.picture ? "#1c3d78" : kind === KIND.sound ? "#17573a" : kind === KIND.vfx ? "#c45a00" : kind === KIND.afx ? "#7a3ab0" : "#d0021b";
    if (flags & FLAG.speed) { context.strokeStyle = "#f0a000"; context.lineWidth = 3; context.setLineDash([6, 3]); }
    if (flags & (FLAG.negative | FLAG.overlap | FLAG.refused)) { context.strokeStyle = "#d0021b"; context.lineWidth = 3; context.setLineDash([]); }
    if (w > 3) context.strokeRect(x + 0.5, top + 0.5, w - 1, ROW_HEIGHT - 1);
    context.setLineDash([]);
    if (isSelected) { context.strokeStyle = "#000000"; context.lineWidth = 3; context.strokeRect(x - 1.5, top - 1.5, w + 3, ROW_HEIGHT + 3); }
    var left = Math.max(x, LABEL_WIDTH, cover), room = x + w - left - 6;
    if (room > 14) {
      labels.push({ choices: label(item, flags, frames), left: left, room: room, top: top,
        color: kind === KIND.picture || kind === KIND.sound ? (flags & FLAG.negative ? "#8a0015" : "#ffffff")
          : kind === KIND.refused ? "#b00020" : "#1a1a1a",
        backdrop: kind === KIND.refused || (flags & FLAG.negative) !== 0 });
    }
  }
  // Labels go on last, after the transitions that cover the start of an item.
  var labels = [];
  function drawLabels() {
    context.font = "11px monospace";
    labels.forEach(function (job) {
      for (var c = 0; c < job.choices.length; c++) {
        var textWidth = context.measureText(job.choices[c]).width;
        if (textWidth + 2 <= job.room) {
          // Text on a hatched box needs a ground of its own.
          if (job.backdrop) { context.fillStyle = "#ffffff"; context.fillRect(job.left + 2, job.top + 4, textWidth + 4, 14); }
          context.fillStyle = job.color;
          context.fillText(job.choices[c], job.left + 4, job.top + 15);
          return;
        }
      }
    });
    labels = [];
  }
  function tickStep() {
    var minimum = 110 / view.scale, steps = [1, 2, 5, 10, 20].filter(function (s) { return !fps || s < fps; });
    if (fps) [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600].forEach(function (s) { steps.push(s * fps); });
    for (var i = 0; i < steps.length; i++) if (steps[i] >= minimum) return steps[i];
    var step = steps[steps.length - 1];
    while (step < minimum) step *= 2;
    return step;
  }
  function draw() {
    pending = false;
    context.clearRect(0, 0, width, height);
    context.fillStyle = "#ffffff"; context.fillRect(0, 0, width, height);
    for (var t = 0; t < data.tracks.length; t++) {
      context.fillStyle = t % 2 ? "#e8ecf1" : "#f2f4f7";
      context.fillRect(0, RULER_HEIGHT + t * LANE_HEIGHT, width, LANE_HEIGHT - 4);
    }
    labels = [];
    for (var pass = 0; pass < 2; pass++) for (var r = 0; r < rows.length; r++) drawRow(r, pass === 1);
    drawLabels();
    var end = xOf(data.duration);
    context.strokeStyle = "#d0021b"; context.lineWidth = 1.5; context.setLineDash([5, 3]);
    context.beginPath(); context.moveTo(end, RULER_HEIGHT - 14); context.lineTo(end, height - 14); context.stroke();
    context.setLineDash([]);
    context.font = "11px monospace"; context.fillStyle = "#b00020";
    var endText = "end " + timecode(data.duration);
    context.fillText(endText, Math.min(end + 3, width - context.measureText(endText).width - 4), height - 4);
    // Ruler and labels last, so that they stay in view over the marks.
    context.fillStyle = "#ffffff"; context.fillRect(0, 0, width, RULER_HEIGHT - 2);
    var step = tickStep(), visible = visibleRange();
    context.strokeStyle = "#555555"; context.lineWidth = 1; context.fillStyle = "#333333";
    context.beginPath(); context.moveTo(LABEL_WIDTH, RULER_HEIGHT - 6); context.lineTo(width, RULER_HEIGHT - 6); context.stroke();
    for (var frame = Math.ceil(visible[0] / step) * step; frame <= visible[1]; frame += step) {
      var x = Math.round(xOf(frame)) + 0.5;
      context.beginPath(); context.moveTo(x, RULER_HEIGHT - 16); context.lineTo(x, RULER_HEIGHT - 6); context.stroke();
      context.fillText(timecode(frame), x + 2, RULER_HEIGHT - 20);
    }
    context.fillStyle = "#ffffff"; context.fillRect(0, 0, LABEL_WIDTH, height - 18);
    context.fillStyle = "#f8f9fb"; context.fillRect(0, RULER_HEIGHT, LABEL_WIDTH, height - RULER_HEIGHT - 18);
    for (var lane = 0; lane < Math.max(1, data.tracks.length); lane++) {
      var top = RULER_HEIGHT + lane * LANE_HEIGHT + ROW_GAP;
      context.font = "bold 11px monospace"; context.fillStyle = "#1a1a1a";
      context.fillText("track " + (lane + 1), 6, top + 15);
      context.font = "11px monospace"; context.fillStyle = "#667085";
      context.fillText("picture", 62, top + 15);
      context.fillText("sound", 62, top + ROW_HEIGHT + ROW_GAP + 15);
    }
    context.strokeStyle = "#d0d5dc"; context.beginPath(); context.moveTo(LABEL_WIDTH - 0.5, 0); context.lineTo(LABEL_WIDTH - 0.5, height); context.stroke();
    range.textContent = "view " + timecode(visible[0]) + " \u2013 " + timecode(visible[1]);
    wrap.dataset.start = String(visible[0]);
    wrap.dataset.end = String(visible[1]);
  }

  // ---- Hit testing, selection, details -----------------------------------
  function hit(x, y) {
    if (x < LABEL_WIDTH) return null;
    for (var r = 0; r < rows.length; r++) {
      var top = rowTop(r);
      if (y < top - 4 || y > top + ROW_HEIGHT + 4) continue;
      var row = rows[r], frame = frameOf(x), slack = 4 / view.scale, best = null;
      for (var k = firstVisible(row, frame - slack); k < row.order.length; k++) {
        var i = row.order[k];
        if (row.low[i] > frame + slack) break;
        var kind = row.marks[5 * i + 2], high = row.high[i];
        if (kind === KIND.refused) high = Math.max(high, row.low[i] + REFUSED_WIDTH / view.scale);
        if (frame < row.low[i] - slack || frame > high + slack) continue;
        var candidate = { item: row.marks[5 * i + 4], flags: row.marks[5 * i + 3], transition: kind === KIND.vfx || kind === KIND.afx,
                          width: (high - row.low[i]) * view.scale };
        // Transitions lie over media; among equals the narrowest wins.
        if (!best || (candidate.transition && !best.transition) ||
            (candidate.transition === best.transition && candidate.width < best.width)) best = candidate;
      }
      if (best) return best;
      var column = Math.floor(x);
      var merged = (row.bandCounts && row.bandCounts[column] || 0);
      if (merged) return { band: merged, row: r };
    }
    return null;
  }
  function table(pairs) {
    var node = element("table");
    pairs.forEach(function (pair) {
      var tr = element("tr");
      tr.appendChild(element("td", {}, pair[0]));
      tr.appendChild(element("td", {}, String(pair[1])));
      node.appendChild(tr);
    });
    return node;
  }
  var BOUNDARY = ["absolute", "sameLimit", "oppositeLimit", "otherBoundary"];
  function showDetails() {
    details.textContent = "";
    if (selected < 0) {
      details.appendChild(element("h2", {}, "Details"));
      details.appendChild(element("p", { "class": "hint" }, "Click an item to see every field and the element it came from. Zoom: Ctrl+wheel, +/-, the buttons; pan: drag or arrow keys; 0 fits."));
      return;
    }
    var item = items[selected], flags = item[5];
    var number = numberOf(selected);
    details.appendChild(element("h2", {}, item[0] === 0 ? "Media item " + number : item[0] === 1 ? "Transition " + number : "Refused element " + number));
    flagTexts(flags).forEach(function (text) { details.appendChild(element("p", { "class": "flag" }, text)); });
    if (item[0] === 0) {
      var asset = item[10] >= 0 ? data.assets[item[10]] : [item[11], "(not in the document)"], place = placeOf(selected);
      details.appendChild(table([["id", ids[selected]], ["track", item[4] + 1],
        ["timeline video in", place[0]], ["timeline video length", place[1]], ["timeline audio in", place[2]],
        ["timeline audio length", place[3]], ["media video in", item[6]], ["media video length", item[7] === -1 ? "-1 (open-ended)" : item[7]],
        ["media audio in", item[8]], ["media audio length", item[9] === -1 ? "-1 (open-ended)" : item[9]],
        ["speed", item[3] >= 0 ? speedText(elements[item[3]][9], elements[item[3]][10]) : "\u00d71 (aux: none applied)"],
        ["asset", asset[0]], ["clip", asset[1]]]));
    } else if (item[0] === 1) {
      details.appendChild(table([["id", ids[selected]], ["track", item[4] + 1], ["side", item[6] ? "audio" : "video"],
        ["effect kind", item[7]], ["offset (frames before the cut)", item[8]], ["duration", item[9]]]));
    }
    if (item[3] >= 0) {
      var e = elements[item[3]];
      details.appendChild(element("h3", {}, "Source element: audioVideoTrack.elements[" + item[3] + "]"));
      details.appendChild(table([["number", e[0]], ["itemNumber", e[1]], ["umId (clip)", clipOf(e)],
        ["inBoundaryKind", BOUNDARY[e[3]] || e[3]], ["outBoundaryKind", BOUNDARY[e[4]] || e[4]],
        ["videoInValue", e[5]], ["videoOutValue", e[6]], ["audioInValue", e[7]], ["audioOutValue", e[8]],
        ["transitionType", e[12] || 0], ["videoTransitionDuration", e[13] || 0], ["audioTransitionType", e[14] || 0],
        ["audioTransitionDuration", e[15] || 0], ["speed", e[11] ? e[9] + "/" + e[10] : "none of its own (" + e[9] + "/" + e[10] + " goes on)"]]));
    }
  }
  function reveal(itemIndex) {
    var marks = marksOf(itemIndex);
    if (!marks.length) return;
    var low = Infinity, high = -Infinity;
    marks.forEach(function (m) { low = Math.min(low, rows[m[0]].low[m[1]]); high = Math.max(high, rows[m[0]].high[m[1]]); });
    var length = Math.max(1, high - low);
    if (length * view.scale < 60 || length * view.scale > drawWidth()) view.scale = drawWidth() / (length * 6);
    clampView();
    view.start = (low + high) / 2 - drawWidth() / 2 / view.scale;
    clampView();
  }
  function select(itemIndex, scroll) {
    selected = itemIndex;
    if (scroll && itemIndex >= 0) reveal(itemIndex);
    showDetails();
    redraw();
    var item = items[itemIndex];
    var hash = itemIndex < 0 ? "" : ids[itemIndex] ? "#item=" + encodeURIComponent(ids[itemIndex]) : "#element=" + item[3];
    if (location.hash !== hash) history.replaceState(null, "", hash || location.pathname + location.search);
    wrap.dataset.selected = itemIndex >= 0 ? ids[itemIndex] || "element-" + item[3] : "";
  }
  function followHash() {
    var match = /^#item=(.+)$/.exec(location.hash), target = -1;
    if (match) target = byId.has(decodeURIComponent(match[1])) ? byId.get(decodeURIComponent(match[1])) : -1;
    match = /^#element=(\d+)$/.exec(location.hash);
    if (match) target = findElementItem(Number(match[1]));
    if (target >= 0 && target !== selected) select(target, true);
  }
  function findElementItem(elementIndex) {
    if (refusedItem >= 0 && items[refusedItem][3] === elementIndex) return refusedItem;
    for (var i = 0; i < items.length; i++) if (items[i][0] === 0 && items[i][3] === elementIndex) return i;
    return -1;
  }

  // ---- Search -----------------------------------------------------------
  var lastQuery = "", matches = [], matchAt = 0;
  function find(query) {
    query = query.trim();
    var found = [], number = /^#?(\d+)$/.exec(query), lower = query.toLowerCase();
    if (!query) return found;
    if (byId.has(query)) return [byId.get(query)];
    if (lower === "aux") return items.map(function (item, index) { return index; }).filter(function (index) { return numberOf(index) === "aux"; });
    items.forEach(function (item, index) {
      if (item[0] === 1) return;
      var e = item[3] >= 0 ? elements[item[3]] : null;
      if (number && e && (e[1] === Number(number[1]) || e[0] === Number(number[1]))) found.push(index);
      else if (!number && e && clipOf(e).toLowerCase().indexOf(lower) >= 0) found.push(index);
      else if (!number && item[0] === 0 && item[10] >= 0 && data.assets[item[10]][1].toLowerCase().indexOf(lower) >= 0) found.push(index);
    });
    return found;
  }
  search.addEventListener("keydown", function (event) {
    if (event.key !== "Enter") return;
    if (search.value !== lastQuery) { lastQuery = search.value; matches = find(lastQuery); matchAt = 0; } else { matchAt = (matchAt + 1) % Math.max(1, matches.length); }
    searchStatus.textContent = matches.length ? (matchAt + 1) + " of " + matches.length : "no match";
    if (matches.length) select(matches[matchAt], true);
  });

  // ---- Controls ---------------------------------------------------------
  zoomIn.addEventListener("click", function () { zoom(2); });
  zoomOut.addEventListener("click", function () { zoom(0.5); });
  zoomFit.addEventListener("click", fit);
  wrap.addEventListener("wheel", function (event) {
    var box = canvas.getBoundingClientRect();
    if (event.ctrlKey || event.metaKey || event.altKey) {
      event.preventDefault();
      zoom(Math.pow(2, -event.deltaY / 300), event.clientX - box.left);
    } else if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
      event.preventDefault();
      pan(event.shiftKey ? event.deltaY : event.deltaX);
    }
  }, { passive: false });
  document.addEventListener("keydown", function (event) {
    if (event.target === search || event.ctrlKey || event.metaKey) return;
    var handled = true;
    if (event.key === "+" || event.key === "=") zoom(2);
    else if (event.key === "-" || event.key === "_") zoom(0.5);
    else if (event.key === "0" || event.key === "f") fit();
    else if (event.key === "ArrowLeft") pan(-drawWidth() / 8);
    else if (event.key === "ArrowRight") pan(drawWidth() / 8);
    else if (event.key === "Home") { view.start = data.first; clampView(); redraw(); }
    else if (event.key === "Escape") select(-1, false);
    else handled = false;
    if (handled) event.preventDefault();
  });
  var drag = null;
  wrap.addEventListener("pointerdown", function (event) {
    drag = { x: event.clientX, start: view.start, moved: false };
    wrap.setPointerCapture(event.pointerId);
    wrap.focus({ preventScroll: true });
  });
  wrap.addEventListener("pointermove", function (event) {
    var box = canvas.getBoundingClientRect(), x = event.clientX - box.left, y = event.clientY - box.top;
    if (drag) {
      if (Math.abs(event.clientX - drag.x) > 3) { drag.moved = true; wrap.classList.add("dragging"); }
      if (drag.moved) { view.start = drag.start - (event.clientX - drag.x) / view.scale; clampView(); redraw(); }
      tooltip.style.display = "none";
      return;
    }
    var found = hit(x, y);
    if (!found) { tooltip.style.display = "none"; return; }
    tooltip.textContent = found.band ? found.band + " marks merged in this pixel \u2013 zoom in to tell them apart" : summary(found.item, found.flags);
    tooltip.style.display = "block";
    tooltip.style.left = Math.min(x + 14, Math.max(0, width - tooltip.offsetWidth - 4)) + "px";
    tooltip.style.top = (y + 18) + "px";
  });
  wrap.addEventListener("pointerup", function (event) {
    var box = canvas.getBoundingClientRect();
    if (drag && !drag.moved) {
      var found = hit(event.clientX - box.left, event.clientY - box.top);
      if (found && !found.band) select(found.item, false);
      else if (found && found.band) zoom(8, event.clientX - box.left);
    }
    drag = null;
    wrap.classList.remove("dragging");
  });
  wrap.addEventListener("pointerleave", function () { tooltip.style.display = "none"; });
  window.addEventListener("resize", function () { var span = drawWidth() / view.scale; resize(); view.scale = drawWidth() / span; clampView(); redraw(); });
  window.addEventListener("hashchange", followHash);
  if (data.refusal) {
    banner.textContent = "Refused: " + data.refusal.message + (data.refusal.place ? " \u2013 " + data.refusal.place : "") + (refusedItem >= 0 ? "  \u2192 show element " + numberOf(refusedItem) : "");
    banner.classList.add("shown");
    var showRefused = function () { if (refusedItem >= 0) select(refusedItem, true); };
    banner.addEventListener("click", showRefused);
    banner.addEventListener("keydown", function (event) { if (event.key === "Enter" || event.key === " ") { event.preventDefault(); showRefused(); } });
  }

  resize();
  fit();
  showDetails();
  followHash();
  draw();
  // For tests and scripts: what is shown, and a way to drive it.
  window.timelineViewer = {
    visibleRange: visibleRange,
    selectedId: function () { return selected >= 0 ? ids[selected] : null; },
    selectedNumber: function () { return selected >= 0 ? numberOf(selected) : null; },
    zoom: zoom,
    fit: fit
  };
  document.body.dataset.ready = "true";
})();
