// Morph shapes: two shapes with one record sequence, drawn at a ratio between
// them through a private working copy.
#pragma once

#include "movie/dd_display.h"

struct ddMorphCharacter {
  ddCharacter head;
  ddShape* start;  // owned
  ddShape* end;    // owned; same records and fills as `start`, other values
};

// A placed morph draws like a shape; `shape.shape` is the working copy.
struct ddMorphInstance {
  ddShapeInstance shape;
  ddShape* current;  // owned: `start` and `end` mixed at `ratio`
  int32_t ratio;     // last ratio, -1 before the first
  bool remade;       // the render was remade since the last update
};

// Block 46.
void ddStream_readMorphBlock(ddStream* s, ddTimeline* timeline, int32_t length);

ddInstance* ddMorph_instantiate(ddMovie* movie, ddCharacter* character);
// Mixes the working copy at `ratio`, 0 for the start and 65535 for the end,
// and remakes the render; a repeated ratio costs nothing.
void ddMorph_setRatio(ddInstance* instance, int32_t ratio);

// A deep copy: fills (gradients stop by stop), records and bounds.
ddShape* ddShape_copy(const ddShape* shape);
// Writes into `out` the fill between `start` and `end` at `ratio` (0 to 65535).
// Fills of different kinds leave `out` as it is.
void ddFill_interpolate(const ddFill& start, const ddFill& end, ddFill* out, int32_t ratio);
// Each field (end * t + start * (65536 - t)) >> 16.
ddMatrix ddMatrix_interpolate(int32_t t, const ddMatrix& start, const ddMatrix& end);
