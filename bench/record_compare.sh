#!/usr/bin/env bash
# Runs bench/record_compare with a PostgreSQL server on loopback: when VARSENTIX_PG_ODBC is not
# set, starts the test servers for the run and stops them afterwards. Arguments go to the
# benchmark unchanged (e.g. --rows 2000 --runs 2).
#
#   bench/record_compare.sh [options]      BUILD_DIR (default build-bench) holds the build with
#                                          -DVARSENTIX_BUILD_BENCH=ON
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bench="$root/${BUILD_DIR:-build-bench}/bench/record_compare"
[ -x "$bench" ] || { echo "no $bench: build with -DVARSENTIX_BUILD_BENCH=ON first" >&2; exit 1; }
[ -x /usr/bin/sqldiff ] || echo "note: /usr/bin/sqldiff is missing (Debian package sqlite3-tools)" >&2

if [ -z "${VARSENTIX_PG_ODBC:-}" ] && [[ " $* " != *" --sqlite-only "* ]]; then
  eval "$("$root/scripts/test-servers.sh" start)"
  trap '"$root/scripts/test-servers.sh" stop' EXIT
fi
"$bench" "$@"
