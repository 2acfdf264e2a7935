// Lossless bitmap characters (blocks 20 and 36), the pixels of bitmap fills.
#pragma once

#include "movie/dd_character.h"

// Reads one lossless bitmap block of `length` bytes (the stream just after the
// block header) into a ddBitmapCharacter under its id. Pixels are stored as
// premultiplied colour words, one per pixel, with no row padding.
void ddStream_readBitmapBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length);

ddBitmapCharacter* ddBitmapCharacter_create(ddSurface* surface);
