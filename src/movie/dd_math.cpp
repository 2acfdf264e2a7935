// Fixed point, rectangle, matrix, colour transform and colour word arithmetic.
#include <algorithm>
#include <cmath>

#include "movie/dd_base.h"

int32_t ddFixed_round(double v) {
  double r = std::floor(v + 0.5);
  if (!(r == r)) return 0;
  if (r >= 2147483647.0) return INT32_MAX;
  if (r <= -2147483648.0) return INT32_MIN;
  return static_cast<int32_t>(r);
}

ddFixed ddFixed_fromDouble(double v) {
  return ddFixed_round(v * 1024.0);
}

// Rectangles

bool ddRect_overlap(const ddRect& r, const ddRect& s) {
  if (ddRect_isEmpty(r) || ddRect_isEmpty(s)) return false;
  return r.xMin <= s.xMax && s.xMin <= r.xMax && r.yMin <= s.yMax && s.yMin <= r.yMax;
}

bool ddRect_contains(const ddRect& r, ddFixed x, ddFixed y) {
  if (ddRect_isEmpty(r)) return false;
  return x >= r.xMin && x <= r.xMax && y >= r.yMin && y <= r.yMax;
}

ddRect ddRect_intersect(const ddRect& r, const ddRect& s) {
  if (ddRect_isEmpty(r)) return r;
  if (ddRect_isEmpty(s)) return s;
  if (!ddRect_overlap(r, s)) return ddRect_empty();
  return ddRect{std::max(r.xMin, s.xMin), std::min(r.xMax, s.xMax), std::max(r.yMin, s.yMin),
                std::min(r.yMax, s.yMax)};
}

ddRect ddRect_union(const ddRect& r, const ddRect& s) {
  if (ddRect_isEmpty(r)) return s;
  if (ddRect_isEmpty(s)) return r;
  return ddRect{std::min(r.xMin, s.xMin), std::max(r.xMax, s.xMax), std::min(r.yMin, s.yMin),
                std::max(r.yMax, s.yMax)};
}

void ddRect_addPoint(ddRect* r, ddFixed x, ddFixed y) {
  if (ddRect_isEmpty(*r)) {
    *r = ddRect{x, x, y, y};
    return;
  }
  r->xMin = std::min(r->xMin, x);
  r->xMax = std::max(r->xMax, x);
  r->yMin = std::min(r->yMin, y);
  r->yMax = std::max(r->yMax, y);
}

// Dirty rectangle lists

ddRectList* ddRectList_create() {
  ddRectList* list = static_cast<ddRectList*>(ddCalloc(1, sizeof(ddRectList)));
  return list;
}

void ddRectList_destroy(ddRectList* list) {
  if (!list) return;
  ddFree(list->rects);
  ddFree(list);
}

void ddRectList_add(ddRectList* list, const ddRect& r) {
  if (ddRect_isEmpty(r)) return;
  int32_t first = 0;
  while (first < list->count && !ddRect_overlap(list->rects[first], r)) first++;
  if (first == list->count) {
    if (list->count == list->capacity) {
      list->capacity += 4;
      list->rects = static_cast<ddRect*>(ddRealloc(list->rects, list->capacity * sizeof(ddRect)));
    }
    list->rects[list->count++] = r;
    return;
  }
  // Merged entries stay in the list as empty rectangles, which keeps the
  // order of the others and costs nothing when they are drawn.
  ddRect merged = ddRect_union(r, list->rects[first]);
  for (int32_t i = first + 1; i < list->count; i++) {
    if (ddRect_overlap(list->rects[i], merged)) {
      merged = ddRect_union(merged, list->rects[i]);
      list->rects[i] = ddRect_empty();
    }
  }
  list->rects[first] = merged;
}

void ddRectList_clip(ddRectList* list, const ddRect& r) {
  int32_t kept = 0;
  for (int32_t i = 0; i < list->count; i++) {
    if (ddRect_overlap(list->rects[i], r))
      list->rects[kept++] = ddRect_intersect(list->rects[i], r);
  }
  list->count = kept;
}

// Matrices: each product is formed in 64 bits and shifted on its own.

void ddMatrix_transform(const ddMatrix& m, ddFixed x, ddFixed y, ddFixed* outX, ddFixed* outY) {
  int64_t nx = ((int64_t(x) * m.a) >> 10) + ((int64_t(y) * m.b) >> 10) + m.tx;
  int64_t ny = ((int64_t(x) * m.c) >> 10) + ((int64_t(y) * m.d) >> 10) + m.ty;
  *outX = ddWrap(nx);
  *outY = ddWrap(ny);
}

ddMatrix ddMatrix_concat(const ddMatrix& p, const ddMatrix& q) {
  auto mul = [](int32_t x, int32_t y) { return (int64_t(x) * y) >> 10; };
  ddMatrix r;
  r.a = ddWrap(mul(p.a, q.a) + mul(p.b, q.c));
  r.b = ddWrap(mul(q.b, p.a) + mul(q.d, p.b));
  r.c = ddWrap(mul(p.c, q.a) + mul(p.d, q.c));
  r.d = ddWrap(mul(q.b, p.c) + mul(q.d, p.d));
  r.tx = ddWrap(mul(q.tx, p.a) + mul(q.ty, p.b) + p.tx);
  r.ty = ddWrap(mul(q.tx, p.c) + mul(q.ty, p.d) + p.ty);
  return r;
}

ddMatrix ddMatrix_scale(const ddMatrix& m, ddFixed sx, ddFixed sy) {
  ddMatrix r = m;
  r.a = ddMulShift(m.a, sx);
  r.b = ddMulShift(m.b, sx);
  r.c = ddMulShift(m.c, sy);
  r.d = ddMulShift(m.d, sy);
  return r;
}

ddMatrix ddMatrix_rotate(const ddMatrix& m, double angle) {
  double cs = std::cos(angle), sn = std::sin(angle);
  double a = ddFixed_toDouble(m.a), b = ddFixed_toDouble(m.b);
  double c = ddFixed_toDouble(m.c), d = ddFixed_toDouble(m.d);
  ddMatrix r = m;
  r.a = ddFixed_fromDouble(a * cs - c * sn);
  r.b = ddFixed_fromDouble(b * cs - d * sn);
  r.c = ddFixed_fromDouble(a * sn + c * cs);
  r.d = ddFixed_fromDouble(b * sn + d * cs);
  return r;
}

ddMatrix ddMatrix_invert(const ddMatrix& m) {
  double a = ddFixed_toDouble(m.a), b = ddFixed_toDouble(m.b);
  double c = ddFixed_toDouble(m.c), d = ddFixed_toDouble(m.d);
  double tx = ddFixed_toDouble(m.tx), ty = ddFixed_toDouble(m.ty);
  double det = a * d - c * b;
  // A singular matrix gives infinities or NaN, which the conversion saturates.
  auto divide = [det](double v) -> float {
    if (det != 0) return static_cast<float>(v / det);
    return v > 0 ? HUGE_VALF : v < 0 ? -HUGE_VALF : NAN;
  };
  float na = divide(d), nb = divide(-b), nc = divide(-c), nd = divide(a);
  double ntx = -(na * tx + nb * ty);
  double nty = -(nd * ty + nc * tx);
  return ddMatrix{ddFixed_fromDouble(na), ddFixed_fromDouble(nb),  ddFixed_fromDouble(nc),
                  ddFixed_fromDouble(nd), ddFixed_fromDouble(ntx), ddFixed_fromDouble(nty)};
}

bool ddMatrix_equal(const ddMatrix& p, const ddMatrix& q) {
  return p.a == q.a && p.b == q.b && p.c == q.c && p.d == q.d && p.tx == q.tx && p.ty == q.ty;
}

// Colour transforms

bool ddCxform_equal(const ddCxform& p, const ddCxform& q) {
  return p.rMul == q.rMul && p.gMul == q.gMul && p.bMul == q.bMul && p.aMul == q.aMul &&
         p.rAdd == q.rAdd && p.gAdd == q.gAdd && p.bAdd == q.bAdd && p.aAdd == q.aAdd;
}

bool ddCxform_isIdentity(const ddCxform& cx) {
  return ddCxform_equal(cx, ddCxformIdentity);
}

ddCxform ddCxform_concat(const ddCxform& p, const ddCxform& q) {
  if (ddCxform_isIdentity(p)) return q;
  if (ddCxform_isIdentity(q)) return p;
  auto mul = [](int16_t x, int16_t y) { return static_cast<int16_t>((int32_t(x) * y) >> 8); };
  auto add = [](int16_t x, int16_t y) { return static_cast<int16_t>(int32_t(x) + y); };
  return ddCxform{mul(p.rMul, q.rMul), mul(p.gMul, q.gMul), mul(p.bMul, q.bMul),
                  mul(p.aMul, q.aMul), add(p.rAdd, q.rAdd), add(p.gAdd, q.gAdd),
                  add(p.bAdd, q.bAdd), add(p.aAdd, q.aAdd)};
}

ddColor ddCxform_apply(const ddCxform& cx, ddColor colour) {
  if (ddCxform_isIdentity(cx)) return colour;
  auto channel = [colour](int shift, int16_t mul, int16_t add) {
    int32_t v = int32_t((colour >> shift) & 255);
    v = ((v * mul) >> 8) + add;
    return uint32_t(std::clamp(v, 0, 255)) << shift;
  };
  return channel(0, cx.rMul, cx.rAdd) | channel(8, cx.gMul, cx.gAdd) |
         channel(16, cx.bMul, cx.bAdd) | channel(24, cx.aMul, cx.aAdd);
}

ddColor ddCxform_applyPremul(const ddCxform& cx, ddColor colour) {
  return ddColor_premultiply(ddCxform_apply(cx, colour));
}

// Colour words

ddColor ddColor_scale(ddColor colour, uint32_t s) {
  uint32_t r = ((colour & 255) * s) >> 8;
  uint32_t g = (((colour >> 8) & 255) * s) >> 8;
  uint32_t b = (((colour >> 16) & 255) * s) >> 8;
  uint32_t a = (((colour >> 24) & 255) * s) >> 8;
  return (r & 255) | ((g & 255) << 8) | ((b & 255) << 16) | ((a & 255) << 24);
}

ddColor ddColor_premultiply(ddColor colour) {
  uint32_t a = colour >> 24;
  if (a == 255) return colour;
  uint32_t r = ((colour & 255) * a) >> 8;
  uint32_t g = (((colour >> 8) & 255) * a) >> 8;
  uint32_t b = (((colour >> 16) & 255) * a) >> 8;
  return r | (g << 8) | (b << 16) | (a << 24);
}

ddColor ddColor_under(ddColor dst, ddColor src) {
  uint32_t a = dst >> 24;
  if (a == 255 || src < 0x01000000u) return dst;
  if (a == 0) return src;
  return ddColor_scale(src, 255 - a) + dst;
}
