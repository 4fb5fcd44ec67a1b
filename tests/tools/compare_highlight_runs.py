#!/usr/bin/env python3
"""The two runs of the quick start must agree: examples/highlight_sequence.cpp
builds in code the sequence and assets of examples/highlight.json. Prints the
tool's timeline as the example's table and compares the two texts.

Usage: compare_highlight_runs.py TOOL EXAMPLE HIGHLIGHT_JSON
"""
import json
import subprocess
import sys

tool, example, document = sys.argv[1:4]
timeline = json.loads(subprocess.run([tool, "convert", document], capture_output=True,
                                     check=True, text=True).stdout)
lines = [f"timeline {timeline['id']}, duration {timeline['duration']} frames", "",
         f"{'asset':<38} {'duration':<8} tracks"]
for info in timeline["mediaInfos"]:
    lines.append(f"{info['id']:<38} {info['duration']:>8} {info['tracksDescription']}")
for track in timeline["tracks"]:
    lines += ["", f"track {track['id']}",
              f"{'item':<36} {'kind':<8} {'tl.v.in':>8} {'tl.v.len':>8} {'tl.a.in':>8} "
              f"{'tl.a.len':>8} {'m.v.in':>8} {'m.a.in':>8}"]
    for item in track["items"]:
        if item["type"] == 1:
            numbers = " ".join(f"{item[field]:>8}" for field in (
                "timelineVideoIn", "timelineVideoDuration", "timelineAudioIn",
                "timelineAudioDuration", "mediaVideoIn", "mediaAudioIn"))
            lines.append(f"{item['id']:<36} {'media':<8} {numbers}")
        else:
            effect = item["effect"]
            kind = "video-fx" if item["type"] == 3 else "audio-fx"
            lines.append(f"{item['id']:<36} {kind:<8} effect {effect['kind']}, offset "
                         f"{effect['offset']}, duration {effect['duration']}")
expected = "\n".join(lines) + "\n"
actual = subprocess.run([example], capture_output=True, check=True, text=True).stdout
if actual != expected:
    sys.exit(f"the sequence built in code converts differently:\n{actual}\n--- the JSON document:\n{expected}")
print("the sequence built in code and examples/highlight.json give the same timeline")
