#pragma once
// Implements: installed families through fontconfig (a family is there only
// when the matched font names it: fontconfig otherwise answers with a
// substitute), faces added from files or bytes for the process, the cell and
// em senses of the height, line metrics from the OS/2 Windows ascent and
// descent, hinted glyphs drawn by FreeType, synthetic bold for a family
// without a bold face.
// Leaves out: italic, underline, kerning, colour (emoji) glyphs.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/font/font_system.h"

namespace vostan::platform {

class FreeTypeFontSystem : public FontSystem {
 public:
  // Without `installed`, only faces added to this object are found.
  explicit FreeTypeFontSystem(bool installed = true);
  ~FreeTypeFontSystem() override;

  std::unique_ptr<FontFace> open(const FontRequest& request) override;
  int32_t addFontFile(const std::string& path) override;
  // As addFontFile, from the bytes of a font file.
  int32_t addFontBytes(const uint8_t* data, std::size_t size);
  // The file of an installed family and the face's index in it; "" when the
  // family is not installed.
  static std::string installedFile(const std::string& family, bool bold = false,
                                   int* index = nullptr);
  // The families of the added faces, in the order they were added.
  std::vector<std::string> addedFamilies() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace vostan::platform
