// Writes seed movies for the movie fuzz target that hold morph shapes, fonts
// and text, sound and damaged, which the corpus beside the repository has few
// of. Usage: movie_seeds OUT_DIR
#include <cstdio>
#include <fstream>
#include <string>

#include "swf_writer.h"

namespace {

using swf::Bytes;

swf::Writer square(int32_t x, int32_t y, int32_t size, bool styled) {
  swf::Writer w;
  w.bits(styled ? 1 : 0, 4);
  w.bits(0, 4);
  w.styleChange(styled ? 1 : 0, 0, std::make_pair(x, y), std::nullopt,
                styled ? std::optional<uint32_t>(1u) : std::nullopt, std::nullopt);
  w.lineEdge(size, 0);
  w.curveEdge(size / 2, size / 2, -size / 2, size / 2);
  w.lineEdge(-size, 0);
  w.lineEdge(0, -size);
  w.endShape();
  return w;
}

swf::Bytes place(int depth, std::optional<int> id, int ratio) {
  swf::Place p;
  p.depth = depth;
  p.id = id;
  p.ratio = ratio;
  p.move = !id;
  return swf::placeObject2(p);
}

Bytes morphs() {
  Bytes more = swf::defineMorphShape(2, {{{255, 0, 0}, {0, 0, 255}}},
                                     {{{40, {0, 0, 0}}, {200, {255, 255, 255}}}},
                                     square(0, 0, 400, true), square(100, 50, 2000, false));
  return swf::movie(
      swf::concat({swf::defineMorphShape(1, {{{0, 255, 0}, {0, 0, 0, 0}}}, {},
                                         square(20, 20, 1000, true), square(500, 500, 3000, false)),
                   more, place(1, 1, 0), place(2, 2, 65535), swf::showFrame(),
                   place(1, std::nullopt, 30000), place(2, std::nullopt, 100), swf::showFrame(),
                   swf::end()}),
      swf::MovieOptions{8, 0, 11000, 0, 8000, 0, 12, 2, false});
}

Bytes text() {
  swf::Font2 font;
  font.glyphs = {swf::glyphRectangle(0, -700, 400, 700), swf::glyphRectangle(50, -400, 300, 400)};
  font.codes = {'a', 'b'};
  font.advances = {500, 400};
  font.kerning = {{'a', 'b', 10}};
  swf::TextRecord first;
  first.font = 1;
  first.height = 480;
  first.colour = swf::Solid{10, 20, 30};
  first.x = 100;
  first.y = 600;
  first.glyphs = {{0, 300}, {1, 300}, {5, 200}};
  swf::TextRecord second;
  second.colour = swf::Solid{200, 20, 30, 128};
  second.glyphs = {{1, 300}};
  return swf::movie(swf::concat(
      {swf::defineFont2(1, font), swf::defineFont(2, {swf::glyphRectangle(0, -500, 500, 500)}),
       swf::defineFontInfo(2, "Box", {'x'}), swf::defineText(33, 3, {first, second}, 3, 10),
       swf::defineEditText(4, 1, 360, {0, 0, 255, 255}, "abba cab"), swf::placeNew(1, 3),
       swf::placeNew(2, 4), swf::showFrame(), swf::end()}));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: movie_seeds OUT_DIR\n");
    return 2;
  }
  const std::pair<const char*, Bytes> seeds[] = {{"morphs.swf", morphs()}, {"text.swf", text()}};
  for (const auto& [name, bytes] : seeds) {
    std::ofstream out(std::string(argv[1]) + "/" + name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    if (!out) return 1;
  }
  return 0;
}
