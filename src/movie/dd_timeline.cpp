// Timelines and the blocks that build their frames.
#include "movie/dd_timeline.h"

#include "movie/dd_display.h"

namespace {

int32_t nextUid = 0;

void timelineDestroy(ddCharacter* c) {
  ddTimeline_destroy(reinterpret_cast<ddTimeline*>(c));
}

void placementDestroy(ddPlacement* p) {
  ddFree(p->name);
  ddFree(p);
}

ddPlacement* placementCopy(const ddPlacement* p) {
  ddPlacement* c = static_cast<ddPlacement*>(ddMalloc(sizeof(ddPlacement)));
  *c = *p;
  c->uid = ++nextUid;
  c->next = nullptr;
  c->name = p->name ? ddStrdup(p->name) : nullptr;
  return c;
}

void appendFrame(ddFrameList* list, ddPlacement* head) {
  if (list->count == list->capacity) {
    list->capacity = list->capacity ? list->capacity * 2 : 4;
    list->frames = static_cast<ddPlacement**>(
        ddRealloc(list->frames, size_t(list->capacity) * sizeof(ddPlacement*)));
  }
  list->frames[list->count++] = head;
}

ddPlacement** lastFrame(ddTimeline* t) {
  return &t->frames->frames[t->frames->count - 1];
}

// Unlinks and frees the first placement of the last frame that matches.
template <typename Match>
void removeFirst(ddTimeline* t, Match match) {
  for (ddPlacement** link = lastFrame(t); *link; link = &(*link)->next) {
    if (match(*link)) {
      ddPlacement* p = *link;
      *link = p->next;
      placementDestroy(p);
      return;
    }
  }
}

}  // namespace

ddFrameList* ddFrameList_create() {
  ddFrameList* list = static_cast<ddFrameList*>(ddCalloc(1, sizeof(ddFrameList)));
  appendFrame(list, nullptr);
  return list;
}

void ddFrameList_destroy(ddFrameList* list) {
  if (!list) return;
  for (int32_t i = 0; i < list->count; i++) {
    for (ddPlacement* p = list->frames[i]; p;) {
      ddPlacement* next = p->next;
      placementDestroy(p);
      p = next;
    }
  }
  ddFree(list->frames);
  ddFree(list);
}

ddTimeline* ddTimeline_create(ddDictionary* shared) {
  ddTimeline* t = static_cast<ddTimeline*>(ddCalloc(1, sizeof(ddTimeline)));
  t->head.type = ddCharacterTimeline;
  t->head.instantiate = ddClip_instantiate;
  t->head.destroy = timelineDestroy;
  t->frames = ddFrameList_create();
  if (shared) {
    t->dictionary = shared;
  } else {
    t->dictionary = ddDictionary_create();
    t->flags |= ddTimelineOwnsDictionary;
  }
  return t;
}

void ddTimeline_destroy(ddTimeline* t) {
  if (!t) return;
  ddFrameList_destroy(t->frames);
  for (int32_t i = 0; i < t->labelCount; i++) ddFree(t->labels[i].label);
  ddFree(t->labels);
  for (int32_t i = 0; i < t->exportCount; i++) ddFree(t->exports[i].name);
  ddFree(t->exports);
  if (t->flags & ddTimelineOwnsDictionary) ddDictionary_destroy(t->dictionary);
  ddFree(t);
}

ddPlacement* ddTimeline_findPlacement(ddTimeline* t, int32_t depth) {
  for (ddPlacement* p = *lastFrame(t); p; p = p->next)
    if (p->depth == depth) return p;
  return nullptr;
}

ddPlacement* ddTimeline_createPlacement(ddTimeline* t, int32_t frame, int32_t depth) {
  ddPlacement* p = static_cast<ddPlacement*>(ddCalloc(1, sizeof(ddPlacement)));
  p->depth = depth;
  p->ratio = -1;
  p->clipDepth = -1;
  p->matrix = ddMatrixIdentity;
  p->cxform = ddCxformIdentity;
  // Placements are only ever made in the frame being read, the last one.
  if (frame < 0 || frame >= t->frames->count) frame = t->frames->count - 1;
  ddPlacement** link = &t->frames->frames[frame];
  while (*link && (*link)->depth < depth) link = &(*link)->next;
  p->next = *link;
  *link = p;
  return p;
}

void ddTimeline_showFrame(ddStream* s, ddTimeline* t) {
  t->framesRead++;
  if (t->framesRead >= t->nFrames) return;
  ddPlacement* head = nullptr;
  ddPlacement** tail = &head;
  for (ddPlacement* p = *lastFrame(t); p; p = p->next) {
    *tail = placementCopy(p);
    tail = &(*tail)->next;
  }
  appendFrame(t->frames, head);
}

void ddTimeline_placeObject(ddStream* s, ddTimeline* t, int32_t length) {
  uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  int32_t depth = ddStream_readU16(s);
  ddMatrix m = ddStream_readMatrix(s);
  ddCxform cx = ddCxformIdentity;
  if (s->pos < end) cx = ddStream_readCxform(s, false);
  ddPlacement* p = ddTimeline_findPlacement(t, depth);
  if (!p) p = ddTimeline_createPlacement(t, t->framesRead, depth);
  if (ddCharacter* c = ddDictionary_get(t, id)) p->character = c;
  p->ratio = 0;
  p->matrix = m;
  p->cxform = cx;
}

void ddTimeline_placeObject2(ddStream* s, ddTimeline* t, int32_t length) {
  int flags = ddStream_readU8(s);
  int32_t depth = ddStream_readU16(s);
  ddPlacement* p = ddTimeline_findPlacement(t, depth);
  if (!p) p = ddTimeline_createPlacement(t, t->framesRead, depth);
  if (flags & 2) p->character = ddDictionary_get(t, ddStream_readU16(s));
  if (flags & 4) p->matrix = ddStream_readMatrix(s);
  if (flags & 8) p->cxform = ddStream_readCxform(s, true);
  if (flags & 16) p->ratio = ddStream_readU16(s);
  if (flags & 32) {
    ddFree(p->name);
    p->name = ddStream_readString(s);
  }
  if (flags & 64) p->clipDepth = ddStream_readU16(s);
  if (flags & 128) {
    // Clip actions are scripts; they are read past and dropped.
    ddStream_readU16(s);
    bool wide = s->version >= 6;
    auto eventFlags = [s, wide]() { return wide ? ddStream_readU32(s) : ddStream_readU16(s); };
    eventFlags();
    while (eventFlags() != 0) ddStream_skip(s, int32_t(ddStream_readU32(s)));
  }
}

void ddTimeline_removeObject(ddStream* s, ddTimeline* t) {
  int32_t id = ddStream_readU16(s);
  int32_t depth = ddStream_readU16(s);
  ddCharacter* c = ddDictionary_get(t, id);
  removeFirst(t, [=](ddPlacement* p) { return p->depth == depth && p->character == c; });
}

void ddTimeline_removeObject2(ddStream* s, ddTimeline* t) {
  int32_t depth = ddStream_readU16(s);
  removeFirst(t, [=](ddPlacement* p) { return p->depth == depth; });
}

void ddTimeline_frameLabel(ddStream* s, ddTimeline* t) {
  char* label = ddStream_readString(s);
  t->labels = static_cast<ddFrameLabel*>(
      ddRealloc(t->labels, size_t(t->labelCount + 1) * sizeof(ddFrameLabel)));
  t->labels[t->labelCount++] = ddFrameLabel{t->framesRead, label};
}

void ddTimeline_exportAssets(ddStream* s, ddTimeline* t) {
  // Only the first entry is read: the count is not used.
  ddStream_readU16(s);
  int32_t id = ddStream_readU16(s);
  char* name = ddStream_readString(s);
  t->exports =
      static_cast<ddExport*>(ddRealloc(t->exports, size_t(t->exportCount + 1) * sizeof(ddExport)));
  t->exports[t->exportCount++] = ddExport{id, name};
}

void ddTimeline_defineSprite(ddStream* s, ddTimeline* parent, int32_t length) {
  uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  ddTimeline* sprite = ddTimeline_create(parent->dictionary);
  sprite->nFrames = ddStream_readU16(s);
  // Past the real data every block would be an empty one of type 0.
  while (s->pos < end && !ddStream_exhausted(s)) {
    uint32_t header = ddStream_readU16(s);
    int type = int(header >> 6);
    int32_t inner = int32_t(header & 63);
    if (inner == 63) inner = int32_t(ddStream_readU32(s));
    ddBlockAction action = ddBlockRead;
    switch (type) {
      case 1:
        ddTimeline_showFrame(s, sprite);
        break;
      case 4:
        ddTimeline_placeObject(s, sprite, inner);
        break;
      case 5:
        ddTimeline_removeObject(s, sprite);
        break;
      case 26:
        ddTimeline_placeObject2(s, sprite, inner);
        break;
      case 28:
        ddTimeline_removeObject2(s, sprite);
        break;
      case 43:
        ddTimeline_frameLabel(s, sprite);
        break;
      case 12:
        // A script ends the sprite: the whole sprite's length is skipped.
        ddStream_skip(s, length);
        action = ddBlockSkipped;
        break;
      default:
        ddStream_skip(s, inner);
        action = ddBlockSkipped;
        break;
    }
    if (s->listener) s->listener(s->listenerContext, sprite, type, inner, action);
  }
  ddDictionary_put(parent, id, &sprite->head);
}
