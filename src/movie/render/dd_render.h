// The shape rasteriser: parsed shapes under a matrix become premultiplied
// pixels of a ddSurface.
//
// Drawing is front to back: a target pixel starts transparent, the nearest
// object goes in first and everything after it goes under what is there.
// Edges are flattened and transformed to device space once and kept until the
// matrix changes. Scan conversion is exact-area: every scanline accumulates
// 20-bit coverage per cell in one shared row, through the cells edges cross
// and full spans between neighbouring edges, and the fills read bits 12 to 19
// of a cell, so a span over a partly covered edge cell wraps back to the
// partial value. Every paint adds into the same row: where two fills meet in
// a cell, the first paint of the row's list draws their sum and the other
// finds nothing, so neighbouring fills never blend.
//
// The rows are shared by every render in the process: one draw at a time.
#pragma once

#include "movie/dd_character.h"
#include "movie/dd_display.h"
#include "movie/dd_surface.h"

// Width of the shared rows, and so the widest target that can be drawn.
constexpr int ddRowWidth = 2048;
// A whole cell of coverage.
constexpr uint32_t ddFullCell = 0xFFFFF;
// Paints a render keeps beyond its shape's fills, for characters that add some.
constexpr int ddExtraPaints = 40;

// Run-time form of a ddFill.
struct ddPaint {
  int32_t kind;
  decltype(ddFill::data) data;
  ddMatrix fillMatrix;
  ddMatrix inverse;    // target pixels to fill space
  uint32_t* coverage;  // the shared coverage row
  int32_t minX, maxX;  // cells touched on this scanline, maxX exclusive; maxX -1 when idle
  ddPaint* nextInRow;  // paints of the current scanline
  uint8_t inRow;
};

// y0 < y1 always: the top end comes first.
struct ddEdge {
  ddFixed x0, y0, x1, y1;
  ddFixed dxdy;  // x change per 1.0 of y, signed
  ddFixed dydx;  // y change per 1.0 of x, never negative; 0 when vertical
  ddFixed xRowStart, yColStart;
  ddFixed curX, curY;
  ddColor lineColor;
  uint16_t lineWidth;  // 0: no stroke
  uint8_t reversed;    // drawn bottom to top
  ddPaint *left, *right;
};

// The edges between two group records of a shape.
struct ddEdgeGroup {
  ddEdgeGroup* next;  // nearer the front
  ddRect bounds;
  ddEdge* edges;
  int32_t count;
  ddEdge** sorted;  // by y0, x0, dxdy
  int32_t nextIndex;
  ddEdge** active;  // edges of the current scanline, room for all of them
  int32_t activeCount;
  uint8_t flip;  // 1: an edge's left paint fills the span to its right
  int32_t capacity;
};

// Per-instance state of one shape.
struct ddRender {
  ddShape* shape;  // not owned
  ddRect bounds;   // device bounds of the current edges
  ddRender* mask;
  ddPaint* paints;
  int32_t paintCount;
  ddMatrix matrix;  // of the current edges; all zero until the first update
  ddEdgeGroup* groups;
};

// What a matrix change asks of cached edges.
enum ddMatrixChange {
  ddMatrixSame = 0,
  ddMatrixMoved = 1,    // translation only
  ddMatrixScaled = 2,   // uniform scale
  ddMatrixSheared = 4,  // other linear change without c
  ddMatrixRebuild = 8,
};
int ddMatrix_compare(const ddMatrix& old, const ddMatrix& now);

ddRender* ddRender_create(ddShape* shape);
void ddRender_destroy(ddRender* render);
// True when the device geometry changed; the old and new bounds then go to
// `dirty` when given.
bool ddRender_update(ddRender* render, ddRectList* dirty, const ddMatrix* matrix);
// Composites the shape under what `surface` holds inside `clip`. A surface wider
// than the shared rows is refused with a message: nothing drawn, false.
bool ddRender_draw(ddRender* render, ddSurface* surface, const ddMatrix* matrix,
                   const ddCxform* cxform, const ddRect* clip);
bool ddRender_hit(const ddRender* render, ddFixed x, ddFixed y);
// Gives a glyph's render its one solid paint, in place of any it had.
void ddRender_setTextColor(ddRender* render, ddColor colour);

// Installs the rasteriser as the way placed shapes are drawn (see
// ddShapeInstance_setOps); shapes placed afterwards draw through it.
void ddRender_install();
extern const ddShapeInstanceOps ddRenderShapeOps;

// Building and scanning, exposed for tests and for characters that draw
// through renders.
void ddRender_buildEdges(ddRender* render, const ddMatrix& matrix);
void ddEdge_setRowStarts(ddEdge* edge);
void ddEdgeGroup_freeAll(ddEdgeGroup* group);
void ddEdgeGroup_scanRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, const uint8_t* maskRow, const ddCxform& cxform);
void ddEdgeGroup_maskRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, uint8_t* maskRow);
void ddEdgeGroup_reset(ddEdgeGroup* group);
void ddEdgeGroup_drawStrokes(ddEdgeGroup* group, ddSurface* surface, const ddCxform& cxform,
                             const ddRect& clip);
void ddEdge_stroke(const ddEdge* edge, ddColor colour, ddSurface* surface, const ddRect& clip);

// Coverage of a cell, 0 to 255, from its bits 12 to 19.
inline uint32_t ddCoverage_level(uint32_t cell) {
  return (cell >> 12) & 255;
}

// Fills a paint's cells [minX, maxX) of row y into the pixel row, and leaves
// those cells zero.
void ddPaint_fillRow(ddPaint* paint, int y, ddColor* row, const ddCxform& cxform);
void ddPaint_updateInverse(ddPaint* paint, const ddMatrix& matrix);

// floor(sqrt(n)) * 32; 0x1FFFE0 above 0xFFFDFFFF.
uint32_t ddIsqrt(uint32_t n);
ddColor ddColor_lerp(ddColor p, ddColor q, int32_t f);
ddColor ddBitmap_sampleTiled(const ddSurface* bitmap, ddFixed u, ddFixed v);
ddColor ddBitmap_sampleClamped(const ddSurface* bitmap, ddFixed u, ddFixed v);

// Anti-aliased hairline plotting across two neighbouring pixels of a row or a
// column; `pos` is the position across the line in ddFixed, pixels outside
// [minPx, maxPx) are left alone.
void ddSurface_plotRow(ddSurface* surface, ddFixed pos, int row, ddColor colour, int minPx,
                       int maxPx);
void ddSurface_plotColumn(ddSurface* surface, ddFixed pos, int column, ddColor colour, int minPx,
                          int maxPx);

// The shared rows, zero between scanlines.
uint32_t* ddRender_coverageRow();
ddColor* ddRender_pixelRow();
uint8_t* ddRender_maskRow();
