// The demo movie's morphing shape and its line of text.
#pragma once

#include <string>

#include "swf_writer.h"

namespace demo {

// A morph from a small teal square to a wide golden diamond, `size` twips
// across at its widest.
swf::Bytes morph(int id, int size);
// A block-letter font of the capitals the demo writes, and the space.
swf::Bytes font(int id);
// Static text in `font` at `height` twips, in a colour.
swf::Bytes text(int id, int font, const std::string& line, int height, swf::Solid colour);
// The ratio of frame f of n: there and back once.
int pingPong(int f, int n);

}  // namespace demo
