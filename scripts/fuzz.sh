#!/usr/bin/env bash
# Fuzzes the library for a given number of seconds (default 60) on one core
# with the libFuzzer harness in fuzz/, starting from the checked-in seed corpus
# in fuzz/corpus. New inputs go to fuzz/corpus-work (not checked in). A
# failing input is saved under build/fuzz/artifacts/ and the script fails with
# the end of the fuzzer's log; the whole log is build/fuzz/fuzz.log.
#
#   ./scripts/fuzz.sh 120
#   ./build/fuzz/fuzz/ConversionFuzzer build/fuzz/artifacts/crash-...   # replay
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-60}"
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  echo "usage: $0 [seconds > 0]" >&2
  exit 2
fi

./scripts/bootstrap.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

mkdir -p fuzz/corpus-work build/fuzz/artifacts
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
log=build/fuzz/fuzz.log
echo "Fuzzing for ${seconds} s (log: ${log})"
if ./build/fuzz/fuzz/ConversionFuzzer -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -max_len=4096 -artifact_prefix=build/fuzz/artifacts/ -print_final_stats=1 \
  fuzz/corpus-work fuzz/corpus >"$log" 2>&1; then
  grep -E '^(Done|stat::(number_of_executed_units|new_units_added|peak_rss_mb))' "$log" || true
else
  tail -n 80 "$log"
  echo "The fuzzer found a failing input; see build/fuzz/artifacts/" >&2
  exit 1
fi
