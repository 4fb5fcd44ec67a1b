#!/usr/bin/env bash
# Fuzzes for a given number of seconds (default 60) per harness, on one core,
# with the libFuzzer harnesses in fuzz/: ConversionFuzzer (the library, seeds
# in fuzz/corpus) and DocumentReaderFuzzer (timeline-convert's document reader,
# seeds in fuzz/document-corpus: copies of the shipped examples and small
# documents that use every field; plus tests/tools/documents where it exists). A second argument runs only the harness it names. New inputs go
# to fuzz/corpus-work/<harness> (not checked in). A failing input is saved
# under build/fuzz/artifacts/ and the script fails with the end of the
# fuzzer's log; the whole log is build/fuzz/<harness>.log.
#
#   ./scripts/fuzz.sh 120
#   ./scripts/fuzz.sh 1800 DocumentReaderFuzzer
#   ./build/fuzz/fuzz/ConversionFuzzer build/fuzz/artifacts/crash-...   # replay
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-60}"
only="${2:-}"
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]] ||
  ! [[ "$only" =~ ^(|ConversionFuzzer|DocumentReaderFuzzer)$ ]]; then
  echo "usage: $0 [seconds > 0] [ConversionFuzzer|DocumentReaderFuzzer]" >&2
  exit 2
fi

./scripts/bootstrap.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
mkdir -p build/fuzz/artifacts

# fuzz HARNESS MAX_LEN SEED_DIR...
fuzz() {
  local harness="$1" max_len="$2"
  shift 2
  local log="build/fuzz/${harness}.log"
  mkdir -p "fuzz/corpus-work/${harness}"
  echo "Fuzzing ${harness} for ${seconds} s (log: ${log})"
  if "./build/fuzz/fuzz/${harness}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -max_len="$max_len" -artifact_prefix=build/fuzz/artifacts/ -print_final_stats=1 \
    "fuzz/corpus-work/${harness}" "$@" >"$log" 2>&1; then
    grep -E '^(Done|stat::(number_of_executed_units|new_units_added|peak_rss_mb))' "$log" || true
  else
    tail -n 80 "$log"
    echo "The fuzzer found a failing input; see build/fuzz/artifacts/" >&2
    exit 1
  fi
}

if [ -z "$only" ] || [ "$only" = ConversionFuzzer ]; then
  fuzz ConversionFuzzer 4096 fuzz/corpus
fi
if [ -z "$only" ] || [ "$only" = DocumentReaderFuzzer ]; then
  # The tool's test documents join the seeds where they exist.
  seeds=(fuzz/document-corpus)
  for folder in tests/tools/documents; do
    [ -d "$folder" ] && seeds+=("$folder")
  done
  fuzz DocumentReaderFuzzer 16384 "${seeds[@]}"
fi
