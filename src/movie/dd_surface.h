// A block of 32-bit premultiplied colour words: render target and bitmap store.
#pragma once

#include "movie/dd_base.h"

enum { ddSurfaceOwnsPixels = 1 };

struct ddSurface {
  uint32_t flags;
  uint16_t width, height;
  uint32_t stride;  // bytes per row
  ddColor* pixels;  // row 0 on top
};

// Zero-filled pixels, owned by the surface.
ddSurface* ddSurface_create(int width, int height);
void ddSurface_destroy(ddSurface* surface);
