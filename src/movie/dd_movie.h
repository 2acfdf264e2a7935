// The movie: stream, root timeline, root clip and target surface together.
#pragma once

#include "movie/dd_display.h"

struct ddActiveNode {
  ddActiveNode* next;
  ddClip* clip;  // empty once the clip has left the stage
};

struct ddMovie {
  ddTimeline* rootTimeline;
  ddClip* rootClip;
  ddRect viewport;
  ddMatrix rootMatrix;
  ddRectList* dirty;
  ddSurface* surface;  // owned
  ddStream* stream;    // owned
  int32_t width, height;
  float frameRate;
  ddColor backgroundColor;
  ddActiveNode *activeHead, *activeTail;    // every clip ever made, in order
  ddActiveNode *removedHead, *removedTail;  // clips that left a display list
  int32_t clipCount;
};

// Parses header and blocks into the stream's root timeline: 0, or -1 for a
// bad signature or a compressed body that does not inflate.
int ddMovie_parse(ddStream* s);

// A movie over `data`, which must stay valid until ddMovie_open returns.
ddMovie* ddMovie_create(ddSurface* surface, const uint8_t* data, int32_t length);
// Parses, makes the root clip and fits the frame to the surface. 0 or -1.
int ddMovie_open(ddMovie* movie);
// The opening step: applies the first frame of every clip not yet started.
void ddMovie_start(ddMovie* movie);
// Takes a new surface (owned) and refits the frame; everything is redrawn.
void ddMovie_resize(ddMovie* movie, ddSurface* surface);
// Updates, clears and redraws the dirty areas. The rectangles drawn are
// handed out when asked for; they stay valid until the next draw.
void ddMovie_draw(ddMovie* movie, const ddRect** outRects, int32_t* outCount);
void ddMovie_dispose(ddMovie* movie);

void ddActiveList_add(ddMovie* movie, ddInstance* instance);
