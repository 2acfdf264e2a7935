// A font file's bytes added for the process, then every face it holds made
// into plain and outlined fonts that measure and draw a few characters.
#include <cstddef>
#include <cstdint>

#include "font/system_font.h"
#include "platform/font/freetype_font_system.h"

namespace {

using vostan::font::CharacterMetrics;
using vostan::font::SystemFont;

uint32_t inkSeen = 0;

// Reads every uploaded pixel, so that the sanitizer checks the whole cell.
void upload(void*, int32_t, int32_t, int32_t width, int32_t height, const void* rgba) {
  const auto* pixels = static_cast<const uint32_t*>(rgba);
  for (int64_t i = 0; i < int64_t{width} * height; i++) inkSeen += pixels[i] >> 24;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vostan::platform::FreeTypeFontSystem system(false);
  if (system.addFontBytes(data, size) == 0) return 0;
  const vostan::font::TextureTarget target{true, 1024, 1024, upload, nullptr};
  int faces = 0;
  for (const std::string& family : system.addedFamilies()) {
    if (faces++ == 4) break;
    for (int32_t flags : {vostan::font::kAntiAliased | vostan::font::kOutlined, 0}) {
      SystemFont font(system.open({family, flags ? -13 : 17, false}), flags, nullptr);
      SystemFont alt(system.open({family, -9, true}), flags, &font);
      font.altFont = &alt;
      for (char16_t c : std::u16string(u"Ag \u4e2d\u0001\uffff")) {
        CharacterMetrics m;
        bool useAlt = false;
        font.initCharacter(c, m, useAlt);
        font.createCache(c, 0, 0, m.cwidth, m.cheight, useAlt, target);
        font.createCache(c, 0, 0, font.canvasWidth, font.canvasHeight, !useAlt, target);
      }
    }
  }
  return 0;
}
