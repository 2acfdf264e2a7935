#pragma once
// A texture target that keeps what is uploaded to it.
#include <cstdint>
#include <cstring>
#include <vector>

#include "font/system_font.h"

namespace vostan::font::test {

struct Upload {
  int32_t x, y, width, height;
  std::vector<uint32_t> pixels;
  uint32_t at(int32_t px, int32_t py) const { return pixels[size_t(py) * width + px]; }
};

struct Capture {
  std::vector<Upload> uploads;

  TextureTarget target(int32_t width = 256, int32_t height = 256) {
    return {true, width, height, &Capture::take, this};
  }

  static void take(void* self, int32_t x, int32_t y, int32_t width, int32_t height,
                   const void* rgba) {
    Upload u{x, y, width, height, std::vector<uint32_t>(size_t(width) * height)};
    std::memcpy(u.pixels.data(), rgba, u.pixels.size() * sizeof(uint32_t));
    static_cast<Capture*>(self)->uploads.push_back(std::move(u));
  }
};

}  // namespace vostan::font::test
