#!/usr/bin/env bash
# with-xvfb.sh COMMAND [ARGS...]
# Runs the command against a private Xvfb display of its own, closed afterwards.
set -uo pipefail
number=$(mktemp)
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null; rm -f "$number"' EXIT
for _ in $(seq 200); do
  [ -s "$number" ] && break
  sleep 0.05
done
if [ ! -s "$number" ]; then
  echo "with-xvfb: Xvfb did not start" >&2
  exit 1
fi
DISPLAY=":$(head -1 "$number")" "$@"
