#!/usr/bin/env bash
# Measures timeline-convert at scale: for every command, the processor time
# per element and the peak memory on generated documents of 10k, 100k and
# 200k elements (scripts/large-document.py), then checks the targets: time per
# element at 200k within 25% of that at 10k, and convert's peak memory at most
# four times the document's size plus 50 MB. Prints a Markdown table, as
# docs/performance.md shows it; exits 1 when a target is missed.
#
#   ./scripts/scale.sh            # all commands
#   ./scripts/scale.sh assets     # one command
#   SCALE_RUNS=1 ./scripts/scale.sh   # one run per size instead of the best of three
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

commands=("$@")
if [ ${#commands[@]} -eq 0 ]; then
  commands=(assets convert render)
  # Commands that only some builds have join when the tool knows them.
  "$tool" check --help >/dev/null 2>&1 && commands+=(check)
fi

failed=0
echo "| command | elements | document MB | seconds | µs per element | peak MB |"
echo "|---|---:|---:|---:|---:|---:|"
for command in "${commands[@]}"; do
  first_per_element=""
  for size in "${sizes[@]}"; do
    peak_kb=""
    document="build/scale/doc-${size}.json"
    # Processor time (user + system, the least of $runs runs: other load on the
    # machine only ever adds to it) and peak resident memory (the most).
    user=""
    for ((run = 0; run < runs; ++run)); do
      read -r status run_user run_system run_peak_kb < <(
        /usr/bin/time -f "%x %U %S %M" "$tool" "$command" "$document" 2>&1 >/dev/null |
          tail -n 1)
      # check exits 3 when it has findings, which a generated document has.
      if [ "$status" != 0 ] && ! { [ "$command" = check ] && [ "$status" = 3 ]; }; then
        echo "$command failed on $document (exit status $status)" >&2
        exit 1
      fi
      if [ -z "$user" ] || awk -v a="$run_user" -v b="$run_system" -v c="$user" -v d="$system" \
        'BEGIN { exit !(a + b < c + d) }'; then
        user="$run_user" system="$run_system"
      fi
      [ -n "${peak_kb:-}" ] && [ "$peak_kb" -ge "$run_peak_kb" ] || peak_kb="$run_peak_kb"
    done
    bytes=$(stat -c %s "$document")
    line=$(awk -v c="$command" -v n="$size" -v b="$bytes" -v u="$user" -v s="$system" -v m="$peak_kb" \
      'BEGIN { t = u + s; printf "| %s | %d | %.1f | %.2f | %.2f | %.0f |", c, n, b / 1048576, t, t / n * 1e6, m / 1024 }')
    echo "$line"
    per_element=$(awk -v u="$user" -v s="$system" -v n="$size" 'BEGIN { printf "%.6f", (u + s) / n * 1e6 }')
    [ -n "$first_per_element" ] || first_per_element="$per_element"
    if [ "$size" = 200000 ] && awk -v a="$per_element" -v b="$first_per_element" 'BEGIN { exit !(a > 1.25 * b) }'; then
      echo "target missed: $command takes ${per_element} µs per element at 200k, ${first_per_element} at 10k" >&2
      failed=1
    fi
    if [ "$command" = convert ] &&
      awk -v m="$peak_kb" -v b="$bytes" 'BEGIN { exit !(m * 1024 > 4 * b + 50 * 1048576) }'; then
      echo "target missed: convert peaks at ${peak_kb} kB for a document of ${bytes} bytes" >&2
      failed=1
    fi
  done
done
exit "$failed"
