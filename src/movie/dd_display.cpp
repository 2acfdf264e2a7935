// Instances, clips, display lists and frame reconciling.
#include "movie/dd_display.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <initializer_list>

#include "movie/dd_morph.h"
#include "movie/dd_movie.h"

namespace {

ddClip* asClip(ddInstance* i) {
  return i && i->type == ddCharacterTimeline ? reinterpret_cast<ddClip*>(i) : nullptr;
}

void addDirty(ddRectList* dirty, const ddRect& r) {
  if (dirty) ddRectList_add(dirty, r);
}

// Shape instances without a rasteriser: the box of the shape's bounds.

void boxUpdate(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  ddShapeInstance* si = reinterpret_cast<ddShapeInstance*>(self);
  ddMatrix m = ddMatrix_concat(*parent, self->matrix);
  if (!ddRect_isEmpty(self->bounds) && ddMatrix_equal(m, si->boxMatrix)) return;
  ddRect old = self->bounds;
  ddRect now = ddShape_boxUnder(si->shape, m);
  si->boxMatrix = m;
  self->bounds = now;
  addDirty(dirty, old);
  addDirty(dirty, now);
}

void boxDraw(ddInstance*, ddSurface*, ddRectList*, const ddMatrix*, const ddCxform*,
             const ddRect*) {}

void boxDestroy(ddInstance* self) {
  ddFree(self);
}

void boxSetMask(ddShapeInstance*, ddShapeInstance*) {}

const ddShapeInstanceOps boxOps = {nullptr, boxUpdate, boxDraw, boxDestroy, boxSetMask,
                                   nullptr, nullptr,   nullptr, nullptr};
const ddShapeInstanceOps* shapeOps = &boxOps;

// Clips

ddMatrix childMatrix(const ddClip* clip, const ddMatrix& parent) {
  ddMatrix m = ddMatrix_concat(parent, clip->head.matrix);
  m = ddMatrix_rotate(m, clip->rotation);
  return ddMatrix_scale(m, ddFixed_fromDouble(clip->xscale), ddFixed_fromDouble(clip->yscale));
}

void clipDraw(ddInstance* self, ddSurface* surface, ddRectList* dirty, const ddMatrix* parent,
              const ddCxform* parentCxform, const ddRect* clipRect) {
  ddClip* clip = reinterpret_cast<ddClip*>(self);
  if (!(clip->flags & ddClipVisible) || !clip->displayList) return;
  ddMatrix m = childMatrix(clip, *parent);
  ddCxform cx = ddCxform_concat(*parentCxform, self->cxform);
  // Front to back: nearer objects are composited first.
  for (ddInstance* i = clip->displayList->tail; i; i = i->prev) {
    if (i->clipDepth != -1) continue;
    if (!ddRect_overlap(i->bounds, *clipRect)) continue;
    i->draw(i, surface, dirty, &m, &cx, clipRect);
  }
}

void clipDestroy(ddInstance* self) {
  ddClip* clip = reinterpret_cast<ddClip*>(self);
  ddDisplayList_destroy(clip->displayList);
  if (clip->info) ddFree(clip->info->name);
  ddFree(clip->info);
  ddFree(clip);
}

// The clip and all clips below it leave the active list.
void forgetClip(ddClip* clip) {
  if (clip->node) clip->node->clip = nullptr;
  clip->node = nullptr;
  for (ddInstance* i = clip->displayList->head; i; i = i->next)
    if (ddClip* c = asClip(i)) forgetClip(c);
}

void markGone(ddRectList* dirty, ddInstance* i) {
  if (ddClip* c = asClip(i)) {
    for (ddInstance* k = c->displayList->head; k; k = k->next) markGone(dirty, k);
  } else {
    addDirty(dirty, i->bounds);
  }
}

void unlinkInstance(ddDisplayList* list, ddInstance* i) {
  if (i->prev)
    i->prev->next = i->next;
  else
    list->head = i->next;
  if (i->next)
    i->next->prev = i->prev;
  else
    list->tail = i->prev;
  i->next = i->prev = nullptr;
}

// A clip off the stage is never drawn again, but Java may still hold its
// handle and those of the clips below it: their records stay, while the
// shapes they show, the bulk of their memory, go now. Masks inside the clip
// are cleared first, as the shapes that made them are among those freed.
void releaseShapes(ddClip* clip) {
  ddDisplayList* list = clip->displayList;
  for (ddInstance* i = list->head; i; i = i->next) ddInstance_setMask(i, nullptr);
  for (ddInstance *i = list->head, *next; i; i = next) {
    next = i->next;
    if (ddClip* c = asClip(i)) {
      releaseShapes(c);
      continue;
    }
    unlinkInstance(list, i);
    i->destroy(i);
  }
  for (ddInstance *i = list->removed, *next; i; i = next) {
    next = i->next;
    i->destroy(i);
  }
  list->removed = nullptr;
}

void removeFromStage(ddMovie* movie, ddClip* parent, ddInstance* i) {
  if (ddClip* c = asClip(i)) forgetClip(c);
  markGone(movie->dirty, i);
  ddDisplayList_remove(parent->displayList, movie, i);
}

}  // namespace

void ddShapeInstance_setOps(const ddShapeInstanceOps* ops) {
  shapeOps = ops ? ops : &boxOps;
}

const ddShapeInstanceOps* ddShapeInstance_ops() {
  return shapeOps;
}

ddRect ddShape_boxUnder(const ddShape* shape, const ddMatrix& m) {
  ddRect box = ddRect_empty();
  const ddRect& b = shape->bounds;
  if (ddRect_isEmpty(b)) return box;
  for (ddFixed x : {b.xMin, b.xMax}) {
    for (ddFixed y : {b.yMin, b.yMax}) {
      ddFixed tx, ty;
      ddMatrix_transform(m, x, y, &tx, &ty);
      ddRect_addPoint(&box, tx, ty);
    }
  }
  return box;
}

ddInstance* ddShapeInstance_instantiate(ddMovie* movie, ddCharacter* character) {
  ddShapeInstance* si = static_cast<ddShapeInstance*>(ddCalloc(1, sizeof(ddShapeInstance)));
  ddInstance_init(&si->head, ddCharacterShape, character);
  si->head.update = shapeOps->update;
  si->head.draw = shapeOps->draw;
  si->head.destroy = shapeOps->destroy;
  si->shape = reinterpret_cast<ddShapeCharacter*>(character)->shape;
  si->ops = shapeOps;
  if (shapeOps->createRender) si->render = shapeOps->createRender(si->shape);
  return &si->head;
}

ddClip* ddClip_create(ddMovie* movie, ddTimeline* timeline) {
  ddClip* clip = static_cast<ddClip*>(ddCalloc(1, sizeof(ddClip)));
  ddInstance_init(&clip->head, ddCharacterTimeline, &timeline->head);
  clip->head.update = ddClip_update;
  clip->head.draw = clipDraw;
  clip->head.destroy = clipDestroy;
  clip->timeline = timeline;
  clip->flags = ddClipActive | ddClipVisible | ddClipFollowsTimeline;
  clip->xscale = clip->yscale = 1.0f;
  clip->displayList = ddDisplayList_create();
  clip->info = static_cast<ddClipInfo*>(ddCalloc(1, sizeof(ddClipInfo)));
  clip->info->clip = clip;
  movie->clipCount++;
  ddActiveList_add(movie, &clip->head);
  return clip;
}

ddInstance* ddClip_instantiate(ddMovie* movie, ddCharacter* character) {
  return &ddClip_create(movie, reinterpret_cast<ddTimeline*>(character))->head;
}

void ddClip_updateWorld(ddClip* clip) {
  ddMatrix m = clip->head.matrix;
  if (clip->parent) m = ddMatrix_concat(clip->parent->worldMatrix, m);
  m = ddMatrix_rotate(m, clip->rotation);
  m = ddMatrix_scale(m, ddFixed_fromDouble(clip->xscale), ddFixed_fromDouble(clip->yscale));
  clip->worldMatrix = m;
  clip->worldInverse = ddMatrix_invert(m);
}

void ddClip_update(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  ddClip* clip = reinterpret_cast<ddClip*>(self);
  ddClip_updateWorld(clip);
  clip->flags &= ~uint32_t(ddClipFrameApplied);
  if ((clip->flags & ddClipVisible) && clip->displayList) {
    ddMatrix m = childMatrix(clip, *parent);
    ddDisplayList_update(clip->displayList, dirty, &m);
    self->bounds = clip->displayList->bounds;
  } else {
    self->bounds = ddRect_empty();
  }
}

void ddClip_start(ddMovie* movie, ddClip* clip) {
  if (clip->flags & ddClipFrameApplied) return;
  clip->flags |= ddClipFrameApplied | ddClipStarted;
  ddClip_setFrame(movie, clip);
}

void ddClip_moveFrame(ddMovie* movie, ddClip* clip, int32_t frame) {
  if (frame == clip->frame) return;
  if (frame < 0 || frame >= clip->timeline->framesRead) frame = 0;
  clip->frame = frame;
  ddClip_setFrame(movie, clip);
}

void ddClip_setFrame(ddMovie* movie, ddClip* clip) {
  int32_t f = clip->frame;
  ddTimeline* timeline = clip->timeline;
  if (f < 0 || f >= timeline->frames->count) {
    ddWarn("frameNum > timeline->nFrames");
    return;
  }
  ddPlacement* frame = timeline->frames->frames[f];
  ddDisplayList* list = clip->displayList;

  // Whatever no placement of this frame shows goes. The frame's characters
  // are sorted once so that the pass stays n log n on crowded frames.
  int32_t placed = 0;
  for (ddPlacement* p = frame; p; p = p->next) placed++;
  ddCharacter** shown =
      static_cast<ddCharacter**>(ddMalloc(size_t(placed ? placed : 1) * sizeof(ddCharacter*)));
  placed = 0;
  for (ddPlacement* p = frame; p; p = p->next) shown[placed++] = p->character;
  std::sort(shown, shown + placed, std::less<ddCharacter*>());
  for (ddInstance *i = list->head, *next; i; i = next) {
    next = i->next;
    if (!std::binary_search(shown, shown + placed, i->character, std::less<ddCharacter*>()))
      removeFromStage(movie, clip, i);
  }
  ddFree(shown);

  for (ddPlacement* p = frame; p; p = p->next) {
    ddInstance* i = ddDisplayList_find(list, p->depth);
    if (i && i->character != p->character) {
      removeFromStage(movie, clip, i);
      i = nullptr;
    }
    bool fresh = false;
    if (!i) {
      if (!p->character) continue;
      i = ddInstance_create(movie, clip, p->character, p->depth, p->name, p->clipDepth);
      if (!i) continue;
      fresh = true;
    }
    ddClip* child = asClip(i);
    if (!child || (child->flags & ddClipFollowsTimeline)) {
      i->matrix = p->matrix;
      if (child) ddClip_updateWorld(child);
      if (!ddCxform_equal(p->cxform, i->cxform)) {
        i->state |= ddStateChanged;
        i->cxform = p->cxform;
      }
    }
    i->state |= ddStateSeen;
    if (i->type == ddCharacterMorph && p->ratio != -1) ddMorph_setRatio(i, p->ratio & 0xFFFF);
    if (fresh && child) {
      ddClip_start(movie, child);
      if (child->timeline->nFrames == 1) child->flags |= ddClipStopped;
    }
  }

  for (ddInstance *i = list->head, *next; i; i = next) {
    next = i->next;
    if (i->state & ddStateSeen)
      i->state &= ~uint32_t(ddStateSeen);
    else
      removeFromStage(movie, clip, i);
  }
}

// Instances

void ddInstance_init(ddInstance* i, int32_t type, ddCharacter* character) {
  i->type = type;
  i->character = character;
  i->clipDepth = -1;
  i->matrix = ddMatrixIdentity;
  i->cxform = ddCxformIdentity;
  i->bounds = ddRect_empty();
}

ddInstance* ddInstance_create(ddMovie* movie, ddClip* parent, ddCharacter* character, int32_t depth,
                              const char* name, int32_t clipDepth) {
  if (!character || !character->instantiate) return nullptr;
  if (character->type == ddCharacterTimeline) {
    if (parent->nesting + 1 > ddMaxClipNesting) {
      ddWarn("Clips nested too deep at depth %i", depth);
      return nullptr;
    }
    if (movie->clipCount >= ddMaxClips) {
      ddWarn("Too many clips");
      return nullptr;
    }
  }
  if (ddMemory_overSoftLimit()) {
    ddWarn("Movie memory budget spent at depth %i", depth);
    return nullptr;
  }
  ddInstance* i = character->instantiate(movie, character);
  if (!i) return nullptr;
  i->character = character;
  ddDisplayList_insert(parent->displayList, movie, i, depth, clipDepth);
  if (parent->head.mask) ddInstance_setMask(i, parent->head.mask);
  if (ddClip* clip = asClip(i)) {
    if (name) {
      clip->info->name = ddStrdup(name);
    } else {
      char text[16];
      std::snprintf(text, sizeof text, "instance%i", depth);
      clip->info->name = ddStrdup(text);
    }
    clip->parent = parent;
    clip->info->root = parent->info->root;
    clip->nesting = parent->nesting + 1;
  }
  return i;
}

void ddInstance_setMask(ddInstance* target, ddInstance* mask) {
  ddClip* clip = asClip(target);
  if (!mask) {
    target->mask = nullptr;
    if (target->type == ddCharacterShape) {
      ddShapeInstance* si = reinterpret_cast<ddShapeInstance*>(target);
      si->ops->setMask(si, nullptr);
    } else if (clip) {
      for (ddInstance* i = clip->displayList->head; i; i = i->next) ddInstance_setMask(i, nullptr);
    }
    return;
  }
  if (mask->type != ddCharacterShape) {
    ddWarn("Unsupported mask type: %i", mask->type);
    return;
  }
  if (target->type == ddCharacterShape) {
    target->mask = mask;
    ddShapeInstance* si = reinterpret_cast<ddShapeInstance*>(target);
    si->ops->setMask(si, reinterpret_cast<ddShapeInstance*>(mask));
  } else if (clip) {
    target->mask = mask;
    for (ddInstance* i = clip->displayList->head; i; i = i->next) ddInstance_setMask(i, mask);
  } else if (target->type != ddCharacterMorph) {
    ddWarn("Unsupported mask target: %i", target->type);
  }
}

// Display lists

ddDisplayList* ddDisplayList_create() {
  ddDisplayList* list = static_cast<ddDisplayList*>(ddCalloc(1, sizeof(ddDisplayList)));
  list->bounds = ddRect_empty();
  return list;
}

void ddDisplayList_destroy(ddDisplayList* list) {
  if (!list) return;
  for (ddInstance *i = list->head, *next; i; i = next) {
    next = i->next;
    i->destroy(i);
  }
  for (ddInstance *i = list->removed, *next; i; i = next) {
    next = i->next;
    i->destroy(i);
  }
  ddFree(list);
}

ddInstance* ddDisplayList_find(ddDisplayList* list, int32_t depth) {
  for (ddInstance* i = list->head; i && i->depth <= depth; i = i->next)
    if (i->depth == depth) return i;
  return nullptr;
}

void ddDisplayList_insert(ddDisplayList* list, ddMovie* movie, ddInstance* instance, int32_t depth,
                          int32_t clipDepth) {
  ddInstance* at = list->head;
  while (at && at->depth < depth) at = at->next;
  if (at && at->depth == depth) {
    ddInstance* next = at->next;
    ddDisplayList_remove(list, movie, at);
    at = next;
  }
  instance->next = at;
  instance->prev = at ? at->prev : list->tail;
  if (instance->prev)
    instance->prev->next = instance;
  else
    list->head = instance;
  if (at)
    at->prev = instance;
  else
    list->tail = instance;
  instance->depth = depth;
  instance->clipDepth = clipDepth;
  if (clipDepth == -1) {
    for (ddInstance* p = instance->prev; p; p = p->prev) {
      if (p->clipDepth > depth) {
        ddInstance_setMask(instance, p);
        break;
      }
    }
  } else {
    for (ddInstance* n = instance->next; n && n->depth < clipDepth; n = n->next)
      ddInstance_setMask(n, instance);
  }
}

void ddDisplayList_remove(ddDisplayList* list, ddMovie* movie, ddInstance* instance) {
  if (instance->clipDepth != -1) {
    for (ddInstance* n = instance->next; n && n->depth < instance->clipDepth; n = n->next)
      ddInstance_setMask(n, nullptr);
  }
  unlinkInstance(list, instance);
  if (ddClip* clip = asClip(instance)) {
    clip->flags |= ddClipRemoved;
    releaseShapes(clip);
    ddActiveNode* node = static_cast<ddActiveNode*>(ddCalloc(1, sizeof(ddActiveNode)));
    node->clip = clip;
    if (movie->removedTail)
      movie->removedTail->next = node;
    else
      movie->removedHead = node;
    movie->removedTail = node;
  } else {
    instance->next = list->removed;
    list->removed = instance;
  }
}

void ddDisplayList_update(ddDisplayList* list, ddRectList* dirty, const ddMatrix* matrix) {
  list->bounds = ddRect_empty();
  while (ddInstance* gone = list->removed) {
    list->removed = gone->next;
    addDirty(dirty, gone->bounds);
    gone->destroy(gone);
  }
  bool masking = false;
  ddRect maskRect = ddRect_empty();
  int32_t maskDepth = 0;
  for (ddInstance* i = list->head; i; i = i->next) {
    i->update(i, dirty, matrix);
    if (i->state & ddStateChanged) addDirty(dirty, i->bounds);
    i->state = 0;
    if (i->clipDepth != -1) {
      masking = true;
      maskRect = i->bounds;
      maskDepth = i->clipDepth;
    }
    if (masking && i->depth >= maskDepth) masking = false;
    list->bounds =
        ddRect_union(list->bounds, masking ? ddRect_intersect(i->bounds, maskRect) : i->bounds);
  }
}
