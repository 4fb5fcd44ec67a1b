#!/usr/bin/env bash
# Runs the viewer's browser tests: Debian's chromium driven by playwright-core
# (pinned in tests/browser/package-lock.json, installed here with npm ci).
# Builds the tool first unless TIMELINE_CONVERT names one. Lints the viewer's
# joined script (left beside the tool by the build) and the tests with the
# checked-in ESLint rules first. Screenshots of the shipped examples land in
# build/browser-screenshots (artefacts, not compared).
set -euo pipefail
cd "$(dirname "$0")/.."

if [ -z "${TIMELINE_CONVERT:-}" ]; then
  cmake --preset ci >/dev/null
  cmake --build --preset ci --target timeline-convert
  export TIMELINE_CONVERT="$PWD/build/ci/tools/timeline-convert"
fi
export SCREENSHOT_DIR="${SCREENSHOT_DIR:-$PWD/build/browser-screenshots}"
joined="$(dirname "$TIMELINE_CONVERT")/viewer.js"

cd tests/browser
npm ci --no-audit --no-fund --loglevel=error
if [ -f "$joined" ]; then
  node_modules/.bin/eslint --max-warnings 0 --stdin --stdin-filename tools/viewer.js < "$joined"
else
  echo "browser-tests: no joined viewer script at $joined; linting the tests only" >&2
fi
node_modules/.bin/eslint --max-warnings 0 ./*.js
node --test --test-concurrency=1 viewer.test.js
