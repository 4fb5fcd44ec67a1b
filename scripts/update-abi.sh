#!/usr/bin/env bash
# Records the binary interface of the shared library as built in BUILD_DIR
# (default build/ci): the ABI that CI compares every build with
# (tests/packaging/abi/, written by abidw) and the Debian symbols file of the
# runtime package (packaging/debian/, written by dpkg-gensymbols; a symbol
# already listed keeps the version it first appeared in). Run it after a
# deliberate change of the interface, and commit both files:
#   ./scripts/update-abi.sh build/ci
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${1:-build/ci}"
library="$(readlink -f "$build_dir/libTimelineEngineConversion.so")"
soname="$(basename "$(readlink "$build_dir/libTimelineEngineConversion.so")")"
version="$(sed -n 's/^project(TimelineEngineConversion VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
package="libtimelineengineconversion${soname##*.so.}"

headers="$(mktemp -d)"
trap 'rm -rf "$headers"' EXIT
cmake --install "$build_dir" --prefix "$headers" --component development >/dev/null
# The record keeps each type's header file (not its path): abidiff tells the
# public types from internal ones by it, and without it would let changes of
# public types pass.
abidw --no-corpus-path --no-comp-dir-path --short-locs --drop-private-types \
      --headers-dir "$headers/include/TimelineEngineConversion" \
      --out-file "tests/packaging/abi/$soname.abi" "$library"

symbols="packaging/debian/$package.symbols"
template=()
if [ -s "$symbols" ]; then
  template=(-I"$symbols")
fi
mkdir -p "$headers/root"
dpkg-gensymbols -p"$package" -P"$headers/root" -v"$version" "${template[@]}" -O"$symbols" \
                -q -e"$library"
# Symbols gone since the last record stay in the file, marked; drop them only
# together with a new SOVERSION.
if grep -q "#MISSING" "$symbols"; then
  echo "$symbols: symbols marked #MISSING were lost: that breaks the ABI" >&2
fi
echo "recorded tests/packaging/abi/$soname.abi and $symbols"
