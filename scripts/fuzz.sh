#!/usr/bin/env bash
# Builds the libFuzzer harnesses of fuzz/ with clang (AddressSanitizer and UndefinedBehavior-
# Sanitizer) in their own build directory and runs each for a bounded time, two at a time.
# Usage: scripts/fuzz.sh [seconds per target, default 60] [target...]
# The seed corpora of fuzz/corpus/<target>/ are read, never written: what a run finds goes to
# $build/corpus/<target>/, crashing inputs to $build/findings/<target>/. Exits non-zero when any
# harness found something. Environment: VARSENTIX_FUZZ_BUILD_DIR (default build-fuzz),
# VARSENTIX_FUZZ_JOBS (parallel runs, default 2).
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
shift || true
build=${VARSENTIX_FUZZ_BUILD_DIR:-build-fuzz}
jobs=${VARSENTIX_FUZZ_JOBS:-2}

launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DVARSENTIX_BUILD_FUZZ=ON -DVARSENTIX_BUILD_TESTS=OFF \
  "${launcher[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" --target varsentix_fuzz >/dev/null

if [[ $# -gt 0 ]]; then
  targets=("$@")
else
  targets=()
  for harness in "$build"/fuzz/fuzz_*; do
    [[ -x "$harness" ]] && targets+=("${harness##*/fuzz_}")
  done
fi

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# One target: a working corpus seeded from the repository's, the run's log kept beside it.
run_one() {
  local target=$1
  local corpus="$build/corpus/$target" findings="$build/findings/$target"
  mkdir -p "$corpus" "$findings"
  local extra=()
  # libmdb reports every damaged page on stderr; the harness's own stderr is closed for it
  # (libFuzzer keeps its own report and the sanitizers' on a copy of it).
  # A load takes about a second there: inputs of any length (up to 200 changes) from the start.
  if [[ $target == access_file ]]; then
    extra+=(-close_fd_mask=2 -len_control=0 -max_len=1001)
  else
    extra+=(-max_len=65536)
  fi
  TMPDIR="$scratch" "$build/fuzz/fuzz_$target" "$corpus" "fuzz/corpus/$target" \
    -max_total_time="$seconds" -timeout=60 -rss_limit_mb=4096 -print_final_stats=1 \
    -artifact_prefix="$findings/" "${extra[@]}" >"$build/fuzz-$target.log" 2>&1
}

pids=() names=()
status=0
wait_first() {
  local pid=${pids[0]} name=${names[0]}
  pids=("${pids[@]:1}") names=("${names[@]:1}")
  if wait "$pid"; then
    local runs units
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$build/fuzz-$name.log" | grep -o '[0-9]*$' || echo "?")
    units=$(grep -o 'corp: [0-9]*' "$build/fuzz-$name.log" | tail -n 1 | grep -o '[0-9]*$' || echo "?")
    echo "fuzz $name: ok, $runs executions, corpus $units inputs"
  else
    echo "fuzz $name: FINDING (log $build/fuzz-$name.log, inputs in $build/findings/$name/)"
    tail -n 40 "$build/fuzz-$name.log"
    status=1
  fi
}
for target in "${targets[@]}"; do
  [[ -d "fuzz/corpus/$target" ]] || { echo "no seed corpus fuzz/corpus/$target" >&2; exit 2; }
  run_one "$target" &
  pids+=($!) names+=("$target")
  if [[ ${#pids[@]} -ge $jobs ]]; then wait_first; fi
done
while [[ ${#pids[@]} -gt 0 ]]; do wait_first; done
exit $status
