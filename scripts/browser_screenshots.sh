#!/usr/bin/env bash
# Takes the browser's pictures for docs/browser/ under a virtual X server, with
# the test that also runs in ctest. Usage: scripts/browser_screenshots.sh [BUILD-DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/asan}
mkdir -p docs/browser
FENNICK_SCREENSHOTS="$PWD/docs/browser" QT_QPA_PLATFORM=xcb LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp" xvfb-run -a -s "-screen 0 1280x900x24" \
  "$build/tests/fennick_ui_tests" --gtest_filter='BrowserWindow.Screenshots'
