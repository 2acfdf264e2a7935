#pragma once
// D3DGraphics on the OpenGL backend in a hidden 64 by 64 SDL window (the
// offscreen video driver when headless), with read-back of the back buffer.
#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "graphics/d3d_graphics.h"
#include "platform/sdl/sdl_window_system.h"

namespace vostan::test {

constexpr int kSize = 64;

class GLGraphicsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_VIDEO), 0) << SDL_GetError();
    platform::requestGlContext();
    window = SDL_CreateWindow("gfx", 0, 0, kSize, kSize, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
    ASSERT_NE(window, nullptr) << SDL_GetError();
  }
  static void TearDownTestSuite() {
    SDL_DestroyWindow(window);
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
  }

  void SetUp() override {
    gfx::setDirect3D(nullptr);
    D3DGraphics::clientHeightSource = [] { return kSize; };
    g = std::make_unique<D3DGraphics>();
    ::testing::internal::CaptureStdout();
    const int32_t hr = g->createDevice(SDL_GetWindowID(window), 0);
    const std::string out = ::testing::internal::GetCapturedStdout();
    ASSERT_GE(hr, 0) << out;
    const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    g->setMatrix(0, identity);
    g->beginScene();
  }
  void TearDown() override { g.reset(); }

  // The back buffer as A8R8G8B8 words, top row first.
  std::vector<uint32_t> readBack() {
    gfx::Surface* copy = nullptr;
    g->device->createOffscreenPlainSurface(kSize, kSize, gfx::FMT_A8R8G8B8, gfx::POOL_SYSTEMMEM,
                                           &copy);
    EXPECT_EQ(g->device->getRenderTargetData(g->backBuffer, copy), gfx::OK);
    gfx::LockedRect lr;
    copy->lockRect(lr, nullptr, gfx::LOCK_READONLY);
    std::vector<uint32_t> out(kSize * kSize);
    for (int y = 0; y < kSize; ++y)
      std::memcpy(&out[y * kSize], static_cast<uint8_t*>(lr.bits) + y * lr.pitch, kSize * 4);
    copy->unlockRect();
    copy->release();
    return out;
  }
  // One pixel, x from the left and y from the top, as 0xAARRGGBB.
  uint32_t at(int x, int y) { return readBack()[y * kSize + x] | 0xFF000000u; }

  // A rectangle in clip coordinates with the current colour.
  void quad(float x0, float y0, float x1, float y1, float z = 0.0f) {
    g->begin(7);
    g->vertex3f(x0, y0, z);
    g->vertex3f(x1, y0, z);
    g->vertex3f(x1, y1, z);
    g->vertex3f(x0, y1, z);
    g->end();
  }
  void clearTo(float r, float gr, float b) {
    g->setClearColor(r, gr, b, 1.0f);
    g->clear(0x4000 | 0x100 | 0x400);
  }

  static inline SDL_Window* window = nullptr;
  std::unique_ptr<D3DGraphics> g;
};

// Channels of 0xAARRGGBB within `tolerance` of each other.
inline ::testing::AssertionResult near(uint32_t actual, uint32_t expected, int tolerance = 2) {
  for (int shift = 0; shift < 32; shift += 8) {
    const int a = (actual >> shift) & 0xFF, e = (expected >> shift) & 0xFF;
    if (a - e > tolerance || e - a > tolerance)
      return ::testing::AssertionFailure()
             << std::hex << "0x" << actual << " is not near 0x" << expected;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace vostan::test
