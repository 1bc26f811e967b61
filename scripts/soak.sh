#!/usr/bin/env bash
# Soak run: plays the demo for a while with random key presses (the demo's keys, now and then
# the return key "r" and the reload key "l"), sampling the title's frame rate and the
# process's resident memory every few seconds. Fails if the engine dies, if the frame rate
# collapses, or if memory grows beyond what the resets and reloads must re-create.
#
#   scripts/soak.sh [SECONDS] [ENGINE]   defaults: 600, build/shell/engine
set -euo pipefail
cd "$(dirname "$0")/.."
duration=${1:-600}
engine=$(realpath "${2:-build/shell/engine}")
python=/usr/bin/python3

work=$(mktemp -d /tmp/soak-XXXXXX)
. ./scripts/xvfb.sh
engine_pid=""
cleanup() {
  if [ -n "$engine_pid" ]; then kill "$engine_pid" 2>/dev/null || true; fi
  stop_display
  rm -rf "$work"
}
trap cleanup EXIT

ensure_display 140
export LIBGL_ALWAYS_SOFTWARE=1

cp -r Assets "$work/Assets"
title=$(sed -n 's:.*<Title>\(.*\)</Title>.*:\1:p' Assets/states.xml | head -n1)
(cd "$work" && exec "$engine" >"$work/stdout.txt" 2>&1) &
engine_pid=$!

fail() {
  echo "soak: FAIL: $*" >&2
  tail -n 20 "$work/stdout.txt" >&2 || true
  exit 1
}
alive() { kill -0 "$engine_pid" 2>/dev/null; }
rss_kb() { awk '/^VmRSS:/ {print $2}' "/proc/$engine_pid/status" 2>/dev/null || echo 0; }
fps() { xdotool getwindowname "$window" 2>/dev/null | sed -n 's/.* : \([0-9][0-9]*\)$/\1/p'; }
press() {  # key seconds
  xdotool keydown --window "$window" "$1" sleep "$2" keyup --window "$window" "$1" 2>/dev/null ||
    true
}

window=""
for _ in $(seq 150); do
  window=$(xdotool search --name "^${title} : [0-9]+\$" 2>/dev/null | head -n1 || true)
  [ -n "$window" ] && break
  alive || fail "the engine ended at start-up"
  sleep 0.2
done
[ -n "$window" ] || fail "no window titled \"$title : N\""
xdotool windowfocus --sync "$window" 2>/dev/null || true
sleep 3

# What one reset and one reload cost in memory: measured here, three of each.
base=$(rss_kb)
start_fps=$(fps)
for _ in 1 2 3; do press r 0.2; sleep 1.5; done
after_resets=$(rss_kb)
for _ in 1 2 3; do press l 0.2; sleep 1.5; done
after_reloads=$(rss_kb)
reset_kb=$(((after_resets - base) / 3))
reload_kb=$(((after_reloads - after_resets) / 3))
[ "$reset_kb" -gt 0 ] || reset_kb=1
[ "$reload_kb" -gt 0 ] || reload_kb=1
echo "soak: start ${base} kB, ${start_fps:-?} fps; one reset ~${reset_kb} kB, one reload ~${reload_kb} kB"

keys=(a d w s z x j k i m g n t c v)
resets=3
reloads=3
low=0
peak_fps=${start_fps:-0}
min_fps=999999
started=$(date +%s)
next_sample=$((started + 5))
while [ $(($(date +%s) - started)) -lt "$duration" ]; do
  alive || fail "the engine died after $(($(date +%s) - started)) s"
  roll=$((RANDOM % 40))
  if [ "$roll" -eq 0 ]; then
    press r 0.15
    resets=$((resets + 1))
  elif [ "$roll" -eq 1 ]; then
    press l 0.15
    reloads=$((reloads + 1))
  else
    press "${keys[$((RANDOM % ${#keys[@]}))]}" "0.$((RANDOM % 3 + 1))"
  fi
  now=$(date +%s)
  if [ "$now" -ge "$next_sample" ]; then
    next_sample=$((now + 5))
    rate=$(fps)
    rss=$(rss_kb)
    rate=${rate:-0}
    [ "$rate" -gt "$peak_fps" ] && peak_fps=$rate
    [ "$rate" -lt "$min_fps" ] && min_fps=$rate
    # Growth allowed: each reset and reload re-creates what it must, plus 64 MB and a quarter.
    allowed=$((base + resets * reset_kb + reloads * reload_kb))
    allowed=$((allowed + allowed / 4 + 65536))
    echo "soak: $((now - started)) s  ${rate} fps  ${rss} kB (bound ${allowed} kB)  resets ${resets} reloads ${reloads}"
    [ "$rss" -le "$allowed" ] || fail "memory ${rss} kB beyond ${allowed} kB"
    # A collapse: under a twentieth of the best rate seen, three samples in a row.
    if [ $((rate * 20)) -lt "$peak_fps" ]; then low=$((low + 1)); else low=0; fi
    [ "$low" -lt 3 ] || fail "frame rate collapsed to ${rate} fps (best ${peak_fps})"
  fi
done
alive || fail "the engine died at the end"
echo "soak: PASS after ${duration} s: ${resets} resets, ${reloads} reloads; fps ${min_fps}..${peak_fps}; memory $(rss_kb) kB (start ${base} kB)"
