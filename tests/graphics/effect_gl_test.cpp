// The effect's pixel formulae through the real shaders: shadows, the depth
// pass with alpha and the first bloom stage, on uniform textures so that
// every tap reads the same value.
#include "gl_fixture.h"
#include "platform/gfx/effect_core.h"

namespace vostan::test {
namespace {

using namespace gfx;

class EffectPixels : public GLGraphicsTest {
 protected:
  void TearDown() override {
    for (Texture* t : made_) t->release();
    GLGraphicsTest::TearDown();
  }

  // A 4 by 4 texture of one A8R8G8B8 word.
  Texture* solid(uint32_t argb) {
    Texture* t = nullptr;
    EXPECT_EQ(g->device->createTexture(4, 4, 1, 0, FMT_A8R8G8B8, POOL_MANAGED, &t), OK);
    Surface* level = nullptr;
    t->getSurfaceLevel(0, &level);
    LockedRect lr;
    level->lockRect(lr, nullptr, 0);
    for (int y = 0; y < 4; ++y)
      for (int x = 0; x < 4; ++x)
        reinterpret_cast<uint32_t*>(static_cast<uint8_t*>(lr.bits) + y * lr.pitch)[x] = argb;
    level->unlockRect();
    level->release();
    made_.push_back(t);
    return t;
  }

  void fullQuad(float z = 0.0f) {
    g->begin(7);
    g->texCoord2f(0, 1);
    g->vertex3f(-1, -1, z);
    g->texCoord2f(1, 1);
    g->vertex3f(1, -1, z);
    g->texCoord2f(1, 0);
    g->vertex3f(1, 1, z);
    g->texCoord2f(0, 0);
    g->vertex3f(-1, 1, z);
    g->end();
  }

  // The light-space depth is `lightDepth`, the depth map holds 0x80 (0.502).
  uint32_t shadowed(float lightDepth) {
    g->device->setTexture(0, solid(0xFFFFFFFF));
    g->effect->setTexture(g->texshadowHandle, solid(0xFF808080));
    const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    // Every point maps to the map's centre at the given depth.
    const float light[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0.5f, 0.5f, lightDepth, 1};
    g->setMatrix(1, identity);
    g->texGen(light);
    g->depthWrite(2);
    clearTo(0, 0, 0);
    g->color3f(1, 1, 1);
    fullQuad();
    return at(32, 32);
  }

  std::vector<Texture*> made_;
};

TEST_F(EffectPixels, ShadowIsStrictlyBehindTheMap) {
  EXPECT_TRUE(near(shadowed(0.51f), 0xFF666666));  // shadowcolor 0.4
  EXPECT_EQ(shadowed(0.49f), 0xFFFFFFFFu);
  EXPECT_EQ(shadowed(128.0f / 255.0f), 0xFFFFFFFFu);  // equal is lit
}

TEST_F(EffectPixels, DepthWithAlphaTurnsZeroColourChannelsToOne) {
  g->device->setTexture(0, solid(0xFFFFFFFF));
  g->depthWrite(3);
  g->setEnable(3042, true);
  g->setBlend(1);  // alpha made visible: red = depth * alpha
  clearTo(0, 0, 0);
  g->color4ub(255, 0, 0, 0);  // alpha 0 reads as 1
  fullQuad(0.5f);
  EXPECT_TRUE(near(at(32, 32), 0xFF800000));
  clearTo(0, 0, 0);
  g->color4ub(255, 255, 255, 0x40);  // a real alpha stays
  fullQuad(0.5f);
  EXPECT_TRUE(near(at(32, 32), 0xFF200000));
}

TEST_F(EffectPixels, BloomKeepsOnlyWhatLiesAboveTheThreshold) {
  g->depthWrite(7);
  g->color3f(1, 1, 1);
  // 0x99 = 0.6: 2 * 0.36 - 1 < 0, nothing survives.
  g->device->setTexture(0, solid(0xFF999999));
  clearTo(0, 0, 1);
  fullQuad();
  EXPECT_EQ(at(32, 32), 0xFF000000u);
  // 0xE6 = 0.902: 2 * 0.8136 - 1 = 0.627, then scaled by the vertex colour.
  g->device->setTexture(0, solid(0xFFE6E6E6));
  fullQuad();
  EXPECT_TRUE(near(at(32, 32), 0xFFA0A0A0));
  g->color3f(0.5f, 0.5f, 0.5f);
  fullQuad();
  EXPECT_TRUE(near(at(32, 32), 0xFF505050));
  g->color3f(1, 1, 1);
  g->device->setTexture(0, solid(0xFFFFFFFF));  // never above 1
  fullQuad();
  EXPECT_EQ(at(32, 32), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace vostan::test
