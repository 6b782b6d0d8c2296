#!/usr/bin/env bash
# Sets up the machine, builds a release build and runs the demo.
set -euo pipefail
cd "$(dirname "$0")"
scripts/setup.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DFENNICK_TESTS=OFF -DFENNICK_BENCH=OFF
cmake --build build/release --target fennick
build/release/fennick demo "$@"
