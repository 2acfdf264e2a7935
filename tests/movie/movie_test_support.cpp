#include "movie_test_support.h"

namespace {

void captureWarn(const char* message) {
  MovieTest::warningsStore().push_back(message);
}

[[noreturn]] void throwFatal(const char* message) {
  throw FatalError(message);
}

}  // namespace

std::vector<std::string>& MovieTest::warningsStore() {
  static std::vector<std::string> store;
  return store;
}

std::vector<std::string>& MovieTest::warnings() {
  return warningsStore();
}

void MovieTest::SetUp() {
  warningsStore().clear();
  ddMemory_setTracking(true);
  oldWarn_ = ddSetWarnSink(captureWarn);
  oldFatal_ = ddSetFatalSink(throwFatal);
}

void MovieTest::TearDown() {
  if (!fatal_) {
    for (ddMovie* m : movies_) ddMovie_dispose(m);
    for (ddStream* s : streams_) {
      ddTimeline_destroy(s->root);
      ddStream_destroy(s);
    }
    EXPECT_EQ(ddMemory_liveBytes(), 0u) << "the movie library leaked";
  }
  ddMemory_releaseTracked();
  ddMemory_setTracking(false);
  ddSetWarnSink(oldWarn_);
  ddSetFatalSink(oldFatal_);
}

ddMovie* MovieTest::open(const swf::Bytes& file, int width, int height) {
  const swf::Bytes& kept = *files_.emplace_back(std::make_unique<swf::Bytes>(file));
  ddMovie* movie =
      ddMovie_create(ddSurface_create(width, height), kept.data(), int32_t(kept.size()));
  movies_.push_back(movie);
  try {
    EXPECT_EQ(ddMovie_open(movie), 0);
    if (movie->rootClip) ddMovie_start(movie);
  } catch (const FatalError&) {
    fatal_ = true;
    throw;
  }
  return movie;
}

ddStream* MovieTest::parse(const swf::Bytes& file, int* result) {
  ddStream* s = streamOver(file);
  try {
    int r = ddMovie_parse(s);
    if (result)
      *result = r;
    else
      EXPECT_EQ(r, 0);
  } catch (const FatalError&) {
    fatal_ = true;
    throw;
  }
  return s;
}

ddStream* MovieTest::streamOver(const swf::Bytes& bytes) {
  const swf::Bytes& kept = *files_.emplace_back(std::make_unique<swf::Bytes>(bytes));
  return streams_.emplace_back(ddStream_create(kept.data(), int32_t(kept.size())));
}

std::vector<ddPlacement*> placements(const ddTimeline* t, int frame) {
  std::vector<ddPlacement*> out;
  for (ddPlacement* p = t->frames->frames[frame]; p; p = p->next) out.push_back(p);
  return out;
}

ddInstance* instanceAt(ddClip* clip, int depth) {
  return ddDisplayList_find(clip->displayList, depth);
}

std::vector<ddInstance*> instances(ddClip* clip) {
  std::vector<ddInstance*> out;
  for (ddInstance* i = clip->displayList->head; i; i = i->next) out.push_back(i);
  return out;
}

swf::Bytes squareShape(int id, int type, int size) {
  swf::Writer body;
  body.rect(0, size, 0, size);
  body.raw(swf::shapeStyles(type, {{255, 0, 0}}, {}));
  body.rectangleRecords(size, size);
  return swf::defineShape(type, id, body);
}
