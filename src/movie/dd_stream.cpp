// Byte, bit and value readers. The file is trusted for its structure, but no
// read ever leaves the bytes that are really there.
#include "movie/dd_stream.h"

#include <cmath>
#include <cstring>

#include "movie/dd_timeline.h"

namespace {

uint8_t memoryReadByte(ddStream* s) {
  uint64_t p = s->pos++;
  return p < s->present ? s->data[p] : 0;
}

bool memoryAtEnd(const ddStream* s) {
  return s->pos >= uint64_t(int64_t(s->size));
}

void memorySeek(ddStream* s, uint64_t pos) {
  s->pos = pos;
}

}  // namespace

const ddStreamOps ddStream_memoryOps = {memoryReadByte, memoryAtEnd, memorySeek};

ddStream* ddStream_create(const uint8_t* data, int32_t size) {
  ddStream* s = static_cast<ddStream*>(ddCalloc(1, sizeof(ddStream)));
  s->data = data;
  s->size = size;
  s->present = size > 0 ? uint64_t(size) : 0;
  s->ops = &ddStream_memoryOps;
  s->root = ddTimeline_create(nullptr);
  return s;
}

void ddStream_destroy(ddStream* s) {
  if (!s) return;
  ddFree(s->owned);
  ddFree(s);
}

bool ddStream_exhausted(const ddStream* s) {
  return s->ops == &ddStream_memoryOps && s->pos >= s->present;
}

void ddStream_align(ddStream* s) {
  if (s->bitCount > 0) {
    s->bitCount = 0;
    s->bitBuffer = 0;
  }
}

uint32_t ddStream_readBits(ddStream* s, int n) {
  // Only the low bitCount bits of bitBuffer are held; a byte read drops the
  // count but may leave the buffer, and those stale bits must never show.
  uint32_t held = s->bitCount > 0 ? s->bitBuffer & ((1u << s->bitCount) - 1) : 0;
  if (n == s->bitCount) {
    s->bitBuffer = 0;
    s->bitCount = 0;
    return held;
  }
  if (n < s->bitCount) {
    s->bitCount -= n;
    uint32_t result = held >> s->bitCount;
    s->bitBuffer = held & ((1u << s->bitCount) - 1);
    return result;
  }
  uint64_t result = held;
  int need = n - (s->bitCount > 0 ? s->bitCount : 0);
  if (s->ops == &ddStream_memoryOps && need > 0 && need <= 32 && s->pos + 8 <= s->present) {
    // The next eight bytes in one big-endian word: the bits it takes, then the
    // rest of the last byte it touched held as the byte loop below holds it.
    uint64_t word;
    std::memcpy(&word, s->data + s->pos, sizeof word);
    word = __builtin_bswap64(word);
    const int bytes = (need + 7) / 8;
    s->pos += uint64_t(bytes);
    s->bitCount = bytes * 8 - need;
    s->bitBuffer = uint32_t(word >> (64 - bytes * 8)) & ((1u << s->bitCount) - 1);
    return static_cast<uint32_t>(result << need | word >> (64 - need));
  }
  while (need > 8) {
    result = (result << 8) | s->ops->readByte(s);
    need -= 8;
  }
  uint32_t last = s->ops->readByte(s);
  s->bitCount = 8 - need;
  result = (result << need) | (last >> s->bitCount);
  s->bitBuffer = last & ((1u << s->bitCount) - 1);
  return static_cast<uint32_t>(result);
}

int32_t ddStream_readSBits(ddStream* s, int n) {
  if (n <= 0) return 0;
  uint32_t v = ddStream_readBits(s, n);
  if (n < 32 && (v & (1u << (n - 1)))) v |= ~((1u << n) - 1);
  return static_cast<int32_t>(v);
}

uint8_t ddStream_readU8(ddStream* s) {
  s->bitCount = 0;
  // Memory is read here rather than through the source's call.
  if (s->ops == &ddStream_memoryOps) return memoryReadByte(s);
  return s->ops->readByte(s);
}

uint16_t ddStream_readU16(ddStream* s) {
  uint16_t lo = ddStream_readU8(s);
  uint16_t hi = ddStream_readU8(s);
  return static_cast<uint16_t>(lo | (hi << 8));
}

int32_t ddStream_readS16(ddStream* s) {
  return static_cast<int16_t>(ddStream_readU16(s));
}

uint32_t ddStream_readU32(ddStream* s) {
  uint32_t lo = ddStream_readU16(s);
  uint32_t hi = ddStream_readU16(s);
  return lo | (hi << 16);
}

ddColor ddStream_readRGB(ddStream* s) {
  uint32_t r = ddStream_readU8(s);
  uint32_t g = ddStream_readU8(s);
  uint32_t b = ddStream_readU8(s);
  return r | (g << 8) | (b << 16) | 0xff000000u;
}

ddColor ddStream_readRGBA(ddStream* s) {
  uint32_t r = ddStream_readU8(s);
  uint32_t g = ddStream_readU8(s);
  uint32_t b = ddStream_readU8(s);
  uint32_t a = ddStream_readU8(s);
  return r | (g << 8) | (b << 16) | (a << 24);
}

char* ddStream_readString(ddStream* s) {
  size_t capacity = 256, length = 0;
  char* text = static_cast<char*>(ddMalloc(capacity));
  for (;;) {
    if (length + 3 > capacity) {
      capacity *= 2;
      text = static_cast<char*>(ddRealloc(text, capacity));
    }
    uint8_t c = ddStream_readU8(s);
    if (c == 0) break;
    const char* escape = c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : nullptr;
    if (escape) {
      text[length++] = escape[0];
      text[length++] = escape[1];
    } else {
      text[length++] = static_cast<char>(c);
    }
  }
  text[length] = 0;
  return text;
}

void ddStream_skip(ddStream* s, int64_t n) {
  if (n <= 0) return;
  if (s->ops == &ddStream_memoryOps) {
    // Same effect as n single reads, without n calls.
    s->bitCount = 0;
    s->pos += uint64_t(n);
    return;
  }
  while (n-- > 0) ddStream_readU8(s);
}

ddRect ddStream_readRect(ddStream* s) {
  ddStream_align(s);
  int w = int(ddStream_readBits(s, 5));
  ddRect r;
  r.xMin = ddFixed_fromTwips(ddStream_readSBits(s, w));
  r.xMax = ddFixed_fromTwips(ddStream_readSBits(s, w));
  r.yMin = ddFixed_fromTwips(ddStream_readSBits(s, w));
  r.yMax = ddFixed_fromTwips(ddStream_readSBits(s, w));
  return r;
}

namespace {

// A 16.16 factor of the file as ddFixed.
ddFixed factor(int32_t v) {
  return ddFixed_round(v * (1.0 / 65536.0) * 1024.0);
}

}  // namespace

ddMatrix ddStream_readMatrix(ddStream* s) {
  ddStream_align(s);
  ddMatrix m = ddMatrixIdentity;
  if (ddStream_readBits(s, 1)) {
    int w = int(ddStream_readBits(s, 5));
    m.a = factor(ddStream_readSBits(s, w));
    m.d = factor(ddStream_readSBits(s, w));
  }
  if (ddStream_readBits(s, 1)) {
    int w = int(ddStream_readBits(s, 5));
    m.c = factor(ddStream_readSBits(s, w));
    m.b = factor(ddStream_readSBits(s, w));
  }
  int w = int(ddStream_readBits(s, 5));
  m.tx = ddFixed_fromTwips(ddStream_readSBits(s, w));
  m.ty = ddFixed_fromTwips(ddStream_readSBits(s, w));
  return m;
}

ddCxform ddStream_readCxform(ddStream* s, bool hasAlpha) {
  ddStream_align(s);
  bool hasAdd = ddStream_readBits(s, 1);
  bool hasMul = ddStream_readBits(s, 1);
  int w = int(ddStream_readBits(s, 4));
  ddCxform cx = ddCxformIdentity;
  if (hasMul) {
    cx.rMul = static_cast<int16_t>(ddStream_readSBits(s, w));
    cx.gMul = static_cast<int16_t>(ddStream_readSBits(s, w));
    cx.bMul = static_cast<int16_t>(ddStream_readSBits(s, w));
    if (hasAlpha) cx.aMul = static_cast<int16_t>(ddStream_readSBits(s, w));
  }
  if (hasAdd) {
    cx.rAdd = static_cast<int16_t>(ddStream_readSBits(s, w));
    cx.gAdd = static_cast<int16_t>(ddStream_readSBits(s, w));
    cx.bAdd = static_cast<int16_t>(ddStream_readSBits(s, w));
    if (hasAlpha) cx.aAdd = static_cast<int16_t>(ddStream_readSBits(s, w));
  }
  return cx;
}
