#include "bridge/native_guard.h"

#include <gtest/gtest.h>

#include <memory>

namespace vostan {
namespace {

struct Movie {
  int frames = 3;
};
struct Clip {
  int depth = 1;
};

TEST(LiveHandles, OnlyLiveObjectsOfTheAskedKindAreFound) {
  auto movie = std::make_unique<Movie>();
  auto clip = std::make_unique<Clip>();
  const jlong m = live::handleOf(movie.get()), c = live::handleOf(clip.get());
  EXPECT_EQ(live::find<Movie>(m), nullptr) << "not handed out yet";
  live::add(movie.get());
  live::add(clip.get());
  EXPECT_EQ(live::find<Movie>(m), movie.get());
  EXPECT_EQ(live::find<Clip>(c), clip.get());
  // A clip is no movie, a movie no clip, and made-up values are nothing.
  EXPECT_EQ(live::find<Movie>(c), nullptr);
  EXPECT_EQ(live::find<Clip>(m), nullptr);
  EXPECT_EQ(live::find<Movie>(0), nullptr);
  EXPECT_EQ(live::find<Movie>(m + 1), nullptr);
  EXPECT_EQ(live::find<Movie>(-1), nullptr);
  // Disposing takes the object once; the second dispose finds nothing.
  EXPECT_EQ(live::take<Movie>(c), nullptr);
  EXPECT_EQ(live::take<Movie>(m), movie.get());
  EXPECT_EQ(live::take<Movie>(m), nullptr);
  EXPECT_EQ(live::find<Movie>(m), nullptr);
  EXPECT_TRUE(live::remove(clip.get()));
  EXPECT_FALSE(live::remove(clip.get()));
  EXPECT_FALSE(live::contains<Clip>(nullptr));
}

TEST(LiveHandles, AnAddressReusedByAnotherKindTakesTheNewKind) {
  alignas(8) unsigned char storage[16] = {};
  auto* movie = reinterpret_cast<Movie*>(storage);
  auto* clip = reinterpret_cast<Clip*>(storage);
  live::add(movie);
  live::remove(movie);
  live::add(clip);
  EXPECT_EQ(live::find<Movie>(live::handleOf(storage)), nullptr);
  EXPECT_EQ(live::find<Clip>(live::handleOf(storage)), clip);
  live::remove(clip);
}

}  // namespace
}  // namespace vostan
