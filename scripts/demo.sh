#!/usr/bin/env bash
# Builds the library and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
ninja -C build
build/tools/vemtool demo "${1:-vem-demo}"
