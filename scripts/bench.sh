#!/usr/bin/env bash
# Builds the benchmarks of the main tree, runs them and prints one table: each
# ratio the project tracks, its goal, and whether this run meets it. Ratios
# are of CPU time per iteration where the benchmark measures it (the machine
# is shared), of best wall times where a benchmark times itself. Pass a
# number to run the Java movie benchmark for that many seconds (default 2);
# MOVIE_BENCH_SWF picks its movie.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/env.sh"
SECONDS_JAVA=${1:-2}
B="$BUILD/main"
OUT=$(mktemp -d)
trap 'rm -rf "$OUT"' EXIT
cmake -S "$ROOT" -B "$B" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
BENCHES=(bench_texture_upload pixelsample_bench movie_bench bench_quads movie_render_bench bench_font)
cmake --build "$B" -j "$JOBS" --target "${BENCHES[@]}" vostan >/dev/null
export SDL_VIDEODRIVER=offscreen
run() {  # name, path, extra arguments
  local name=$1 exe=$2
  shift 2
  echo "running $name" >&2
  "$exe" --benchmark_out="$OUT/$name.json" --benchmark_out_format=json "$@" >/dev/null 2>&1 ||
    echo "$name failed" >&2
}
run textures "$B/bench/textures/bench_texture_upload" --benchmark_filter=/512
run pixelsample "$B/bench/pixelsample/pixelsample_bench"
run movie "$B/bench/movie/movie_bench"
run quads "$B/bench/graphics/bench_quads"
run render "$B/bench/movie_render/movie_render_bench"
run font "$B/bench/font/bench_font"
if cmake --build "$B" -j "$JOBS" --target vostan_java_tests >/dev/null 2>&1; then
  echo "running java movie" >&2
  SWF=${MOVIE_BENCH_SWF:-$(sed -n 's/^MOVIE_BENCH_SWF:FILEPATH=//p' "$B/CMakeCache.txt")}
  java -Djava.library.path="$B" -cp "$B/java/vostan.jar:$B/java/vostan-tests.jar" \
    vostan.bench.MovieBench "$SWF" "$SECONDS_JAVA" >"$OUT/java_movie.txt" 2>&1 ||
    echo "java movie failed" >&2
fi
python3 - "$OUT" <<'PY'
import json, os, re, statistics, sys
out = sys.argv[1]
scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

def load(name):
    path = os.path.join(out, name + ".json")
    if not os.path.exists(path):
        return {}
    runs = json.load(open(path)).get("benchmarks", [])
    return {r["name"]: r for r in runs if r.get("run_type") == "iteration" and not r.get("error_occurred")}

def t(runs, name, kind="cpu_time"):
    r = runs.get(name)
    return r[kind] * scale[r.get("time_unit", "ns")] if r else None

rows = []
def row(what, value, goal, higher=True):
    if value is None:
        rows.append((what, "-", goal, higher, "missing"))
    else:
        ok = value >= goal if higher else value <= goal
        rows.append((what, f"{value:.2f}", goal, higher, "pass" if ok else "FAIL"))

def speed(runs, ours, theirs, kind="cpu_time"):
    a, b = t(runs, ours, kind), t(runs, theirs, kind)
    return b / a if a and b else None

tex = load("textures")
row("updateTexture 512 / glTexSubImage2D", speed(tex, "BM_UpdateTexture/512", "BM_PlainTexSubImage/512"), 0.5)

pix = load("pixelsample")
for side, where in (("64", "in cache"), ("1024", "out of cache")):
    conv = [1 / r["vs_memcpy"] for n, r in pix.items() if f"/{side}/" in n and r.get("vs_memcpy")]
    row(f"converters / memcpy, {where}, worst", min(conv) if conv else None, 0.5)
    row(f"converters / memcpy, {where}, median", statistics.median(conv) if conv else None, 0.5)

movie = load("movie")
row("movie parse / zlib inflate", speed(movie, "BM_ParseLargestPlain", "BM_InflateLargest"), 0.6)

quads = load("quads")
row("immediate quads / plain GL", speed(quads, "BM_ImmediateQuads/5000/real_time",
                                       "BM_PlainGLQuads/5000/manual_time", "real_time"), 0.8)

render = load("render")
for size in (16, 64, 256, 1024):
    row(f"rasteriser / cairo, {size} px", speed(render, f"BM_Vostan/{size}", f"BM_Cairo/{size}"), 1.0)
row("rasteriser / cairo, corpus frame", speed(render, "BM_CorpusFrame", "BM_CorpusFrameCairo"), 1.0)

font = load("font")
for size in (16, 32):
    row(f"glyph cells / FreeType, {size} px", speed(font, f"BM_Cells/{size}/0", f"BM_FreeTypeRender/{size}"), 0.5)

fps = None
jpath = os.path.join(out, "java_movie.txt")
if os.path.exists(jpath):
    m = re.search(r"frames cycling\s+([0-9.]+)", open(jpath).read())
    fps = float(m.group(1)) if m else None
rows.append(("Java movie into a texture, frames/s", f"{fps:.0f}" if fps else "-", 8000, True,
             "missing" if fps is None else ("pass" if fps >= 8000 else "FAIL")))

print(f"{'ratio (ours as a speed over theirs)':44} {'value':>8} {'goal':>8}  result")
for what, value, goal, higher, result in rows:
    print(f"{what:44} {value:>8} {('>= ' if higher else '<= ') + str(goal):>8}  {result}")
PY
