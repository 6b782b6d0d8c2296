#!/usr/bin/env bash
# Sets up the machine, builds with AddressSanitizer and UndefinedBehaviorSanitizer
# (warnings are errors) and runs every test, then runs the tests that use
# threads again under ThreadSanitizer. Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")"
scripts/setup.sh
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFENNICK_SANITIZE=ON -DFENNICK_WERROR=ON
cmake --build build/asan
ctest --test-dir build/asan --output-on-failure -j "$(nproc)"

# Threads and processes sharing the preference files and the handle table,
# the batch conversion's workers (the fennick program is built with TSan too) and
# the browser's picture threads.
cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFENNICK_TSAN=ON -DFENNICK_BENCH=OFF
cmake --build build/tsan --target fennick_tests
TSAN_OPTIONS="halt_on_error=1 exitcode=66 second_deadlock_stack=1" build/tsan/tests/fennick_tests \
  --gtest_filter='GlobalMemory.*:PreferencesTest.Concurrent*:ConcurrentAccess.*:CliTest.Batch*:Thumbnails.*'
