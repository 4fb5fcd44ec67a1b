#!/usr/bin/env bash
# Measures timeline-convert at scale, for every command and output format, on
# generated documents of 10k, 100k and 200k elements (scripts/large-document.py):
# processor time per element, peak memory, the ratio to a peer measured in the
# same run on the 200k document (Python's C-accelerated json.load of the
# document alone, the least processor time of three runs), and where the time
# goes (reading, the library, writing; by perf on the 10k document, when perf
# can record). Then checks the targets: at most 0.7 times the peer for convert,
# 1.0 for render, 0.5 for check and assets; time per element at 200k within
# 25% of that at 10k; peak memory at most twice the document plus 50 MB.
# Prints Markdown tables, as docs/performance.md shows them; exits 1 when a
# target is missed.
#
#   ./scripts/scale.sh                  # every command
#   ./scripts/scale.sh assets           # the commands whose line starts so
#   SCALE_RUNS=1 ./scripts/scale.sh     # one run per size instead of the best of three
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/bootstrap.sh
cmake --preset default >/dev/null
cmake --build --preset default --target timeline-convert >/dev/null
tool=build/default/tools/timeline-convert
mkdir -p build/scale

sizes=(10000 100000 200000)
runs="${SCALE_RUNS:-3}"
for size in "${sizes[@]}"; do
  [ -s "build/scale/doc-${size}.json" ] || scripts/large-document.py "$size" >"build/scale/doc-${size}.json"
done
largest="build/scale/doc-${sizes[-1]}.json"

# Each command line, the most processor time it may take as a multiple of the
# peer's, and the exit statuses that count as done: check exits 3 when it has
# findings, which a generated document has; the OpenTimelineIO export refuses
# a generated document (items of negative length), exit 2, after reading and
# converting it whole.
lines=("assets|0.5|0" "convert|0.7|0" "convert --format otio|0.7|0 2" "render|1.0|0"
       "render --html|1.0|0" "check|0.5|0 3")
if [ $# -gt 0 ]; then
  chosen=()
  for line in "${lines[@]}"; do
    for word in "$@"; do
      [[ "$line" == "$word"* ]] && chosen+=("$line")
    done
  done
  lines=("${chosen[@]}")
fi

# best_of RUNS REPEATS COMMAND...: "seconds peak_kb status", the least
# processor time (user + system: other load only ever adds to it) of REPEATS
# runs of the command one after the other, and the most memory of one. A small
# document is run as many times as it takes to do the largest one's work, so
# that the clock's hundredths of a second do not round its time per element.
best_of() {
  local count="$1" repeats="$2" best="" peak=0 status=0
  shift 2
  for ((run = 0; run < count; ++run)); do
    # shellcheck disable=SC2016 # the loop's variables are the inner shell's
    read -r status user system peak_kb < <(
      /usr/bin/time -f "%x %U %S %M" bash -c \
        'repeats=$1; shift; for ((i = 0; i < repeats; ++i)); do "$@" >/dev/null; s=$?; done; exit $s' \
        _ "$repeats" "$@" 2>&1 >/dev/null | tail -n 1)
    local seconds
    seconds=$(awk -v u="$user" -v s="$system" 'BEGIN { printf "%.3f", u + s }')
    if [ -z "$best" ] || awk -v a="$seconds" -v b="$best" 'BEGIN { exit !(a < b) }'; then
      best="$seconds"
    fi
    [ "$peak_kb" -gt "$peak" ] && peak="$peak_kb"
  done
  echo "$best $peak $status"
}

read -r peer _ _ < <(best_of 3 1 python3 -c 'import json,sys; json.load(open(sys.argv[1]))' "$largest")
echo "Peer: json.load of $(basename "$largest") takes ${peer} s of processor time."
echo

# share COMMAND...: "reading library writing" percentages of the run's samples.
share() {
  local data
  data=$(mktemp)
  # The command's own exit status (check's 3, a refused export's 2) is no failure here.
  perf record -q --call-graph=dwarf,16384 -F 2000 -o "$data" "$@" >/dev/null 2>&1 || true
  if [ ! -s "$data" ]; then
    rm -f "$data"
    echo "n/a n/a n/a"
    return
  fi
  # Time in a function and everything it calls, per stage's entry point.
  perf report -i "$data" --children --sort sym -g none --stdio 2>/dev/null | awk '
    $1 !~ /%$/ { next }
    /TimelineConvert::ReadPlaylistDocument/ && read == "" { read = $1 + 0 }
    /TimelineConverter::ToTimeline$/ && library == "" { library = $1 + 0 }
    # A writer runs inside WriteResult, or makes its text before it.
    /TimelineConvert::(WriteResult|PictureToSvg|PictureToHtml|ExportOtio)/ {
      if ($1 + 0 > write) write = $1 + 0
    }
    END { printf "%.0f %.0f %.0f\n", read, library, write }'
  rm -f "$data"
}

failed=0
summary=()
echo "| command | elements | document MB | seconds | µs per element | peak MB |"
echo "|---|---:|---:|---:|---:|---:|"
for line in "${lines[@]}"; do
  IFS='|' read -r command most statuses <<<"$line"
  first="" per_element="" seconds="" peak_kb="" bytes=""
  for size in "${sizes[@]}"; do
    document="build/scale/doc-${size}.json"
    # shellcheck disable=SC2086 # the command line splits into its words
    repeats=$((sizes[-1] / size))
    read -r total peak_kb status < <(best_of "$runs" "$repeats" "$tool" $command "$document")
    seconds=$(awk -v t="$total" -v r="$repeats" 'BEGIN { printf "%.3f", t / r }')
    if ! [[ " $statuses " == *" $status "* ]]; then
      echo "$command failed on $document (exit status $status)" >&2
      exit 1
    fi
    bytes=$(stat -c %s "$document")
    per_element=$(awk -v t="$seconds" -v n="$size" 'BEGIN { printf "%.2f", t / n * 1e6 }')
    [ -n "$first" ] || first="$per_element"
    awk -v c="$command" -v n="$size" -v b="$bytes" -v t="$seconds" -v e="$per_element" \
      -v m="$peak_kb" 'BEGIN { printf "| %s | %d | %.1f | %.3f | %s | %.0f |\n", c, n, b / 1048576, t, e, m / 1024 }'
  done
  # shellcheck disable=SC2086
  read -r reading library writing < <(share "$tool" $command "build/scale/doc-${sizes[0]}.json")
  verdict=$(awk -v t="$seconds" -v p="$peer" -v most="$most" -v e="$per_element" -v f="$first" \
    -v m="$peak_kb" -v b="$bytes" 'BEGIN {
      missed = ""
      if (t > most * p) missed = missed sprintf(" time %.2f× peer > %s;", t / p, most)
      if (e > 1.25 * f) missed = missed sprintf(" 200k/10k %.2f > 1.25;", e / f)
      if (m * 1024 > 2 * b + 50 * 1048576) missed = missed sprintf(" peak %.0f MB > %.0f;", m / 1024, (2 * b) / 1048576 + 50)
      print (missed == "" ? "met" : "missed:" missed) }')
  [ "$verdict" = met ] || failed=1
  summary+=("$(awk -v c="$command" -v f="$first" -v e="$per_element" -v t="$seconds" -v p="$peer" \
    -v most="$most" -v m="$peak_kb" -v b="$bytes" -v r="$reading" -v l="$library" -v w="$writing" \
    -v v="$verdict" 'BEGIN { printf "| %s | %.2f | %.2f | %.2f× | %.0f / %.0f | %.2f× (≤ %s) | %s / %s / %s | %s |", c, f, e, e / f, m / 1024, (2 * b) / 1048576 + 50, t / p, most, r, l, w, v }')")
done

echo
echo "| command | µs/element 10k | 200k | 200k/10k | peak / limit MB | CPU vs peer | % reading / library / writing | targets |"
echo "|---|---:|---:|---:|---:|---:|---:|---|"
printf '%s\n' "${summary[@]}"
exit "$failed"
