#!/usr/bin/env bash
# Takes the windows' pictures for docs/browser/ and docs/windows/ under a
# virtual X server, with the tests that also run in ctest.
# Usage: scripts/screenshots.sh [BUILD-DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/asan}
mkdir -p docs/browser docs/windows
FENNICK_SCREENSHOTS="$PWD/docs" QT_QPA_PLATFORM=xcb LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp" xvfb-run -a -s "-screen 0 1280x900x24" \
  "$build/tests/fennick_ui_tests" --gtest_filter='*.Screenshots'
FENNICK_SCREENSHOTS="$PWD/docs" QT_QPA_PLATFORM=xcb LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp" dbus-run-session -- \
  xvfb-run -a -s "-screen 0 1280x900x24" "$build/tests/fennick_host_tests" --gtest_filter='*.Screenshots'
