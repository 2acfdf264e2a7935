// Drawing through the OpenGL backend, checked on read-back pixels. Calls come
// in the order Java makes them; coordinates are clip space (identity matrix),
// pixels are addressed from the top left.
#include <cstring>

#include "gl_fixture.h"
#include "platform/gfx/effect_core.h"

// Mesa's driver keeps allocations past its unloading, where the leak checker
// can no longer tell whose they are; leaks of our own code are checked by
// graphics_tests on the recording device.
extern "C" const char* __asan_default_options() {
  return "detect_leaks=0";
}

namespace vostan::test {
namespace {

using namespace gfx;

constexpr uint32_t kRed = 0xFFFF0000u, kGreen = 0xFF00FF00u, kBlue = 0xFF0000FFu,
                   kBlack = 0xFF000000u;

TEST_F(GLGraphicsTest, ClearColourIsRedGreenBlue) {
  clearTo(1.0f, 0.5f, 0.25f);
  EXPECT_EQ(at(10, 10), 0xFFFF7F3Fu);
}

TEST_F(GLGraphicsTest, TrianglesQuadsStripsAndFansLandWhereDrawn) {
  clearTo(0, 0, 0);
  // Top-left quadrant: a triangle over its upper left half.
  g->color3f(1, 0, 0);
  g->begin(4);
  g->vertex2f(-1, 1);
  g->vertex2f(0, 1);
  g->vertex2f(-1, 0);
  g->end();
  // Top-right quadrant: a quad.
  g->color3f(0, 1, 0);
  quad(0, 0, 1, 1);
  // Bottom-left: a strip of two triangles.
  g->color3f(0, 0, 1);
  g->begin(5);
  g->vertex2f(-1, -1);
  g->vertex2f(-1, 0);
  g->vertex2f(0, -1);
  g->vertex2f(0, 0);
  g->end();
  // Bottom-right: a fan round the square's corner.
  g->color4ub(255, 255, 0, 255);
  g->begin(6);
  g->vertex2f(0, -1);
  g->vertex2f(0, 0);
  g->vertex2f(1, 0);
  g->vertex2f(1, -1);
  g->end();
  const auto px = readBack();
  auto p = [&](int x, int y) { return px[y * kSize + x] | 0xFF000000u; };
  EXPECT_EQ(p(4, 4), kRed);
  EXPECT_EQ(p(28, 28), kBlack);  // below the triangle's diagonal
  EXPECT_EQ(p(36, 4), kGreen);
  EXPECT_EQ(p(60, 28), kGreen);
  EXPECT_EQ(p(4, 36), kBlue);
  EXPECT_EQ(p(28, 60), kBlue);
  EXPECT_EQ(p(36, 36), 0xFFFFFF00u);
  EXPECT_EQ(p(60, 60), 0xFFFFFF00u);
}

TEST_F(GLGraphicsTest, GouraudBlendsAndFlatTakesTheFirstVertex) {
  clearTo(0, 0, 0);
  auto strip = [&] {
    g->begin(8);  // quad strip: left edge red, right edge blue
    g->color3f(1, 0, 0);
    g->vertex2f(-1, 1);
    g->vertex2f(-1, -1);
    g->color3f(0, 0, 1);
    g->vertex2f(1, 1);
    g->vertex2f(1, -1);
    g->end();
  };
  strip();
  const uint32_t middle = at(32, 32);
  EXPECT_TRUE(near(middle, 0xFF7F007F, 6)) << std::hex << middle;
  g->shadeModel(7424);
  strip();
  // First triangle starts at a red vertex, the second at a red one as well.
  EXPECT_EQ(at(40, 20), kRed);
  EXPECT_EQ(at(60, 60), kRed);
}

TEST_F(GLGraphicsTest, BlendPresets) {
  struct Case {
    int mode;
    uint32_t expected;
  };
  // Destination grey 0x40, source red 0xC0 with alpha 0x80 (about a half).
  const Case cases[] = {
      {1, 0xFF802020},  // src*a + dst*(1-a)
      {2, 0xFFFF4040},  // src + dst, saturated
      {3, 0xFF300000},  // src * dst
      {4, 0xFFA04040},  // src*a + dst
      {5, 0xFFE02020},  // src + dst*a
  };
  for (const Case& c : cases) {
    clearTo(0x40 / 255.0f, 0x40 / 255.0f, 0x40 / 255.0f);
    g->setEnable(3042, true);
    g->setBlend(c.mode);
    g->color4ub(0xC0, 0, 0, 0x80);
    quad(-1, -1, 1, 1);
    g->setEnable(3042, false);
    EXPECT_TRUE(near(at(32, 32), c.expected)) << "preset " << c.mode;
  }
}

TEST_F(GLGraphicsTest, AlphaTestDropsWhatFails) {
  clearTo(0, 0, 0);
  g->setEnable(3008, true);
  g->alphaFunc(516, 0.5f);  // greater than 127
  g->color4ub(255, 0, 0, 0x7F);
  quad(-1, -1, 0, 1);
  g->color4ub(0, 255, 0, 0x80);
  quad(0, -1, 1, 1);
  EXPECT_EQ(at(16, 32), kBlack);
  EXPECT_EQ(at(48, 32), kGreen);
  g->setEnable(3008, false);
  g->color4ub(255, 0, 0, 0);
  quad(-1, -1, 0, 1);
  EXPECT_EQ(at(16, 32), kRed);
}

TEST_F(GLGraphicsTest, DepthTestKeepsTheNearer) {
  clearTo(0, 0, 0);
  g->setEnable(2929, true);
  g->depthFunc(513);
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1, 0.5f);
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1, 0.7f);  // behind
  EXPECT_EQ(at(32, 32), kRed);
  g->color3f(0, 0, 1);
  quad(-1, -1, 0, 1, 0.3f);  // in front
  EXPECT_EQ(at(16, 32), kBlue);
  EXPECT_EQ(at(48, 32), kRed);
  g->depthMask(false);
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1, 0.1f);  // drawn, depth kept
  g->depthMask(true);
  g->color3f(1, 1, 1);
  quad(-1, -1, 1, 1, 0.4f);
  EXPECT_EQ(at(16, 32), kGreen);
  EXPECT_EQ(at(48, 32), 0xFFFFFFFFu);
}

TEST_F(GLGraphicsTest, ScissorAndViewportCountFromTheBottomLeft) {
  clearTo(0, 0, 0);
  g->scissor(0, 0, 32, 16);  // the bottom quarter's left half
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1);
  EXPECT_EQ(at(10, 60), kRed);
  EXPECT_EQ(at(10, 40), kBlack);
  EXPECT_EQ(at(40, 60), kBlack);
  g->scissor(0, 0, 0, 0);
  // Clearing ignores the scissor.
  g->scissor(0, 0, 8, 8);
  clearTo(0, 0, 1);
  EXPECT_EQ(at(40, 10), kBlue);
  g->scissor(0, 0, 0, 0);

  g->viewPort(32, 0, 32, 32);  // bottom right quadrant
  g->color3f(0, 1, 0);
  quad(-1, -1, 1, 1);
  EXPECT_EQ(at(48, 48), kGreen);
  EXPECT_EQ(at(48, 16), kBlue);
  EXPECT_EQ(at(16, 48), kBlue);
}

TEST_F(GLGraphicsTest, CullingJudgesWindingOnScreen) {
  clearTo(0, 0, 0);
  g->setEnable(2884, true);
  g->cullFace(1028);  // front: counter-clockwise faces go
  g->color3f(1, 0, 0);
  g->begin(4);  // clockwise on screen
  g->vertex2f(-1, 1);
  g->vertex2f(1, 1);
  g->vertex2f(-1, -1);
  g->end();
  g->color3f(0, 1, 0);
  g->begin(4);  // counter-clockwise on screen
  g->vertex2f(1, 1);
  g->vertex2f(-1, -1);
  g->vertex2f(1, -1);
  g->end();
  g->setEnable(2884, false);
  EXPECT_EQ(at(8, 8), kRed);
  EXPECT_EQ(at(56, 56), kBlack);
}

TEST_F(GLGraphicsTest, PushPopRestoresTheDeviceState) {
  clearTo(0, 0, 0);
  g->pushAttrib();
  g->scissor(0, 0, 1, 1);
  g->setEnable(3042, true);
  g->setBlend(2);
  g->popAttrib();
  g->color3f(0, 0, 1);
  quad(-1, -1, 1, 1);
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1);
  EXPECT_EQ(at(32, 32), kRed);  // neither blended nor scissored
}

// Points through tec1w land where the weighted bones put them.
TEST_F(GLGraphicsTest, SkinningWeighsBonesByTheFractions) {
  auto translate = [](float x, float y) {
    return std::vector<float>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, 0, 1};
  };
  const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  for (int bone = 0; bone < 29; ++bone) g->setMatrix(20 + bone, identity);
  g->setMatrix(20 + 3, translate(0.8f, 0.0f).data());
  g->setMatrix(20 + 7, translate(-0.4f, 0.4f).data());

  const VertexElement elements[] = {{0, 0, DECLTYPE_FLOAT3, 0, DECLUSAGE_POSITION, 0},
                                    {0, 12, DECLTYPE_FLOAT4, 0, DECLUSAGE_BLENDWEIGHT, 0},
                                    kDeclEnd};
  VertexDeclaration* declaration = nullptr;
  ASSERT_EQ(g->device->createVertexDeclaration(elements, &declaration), OK);
  struct Point {
    float x, y, z, w[4];
  };
  auto draw = [&](const Point& p) {
    clearTo(0, 0, 0);
    Effect* e = g->effect;
    e->setTechnique(g->techniques[D3DGraphics::TEC1W]);
    const float white[4] = {1, 1, 1, 1};
    e->setFloatArray(g->unicolorHandle, white, 4);
    e->begin(nullptr, 0);
    e->beginPass(0);
    g->device->setVertexDeclaration(declaration);
    g->device->drawPrimitiveUP(PT_POINTLIST, 1, &p, sizeof p);
    e->endPass();
    e->end();
  };
  auto lit = [&](int x, int y) { return at(x, y) == 0xFFFFFFFFu; };

  // 0.25 of (0.8, 0) and 0.75 of (-0.4, 0.4): (-0.1, 0.3), at (28.8, 22.4) on
  // screen, the centre of pixel (29, 22).
  draw({0, 0, 0, {3.25f, 7.75f, 0, 0}});
  EXPECT_TRUE(lit(29, 22));
  EXPECT_FALSE(lit(32, 32));
  // Shares that add up to a half pull the point half way to the origin.
  draw({0.8f, 0.8f, 0, {1.25f, 2.25f, 0, 0}});
  EXPECT_TRUE(lit(45, 19));  // (44.8, 19.2)
  EXPECT_FALSE(lit(57, 6));
  declaration->release();
}

}  // namespace
}  // namespace vostan::test

namespace vostan::test {
namespace {

// A reset rebuilds the effect and its programs; drawing goes on, with the
// device's state back at its defaults.
TEST_F(GLGraphicsTest, DrawingGoesOnAfterAReset) {
  g->setEnable(3042, true);
  g->setBlend(2);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(g->resetDevice(), 0);
  const std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("RESET 0   texcnt:0\n"), std::string::npos) << out;
  const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  g->setMatrix(0, identity);
  clearTo(0, 0, 1);
  g->color3f(1, 0, 0);
  quad(-1, -1, 1, 1);
  EXPECT_EQ(at(32, 32), 0xFFFF0000u);  // not added to the blue: blending is off again
}

}  // namespace
}  // namespace vostan::test

namespace vostan::test {
namespace {

// Vertex and index buffers in two streams, drawn with a start vertex, a
// base vertex and a start index.
TEST_F(GLGraphicsTest, BuffersDrawThroughTheirDeclaration) {
  const VertexElement elements[] = {{0, 0, DECLTYPE_FLOAT3, 0, DECLUSAGE_POSITION, 0},
                                    {1, 0, DECLTYPE_D3DCOLOR, 0, DECLUSAGE_COLOR, 0},
                                    kDeclEnd};
  VertexDeclaration* declaration = nullptr;
  ASSERT_EQ(g->device->createVertexDeclaration(elements, &declaration), OK);
  // Two vertices nobody draws, then the right half of the window.
  const float positions[][3] = {{-1, -1, 0}, {-1, 1, 0}, {0, -1, 0},
                                {1, -1, 0},  {1, 1, 0},  {0, 1, 0}};
  const uint32_t colours[] = {0, 0, 0xFF0000FFu, 0xFF0000FFu, 0xFF0000FFu, 0xFF0000FFu};
  const uint16_t indices[] = {9, 9, 9, 0, 1, 2, 0, 2, 3};
  VertexBuffer *vb0 = nullptr, *vb1 = nullptr;
  IndexBuffer* ib = nullptr;
  g->device->createVertexBuffer(sizeof positions, 0, 0, POOL_MANAGED, &vb0);
  g->device->createVertexBuffer(sizeof colours, 0, 0, POOL_MANAGED, &vb1);
  g->device->createIndexBuffer(sizeof indices, 0, FMT_INDEX16, POOL_MANAGED, &ib);
  auto fill = [](auto* buffer, const void* data, std::size_t size) {
    void* to = nullptr;
    buffer->lock(0, 0, &to, 0);
    std::memcpy(to, data, size);
    buffer->unlock();
  };
  fill(vb0, positions, sizeof positions);
  fill(vb1, colours, sizeof colours);
  fill(ib, indices, sizeof indices);

  auto pass = [&](const std::function<void()>& draw) {
    Effect* e = g->effect;
    e->setTechnique(g->techniques[D3DGraphics::TEC2]);
    e->begin(nullptr, 0);
    e->beginPass(0);
    g->device->setVertexDeclaration(declaration);
    g->device->setStreamSource(0, vb0, 0, 12);
    g->device->setStreamSource(1, vb1, 0, 4);
    draw();
    e->endPass();
    e->end();
  };
  clearTo(0, 0, 0);
  pass([&] {
    g->device->setIndices(ib);
    EXPECT_EQ(g->device->drawIndexedPrimitive(PT_TRIANGLELIST, 2, 0, 4, 3, 2), OK);
  });
  EXPECT_EQ(at(48, 32), 0xFFFF0000u);
  EXPECT_EQ(at(60, 4), 0xFFFF0000u);
  EXPECT_EQ(at(16, 32), 0xFF000000u);

  // Changed bytes reach the draw after the unlock; a start vertex skips the first two.
  const uint32_t green[] = {0, 0, 0xFF00FF00u, 0xFF00FF00u, 0xFF00FF00u, 0xFF00FF00u};
  fill(vb1, green, sizeof green);
  pass([&] { EXPECT_EQ(g->device->drawPrimitive(PT_TRIANGLESTRIP, 2, 2), OK); });
  EXPECT_EQ(at(48, 32), 0xFF00FF00u);
  EXPECT_EQ(at(16, 32), 0xFF000000u);
  g->device->setStreamSource(0, nullptr, 0, 0);
  g->device->setStreamSource(1, nullptr, 0, 0);
  g->device->setIndices(nullptr);
  vb0->release();
  vb1->release();
  ib->release();
  declaration->release();
}

}  // namespace
}  // namespace vostan::test

namespace vostan::test {
namespace {

// Pixel centres lie on whole coordinates: a quad with edges half a pixel
// outside pixels 0 to 3 covers those four, and maps each texel of a 4 by 4
// texture onto one pixel.
TEST_F(GLGraphicsTest, PixelCentresLieOnWholeCoordinates) {
  Texture* texture = nullptr;
  ASSERT_EQ(g->device->createTexture(4, 4, 1, 0, FMT_A8R8G8B8, POOL_MANAGED, &texture), OK);
  auto texel = [](int x, int y) { return 0xFF000000u | (x * 60u) << 16 | (y * 60u) << 8; };
  Surface* level = nullptr;
  texture->getSurfaceLevel(0, &level);
  LockedRect lr;
  level->lockRect(lr, nullptr, 0);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x)
      reinterpret_cast<uint32_t*>(static_cast<uint8_t*>(lr.bits) + y * lr.pitch)[x] = texel(x, y);
  level->unlockRect();
  level->release();
  g->device->setTexture(0, texture);

  clearTo(0, 0, 1);
  auto x = [](float px) { return px / 32.0f - 1.0f; };
  auto y = [](float py) { return 1.0f - py / 32.0f; };
  g->color3f(1, 1, 1);
  g->begin(7);
  g->texCoord2f(0, 0);
  g->vertex2f(x(-0.5f), y(-0.5f));
  g->texCoord2f(1, 0);
  g->vertex2f(x(3.5f), y(-0.5f));
  g->texCoord2f(1, 1);
  g->vertex2f(x(3.5f), y(3.5f));
  g->texCoord2f(0, 1);
  g->vertex2f(x(-0.5f), y(3.5f));
  g->end();
  const auto px = readBack();
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column)
      EXPECT_EQ(px[row * kSize + column] | 0xFF000000u, texel(column, row)) << column << "," << row;
  EXPECT_EQ(px[4] | 0xFF000000u, 0xFF0000FFu);
  EXPECT_EQ(px[4 * kSize] | 0xFF000000u, 0xFF0000FFu);
  g->device->setTexture(0, nullptr);
  texture->release();
}

}  // namespace
}  // namespace vostan::test
