#!/usr/bin/env bash
# Builds the main tree (gcc) and the sanitizer tree (clang, address + undefined,
# with the fuzz targets) and runs every test of both in one ctest run.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
cmake -S "$ROOT" -B "$BUILD/main" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$BUILD/main" -j "$JOBS"
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD/san" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DVOSTAN_SANITIZE=address,undefined -DVOSTAN_TEST_PREFIX=san. -DVOSTAN_JAVA=OFF \
  -DVOSTAN_BENCH=OFF -DVOSTAN_FUZZ=ON -DVOSTAN_WEBKIT=OFF
cmake --build "$BUILD/san" -j "$JOBS"
mkdir -p "$BUILD/all"
printf 'subdirs("%s" "%s")\n' "$BUILD/main" "$BUILD/san" > "$BUILD/all/CTestTestfile.cmake"
cd "$BUILD/all"
ctest --output-on-failure -j "$JOBS" --timeout 900 "$@"
