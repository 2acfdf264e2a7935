# Sourced by the other scripts: the JDK and the build folders.
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64
export PATH="$JAVA_HOME/bin:$PATH"
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VOSTAN_BUILD:-$ROOT/build}"
JOBS="${JOBS:-$(nproc)}"
