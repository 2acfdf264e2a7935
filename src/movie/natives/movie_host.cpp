#include "movie/natives/movie_host.h"

#include <mutex>

#include "movie/render/dd_render.h"

ddMovie* ddMovie_openBytes(const uint8_t* data, int32_t length, int width, int height,
                           ddBlockListener listener, void* listenerContext) {
  static std::once_flag installed;
  std::call_once(installed, ddRender_install);
  // What opening allocates is tracked, so that a movie refused halfway for
  // passing its budget leaves nothing behind. A caller already tracking keeps
  // its own account.
  const bool ownTracking = !ddMemory_isTracking();
  if (ownTracking) ddMemory_setTracking(true);
  const size_t mark = ddMemory_liveBytes();
  ddMovie* movie = nullptr;
  try {
    movie = ddMovie_create(ddSurface_create(width, height), data, length);
    movie->stream->listener = listener;
    movie->stream->listenerContext = listenerContext;
    // The surface is the caller's choice; all else must come from the data.
    ddMemory_setBudget(ddMemory_liveBytes(), &movie->stream->present, ddMovieBudgetFactor,
                       size_t(ddMovieBudgetAllowance));
    if (ddMovie_open(movie) < 0) {
      ddMovie_dispose(movie);
      movie = nullptr;
    } else {
      ddMovie_endWork(movie, mark);
      ddMovie_setBudget(movie);
      const size_t started = ddMovie_beginWork(movie);
      ddMovie_start(movie);
      ddMovie_endWork(movie, started);
    }
  } catch (const ddOverBudget&) {
    ddWarn("Movie refused: it needs more than %lld times its %llu bytes of memory",
           static_cast<long long>(ddMovieBudgetFactor),
           static_cast<unsigned long long>(movie && movie->stream ? movie->stream->present : 0));
    ddMemory_setSoftLimit(SIZE_MAX);
    if (ownTracking) ddMemory_releaseTracked();
    movie = nullptr;
  }
  ddMemory_setBudget(0, nullptr, 0, 0);
  if (ownTracking) {
    ddMemory_keepTracked();
    ddMemory_setTracking(false);
  }
  return movie;
}

void ddMovie_setSize(ddMovie* movie, int width, int height) {
  // The surface is the caller's choice: the budget moves with it.
  const size_t mark = ddMovie_beginWork(movie);
  ddMovie_resize(movie, ddSurface_create(width, height));
  const int64_t before = movie->memoryHeld;
  ddMovie_endWork(movie, mark);
  movie->memoryBudget += movie->memoryHeld - before;
}

void ddMovie_moveClip(ddMovie* movie, ddClip* clip, int32_t frame) {
  const size_t mark = ddMovie_beginWork(movie);
  ddClip_moveFrame(movie, clip, frame);
  ddMovie_endWork(movie, mark);
}

void ddMovie_drawToTexture(ddMovie* movie, int32_t x, int32_t y, const ddTextureTarget& target) {
  const int32_t width = movie->surface->width, height = movie->surface->height;
  const size_t mark = ddMovie_beginWork(movie);
  ddMovie_draw(movie, nullptr, nullptr);
  ddMovie_endWork(movie, mark);
  if (!target.present || target.width < width || target.height < height) return;
  // The colour word's bytes in memory are red, green, blue, alpha.
  target.upload(target.context, x, y, width, height, movie->surface->pixels);
}

namespace {

bool instanceHit(const ddInstance* i, ddFixed x, ddFixed y) {
  switch (i->type) {
    case ddCharacterShape: {
      const ddRender* render = reinterpret_cast<const ddShapeInstance*>(i)->render;
      return render && ddRender_hit(render, x, y);
    }
    case ddCharacterText: {
      const ddGlyphList& g = reinterpret_cast<const ddTextInstance*>(i)->glyphs;
      for (int32_t k = 0; k < g.count; k++)
        if (g.entries[k].render && ddRender_hit(g.entries[k].render, x, y)) return true;
      return false;
    }
    case ddCharacterTimeline:
      return ddClip_hit(reinterpret_cast<const ddClip*>(i), x, y);
    default:
      return false;
  }
}

}  // namespace

bool ddClip_hit(const ddClip* clip, ddFixed x, ddFixed y) {
  if (!clip->displayList) return false;
  for (const ddInstance* i = clip->displayList->head; i; i = i->next)
    if (instanceHit(i, x, y)) return true;
  return false;
}

ddClip* ddMovie_hitClip(ddMovie* movie, int32_t x, int32_t y) {
  // Clips that left the stage keep their place in the list with no clip.
  ddClip* candidates[ddHitCandidates];
  int count = 0;
  for (ddActiveNode* n = movie->activeHead; n && count < ddHitCandidates; n = n->next)
    if (n->clip) candidates[count++] = n->clip;
  const ddFixed px = ddWrap(int64_t(x) << 10), py = ddWrap(int64_t(y) << 10);
  // Later clips lie over earlier ones; the root (first) is never the answer.
  for (int k = count - 1; k >= 1; k--)
    if (ddClip_hit(candidates[k], px, py)) return candidates[k];
  return nullptr;
}

float ddMovie_paramf(const ddMovie* movie, int32_t id) {
  switch (id) {
    case 0:
      return movie->frameRate;
    case 1:
      return float(movie->rootTimeline->nFrames);
    default:
      return 0.0f;
  }
}

float ddClip_paramf(const ddClip* clip, int32_t id) {
  return id == 1 ? float(clip->timeline->nFrames) : 0.0f;
}

const char* ddClip_paramv(const ddClip* clip, int32_t id) {
  if (id != 0 || !clip->info) return nullptr;
  return clip->info->name;
}

std::string ddText_toModifiedUtf8(const char* text) {
  std::string out;
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  auto continuation = [](unsigned char c) { return (c & 0xC0) == 0x80; };
  while (*p) {
    unsigned char c = *p;
    int length = c < 0x80 ? 1 : (c & 0xE0) == 0xC0 ? 2 : (c & 0xF0) == 0xE0 ? 3 : 0;
    bool valid = length > 0;
    for (int k = 1; valid && k < length; k++) valid = continuation(p[k]);
    // Overlong forms and surrogates are no characters of a Java string.
    if (valid && length == 2) valid = c >= 0xC2;
    if (valid && length == 3) {
      uint32_t cp = (c & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
      valid = cp >= 0x800 && (cp < 0xD800 || cp > 0xDFFF);
    }
    if (valid) {
      out.append(reinterpret_cast<const char*>(p), size_t(length));
      p += length;
    } else {
      out += char(0xC0 | (c >> 6));
      out += char(0x80 | (c & 0x3F));
      p++;
    }
  }
  return out;
}
