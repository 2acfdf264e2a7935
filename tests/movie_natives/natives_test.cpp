// The movie object as the natives drive it: opening, parameters, names, hit
// tests, and drawing into a texture.
#include <cstring>

#include "movie/natives/movie_host.h"
#include "movie_test_support.h"
#include "sample_movie.h"

namespace {

using swf::Bytes;

struct Upload {
  int32_t x, y, width, height;
  std::vector<ddColor> pixels;
};

class MovieHostTest : public MovieTest {
 protected:
  void TearDown() override {
    for (ddMovie* m : opened_) ddMovie_dispose(m);
    MovieTest::TearDown();
  }

  ddMovie* openBytes(const Bytes& file, int width = 550, int height = 400) {
    // A copy that dies here: the movie must not need the bytes after opening.
    Bytes copy = file;
    ddMovie* m = ddMovie_openBytes(copy.data(), int32_t(copy.size()), width, height);
    std::memset(copy.data(), 0xAB, copy.size());
    if (m) opened_.push_back(m);
    return m;
  }

  static void record(void* context, int32_t x, int32_t y, int32_t w, int32_t h, const void* rgba) {
    auto* words = static_cast<const ddColor*>(rgba);
    static_cast<std::vector<Upload>*>(context)->push_back(
        Upload{x, y, w, h, std::vector<ddColor>(words, words + size_t(w) * h)});
  }

  ddTextureTarget texture(int width = 550, int height = 400) {
    return ddTextureTarget{true, width, height, record, &uploads_};
  }

  static ddColor at(const ddMovie* m, int x, int y) { return m->surface->pixels[y * m->width + x]; }
  ddClip* child(ddMovie* m, int depth) {
    ddInstance* i = ddDisplayList_find(m->rootClip->displayList, depth);
    return i && i->type == ddCharacterTimeline ? reinterpret_cast<ddClip*>(i) : nullptr;
  }

  std::vector<ddMovie*> opened_;
  std::vector<Upload> uploads_;
};

TEST_F(MovieHostTest, NamesBecomeValidModifiedUtf8) {
  EXPECT_EQ(ddText_toModifiedUtf8("h\xC3\xA9ros \xE2\x82\xAC"), "h\xC3\xA9ros \xE2\x82\xAC");
  // Latin-1, a cut sequence and a surrogate are taken byte by byte.
  EXPECT_EQ(ddText_toModifiedUtf8("caf\xE9 \xE2\x82"), "caf\xC3\xA9 \xC3\xA2\xC2\x82");
  EXPECT_EQ(ddText_toModifiedUtf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");
}

TEST_F(MovieHostTest, HitTestsFindTheLatestClipAndSkipThoseThatLeft) {
  ddMovie* m = openBytes(sample::movie());
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 0, 0, texture());
  ddClip* hero = child(m, 2);
  ddClip* other = child(m, 7);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), hero);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kOtherX + 55, sample::kOtherY + 55), other);
  // Just outside the sprite's square, on the root's own shapes, on nothing.
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 61, sample::kHeroY + 5), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kSquareX + 50, sample::kSquareY + 50), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, 540, 390), nullptr);

  // The sprites' own frames move their squares; the hit follows the last draw.
  ddClip_moveFrame(m, hero, 1);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), hero);
  ddMovie_drawToTexture(m, 0, 0, texture());
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 95, sample::kHeroY + 5), hero);

  // Frame 2 removes the unnamed sprite: its entry is dead, and skipped.
  ddClip_moveFrame(m, m->rootClip, 2);
  ddMovie_drawToTexture(m, 0, 0, texture());
  EXPECT_EQ(other->node, nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kOtherX + 5, sample::kOtherY + 5), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 95, sample::kHeroY + 5), hero);
}

TEST_F(MovieHostTest, OnlyTheFirstHundredClipsAreCandidates) {
  // 150 sprites stacked on one spot: the answer is the last candidate.
  Bytes sprite = swf::defineSprite(
      2, 1, swf::concat({sample::translate(1, 1, 0, 0), swf::showFrame(), swf::end()}));
  Bytes body = swf::concat({sample::colouredSquare(1, 50, 0, 0, 255), sprite});
  for (int depth = 1; depth <= 150; depth++)
    body = swf::concat({body, sample::translate(depth, 2, 10, 10)});
  ddMovie* m = openBytes(swf::movie(swf::concat({body, swf::showFrame(), swf::end()})));
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 0, 0, texture());
  ddClip* answer = ddMovie_hitClip(m, 20, 20);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer, child(m, ddHitCandidates - 1));
}

TEST_F(MovieHostTest, DrawsRedrawOnlyWhatChangedAndUploadTheWholeSurfaceEachTime) {
  ddMovie* m = openBytes(sample::movie());
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 3, 4, texture(600, 500));
  ASSERT_EQ(uploads_.size(), 1u);
  EXPECT_EQ(uploads_[0].x, 3);
  EXPECT_EQ(uploads_[0].y, 4);
  EXPECT_EQ(uploads_[0].width, 550);
  EXPECT_EQ(uploads_[0].height, 400);
  const std::vector<ddColor> first(m->surface->pixels, m->surface->pixels + 550 * 400);
  EXPECT_EQ(uploads_[0].pixels, first);
  EXPECT_EQ(at(m, sample::kSquareX + 50, sample::kSquareY + 50), 0xFF2828E6u);
  EXPECT_EQ(at(m, 545, 395), 0u);

  // Nothing changed: the surface stays as it is and goes up once more.
  m->surface->pixels[395 * 550 + 545] = 0x12345678;
  ddMovie_drawToTexture(m, 3, 4, texture(600, 500));
  ASSERT_EQ(uploads_.size(), 2u);
  EXPECT_EQ(at(m, 545, 395), 0x12345678u);
  EXPECT_EQ(uploads_[1].pixels[395 * 550 + 545], 0x12345678u);

  // The red square moves: its old and new places are redrawn, the marked
  // pixel far from them is not touched.
  ddClip_moveFrame(m, m->rootClip, 1);
  ddMovie_drawToTexture(m, 3, 4, texture(600, 500));
  ASSERT_EQ(uploads_.size(), 3u);
  EXPECT_EQ(at(m, sample::kSquareX + 5, sample::kSquareY + 5), 0u);
  EXPECT_EQ(at(m, sample::kSquareMovedX + 95, sample::kSquareMovedY + 95), 0xFF2828E6u);
  EXPECT_EQ(at(m, 545, 395), 0x12345678u);
}

TEST_F(MovieHostTest, NoUploadWithoutASuitableTexture) {
  ddMovie* m = openBytes(sample::movie());
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 0, 0, texture(549, 400));
  ddMovie_drawToTexture(m, 0, 0, texture(550, 399));
  ddTextureTarget absent = texture();
  absent.present = false;
  ddMovie_drawToTexture(m, 0, 0, absent);
  EXPECT_TRUE(uploads_.empty());
  // The movie was drawn all the same.
  EXPECT_EQ(at(m, sample::kSquareX + 50, sample::kSquareY + 50), 0xFF2828E6u);
}

}  // namespace
