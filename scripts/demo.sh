#!/usr/bin/env bash
# Sets up, builds and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DVARSENTIX_BUILD_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" >/dev/null
build/src/cli/varsentix --help
