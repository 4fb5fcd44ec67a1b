#!/usr/bin/env bash
# Builds the benchmarks (preset "bench", release), runs the whole suite once
# and prints a table of the medians: time and allocations per element of each
# operation and of its floor (the same output built from finished values), the
# ratio of the two times, then the targets with their verdicts.
#
#   scripts/bench.sh                     the whole suite, 3 repetitions
#   scripts/bench.sh --benchmark_filter=ToTimeline   any benchmark option
#
# The raw results stay in build/bench/bench-results.csv. Takes about five
# minutes on two cores.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench >/dev/null

results=build/bench/bench-results.csv
context=build/bench/bench-context.txt
build/bench/bench/TimelineEngineConversionBench \
  --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$results" --benchmark_out_format=csv "$@" >/dev/null 2>"$context"
# The machine, its caches and its load while the suite ran.
grep -v WARNING "$context" || true
echo

awk -F, '
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
    size = part[2]; sub(/^[a-z]+:/, "", size)
    ranges = part[3]; sub(/^ranges:/, "", ranges)
    key = part[1] SUBSEP size SUBSEP ranges
    if (!(key in ns)) {
      order[++count] = key
    }
    ns[key] = $(column["ns_per_element"])
    floorNs[key] = $(column["floor_ns_per_element"])
    ratio[key] = $(column["floor_ratio"])
    allocs[key] = $(column["allocs_per_element"])
    floorAllocs[key] = $(column["floor_allocs_per_element"])
  }
  END {
    if (count == 0) { print "no results"; exit 1 }
    printf "%-26s %8s %6s %12s %12s %7s %9s %9s\n", "benchmark", "elements", "ranges",
           "ns/element", "floor ns/el", "ratio", "allocs/el", "floor a/el"
    for (n = 1; n <= count; n++) {
      split(order[n], k, SUBSEP)
      printf "%-26s %8s %6s %12.1f %12.1f %7.2f %9.3f %9.3f\n", k[1], k[2], k[3],
             ns[order[n]], floorNs[order[n]], ratio[order[n]], allocs[order[n]],
             floorAllocs[order[n]]
    }
    print ""
    print "targets (assets with 1 range):"
    # ToTrack is the track conversion alone: at 1,000 elements the media infos
    # of the 1,000 assets weigh on every ToTimeline element, not on it.
    for (m = 1; m <= 3; m++) {
      mode = m == 1 ? "ToTimeline_FromTrackItems" : m == 2 ? "ToTimeline_FromPlaylist" : "ToTrack"
      at10k = mode SUBSEP 10000 SUBSEP 1
      if (at10k in ratio) {
        printf "  %-26s ratio to floor at 10,000: %.2f (at most 1.50) %s\n", mode,
               ratio[at10k], ratio[at10k] <= 1.5 ? "met" : "NOT MET"
      }
      small = mode SUBSEP 1000 SUBSEP 1
      large = mode SUBSEP 100000 SUBSEP 1
      if ((small in ns) && (large in ns)) {
        growth = ns[large] / ns[small]
        floorGrowth = floorNs[large] / floorNs[small]
        printf "  %-26s ns/element 100,000 over 1,000: %.2f (at most 1.15) %s; floor: %.2f\n",
               mode, growth, growth <= 1.15 ? "met" : "NOT MET", floorGrowth
      }
      for (n = 1; n <= count && m < 3; n++) {
        split(order[n], k, SUBSEP)
        if (k[1] == mode && k[3] == 1) {
          extra = allocs[order[n]] - floorAllocs[order[n]]
          printf "  %-26s allocations over the floor at %s: %+.3f (at most +1) %s\n", mode,
                 k[2], extra, extra <= 1 ? "met" : "NOT MET"
        }
      }
    }
    print ""
    # Every asset is timed once per call, so 100 ranges should cost little more
    # than 1; the media infos are timed once per asset by definition.
    print "assets with 100 recorded ranges against 1 range:"
    for (n = 1; n <= count; n++) {
      split(order[n], k, SUBSEP)
      one = k[1] SUBSEP k[2] SUBSEP 1
      if (k[3] == 100 && (one in ns) && k[1] != "Floor") {
        times = ns[order[n]] / ns[one]
        verdict = k[1] == "ToMediaInfo" ? "reported" : times <= 1.15 ? "met" : "NOT MET"
        printf "  %-26s %8s: %+10.1f ns/element, %.2f times (at most 1.15) %s\n", k[1], k[2],
               ns[order[n]] - ns[one], times, verdict
      }
    }
  }
' "$results"
