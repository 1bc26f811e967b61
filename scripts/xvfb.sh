# Sourced by the scripts that need an X display. ensure_display starts Xvfb on a free display
# number (from the one given, default 90) when DISPLAY is unset, and exports DISPLAY;
# stop_display ends that Xvfb again (nothing when the display was already there).
XVFB_PID=""
ensure_display() {
  if [ -n "${DISPLAY:-}" ]; then return 0; fi
  local n=${1:-90}
  while [ -e "/tmp/.X${n}-lock" ] || [ -e "/tmp/.X11-unix/X${n}" ]; do n=$((n + 1)); done
  Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
  XVFB_PID=$!
  export DISPLAY=":$n"
  for _ in $(seq 50); do [ -e "/tmp/.X11-unix/X${n}" ] && break; sleep 0.1; done
}
stop_display() {
  if [ -n "$XVFB_PID" ]; then kill "$XVFB_PID" 2>/dev/null || true; fi
}
