// Glyphs drawn into cells by SystemFont (FreeType underneath, then the gray
// conversion into the canvas) against FreeType's own FT_Render_Glyph of the
// same glyphs, font and size, in one run. Prints the ratio of glyph rates at
// the end (above 1: cells faster).
#include <benchmark/benchmark.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdio>
#include <map>
#include <string>

#include "font/system_font.h"
#include "platform/font/freetype_font_system.h"
#include "ratio_reporter.h"

namespace {

using vostan::font::SystemFont;

const char* kFamily = "DejaVu Sans";
const std::u16string kGlyphs = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

std::string fileOf(const char* family) {
  return vostan::platform::FreeTypeFontSystem::installedFile(family);
}

void BM_Cells(benchmark::State& state) {
  vostan::platform::FreeTypeFontSystem system;
  const int32_t flags = vostan::font::kAntiAliased | static_cast<int32_t>(state.range(1));
  SystemFont font(system.open({kFamily, -static_cast<int32_t>(state.range(0)), false}), flags,
                  nullptr);
  // Cells as Java asks for them, each the size its metrics give, into a target
  // that takes them without a device: the upload is not measured.
  const vostan::font::TextureTarget target{
      true, 4096, 4096,
      [](void*, int32_t, int32_t, int32_t, int32_t, const void* p) { benchmark::DoNotOptimize(p); },
      nullptr};
  for (auto _ : state)
    for (char16_t c : kGlyphs) {
      vostan::font::CharacterMetrics m;
      bool useAlt = false;
      font.initCharacter(c, m, useAlt);
      font.createCache(c, 0, 0, m.cwidth, m.cheight, false, target);
    }
  state.counters["glyphs/s"] = benchmark::Counter(
      double(state.iterations()) * double(kGlyphs.size()), benchmark::Counter::kIsRate);
}

void BM_FreeTypeRender(benchmark::State& state) {
  FT_Library library;
  FT_Face face;
  FT_Init_FreeType(&library);
  if (FT_New_Face(library, fileOf(kFamily).c_str(), 0, &face)) {
    state.SkipWithError("no font");
    return;
  }
  FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(state.range(0)));
  for (auto _ : state)
    for (char16_t c : kGlyphs) {
      FT_Load_Char(face, c, FT_LOAD_DEFAULT);
      FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL);
      benchmark::DoNotOptimize(face->glyph->bitmap.buffer);
    }
  state.counters["glyphs/s"] = benchmark::Counter(
      double(state.iterations()) * double(kGlyphs.size()), benchmark::Counter::kIsRate);
  FT_Done_Face(face);
  FT_Done_FreeType(library);
}

BENCHMARK(BM_Cells)->Args({16, 0})->Args({32, 0})->Args({32, vostan::font::kOutlined});
BENCHMARK(BM_FreeTypeRender)->Arg(16)->Arg(32);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  vostan::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nglyphs/s into cells over FreeType's FT_Render_Glyph (goal >= 0.5)\n");
  for (const auto& [cells, plain] : {std::pair{"BM_Cells/16/0", "BM_FreeTypeRender/16"},
                                     std::pair{"BM_Cells/32/0", "BM_FreeTypeRender/32"},
                                     std::pair{"BM_Cells/32/64", "BM_FreeTypeRender/32"}}) {
    auto c = reporter.perIteration.find(cells);
    auto p = reporter.perIteration.find(plain);
    if (c != reporter.perIteration.end() && p != reporter.perIteration.end())
      std::printf("%-16s %.2f\n", cells, p->second / c->second);
  }
  return 0;
}
