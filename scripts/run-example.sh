#!/usr/bin/env bash
# Builds the library and runs the main job on the shipped example.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/bootstrap.sh
cmake --preset default >/dev/null
cmake --build --preset default
./build/default/examples/highlight-sequence
