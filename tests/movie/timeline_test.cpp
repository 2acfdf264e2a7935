// Timelines as per-frame snapshots, and display lists reconciled with them.
#include "movie_test_support.h"

using swf::Bytes;

namespace {

class MovieTimelineTest : public MovieTest {
 protected:
  static swf::Place moveTo(int depth, int tx) {
    swf::Place p;
    p.depth = depth;
    p.move = true;
    p.matrix = swf::Matrix{};
    p.matrix->tx = tx;
    return p;
  }
  static swf::MovieOptions frames(int n) {
    swf::MovieOptions o;
    o.frames = uint16_t(n);
    return o;
  }
  static ddClip* clipAt(ddClip* parent, int depth) {
    ddInstance* i = instanceAt(parent, depth);
    return i && i->type == ddCharacterTimeline ? reinterpret_cast<ddClip*>(i) : nullptr;
  }
};

// Frames are complete, deep snapshots of the placements sorted by depth.
// Removal by depth and id: a wrong id stays, an unknown id matches the
// placement without a character, which makes no instance.
TEST_F(MovieTimelineTest, FramesAreSnapshotsOfPlaceAndRemoveRecords) {
  swf::Place named;
  named.depth = 2;
  named.id = 1;
  named.name = "two";
  swf::Cxform half;
  half.mul = std::vector<int32_t>{128, 128, 128};
  swf::Matrix at;
  at.tx = 40;
  Bytes body = swf::concat(
      {squareShape(1), squareShape(2), swf::placeObject(1, 3, at), swf::placeObject(1, 4, at, half),
       swf::placeObject(7, 6, at), swf::placeObject2(named), swf::showFrame(),
       swf::placeObject2(moveTo(4, 200)), swf::frameLabel("second"), swf::removeObject(2, 3),
       swf::removeObject(9, 6), swf::showFrame(), swf::removeObject(1, 3), swf::removeObject2(9),
       swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body, frames(3)));
  ddTimeline* t = movie->rootTimeline;
  auto f0 = placements(t, 0), f1 = placements(t, 1);
  ASSERT_EQ(f0.size(), 4u);
  EXPECT_EQ(f0[0]->depth, 2);
  EXPECT_EQ(f0[1]->matrix.tx, 2048);
  EXPECT_EQ(f0[2]->cxform.rMul, 128);
  EXPECT_EQ(f0[3]->character, nullptr);
  ASSERT_EQ(f1.size(), 3u);
  // A move keeps the character and changes only what it carries, in its frame.
  EXPECT_EQ(f1[2]->character, ddDictionary_get(t, 1));
  EXPECT_EQ(f1[2]->cxform.rMul, 128);
  EXPECT_EQ(f1[2]->matrix.tx, 200 * 1024 / 20);
  EXPECT_EQ(f0[2]->matrix.tx, 2048);
  EXPECT_NE(f1[0]->name, f0[0]->name);
  EXPECT_NE(f1[0]->uid, f0[0]->uid);
  EXPECT_EQ(placements(t, 2).size(), 2u);
  ASSERT_EQ(t->labelCount, 1);
  EXPECT_EQ(t->labels[0].frame, 1);

  // Removing one of two placements of a character leaves the other alone.
  ddClip* root = movie->rootClip;
  EXPECT_EQ(instances(root).size(), 3u);
  ddInstance* kept = instanceAt(root, 4);
  ddClip_moveFrame(movie, root, 2);
  EXPECT_EQ(instanceAt(root, 3), nullptr);
  EXPECT_EQ(instanceAt(root, 4), kept);
}

// A script inside a sprite skips the sprite's length from where it stands, so
// the sprite keeps the frame it closed before and the movie loses what follows.
TEST_F(MovieTimelineTest, SpritesReadTheirOwnBlocksAndShareTheDictionary) {
  Bytes inner =
      swf::concat({swf::placeNew(1, 1), swf::frameLabel("in"), swf::showFrame(),
                   swf::block(9, {1, 2, 3}), swf::removeObject2(1), swf::showFrame(), swf::end()});
  Bytes scripted =
      swf::concat({swf::showFrame(), swf::block(12, {0, 0}), swf::showFrame(), swf::end()});
  Bytes body = swf::concat({squareShape(1), swf::defineSprite(10, 2, inner),
                            swf::defineSprite(11, 0, swf::end()), swf::showFrame(),
                            swf::defineSprite(12, 2, scripted), swf::showFrame(), swf::end()});
  ddStream* s = parse(swf::movie(body, frames(2)));
  auto* sprite = reinterpret_cast<ddTimeline*>(ddDictionary_get(s->root, 10));
  ASSERT_NE(sprite, nullptr);
  EXPECT_EQ(sprite->dictionary, s->root->dictionary);
  ASSERT_EQ(sprite->frames->count, 2);
  EXPECT_EQ(placements(sprite, 0).size(), 1u);
  EXPECT_TRUE(placements(sprite, 1).empty());
  EXPECT_EQ(sprite->labelCount, 1);
  // Inner blocks other than the timeline's are skipped, not applied to the movie.
  EXPECT_EQ(s->backgroundColor, 0u);
  EXPECT_EQ(s->root->labelCount, 0);
  EXPECT_EQ(reinterpret_cast<ddTimeline*>(ddDictionary_get(s->root, 11))->frames->count, 1);
  EXPECT_EQ(reinterpret_cast<ddTimeline*>(ddDictionary_get(s->root, 12))->framesRead, 1);
  EXPECT_EQ(s->root->framesRead, 1);
}

// Display lists

TEST_F(MovieTimelineTest, KeptInstancesKeepTheirFrameAndReplacedOnesStartAgain) {
  Bytes inner = swf::concat(
      {swf::placeNew(1, 1), swf::showFrame(), swf::showFrame(), swf::showFrame(), swf::end()});
  Bytes body = swf::concat(
      {squareShape(1), squareShape(2), swf::defineSprite(10, 3, inner), swf::placeNew(4, 10),
       swf::showFrame(), swf::placeObject2(moveTo(4, 400)), swf::showFrame(), swf::placeNew(4, 2),
       swf::showFrame(), swf::placeNew(4, 10), swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body, frames(4)));
  ddClip* root = movie->rootClip;
  ddClip* child = clipAt(root, 4);
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(std::string(child->info->name), "instance4");
  EXPECT_EQ(child->info->root, root->info);
  ddClip_moveFrame(movie, child, 2);

  // Same character at the depth: the same clip, still on its own frame, moved.
  ddClip_moveFrame(movie, root, 1);
  EXPECT_EQ(clipAt(root, 4), child);
  EXPECT_EQ(child->frame, 2);
  EXPECT_EQ(child->head.matrix.tx, 400 * 1024 / 20);

  // Another character: the clip leaves, a shape takes the depth.
  ddClip_moveFrame(movie, root, 2);
  ddInstance* shape = instanceAt(root, 4);
  ASSERT_NE(shape, nullptr);
  EXPECT_EQ(shape->type, ddCharacterShape);
  EXPECT_TRUE(child->flags & ddClipRemoved);

  // The sprite again: a fresh clip from its first frame.
  ddClip_moveFrame(movie, root, 3);
  ddClip* again = clipAt(root, 4);
  ASSERT_NE(again, nullptr);
  EXPECT_NE(again, child);
  EXPECT_EQ(again->frame, 0);
  EXPECT_EQ(instances(again).size(), 1u);
}

TEST_F(MovieTimelineTest, FrameNumbersOutOfRangeShowTheFirstFrame) {
  Bytes body =
      swf::concat({squareShape(1), squareShape(2), swf::placeNew(1, 1), swf::showFrame(),
                   swf::removeObject2(1), swf::placeNew(2, 2), swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body, frames(2)));
  ddClip* root = movie->rootClip;
  for (int request : {2, -1, 1 << 30}) {
    SCOPED_TRACE(request);
    ddClip_moveFrame(movie, root, 1);
    ASSERT_EQ(instanceAt(root, 1), nullptr);
    ddClip_moveFrame(movie, root, request);
    EXPECT_EQ(root->frame, 0);
    EXPECT_NE(instanceAt(root, 1), nullptr);
    EXPECT_EQ(instanceAt(root, 2), nullptr);
  }
  // A frame past the stored ones is refused with a warning and no change.
  root->frame = 5;
  ddClip_setFrame(movie, root);
  ASSERT_EQ(warnings().size(), 1u);
  EXPECT_EQ(warnings()[0], "frameNum > timeline->nFrames");
  EXPECT_NE(instanceAt(root, 1), nullptr);
}

// Dirty rectangles: nothing for a move to the current frame, exactly the
// instance's area for a colour change, and a removed instance's area one
// update later.
TEST_F(MovieTimelineTest, UpdatesRedrawWhatChangedOnly) {
  swf::Cxform red;
  red.add = std::vector<int32_t>{255, 0, 0, 0};
  swf::Place tinted;
  tinted.depth = 1;
  tinted.move = true;
  tinted.cxform = red;
  swf::Matrix away;
  away.tx = 2000;
  Bytes body =
      swf::concat({squareShape(1), swf::placeNew(1, 1), swf::placeNew(2, 1, away), swf::showFrame(),
                   swf::placeObject2(tinted), swf::removeObject2(2), swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body, frames(2)));
  ddMovie_draw(movie, nullptr, nullptr);
  ddInstance* square = instanceAt(movie->rootClip, 1);
  ddClip_moveFrame(movie, movie->rootClip, 0);
  const ddRect* rects = nullptr;
  int32_t count = -1;
  ddMovie_draw(movie, &rects, &count);
  EXPECT_EQ(count, 0);

  ddClip_moveFrame(movie, movie->rootClip, 1);
  EXPECT_EQ(instanceAt(movie->rootClip, 1), square);
  EXPECT_EQ(square->cxform.rAdd, 255);
  EXPECT_EQ(instanceAt(movie->rootClip, 2), nullptr);
  ASSERT_NE(movie->rootClip->displayList->removed, nullptr);
  ddMovie_draw(movie, &rects, &count);
  EXPECT_EQ(movie->rootClip->displayList->removed, nullptr);
  ASSERT_EQ(count, 2);
  // 100 twips at a scale of 550/550: five pixels, widened to whole pixels.
  EXPECT_TRUE(ddRect_contains(rects[0], 100 * 1024 + 512, 2 * 1024));  // removed first
  EXPECT_EQ(rects[1].xMin, 0);
  EXPECT_EQ(rects[1].xMax, 5 * 1024);
}

TEST_F(MovieTimelineTest, MasksReachTheirDepthsWhicheverIsPlacedFirst) {
  swf::Place mask;
  mask.depth = 1;
  mask.id = 1;
  mask.clipDepth = 3;
  Bytes maskFirst = swf::concat({squareShape(1), swf::placeObject2(mask), swf::placeNew(2, 1),
                                 swf::placeNew(3, 1), swf::showFrame(), swf::end()});
  ddMovie* a = open(swf::movie(maskFirst));
  EXPECT_EQ(instanceAt(a->rootClip, 2)->mask, instanceAt(a->rootClip, 1));
  EXPECT_EQ(instanceAt(a->rootClip, 3)->mask, nullptr);

  // A mask that arrives when its target is already there reaches it too.
  Bytes maskLater = swf::concat({squareShape(1), swf::placeNew(2, 1), swf::showFrame(),
                                 swf::placeObject2(mask), swf::showFrame(), swf::end()});
  ddMovie* b = open(swf::movie(maskLater, frames(2)));
  ddInstance* target = instanceAt(b->rootClip, 2);
  EXPECT_EQ(target->mask, nullptr);
  ddClip_moveFrame(b, b->rootClip, 1);
  EXPECT_EQ(instanceAt(b->rootClip, 2), target);
  EXPECT_EQ(target->mask, instanceAt(b->rootClip, 1));

  ddClip_moveFrame(b, b->rootClip, 0);  // and leaving, clears what it reached
  EXPECT_EQ(target->mask, nullptr);
}

TEST_F(MovieTimelineTest, SpritesNestedWithoutEndStopAtTheNestingBound) {
  // Each sprite places the one before it; the chain is deeper than the bound.
  Bytes body = squareShape(1);
  for (int id = 2; id < 2 + ddMaxClipNesting + 5; id++)
    body = swf::concat(
        {body, swf::defineSprite(
                   id, 1, swf::concat({swf::placeNew(1, id - 1), swf::showFrame(), swf::end()}))});
  body =
      swf::concat({body, swf::placeNew(1, 2 + ddMaxClipNesting + 4), swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body));
  int depth = 0;
  for (ddClip* c = movie->rootClip; c; c = clipAt(c, 1)) depth++;
  EXPECT_EQ(depth, ddMaxClipNesting + 1);
  ASSERT_FALSE(warnings().empty());
  EXPECT_EQ(warnings()[0].rfind("Clips nested too deep", 0), 0u);
}

}  // namespace

TEST_F(MovieTimelineTest, ClipsOffTheStageKeepTheirRecordsButNotTheirShapes) {
  // A sprite holding a masked shape and a sprite of its own comes and goes
  // with every root frame, as a looping movie does for ever.
  Bytes leaf = swf::concat({swf::placeNew(1, 1), swf::showFrame(), swf::end()});
  swf::Place mask;
  mask.depth = 1;
  mask.id = 1;
  mask.clipDepth = 5;
  Bytes outer = swf::concat({swf::placeObject2(mask), swf::placeNew(2, 1), swf::placeNew(3, 11),
                             swf::showFrame(), swf::end()});
  Bytes body = swf::concat({squareShape(1), swf::defineSprite(11, 1, leaf),
                            swf::defineSprite(10, 1, outer), swf::placeNew(4, 10), swf::showFrame(),
                            swf::removeObject2(4), swf::showFrame(), swf::end()});
  ddMovie* movie = open(swf::movie(body, frames(2)));
  ddClip* root = movie->rootClip;
  ddClip* first = clipAt(root, 4);
  ASSERT_NE(first, nullptr);
  ddClip* inner = clipAt(first, 3);
  ASSERT_NE(inner, nullptr);
  ddClip_moveFrame(movie, root, 1);
  ddMovie_draw(movie, nullptr, nullptr);
  // Handles Java may hold stay readable; only the clips remain below them.
  EXPECT_TRUE(first->flags & ddClipRemoved);
  EXPECT_STREQ(first->info->name, "instance4");
  ASSERT_EQ(instances(first).size(), 1u);
  EXPECT_EQ(instances(first)[0], &inner->head);
  EXPECT_EQ(inner->head.mask, nullptr);
  EXPECT_TRUE(instances(inner).empty());

  // Memory grows by clip records only, not by everything they showed.
  const size_t before = ddMemory_liveBytes();
  ddClip_moveFrame(movie, root, 0);
  ddMovie_draw(movie, nullptr, nullptr);
  const size_t perCycleWithShapes = ddMemory_liveBytes() - before;
  for (int i = 0; i < 200; ++i) {
    ddClip_moveFrame(movie, root, 1);
    ddMovie_draw(movie, nullptr, nullptr);
    ddClip_moveFrame(movie, root, 0);
    ddMovie_draw(movie, nullptr, nullptr);
  }
  const size_t grown = ddMemory_liveBytes() - before;
  EXPECT_LT(grown, 200 * perCycleWithShapes) << "bytes per cycle: " << grown / 201;
  ddClip_moveFrame(movie, first, 0);  // a removed clip can still be moved
}
