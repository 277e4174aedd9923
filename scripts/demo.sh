#!/usr/bin/env bash
# Sets up, builds and runs the main job: a comparison of the bundled Chinook sample database with
# a changed copy of it (examples/changes.sql). No server is needed.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DVARSENTIX_BUILD_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" >/dev/null
examples/make-changed-copy.sh examples/chinook.sqlite build/chinook-changed.sqlite
status=0
build/src/cli/varsentix compare examples/chinook.sqlite build/chinook-changed.sqlite || status=$?
# Like diff(1): 1 means the databases differ, which is what the demo shows; 2 is trouble.
[ "$status" -le 1 ]
