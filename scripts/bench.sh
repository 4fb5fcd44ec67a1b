#!/usr/bin/env bash
# Builds the benchmarks (preset "bench", release) and measures every operation
# against its floor (the same output built from finished values), both sides
# the same way:
#   1. by wall clock (Google Benchmark, 3 repetitions, medians), in the
#      patterns "steady" (each result replaces the previous one inside the
#      clock) and "own" (each result freed outside the clock): time,
#      allocations and page faults per element;
#   2. by instructions (callgrind, when valgrind is installed): one call after
#      one untimed call, each operation in a process of its own, with the
#      stack depth of the same call;
# then prints the targets with their verdicts and where the instructions of
# ToTimeline on 10,000 elements go.
#
#   scripts/bench.sh                                  the whole suite
#   scripts/bench.sh --benchmark_filter=ToTimeline    any benchmark option
#   BENCH_INSTRUCTIONS=0 scripts/bench.sh             wall clock only
#
# The raw results stay in build/bench/ (bench-results.csv, instructions.txt,
# callgrind/). Takes about ten minutes on two cores.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench >/dev/null

out=build/bench
results=$out/bench-results.csv
context=$out/bench-context.txt
instructions=$out/instructions.txt
counter=$out/bench/TimelineEngineConversionInstructions

$out/bench/TimelineEngineConversionBench \
  --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$results" --benchmark_out_format=csv "$@" >/dev/null 2>"$context"
# The machine, its caches and its load while the suite ran.
grep -v WARNING "$context" || true
echo

# One line per measured call: operation elements ranges instructions stack-bytes.
: >"$instructions"
if [[ "${BENCH_INSTRUCTIONS:-1}" != 0 ]] && command -v valgrind >/dev/null; then
  rm -rf "$out/callgrind"
  mkdir -p "$out/callgrind"
  jobs=()
  for elements in 1000 10000 100000; do
    for ranges in 1 100; do
      for operation in ToTimeline FloorTimeline ToTrack FloorTrack; do
        jobs+=("$operation $elements $ranges")
      done
    done
  done
  measure() {
    local operation=$1 elements=$2 ranges=$3
    local file="$out/callgrind/$operation-$elements-$ranges"
    valgrind --tool=callgrind --instr-atstart=no --callgrind-out-file="$file.%p" \
      "$counter" "$operation" "$elements" "$ranges" >/dev/null 2>&1
    # The dump made at the call's end (the process's final dump is empty).
    local dump
    dump=$(grep -l "Client Request: $operation\$" "$file".* | head -1)
    mv "$dump" "$file.out"
    rm -f "$file".[0-9]*
    local stack
    stack=$("$counter" "$operation" "$elements" "$ranges" | awk '{print $3}')
    echo "$operation $elements $ranges $(awk '/^totals:/ {print $2}' "$file.out") $stack"
  }
  export -f measure
  export out counter
  printf '%s\n' "${jobs[@]}" | xargs -P 2 -L 1 bash -c 'measure "$@"' _ >>"$instructions"
fi

awk -F, -v instructions="$instructions" '
  function floorOf(operation) {
    if (operation ~ /^ToTimeline/) return "FloorTimeline"
    if (operation == "ToTrack") return "FloorTrack"
    if (operation == "ListAssetsFromPlaylist") return "FloorAssetList"
    if (operation == "ToMediaInfo") return "FloorMediaInfo"
    return ""
  }
  # Columns by header name: counters come in alphabetical order.
  /^name,/ {
    for (i = 1; i <= NF; i++) { gsub(/"/, "", $i); column[$i] = i }
    next
  }
  # The median of the repetitions, or the one run when there is no repetition.
  /manual_time(_median)?"/ {
    name = $1
    gsub(/"/, "", name)
    sub(/\/manual_time(_median)?$/, "", name)
    split(name, part, "/")
    size = part[3]; sub(/^[a-z]+:/, "", size)
    ranges = part[4]; sub(/^ranges:/, "", ranges)
    key = part[1] SUBSEP part[2] SUBSEP size SUBSEP ranges
    if (!(key in ns)) {
      order[++count] = key
    }
    ns[key] = $(column["ns_per_element"])
    allocs[key] = $(column["allocs_per_element"])
    faults[key] = $(column["faults_per_element"])
  }
  END {
    while ((getline line < instructions) > 0) {
      split(line, f, " ")
      ir[f[1] SUBSEP f[2] SUBSEP f[3]] = f[4] / f[2]
      stack[f[1] SUBSEP f[2] SUBSEP f[3]] = f[5]
      irOrder[++irCount] = f[1] SUBSEP f[2] SUBSEP f[3]
    }
    if (count == 0 && irCount == 0) { print "no results"; exit 1 }

    if (count > 0) {
      print "wall clock, medians of 3 (per element; per asset for ToMediaInfo):"
      printf "%-26s %-6s %7s %6s %9s %9s %6s %9s %9s %8s %8s\n", "operation", "pattern",
             "elements", "ranges", "ns", "floor ns", "ratio", "allocs", "floor al.",
             "faults", "floor f."
      for (n = 1; n <= count; n++) {
        split(order[n], k, SUBSEP)
        floorName = floorOf(k[1])
        if (floorName == "") continue
        fk = floorName SUBSEP k[2] SUBSEP k[3] SUBSEP k[4]
        if (!(fk in ns)) continue
        printf "%-26s %-6s %7s %6s %9.1f %9.1f %6.2f %9.3f %9.3f %8.4f %8.4f\n", k[1], k[2],
               k[3], k[4], ns[order[n]], ns[fk], ns[order[n]] / ns[fk], allocs[order[n]],
               allocs[fk], faults[order[n]], faults[fk]
      }
      print ""
    }
    if (irCount > 0) {
      print "instructions of one call (callgrind), per element, and stack depth:"
      printf "%-12s %8s %6s %10s %10s %6s %8s %8s\n", "operation", "elements", "ranges",
             "Ir", "floor Ir", "ratio", "stack", "floor st."
      for (n = 1; n <= irCount; n++) {
        split(irOrder[n], k, SUBSEP)
        if (k[1] ~ /^Floor/) continue
        fk = floorOf(k[1]) SUBSEP k[2] SUBSEP k[3]
        printf "%-12s %8s %6s %10.0f %10.0f %6.2f %8d %8d\n", k[1], k[2], k[3], ir[irOrder[n]],
               ir[fk], ir[irOrder[n]] / ir[fk], stack[irOrder[n]], stack[fk]
      }
      print ""
    }

    print "targets:"
    verdict = "met"
    t10 = "ToTimeline" SUBSEP 10000 SUBSEP 1
    t1 = "ToTimeline" SUBSEP 1000 SUBSEP 1
    t100 = "ToTimeline" SUBSEP 100000 SUBSEP 1
    if ((t10 in ir) && (t1 in ir) && (t100 in ir)) {
      r = ir[t10] / ir["FloorTimeline" SUBSEP 10000 SUBSEP 1]
      printf "  ToTimeline instructions at 10,000: %.2f times the floor (at most 1.15) %s\n", r,
             r <= 1.15 ? "met" : "NOT MET"
      r = ir[t1] / ir["FloorTimeline" SUBSEP 1000 SUBSEP 1]
      printf "  ToTimeline instructions at 1,000: %.2f times the floor (at most 1.30) %s\n", r,
             r <= 1.30 ? "met" : "NOT MET"
      r = ir[t100] / ir[t1]
      printf "  ToTimeline instructions per element, 100,000 against 1,000: %+.1f%% (at most +15%%) %s\n",
             100 * (r - 1), r <= 1.15 ? "met" : "NOT MET"
      r = ir["ToTimeline" SUBSEP 10000 SUBSEP 100] / ir[t10]
      printf "  ToTimeline instructions at 10,000, 100 ranges against 1: %.2f times (at most 1.10) %s\n",
             r, r <= 1.10 ? "met" : "NOT MET"
      worst = 0
      for (n = 1; n <= irCount; n++) {
        if (stack[irOrder[n]] > worst) worst = stack[irOrder[n]]
      }
      printf "  stack per call: at most %d bytes (at most 16,384) %s\n", worst,
             worst <= 16384 ? "met" : "NOT MET"
    }
    for (m = 1; m <= 2 && count > 0; m++) {
      mode = m == 1 ? "ToTimeline_FromTrackItems" : "ToTimeline_FromPlaylist"
      own = mode SUBSEP "own" SUBSEP 10000 SUBSEP 1
      if (own in faults) {
        printf "  %s page faults per element at 10,000, own: %.4f (at most 0.01) %s\n", mode,
               faults[own], faults[own] <= 0.01 ? "met" : "NOT MET"
      }
      for (p = 1; p <= 2; p++) {
        pattern = p == 1 ? "steady" : "own"
        key = mode SUBSEP pattern SUBSEP 10000 SUBSEP 1
        fk = "FloorTimeline" SUBSEP pattern SUBSEP 10000 SUBSEP 1
        if ((key in ns) && (fk in ns)) {
          r = ns[key] / ns[fk]
          printf "  %s wall clock at 10,000, %s: %.2f times the floor (at most 1.30) %s\n", mode,
                 pattern, r, r <= 1.3 ? "met" : "NOT MET"
        }
      }
      worst = -1e9
      for (n = 1; n <= count; n++) {
        split(order[n], k, SUBSEP)
        if (k[1] != mode) continue
        fk = "FloorTimeline" SUBSEP k[2] SUBSEP k[3] SUBSEP k[4]
        if (!(fk in allocs)) continue
        extra = (allocs[order[n]] - allocs[fk]) * k[3]
        if (extra > worst) worst = extra
      }
      if (worst > -1e9) {
        printf "  %s allocations beyond the floor: at most %+.1f per call (at most +1) %s\n", mode,
               worst, worst <= 1.0001 ? "met" : "NOT MET"
      }
    }
  }
' "$results"

# Where the instructions of ToTimeline on 10,000 elements go, per element:
# each function's own instructions, against the floor's.
breakdown() {
  callgrind_annotate --inclusive=no "$1" 2>/dev/null |
    awk -v elements=10000 '/^ *[0-9,]+ +\(/ && !/PROGRAM TOTALS/ {
      cost = $1; gsub(/,/, "", cost)
      if (cost / elements < 10) next
      sub(/^ *[0-9,]+ +\([ 0-9.%]+\) +/, "")
      sub(/ \[.*$/, ""); sub(/^[^:]*:/, "")
      gsub(/Kov::Replivo::Tollan::TimelineEngineConversion::/, "")
      gsub(/\(anonymous namespace\)::/, "")
      printf "  %8.0f  %.100s\n", cost / elements, $0
    }'
}
if [[ -f "$out/callgrind/ToTimeline-10000-1.out" ]]; then
  echo
  echo "ToTimeline, 10,000 elements, 1 range: instructions per element by function (own cost):"
  breakdown "$out/callgrind/ToTimeline-10000-1.out"
  echo "its floor:"
  breakdown "$out/callgrind/FloorTimeline-10000-1.out"
fi
