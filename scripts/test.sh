#!/usr/bin/env bash
# Installs what is missing, builds the engine and runs every test suite.
# Starts its own Xvfb when there is no display, so it runs on a headless machine.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

./scripts/install-deps.sh

jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$jobs"

# Bad-input suites also run under AddressSanitizer and UndefinedBehaviorSanitizer.
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DENGINE_SANITIZE=ON -DENGINE_BUILD_BENCH=OFF >/dev/null
cmake --build build-asan -j"$jobs" --target sanitized_tests

. ./scripts/xvfb.sh
trap stop_display EXIT
ensure_display 90
export LIBGL_ALWAYS_SOFTWARE=1

status=0
(cd build && ctest --output-on-failure -j"$jobs" --timeout 600) || status=$?
(cd build-asan && ASAN_OPTIONS=detect_leaks=0 ctest --output-on-failure -j"$jobs" -L sanitized --timeout 600) || status=$?
# The demo under valgrind memcheck: no invalid access, no uninitialised use, no stray leak.
./scripts/memcheck.sh build/shell/engine || status=$?
exit $status
