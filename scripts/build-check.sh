#!/usr/bin/env bash
# Builds every build type with both compilers, warnings as errors, each in a
# fresh folder under $TMPDIR, and stops at the first that fails. Too long for
# CI (six whole builds); run it before a release.
#   scripts/build-check.sh                    all six
#   scripts/build-check.sh gcc:Release ...    the ones named
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
combos=("$@")
if [ "${#combos[@]}" -eq 0 ]; then
  combos=(gcc:Release clang:Release gcc:RelWithDebInfo clang:RelWithDebInfo gcc:Debug clang:Debug)
fi
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
for combo in "${combos[@]}"; do
  compiler=${combo%%:*} type=${combo#*:}
  case $compiler in
    gcc) cc=gcc cxx=g++ ;;
    clang) cc=clang cxx=clang++ ;;
    *) echo "build-check: unknown compiler $compiler" >&2; exit 2 ;;
  esac
  dir=$(mktemp -d "${TMPDIR:-/tmp}/vostan-build-check.XXXXXX")
  echo "build-check: $compiler $type in $dir"
  start=$SECONDS
  CC=$cc CXX=$cxx cmake -S "$ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$type" \
    -DVOSTAN_WERROR=ON "${launcher[@]}" >"$dir.log" 2>&1 &&
    cmake --build "$dir" -j "$JOBS" >>"$dir.log" 2>&1 || {
    echo "build-check: $compiler $type FAILED, see $dir.log" >&2
    tail -30 "$dir.log" >&2
    exit 1
  }
  echo "build-check: $compiler $type ok in $((SECONDS - start)) s"
  rm -rf "$dir" "$dir.log"
done
