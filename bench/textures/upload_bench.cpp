// What the movie and font code pay per upload: 8-bit RGBA rows converted into
// an A8R8G8B8 texture's copy and sent to GL, against plain GL given the same
// bytes. Both end with glFinish so that the driver's copy is counted.
#include <SDL.h>
#include <benchmark/benchmark.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <cstdio>
#include <memory>
#include <vector>

#include "device_window.h"
#include "graphics/pixelsample/sample_select.h"
#include "graphics/texture_store.h"

namespace {

vostan::bench::DeviceWindow& window() {
  static vostan::bench::DeviceWindow w("upload", 64, 64);
  return w;
}

std::vector<uint8_t> frame(int size) {
  std::vector<uint8_t> pixels(static_cast<std::size_t>(size) * size * 4);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 7);
  return pixels;
}

void BM_UpdateTexture(benchmark::State& state) {
  vostan::D3DGraphics& g = *window().graphics;
  const int size = static_cast<int>(state.range(0));
  const std::vector<uint8_t> pixels = frame(size);
  const int32_t handle = vostan::createTextureSlot(g);
  vostan::texImage2D(g, handle, vostan::gl::kRgba, size, size, 0, vostan::gl::kRgba,
                     vostan::gl::kUnsignedByte, nullptr);
  vostan::TextureEntry* entry = vostan::textureEntry(handle);
  for (auto _ : state) {
    vostan::updateTexture(entry, g.device, 3553, 0, 0, 0, size, size, vostan::gl::kRgba,
                          vostan::gl::kUnsignedByte, pixels.data());
    glFinish();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(pixels.size()));
  vostan::deleteTexture(g, handle);
}
BENCHMARK(BM_UpdateTexture)->Arg(256)->Arg(512)->Unit(benchmark::kMicrosecond);

void BM_PlainTexSubImage(benchmark::State& state) {
  window();
  const int size = static_cast<int>(state.range(0));
  const std::vector<uint8_t> pixels = frame(size);
  GLuint name = 0;
  glGenTextures(1, &name);
  glBindTexture(GL_TEXTURE_2D, name);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  for (auto _ : state) {
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, size, size, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glFinish();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(pixels.size()));
  glDeleteTextures(1, &name);
}
BENCHMARK(BM_PlainTexSubImage)->Arg(256)->Arg(512)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
