#!/usr/bin/env bash
# Sets up, builds (with AddressSanitizer and UndefinedBehaviorSanitizer) and runs the whole test
# suite against SQLite, Access files, and PostgreSQL and MariaDB started on loopback.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh --test

# Database servers on 127.0.0.1 with throw-away data directories; stopped when this script ends.
eval "$(scripts/test-servers.sh start)"
trap 'scripts/test-servers.sh stop >/dev/null 2>&1 || true' EXIT
if [[ -n "${CI:-}" ]]; then
  export VARSENTIX_REQUIRE_ENGINES=1   # on CI a missing engine fails the suite
fi

build=${VARSENTIX_TEST_BUILD_DIR:-build-test}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DVARSENTIX_SANITIZE=ON -DVARSENTIX_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# The fuzz harnesses (docs/fuzzing.md), about a minute each, two at a time, in their own clang
# build; VARSENTIX_FUZZ_SECONDS=0 leaves them out. They run before the suite so that its summary
# closes the output; a finding fails the run once the suite has run.
fuzz_status=0
fuzz_seconds=${VARSENTIX_FUZZ_SECONDS:-60}
if [[ "$fuzz_seconds" != 0 ]]; then
  scripts/fuzz.sh "$fuzz_seconds" || fuzz_status=$?
fi
cd "$build"
ctest --output-on-failure -j"$(nproc)"
if [[ $fuzz_status -ne 0 ]]; then
  echo "The fuzz harnesses found something: see the lines starting with 'fuzz' above." >&2
  exit "$fuzz_status"
fi
