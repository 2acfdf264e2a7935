#!/usr/bin/env bash
# java-test.sh LIBDIR CLASSPATH MAINCLASS [ARGS...]
# A JVM with strict JNI checking; any JNI warning fails the test.
set -uo pipefail
libdir=$1 cp=$2 main=$3
shift 3
java_bin="${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}/bin/java"
out=$(mktemp)
"$java_bin" -Xcheck:jni -Djava.library.path="$libdir" -cp "$cp" "$main" "$@" 2>&1 | tee "$out"
rc=${PIPESTATUS[0]}
if grep -qE 'WARNING in native method|FATAL ERROR in native method|JNI call made with exception pending|Warning: .*JNI' "$out"; then
  echo "java-test: JNI warnings in the output" >&2
  rc=1
fi
# The sound library complains at exit about a device left open or a thread
# that still holds its context.
if grep -qE 'device(s)? not closed|possible leak' "$out"; then
  echo "java-test: the sound device was not shut down cleanly" >&2
  rc=1
fi
rm -f "$out"
exit "$rc"
