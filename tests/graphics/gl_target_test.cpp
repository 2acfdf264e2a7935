// Drawing into textures: rows run top down as Direct3D keeps them, the
// viewport counts from the top, culling judges winding as on screen, and
// depth comes from the window's size, a surface of its own or nowhere.
#include "gl_fixture.h"

namespace vostan::test {
namespace {

using namespace gfx;

constexpr int kTex = 32;
constexpr uint32_t kRed = 0xFFFF0000u, kGreen = 0xFF00FF00u, kBlue = 0xFF0000FFu;

class RenderTexture : public GLGraphicsTest {
 protected:
  void SetUp() override {
    GLGraphicsTest::SetUp();
    ASSERT_EQ(g->device->createTexture(kTex, kTex, 1, USAGE_RENDERTARGET, FMT_A8R8G8B8,
                                       POOL_DEFAULT, &texture),
              OK);
    texture->getSurfaceLevel(0, &level);
  }
  void TearDown() override {
    g->device->setRenderTarget(0, g->backBuffer);
    g->device->setDepthStencilSurface(g->depthSurface);
    g->device->setTexture(0, nullptr);
    level->release();
    texture->release();
    GLGraphicsTest::TearDown();
  }
  // The texture's pixels, top row first.
  std::vector<uint32_t> pixels() {
    Surface* copy = nullptr;
    g->device->createOffscreenPlainSurface(kTex, kTex, FMT_A8R8G8B8, POOL_SYSTEMMEM, &copy);
    EXPECT_EQ(g->device->getRenderTargetData(level, copy), OK);
    LockedRect lr;
    copy->lockRect(lr, nullptr, LOCK_READONLY);
    std::vector<uint32_t> out(kTex * kTex);
    for (int y = 0; y < kTex; ++y)
      for (int x = 0; x < kTex; ++x)
        out[y * kTex + x] =
            reinterpret_cast<uint32_t*>(static_cast<uint8_t*>(lr.bits) + y * lr.pitch)[x] |
            0xFF000000u;
    copy->unlockRect();
    copy->release();
    return out;
  }
  uint32_t texel(int x, int y) { return pixels()[y * kTex + x]; }
  void triangle(float x0, float y0, float x1, float y1, float x2, float y2) {
    g->begin(4);
    g->vertex2f(x0, y0);
    g->vertex2f(x1, y1);
    g->vertex2f(x2, y2);
    g->end();
  }

  Texture* texture = nullptr;
  Surface* level = nullptr;
};

TEST_F(RenderTexture, RowsRunTopDownAndTheTextureShowsThemSo) {
  ASSERT_EQ(g->device->setRenderTarget(0, level), OK);
  Viewport v;
  g->device->getViewport(v);
  EXPECT_EQ(v.height, static_cast<uint32_t>(kTex));
  clearTo(1, 0, 0);
  g->color3f(0, 1, 0);
  quad(-1, 0, 0, 1);  // the upper left quarter
  const auto px = pixels();
  EXPECT_EQ(px[4 * kTex + 4], kGreen);
  EXPECT_EQ(px[4 * kTex + 28], kRed);
  EXPECT_EQ(px[28 * kTex + 4], kRed);
  EXPECT_EQ(px[15 * kTex + 15], kGreen);  // the quarter is exactly 16 texels
  EXPECT_EQ(px[16 * kTex + 15], kRed);
  EXPECT_EQ(px[15 * kTex + 16], kRed);

  // Back on the window, the texture drawn with (0, 0) at the top left.
  ASSERT_EQ(g->device->setRenderTarget(0, g->backBuffer), OK);
  g->device->getViewport(v);
  EXPECT_EQ(v.height, static_cast<uint32_t>(kSize));
  g->device->setTexture(0, texture);
  clearTo(0, 0, 1);
  g->color3f(1, 1, 1);
  g->begin(7);
  g->texCoord2f(0, 0);
  g->vertex2f(-1, 1);
  g->texCoord2f(1, 0);
  g->vertex2f(1, 1);
  g->texCoord2f(1, 1);
  g->vertex2f(1, -1);
  g->texCoord2f(0, 1);
  g->vertex2f(-1, -1);
  g->end();
  EXPECT_EQ(at(8, 8), kGreen);
  EXPECT_EQ(at(56, 8), kRed);
  EXPECT_EQ(at(8, 56), kRed);
}

TEST_F(RenderTexture, ViewportCountsFromTheTopAndCullingKeepsItsSense) {
  ASSERT_EQ(g->device->setRenderTarget(0, level), OK);
  clearTo(1, 0, 0);
  g->device->setViewport(Viewport{0, 0, 16, 8, 0.0f, 1.0f});
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1);
  g->device->setViewport(Viewport{0, 0, kTex, kTex, 0.0f, 1.0f});
  g->setEnable(2884, true);
  g->cullFace(1028);  // counter-clockwise faces go
  g->color3f(0, 0, 1);
  triangle(1, 1, 1, -1, -1, -1);  // clockwise on screen: drawn
  triangle(-1, 1, -1, -1, 1, 1);  // counter-clockwise: culled
  g->setEnable(2884, false);
  const auto px = pixels();
  EXPECT_EQ(px[2 * kTex + 2], kGreen);  // the viewport's rows are the top ones
  EXPECT_EQ(px[10 * kTex + 2], kRed);
  EXPECT_EQ(px[30 * kTex + 28], kBlue);
  EXPECT_EQ(px[20 * kTex + 2], kRed);
}

TEST_F(RenderTexture, DepthFromALargerSurfaceOrNone) {
  Surface* depth = nullptr;
  ASSERT_EQ(g->device->createDepthStencilSurface(1024, 1024, FMT_D24S8, 0, 0, false, &depth), OK);
  ASSERT_EQ(g->device->setRenderTarget(0, level), OK);
  ASSERT_EQ(g->device->setDepthStencilSurface(depth), OK);
  g->setEnable(2929, true);
  g->depthFunc(513);
  clearTo(0, 0, 0);
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1, 0.5f);
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1, 0.7f);  // behind: hidden
  EXPECT_EQ(texel(16, 16), kRed);

  // Without a depth surface nothing is hidden.
  ASSERT_EQ(g->device->setDepthStencilSurface(nullptr), OK);
  quad(-1, -1, 1, 1, 0.9f);
  EXPECT_EQ(texel(16, 16), kGreen);

  // The window's depth surface serves a texture too.
  ASSERT_EQ(g->device->setDepthStencilSurface(g->depthSurface), OK);
  clearTo(0, 0, 0);
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1, 0.5f);
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1, 0.7f);
  EXPECT_EQ(texel(16, 16), kRed);
  depth->release();
}

}  // namespace
}  // namespace vostan::test
