// The page data decoded: each table column is a base64 typed array named in
// the data itself, decoded once into a typed array. Per row, the marks are
// indexed by left edge with the running maximum of right edges, so that a
// frame finds what is in view by binary search. Item identifiers and the
// identifier index are built only when a search or an address needs them.
function decodeBytes(text) {
  if (typeof Uint8Array.fromBase64 === "function") return Uint8Array.fromBase64(text);
  var binary = atob(text), bytes = new Uint8Array(binary.length);
  for (var i = 0; i < binary.length; i++) bytes[i] = binary.charCodeAt(i);
  return bytes;
}
var TYPED = { u8: Uint8Array, i8: Int8Array, u16: Uint16Array, i16: Int16Array, u32: Uint32Array, i32: Int32Array,
  f64: Float64Array };
// A column: [type, 0, base64] a typed array; ["v", 1, base64] differences
// between neighbours as zigzag varints; ["r", 1, base64] runs of one value,
// each a zigzag varint value and a varint length; ["c", value] one value for all.
function decodeColumn(column, count) {
  if (column[0] === "c") return new Float64Array(count).fill(column[1]);
  var bytes = decodeBytes(column[2]);
  if (column[0] !== "v" && column[0] !== "r") {
    var Type = TYPED[column[0]];
    return new Type(bytes.buffer, bytes.byteOffset, bytes.byteLength / Type.BYTES_PER_ELEMENT);
  }
  var values = new Float64Array(count), at = 0;
  function next() {
    var value = 0, weight = 1, byte;
    do { byte = bytes[at++]; value += (byte & 127) * weight; weight *= 128; } while (byte & 128);
    return value % 2 ? -(value + 1) / 2 : value / 2;
  }
  if (column[0] === "r") {
    for (var filled = 0; filled < count;) {
      var runValue = next(), run = next();
      values.fill(runValue, filled, filled + run);
      filled += run;
    }
    return values;
  }
  for (var i = 0, total = 0; i < count; i++) {
    total += next();
    values[i] = total;
  }
  return values;
}
function decodeTable(table) {
  var columns = { count: table.count };
  Object.keys(table.columns).forEach(function (name) { columns[name] = decodeColumn(table.columns[name], table.count); });
  return columns;
}
var elements = decodeTable(data.tables.elements);
elements.clip = decodeColumn(data.tables.elementClips.clip, elements.count);
var items = decodeTable(data.tables.items);
var marks = decodeTable(data.tables.marks);
var itemCount = items.count;

var ids = null, byId = null;
// Identifiers come coded against the previous one of the same kind
// (transition or not): characters shared at the start, the middle, and
// characters shared at the end.
function itemIds() {
  if (ids) return ids;
  var rest = Array.isArray(data.ids.rest) ? data.ids.rest : data.ids.rest.split("\n");
  var shared = decodeColumn(data.ids.shared, itemCount), previous = ["", ""];
  var suffix = data.ids.suffix ? decodeColumn(data.ids.suffix, itemCount) : new Float64Array(itemCount);
  ids = new Array(itemCount);
  for (var i = 0; i < itemCount; i++) {
    var slot = items.kind[i] === 1 ? 1 : 0, before = previous[slot];
    var id = before.slice(0, shared[i]) + rest[i] + (suffix[i] ? before.slice(before.length - suffix[i]) : "");
    previous[slot] = ids[i] = id;
  }
  return ids;
}
function itemOfId(id) {
  if (!byId) {
    byId = new Map();
    itemIds().forEach(function (each, index) { if (each) byId.set(each, index); });
  }
  return byId.has(id) ? byId.get(id) : -1;
}
function clipOf(element) { return data.clips[elements.clip[element]]; }
// As the SVG names an item: "#3", "aux" (the aux track's item), "#?" (a
// media item of no element), a transition's "#3 video fx" or "video fx".
function numberOf(index) {
  var element = items.element[index], transition = items.kind[index] === 1;
  var base = element >= 0 ? "#" + elements.itemNumber[element] : transition ? "" : items.track[index] > 0 ? "aux" : "#?";
  return transition ? (base ? base + " " : "") + (items.audio[index] ? "audio fx" : "video fx") : base;
}

var rows = data.rows.map(function (row, rowIndex) {
  var offset = 0;
  for (var r = 0; r < rowIndex; r++) offset += data.rows[r].count;
  var count = row.count, low = new Float64Array(count), high = new Float64Array(count), i;
  var start = marks.start.subarray(offset, offset + count), length = marks.length.subarray(offset, offset + count);
  for (i = 0; i < count; i++) {
    low[i] = Math.min(start[i], start[i] + length[i]);
    high[i] = Math.max(start[i], start[i] + length[i]);
  }
  // Media and transitions are indexed apart, so that each drawing pass
  // visits only its own marks. Marks come in track order, nearly always
  // sorted already.
  var kind = marks.kind.subarray(offset, offset + count);
  function group(transitions) {
    var order = [];
    for (var m = 0; m < count; m++) if ((kind[m] === KIND.vfx || kind[m] === KIND.afx) === transitions) order.push(m);
    order = Uint32Array.from(order);
    var sorted = true;
    for (var j = 1; j < order.length && sorted; j++) sorted = low[order[j - 1]] <= low[order[j]];
    if (!sorted) order.sort(function (a, b) { return low[a] - low[b]; });
    var reach = new Float64Array(order.length), most = -Infinity;
    for (j = 0; j < order.length; j++) { most = Math.max(most, high[order[j]]); reach[j] = most; }
    return { order: order, reach: reach };
  }
  return { track: row.track, sound: row.sound === 1, start: start, length: length, kind: kind,
    flags: marks.flags.subarray(offset, offset + count), item: marks.item.subarray(offset, offset + count),
    low: low, high: high, groups: [group(false), group(true)], bandCounts: null };
});
var marksCache = new Map();
function marksOf(itemIndex) {
  if (marksCache.has(itemIndex)) return marksCache.get(itemIndex);
  var found = [];
  rows.forEach(function (row, rowIndex) {
    for (var i = 0; i < row.item.length; i++) if (row.item[i] === itemIndex) found.push([rowIndex, i]);
  });
  if (marksCache.size > 64) marksCache.clear();
  marksCache.set(itemIndex, found);
  return found;
}
// Timeline in and length of the picture and sound parts: those of the marks.
function placeOf(itemIndex) {
  var place = [0, 0, 0, 0];
  marksOf(itemIndex).forEach(function (m) {
    var row = rows[m[0]], at = row.sound ? 2 : 0;
    place[at] = row.start[m[1]];
    place[at + 1] = row.length[m[1]];
  });
  return place;
}
// Left and right edge of every item over all its marks, built on first use.
var itemExtents = null;
function extentOf(itemIndex) {
  if (!itemExtents) {
    itemExtents = [new Float64Array(itemCount).fill(Infinity), new Float64Array(itemCount).fill(-Infinity)];
    rows.forEach(function (row) {
      for (var i = 0; i < row.item.length; i++) {
        var item = row.item[i];
        if (row.low[i] < itemExtents[0][item]) itemExtents[0][item] = row.low[i];
        if (row.high[i] > itemExtents[1][item]) itemExtents[1][item] = row.high[i];
      }
    });
  }
  return [itemExtents[0][itemIndex], itemExtents[1][itemIndex]];
}
var refusedItem = -1;
for (var refusedScan = 0; refusedScan < itemCount; refusedScan++) if (items.kind[refusedScan] === 2) refusedItem = refusedScan;
// The item an element became: its media item (or the refused one).
var elementItems = null;
function findElementItem(elementIndex) {
  if (!elementItems) {
    elementItems = new Int32Array(elements.count).fill(-1);
    for (var i = itemCount - 1; i >= 0; i--) {
      if (items.kind[i] !== 1 && items.element[i] >= 0 && items.element[i] < elements.count) elementItems[items.element[i]] = i;
    }
    if (refusedItem >= 0 && items.element[refusedItem] >= 0) elementItems[items.element[refusedItem]] = refusedItem;
  }
  return elementIndex >= 0 && elementIndex < elementItems.length ? elementItems[elementIndex] : -1;
}
// Findings with the item each is drawn at (-1 when it names none), in
// timeline order for the next/previous keys.
var findings = (data.findings || []).map(function (finding, index) {
  var item = finding[2] >= 0 ? findElementItem(finding[2]) : -1;
  if (item < 0 && finding[0].indexOf("aux") >= 0) {
    for (var i = 0; i < itemCount; i++) if (items.kind[i] === 0 && items.element[i] < 0) { item = i; break; }
  }
  var at = item >= 0 ? extentOf(item)[0] : Infinity;
  return { index: index, kind: finding[0], severity: finding[1], element: finding[2], place: finding[3], message: finding[4],
    pointer: finding[5], numbers: finding[6] || {}, item: item, at: at };
});
var findingOrder = findings.filter(function (f) { return f.item >= 0; }).sort(function (a, b) { return a.at - b.at; });
// Every cut and the ends of items, sorted once on first use, for the
// next/previous edit keys.
var editList = null;
function edits() {
  if (editList) return editList;
  var all = [];
  rows.forEach(function (row) {
    for (var i = 0; i < row.start.length; i++) if (row.kind[i] <= KIND.sound) { all.push(row.low[i]); all.push(row.high[i]); }
  });
  all.push(data.duration);
  all.sort(function (a, b) { return a - b; });
  editList = Float64Array.from(all.filter(function (value, i) { return i === 0 || value !== all[i - 1]; }));
  return editList;
}
