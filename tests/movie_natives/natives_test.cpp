// The movie object as the natives drive it: names, hit tests, and drawing
// into a texture.
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

  ddMovie* openBytes(const Bytes& file) {
    // A copy that dies here: the movie must not need the bytes after opening.
    Bytes copy = file;
    ddMovie* m = ddMovie_openBytes(copy.data(), int32_t(copy.size()), 550, 400);
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

TEST_F(MovieHostTest, HitTestsFindTheClipUnderThePointAsOfTheLastDraw) {
  ddMovie* m = openBytes(sample::movie());
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 0, 0, texture());
  ddClip *hero = child(m, 2), *other = child(m, 7);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), hero);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kOtherX + 55, sample::kOtherY + 55), other);
  // Just outside the sprite's square, and on the root's own shapes.
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 61, sample::kHeroY + 5), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kSquareX + 50, sample::kSquareY + 50), nullptr);

  // The sprite's next frame moves its square; the hit follows once drawn.
  ddClip_moveFrame(m, hero, 1);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), hero);
  ddMovie_drawToTexture(m, 0, 0, texture());
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 5, sample::kHeroY + 5), nullptr);
  EXPECT_EQ(ddMovie_hitClip(m, sample::kHeroX + 95, sample::kHeroY + 5), hero);
  // Frame 2 removes the unnamed sprite: its entry is dead, and skipped.
  ddClip_moveFrame(m, m->rootClip, 2);
  ddMovie_drawToTexture(m, 0, 0, texture());
  EXPECT_EQ(ddMovie_hitClip(m, sample::kOtherX + 5, sample::kOtherY + 5), nullptr);

  // 150 sprites stacked on one spot: the answer is the last of the first hundred.
  Bytes sprite = swf::defineSprite(
      2, 1, swf::concat({sample::translate(1, 1, 0, 0), swf::showFrame(), swf::end()}));
  Bytes body = swf::concat({sample::colouredSquare(1, 50, 0, 0, 255), sprite});
  for (int depth = 1; depth <= 150; depth++)
    body = swf::concat({body, sample::translate(depth, 2, 10, 10)});
  ddMovie* stack = openBytes(swf::movie(swf::concat({body, swf::showFrame(), swf::end()})));
  ASSERT_NE(stack, nullptr);
  ddMovie_drawToTexture(stack, 0, 0, texture());
  EXPECT_EQ(ddMovie_hitClip(stack, 20, 20), child(stack, ddHitCandidates - 1));
}

TEST_F(MovieHostTest, DrawsRedrawOnlyWhatChangedAndUploadOnlyToASuitableTexture) {
  ddMovie* m = openBytes(sample::movie());
  ASSERT_NE(m, nullptr);
  ddMovie_drawToTexture(m, 3, 4, texture(600, 500));
  ASSERT_EQ(uploads_.size(), 1u);
  EXPECT_EQ(uploads_[0].x, 3);
  EXPECT_EQ(uploads_[0].y, 4);
  EXPECT_EQ(uploads_[0].width, 550);
  EXPECT_EQ(uploads_[0].pixels,
            std::vector<ddColor>(m->surface->pixels, m->surface->pixels + 550 * 400));
  EXPECT_EQ(at(m, sample::kSquareX + 50, sample::kSquareY + 50), 0xFF2828E6u);

  // The red square moves: its old and new places are redrawn, a marked
  // pixel far from them is not touched.
  m->surface->pixels[395 * 550 + 545] = 0x12345678;
  ddClip_moveFrame(m, m->rootClip, 1);
  ddMovie_drawToTexture(m, 3, 4, texture(600, 500));
  ASSERT_EQ(uploads_.size(), 2u);
  EXPECT_EQ(at(m, sample::kSquareX + 5, sample::kSquareY + 5), 0u);
  EXPECT_EQ(at(m, sample::kSquareMovedX + 95, sample::kSquareMovedY + 95), 0xFF2828E6u);
  EXPECT_EQ(uploads_[1].pixels[395 * 550 + 545], 0x12345678u);

  // A texture too narrow, too short or absent gets nothing; the movie is drawn all the same.
  ddTextureTarget absent = texture();
  absent.present = false;
  ddClip_moveFrame(m, m->rootClip, 0);
  for (const ddTextureTarget& t : {texture(549, 400), texture(550, 399), absent})
    ddMovie_drawToTexture(m, 0, 0, t);
  EXPECT_EQ(uploads_.size(), 2u);
  EXPECT_EQ(at(m, sample::kSquareX + 5, sample::kSquareY + 5), 0xFF2828E6u);
}

}  // namespace
