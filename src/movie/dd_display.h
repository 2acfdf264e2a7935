// Display objects: instances of characters, clips with their display lists,
// and the reconciling of a clip's display list with a frame of its timeline.
#pragma once

#include "movie/dd_timeline.h"

struct ddClip;
struct ddRender;

enum ddInstanceState {
  ddStateSeen = 1,     // met in the current frame pass
  ddStateChanged = 2,  // appearance changed; redraw its area
};

struct ddInstance {
  int32_t type;  // the type of its character
  ddCharacter* character;
  // Recomputes transforms and bounds; changed areas go to `dirty`.
  void (*update)(ddInstance* self, ddRectList* dirty, const ddMatrix* parentMatrix);
  void (*draw)(ddInstance* self, ddSurface* surface, ddRectList* dirty,
               const ddMatrix* parentMatrix, const ddCxform* parentCxform, const ddRect* clip);
  void (*destroy)(ddInstance* self);
  uint32_t state;
  int32_t depth;
  int32_t clipDepth;  // -1, or this instance masks the depths below this value
  ddInstance* mask;   // mask in force, if any
  ddInstance *next, *prev;
  ddMatrix matrix;
  ddRect bounds;  // in target pixels
  ddCxform cxform;
};

// A placed shape. `render` is the rasteriser's per-instance state; the
// reader never looks inside it.
struct ddShapeInstanceOps;
struct ddShapeInstance {
  ddInstance head;
  ddRender* render;
  const ddShapeInstanceOps* ops;  // the table it was made with
  ddMatrix boxMatrix;             // matrix of `head.bounds` when no rasteriser is installed
  ddShape* shape;                 // what `render` draws: the character's, or a morph's own
};

// How placed shapes are drawn. The rasteriser installs its table; until then a
// placed shape only keeps the box of its bounds under its matrix (enough for
// dirty areas and hit boxes) and draws nothing.
struct ddShapeInstanceOps {
  ddRender* (*createRender)(ddShape* shape);
  void (*update)(ddInstance* self, ddRectList* dirty, const ddMatrix* parentMatrix);
  void (*draw)(ddInstance* self, ddSurface* surface, ddRectList* dirty,
               const ddMatrix* parentMatrix, const ddCxform* parentCxform, const ddRect* clip);
  // Frees the render and the instance.
  void (*destroy)(ddInstance* self);
  // Points the target's render at the mask's render; a null mask clears it.
  void (*setMask)(ddShapeInstance* target, ddShapeInstance* mask);
  // Single renders, for instances that draw several (text) or remake theirs
  // (morphs). All absent in the box-only table, where such instances keep
  // the boxes of their shapes.
  void (*destroyRender)(ddRender* render);
  // Brings the render's device geometry to `matrix` and gives its bounds.
  ddRect (*updateRender)(ddRender* render, ddRectList* dirty, const ddMatrix& matrix);
  void (*drawRender)(ddRender* render, ddSurface* surface, const ddMatrix& matrix,
                     const ddCxform& cxform, const ddRect& clip);
  // Gives a glyph's render its one solid paint.
  void (*setTextColor)(ddRender* render, ddColor colour);
};
// Null restores the box-only table. Affects shapes instantiated afterwards.
void ddShapeInstance_setOps(const ddShapeInstanceOps* ops);
const ddShapeInstanceOps* ddShapeInstance_ops();

struct ddDisplayList {
  ddRect bounds;  // union of the children
  ddInstance *head, *tail;
  ddInstance* removed;  // left the list, area still to be redrawn
};

enum ddClipFlags {
  ddClipActive = 1,
  ddClipStopped = 2,
  ddClipVisible = 4,
  ddClipFollowsTimeline = 8,
  ddClipStarted = 16,
  ddClipFrameApplied = 32,
  ddClipRemoved = 64,
};

struct ddClipInfo {
  ddClip* clip;
  char* name;
  ddClipInfo* root;
};

struct ddClip {
  ddInstance head;
  ddTimeline* timeline;
  int32_t frame;
  uint32_t flags;
  float xscale, yscale;
  float rotation;
  ddMatrix worldMatrix;
  ddMatrix worldInverse;
  ddDisplayList* displayList;
  ddClip* parent;
  ddClipInfo* info;
  int32_t nesting;            // 0 for the root
  struct ddActiveNode* node;  // its entry in the movie's active list
};

// A clip deeper than this is not made: it protects the stack from a file
// that nests sprites without end.
constexpr int32_t ddMaxClipNesting = 100;
// Clips a movie may make in its life (each keeps its record to the end).
constexpr int32_t ddMaxClips = 1 << 20;

// Instances

// Fills the head of a new instance: no mask depth, identity matrix and colour
// transform, empty bounds.
void ddInstance_init(ddInstance* instance, int32_t type, ddCharacter* character);
ddInstance* ddInstance_create(ddMovie* movie, ddClip* parent, ddCharacter* character, int32_t depth,
                              const char* name, int32_t clipDepth);
void ddInstance_setMask(ddInstance* target, ddInstance* mask);
ddInstance* ddShapeInstance_instantiate(ddMovie* movie, ddCharacter* character);
// The box of `shape`'s bounds under `m`; empty for empty bounds.
ddRect ddShape_boxUnder(const ddShape* shape, const ddMatrix& m);

// Clips

ddClip* ddClip_create(ddMovie* movie, ddTimeline* timeline);
ddInstance* ddClip_instantiate(ddMovie* movie, ddCharacter* character);
void ddClip_updateWorld(ddClip* clip);
void ddClip_update(ddInstance* self, ddRectList* dirty, const ddMatrix* parentMatrix);
void ddClip_moveFrame(ddMovie* movie, ddClip* clip, int32_t frame);
void ddClip_setFrame(ddMovie* movie, ddClip* clip);
// Applies the first frame of a clip that has not been applied yet.
void ddClip_start(ddMovie* movie, ddClip* clip);

// Display lists

ddDisplayList* ddDisplayList_create();
// Destroys every instance in it and in its removed list.
void ddDisplayList_destroy(ddDisplayList* list);
void ddDisplayList_insert(ddDisplayList* list, ddMovie* movie, ddInstance* instance, int32_t depth,
                          int32_t clipDepth);
void ddDisplayList_remove(ddDisplayList* list, ddMovie* movie, ddInstance* instance);
ddInstance* ddDisplayList_find(ddDisplayList* list, int32_t depth);
void ddDisplayList_update(ddDisplayList* list, ddRectList* dirty, const ddMatrix* matrix);
