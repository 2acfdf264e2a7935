#!/usr/bin/env bash
# install_tree_test.sh BUILD_DIR README JAVA
# Installs the build into a fresh prefix and uses it the way a game would: the
# README's example compiled against the installed jar and run headless, once
# loading the library from the natives jar and once from java.library.path;
# then the library's SONAME, the pkg-config file and find_package(vostan).
set -euo pipefail
build=$1 readme=$2
jdk=$(dirname "$(dirname "$(realpath "$3")")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "install-tree: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
jars=$prefix/share/java
[ -f "$jars/vostan.jar" ] || fail "no vostan.jar under $jars"
natives=$(ls "$jars"/vostan-natives-*.jar) || fail "no natives jar under $jars"
libdir=$(dirname "$(find "$prefix" -name 'libvostan.so' | head -1)")
[ -x "$prefix/bin/vostan-movie" ] || fail "no vostan-movie"
if "$jdk/bin/jar" tf "$jars/vostan.jar" | grep -q '^vostan/demo/'; then fail "the demo is in vostan.jar"; fi

# The example is the README's first java block after "## Use it in your game".
src=$work/src
mkdir -p "$src"
awk '/^## Use it in your game/ {in_section = 1}
     in_section && /^```java/ {in_code = 1; next}
     in_code && /^```/ {exit}
     in_code {print}' "$readme" > "$src/example.java"
class=$(sed -n 's/^public final class \([A-Za-z0-9_]*\).*/\1/p; s/^public class \([A-Za-z0-9_]*\).*/\1/p' "$src/example.java" | head -1)
[ -n "$class" ] || fail "no example class in $readme"
mv "$src/example.java" "$src/$class.java"
"$jdk/bin/javac" -Xlint:all -Werror -d "$work/classes" -cp "$jars/vostan.jar" "$src/$class.java"

run() {
  SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy "$jdk/bin/java" -Xcheck:jni "$@" 2>&1 | tee "$work/out"
  [ "${PIPESTATUS[0]}" -eq 0 ] || fail "the example failed: $*"
  ! grep -qE 'WARNING in native method|FATAL ERROR in native method' "$work/out" || fail "JNI warnings"
  grep -qE '^drew [1-9][0-9]* frames' "$work/out" || fail "the example drew no frames"
}
# The natives jar, as a game shipping jars only would run it.
run -Djava.io.tmpdir="$work" -cp "$jars/vostan.jar:$natives:$work/classes" "$class" 20
# The installed library on java.library.path.
run -Djava.library.path="$libdir" -cp "$jars/vostan.jar:$work/classes" "$class" 20

soname=$(readelf -d "$libdir/libvostan.so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
[ -n "$soname" ] && [ -f "$libdir/$soname" ] || fail "SONAME '$soname' is not installed"

export PKG_CONFIG_PATH=$libdir/pkgconfig
[ -f "$(pkg-config --variable=jar vostan)" ] || fail "pkg-config's jar is not a file"
[ -f "$(pkg-config --variable=nativesjar vostan)" ] || fail "pkg-config's natives jar is not a file"
libs=$(pkg-config --libs vostan)
ldir=$(sed -n 's/^-L\([^ ]*\) -lvostan *$/\1/p' <<<"$libs")
[ -n "$ldir" ] && [ "$(realpath "$ldir")" = "$(realpath "$libdir")" ] || fail "pkg-config --libs: $libs"

# A game's CMake build finds the package.
mkdir -p "$work/game"
cat > "$work/game/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(game NONE)
find_package(vostan 0.1 REQUIRED)
foreach(f ${VOSTAN_JAR} ${VOSTAN_NATIVES_JAR} ${VOSTAN_LIBRARY})
  if(NOT EXISTS ${f})
    message(FATAL_ERROR "find_package(vostan) gave a missing file ${f}")
  endif()
endforeach()
if(NOT TARGET vostan::vostan OR NOT TARGET vostan::vostan_java)
  message(FATAL_ERROR "find_package(vostan) gave no targets")
endif()
CMAKE
cmake -S "$work/game" -B "$work/game/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null ||
  fail "find_package(vostan) failed"
echo "install-tree: all checks passed"
