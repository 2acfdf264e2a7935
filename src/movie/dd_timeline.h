// Timelines: the root movie and sprites, stored as one complete list of
// placements per frame, so that any frame can be shown without replaying.
#pragma once

#include "movie/dd_character.h"

struct ddPlacement {
  int32_t uid;  // serial number of the copy
  ddPlacement* next;
  int32_t depth;
  int32_t ratio;           // -1 when absent
  int32_t clipDepth;       // -1 when absent
  char* name;              // owned, may be absent
  ddCharacter* character;  // not owned, may be absent
  ddMatrix matrix;
  ddCxform cxform;
};

// Each frame is the head of a depth-sorted list of placements.
struct ddFrameList {
  int32_t count;
  ddPlacement** frames;
  int32_t capacity;
};

struct ddFrameLabel {
  int32_t frame;
  char* label;
};

struct ddExport {
  int32_t id;
  char* name;
};

enum { ddTimelineOwnsDictionary = 2 };

struct ddTimeline {
  ddCharacter head;
  int32_t framesRead;
  int32_t nFrames;
  int32_t bytesLoaded, bytesTotal;
  ddFixed frameWidth, frameHeight;
  uint32_t flags;
  int32_t labelCount;
  ddFrameLabel* labels;
  int32_t exportCount;
  ddExport* exports;
  ddFrameList* frames;
  ddDictionary* dictionary;
};

// A timeline with its own dictionary (the root) or sharing one (a sprite).
ddTimeline* ddTimeline_create(ddDictionary* shared);
void ddTimeline_destroy(ddTimeline* timeline);

ddFrameList* ddFrameList_create();
void ddFrameList_destroy(ddFrameList* list);

ddPlacement* ddTimeline_findPlacement(ddTimeline* timeline, int32_t depth);
ddPlacement* ddTimeline_createPlacement(ddTimeline* timeline, int32_t frame, int32_t depth);

// Block handlers acting on `timeline`; each is called with the stream just
// after the block header.
void ddTimeline_showFrame(ddStream* s, ddTimeline* timeline);
void ddTimeline_placeObject(ddStream* s, ddTimeline* timeline, int32_t length);
void ddTimeline_placeObject2(ddStream* s, ddTimeline* timeline, int32_t length);
void ddTimeline_removeObject(ddStream* s, ddTimeline* timeline);
void ddTimeline_removeObject2(ddStream* s, ddTimeline* timeline);
void ddTimeline_frameLabel(ddStream* s, ddTimeline* timeline);
void ddTimeline_exportAssets(ddStream* s, ddTimeline* timeline);
void ddTimeline_defineSprite(ddStream* s, ddTimeline* timeline, int32_t length);
