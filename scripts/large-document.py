#!/usr/bin/env python3
"""Writes a large playlist document for timeline-convert to standard output,
for the scale runs (scripts/scale.sh): ELEMENTS audio-video elements over a few
hundred assets, with every boundary kind, cuts, dissolves and wipes with audio
fades, speed changes and an aux clip, laid out as the shipped example is. The
same count always gives the same document, and it converts without a refusal.

    scripts/large-document.py 100000 > big.json
"""
import random
import sys

ASSETS = 300
# The kinds a timeline accepts (absolute ones are refused), by name and by number.
IN_KINDS = ['"sameLimit"', '"oppositeLimit"', "1"]
OUT_KINDS = ['"sameLimit"', '"oppositeLimit"', '"otherBoundary"', "2", "3"]


def element(number, rng):
    clip = rng.randrange(ASSETS)
    start = rng.randrange(0, 2000)
    length = rng.randrange(100, 600)
    fields = [
        f'"number": {number}, "serverId": 7, "playlistNumber": 12, "itemNumber": {number}',
        f'"umId": "CLIP-{clip:05d}"',
        # Out boundaries relative to the IN keep every element longer than its transition.
        f'"inBoundaryKind": {rng.choice(IN_KINDS)}, "outBoundaryKind": {rng.choice(OUT_KINDS)}',
        f'"videoInValue": {start}, "videoOutValue": {start + length}',
        f'"audioInValue": {start}, "audioOutValue": {start + length}',
    ]
    if rng.random() < 0.2:
        fields.append(f'"speed": {{"numerator": 1, "denominator": {rng.choice([2, 3, 4])}}}')
    if number > 1 and rng.random() < 0.3:
        fields.append(f'"transitionType": {rng.choice([2, 14])}, '
                      f'"videoTransitionDuration": {rng.randrange(4, 40)}, '
                      f'"audioTransitionType": 6, "audioTransitionDuration": {rng.randrange(4, 40)}')
    return "        {\n          " + ",\n          ".join(fields) + "\n        }"


def asset(index):
    clip = "COMMENT-01" if index == ASSETS else f"CLIP-{index:05d}"
    return f'''    {{
      "umId": "{clip}",
      "assetKind": {index % 2},
      "timeBounds": [{{"start": 0, "end": 300000000}}, {{"start": 400000000, "end": "open"}}],
      "shortBounds": {{"start": 10000000, "end": 90000000}},
      "operatorVideoRate": 50,
      "resources": [{{"id": "resource", "tracks": [{{"id": "video-1", "kind": 2}}, {{"id": "audio-1", "kind": 0}}],
                     "trackLayouts": [{{"id": "layout-1", "tracks": ["video-1", "audio-1"]}}]}}]
    }}'''


def main():
    if len(sys.argv) != 2 or not sys.argv[1].isdigit() or int(sys.argv[1]) < 1:
        sys.exit("usage: large-document.py ELEMENTS")
    count = int(sys.argv[1])
    rng = random.Random(count)
    out = sys.stdout
    out.write('{\n  "description": "A generated playlist for scale runs",\n  "playlist": {\n'
              '    "serverId": 7, "number": 12, "umId": "HL-0012", "durationInFields": 1200,\n'
              '    "rate": {"numerator": 50, "denominator": 1}, "auxTrackUmId": "COMMENT-01",\n'
              '    "audioVideoTrack": {\n      "elements": [\n')
    out.write(",\n".join(element(number, rng) for number in range(1, count + 1)))
    out.write('\n      ]\n    }\n  },\n  "assets": [\n')
    out.write(",\n".join(asset(index) for index in range(ASSETS + 1)))
    out.write("\n  ]\n}\n")


if __name__ == "__main__":
    main()
