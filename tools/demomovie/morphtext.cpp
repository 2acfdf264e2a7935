#include "morphtext.h"

#include <utility>
#include <vector>

namespace demo {

namespace {

using Points = std::vector<std::pair<int32_t, int32_t>>;

// Capitals as 5 by 7 dots, row by row from the top.
struct Letter {
  char code;
  const char* rows[7];
};
const Letter kLetters[] = {
    {'A', {".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"}},
    {'E', {"#####", "#....", "#....", "####.", "#....", "#....", "#####"}},
    {'I', {".###.", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {'M', {"#...#", "##.##", "#.#.#", "#.#.#", "#...#", "#...#", "#...#"}},
    {'N', {"#...#", "##..#", "#.#.#", "#..##", "#...#", "#...#", "#...#"}},
    {'O', {".###.", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."}},
    {'S', {".####", "#....", "#....", ".###.", "....#", "....#", "####."}},
    {'T', {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."}},
    {'V', {"#...#", "#...#", "#...#", "#...#", "#...#", ".#.#.", "..#.."}},
    {'X', {"#...#", "#...#", ".#.#.", "..#..", ".#.#.", "#...#", "#...#"}},
    {' ', {".....", ".....", ".....", ".....", ".....", ".....", "....."}},
};
constexpr int kDot = 128;           // in the 1024-unit glyph square
constexpr int kAdvance = 6 * kDot;  // five dots and a gap

// One rectangle per run of dots in a row, the baseline at the bottom row.
swf::Writer glyph(const Letter& l) {
  swf::Writer w;
  w.bits(1, 4);
  w.bits(0, 4);
  bool first = true;
  for (int row = 0; row < 7; row++) {
    for (int x = 0; x < 5;) {
      if (l.rows[row][x] != '#') {
        x++;
        continue;
      }
      int end = x;
      while (end < 5 && l.rows[row][end] == '#') end++;
      const int32_t left = x * kDot, top = (row - 7) * kDot, width = (end - x) * kDot;
      w.styleChange(1, 0, std::make_pair(left, top), std::nullopt,
                    first ? std::optional<uint32_t>(1u) : std::nullopt, std::nullopt);
      first = false;
      w.lineEdge(width, 0);
      w.lineEdge(0, kDot);
      w.lineEdge(-width, 0);
      w.lineEdge(0, -kDot);
      x = end;
    }
  }
  w.endShape();
  return w;
}

int glyphIndex(char c) {
  for (size_t i = 0; i < std::size(kLetters); i++)
    if (kLetters[i].code == c) return int(i);
  return int(std::size(kLetters)) - 1;  // the space
}

}  // namespace

swf::Bytes morph(int id, int size) {
  const int s = size / 8, w = size / 2, h = size / 4;
  const Points square = {{-s, -s}, {s, -s}, {s, s}, {-s, s}};
  const Points diamond = {{0, -h}, {w, 0}, {0, h}, {-w, 0}};
  return swf::defineMorphShape(id, {{{20, 170, 180}, {250, 200, 40}}}, {},
                               swf::closedPolygon(square), swf::closedPolygon(diamond, false),
                               {-w, w, -h, h});
}

swf::Bytes font(int id) {
  swf::Font2 f;
  for (const Letter& l : kLetters) {
    f.glyphs.push_back(glyph(l));
    f.codes.push_back(uint16_t(uint8_t(l.code)));
    f.advances.push_back(kAdvance);
  }
  return swf::defineFont2(id, f);
}

swf::Bytes text(int id, int font, const std::string& line, int height, swf::Solid colour) {
  swf::TextRecord r;
  r.font = font;
  r.height = height;
  r.colour = colour;
  r.x = 0;
  r.y = 0;
  for (char c : line) r.glyphs.push_back({uint32_t(glyphIndex(c)), kAdvance * height / 1024});
  return swf::defineText(33, id, {r});
}

int pingPong(int f, int n) {
  const int half = n / 2;
  const int t = f <= half ? f : n - f;
  return t * 65535 / half;
}

}  // namespace demo
