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

xvfb_pid=""
cleanup() { if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null || true; fi; }
trap cleanup EXIT
if [ -z "${DISPLAY:-}" ]; then
  n=90
  while [ -e "/tmp/.X${n}-lock" ] || [ -e "/tmp/.X11-unix/X${n}" ]; do n=$((n + 1)); done
  Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
  xvfb_pid=$!
  export DISPLAY=":$n"
  for _ in $(seq 50); do [ -e "/tmp/.X11-unix/X${n}" ] && break; sleep 0.1; done
fi
export LIBGL_ALWAYS_SOFTWARE=1

status=0
(cd build && ctest --output-on-failure -j"$jobs" --timeout 600) || status=$?
(cd build-asan && ASAN_OPTIONS=detect_leaks=0 ctest --output-on-failure -j"$jobs" -L sanitized --timeout 600) || status=$?
# The demo under valgrind memcheck: no invalid access, no uninitialised use, no stray leak.
./scripts/memcheck.sh build/shell/engine || status=$?
exit $status
