// What the mouse and the keys do: zoom, pan, select, the playhead, the
// next/previous edit and finding, the overview strip, search, the panel, the
// theme and the help; then the first frame and the handle for tests.
function clampView() {
  var view = state.view, minScale = fitScale() / 4, maxScale = 400;
  view.scale = Math.min(maxScale, Math.max(minScale, view.scale));
  var span = drawWidth() / view.scale, total = data.last - data.first;
  var lowest = data.first - span * 0.5, highest = data.first + Math.max(total, span) - span * 0.5;
  view.start = Math.min(highest, Math.max(lowest, view.start));
}
function fit() { state.view.scale = fitScale(); state.view.start = data.first; clampView(); redraw(); }
function zoom(factor, x) {
  if (x === undefined) x = LABEL_WIDTH + drawWidth() / 2;
  var anchor = frameOf(x);
  state.view.scale *= factor;
  clampView();
  state.view.start = anchor - (x - LABEL_WIDTH) / state.view.scale;
  clampView();
  redraw();
}
function zoomTo(low, high) {
  var length = Math.max(1, high - low);
  state.view.scale = drawWidth() / (length * 1.1);
  clampView();
  state.view.start = (low + high) / 2 - drawWidth() / 2 / state.view.scale;
  clampView();
  redraw();
}
function pan(pixels) { state.view.start += pixels / state.view.scale; clampView(); redraw(); }
function centre(frame) {
  var visible = visibleRange();
  if (frame < visible[0] || frame > visible[1]) { state.view.start = frame - drawWidth() / 2 / state.view.scale; clampView(); }
}
function setPlayhead(frame) {
  state.playhead = Math.round(Math.max(data.first, Math.min(Math.max(data.last, data.duration), frame)));
  centre(state.playhead);
  redraw();
}
function afterDraw(visible) {
  range.textContent = "view " + timecode(visible[0]) + " \u2013 " + timecode(visible[1]);
  readout.textContent = "playhead " + timeText(state.playhead) + (isNaN(state.pointer) ? "" : "  pointer " + timeText(state.pointer));
  wrap.dataset.start = String(visible[0]);
  wrap.dataset.end = String(visible[1]);
}

// Hit testing: a merged band answers for every mark inside it, so a click or
// a hover never picks a mark hidden there; otherwise transitions lie over
// media, and among equals the narrowest wins.
function bandAt(rowIndex, x) {
  var runs = state.bands[rowIndex] || [], column = Math.floor(x);
  for (var i = 0; i < runs.length; i++) if (column >= runs[i].from - 1 && column <= runs[i].to + 1) return runs[i];
  return null;
}
function hit(x, y) {
  if (x < LABEL_WIDTH) return null;
  for (var r = 0; r < rows.length; r++) {
    var top = rowTop(r);
    if (y < top - 4 || y > top + state.rowHeight + 4) continue;
    var band = bandAt(r, x);
    if (band) return { band: band, row: r };
    var row = rows[r], frame = frameOf(x), slack = 4 / state.view.scale, best = null;
    row.groups.forEach(function (group) {
      for (var k = firstVisible(group, frame - slack); k < group.order.length; k++) {
        var i = group.order[k];
        if (row.low[i] > frame + slack) break;
        var kind = row.kind[i], high = row.high[i];
        if (kind === KIND.refused) high = Math.max(high, row.low[i] + REFUSED_WIDTH / state.view.scale);
        if (frame < row.low[i] - slack || frame > high + slack) continue;
        var width = (high - row.low[i]) * state.view.scale, transition = kind === KIND.vfx || kind === KIND.afx;
        // Transitions lie over media, but one too narrow to draw shows only
        // in the strip of its band and yields to the media it sits on.
        var candidate = { item: row.item[i], flags: row.flags[i], width: width,
          rank: transition ? (width >= 1.5 ? 2 : 0) : 1 };
        if (!best || candidate.rank > best.rank || (candidate.rank === best.rank && candidate.width < best.width)) best = candidate;
      }
    });
    if (best) return best;
  }
  return null;
}
// A band zooms to its extent; a band wider than the view's tenth (at Fit
// often the whole row) zooms to the part of it around the pointer.
function zoomIntoBand(band, x) {
  var low = band.low, high = band.high, slice = drawWidth() / 20;
  if (band.to - band.from > 2 * slice) {
    low = Math.max(low, frameOf(x - slice));
    high = Math.min(high, frameOf(x + slice));
  }
  zoomTo(low, high);
}
function bandText(band) {
  return band.count.toLocaleString("en") + " items merged here, " + numberOf(band.firstItem) + " to " + numberOf(band.lastItem) +
    " (" + timecode(band.low) + " \u2013 " + timecode(band.high) + "): click to zoom in";
}

// Brings an item into view, zoomed in far enough for its label to show.
function reveal(index) {
  // The picture part carries the label; its sound may lie far from it.
  var extent = extentOf(index), place = placeOf(index);
  if (items.kind[index] === 0 && place[1] !== 0) extent = [Math.min(place[0], place[0] + place[1]), Math.max(place[0], place[0] + place[1])];
  if (!isFinite(extent[0])) return;
  var length = Math.max(1, extent[1] - extent[0]);
  context.font = "11px monospace";
  var labelWidth = context.measureText(label(index, items.flags[index], length)[0]).width + 24;
  var wanted = Math.max(60, labelWidth);
  if (length * state.view.scale < wanted || length * state.view.scale > drawWidth()) {
    state.view.scale = Math.min(drawWidth() * 0.8, Math.max(wanted, drawWidth() / 6)) / length;
  }
  clampView();
  state.view.start = (extent[0] + extent[1]) / 2 - drawWidth() / 2 / state.view.scale;
  clampView();
}
function announce(text) { live.textContent = text; }
function select(index, scroll) {
  state.selected = index;
  if (scroll && index >= 0) reveal(index);
  showDetails();
  redraw();
  var hash = "";
  if (index >= 0) {
    var id = itemIds()[index];
    hash = id ? "#item=" + encodeURIComponent(id) : "#element=" + items.element[index];
    var place = extentOf(index), found = findingsAt(index);
    announce("Selected " + kindName(index) + " " + numberOf(index) + ", " + timecode(place[0]) + " to " + timecode(place[1]) +
      (found.length ? ", " + found.length + " finding" + (found.length > 1 ? "s" : "") + ": " + found.map(findingText).join("; ") : ""));
  } else {
    announce("Nothing selected");
  }
  if (location.hash !== hash) history.replaceState(null, "", hash || location.pathname + location.search);
  wrap.dataset.selected = index >= 0 ? itemIds()[index] || "element-" + items.element[index] : "";
}
function followHash() {
  var match = /^#item=(.+)$/.exec(location.hash), target = -1;
  if (match) target = itemOfId(decodeURIComponent(match[1]));
  match = /^#element=(\d+)$/.exec(location.hash);
  if (match) target = findElementItem(Number(match[1]));
  if (target >= 0 && target !== state.selected) select(target, true);
}
function goToFinding(finding) {
  state.finding = findingOrder.indexOf(finding);
  select(finding.item, true);
  if (/^transition-too-long/.test(finding.kind) && finding.numbers.needed) {
    var extent = extentOf(finding.item);
    zoomTo(Math.min(extent[0], extent[1] - finding.numbers.needed), Math.max(extent[1], extent[0] + finding.numbers.needed));
  }
}
function stepFinding(direction) {
  if (!findingOrder.length) { announce("No findings to go to"); return; }
  var next = state.finding < 0 ? (direction > 0 ? 0 : findingOrder.length - 1)
    : (state.finding + direction + findingOrder.length) % findingOrder.length;
  goToFinding(findingOrder[next]);
}
function stepEdit(direction) {
  var list = edits(), lo = 0, hi = list.length;
  if (direction > 0) {
    while (lo < hi) { var mid = (lo + hi) >> 1; if (list[mid] <= state.playhead) lo = mid + 1; else hi = mid; }
    if (lo < list.length) setPlayhead(list[lo]);
  } else {
    while (lo < hi) { var m = (lo + hi) >> 1; if (list[m] < state.playhead) lo = m + 1; else hi = m; }
    if (lo > 0) setPlayhead(list[lo - 1]);
  }
  announce("Playhead at " + timeText(state.playhead));
}

// ---- Search
function find(query) {
  query = query.trim();
  var found = [], number = /^#?(\d+)$/.exec(query), lower = query.toLowerCase();
  if (!query) return found;
  var byIdentifier = itemOfId(query);
  if (byIdentifier >= 0) return [byIdentifier];
  for (var index = 0; index < itemCount; index++) {
    if (lower === "aux") { if (numberOf(index) === "aux") found.push(index); continue; }
    if (items.kind[index] === 1) continue;
    var e = items.element[index];
    if (number && e >= 0 && (elements.itemNumber[e] === Number(number[1]) || elements.number[e] === Number(number[1]))) found.push(index);
    else if (!number && e >= 0 && clipOf(e).toLowerCase().indexOf(lower) >= 0) found.push(index);
    else if (!number && items.kind[index] === 0 && items.asset[index] >= 0 && data.assets[items.asset[index]][1].toLowerCase().indexOf(lower) >= 0) found.push(index);
  }
  return found;
}
search.addEventListener("keydown", function (event) {
  if (event.key === "Escape") { search.blur(); return; }
  if (event.key !== "Enter") return;
  var found = state.search;
  if (search.value !== found.query) { found.query = search.value; found.matches = find(found.query); found.at = 0; }
  else found.at = (found.at + 1) % Math.max(1, found.matches.length);
  searchStatus.textContent = found.matches.length ? (found.at + 1) + " of " + found.matches.length : "no match";
  if (found.matches.length) select(found.matches[found.at], true);
});

// ---- Panel, theme, help
function setPanel(open) {
  document.body.classList.toggle("panel-closed", !open);
  panelToggle.setAttribute("aria-expanded", String(open));
  layout();
}
function setTheme(dark) {
  state.dark = dark;
  document.documentElement.dataset.theme = dark ? "dark" : "light";
  themeToggle.setAttribute("aria-pressed", String(dark));
  makeHatches();
  overviewCounts = null;
  redraw();
}
var helpReturn = null;
function setHelp(open) {
  if (open) { helpReturn = document.activeElement; help.hidden = false; helpClose.focus(); } else {
    help.hidden = true;
    if (helpReturn && helpReturn.focus) helpReturn.focus();
  }
}
panelToggle.addEventListener("click", function () { setPanel(document.body.classList.contains("panel-closed")); });
themeToggle.addEventListener("click", function () { setTheme(!state.dark); });
helpButton.addEventListener("click", function () { setHelp(true); });
helpClose.addEventListener("click", function () { setHelp(false); });
function setPanelWidth(width) {
  state.panelWidth = Math.max(200, Math.min(Math.max(220, window.innerWidth - 360), width));
  panel.style.width = state.panelWidth + "px";
  splitter.setAttribute("aria-valuenow", String(state.panelWidth));
  layout();
}
splitter.addEventListener("pointerdown", function (event) {
  splitter.setPointerCapture(event.pointerId);
  var startX = event.clientX, startWidth = state.panelWidth;
  function move(e) { setPanelWidth(startWidth - (e.clientX - startX)); }
  function up() { splitter.removeEventListener("pointermove", move); splitter.removeEventListener("pointerup", up); }
  splitter.addEventListener("pointermove", move);
  splitter.addEventListener("pointerup", up);
});
splitter.addEventListener("keydown", function (event) {
  if (event.key === "ArrowLeft") setPanelWidth(state.panelWidth + 20);
  else if (event.key === "ArrowRight") setPanelWidth(state.panelWidth - 20);
  else return;
  event.preventDefault();
  event.stopPropagation();
});

// ---- Mouse and keys
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
var KEYS = {
  "+": function () { zoom(2); }, "=": function () { zoom(2); }, "-": function () { zoom(0.5); }, "_": function () { zoom(0.5); },
  "0": fit, "f": fit, "ArrowLeft": function () { pan(-drawWidth() / 8); }, "ArrowRight": function () { pan(drawWidth() / 8); },
  ".": function () { stepEdit(1); }, "ArrowDown": function () { stepEdit(1); }, ",": function () { stepEdit(-1); },
  "ArrowUp": function () { stepEdit(-1); }, "Home": function () { setPlayhead(data.first); },
  "End": function () { setPlayhead(Math.max(data.last, data.duration)); }, "n": function () { stepFinding(1); },
  "N": function () { stepFinding(-1); }, "d": function () { panelToggle.click(); }, "t": function () { setTheme(!state.dark); },
  "?": function () { setHelp(true); }, "/": function () { search.focus(); }, "Escape": function () { select(-1, false); }
};
document.addEventListener("keydown", function (event) {
  if (!help.hidden) {
    if (event.key === "Escape" || event.key === "?") { event.preventDefault(); setHelp(false); }
    return;
  }
  var target = event.target;
  if (target === search || event.ctrlKey || event.metaKey || event.altKey) return;
  if (target && target.tagName === "BUTTON" && (event.key === "Enter" || event.key === " ")) return;
  var action = KEYS[event.key];
  if (!action) return;
  event.preventDefault();
  action();
});
wrap.addEventListener("pointerdown", function (event) {
  state.drag = { x: event.clientX, start: state.view.start, moved: false };
  wrap.setPointerCapture(event.pointerId);
  wrap.focus({ preventScroll: true });
});
wrap.addEventListener("pointermove", function (event) {
  var box = canvas.getBoundingClientRect(), x = event.clientX - box.left, y = event.clientY - box.top;
  state.pointer = x >= LABEL_WIDTH ? Math.round(frameOf(x)) : NaN;
  redraw();
  if (state.drag) {
    if (Math.abs(event.clientX - state.drag.x) > 3) { state.drag.moved = true; wrap.classList.add("dragging"); }
    if (state.drag.moved) { state.view.start = state.drag.start - (event.clientX - state.drag.x) / state.view.scale; clampView(); }
    tooltip.style.display = "none";
    return;
  }
  var found = y < RULER_HEIGHT ? null : hit(x, y);
  if (!found) { tooltip.style.display = "none"; return; }
  tooltip.textContent = found.band ? bandText(found.band) : summary(found.item, found.flags);
  tooltip.style.display = "block";
  tooltip.style.left = Math.min(x + 14, Math.max(0, state.width - tooltip.offsetWidth - 4)) + "px";
  tooltip.style.top = (y + 18) + "px";
});
wrap.addEventListener("pointerup", function (event) {
  var box = canvas.getBoundingClientRect(), x = event.clientX - box.left, y = event.clientY - box.top;
  if (state.drag && !state.drag.moved) {
    if (y < RULER_HEIGHT && x >= LABEL_WIDTH) {
      setPlayhead(frameOf(x));
    } else {
      var found = hit(x, y);
      if (found && found.band) zoomIntoBand(found.band, x);
      else if (found) select(found.item, false);
    }
  }
  state.drag = null;
  wrap.classList.remove("dragging");
});
wrap.addEventListener("pointerleave", function () { tooltip.style.display = "none"; state.pointer = NaN; redraw(); });
// The overview: a press or a drag centres the view there.
function overviewMove(event) {
  var box = overview.getBoundingClientRect(), scale = (state.width - LABEL_WIDTH - 16) / Math.max(1, data.last - data.first);
  var frame = data.first + (event.clientX - box.left - LABEL_WIDTH) / scale;
  state.view.start = frame - drawWidth() / 2 / state.view.scale;
  clampView();
  redraw();
}
overview.addEventListener("pointerdown", function (event) {
  overview.setPointerCapture(event.pointerId);
  overviewMove(event);
  overview.addEventListener("pointermove", overviewMove);
});
overview.addEventListener("pointerup", function () { overview.removeEventListener("pointermove", overviewMove); });
function layout() {
  var span = drawWidth() / state.view.scale;
  resize(wrap, window.innerHeight - wrap.getBoundingClientRect().top - legend.offsetHeight - assetLegend.offsetHeight - 8);
  state.view.scale = drawWidth() / span;
  clampView();
  redraw();
}
window.addEventListener("resize", layout);
window.addEventListener("hashchange", followHash);
if (data.refusal) {
  banner.textContent = "Refused: " + data.refusal.message + (data.refusal.place ? " \u2013 " + data.refusal.place : "") +
    (refusedItem >= 0 ? "  \u2192 show element " + numberOf(refusedItem) : "");
  banner.classList.add("shown");
  var showRefused = function () { if (refusedItem >= 0) select(refusedItem, true); };
  banner.addEventListener("click", showRefused);
  banner.addEventListener("keydown", function (event) { if (event.key === "Enter" || event.key === " ") { event.preventDefault(); showRefused(); } });
}

var darkQuery = window.matchMedia ? window.matchMedia("(prefers-color-scheme: dark)") : null;
setTheme(!!(darkQuery && darkQuery.matches));
if (window.innerWidth < 900) document.body.classList.add("panel-closed");
panelToggle.setAttribute("aria-expanded", String(!document.body.classList.contains("panel-closed")));
// Twice: the legends' height depends on the width the first pass gives.
for (var pass = 0; pass < 2; pass++) {
  resize(wrap, window.innerHeight - wrap.getBoundingClientRect().top - legend.offsetHeight - assetLegend.offsetHeight - 8);
}
fit();
showDetails();
showFindings();
followHash();
draw();
if (findings.length) announce(findings.length + " finding" + (findings.length > 1 ? "s" : "") + " in this timeline");
// For tests and scripts: what is shown, and a way to drive it.
window.timelineViewer = {
  visibleRange: visibleRange,
  selectedId: function () { return state.selected >= 0 ? itemIds()[state.selected] : null; },
  selectedNumber: function () { return state.selected >= 0 ? numberOf(state.selected) : null; },
  playhead: function () { return state.playhead; },
  labelBoxes: function () { return state.labelBoxes; },
  findingShapes: function () { return state.findingShapes; },
  drawMs: function () { return state.drawMs; },
  bands: function () { return state.bands; },
  rowTop: rowTop,
  xOf: xOf,
  timecode: timecode,
  zoom: zoom,
  fit: fit
};
window.timelineViewer.timing = { scriptStart: startedAt, ready: performance.now() };
document.body.dataset.ready = "true";
