#!/usr/bin/env bash
# Runs the Java demo against the built library. With no display, it starts
# Xvfb and plays a user with xdotool (move, click, drag, scroll, type).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
LIB="$BUILD/main"
CP="$LIB/java/vostan.jar:$LIB/java/vostan-demo.jar"
FRAMES="$LIB/demo-frames"
run() {
  "$JAVA_HOME/bin/java" -Djava.library.path="$LIB" -Dvostan.song="$LIB/songs/demo.ogg" \
    -Dvostan.movie="$LIB/movies/demo.swf" ${VOSTAN_FRAMES:+-Dvostan.frames="$VOSTAN_FRAMES"} \
    -Dvostan.page="$ROOT/java/src/vostan/demo/welcome.html" \
    -cp "$CP" vostan.demo.Demo "$@"
}

if [ -n "${DISPLAY:-}" ]; then
  run "$@"
  exit
fi
# Nobody watches a headless run: keep pictures of a few frames instead.
mkdir -p "$FRAMES"
export VOSTAN_FRAMES="$FRAMES"
if ! command -v Xvfb >/dev/null; then
  echo "demo: no display and no Xvfb: running on SDL's offscreen driver"
  SDL_VIDEODRIVER=offscreen run "$@"
  exit
fi

display=":$((90 + RANDOM % 100))"
Xvfb "$display" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null || true' EXIT
export DISPLAY="$display"
# A web view's engine cannot build its sandbox in most containers; the page is local.
export WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS=1
sleep 1  # Xvfb takes a moment to accept clients

play_user() {
  local win=""
  for _ in $(seq 50); do
    win=$(xdotool search --classname java 2>/dev/null | head -1) && [ -n "$win" ] && break
    sleep 0.1
  done
  [ -n "$win" ] || return 0
  sleep 1
  xdotool mousemove --window "$win" 100 100 sleep 0.3 mousemove --window "$win" 200 150 sleep 0.3
  xdotool mousemove --window "$win" 144 130 click 1 sleep 0.3
  xdotool click 1 sleep 0.2 click 1 sleep 0.3
  xdotool mousedown 1 mousemove --window "$win" 260 200 mouseup 1 sleep 0.3
  xdotool click 4 sleep 0.2 click 5 sleep 0.3
  xdotool type --delay 120 "Hello"
  sleep 0.3
  xdotool key b  # the figure's bloom off
  sleep 0.3
  xdotool key F10
}
play_user &
run "$@"
