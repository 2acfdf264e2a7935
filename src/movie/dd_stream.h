// The byte and bit reader under the movie parser.
#pragma once

#include "movie/dd_base.h"

struct ddStream;
struct ddTimeline;

// The byte source behind a stream, so that another source can stand behind
// the same readers.
struct ddStreamOps {
  uint8_t (*readByte)(ddStream* s);
  bool (*atEnd)(const ddStream* s);
  void (*seek)(ddStream* s, uint64_t pos);
};

// What the block loop did with one block, for whoever listens.
enum ddBlockAction {
  ddBlockRead = 0,     // a handler read it
  ddBlockSkipped = 1,  // known and deliberately passed over by its length
  ddBlockUnknown = 2,  // unknown type: warned about and passed over
};
typedef void (*ddBlockListener)(void* context, const ddTimeline* timeline, int type, int32_t length,
                                ddBlockAction action);

struct ddStream {
  uint64_t pos;
  uint32_t bitBuffer;
  int32_t bitCount;
  const uint8_t* data;
  int32_t size;
  float frameRate;
  int32_t fileLength;
  int32_t version;
  int32_t curX, curY;  // pen of the shape reader, in twips
  const ddStreamOps* ops;
  ddTimeline* root;
  ddColor backgroundColor;

  // Bytes really present behind `data`. The file may claim more (the inflated
  // size counts the header, a truncated file claims what it lost); reads past
  // what is present give 0, so a damaged file can never read outside memory.
  uint64_t present;
  uint8_t* owned;  // inflated bytes of a compressed file
  ddBlockListener listener;
  void* listenerContext;
};

extern const ddStreamOps ddStream_memoryOps;

// A stream over `data` (not copied) with a new, empty root timeline.
ddStream* ddStream_create(const uint8_t* data, int32_t size);
// Frees the stream and its inflated bytes; the root timeline is not touched.
void ddStream_destroy(ddStream* s);

// True when every further read can only give zeros: the memory source is
// past the bytes it really holds. Loops bounded by a length the file states
// stop there, since the rest could only be empty blocks.
bool ddStream_exhausted(const ddStream* s);

void ddStream_align(ddStream* s);
uint32_t ddStream_readBits(ddStream* s, int n);
int32_t ddStream_readSBits(ddStream* s, int n);
uint8_t ddStream_readU8(ddStream* s);
uint16_t ddStream_readU16(ddStream* s);
int32_t ddStream_readS16(ddStream* s);
uint32_t ddStream_readU32(ddStream* s);
ddColor ddStream_readRGB(ddStream* s);
ddColor ddStream_readRGBA(ddStream* s);
// A new zero-terminated text (ddFree it), with tab, line feed and carriage
// return written as the two-character escapes \t, \n, \r.
char* ddStream_readString(ddStream* s);
void ddStream_skip(ddStream* s, int64_t n);
ddRect ddStream_readRect(ddStream* s);
ddMatrix ddStream_readMatrix(ddStream* s);
ddCxform ddStream_readCxform(ddStream* s, bool hasAlpha);
