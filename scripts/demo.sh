#!/usr/bin/env bash
# Builds the library and runs the Java demo. Without a display it starts Xvfb and
# drives the window with xdotool, so there is something to see in the log.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
cmake -S "$ROOT" -B "$BUILD/main" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVOSTAN_TESTS=OFF -DVOSTAN_BENCH=OFF \
  -DVOSTAN_WERROR=ON
cmake --build "$BUILD/main" -j "$JOBS" --target vostan vostan_demo vostan_java \
  vostan_demo_java mdjsong_demo demo_movie
exec "$ROOT/scripts/run-demo.sh" "$@"
