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
  // What the movie's own work has allocated, net, and how far it may go:
  // past the budget no new instance is made (see ddMovie_beginWork).
  int64_t memoryHeld;
  int64_t memoryBudget;
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

// Instances may take this many times the movie's data, beyond what opening
// it took, and a fixed allowance: a small file that places clips inside clips
// cannot grow without end, only to its budget.
constexpr int64_t ddMovieBudgetFactor = 64;
constexpr int64_t ddMovieBudgetAllowance = int64_t(16) << 20;
// Brackets work on one movie (open, frame moves, draws, resizes): what it
// allocates is charged to the movie, and while it runs the soft limit keeps
// new instances within the movie's budget. beginWork answers the mark that
// endWork takes. Only one movie works at a time.
size_t ddMovie_beginWork(ddMovie* movie);
void ddMovie_endWork(ddMovie* movie, size_t mark);
// Sets the budget from what the movie holds now and the size of its data.
void ddMovie_setBudget(ddMovie* movie);

void ddActiveList_add(ddMovie* movie, ddInstance* instance);
