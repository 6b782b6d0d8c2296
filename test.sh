#!/usr/bin/env bash
# Sets up the machine, builds with AddressSanitizer and UndefinedBehaviorSanitizer
# (warnings are errors) and runs every test. Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")"
scripts/setup.sh
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFENNICK_SANITIZE=ON -DFENNICK_WERROR=ON
cmake --build build/asan
ctest --test-dir build/asan --output-on-failure -j "$(nproc)"
