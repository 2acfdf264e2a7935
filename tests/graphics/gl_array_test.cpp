// Bulk geometry, shadows and filters through the OpenGL backend, checked on
// read-back pixels against what the same triangles drawn immediately, or a
// reference computed here, say they must be.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "gl_fixture.h"
#include "graphics/texture_store.h"

namespace vostan::test {
namespace {

using namespace gfx;

using Matrix = std::vector<float>;  // 16 floats, rows of a row-vector transform

Matrix identity() {
  return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}
Matrix translate(float x, float y) {
  return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, 0, 1};
}

struct Point {
  float x, y, z;
};

// What the effect computes for a skinned position: the sum over the four
// weights of the point through bone [integer part], times the fraction.
Point skinned(const Point& p, const float w[4], const std::vector<Matrix>& bones) {
  Point out{0, 0, 0};
  for (int k = 0; k < 4; ++k) {
    const Matrix& m = bones[static_cast<int>(w[k])];
    const float share = w[k] - std::floor(w[k]);
    const float v[4] = {p.x, p.y, p.z, 1};
    float r[3] = {};
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 4; ++i) r[j] += v[i] * m[i * 4 + j];
    out.x += r[0] * share, out.y += r[1] * share, out.z += r[2] * share;
  }
  return out;
}

// Pixel coordinates of clip-space x and y; pixel centres lie on whole numbers.
float pixelX(float x) {
  return (x + 1.0f) * kSize / 2.0f;
}
float pixelY(float y) {
  return (1.0f - y) * kSize / 2.0f;
}

class ArrayPixels : public GLGraphicsTest {
 protected:
  void TearDown() override {
    for (Texture* t : made_) t->release();
    GLGraphicsTest::TearDown();
  }
  GLArrayRecord* array(int32_t kind, const void* data, int32_t size) {
    return g->arrays.create(kind, size, true, data, size);
  }
  // A managed A8R8G8B8 texture of `n` by `n`, all `argb` but for `spot`.
  Texture* texture(int n, uint32_t argb, int spotX = -1, int spotY = -1, uint32_t spot = 0) {
    Texture* t = nullptr;
    EXPECT_EQ(g->device->createTexture(n, n, 1, 0, FMT_A8R8G8B8, POOL_MANAGED, &t), OK);
    Surface* level = nullptr;
    t->getSurfaceLevel(0, &level);
    LockedRect lr;
    level->lockRect(lr, nullptr, 0);
    for (int y = 0; y < n; ++y)
      for (int x = 0; x < n; ++x)
        reinterpret_cast<uint32_t*>(static_cast<uint8_t*>(lr.bits) + y * lr.pitch)[x] =
            x == spotX && y == spotY ? spot : argb;
    level->unlockRect();
    level->release();
    made_.push_back(t);
    return t;
  }
  // The window covered by texels 0 to 63 of an `n` square texture, one texel
  // on each pixel.
  void texelsOnPixels(int n) {
    const float edge = 64.0f / static_cast<float>(n);
    auto x = [](float px) { return px / 32.0f - 1.0f; };
    g->begin(7);
    g->t2fV2f(0, 0, x(-0.5f), -x(-0.5f));
    g->t2fV2f(edge, 0, x(63.5f), -x(-0.5f));
    g->t2fV2f(edge, edge, x(63.5f), -x(63.5f));
    g->t2fV2f(0, edge, x(-0.5f), -x(63.5f));
    g->end();
  }
  // Red channel of every pixel.
  std::vector<int> reds() {
    std::vector<int> out;
    for (uint32_t p : readBack()) out.push_back(static_cast<int>((p >> 16) & 0xFF));
    return out;
  }

  std::vector<Texture*> made_;
};

// A grid of overlapping coloured triangles, as indexed arrays and as the
// same triangles one vertex call at a time: the pictures are the same.
TEST_F(ArrayPixels, IndexedMeshEqualsTheSameTrianglesDrawnImmediately) {
  constexpr int kSide = 6;
  std::vector<float> positions;
  std::vector<uint32_t> colours;
  uint32_t seed = 12345;
  auto next = [&] { return seed = seed * 1103515245u + 12345u; };
  for (int j = 0; j < kSide; ++j)
    for (int i = 0; i < kSide; ++i) {
      // Jittered so that neighbouring cells overlap and draw order shows.
      positions.push_back(-0.9f + 1.8f * i / (kSide - 1) + ((next() >> 16) % 100) / 400.0f);
      positions.push_back(-0.9f + 1.8f * j / (kSide - 1) + ((next() >> 16) % 100) / 400.0f);
      positions.push_back(0.0f);
      colours.push_back(next() | 0xFF000000u);
    }
  std::vector<uint16_t> indices;
  for (int j = 0; j + 1 < kSide; ++j)
    for (int i = 0; i + 1 < kSide; ++i) {
      const uint16_t a = static_cast<uint16_t>(j * kSide + i), b = a + 1,
                     c = static_cast<uint16_t>(a + kSide), d = c + 1;
      for (uint16_t v : {a, b, d, a, d, c, b, c, a}) indices.push_back(v);
    }
  const int32_t count = static_cast<int32_t>(indices.size());

  auto immediately = [&] {
    clearTo(0, 0, 0);
    g->begin(4);
    for (uint16_t v : indices) {
      g->currentVertex.color = colours[v];
      g->vertex3f(positions[v * 3], positions[v * 3 + 1], positions[v * 3 + 2]);
    }
    g->end();
    return readBack();
  };
  const auto immediate = immediately();

  GLArrayRecord* colourArray = array(arraykind::kColor, colours.data(), 4 * kSide * kSide);
  g->pointer(arraykind::kVertex,
             array(arraykind::kVertex, positions.data(), 4 * kSide * kSide * 3));
  g->pointer(arraykind::kColor, colourArray);
  clearTo(0, 0, 0);
  g->drawIndexed(0, kSide * kSide - 1, count, indices.data());
  EXPECT_EQ(readBack(), immediate);

  // A row of colours rewritten in the middle of the array reaches the next
  // draw, from resident indices this time.
  for (int v = kSide; v < 2 * kSide; ++v) colours[v] = 0xFFFFFFFFu - colours[v];
  copyMemoryToRecord(reinterpret_cast<const uint8_t*>(colours.data()), 4 * kSide * kSide, 4 * kSide,
                     colourArray, 4 * kSide, 4 * kSide);
  const auto changed = immediately();
  EXPECT_NE(changed, immediate);
  clearTo(0, 0, 0);
  g->drawIndexedResident(0, kSide * kSide - 1, count,
                         array(arraykind::kIndex, indices.data(), count * 2));
  EXPECT_EQ(readBack(), changed);
}

// A small square whose four corners share their weights is moved by the
// bones as one point would be: its pixels' centre is where the reference
// puts the square's centre.
TEST_F(ArrayPixels, SkinnedVerticesLandWhereTheBonesPutThem) {
  std::vector<Matrix> bones(29, identity());
  bones[1] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  // a quarter turn
  bones[3] = translate(0.8f, 0.0f);
  bones[7] = translate(-0.4f, 0.4f);
  bones[2] = translate(0.2f, -0.4f);
  for (int b = 0; b < 29; ++b) g->setMatrix(20 + b, bones[b].data());

  const float h = 0.2f;
  const uint16_t indices[6] = {0, 1, 2, 0, 2, 3};
  GLArrayRecord* ib = array(arraykind::kIndex, indices, sizeof indices);
  auto draw = [&](Point centre, const float w[4]) {
    const float positions[12] = {centre.x - h, centre.y - h, 0, centre.x + h, centre.y - h, 0,
                                 centre.x + h, centre.y + h, 0, centre.x - h, centre.y + h, 0};
    float weights[16];
    for (int v = 0; v < 4; ++v) std::memcpy(&weights[v * 4], w, 16);
    g->pointer(arraykind::kVertex, array(arraykind::kVertex, positions, sizeof positions));
    g->pointer(arraykind::kWeight, array(arraykind::kWeight, weights, sizeof weights));
    clearTo(0, 0, 0);
    g->color3f(1, 1, 1);
    g->drawIndexedResident(0, 3, 6, ib);
  };
  // The centre of the lit pixels, in pixel coordinates.
  auto litCentre = [&] {
    const auto px = readBack();
    double sx = 0, sy = 0, n = 0;
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x)
        if ((px[y * kSize + x] & 0xFFFFFF) == 0xFFFFFF) sx += x, sy += y, n += 1;
    EXPECT_GT(n, 4);
    return std::pair<double, double>{sx / n, sy / n};
  };

  struct Case {
    Point centre;
    float w[4];
    Point expected;  // worked out by hand from the bones
  };
  const Case cases[] = {
      // A quarter of bone 3 and three quarters of bone 7, the zeros adding nothing.
      {{0, 0, 0}, {3.25f, 7.75f, 0, 0}, {-0.1f, 0.3f, 0}},
      // Half a quarter turn plus a quarter of a shift: shares summing to less
      // than one pull towards the origin.
      {{0.5f, 0, 0}, {1.5f, 2.25f, 0, 0}, {0.175f, 0.15f, 0}},
  };
  for (const Case& c : cases) {
    const Point reference = skinned(c.centre, c.w, bones);
    EXPECT_NEAR(reference.x, c.expected.x, 1e-6);
    EXPECT_NEAR(reference.y, c.expected.y, 1e-6);
    draw(c.centre, c.w);
    const auto [x, y] = litCentre();
    EXPECT_NEAR(x, pixelX(reference.x), 0.5) << c.centre.x;
    EXPECT_NEAR(y, pixelY(reference.y), 0.5) << c.centre.x;
    const uint32_t unmoved = at(static_cast<int>(pixelX(c.centre.x)), static_cast<int>(pixelY(0)));
    EXPECT_EQ(unmoved, 0xFF000000u);
  }
}

// A square hovers over a floor, lit from above at a slant; the shadow map is
// drawn from the light into a depth texture, then the floor is drawn with
// it. Shadowed pixels are those the light's projection of the square covers.
TEST_F(ArrayPixels, ShadowFallsWhereTheLightProjectsTheCaster) {
  const float slant = 1.0f, floorZ = 0.8f, casterZ = 0.3f;
  const float cx0 = 0.1f, cx1 = 0.5f, cy0 = -0.2f, cy1 = 0.2f;
  // Light space: x moves with depth along the slant; depth is z.
  const Matrix light = {1, 0, 0, 0, 0, 1, 0, 0, slant, 0, 1, 0, 0, 0, 0, 1};
  // Eye (the world here) to the map's texture coordinates and depth; the
  // map's rows run top down, and a small bias keeps the floor off itself.
  const float bias = 0.01f;
  const Matrix toMap = {0.5f, 0, 0, 0, 0, -0.5f, 0, 0, 0.5f * slant, 0, 1, 0, 0.5f, 0.5f, -bias, 1};

  auto squareAt = [&](float x0, float y0, float x1, float y1, float z) {
    const float p[12] = {x0, y0, z, x1, y0, z, x1, y1, z, x0, y1, z};
    return array(arraykind::kVertex, p, sizeof p);
  };
  GLArrayRecord* floorSquare = squareAt(-1, -1, 1, 1, floorZ);
  GLArrayRecord* caster = squareAt(cx0, cy0, cx1, cy1, casterZ);
  const uint16_t quad[6] = {0, 1, 2, 0, 2, 3};
  auto draw = [&](GLArrayRecord* r, float red, float green, float blue) {
    g->pointer(arraykind::kVertex, r);
    g->color3f(red, green, blue);
    g->drawIndexed(0, 3, 6, quad);
  };

  const int32_t map = createTextureSlot(*g);
  texImage2D(*g, map, 6402, kSize, kSize, 1, 6402, 5126, nullptr);
  ASSERT_EQ(g->liveTextureEntry(map)->desc.format, FMT_R16F);
  g->setEnable(2929, true);
  g->depthFunc(515);
  g->depthMask(true);
  g->startRenderTexture(g->liveTextureEntry(map), 0, 0, kSize, kSize);
  clearTo(1, 1, 1);  // nothing in the way: the far plane
  g->setMatrix(0, light.data());
  g->depthWrite(1);
  draw(floorSquare, 1, 1, 1);
  draw(caster, 1, 1, 1);
  g->depthWrite(0);
  g->finishRenderTexture();

  g->device->setTexture(0, texture(1, 0xFFFFFFFF));  // the shadow pass modulates a texture
  g->setMatrix(0, identity().data());
  g->setMatrix(1, identity().data());
  clearTo(0, 0, 0);
  g->setupShadow(g->liveTextureEntry(map), toMap.data(), 0x666666FFu);
  draw(floorSquare, 1, 1, 1);
  draw(caster, 0, 0, 1);
  g->finishShadow();

  // The reference: a corner of the caster slides along the light to the
  // floor, keeping its light-space x.
  auto onFloor = [&](float x) { return x + slant * (casterZ - floorZ); };
  const float sx0 = pixelX(onFloor(cx0)), sx1 = pixelX(onFloor(cx1));
  const float top = pixelY(cy1), bottom = pixelY(cy0);
  const float margin = 1.5f;  // the map's texels against the screen's pixels
  const auto px = readBack();
  int shadowed = 0, wrong = 0;
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) {
      // How far inside (above 0) or outside a rectangle of those rows a pixel lies.
      auto inside = [&](float x0, float x1) {
        return std::min({x - x0, x1 - x, y - top, bottom - y});
      };
      const float onCaster = inside(pixelX(cx0), pixelX(cx1)), inShadow = inside(sx0, sx1);
      if (std::abs(onCaster) < margin || std::abs(inShadow) < margin) continue;
      const uint32_t expected = onCaster > 0   ? 0xFF0000FFu  // the caster itself, lit
                                : inShadow > 0 ? 0xFF666666u
                                               : 0xFFFFFFFFu;
      shadowed += expected == 0xFF666666u;
      wrong += !near(px[y * kSize + x] | 0xFF000000u, expected);
    }
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(shadowed, 40);
}

// Each filter over a single bright texel: the 12 taps of the blur and the
// second bloom stage, the 4 of the first; blur and first bloom stage keep
// the total light, the second stage a third of it.
TEST_F(ArrayPixels, FiltersSpreadOneBrightTexelOverTheirTaps) {
  g->textureStageState(10240, 9728);  // nearest texels: each tap reads one
  g->textureStageState(10241, 9728);
  struct Filter {
    int mode, size;
    std::vector<std::pair<int, int>> taps;  // in texels
    int value;                              // of each tap's share, out of 255
    double total;
  };
  const Filter filters[] = {
      {5,
       1024,
       {{-1, -1},
        {1, -1},
        {-1, 1},
        {1, 1},
        {-1, -2},
        {1, -2},
        {-1, 2},
        {1, 2},
        {-2, -1},
        {2, -1},
        {-2, 1},
        {2, 1}},
       21,
       1.0},
      {7, 1024, {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}, 64, 1.0},
      {8,
       256,
       {{-1, -1},
        {1, -1},
        {-1, 1},
        {1, 1},
        {-1, -5},
        {1, -5},
        {-1, -3},
        {1, -3},
        {-1, 3},
        {1, 3},
        {-1, 5},
        {1, 5}},
       7,
       1.0 / 3.0},
  };
  for (const Filter& f : filters) {
    SCOPED_TRACE(f.mode);
    g->device->setTexture(0, texture(f.size, 0xFF000000u, 32, 32, 0xFFFFFFFFu));
    g->depthWrite(f.mode);
    g->color3f(1, 1, 1);
    clearTo(0, 0, 0);
    texelsOnPixels(f.size);
    const auto red = reds();
    double total = 0;
    int misplaced = 0;
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) {
        bool tap = false;
        for (const auto& [dx, dy] : f.taps) tap = tap || (x + dx == 32 && y + dy == 32);
        const int v = red[y * kSize + x];
        total += v / 255.0;
        if (std::abs(v - (tap ? f.value : 0)) > 1) ++misplaced;
      }
    EXPECT_EQ(misplaced, 0);
    EXPECT_NEAR(total, f.total, 0.02);
  }
}

}  // namespace
}  // namespace vostan::test
