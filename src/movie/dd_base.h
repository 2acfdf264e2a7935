// Numbers, geometry, colours, memory and the two report sinks of the dd movie
// library. Everything in the library is plain structures and functions; there
// is no platform call anywhere below src/movie.
#pragma once

#include <cstddef>
#include <cstdint>

// Signed fixed point with 10 fraction bits: 1024 is one pixel (or a scale of 1).
typedef int32_t ddFixed;

// Colour word: red in bits 0-7, green 8-15, blue 16-23, alpha 24-31.
typedef uint32_t ddColor;

// An empty rectangle has xMin 0x7fffffff and the rest 0; nothing else is empty.
struct ddRect {
  ddFixed xMin, xMax, yMin, yMax;
};

// x' = a*x + b*y + tx, y' = c*x + d*y + ty.
struct ddMatrix {
  ddFixed a, b, c, d, tx, ty;
};

// Multipliers (256 is 1.0) then additions (colour units), red green blue alpha.
struct ddCxform {
  int16_t rMul, gMul, bMul, aMul;
  int16_t rAdd, gAdd, bAdd, aAdd;
};

struct ddRectList {
  int32_t capacity;
  int32_t count;
  ddRect* rects;
};

constexpr ddFixed ddRectEmptyMarker = 0x7fffffff;
constexpr ddMatrix ddMatrixIdentity = {1024, 0, 0, 1024, 0, 0};
constexpr ddCxform ddCxformIdentity = {256, 256, 256, 256, 0, 0, 0, 0};

// Arithmetic on 32-bit values that the file controls: sums are formed wide and
// wrapped back, so hostile coordinates wrap instead of being undefined.
inline int32_t ddWrap(int64_t v) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v)));
}
inline int32_t ddMulShift(int32_t x, int32_t y) {
  return ddWrap((static_cast<int64_t>(x) * y) >> 10);
}

// Twips to ddFixed: shifted first, then divided, so 1 twip is 51.
inline ddFixed ddFixed_fromTwips(int32_t twips) {
  return static_cast<int32_t>(static_cast<uint32_t>(twips) << 10) / 20;
}
// floor(v * 1024 + 0.5); values beyond the 32-bit range saturate, NaN gives 0.
ddFixed ddFixed_fromDouble(double v);
// Converts an already scaled value (floor(v + 0.5)) with the same saturation.
int32_t ddFixed_round(double v);
inline double ddFixed_toDouble(ddFixed v) {
  return v * 0.0009765625;
}

// Rectangles.
inline ddRect ddRect_empty() {
  return ddRect{ddRectEmptyMarker, 0, 0, 0};
}
inline bool ddRect_isEmpty(const ddRect& r) {
  return r.xMin == ddRectEmptyMarker;
}
bool ddRect_overlap(const ddRect& r, const ddRect& s);
bool ddRect_contains(const ddRect& r, ddFixed x, ddFixed y);
ddRect ddRect_intersect(const ddRect& r, const ddRect& s);
ddRect ddRect_union(const ddRect& r, const ddRect& s);
void ddRect_addPoint(ddRect* r, ddFixed x, ddFixed y);

// Dirty rectangle lists.
ddRectList* ddRectList_create();
void ddRectList_destroy(ddRectList* list);
void ddRectList_add(ddRectList* list, const ddRect& r);
void ddRectList_clip(ddRectList* list, const ddRect& r);

// Matrices.
void ddMatrix_transform(const ddMatrix& m, ddFixed x, ddFixed y, ddFixed* outX, ddFixed* outY);
ddMatrix ddMatrix_concat(const ddMatrix& p, const ddMatrix& q);  // q applied first
ddMatrix ddMatrix_scale(const ddMatrix& m, ddFixed sx, ddFixed sy);
ddMatrix ddMatrix_rotate(const ddMatrix& m, double angle);
ddMatrix ddMatrix_invert(const ddMatrix& m);
bool ddMatrix_equal(const ddMatrix& p, const ddMatrix& q);

// Colour transforms.
bool ddCxform_isIdentity(const ddCxform& cx);
bool ddCxform_equal(const ddCxform& p, const ddCxform& q);
ddCxform ddCxform_concat(const ddCxform& p, const ddCxform& q);
ddColor ddCxform_apply(const ddCxform& cx, ddColor colour);
ddColor ddCxform_applyPremul(const ddCxform& cx, ddColor colour);

// Colour words.
ddColor ddColor_scale(ddColor colour, uint32_t s);
ddColor ddColor_premultiply(ddColor colour);
ddColor ddColor_under(ddColor dst, ddColor src);

// Report sinks. A sink receives the formatted text. The default warning sink
// prints it with a line end to standard output; the default fatal sink does the
// same and ends the process with status -1. A replaced fatal sink must not
// return (it may throw or jump); if it does return, the process still ends.
typedef void (*ddSink)(const char* message);
ddSink ddSetWarnSink(ddSink sink);
ddSink ddSetFatalSink(ddSink sink);
void ddWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));
[[noreturn]] void ddFatal(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Memory. Every allocation of the library goes through these. They never
// return null: exhaustion, or passing the live-byte limit, is fatal.
void* ddMalloc(size_t size);
void* ddCalloc(size_t count, size_t size);
void* ddRealloc(void* p, size_t size);
void ddFree(void* p);
char* ddStrdup(const char* s);

// Bytes held by the library right now.
size_t ddMemory_liveBytes();
// Upper bound of live bytes; 0 removes the bound. The default is 1 GiB, far
// above any real movie, so that a hostile file cannot exhaust the process.
void ddMemory_setLimit(size_t bytes);
// While tracking is on, every allocation is remembered until freed, so that
// after a fatal sink has thrown out of a parse the leftovers can be released.
void ddMemory_setTracking(bool on);
// Frees every tracked allocation still alive. Anything pointing into them is
// dead afterwards.
void ddMemory_releaseTracked();
// Ends the tracking of every allocation tracked so far: they belong to what
// was built and are freed with it, not by ddMemory_releaseTracked.
void ddMemory_keepTracked();
// A bound on live bytes that the allocator does not enforce: code that can
// do without a new object asks ddMemory_overSoftLimit and goes without.
// SIZE_MAX, the default, is no bound.
void ddMemory_setSoftLimit(size_t bytes);
bool ddMemory_overSoftLimit();
// While a budget is set, an allocation that would take the live bytes past
// base + factor * *dataBytes + allowance throws ddOverBudget instead: the
// budget grows with the data behind it (a compressed movie's once inflated).
// A null dataBytes removes the budget. Whoever sets one catches the throw.
struct ddOverBudget {};
void ddMemory_setBudget(size_t base, const uint64_t* dataBytes, uint64_t factor, size_t allowance);
bool ddMemory_isTracking();
