// File header, the block loop, and the movie's life from open to dispose.
#include "movie/dd_movie.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "movie/dd_bitmap.h"
#include "movie/dd_morph.h"
#include "movie/dd_text.h"

namespace {

// A compressed movie states its inflated size; beyond this it is refused
// rather than trusted with that much memory.
constexpr uint32_t kMaxInflatedSize = 256u << 20;

typedef void (*BlockHandler)(ddStream* s, ddTimeline* root, int type, int32_t length);

void skipBlock(ddStream* s, ddTimeline*, int, int32_t length) {
  ddStream_skip(s, length);
}
void showFrame(ddStream* s, ddTimeline* t, int, int32_t) {
  ddTimeline_showFrame(s, t);
}
void placeObject(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddTimeline_placeObject(s, t, length);
}
void placeObject2(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddTimeline_placeObject2(s, t, length);
}
void removeObject(ddStream* s, ddTimeline* t, int, int32_t) {
  ddTimeline_removeObject(s, t);
}
void removeObject2(ddStream* s, ddTimeline* t, int, int32_t) {
  ddTimeline_removeObject2(s, t);
}
void frameLabel(ddStream* s, ddTimeline* t, int, int32_t) {
  ddTimeline_frameLabel(s, t);
}
void exportAssets(ddStream* s, ddTimeline* t, int, int32_t) {
  ddTimeline_exportAssets(s, t);
}
void defineSprite(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddTimeline_defineSprite(s, t, length);
}
void defineShape(ddStream* s, ddTimeline* t, int type, int32_t length) {
  ddStream_readShapeBlock(s, t, type, length);
}
void defineBitmap(ddStream* s, ddTimeline* t, int type, int32_t length) {
  ddStream_readBitmapBlock(s, t, type, length);
}
void defineMorph(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readMorphBlock(s, t, length);
}
void defineFont(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readFontBlock(s, t, length);
}
void defineFont2(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readFont2Block(s, t, length);
}
void fontInfo(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readFontInfoBlock(s, t, length);
}
void fontInfo2(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readFontInfo2Block(s, t, length);
}
void defineText(ddStream* s, ddTimeline* t, int type, int32_t length) {
  ddStream_readTextBlock(s, t, type, length);
}
void defineEditText(ddStream* s, ddTimeline* t, int, int32_t length) {
  ddStream_readEditTextBlock(s, t, length);
}
void backgroundColor(ddStream* s, ddTimeline*, int, int32_t) {
  s->backgroundColor = ddStream_readRGB(s);
}

struct BlockTable {
  BlockHandler handler[64] = {};
  bool skipped[64] = {};

  BlockTable() {
    handler[1] = showFrame;
    handler[2] = handler[22] = handler[32] = defineShape;
    handler[4] = placeObject;
    handler[5] = removeObject;
    handler[9] = backgroundColor;
    handler[20] = handler[36] = defineBitmap;
    handler[26] = placeObject2;
    handler[28] = removeObject2;
    handler[39] = defineSprite;
    handler[43] = frameLabel;
    handler[56] = exportAssets;
    handler[10] = defineFont;
    handler[11] = handler[33] = defineText;
    handler[13] = fontInfo;
    handler[37] = defineEditText;
    handler[46] = defineMorph;
    handler[48] = defineFont2;
    handler[62] = fontInfo2;
    // Sound, buttons, scripts and JPEG images are not played.
    for (int t : {6, 7, 8, 12, 14, 15, 17, 18, 19, 21, 24, 34, 35, 45, 58, 59}) skip(t);
  }
  void skip(int t) {
    handler[t] = skipBlock;
    skipped[t] = true;
  }
};

const BlockTable blockTable;

// The body of a compressed file, inflated into a buffer of at most `length`
// bytes; null when it is not one complete zlib stream that fits.
uint8_t* inflateBody(const uint8_t* in, size_t inLength, uint32_t length, size_t* produced) {
  z_stream z;
  std::memset(&z, 0, sizeof z);
  if (inflateInit(&z) != Z_OK) return nullptr;
  z.next_in = const_cast<uint8_t*>(in);
  z.avail_in = static_cast<uInt>(inLength);
  // Grown as the data comes, so a header that lies about the size costs
  // nothing until the bytes are really there.
  size_t capacity = std::min<size_t>(length, std::max<size_t>(size_t(1) << 16, inLength * 4));
  uint8_t* out = static_cast<uint8_t*>(ddMalloc(capacity));
  size_t done = 0;
  bool ok = false;
  for (;;) {
    z.next_out = out + done;
    z.avail_out = static_cast<uInt>(capacity - done);
    int r = inflate(&z, Z_NO_FLUSH);
    done = capacity - z.avail_out;
    if (r == Z_STREAM_END) {
      ok = true;
      break;
    }
    if (r != Z_OK && r != Z_BUF_ERROR) break;
    if (z.avail_out != 0) break;    // input ended before the stream did
    if (capacity == length) break;  // more output than stated
    capacity = std::min<size_t>(length, capacity * 2);
    out = static_cast<uint8_t*>(ddRealloc(out, capacity));
  }
  inflateEnd(&z);
  if (!ok) {
    ddFree(out);
    return nullptr;
  }
  *produced = done;
  return out;
}

bool readBody(ddStream* s, uint32_t length) {
  if (length > kMaxInflatedSize) return false;
  size_t capacity = 1024, count = 0;
  bool direct = s->ops == &ddStream_memoryOps && s->pos < uint64_t(int64_t(s->size));
  if (direct) capacity = size_t(uint64_t(int64_t(s->size)) - s->pos);
  uint8_t* gathered = static_cast<uint8_t*>(ddMalloc(capacity));
  if (direct) {
    // The same bytes the loop below would gather, in one copy.
    s->bitCount = 0;
    size_t real = s->pos < s->present ? std::min<size_t>(capacity, s->present - s->pos) : 0;
    if (real) std::memcpy(gathered, s->data + s->pos, real);
    std::memset(gathered + real, 0, capacity - real);
    s->pos += capacity;
    count = capacity;
  }
  while (!s->ops->atEnd(s)) {
    if (count == capacity) {
      capacity *= 2;
      gathered = static_cast<uint8_t*>(ddRealloc(gathered, capacity));
    }
    gathered[count++] = ddStream_readU8(s);
  }
  size_t produced = 0;
  uint8_t* out = inflateBody(gathered, count, length, &produced);
  ddFree(gathered);
  if (!out) return false;
  ddFree(s->owned);
  s->owned = out;
  s->data = out;
  s->present = produced;
  s->size = static_cast<int32_t>(length);
  s->fileLength = static_cast<int32_t>(length);
  s->pos = 0;
  s->ops = &ddStream_memoryOps;
  return true;
}

void fitFrame(ddMovie* movie) {
  // A zero frame size gives an infinite scale, which saturates.
  ddFixed fw = movie->rootTimeline->frameWidth, fh = movie->rootTimeline->frameHeight;
  double sx = fw ? movie->width / (fw * 0.0009765625) : HUGE_VAL;
  double sy = fh ? movie->height / (fh * 0.0009765625) : HUGE_VAL;
  double scale = sx < sy ? sx : sy;
  ddFixed f = ddFixed_fromDouble(scale);
  movie->rootMatrix = ddMatrix{f, 0, 0, f, 0, 0};
  movie->rootClip->head.matrix = movie->rootMatrix;
  ddClip_updateWorld(movie->rootClip);
}

void freeNodes(ddActiveNode* node) {
  while (node) {
    ddActiveNode* next = node->next;
    ddFree(node);
    node = next;
  }
}

}  // namespace

int ddMovie_parse(ddStream* s) {
  uint8_t first = ddStream_readU8(s);
  if (first != 'C' && first != 'F') return -1;
  if (ddStream_readU8(s) != 'W') return -1;
  if (ddStream_readU8(s) != 'S') return -1;
  s->version = ddStream_readU8(s);
  uint32_t length = ddStream_readU32(s);
  if (first == 'C') {
    if (!readBody(s, length)) return -1;
  } else {
    s->fileLength = static_cast<int32_t>(length);
  }
  ddTimeline* root = s->root;
  root->bytesTotal = root->bytesLoaded = static_cast<int32_t>(length);
  ddRect frame = ddStream_readRect(s);
  if (!ddRect_isEmpty(frame)) {
    root->frameWidth = ddWrap(int64_t(frame.xMax) - frame.xMin);
    root->frameHeight = ddWrap(int64_t(frame.yMax) - frame.yMin);
  }
  float fraction = ddStream_readU8(s) * 0.00390625f;
  s->frameRate = fraction + ddStream_readU8(s);
  root->nFrames = ddStream_readU16(s);

  for (;;) {
    uint32_t header = ddStream_readU16(s);
    int type = int(header >> 6);
    int32_t length = int32_t(header & 63);
    if (length == 63) length = static_cast<int32_t>(ddStream_readU32(s));
    if (type == 0 || s->pos >= uint64_t(int64_t(s->fileLength)) || length < 0) return 0;
    BlockHandler handler = type < 64 ? blockTable.handler[type] : nullptr;
    ddBlockAction action = ddBlockRead;
    if (handler) {
      handler(s, root, type, length);
      if (blockTable.skipped[type]) action = ddBlockSkipped;
    } else {
      ddWarn("Unrecognized block type: %i, length %i\n", type, length);
      ddStream_skip(s, length);
      action = ddBlockUnknown;
    }
    if (s->listener) s->listener(s->listenerContext, root, type, length, action);
  }
}

void ddActiveList_add(ddMovie* movie, ddInstance* instance) {
  if (instance->type != ddCharacterTimeline) {
    ddWarn("Trying to add non-clip to active list!");
    return;
  }
  ddActiveNode* node = static_cast<ddActiveNode*>(ddCalloc(1, sizeof(ddActiveNode)));
  node->clip = reinterpret_cast<ddClip*>(instance);
  node->clip->node = node;
  if (movie->activeTail)
    movie->activeTail->next = node;
  else
    movie->activeHead = node;
  movie->activeTail = node;
}

ddMovie* ddMovie_create(ddSurface* surface, const uint8_t* data, int32_t length) {
  ddMovie* movie = static_cast<ddMovie*>(ddCalloc(1, sizeof(ddMovie)));
  movie->surface = surface;
  movie->width = surface ? surface->width : 0;
  movie->height = surface ? surface->height : 0;
  movie->viewport = ddRect{0, movie->width << 10, 0, movie->height << 10};
  movie->rootMatrix = ddMatrixIdentity;
  movie->dirty = ddRectList_create();
  movie->stream = ddStream_create(data, length);
  movie->backgroundColor = 0xffffffffu;
  return movie;
}

size_t ddMovie_beginWork(ddMovie* movie) {
  const size_t mark = ddMemory_liveBytes();
  if (movie->memoryBudget > 0) {
    const int64_t left = movie->memoryBudget - movie->memoryHeld;
    ddMemory_setSoftLimit(mark + size_t(left > 0 ? left : 0));
  }
  return mark;
}

void ddMovie_endWork(ddMovie* movie, size_t mark) {
  movie->memoryHeld += int64_t(ddMemory_liveBytes()) - int64_t(mark);
  ddMemory_setSoftLimit(SIZE_MAX);
}

void ddMovie_setBudget(ddMovie* movie) {
  const int64_t data = movie->stream ? int64_t(movie->stream->present) : 0;
  movie->memoryBudget = movie->memoryHeld + ddMovieBudgetFactor * data + ddMovieBudgetAllowance;
}

int ddMovie_open(ddMovie* movie) {
  if (ddMovie_parse(movie->stream) < 0) return -1;
  movie->backgroundColor = movie->stream->backgroundColor;
  movie->rootTimeline = movie->stream->root;
  movie->frameRate = movie->stream->frameRate;
  movie->rootClip = ddClip_create(movie, movie->rootTimeline);
  movie->rootClip->info->name = ddStrdup("_level0");
  movie->rootClip->info->root = movie->rootClip->info;
  fitFrame(movie);
  return 0;
}

void ddMovie_start(ddMovie* movie) {
  for (ddActiveNode* n = movie->activeHead; n; n = n->next) {
    ddClip* c = n->clip;
    if (!c || !(c->flags & ddClipActive)) continue;
    if (c->flags & ddClipStarted) c->frame++;
    if (c->timeline->nFrames == 1) c->flags |= ddClipStopped;
    if (c->frame >= c->timeline->nFrames) c->frame = 0;
  }
  // Clips made while this runs are appended and visited too.
  for (ddActiveNode* n = movie->activeHead; n; n = n->next) {
    ddClip* c = n->clip;
    if (c && !(c->flags & ddClipRemoved)) ddClip_start(movie, c);
  }
}

void ddMovie_resize(ddMovie* movie, ddSurface* surface) {
  ddSurface_destroy(movie->surface);
  movie->surface = surface;
  movie->width = surface->width;
  movie->height = surface->height;
  movie->viewport = ddRect{0, movie->width << 10, 0, movie->height << 10};
  if (movie->rootClip) fitFrame(movie);
  ddRectList_add(movie->dirty, movie->viewport);
}

void ddMovie_draw(ddMovie* movie, const ddRect** outRects, int32_t* outCount) {
  ddClip* root = movie->rootClip;
  root->head.update(&root->head, movie->dirty, &ddMatrixIdentity);
  if (root->head.state & ddStateChanged) ddRectList_add(movie->dirty, root->head.bounds);
  root->head.state = 0;
  ddRectList* dirty = movie->dirty;
  ddRectList_clip(dirty, movie->viewport);
  for (int32_t i = 0; i < dirty->count; i++) {
    ddRect& r = dirty->rects[i];
    if (ddRect_isEmpty(r)) continue;
    r.xMin &= ~1023;
    r.yMin &= ~1023;
    r.xMax = ddWrap(int64_t(r.xMax) + 1023) & ~1023;
    r.yMax = ddWrap(int64_t(r.yMax) + 1023) & ~1023;
  }
  ddSurface* surface = movie->surface;
  for (int32_t i = 0; i < dirty->count && surface; i++) {
    const ddRect& r = dirty->rects[i];
    if (ddRect_isEmpty(r)) continue;
    int32_t x0 = std::max(0, r.xMin >> 10), x1 = std::min<int32_t>(surface->width, r.xMax >> 10);
    int32_t y0 = std::max(0, r.yMin >> 10), y1 = std::min<int32_t>(surface->height, r.yMax >> 10);
    for (int32_t y = y0; y < y1 && x0 < x1; y++)
      std::memset(surface->pixels + size_t(y) * surface->width + x0, 0, size_t(x1 - x0) * 4);
  }
  for (int32_t i = 0; i < dirty->count; i++) {
    ddRect clip = dirty->rects[i];
    root->head.draw(&root->head, surface, dirty, &ddMatrixIdentity, &ddCxformIdentity, &clip);
  }
  if (outRects) *outRects = dirty->rects;
  if (outCount) *outCount = dirty->count;
  dirty->count = 0;
}

void ddMovie_dispose(ddMovie* movie) {
  if (!movie) return;
  freeNodes(movie->activeHead);
  // Clips that left the stage are kept to the end, and freed with the movie.
  for (ddActiveNode* n = movie->removedHead; n; n = n->next) n->clip->head.destroy(&n->clip->head);
  freeNodes(movie->removedHead);
  if (movie->rootClip) movie->rootClip->head.destroy(&movie->rootClip->head);
  ddRectList_destroy(movie->dirty);
  ddTimeline_destroy(movie->stream ? movie->stream->root : movie->rootTimeline);
  ddStream_destroy(movie->stream);
  ddSurface_destroy(movie->surface);
  ddFree(movie);
}
