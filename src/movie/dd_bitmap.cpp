// Lossless bitmaps: zlib data in palette or 32-bit form, turned into
// premultiplied colour words.
#include "movie/dd_bitmap.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "movie/dd_timeline.h"

namespace {

// Some writers put a little more data in a block than its size implies; the
// inflate buffer is this much longer so that such files still open.
constexpr size_t kInflateMargin = 1272;

void bitmapDestroy(ddCharacter* character) {
  ddSurface_destroy(reinterpret_cast<ddBitmapCharacter*>(character)->surface);
  ddFree(character);
}

// The largest bitmap a movie may hold, as wide-spread players allow it.
constexpr uint32_t kMaxSide = 8191;
constexpr uint64_t kMaxPixels = 16777215;
// zlib inflates one byte into at most 1032.
constexpr uint64_t kMaxInflateRatio = 1032;

// Whether `rest` bytes of the block can inflate into `needed` bytes of pixels
// of a bitmap that size. A size the data can't back is a damaged or hostile
// file; its bitmap is dropped, the rest of the movie plays.
bool backed(const ddStream* s, uint32_t width, uint32_t height, uint64_t needed, int64_t rest) {
  if (width > kMaxSide || height > kMaxSide || uint64_t(width) * height > kMaxPixels) return false;
  uint64_t available = uint64_t(std::max<int64_t>(rest, 0));
  if (s->ops == &ddStream_memoryOps)
    available = std::min<uint64_t>(available, s->present > s->pos ? s->present - s->pos : 0);
  return needed <= available * kMaxInflateRatio + 64;
}

ddColor opaque(uint32_t r, uint32_t g, uint32_t b) {
  return r | g << 8 | b << 16 | 0xff000000u;
}

// Copies the next `count` bytes of the block. Bytes beyond what the file
// really holds are not copied: they could only be zeros.
uint8_t* readRest(ddStream* s, int64_t count, size_t* copied) {
  uint64_t n = uint64_t(std::max<int64_t>(count, 0));
  const bool memory = s->ops == &ddStream_memoryOps;
  if (memory) n = std::min<uint64_t>(n, s->present > s->pos ? s->present - s->pos : 0);
  uint8_t* bytes = static_cast<uint8_t*>(ddMalloc(size_t(n) + 1));
  if (memory) {
    if (n) std::memcpy(bytes, s->data + s->pos, size_t(n));
    ddStream_skip(s, std::max<int64_t>(count, 0));
  } else {
    for (uint64_t i = 0; i < n; i++) bytes[i] = ddStream_readU8(s);
  }
  *copied = size_t(n);
  return bytes;
}

}  // namespace

ddBitmapCharacter* ddBitmapCharacter_create(ddSurface* surface) {
  ddBitmapCharacter* c = static_cast<ddBitmapCharacter*>(ddCalloc(1, sizeof(ddBitmapCharacter)));
  c->head.type = ddCharacterBitmap;
  c->head.destroy = bitmapDestroy;
  c->surface = surface;
  return c;
}

void ddStream_readBitmapBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length) {
  const bool withAlpha = blockType == 36;
  ddStream_align(s);
  uint64_t start = s->pos;
  int32_t id = ddStream_readU16(s);
  int format = ddStream_readU8(s);
  uint32_t width = ddStream_readU16(s);
  uint32_t height = ddStream_readU16(s);
  size_t rowBytes = (size_t(width) + 3) & ~size_t(3);

  uint32_t colors = 0;
  size_t outSize;
  if (format == 3) {
    colors = uint32_t(ddStream_readU8(s)) + 1;
    outSize = rowBytes * height + size_t(colors) * 4;
  } else {
    // 15-bit data (format 4) is not told apart: every direct pixel is 4 bytes.
    outSize = size_t(width) * height * 4;
  }
  const int64_t rest = int64_t(length) - int64_t(s->pos - start);
  if (!backed(s, width, height, outSize, rest)) {
    ddWarn("Bitmap %i of %ux%u dropped: its data cannot hold it", id, width, height);
    ddStream_skip(s, std::max<int64_t>(rest, 0));
    return;
  }
  ddSurface* surface = ddSurface_create(int(width), int(height));
  outSize += kInflateMargin;

  size_t inSize = 0;
  uint8_t* in = readRest(s, int64_t(length) - int64_t(s->pos - start), &inSize);
  uint8_t* out = static_cast<uint8_t*>(ddCalloc(outSize, 1));
  uLongf produced = outSize;
  int err = uncompress(out, &produced, in, uLong(inSize));
  ddFree(in);
  if (err != Z_OK) {
    ddFree(out);
    ddSurface_destroy(surface);
    ddFatal("Couldn't uncompress bits! (err: %i)\n", err);
  }

  ddColor* px = surface->pixels;
  if (format == 3) {
    ddColor palette[256];
    const uint8_t* p = out;
    for (uint32_t i = 0; i < colors; i++) {
      if (withAlpha) {
        palette[i] = ddColor_scale(opaque(p[0], p[1], p[2]), p[3]);
        p += 4;
      } else {
        // Palette entries without alpha stay fully opaque, unscaled.
        palette[i] = opaque(p[0], p[1], p[2]);
        p += 3;
      }
    }
    for (uint32_t y = 0; y < height; y++, p += rowBytes) {
      for (uint32_t x = 0; x < width; x++) {
        uint32_t index = p[x];
        *px++ = palette[index < colors ? index : 0];
      }
    }
  } else {
    // Alpha, red, green, blue; the first byte scales the pixel in both blocks,
    // reserved or not.
    const uint8_t* p = out;
    for (size_t n = size_t(width) * height; n; n--, p += 4)
      *px++ = ddColor_scale(opaque(p[1], p[2], p[3]), p[0]);
  }
  ddFree(out);
  ddDictionary_put(timeline, id, &ddBitmapCharacter_create(surface)->head);
}
