// A small movie that uses what the player reads: solid and bitmap fills, a
// named and an unnamed sprite, moves and a removal over three root frames.
#pragma once

#include "swf_writer.h"

namespace sample {

// Pixel positions at a surface of 550 by 400 (scale 1).
constexpr int kSquareX = 20, kSquareY = 20, kSquareSize = 100;  // root's red square, frame 0
constexpr int kSquareMovedX = 60, kSquareMovedY = 60;           // the same in frames 1 and 2
constexpr int kHeroX = 200, kHeroY = 100;                       // "hero" sprite, depth 2
constexpr int kOtherX = 300, kOtherY = 250;                     // unnamed sprite, depth 7
constexpr int kSpriteSquare = 60;  // green square in the sprites, 40 px right in frame 1
constexpr int kBitmapX = 350, kBitmapY = 20, kBitmapSize = 160;  // tiled 8 by 8 bitmap

swf::Bytes movie(bool compressed = false);

// Rectangles in pixels from the origin, filled with one colour.
swf::Bytes colouredRect(int id, int width, int height, uint8_t r, uint8_t g, uint8_t b,
                        uint8_t a = 255);
swf::Bytes colouredSquare(int id, int size, uint8_t r, uint8_t g, uint8_t b, uint8_t a = 255);
swf::Bytes translate(int depth, int id, int x, int y, const char* name = nullptr);

}  // namespace sample
