// The viewer's constants and its whole state, in one place: what is in view,
// what is selected, where the playhead is, the theme and the panel. Every
// other module reads and changes the state through `state` alone.
var startedAt = performance.now();
var data = JSON.parse(document.getElementById("timeline-data").textContent);
var LABEL_WIDTH = 118, RULER_HEIGHT = 40, ROW_GAP = 4, OVERVIEW_HEIGHT = 30, REFUSED_WIDTH = 84;
var KIND = { picture: 0, sound: 1, vfx: 2, afx: 3, refused: 4 };
// Flag bits, problem words, the timecode's frames per second and speed texts
// come from the tool, so that the page and the SVG say the same.
var FLAG = data.words.flags;
var PROBLEMS = FLAG.negative | FLAG.zero | FLAG.overlap | FLAG.auxZero | FLAG.refused;
var fps = data.words.framesPerSecond;
var state = {
  view: { start: data.first, scale: 1 },
  width: 800,
  height: 200,
  rowHeight: 22,
  laneHeight: 60,
  selected: -1,
  // The playhead is set by a click on the ruler or a key; the pointer's frame
  // follows the mouse over the timeline (NaN when it is elsewhere).
  playhead: data.first,
  pointer: NaN,
  finding: -1,
  pending: false,
  // A press on the timeline: where it began and whether it became a drag.
  drag: null,
  // The last search, its matches and which of them is shown.
  search: { query: "", matches: [], at: 0 },
  panelWidth: 340,
  // How long the last frame took to draw, in milliseconds.
  drawMs: 0,
  dark: false,
  // Density bands of the last frame, per row: runs of merged columns.
  bands: [],
  // Label boxes drawn in the last frame, for tests of overlap.
  labelBoxes: [],
  // Findings drawn specially in the last frame, with where.
  findingShapes: []
};
