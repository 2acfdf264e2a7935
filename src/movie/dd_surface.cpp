#include "movie/dd_surface.h"

ddSurface* ddSurface_create(int width, int height) {
  ddSurface* s = static_cast<ddSurface*>(ddCalloc(1, sizeof(ddSurface)));
  s->flags = ddSurfaceOwnsPixels;
  s->width = static_cast<uint16_t>(width);
  s->height = static_cast<uint16_t>(height);
  s->stride = uint32_t(s->width) * 4;
  s->pixels = static_cast<ddColor*>(ddCalloc(size_t(s->width) * s->height + 1, sizeof(ddColor)));
  return s;
}

void ddSurface_destroy(ddSurface* surface) {
  if (!surface) return;
  if (surface->flags & ddSurfaceOwnsPixels) ddFree(surface->pixels);
  ddFree(surface);
}
