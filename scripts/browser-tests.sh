#!/usr/bin/env bash
# Runs the viewer's browser tests: Debian's chromium driven by playwright-core
# (pinned in tests/browser/package-lock.json, installed here with npm ci).
# Builds the tool first unless TIMELINE_CONVERT names one. Screenshots of the
# shipped examples land in build/browser-screenshots (artefacts, not compared).
set -euo pipefail
cd "$(dirname "$0")/.."

if [ -z "${TIMELINE_CONVERT:-}" ]; then
  cmake --preset ci >/dev/null
  cmake --build --preset ci --target timeline-convert
  export TIMELINE_CONVERT="$PWD/build/ci/tools/timeline-convert"
fi
export SCREENSHOT_DIR="${SCREENSHOT_DIR:-$PWD/build/browser-screenshots}"

cd tests/browser
npm ci --no-audit --no-fund --loglevel=error
node --test --test-concurrency=1 viewer.test.js
