#!/usr/bin/env bash
# Builds and runs the whole test suite under the address and undefined-
# behaviour sanitizers (preset asan-ubsan, leaks checked at exit), then the
# concurrency test under the thread sanitizer (preset tsan). The first
# sanitizer report fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/bootstrap.sh

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:strict_string_checks=1:detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export TSAN_OPTIONS="${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}"

cmake --preset asan-ubsan >/dev/null
cmake --build --preset asan-ubsan
ctest --preset asan-ubsan -j2

# Only the concurrency test runs threads; the rest of the suite gains nothing here.
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target ReliabilityConcurrencyTest
ctest --preset tsan -R '^Reliability\.ConcurrencyTest$'
