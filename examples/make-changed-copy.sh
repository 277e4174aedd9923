#!/usr/bin/env bash
# Makes the "Modified" side of the demo: a copy of the Chinook sample with changes.sql applied.
# Usage: examples/make-changed-copy.sh [ORIGINAL] DESTINATION   (DESTINATION is replaced)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
if [[ $# -eq 1 ]]; then original="$here/chinook.sqlite"; destination=$1
elif [[ $# -eq 2 ]]; then original=$1; destination=$2
else echo "usage: $0 [ORIGINAL] DESTINATION" >&2; exit 2; fi
command -v sqlite3 >/dev/null || { echo "make-changed-copy: sqlite3 is not installed" >&2; exit 2; }
tmp="$destination.tmp.$$"
trap 'rm -f "$tmp"' EXIT
cp "$original" "$tmp"
chmod u+w "$tmp"
sqlite3 -bail "$tmp" < "$here/changes.sql"
mv "$tmp" "$destination"
