#!/usr/bin/env bash
# Builds everything and runs every test. Uses the "ci" preset (warnings as
# errors, 32-bit layout check required) when CI is set, "default" otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/bootstrap.sh
preset="default"
if [ -n "${CI:-}" ]; then
  preset="ci"
fi
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" -j2
