// Drawing the timeline on its canvas and the overview strip: lanes, marks,
// density bands for what is narrower than a pixel, labels that never overlap,
// findings where they are, the ruler, the playhead and the pointer's line.
var canvas, context, overview, overviewContext;
var LIGHT = { ground: "#ffffff", laneA: "#f2f4f7", laneB: "#e8ecf1", text: "#1a1a1a", muted: "#667085", ruler: "#333333",
  picture: "#3d6fc4", pictureEdge: "#1c3d78", sound: "#2e9a5e", soundEdge: "#17573a", band: "#7d8ba1", bandFx: "#c45a00",
  red: "#d0021b", redText: "#b00020", amber: "#f0a000", select: "#000000", gutter: "#f8f9fb", line: "#d0d5dc",
  playhead: "#e8590c", drift: "#7a3ab0" };
var DARK = { ground: "#15181d", laneA: "#1d2128", laneB: "#232832", text: "#e6e8eb", muted: "#9aa4b2", ruler: "#c9ced6",
  picture: "#5b8be0", pictureEdge: "#9ab8f0", sound: "#3fb577", soundEdge: "#9be0bb", band: "#8d9bb0", bandFx: "#e08a3a",
  red: "#ff4d5e", redText: "#ff7a86", amber: "#ffc233", select: "#ffffff", gutter: "#1a1e24", line: "#3a414c",
  playhead: "#ff922b", drift: "#c79ae6" };
function palette() { return state.dark ? DARK : LIGHT; }
var hatches = {};
function pattern(background, stripe) {
  var tile = document.createElement("canvas");
  tile.width = tile.height = 8;
  var c = tile.getContext("2d");
  c.fillStyle = background; c.fillRect(0, 0, 8, 8);
  c.strokeStyle = stripe; c.lineWidth = 2.5;
  c.beginPath(); c.moveTo(0, 8); c.lineTo(8, 0); c.moveTo(-2, 2); c.lineTo(2, -2); c.moveTo(6, 10); c.lineTo(10, 6); c.stroke();
  return context.createPattern(tile, "repeat");
}
function makeHatches() {
  var dark = state.dark;
  hatches.vfx = pattern(dark ? "#4a3520" : "#ffe2bd", "#e07b00");
  hatches.afx = pattern(dark ? "#3a2a4a" : "#ead9f7", "#8e44c8");
  hatches.problem = pattern(dark ? "#4a1c22" : "#ffd6dc", "#d0021b");
  hatches.refused = pattern(dark ? "#3a1a1e" : "#fff0f0", "#d0021b");
}

function drawWidth() { return Math.max(10, state.width - LABEL_WIDTH - 16); }
function fitScale() {
  return (drawWidth() - (data.refusal ? REFUSED_WIDTH + 8 : 8)) / Math.max(1, data.last - data.first);
}
function xOf(frame) { return LABEL_WIDTH + (frame - state.view.start) * state.view.scale; }
function frameOf(x) { return state.view.start + (x - LABEL_WIDTH) / state.view.scale; }
function rowTop(rowIndex) {
  var row = rows[rowIndex];
  return RULER_HEIGHT + row.track * state.laneHeight + ROW_GAP + (row.sound ? state.rowHeight + ROW_GAP : 0);
}
function visibleRange() { return [state.view.start, frameOf(LABEL_WIDTH + drawWidth())]; }
function redraw() {
  if (!state.pending) { state.pending = true; requestAnimationFrame(draw); }
}
// The rows share the window's height: each lane grows to fill it, within reason.
function resize(wrap, room) {
  var ratio = window.devicePixelRatio || 1, lanes = Math.max(1, data.tracks.length);
  state.width = Math.max(300, wrap.clientWidth);
  state.laneHeight = Math.max(56, Math.min(220, Math.floor((room - RULER_HEIGHT - 24) / lanes)));
  state.rowHeight = Math.floor((state.laneHeight - 3 * ROW_GAP - 4) / 2);
  state.height = RULER_HEIGHT + lanes * state.laneHeight + 24;
  [[canvas, context, state.height], [overview, overviewContext, OVERVIEW_HEIGHT]].forEach(function (each) {
    each[0].width = Math.round(state.width * ratio);
    each[0].height = Math.round(each[2] * ratio);
    each[0].style.width = state.width + "px";
    each[0].style.height = each[2] + "px";
    each[1].setTransform(ratio, 0, 0, ratio, 0, 0);
  });
  overviewCounts = null;
}
function firstVisible(group, frame) {
  var lo = 0, hi = group.reach.length;
  while (lo < hi) { var mid = (lo + hi) >> 1; if (group.reach[mid] < frame) lo = mid + 1; else hi = mid; }
  return lo;
}
function drawRow(rowIndex, transitions, labels) {
  var row = rows[rowIndex], top = rowTop(rowIndex), visible = visibleRange(), colors = palette(), h = state.rowHeight;
  var size = Math.ceil(state.width), columns = new Float32Array(size), problems = new Uint8Array(size), counts = new Uint32Array(size);
  var firstItem = new Int32Array(size).fill(-1), lastItem = new Int32Array(size).fill(-1);
  var lowFrame = new Float64Array(size), highFrame = new Float64Array(size);
  var group = row.groups[transitions ? 1 : 0];
  for (var k = firstVisible(group, visible[0] - 1); k < group.order.length; k++) {
    var i = group.order[k];
    if (row.low[i] > visible[1] + 1) break;
    var kind = row.kind[i], flags = row.flags[i], item = row.item[i];
    var x = xOf(row.low[i]), w = (row.high[i] - row.low[i]) * state.view.scale;
    if (kind === KIND.refused) w = Math.max(w, REFUSED_WIDTH);
    var marker = (flags & (FLAG.zero | FLAG.auxZero)) || ((flags & FLAG.negative) && w < 2);
    if (w < 1.5 && !marker && kind !== KIND.refused) {
      var column = Math.max(0, Math.min(size - 1, Math.floor(x)));
      columns[column] += Math.max(w, 0.05);
      if (!counts[column]) { firstItem[column] = item; lowFrame[column] = row.low[i]; }
      counts[column] += 1;
      lastItem[column] = item;
      highFrame[column] = Math.max(highFrame[column], row.high[i]);
      if (flags & PROBLEMS) problems[column] = 1;
      continue;
    }
    // The transition that opens an item comes just before it and covers its start.
    var cover = 0;
    if (!transitions && i > 0 && (row.kind[i - 1] === KIND.vfx || row.kind[i - 1] === KIND.afx) &&
        row.start[i - 1] <= row.low[i] && row.start[i - 1] + row.length[i - 1] > row.low[i]) {
      cover = xOf(row.start[i - 1] + row.length[i - 1]);
    }
    drawMark(kind, flags, item, x, w, top, marker, cover, row.length[i], labels, rowIndex);
  }
  // Density bands: one pixel column per group of marks too narrow to draw,
  // darker where they cover more; transitions as a strip below. Neighbouring
  // columns form one band, which a hover describes and a click zooms into.
  var runs = [], run = null;
  for (var c = 0; c <= size; c++) {
    if (c < size && counts[c]) {
      context.globalAlpha = Math.min(1, 0.3 + 0.7 * columns[c]);
      context.fillStyle = transitions ? colors.bandFx : colors.band;
      if (transitions) context.fillRect(c, top + h - 6, 1, 6); else context.fillRect(c, top + 1, 1, h - 2);
      context.globalAlpha = 1;
      if (problems[c]) { context.fillStyle = colors.red; context.fillRect(c, top - 3, 1, 3); context.fillRect(c, top + h, 1, 3); }
      if (!run) run = { from: c, to: c, count: 0, firstItem: firstItem[c], lastItem: lastItem[c], low: lowFrame[c], high: highFrame[c] };
      run.to = c; run.count += counts[c]; run.lastItem = lastItem[c]; run.high = Math.max(run.high, highFrame[c]);
    } else if (run) {
      runs.push(run);
      if (!transitions && run.to - run.from > 150) {
        var text = run.count.toLocaleString("en") + " items, too many to draw one by one \u2013 click to zoom in";
        var at = Math.max(run.from, LABEL_WIDTH) + 6;
        context.font = "11px monospace";
        if (context.measureText(text).width < run.to - at - 6) { context.fillStyle = "#ffffff"; context.fillText(text, at, top + 15); }
      }
      run = null;
    }
  }
  if (!transitions) { row.bandCounts = counts; state.bands[rowIndex] = runs; }
}
function drawMark(kind, flags, item, x, w, top, marker, cover, frames, labels, rowIndex) {
  var isSelected = item === state.selected, colors = palette(), h = state.rowHeight;
  if (marker) {
    context.strokeStyle = colors.red; context.fillStyle = colors.red; context.lineWidth = 2;
    context.beginPath(); context.moveTo(x, top); context.lineTo(x, top + h); context.stroke();
    context.beginPath(); context.moveTo(x, top + 7); context.lineTo(x - 5, top); context.lineTo(x + 5, top); context.closePath(); context.fill();
    var number = numberOf(item), text = flags & FLAG.auxZero ? data.words.auxItem
      : number + (flags & FLAG.zero ? " 0f!" : " " + Math.trunc(frames) + "f!");
    labels.push({ choices: [text, flags & FLAG.auxZero ? "aux 0f!" : number + "!"], left: x + 7, room: Infinity, top: top, row: rowIndex,
      color: colors.redText, bold: true, priority: 2 });
    if (isSelected) { context.strokeStyle = colors.select; context.lineWidth = 2; context.strokeRect(x - 6, top - 1, 12, h + 2); }
    return;
  }
  if (w < 2) { x -= (2 - w) / 2; w = 2; }
  var fill = kind === KIND.picture ? colors.picture : kind === KIND.sound ? colors.sound : kind === KIND.vfx ? hatches.vfx
    : kind === KIND.afx ? hatches.afx : hatches.refused;
  if (flags & FLAG.negative) fill = hatches.problem;
  context.fillStyle = fill;
  context.fillRect(x, top, w, h);
  context.lineWidth = 1;
  context.setLineDash([]);
  context.strokeStyle = kind === KIND.picture ? colors.pictureEdge : kind === KIND.sound ? colors.soundEdge : kind === KIND.vfx ? "#c45a00"
    : kind === KIND.afx ? "#7a3ab0" : colors.red;
  if (flags & FLAG.speed) { context.strokeStyle = colors.amber; context.lineWidth = 3; context.setLineDash([6, 3]); }
  if (flags & (FLAG.negative | FLAG.overlap | FLAG.refused)) { context.strokeStyle = colors.red; context.lineWidth = 3; context.setLineDash([]); }
  if (w > 3) context.strokeRect(x + 0.5, top + 0.5, w - 1, h - 1);
  context.setLineDash([]);
  if (isSelected) { context.strokeStyle = colors.select; context.lineWidth = 3; context.strokeRect(x - 1.5, top - 1.5, w + 3, h + 3); }
  var left = Math.max(x, LABEL_WIDTH, cover), room = x + w - left - 6;
  if (room > 14) {
    labels.push({ choices: label(item, flags, frames), left: left + 2, room: room, top: top, row: rowIndex,
      color: kind === KIND.picture || kind === KIND.sound ? (flags & FLAG.negative ? "#8a0015" : "#ffffff")
        : kind === KIND.refused ? colors.redText : "#1a1a1a",
      backdrop: kind === KIND.refused || (flags & FLAG.negative) !== 0, priority: flags & PROBLEMS ? 1 : 0 });
  }
}
// Labels go on last, after the transitions that cover the start of an item.
// Per row, left to right, each takes the longest of its texts that fits
// before the next label of the row of the same or a higher priority (flagged
// items and markers before plain ones); a label that starts under the text
// before it, or has no room at all, is dropped, so that no two labels ever
// overlap. A flagged label goes first when two start at the same place.
function drawLabels(labels) {
  state.labelBoxes = [];
  labels.sort(function (a, b) { return a.row - b.row || a.left - b.left || b.priority - a.priority; });
  var colors = palette(), rowEnd = -Infinity, row = -1;
  labels.forEach(function (job, index) {
    if (job.row !== row) { row = job.row; rowEnd = -Infinity; }
    if (job.left < rowEnd + 4) return;
    // Room up to the next label of the row that matters as much; one that
    // matters less gives way (it is dropped if this one runs over it).
    var limit = job.room;
    for (var after = index + 1; after < labels.length && labels[after].row === job.row; after++) {
      if (labels[after].priority >= job.priority) { limit = Math.min(limit, labels[after].left - job.left - 6); break; }
    }
    limit = Math.min(limit, state.width - job.left - 2);
    context.font = (job.bold ? "bold " : "") + "11px monospace";
    for (var c = 0; c < job.choices.length; c++) {
      var textWidth = context.measureText(job.choices[c]).width;
      if (textWidth + 2 > limit) continue;
      // Text on a hatched box needs a ground of its own.
      if (job.backdrop) { context.fillStyle = colors.ground; context.fillRect(job.left, job.top + 4, textWidth + 4, 14); }
      context.fillStyle = job.color;
      context.fillText(job.choices[c], job.left + 2, job.top + 15);
      rowEnd = job.left + textWidth + 4;
      state.labelBoxes.push([job.row, job.left, rowEnd, job.choices[c]]);
      return;
    }
  });
}
function tickStep() {
  // The round steps are the SVG ruler's, sent by the tool.
  var minimum = 110 / state.view.scale, steps = data.words.tickSteps;
  for (var i = 0; i < steps.length; i++) if (steps[i] >= minimum) return steps[i];
  var step = steps[steps.length - 1];
  while (step < minimum) step *= 2;
  return step;
}
// Findings drawn at their items: a badge with the kind over the picture row,
// a refused transition in red over the frames of the item it overruns, and a
// drift as a link from the picture to the sound with the offset.
function drawFindings() {
  var colors = palette(), h = state.rowHeight, visible = visibleRange();
  state.findingShapes = [];
  var lineEnds = [];
  findings.forEach(function (finding) {
    if (finding.item < 0) return;
    var extent = extentOf(finding.item), track = items.track[finding.item];
    var top = RULER_HEIGHT + track * state.laneHeight + ROW_GAP, n = finding.numbers;
    if (extent[1] < visible[0] - 1 || extent[0] > visible[1] + 1) {
      if (!/^transition-too-long/.test(finding.kind)) return;
    }
    if (/^transition-too-long/.test(finding.kind) && n.needed !== undefined) {
      var after = /after-cut$/.test(finding.kind), from = after ? extent[0] : extent[1] - n.needed;
      var x = xOf(from), w = Math.max(3, n.needed * state.view.scale);
      context.globalAlpha = 0.45; context.fillStyle = colors.red; context.fillRect(x, top - 2, w, h + 4); context.globalAlpha = 1;
      context.strokeStyle = colors.red; context.lineWidth = 2; context.strokeRect(x, top - 2, w, h + 4);
      context.font = "bold 11px monospace"; context.fillStyle = colors.redText;
      var text = "needs " + n.needed + " frames, " + n.available + " available";
      context.fillStyle = colors.ground; context.fillRect(Math.max(x, LABEL_WIDTH), top + h + 6, context.measureText(text).width + 6, 14);
      context.fillStyle = colors.redText; context.fillText(text, Math.max(x, LABEL_WIDTH) + 3, top + h + 17);
      state.findingShapes.push({ kind: finding.kind, left: x, right: x + w, top: top - 2, bottom: top + h + 2, text: text });
      return;
    }
    if (finding.kind === "av-drift" && n.pictureStart !== undefined) {
      var px = xOf(n.pictureStart), sx = xOf(n.soundStart), soundTop = top + h + ROW_GAP;
      context.strokeStyle = colors.drift; context.lineWidth = 2; context.setLineDash([4, 3]);
      context.beginPath(); context.moveTo(px, top + h); context.lineTo(sx, soundTop); context.stroke(); context.setLineDash([]);
      context.fillStyle = colors.drift;
      [[px, top + h], [sx, soundTop]].forEach(function (p) { context.beginPath(); context.arc(p[0], p[1], 3.5, 0, 2 * Math.PI); context.fill(); });
      context.font = "bold 11px monospace";
      var drift = "drift " + n.offset + " frames", textAt = Math.max(LABEL_WIDTH + 2, Math.max(px, sx) + 8);
      context.fillStyle = colors.ground; context.fillRect(textAt - 2, top + h - 4, context.measureText(drift).width + 4, 13);
      context.fillStyle = colors.drift; context.fillText(drift, textAt, top + h + 6);
      state.findingShapes.push({ kind: finding.kind, from: [px, top + h], to: [sx, soundTop], text: drift });
      return;
    }
    var bx = Math.max(LABEL_WIDTH + 6, xOf(extent[0]) + 4), color = finding.severity === "note" ? colors.muted
      : finding.severity === "warning" ? colors.amber : colors.red;
    context.fillStyle = color;
    context.beginPath(); context.moveTo(bx, top - 1); context.lineTo(bx + 6, top - 1); context.lineTo(bx + 3, top + 5); context.closePath(); context.fill();
    // Where the rows are tall enough, a second line in the picture row gives
    // the kind and the numbers, within the item and never over another.
    if (h < 34) return;
    var numbers = Object.keys(n).map(function (name) { return name + " " + n[name]; }).join(", ");
    var line = finding.kind + (numbers ? ": " + numbers : ""), room = Math.min(xOf(extent[1]), state.width) - bx - 6;
    if (bx < (lineEnds[track] || -Infinity) + 6) return;
    context.font = "11px monospace";
    while (line.length > 4 && context.measureText(line).width > room) line = line.slice(0, -2);
    if (line.length <= 4) return;
    if (line.length < finding.kind.length + (numbers ? numbers.length + 2 : 0)) line = line.slice(0, -1) + "\u2026";
    var textWidth = context.measureText(line).width;
    context.fillStyle = colors.ground; context.fillRect(bx - 2, top + 20, textWidth + 4, 14);
    context.fillStyle = color === colors.amber ? colors.text : color; context.fillText(line, bx, top + 31);
    lineEnds[track] = bx + textWidth;
    state.findingShapes.push({ kind: finding.kind, left: bx, right: bx + textWidth, top: top + 20, bottom: top + 34, text: line });
  });
}
var overviewCounts = null;
// The overview strip: the whole timeline's density, with the visible range.
function drawOverview() {
  var colors = palette(), width = state.width, span = Math.max(1, data.last - data.first);
  var scale = (width - LABEL_WIDTH - 16) / span;
  if (!overviewCounts) {
    overviewCounts = new Float32Array(Math.ceil(width));
    rows.forEach(function (row) {
      if (row.sound) return;
      for (var i = 0; i < row.low.length; i++) {
        var c = Math.floor(LABEL_WIDTH + (row.low[i] - data.first) * scale);
        if (c >= 0 && c < overviewCounts.length) overviewCounts[c] += 1;
      }
    });
  }
  overviewContext.fillStyle = colors.gutter; overviewContext.fillRect(0, 0, width, OVERVIEW_HEIGHT);
  overviewContext.fillStyle = colors.band;
  for (var c = 0; c < overviewCounts.length; c++) {
    if (overviewCounts[c]) overviewContext.fillRect(c, 6, 1, OVERVIEW_HEIGHT - 12);
  }
  overviewContext.fillStyle = colors.red;
  findingOrder.forEach(function (finding) { overviewContext.fillRect(LABEL_WIDTH + (finding.at - data.first) * scale, 0, 2, 6); });
  var visible = visibleRange(), left = LABEL_WIDTH + (visible[0] - data.first) * scale, right = LABEL_WIDTH + (visible[1] - data.first) * scale;
  overviewContext.strokeStyle = colors.playhead; overviewContext.lineWidth = 2;
  overviewContext.fillStyle = state.dark ? "rgba(255,146,43,0.18)" : "rgba(232,89,12,0.14)";
  overviewContext.fillRect(left, 1, Math.max(3, right - left), OVERVIEW_HEIGHT - 2);
  overviewContext.strokeRect(left, 1, Math.max(3, right - left), OVERVIEW_HEIGHT - 2);
  overviewContext.font = "11px monospace"; overviewContext.fillStyle = colors.muted;
  overviewContext.fillText("overview", 6, 19);
}
function draw() {
  var began = performance.now();
  state.pending = false;
  var colors = palette(), width = state.width, height = state.height;
  context.fillStyle = colors.ground; context.fillRect(0, 0, width, height);
  for (var t = 0; t < data.tracks.length; t++) {
    context.fillStyle = t % 2 ? colors.laneB : colors.laneA;
    context.fillRect(0, RULER_HEIGHT + t * state.laneHeight, width, state.laneHeight - 4);
  }
  var labels = [];
  for (var pass = 0; pass < 2; pass++) for (var r = 0; r < rows.length; r++) drawRow(r, pass === 1, labels);
  drawLabels(labels);
  drawFindings();
  var end = xOf(data.duration);
  context.strokeStyle = colors.red; context.lineWidth = 1.5; context.setLineDash([5, 3]);
  context.beginPath(); context.moveTo(end, RULER_HEIGHT - 14); context.lineTo(end, height - 14); context.stroke();
  context.setLineDash([]);
  context.font = "11px monospace"; context.fillStyle = colors.redText;
  var endText = "end " + timecode(data.duration);
  context.fillText(endText, Math.min(end + 3, width - context.measureText(endText).width - 4), height - 4);
  // Ruler and labels last, so that they stay in view over the marks.
  context.fillStyle = colors.ground; context.fillRect(0, 0, width, RULER_HEIGHT - 2);
  var step = tickStep(), visible = visibleRange();
  context.strokeStyle = colors.muted; context.lineWidth = 1; context.fillStyle = colors.ruler;
  context.beginPath(); context.moveTo(LABEL_WIDTH, RULER_HEIGHT - 6); context.lineTo(width, RULER_HEIGHT - 6); context.stroke();
  for (var frame = Math.ceil(visible[0] / step) * step; frame <= visible[1]; frame += step) {
    var x = Math.round(xOf(frame)) + 0.5;
    context.beginPath(); context.moveTo(x, RULER_HEIGHT - 16); context.lineTo(x, RULER_HEIGHT - 6); context.stroke();
    context.fillText(timecode(frame), x + 2, RULER_HEIGHT - 20);
  }
  drawPlayhead(colors);
  context.fillStyle = colors.ground; context.fillRect(0, 0, LABEL_WIDTH, height - 18);
  context.fillStyle = colors.gutter; context.fillRect(0, RULER_HEIGHT, LABEL_WIDTH, height - RULER_HEIGHT - 18);
  for (var lane = 0; lane < Math.max(1, data.tracks.length); lane++) {
    var top = RULER_HEIGHT + lane * state.laneHeight + ROW_GAP;
    context.font = "bold 11px monospace"; context.fillStyle = colors.text;
    context.fillText("track " + (lane + 1), 6, top + 15);
    context.font = "11px monospace"; context.fillStyle = colors.muted;
    context.fillText("picture", 62, top + 15);
    context.fillText("sound", 62, top + state.rowHeight + ROW_GAP + 15);
  }
  context.fillStyle = colors.muted; context.fillText("click: playhead", 6, RULER_HEIGHT - 20);
  context.strokeStyle = colors.line; context.beginPath(); context.moveTo(LABEL_WIDTH - 0.5, 0); context.lineTo(LABEL_WIDTH - 0.5, height); context.stroke();
  drawOverview();
  afterDraw(visible);
  state.drawMs = performance.now() - began;
}
// The playhead (set) as a solid line with its timecode on the ruler; the
// pointer's frame as a thin line.
function drawPlayhead(colors) {
  var x = xOf(state.playhead);
  if (x >= LABEL_WIDTH && x <= state.width) {
    context.strokeStyle = colors.playhead; context.lineWidth = 2;
    context.beginPath(); context.moveTo(x, RULER_HEIGHT - 18); context.lineTo(x, state.height - 18); context.stroke();
    context.fillStyle = colors.playhead;
    context.beginPath(); context.moveTo(x - 6, RULER_HEIGHT - 18); context.lineTo(x + 6, RULER_HEIGHT - 18); context.lineTo(x, RULER_HEIGHT - 10); context.closePath(); context.fill();
  }
  if (!isNaN(state.pointer)) {
    var px = xOf(state.pointer);
    context.strokeStyle = colors.muted; context.lineWidth = 1; context.setLineDash([2, 2]);
    context.beginPath(); context.moveTo(px + 0.5, RULER_HEIGHT - 6); context.lineTo(px + 0.5, state.height - 18); context.stroke();
    context.setLineDash([]);
  }
}
