// The scriptable font service for tests; see its header.
#include "platform/font/fake_font_system.h"

#include <cstring>

namespace vostan::platform {

namespace {

class FakeFace final : public FontFace {
 public:
  FakeFace(FakeFontSystem& system, FakeFamily family)
      : system_(system), family_(std::move(family)) {}

  FontLineMetrics lineMetrics() const override { return family_.metrics; }
  bool covers(char16_t c) const override { return family_.glyphs.count(c) != 0; }
  uint32_t glyphIndex(char16_t c) const override {
    auto it = family_.glyphs.find(c);
    return it == family_.glyphs.end() ? family_.missingGlyph : it->second.index;
  }
  uint32_t missingGlyph() const override { return family_.missingGlyph; }

  int32_t glyph(char16_t c, GlyphFormat format, GlyphBox& box, uint8_t* buffer,
                uint32_t size) override {
    (buffer ? system_.drawn : system_.measured).push_back(c);
    auto it = family_.glyphs.find(c);
    const FakeGlyph& g = it == family_.glyphs.end() ? family_.fallback : it->second;
    box = g.box;
    const uint32_t w = g.box.blackBoxX, h = g.box.blackBoxY;
    const bool mono = format == GlyphFormat::bitmap;
    const uint32_t pitch = mono ? (w + 31) / 32 * 4 : (w + 3) & ~3u;
    const uint32_t needed = pitch * h;
    if (!buffer) return static_cast<int32_t>(needed);
    if (needed > size) return -1;
    std::memset(buffer, 0, needed);
    for (uint32_t y = 0; y < h; y++)
      for (uint32_t x = 0; x < w; x++) {
        const uint8_t v = y * w + x < g.levels.size() ? g.levels[y * w + x] : 0;
        if (mono)
          buffer[y * pitch + x / 8] |= static_cast<uint8_t>((v ? 0x80 : 0) >> (x % 8));
        else
          buffer[y * pitch + x] = v;
      }
    return static_cast<int32_t>(needed);
  }

 private:
  FakeFontSystem& system_;
  FakeFamily family_;
};

}  // namespace

std::unique_ptr<FontFace> FakeFontSystem::open(const FontRequest& request) {
  requests.push_back(request);
  auto it = families.find(request.family);
  if (it == families.end()) return nullptr;
  return std::make_unique<FakeFace>(*this, it->second);
}

int32_t FakeFontSystem::addFontFile(const std::string& path) {
  auto it = files.find(path);
  if (it == files.end()) return 0;
  for (const auto& [name, family] : it->second) families[name] = family;
  return static_cast<int32_t>(it->second.size());
}

}  // namespace vostan::platform
