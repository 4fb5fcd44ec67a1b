#!/usr/bin/env bash
# Builds the library and the tool, then runs the main job on the shipped
# example: converts examples/highlight.json into the timeline JSON and draws
# it as SVG and as an HTML page, then runs the same sequence built in code.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/bootstrap.sh
cmake --preset default >/dev/null
cmake --build --preset default
tool=./build/default/tools/timeline-convert
out=./build/default
echo "== assets the playlist uses"
"$tool" assets examples/highlight.json
"$tool" convert examples/highlight.json -o "$out/highlight.timeline.json"
"$tool" render examples/highlight.json -o "$out/highlight.svg"
"$tool" render --html examples/highlight.json -o "$out/highlight.html"
echo "== check: what the library accepts but is probably not meant"
"$tool" check examples/highlight.json
echo "== timeline ($out/highlight.timeline.json)"
cat "$out/highlight.timeline.json"
echo "== picture: $out/highlight.svg, $out/highlight.html"
echo "== the same sequence built in code"
./build/default/examples/highlight-sequence
