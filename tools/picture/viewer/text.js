// What the viewer says: timecode as editors read it (drop-frame at 30000/1001
// and 60000/1001, with the frame count beside it), speeds, flags, the labels
// of marks and the summaries of tooltips and the live region.
// The tool sends the rule's numbers: frames a second and the labels skipped
// at the start of each minute but every tenth (none without drop frame).
var droppedPerMinute = data.words.droppedPerMinute, dropFrame = droppedPerMinute > 0;
function two(n) { return (n < 10 ? "0" : "") + n; }
function timecode(frame) {
  var whole = Math.round(frame);
  if (!fps) return "frame " + whole;
  var magnitude = Math.abs(whole), separator = ":";
  if (dropFrame) {
    var drop = droppedPerMinute, perMinute = fps * 60 - drop, perTen = perMinute * 10 + drop;
    var tens = Math.floor(magnitude / perTen), rest = magnitude % perTen;
    magnitude += 9 * drop * tens + (rest > drop ? drop * Math.floor((rest - drop) / perMinute) : 0);
    separator = ";";
  }
  var seconds = Math.floor(magnitude / fps);
  return (whole < 0 ? "-" : "") + two(Math.floor(seconds / 3600)) + ":" + two(Math.floor(seconds / 60) % 60) + ":" +
    two(seconds % 60) + separator + two(magnitude % fps);
}
// Timecode with the frame count beside it, as the details and tooltips show it.
function timeText(frame) { return timecode(frame) + " (" + Math.round(frame) + ")"; }
function speedText(element) {
  return data.words.speeds[elements.speedNumerator[element] + "/" + elements.speedDenominator[element]];
}
function assetText(index) {
  var asset = items.asset[index];
  return asset >= 0 ? "A" + (asset + 1) + " " + data.assets[asset][1] : "A?";
}
function flagTexts(flags) {
  var texts = [];
  ["negative", "zero", "overlap"].forEach(function (name) {
    if (flags & FLAG[name]) texts.push(data.words.problems[name]);
  });
  if (flags & FLAG.auxZero) texts.push(data.words.auxItem);
  if (flags & FLAG.refused) texts.push("refused: " + data.refusal.message);
  return texts;
}
// As the SVG labels a mark, longest first: a negative part says by how many frames.
function label(index, flags, frames) {
  var kind = items.kind[index];
  if (kind === 2) return [numberOf(index) + " refused", numberOf(index)];
  if (kind === 1) {
    var effect = items.effectKind[index], length = items.duration[index];
    return ["kind " + effect + ", " + length + "f", "k" + effect + " " + length, "k" + effect];
  }
  var number = numberOf(index), text = number, element = items.element[index];
  if ((flags & FLAG.speed) && element >= 0) text += " " + speedText(element);
  if (flags & FLAG.negative) text += " " + Math.trunc(frames) + "f!";
  else if (flags & FLAG.overlap) text += " overlap!";
  return [text + " " + assetText(index), text, number];
}
function kindName(index) {
  var kind = items.kind[index];
  return kind === 0 ? "media item" : kind === 1 ? (items.audio[index] ? "audio" : "video") + " transition" : "refused element";
}
function summary(index, flags) {
  var lines = [], kind = items.kind[index];
  if (kind === 0) {
    var place = placeOf(index);
    lines.push("item " + numberOf(index) + "  " + assetText(index));
    lines.push("picture: " + timeText(place[0]) + " \u2013 " + timeText(place[0] + place[1]) + ", " + place[1] + " frames");
    lines.push("sound:   " + timeText(place[2]) + " \u2013 " + timeText(place[2] + place[3]) + ", " + place[3] + " frames");
    lines.push("source:  " + timecode(items.mediaVideoIn[index]) + " + " + items.mediaVideoLength[index] + " frames");
    if (items.element[index] >= 0) lines.push("speed " + speedText(items.element[index]));
  } else if (kind === 1) {
    lines.push(kindName(index) + " of " + numberOf(index).split(" ")[0]);
    lines.push("effect kind " + items.effectKind[index] + ", offset " + items.offset[index] + ", duration " +
      items.duration[index] + " frames");
  } else {
    lines.push("element " + numberOf(index) + " refused");
  }
  flagTexts(flags).forEach(function (text) { lines.push("FLAG: " + text); });
  findingsAt(index).forEach(function (finding) { lines.push(finding.severity + " " + finding.kind + ": " + findingText(finding)); });
  return lines.join("\n");
}
function findingsAt(index) { return findings.filter(function (finding) { return finding.item === index; }); }
// A finding in a few words, with its numbers.
function findingText(finding) {
  var n = finding.numbers;
  if (/^transition-too-long/.test(finding.kind) && n.needed !== undefined) {
    return "needs " + n.needed + " frames, " + n.available + " available";
  }
  if (finding.kind === "av-drift" && n.offset !== undefined) {
    return "picture and sound " + Math.abs(n.offset) + " frames apart (offset " + n.offset + ")";
  }
  var numbers = Object.keys(n).map(function (name) { return name + " " + n[name]; }).join(", ");
  return finding.message + (numbers ? " (" + numbers + ")" : "");
}
