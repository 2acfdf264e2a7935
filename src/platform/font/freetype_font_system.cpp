// The font service over FreeType and fontconfig; what it covers and leaves out
// stands at the top of its header.
#include "platform/font/freetype_font_system.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_SYNTHESIS_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>

namespace vostan::platform {

namespace {

using Library = std::shared_ptr<FT_LibraryRec_>;
using Bytes = std::shared_ptr<const std::vector<uint8_t>>;

constexpr int32_t kDefaultCellHeight = 16;
// Larger sizes are drawn at this em height: a glyph cell beyond it would not
// fit a texture anyway, and the canvas grows with the square of it.
constexpr int64_t kLargestEm = 1024;
// A font file larger than this is refused rather than read whole.
constexpr std::streamoff kLargestFile = 256 << 20;

// FreeType's 256 coverage levels in the 65 of a Windows gray glyph.
constexpr auto kLevels = [] {
  std::array<uint8_t, 256> levels{};
  for (int v = 0; v < 256; v++) levels[v] = static_cast<uint8_t>((v * 64 + 127) / 255);
  return levels;
}();

bool sameFamily(const std::string& a, const char* b) {
  if (!b || a.size() != std::strlen(b)) return false;
  for (size_t i = 0; i < a.size(); i++) {
    auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
    if (lower(static_cast<unsigned char>(a[i])) != lower(static_cast<unsigned char>(b[i])))
      return false;
  }
  return true;
}

bool isBold(FT_Face face) {
  return (face->style_flags & FT_STYLE_FLAG_BOLD) != 0;
}

// The em size that gives the requested height: a positive one is the cell,
// which Windows measures between the OS/2 Windows ascent and descent.
bool setHeight(FT_Face face, int32_t requested) {
  int64_t height = requested == 0 ? kDefaultCellHeight : requested;
  if (FT_IS_SCALABLE(face)) {
    int64_t em26;
    if (height < 0) {
      em26 = std::min(-height, kLargestEm) * 64;
    } else {
      const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
      int64_t cell = os2 && os2->usWinAscent + os2->usWinDescent > 0
                         ? int64_t{os2->usWinAscent} + os2->usWinDescent
                         : int64_t{face->ascender} - face->descender;
      if (cell <= 0) cell = face->units_per_EM;
      em26 = std::min(height * 64 * face->units_per_EM / cell, kLargestEm * 64);
      if (em26 < 64) em26 = 64;
    }
    return FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(em26), 72, 72) == 0;
  }
  if (face->num_fixed_sizes <= 0) return false;
  // A bitmap font: the strike nearest the height.
  const int64_t want = height < 0 ? -height : height;
  int best = 0;
  for (int i = 1; i < face->num_fixed_sizes; i++)
    if (std::abs(face->available_sizes[i].height - want) <
        std::abs(face->available_sizes[best].height - want))
      best = i;
  return FT_Select_Size(face, best) == 0;
}

// What a sane font measures at most, in pixels: a damaged file's numbers must
// not make a canvas of gigabytes.
int32_t largestExtent(FT_Face face) {
  return 4 * int32_t{face->size->metrics.y_ppem} + 16;
}

FontLineMetrics lineMetricsOf(FT_Face face) {
  FontLineMetrics m;
  const FT_Size_Metrics& s = face->size->metrics;
  if (FT_IS_SCALABLE(face)) {
    const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    const bool win = os2 && os2->usWinAscent + os2->usWinDescent > 0;
    const FT_Long ascent = win ? FT_Long{os2->usWinAscent} : face->ascender;
    const FT_Long descent = win ? FT_Long{os2->usWinDescent} : -face->descender;
    m.ascent = static_cast<int32_t>((FT_MulFix(ascent, s.y_scale) + 32) >> 6);
    m.descent = static_cast<int32_t>((FT_MulFix(descent, s.y_scale) + 32) >> 6);
    m.maxCharWidth =
        static_cast<int32_t>((FT_MulFix(face->max_advance_width, s.x_scale) + 63) >> 6);
  } else {
    m.ascent = static_cast<int32_t>((s.ascender + 63) >> 6);
    m.descent = static_cast<int32_t>((-s.descender + 63) >> 6);
    m.maxCharWidth = static_cast<int32_t>((s.max_advance + 63) >> 6);
  }
  const int32_t largest = largestExtent(face);
  m.ascent = std::clamp(m.ascent, 0, largest);
  m.descent = std::clamp(m.descent, 0, largest);
  m.maxCharWidth = std::clamp(m.maxCharWidth, 0, largest);
  m.height = m.ascent + m.descent;
  return m;
}

class FreeTypeFace final : public FontFace {
 public:
  FreeTypeFace(Library library, Bytes bytes, FT_Face face, bool embolden)
      : library_(std::move(library)),
        bytes_(std::move(bytes)),
        face_(face),
        embolden_(embolden),
        metrics_(lineMetricsOf(face)) {}
  ~FreeTypeFace() override { FT_Done_Face(face_); }

  FontLineMetrics lineMetrics() const override { return metrics_; }
  bool covers(char16_t c) const override { return FT_Get_Char_Index(face_, c) != 0; }
  uint32_t glyphIndex(char16_t c) const override { return FT_Get_Char_Index(face_, c); }
  uint32_t missingGlyph() const override { return 0; }

  int32_t glyph(char16_t c, GlyphFormat format, GlyphBox& box, uint8_t* buffer,
                uint32_t size) override;

 private:
  bool render(char16_t c, bool mono) {
    renderedChar_ = -1;
    if (FT_Load_Char(face_, c, FT_LOAD_DEFAULT | (mono ? FT_LOAD_TARGET_MONO : 0))) return false;
    FT_GlyphSlot slot = face_->glyph;
    if (embolden_) FT_GlyphSlot_Embolden(slot);
    if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
      // A glyph far larger than the font's size comes from a damaged file.
      FT_BBox cbox;
      FT_Outline_Get_CBox(&slot->outline, &cbox);
      const int64_t largest = int64_t{largestExtent(face_)} << 6;
      if (int64_t{cbox.xMax} - cbox.xMin > largest || int64_t{cbox.yMax} - cbox.yMin > largest)
        return false;
    }
    if (slot->format != FT_GLYPH_FORMAT_BITMAP &&
        FT_Render_Glyph(slot, mono ? FT_RENDER_MODE_MONO : FT_RENDER_MODE_NORMAL))
      return false;
    renderedChar_ = c;
    renderedFormat_ = mono ? GlyphFormat::bitmap : GlyphFormat::gray;
    return true;
  }

  Library library_;
  Bytes bytes_;  // the memory a face opened from bytes reads
  FT_Face face_;
  bool embolden_;
  FontLineMetrics metrics_;
  int32_t renderedChar_ = -1;  // what the slot holds
  GlyphFormat renderedFormat_ = GlyphFormat::gray;
};

int32_t FreeTypeFace::glyph(char16_t c, GlyphFormat format, GlyphBox& box, uint8_t* buffer,
                            uint32_t size) {
  box = GlyphBox{};
  const bool mono = format == GlyphFormat::bitmap;
  // Java measures a character and then draws it: the second call finds the
  // glyph still in the face's slot.
  if (!(renderedChar_ == c && renderedFormat_ == format) && !render(c, mono)) return -1;
  FT_GlyphSlot slot = face_->glyph;
  const FT_Bitmap& bm = slot->bitmap;
  if (bm.pixel_mode != FT_PIXEL_MODE_GRAY && bm.pixel_mode != FT_PIXEL_MODE_MONO) return -1;
  box.blackBoxX = bm.width;
  box.blackBoxY = bm.rows;
  box.originX = slot->bitmap_left;
  box.originY = slot->bitmap_top;
  box.cellIncX = static_cast<int32_t>((slot->advance.x + 32) >> 6);

  const uint64_t pitch = mono ? (uint64_t{bm.width} + 31) / 32 * 4 : (uint64_t{bm.width} + 3) & ~3u;
  const uint64_t needed = pitch * bm.rows;
  if (needed > INT32_MAX) return -1;
  if (!buffer) return static_cast<int32_t>(needed);
  if (needed > size) return -1;
  std::memset(buffer, 0, needed);
  const bool grayIn = bm.pixel_mode == FT_PIXEL_MODE_GRAY;
  const int maxLevel = std::max<int>(bm.num_grays - 1, 1);
  for (uint32_t r = 0; r < bm.rows; r++) {
    const uint8_t* src = bm.pitch >= 0 ? bm.buffer + size_t{r} * bm.pitch
                                       : bm.buffer + size_t{bm.rows - 1 - r} * -bm.pitch;
    uint8_t* dst = buffer + r * pitch;
    if (mono && !grayIn) {
      std::memcpy(dst, src, (bm.width + 7) / 8);
      continue;
    }
    if (!mono && grayIn && maxLevel == 255) {
      for (uint32_t x = 0; x < bm.width; x++) dst[x] = kLevels[src[x]];
      continue;
    }
    for (uint32_t x = 0; x < bm.width; x++) {
      const int v = grayIn ? src[x] : ((src[x >> 3] >> (7 - (x & 7))) & 1) * maxLevel;
      if (mono)
        dst[x >> 3] |= static_cast<uint8_t>((v * 2 >= maxLevel ? 1 : 0) << (7 - (x & 7)));
      else
        dst[x] = static_cast<uint8_t>((v * 64 + maxLevel / 2) / maxLevel);
    }
  }
  return static_cast<int32_t>(needed);
}

struct AddedFace {
  std::string family;
  bool bold;
  Bytes bytes;
  FT_Long index;
};

}  // namespace

struct FreeTypeFontSystem::State {
  Library library;
  bool installed = true;
  std::vector<AddedFace> added;
};

FreeTypeFontSystem::FreeTypeFontSystem(bool installed) : state_(std::make_unique<State>()) {
  FT_Library library = nullptr;
  if (FT_Init_FreeType(&library) == 0) state_->library = Library(library, FT_Done_FreeType);
  state_->installed = installed;
}

FreeTypeFontSystem::~FreeTypeFontSystem() = default;

namespace {

std::unique_ptr<FontFace> makeFace(const Library& library, Bytes bytes, FT_Face face,
                                   const FontRequest& request) {
  if (!setHeight(face, request.height)) {
    FT_Done_Face(face);
    return nullptr;
  }
  return std::make_unique<FreeTypeFace>(library, std::move(bytes), face,
                                        request.bold && !isBold(face));
}

std::unique_ptr<FontFace> openInstalled(const Library& library, const FontRequest& request) {
  int index = 0;
  const std::string file = FreeTypeFontSystem::installedFile(request.family, request.bold, &index);
  FT_Face face = nullptr;
  if (file.empty() || FT_New_Face(library.get(), file.c_str(), index, &face)) return nullptr;
  return makeFace(library, nullptr, face, request);
}

}  // namespace

std::string FreeTypeFontSystem::installedFile(const std::string& family, bool bold, int* index) {
  static const bool ready = FcInit();
  if (!ready) return {};
  FcPattern* pattern = FcPatternCreate();
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  FcPatternAddInteger(pattern, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  FcPatternAddInteger(pattern, FC_SLANT, FC_SLANT_ROMAN);
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result;
  FcPattern* match = FcFontMatch(nullptr, pattern, &result);
  FcPatternDestroy(pattern);
  if (!match) return {};
  // fontconfig always finds something; the family is there only if it is named.
  bool named = false;
  FcChar8* name = nullptr;
  for (int i = 0; !named && FcPatternGetString(match, FC_FAMILY, i, &name) == FcResultMatch; i++)
    named = sameFamily(family, reinterpret_cast<const char*>(name));
  FcChar8* file = nullptr;
  std::string path;
  if (named && FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch) {
    path = reinterpret_cast<const char*>(file);
    if (index) FcPatternGetInteger(match, FC_INDEX, 0, index);
  }
  FcPatternDestroy(match);
  return path;
}

std::unique_ptr<FontFace> FreeTypeFontSystem::open(const FontRequest& request) {
  if (!state_->library) return nullptr;
  // Faces added for the process come first; one of the asked weight is best.
  const AddedFace* found = nullptr;
  for (const AddedFace& a : state_->added)
    if (sameFamily(request.family, a.family.c_str()) &&
        (!found || (found->bold != request.bold && a.bold == request.bold)))
      found = &a;
  if (found) {
    FT_Face face = nullptr;
    if (FT_New_Memory_Face(state_->library.get(), found->bytes->data(),
                           static_cast<FT_Long>(found->bytes->size()), found->index, &face))
      return nullptr;
    return makeFace(state_->library, found->bytes, face, request);
  }
  return state_->installed ? openInstalled(state_->library, request) : nullptr;
}

namespace {

int32_t addFaces(FreeTypeFontSystem::State& state, const Bytes& bytes) {
  if (!state.library) return 0;
  const size_t size = bytes->size();
  FT_Library library = state.library.get();
  FT_Face face = nullptr;
  if (FT_New_Memory_Face(library, bytes->data(), static_cast<FT_Long>(size), -1, &face)) return 0;
  const FT_Long faces = std::min<FT_Long>(face->num_faces, 256);
  FT_Done_Face(face);
  int32_t count = 0;
  for (FT_Long i = 0; i < faces; i++) {
    if (FT_New_Memory_Face(library, bytes->data(), static_cast<FT_Long>(size), i, &face)) continue;
    // Only a face that can be named, sized and looked up by character is of use.
    const bool usable = face->family_name && face->family_name[0] && face->charmap &&
                        (FT_IS_SCALABLE(face) || face->num_fixed_sizes > 0);
    if (usable) {
      state.added.push_back({face->family_name, isBold(face), bytes, i});
      count++;
    }
    FT_Done_Face(face);
  }
  return count;
}

}  // namespace

int32_t FreeTypeFontSystem::addFontBytes(const uint8_t* data, std::size_t size) {
  if (!data || size == 0 || size > size_t{kLargestFile}) return 0;
  return addFaces(*state_, std::make_shared<const std::vector<uint8_t>>(data, data + size));
}

std::vector<std::string> FreeTypeFontSystem::addedFamilies() const {
  std::vector<std::string> families;
  for (const AddedFace& a : state_->added) families.push_back(a.family);
  return families;
}

int32_t FreeTypeFontSystem::addFontFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return 0;
  const std::streamoff size = in.tellg();
  if (size <= 0 || size > kLargestFile) return 0;
  auto bytes = std::make_shared<std::vector<uint8_t>>(static_cast<size_t>(size));
  in.seekg(0);
  if (!in.read(reinterpret_cast<char*>(bytes->data()), size)) return 0;
  return addFaces(*state_, bytes);
}

}  // namespace vostan::platform
