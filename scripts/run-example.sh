#!/usr/bin/env bash
# The quick start: builds the library, the tool and the examples (no tests),
# then runs the main job on the shipped example: converts
# examples/highlight.json into the timeline JSON, draws it as SVG and as an
# HTML page, checks it, and runs the same sequence built in code. Ends by
# saying where the tool is and how to install it.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/bootstrap.sh --build
cmake --preset tool >/dev/null
cmake --build --preset tool
tool=./build/default/tools/timeline-convert
out=./build/default
echo "== assets the playlist uses"
"$tool" assets examples/highlight.json
"$tool" convert examples/highlight.json -o "$out/highlight.timeline.json"
"$tool" render examples/highlight.json -o "$out/highlight.svg"
"$tool" render --html examples/highlight.json -o "$out/highlight.html"
echo "== check: what the library accepts but is probably not meant"
# Exit 3 means findings of warning severity: the example plays its picture
# ahead of its sound after an overlapping dissolve, which check reports.
check_status=0
"$tool" check examples/highlight.json || check_status=$?
[ "$check_status" -eq 0 ] || [ "$check_status" -eq 3 ]
echo "== timeline ($out/highlight.timeline.json)"
cat "$out/highlight.timeline.json"
echo "== picture: $out/highlight.svg, viewer: $out/highlight.html"
echo "== the same sequence built in code"
./build/default/examples/highlight-sequence
echo "== the tool is $tool"
echo "   put it on the PATH with: cmake --install build/default --prefix ~/.local"
