#!/usr/bin/env bash
# Builds the main tree (gcc), the sanitizer tree (clang, address + undefined,
# with the fuzz targets) and the thread sanitizer tree (clang, only the music
# mixer's tests, whose threads it watches), and runs every test of the three
# in one ctest run.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
cmake -S "$ROOT" -B "$BUILD/main" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVOSTAN_WERROR=ON
cmake --build "$BUILD/main" -j "$JOBS"
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD/san" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DVOSTAN_WERROR=ON -DVOSTAN_SANITIZE=address,undefined -DVOSTAN_TEST_PREFIX=san. -DVOSTAN_JAVA=ON \
  -DVOSTAN_BENCH=OFF -DVOSTAN_FUZZ=ON -DVOSTAN_WEBKIT=OFF
cmake --build "$BUILD/san" -j "$JOBS"
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD/tsan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVOSTAN_WERROR=ON -DVOSTAN_SANITIZE=thread -DVOSTAN_TEST_PREFIX=tsan. -DVOSTAN_JAVA=OFF -DVOSTAN_BENCH=OFF \
  -DVOSTAN_TEST_AREAS=mdj
cmake --build "$BUILD/tsan" -j "$JOBS" --target mdj_tests
mkdir -p "$BUILD/all"
printf 'subdirs("%s" "%s" "%s")\n' "$BUILD/main" "$BUILD/san" "$BUILD/tsan" \
  > "$BUILD/all/CTestTestfile.cmake"
cd "$BUILD/all"
ctest --output-on-failure -j "$JOBS" --timeout 900 "$@"
