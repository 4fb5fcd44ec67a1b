// The page around the canvas: header, toolbar, overview strip, the details
// and findings panel (collapsible, resizable), the asset legend, the help and
// a live region that tells a screen reader what was selected.
function element(tag, attributes, text) {
  var node = document.createElement(tag);
  Object.keys(attributes || {}).forEach(function (name) { node.setAttribute(name, attributes[name]); });
  if (text !== undefined) node.textContent = text;
  return node;
}
function button(id, title, text) { return element("button", { id: id, type: "button", title: title, "aria-label": title }, text); }
var header = element("header");
header.appendChild(element("h1", {}, data.title));
header.appendChild(element("div", { "class": "subheader" },
  "duration " + timeText(data.duration) + " at " + data.rate[0] + "/" + data.rate[1] + (dropFrame ? " drop-frame" : "") + ", " +
  data.tracks.length + " tracks, " + itemCount + " items, duration mode " + data.mode));
var banner = element("div", { id: "refusal-banner", role: "button", tabindex: "0" });
header.appendChild(banner);
var toolbar = element("div", { "class": "toolbar", role: "toolbar", "aria-label": "Timeline controls" });
var zoomOut = button("zoom-out", "Zoom out (-)", "\u2212");
var zoomIn = button("zoom-in", "Zoom in (+)", "+");
var zoomFit = button("zoom-fit", "Show the whole timeline (0)", "Fit");
var search = element("input", { id: "search", type: "search", placeholder: "Find: number, item id, clip", "aria-label": "Find an element or item number, an item id or a clip name" });
var searchStatus = element("span", { id: "search-status", "aria-live": "polite" });
var readout = element("span", { id: "readout", title: "Playhead and pointer" });
var themeToggle = button("theme", "Dark or light theme (t)", "\u25d0");
var panelToggle = button("panel-toggle", "Show or hide the details panel (d)", "Details");
var helpButton = button("help-button", "Keys and mouse (?)", "?");
var range = element("span", { id: "range" });
[zoomOut, zoomIn, zoomFit, search, searchStatus, readout, range, themeToggle, panelToggle, helpButton].forEach(function (n) { toolbar.appendChild(n); });
header.appendChild(toolbar);
var legend = element("div", { "class": "legend" });
[["picture part", "#3d6fc4"], ["sound part", "#2e9a5e"], ["video transition", "#f5b06a"],
  ["audio transition", "#c79ae6"], ["speed other than 1/1", "#3d6fc4", "#f0a000"],
  ["flagged: negative, 0 frames, overlap", "#ffd6dc", "#d0021b"], ["refused element or transition", "#fff0f0", "#d0021b"],
  ["picture/sound drift", "#c79ae6"], ["many items in one pixel (click to zoom)", "#8091a8"]].forEach(function (key) {
  var span = element("span", {}, key[0]);
  span.style.setProperty("--key", key[1]);
  if (key[2]) span.style.setProperty("--edge", key[2]);
  legend.appendChild(span);
});
// The assets, numbered as the labels name them.
var assetLegend = element("div", { "class": "assets", id: "asset-legend" });
data.assets.forEach(function (asset, index) {
  assetLegend.appendChild(element("span", { title: asset[0] }, "A" + (index + 1) + " " + asset[1]));
});
var main = element("main");
var wrap = element("div", { id: "canvas-wrap", tabindex: "0", role: "application",
  "aria-label": "Timeline: arrow keys pan, + and - zoom, . and , go to the next and previous edit, ? lists every key" });
canvas = element("canvas", { id: "timeline" });
overview = element("canvas", { id: "overview", tabindex: "0", "aria-label": "Overview: drag, or the arrow keys, to move the view" });
var tooltip = element("div", { id: "tooltip", role: "tooltip" });
wrap.appendChild(canvas);
wrap.appendChild(tooltip);
var splitter = element("div", { id: "splitter", role: "separator", tabindex: "0", "aria-orientation": "vertical",
  "aria-label": "Panel width: left and right arrow keys" });
var panel = element("aside", { id: "panel" });
var details = element("section", { id: "details", "aria-label": "Details" });
var findingPanel = element("section", { id: "finding-panel", "aria-label": "Findings" });
panel.appendChild(details);
panel.appendChild(findingPanel);
var column = element("div", { id: "timeline-column" });
column.appendChild(overview);
column.appendChild(wrap);
column.appendChild(legend);
column.appendChild(assetLegend);
main.appendChild(column);
main.appendChild(splitter);
main.appendChild(panel);
var live = element("div", { id: "announce", "aria-live": "polite", "class": "visually-hidden" });
var help = element("div", { id: "help", role: "dialog", "aria-modal": "true", "aria-label": "Keys and mouse", hidden: "" });
var helpRows = [["+ / -, Ctrl+wheel", "zoom in / out (at the pointer)"], ["0 or f, Fit", "show the whole timeline"],
  ["\u2190 / \u2192, drag, Shift+wheel", "pan"], [". / \u2193", "playhead to the next edit"], [", / \u2191", "playhead to the previous edit"],
  ["Home / End", "playhead to the first / last frame"], ["n / Shift+n", "next / previous finding"],
  ["click an item", "select it, details in the panel"], ["click a grey band", "zoom to the items it merges"],
  ["click the ruler", "set the playhead"], ["drag the overview", "move the view"], ["/", "find"], ["d", "show or hide the panel"],
  ["t", "dark or light theme"], ["Esc", "clear the selection, close this help"], ["?", "this help"]];
help.appendChild(element("h2", {}, "Keys and mouse"));
var helpTable = element("table");
helpRows.forEach(function (row) {
  var tr = element("tr");
  tr.appendChild(element("th", { scope: "row" }, row[0]));
  tr.appendChild(element("td", {}, row[1]));
  helpTable.appendChild(tr);
});
help.appendChild(helpTable);
var helpClose = button("help-close", "Close the help (Esc)", "Close");
help.appendChild(helpClose);
document.body.appendChild(header);
document.body.appendChild(main);
document.body.appendChild(live);
document.body.appendChild(help);
context = canvas.getContext("2d");
overviewContext = overview.getContext("2d");

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
function openEnded(length) { return length === -1 ? "-1 (open-ended)" : length; }
function showDetails() {
  details.textContent = "";
  var index = state.selected;
  if (index < 0) {
    details.appendChild(element("h2", {}, "Details"));
    details.appendChild(element("p", { "class": "hint" }, "Click an item to see every field and the element it came from. Press ? for every key."));
    return;
  }
  var kind = items.kind[index], flags = items.flags[index], number = numberOf(index), element0 = items.element[index];
  details.appendChild(element("h2", {}, kind === 0 ? "Media item " + number : kind === 1 ? "Transition " + number : "Refused element " + number));
  flagTexts(flags).forEach(function (text) { details.appendChild(element("p", { "class": "flag" }, text)); });
  findingsAt(index).forEach(function (finding) {
    details.appendChild(element("p", { "class": "flag" }, finding.severity + " " + finding.kind + ": " + findingText(finding)));
  });
  if (kind === 0) {
    var asset = items.asset[index] >= 0 ? data.assets[items.asset[index]] : [data.mediaIds[index] || "", "(not in the document)"];
    var place = placeOf(index), sourceIn = items.mediaVideoIn[index], sourceLength = items.mediaVideoLength[index];
    details.appendChild(table([["id", itemIds()[index]], ["track", items.track[index] + 1],
      ["record IN", timeText(place[0])], ["record OUT", timeText(place[0] + place[1])],
      ["source IN", timeText(sourceIn)], ["source OUT", sourceLength === -1 ? "open-ended" : timeText(sourceIn + sourceLength)],
      ["timeline video in", place[0]], ["timeline video length", place[1]], ["timeline audio in", place[2]],
      ["timeline audio length", place[3]], ["media video in", sourceIn], ["media video length", openEnded(sourceLength)],
      ["media audio in", items.mediaAudioIn[index]], ["media audio length", openEnded(items.mediaAudioLength[index])],
      ["speed", element0 >= 0 ? speedText(element0) : "\u00d71 (aux: none applied)"],
      ["asset", asset[0]], ["clip", asset[1]]]));
  } else if (kind === 1) {
    var at = extentOf(index);
    details.appendChild(table([["id", itemIds()[index]], ["track", items.track[index] + 1], ["side", items.audio[index] ? "audio" : "video"],
      ["from", timeText(at[0])], ["to", timeText(at[1])],
      ["effect kind", items.effectKind[index]], ["offset (frames before the cut)", items.offset[index]], ["duration", items.duration[index]]]));
  }
  if (element0 >= 0) {
    var e = element0, own = elements.ownSpeed[e], speed = elements.speedNumerator[e] + "/" + elements.speedDenominator[e];
    details.appendChild(element("h3", {}, "Source element: audioVideoTrack.elements[" + e + "]"));
    details.appendChild(table([["number", elements.number[e]], ["itemNumber", elements.itemNumber[e]], ["umId (clip)", clipOf(e)],
      ["inBoundaryKind", BOUNDARY[elements.inBoundaryKind[e]] || elements.inBoundaryKind[e]],
      ["outBoundaryKind", BOUNDARY[elements.outBoundaryKind[e]] || elements.outBoundaryKind[e]],
      ["videoInValue", elements.videoIn[e]], ["videoOutValue", elements.videoOut[e]], ["audioInValue", elements.audioIn[e]],
      ["audioOutValue", elements.audioOut[e]], ["transitionType", elements.videoTransitionType[e]],
      ["videoTransitionDuration", elements.videoTransitionDuration[e]], ["audioTransitionType", elements.audioTransitionType[e]],
      ["audioTransitionDuration", elements.audioTransitionDuration[e]],
      ["speed", own ? speed : "none of its own (" + speed + " goes on)"]]));
  }
}
// The findings as check words them, each a button that selects its place.
function showFindings() {
  findingPanel.textContent = "";
  var shown = findings.filter(function (finding) { return finding.severity !== "refusal" || finding.item >= 0; });
  findingPanel.appendChild(element("h2", {}, "Findings (" + shown.length + ")"));
  if (!shown.length) { findingPanel.appendChild(element("p", { "class": "hint" }, "check finds nothing to report.")); return; }
  var list = element("ul", { id: "findings" });
  shown.forEach(function (finding) {
    var entry = element("li", { "class": "finding severity-" + finding.severity });
    var text = finding.severity + " " + finding.kind + " " + (finding.place ? finding.place + ": " : "") + findingText(finding);
    if (finding.item >= 0) {
      var go = element("button", { type: "button", "data-finding": String(finding.index) }, text);
      go.addEventListener("click", function () { goToFinding(finding); });
      entry.appendChild(go);
    } else {
      entry.textContent = text;
    }
    list.appendChild(entry);
  });
  findingPanel.appendChild(list);
}
