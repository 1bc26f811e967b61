#!/usr/bin/env bash
# Plays the demo under valgrind memcheck: a temporary copy of Assets/, an Xvfb display when
# there is none, a walk through the states with a reset and a reload, then the window is
# closed as a window manager would. Fails on any invalid read or write, any use of
# uninitialised memory or any leak in the engine's own code (scripts/valgrind.supp lists
# the library noise and the memory the engine keeps on purpose).
#
#   scripts/memcheck.sh [ENGINE]     ENGINE defaults to build/shell/engine
#   MEMCHECK_FRAMES=250 (frames to play)  MEMCHECK_SECONDS=180 (time limit for the frames)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
engine=$(realpath "${1:-build/shell/engine}")
frames=${MEMCHECK_FRAMES:-250}
limit=${MEMCHECK_SECONDS:-180}
python=/usr/bin/python3  # the system one, which has python3-xlib

work=$(mktemp -d /tmp/memcheck-XXXXXX)
. ./scripts/xvfb.sh
vg_pid=""
cleanup() {
  if [ -n "$vg_pid" ]; then kill "$vg_pid" 2>/dev/null || true; fi
  stop_display
  rm -rf "$work"
}
trap cleanup EXIT

ensure_display 120
export LIBGL_ALWAYS_SOFTWARE=1

cp -r Assets "$work/Assets"
title=$(sed -n 's:.*<Title>\(.*\)</Title>.*:\1:p' Assets/states.xml | head -n1)

# Sends WM_DELETE_WINDOW, as a window manager does when the user closes the window.
close_window() {
  "$python" - "$1" <<'PY'
import sys
from Xlib import X, display, protocol
d = display.Display()
window = d.create_resource_object("window", int(sys.argv[1]))
protocols = d.intern_atom("WM_PROTOCOLS")
delete = d.intern_atom("WM_DELETE_WINDOW")
window.send_event(protocol.event.ClientMessage(window=window, client_type=protocols,
                  data=(32, [delete, X.CurrentTime, 0, 0, 0])), event_mask=0)
d.flush()
PY
}

hold() {  # window key seconds
  xdotool windowfocus --sync "$1" keydown --window "$1" "$2" sleep "$3" keyup --window "$1" "$2" \
    2>/dev/null || true
}

(cd "$work" && exec valgrind --tool=memcheck --error-exitcode=99 --error-limit=no \
   --track-origins=yes --num-callers=40 --keep-debuginfo=yes \
   --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
   --suppressions="$root/scripts/valgrind.supp" --gen-suppressions=all \
   --log-file="$work/valgrind.log" "$engine" >"$work/stdout.txt" 2>&1) &
vg_pid=$!

started=$(date +%s)
window=""
while [ -z "$window" ] && [ $(($(date +%s) - started)) -lt "$limit" ]; do
  window=$(xdotool search --name "^${title} : [0-9]+\$" 2>/dev/null | head -n1 || true)
  kill -0 "$vg_pid" 2>/dev/null || break
  sleep 1
done
if [ -z "$window" ]; then
  echo "memcheck: the engine's window never appeared" >&2
  tail -n 40 "$work/valgrind.log" "$work/stdout.txt" >&2 || true
  exit 1
fi
echo "memcheck: window up after $(($(date +%s) - started)) s"

# Frames are counted from the title's frames-per-second, sampled once a second. On the way
# the demo goes to the arena and the stage, jumps, resets and reloads.
counted=0
step=0
keys=(g n c r l)
while [ "$counted" -lt "$frames" ] && [ $(($(date +%s) - started)) -lt "$limit" ]; do
  sleep 1
  fps=$(xdotool getwindowname "$window" 2>/dev/null | sed -n 's/.* : \([0-9][0-9]*\)$/\1/p')
  counted=$((counted + ${fps:-0}))
  step=$((step + 1))
  if [ $((step % 10)) -eq 0 ] && [ $((step / 10)) -le ${#keys[@]} ]; then
    hold "$window" "${keys[$((step / 10 - 1))]}" 1.5
  fi
done
echo "memcheck: about $counted frames in $(($(date +%s) - started)) s; closing the window"
close_window "$window"

status=0
wait "$vg_pid" || status=$?
vg_pid=""
summary=$(grep -E 'ERROR SUMMARY|definitely lost:|indirectly lost:' "$work/valgrind.log" || true)
echo "$summary"
if [ "$status" -ne 0 ]; then
  echo "memcheck: valgrind reported errors (exit $status):" >&2
  grep -v '^==[0-9]*== *$' "$work/valgrind.log" | sed -n '/^==[0-9]*== [A-Z0-9]/,$p' | head -n 300 >&2
  exit 1
fi
if [ "$counted" -lt 1 ]; then
  echo "memcheck: no frame was drawn" >&2
  exit 1
fi
echo "memcheck: clean"
