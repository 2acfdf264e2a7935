// The byte and bit readers, the file header and the block loop.
#include <cstring>

#include "movie_test_support.h"

using swf::Bytes;

namespace {

class MovieStreamTest : public MovieTest {};

TEST_F(MovieStreamTest, BitReaderTakesHeldBitsFirstAndRefillsByWholeBytes) {
  ddStream* s = streamOver({0b10110011, 0b01011100, 0xAB, 0xCD});
  EXPECT_EQ(ddStream_readBits(s, 0), 0u);
  EXPECT_EQ(s->bitCount, 0);
  EXPECT_EQ(s->pos, 0u);

  EXPECT_EQ(ddStream_readBits(s, 5), 0b10110u);
  EXPECT_EQ(s->bitCount, 3);
  // Three held bits on top of five new ones; three of the new byte stay held.
  EXPECT_EQ(ddStream_readBits(s, 8), 0b01101011u);
  EXPECT_EQ(s->bitCount, 3);
  EXPECT_EQ(ddStream_readBits(s, 3), 0b100u);
  EXPECT_EQ(s->bitCount, 0);
  // A field that ends on a byte boundary leaves nothing held.
  EXPECT_EQ(ddStream_readBits(s, 16), 0xABCDu);
  EXPECT_EQ(s->bitCount, 0);
  EXPECT_EQ(s->pos, 4u);
}

TEST_F(MovieStreamTest, ByteReadDropsHeldBitsAndTheyNeverReappear) {
  ddStream* s = streamOver({0b11111111, 0x42, 0b10100000});
  EXPECT_EQ(ddStream_readBits(s, 3), 0b111u);
  EXPECT_EQ(ddStream_readU8(s), 0x42);
  // The five dropped ones must not leak into later fields.
  EXPECT_EQ(ddStream_readBits(s, 0), 0u);
  EXPECT_EQ(ddStream_readBits(s, 4), 0b1010u);
  ddStream_align(s);
  EXPECT_EQ(s->bitCount, 0);
}

TEST_F(MovieStreamTest, ThirtyTwoBitFieldsAndSignExtension) {
  ddStream* s = streamOver({0x80, 0x00, 0x00, 0x01, 0b11111000, 0b01000000});
  EXPECT_EQ(ddStream_readBits(s, 32), 0x80000001u);
  EXPECT_EQ(ddStream_readSBits(s, 5), -1);
  EXPECT_EQ(ddStream_readSBits(s, 0), 0);
  EXPECT_EQ(ddStream_readSBits(s, 3), 0);
  EXPECT_EQ(ddStream_readSBits(s, 2), 1);
  ddStream* t = streamOver({0x80, 0x00, 0x00, 0x00});
  EXPECT_EQ(ddStream_readSBits(t, 32), INT32_MIN);
}

TEST_F(MovieStreamTest, IntegersColoursAndStrings) {
  ddStream* s = streamOver({0x34, 0x12, 0xFE, 0xFF, 0x78, 0x56, 0x34, 0x12, 1,    2, 3,  4,
                            5,    6,    7,    'a',  '\t', 'b',  '\n', 'c',  '\r', 0, 'z'});
  EXPECT_EQ(ddStream_readU16(s), 0x1234);
  EXPECT_EQ(ddStream_readS16(s), -2);
  EXPECT_EQ(ddStream_readU32(s), 0x12345678u);
  EXPECT_EQ(ddStream_readRGB(s), 0xFF030201u);
  EXPECT_EQ(ddStream_readRGBA(s), 0x07060504u);
  char* text = ddStream_readString(s);
  EXPECT_STREQ(text, "a\\tb\\nc\\r");
  ddFree(text);
  EXPECT_EQ(ddStream_readU8(s), 'z');
}

TEST_F(MovieStreamTest, LongStringsAreKeptWhole) {
  Bytes bytes(3000, '\t');
  bytes.push_back(0);
  ddStream* s = streamOver(bytes);
  char* text = ddStream_readString(s);
  ASSERT_EQ(std::strlen(text), 6000u);
  EXPECT_EQ(std::string(text, 4), "\\t\\t");
  ddFree(text);
}

TEST_F(MovieStreamTest, ReadsPastTheDataGiveZeros) {
  ddStream* s = streamOver({0xFF});
  EXPECT_EQ(ddStream_readU8(s), 0xFF);
  EXPECT_TRUE(s->ops->atEnd(s));
  EXPECT_EQ(ddStream_readU32(s), 0u);
  char* text = ddStream_readString(s);
  EXPECT_STREQ(text, "");
  ddFree(text);
  ddStream_skip(s, int64_t(1) << 40);
  EXPECT_EQ(ddStream_readU8(s), 0);
}

TEST_F(MovieStreamTest, RectanglesConvertTwipsByShiftThenDivide) {
  swf::Writer w;
  w.rect(1, -1, 20, 2000);
  ddStream* s = streamOver(w.bytes);
  ddRect r = ddStream_readRect(s);
  EXPECT_EQ(r.xMin, 51);  // 1024 / 20, truncated
  EXPECT_EQ(r.xMax, -51);
  EXPECT_EQ(r.yMin, 1024);
  EXPECT_EQ(r.yMax, 102400);

  // Width 0: four zeros, a zero-sized rectangle and not the empty one.
  ddStream* z = streamOver({0x00});
  ddRect zero = ddStream_readRect(z);
  EXPECT_FALSE(ddRect_isEmpty(zero));
  EXPECT_EQ(zero.xMin, 0);
  EXPECT_EQ(zero.yMax, 0);
}

TEST_F(MovieStreamTest, MatricesTakeScaleThenRotateSkewThenTranslation) {
  swf::Writer w;
  w.matrix({std::make_pair(0x18000, -0x8000), std::make_pair(0x4000, 1), 20, -40});
  w.matrix({});
  ddStream* s = streamOver(w.bytes);
  ddMatrix m = ddStream_readMatrix(s);
  EXPECT_EQ(m.a, 1536);
  EXPECT_EQ(m.d, -512);
  EXPECT_EQ(m.c, 256);  // first of the pair is c
  EXPECT_EQ(m.b, 0);    // 1/65536 rounds to 0
  EXPECT_EQ(m.tx, 1024);
  EXPECT_EQ(m.ty, -2048);
  ddMatrix id = ddStream_readMatrix(s);
  EXPECT_TRUE(ddMatrix_equal(id, ddMatrixIdentity));
}

TEST_F(MovieStreamTest, ColourTransformsReadMultipliersBeforeAdditions) {
  swf::Writer w;
  w.cxform({std::vector<int32_t>{128, 64, 32}, std::vector<int32_t>{-10, 20, 30}}, false);
  w.cxform({std::nullopt, std::vector<int32_t>{1, 2, 3, 4}}, true);
  ddStream* s = streamOver(w.bytes);
  ddCxform a = ddStream_readCxform(s, false);
  EXPECT_EQ(a.rMul, 128);
  EXPECT_EQ(a.gMul, 64);
  EXPECT_EQ(a.bMul, 32);
  EXPECT_EQ(a.aMul, 256);
  EXPECT_EQ(a.rAdd, -10);
  EXPECT_EQ(a.bAdd, 30);
  EXPECT_EQ(a.aAdd, 0);
  ddCxform b = ddStream_readCxform(s, true);
  EXPECT_EQ(b.rMul, 256);
  EXPECT_EQ(b.aAdd, 4);
  EXPECT_EQ(b.gAdd, 2);
}

// Sinks

TEST(MovieSinks, DefaultSinksPrintALineAndAFatalReportEndsTheProcessWithMinusOne) {
  ddSink warn = ddSetWarnSink(nullptr), fatal = ddSetFatalSink(nullptr);
  testing::internal::CaptureStdout();
  ddWarn("Unsupported mask type: %i", 4);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unsupported mask type: 4\n");
  // A replaced fatal sink that returns still ends the process.
  EXPECT_EXIT(ddFatal("Unknown fill type: %i", 7), testing::ExitedWithCode(255), "");
  EXPECT_EXIT(
      {
        ddSetFatalSink([](const char*) {});
        ddFatal("x");
      },
      testing::ExitedWithCode(255), "");
  ddSetWarnSink(warn);
  ddSetFatalSink(fatal);
}

// Header

TEST_F(MovieStreamTest, BadSignaturesFailSilently) {
  for (Bytes file : {Bytes{0x46, 0x57, 0x58, 8, 0, 0, 0, 0}, Bytes{0x5A, 0x57, 0x53, 8},
                     Bytes{0x43, 0x57, 0x53, 8, 30, 0, 0, 0, 1, 2, 3}, Bytes{}}) {
    int result = 0;
    parse(file, &result);
    EXPECT_EQ(result, -1);
  }
  EXPECT_TRUE(warnings().empty());
}

TEST_F(MovieStreamTest, HeaderFieldsAndFrameRate) {
  swf::MovieOptions o;
  o.version = 7;
  o.xMin = 20;
  o.xMax = 11020;
  o.yMin = 0;
  o.yMax = 8000;
  o.rateFraction = 0x80;
  o.rate = 12;
  o.frames = 3;
  Bytes file = swf::movie(swf::end(), o);
  ddStream* s = parse(file);
  EXPECT_EQ(s->version, 7);
  EXPECT_EQ(s->fileLength, int32_t(file.size()));
  EXPECT_FLOAT_EQ(s->frameRate, 12.5f);
  EXPECT_EQ(s->root->nFrames, 3);
  EXPECT_EQ(s->root->frameWidth, 550 * 1024);
  EXPECT_EQ(s->root->frameHeight, 400 * 1024);
  EXPECT_EQ(s->root->bytesTotal, int32_t(file.size()));
  o.rateFraction = 0;
  EXPECT_FLOAT_EQ(parse(swf::movie(swf::end(), o))->frameRate, 12.0f);
}

TEST_F(MovieStreamTest, CompressedAndPlainFilesReadAlike) {
  Bytes body = swf::concat({swf::setBackground(1, 2, 3), squareShape(1), swf::placeNew(3, 1),
                            swf::showFrame(), swf::removeObject2(3), swf::showFrame(), swf::end()});
  swf::MovieOptions o;
  o.frames = 2;
  ddStream* plain = parse(swf::movie(body, o));
  o.compressed = true;
  ddStream* packed = parse(swf::movie(body, o));
  for (ddStream* s : {plain, packed}) {
    EXPECT_EQ(s->backgroundColor, 0xFF030201u);
    EXPECT_EQ(s->root->framesRead, 2);
    ASSERT_EQ(s->root->frames->count, 2);
    EXPECT_EQ(placements(s->root, 0).size(), 1u);
    EXPECT_TRUE(placements(s->root, 1).empty());
    EXPECT_NE(ddDictionary_get(s->root, 1), nullptr);
  }
  EXPECT_EQ(packed->size, packed->fileLength);
  EXPECT_EQ(packed->fileLength, plain->fileLength);
}

TEST_F(MovieStreamTest, CompressedBodiesThatDoNotFitOrEndEarlyFail) {
  swf::MovieOptions o;
  o.compressed = true;
  Bytes good = swf::movie(swf::concat({swf::showFrame(), swf::end()}), o);
  Bytes small = good;
  small[4] = 4;  // stated size below the inflated size
  small[5] = small[6] = small[7] = 0;
  Bytes truncated(good.begin(), good.end() - 6);
  Bytes huge = good;
  huge[4] = huge[5] = huge[6] = huge[7] = 0xFF;  // stated 4 GiB
  for (const Bytes* f : {&small, &truncated, &huge}) {
    int result = 0;
    parse(*f, &result);
    EXPECT_EQ(result, -1);
  }
  // A stated size above the real one is accepted; the rest reads as zeros.
  Bytes roomy = good;
  roomy[5] = 0x10;
  int result = -1;
  ddStream* s = parse(roomy, &result);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(s->root->framesRead, 1);
}

// Block loop

TEST_F(MovieStreamTest, UnknownBlocksWarnAndAreSkippedByLength) {
  Bytes body = swf::concat({swf::block(3, {1, 2}), swf::showFrame(), swf::block(63, {9}),
                            swf::block(200, {7, 7, 7}, true), swf::showFrame(), swf::end()});
  swf::MovieOptions o;
  o.frames = 5;
  ddStream* s = parse(swf::movie(body, o));
  EXPECT_EQ(s->root->framesRead, 2);
  ASSERT_EQ(warnings().size(), 3u);
  EXPECT_EQ(warnings()[0], "Unrecognized block type: 3, length 2\n");
  EXPECT_EQ(warnings()[1], "Unrecognized block type: 63, length 1\n");
  EXPECT_EQ(warnings()[2], "Unrecognized block type: 200, length 3\n");
}

TEST_F(MovieStreamTest, SkippedBlocksAreSilentAndReported) {
  // DoAction, a sound stream block and a DefineText, each with a body that
  // would read as a block header if it were not skipped.
  Bytes body = swf::concat({swf::block(12, {0x40, 0x00}), swf::block(19, {0x40, 0x00, 0x40}),
                            swf::block(11, {0x40, 0x00}), swf::showFrame(), swf::end()});
  struct Seen {
    std::vector<std::pair<int, int>> blocks;
  } seen;
  files_.push_back(std::make_unique<Bytes>(swf::movie(body)));
  ddStream* s = ddStream_create(files_.back()->data(), int32_t(files_.back()->size()));
  streams_.push_back(s);
  s->listenerContext = &seen;
  s->listener = [](void* context, const ddTimeline*, int type, int32_t, ddBlockAction action) {
    static_cast<Seen*>(context)->blocks.emplace_back(type, int(action));
  };
  EXPECT_EQ(ddMovie_parse(s), 0);
  EXPECT_TRUE(warnings().empty());
  EXPECT_EQ(s->root->framesRead, 1);
  std::vector<std::pair<int, int>> expected = {
      {12, ddBlockSkipped}, {19, ddBlockSkipped}, {11, ddBlockSkipped}, {1, ddBlockRead}};
  EXPECT_EQ(seen.blocks, expected);
}

TEST_F(MovieStreamTest, TheLoopStopsAtEndBlocksNegativeLengthsAndTheStatedLength) {
  swf::MovieOptions o;
  o.frames = 5;
  // An End block stops the loop before the declared frame count.
  ddStream* a = parse(swf::movie(swf::concat({swf::showFrame(), swf::end(), swf::showFrame()}), o));
  EXPECT_EQ(a->root->framesRead, 1);

  // A long length of 0x80000000 or more ends the parse with success.
  Bytes negative = {0xFF, 0x00, 0x00, 0x00, 0x00, 0x80};
  int result = -1;
  ddStream* b =
      parse(swf::movie(swf::concat({swf::showFrame(), negative, swf::showFrame()}), o), &result);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(b->root->framesRead, 1);

  // A block whose header ends at the stated file length is not handled.
  ddStream* c = parse(swf::movie(swf::concat({swf::showFrame(), swf::showFrame()}), o));
  EXPECT_EQ(c->root->framesRead, 1);
}

TEST_F(MovieStreamTest, ExportsKeepOnlyTheFirstEntryAndMoreEntriesDesynchronise) {
  swf::Writer one;
  one.u16(1);
  one.u16(5);
  one.string("hero");
  swf::MovieOptions o;
  o.frames = 2;
  ddStream* a =
      parse(swf::movie(swf::concat({swf::block(56, one.bytes), swf::showFrame(), swf::end()}), o));
  ASSERT_EQ(a->root->exportCount, 1);
  EXPECT_EQ(a->root->exports[0].id, 5);
  EXPECT_STREQ(a->root->exports[0].name, "hero");
  EXPECT_EQ(a->root->framesRead, 1);

  // The second entry (id 6, "b") is read as a block header of type 0.
  swf::Writer two;
  two.u16(2);
  two.u16(5);
  two.string("a");
  two.u16(6);
  two.string("b");
  ddStream* b =
      parse(swf::movie(swf::concat({swf::block(56, two.bytes), swf::showFrame(), swf::end()}), o));
  EXPECT_EQ(b->root->exportCount, 1);
  EXPECT_EQ(b->root->framesRead, 0);
}

TEST_F(MovieStreamTest, TruncatedFilesParseWithoutReadingOutside) {
  swf::MovieOptions o;
  o.frames = 3;
  Bytes full = swf::movie(swf::concat({squareShape(1), swf::placeNew(1, 1), swf::showFrame(),
                                       swf::frameLabel("x"), swf::showFrame(), swf::end()}),
                          o);
  for (size_t cut = 9; cut < full.size(); cut++) {
    Bytes part(full.begin(), full.begin() + long(cut));
    int result = -1;
    parse(part, &result);
    EXPECT_EQ(result, 0) << "cut at " << cut;
  }
}

}  // namespace
