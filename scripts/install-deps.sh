#!/usr/bin/env bash
# Installs the Debian packages VarsentiX needs that are missing. Usage:
#   scripts/install-deps.sh          build and run (compiler, CMake, libraries, ODBC drivers)
#   scripts/install-deps.sh --test   also what the test suite needs (GoogleTest, database servers)
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  libsqlite3-dev            # the embedded SQLite provider
  unixodbc unixodbc-dev     # ODBC driver manager (loaded at run time) and its headers
  mdbtools-dev              # libmdb: Access files
  libexpat1-dev             # XML persistence of record sets
  libsqliteodbc odbc-postgresql odbc-mariadb   # ODBC drivers
  sqlite3                   # makes the changed copy of the demo database
)
if [[ "${1:-}" == "--test" ]]; then
  packages+=(
    libgtest-dev libgmock-dev
    postgresql mariadb-server mariadb-client
    sqlite3-tools
    clang libclang-rt-14-dev  # the libFuzzer harnesses of fuzz/ (scripts/fuzz.sh)
  )
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
