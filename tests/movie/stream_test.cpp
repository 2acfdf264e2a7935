// The byte and bit readers, the file header and the block loop.
#include <cstring>
#include <random>

#include "movie_test_support.h"

using swf::Bytes;

namespace {

class MovieStreamTest : public MovieTest {};

TEST_F(MovieStreamTest, BitFieldsTakeHeldBitsFirstAndByteReadsDropThem) {
  ddStream* s = streamOver({0b10110011, 0b01011100, 0xAB, 0xCD, 0b11111111, 0x42, 0b10100000});
  EXPECT_EQ(ddStream_readBits(s, 0), 0u);
  EXPECT_EQ(ddStream_readBits(s, 5), 0b10110u);
  // Three held bits on top of five new ones; three of the new byte stay held.
  EXPECT_EQ(ddStream_readBits(s, 8), 0b01101011u);
  EXPECT_EQ(s->bitCount, 3);
  EXPECT_EQ(ddStream_readBits(s, 3), 0b100u);
  EXPECT_EQ(ddStream_readBits(s, 16), 0xABCDu);
  EXPECT_EQ(s->bitCount, 0);  // ends on a byte boundary: nothing held
  EXPECT_EQ(ddStream_readBits(s, 3), 0b111u);
  EXPECT_EQ(ddStream_readU8(s), 0x42);
  // The five dropped ones must not leak into later fields.
  EXPECT_EQ(ddStream_readBits(s, 4), 0b1010u);

  ddStream* t = streamOver({0x80, 0x00, 0x00, 0x01, 0b11111000, 0b01000000, 0x80, 0, 0, 0});
  EXPECT_EQ(ddStream_readBits(t, 32), 0x80000001u);
  EXPECT_EQ(ddStream_readSBits(t, 5), -1);
  EXPECT_EQ(ddStream_readSBits(t, 0), 0);
  EXPECT_EQ(ddStream_readSBits(t, 3), 0);
  EXPECT_EQ(ddStream_readSBits(t, 2), 1);
  ddStream_align(t);
  EXPECT_EQ(ddStream_readSBits(t, 32), INT32_MIN);
}

// Memory streams take bit fields a word at a time; a source of its own goes
// a byte at a time. Both must give the same fields and leave the same state,
// across byte reads, aligns and the end of the data.
TEST_F(MovieStreamTest, WordAndByteBitReadsAgree) {
  static const ddStreamOps byByte = ddStream_memoryOps;  // same calls, another source
  std::mt19937 rng(5);
  Bytes data(300);
  for (auto& b : data) b = uint8_t(rng());
  ddStream* word = streamOver(data);
  ddStream* byte = streamOver(data);
  byte->ops = &byByte;
  for (int step = 0; step < 3000 && byte->pos < data.size() + 12; ++step) {
    const unsigned op = rng() % 16;
    if (op == 0) {
      ASSERT_EQ(ddStream_readU8(word), ddStream_readU8(byte)) << step;
    } else if (op == 1) {
      ddStream_align(word);
      ddStream_align(byte);
    } else {
      const int n = int(rng() % 33);
      ASSERT_EQ(ddStream_readBits(word, n), ddStream_readBits(byte, n)) << step << " n " << n;
    }
    ASSERT_EQ(word->pos, byte->pos) << step;
    ASSERT_EQ(word->bitCount, byte->bitCount) << step;
    if (word->bitCount > 0) {
      ASSERT_EQ(word->bitBuffer & ((1u << word->bitCount) - 1),
                byte->bitBuffer & ((1u << byte->bitCount) - 1))
          << step;
    }
  }
  EXPECT_GE(byte->pos, data.size());  // the run went past the end
}

TEST_F(MovieStreamTest, ValuesStringsAndReadsPastTheData) {
  ddStream* s = streamOver({0x34, 0x12, 0xFE, 0xFF, 0x78, 0x56, 0x34, 0x12, 1,    2, 3,  4,
                            5,    6,    7,    'a',  '\t', 'b',  '\n', 'c',  '\r', 0, 'z'});
  EXPECT_EQ(ddStream_readU16(s), 0x1234);
  EXPECT_EQ(ddStream_readS16(s), -2);
  EXPECT_EQ(ddStream_readU32(s), 0x12345678u);
  EXPECT_EQ(ddStream_readRGB(s), 0xFF030201u);
  EXPECT_EQ(ddStream_readRGBA(s), 0x07060504u);
  char* text = ddStream_readString(s);
  EXPECT_STREQ(text, "a\\tb\\nc\\r");  // control characters come out escaped
  ddFree(text);
  EXPECT_EQ(ddStream_readU8(s), 'z');
  // Past the end: zeros and an empty string, however far the skip.
  EXPECT_TRUE(s->ops->atEnd(s));
  EXPECT_EQ(ddStream_readU32(s), 0u);
  text = ddStream_readString(s);
  EXPECT_STREQ(text, "");
  ddFree(text);
  ddStream_skip(s, int64_t(1) << 40);
  EXPECT_EQ(ddStream_readU8(s), 0);

  Bytes tabs(3000, '\t');
  tabs.push_back(0);
  text = ddStream_readString(streamOver(tabs));
  EXPECT_EQ(std::strlen(text), 6000u);  // escapes grow the string past any fixed buffer
  ddFree(text);
}

TEST_F(MovieStreamTest, RectanglesMatricesAndColourTransforms) {
  swf::Writer w;
  w.rect(1, -1, 20, 2000);
  w.matrix({std::make_pair(0x18000, -0x8000), std::make_pair(0x4000, 1), 20, -40});
  w.cxform({std::vector<int32_t>{128, 64, 32}, std::vector<int32_t>{-10, 20, 30}}, false);
  ddStream* s = streamOver(w.bytes);
  ddRect r = ddStream_readRect(s);
  EXPECT_EQ(r.xMin, 51);  // twips by shift then divide: 1024 / 20, truncated
  EXPECT_EQ(r.yMax, 102400);
  // Scale, then rotate and skew (c first), then translation.
  ddMatrix m = ddStream_readMatrix(s);
  EXPECT_EQ(m.a, 1536);
  EXPECT_EQ(m.c, 256);
  EXPECT_EQ(m.b, 0);  // 1/65536 rounds to 0
  EXPECT_EQ(m.tx, 1024);
  // Multipliers before additions; the absent ones are identity.
  ddCxform a = ddStream_readCxform(s, false);
  EXPECT_EQ(a.gMul, 64);
  EXPECT_EQ(a.aMul, 256);
  EXPECT_EQ(a.rAdd, -10);

  // Width 0: a zero-sized rectangle, not the empty one.
  ddRect zero = ddStream_readRect(streamOver({0x00}));
  EXPECT_FALSE(ddRect_isEmpty(zero));
  EXPECT_EQ(zero.yMax, 0);
}

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

TEST_F(MovieStreamTest, HeaderFieldsOfPlainAndCompressedFiles) {
  Bytes body = swf::concat({swf::setBackground(1, 2, 3), squareShape(1), swf::placeNew(3, 1),
                            swf::showFrame(), swf::removeObject2(3), swf::showFrame(), swf::end()});
  swf::MovieOptions o;
  o.version = 7;
  o.xMin = 20;
  o.xMax = 11020;
  o.rateFraction = 0x80;
  o.rate = 12;
  o.frames = 2;
  ddStream* plain = parse(swf::movie(body, o));
  o.compressed = true;
  ddStream* packed = parse(swf::movie(body, o));
  for (ddStream* s : {plain, packed}) {
    EXPECT_EQ(s->version, 7);
    EXPECT_EQ(s->root->nFrames, 2);
    EXPECT_FLOAT_EQ(s->frameRate, 12.5f);
    EXPECT_EQ(s->root->frameWidth, 550 * 1024);
    EXPECT_EQ(s->root->frameHeight, 400 * 1024);
    EXPECT_EQ(s->root->bytesTotal, plain->fileLength);
    EXPECT_EQ(s->backgroundColor, 0xFF030201u);
    ASSERT_EQ(s->root->frames->count, 2);
    EXPECT_EQ(placements(s->root, 0).size(), 1u);
    EXPECT_TRUE(placements(s->root, 1).empty());
  }
  EXPECT_EQ(packed->size, packed->fileLength);
  EXPECT_EQ(packed->fileLength, plain->fileLength);
}

TEST_F(MovieStreamTest, BadSignaturesAndCompressedBodiesThatDoNotFitFailSilently) {
  swf::MovieOptions o;
  o.compressed = true;
  Bytes good = swf::movie(swf::concat({swf::showFrame(), swf::end()}), o);
  Bytes small = good, huge = good, roomy = good, truncated(good.begin(), good.end() - 6);
  small[4] = 4;  // stated size below the inflated size
  small[5] = small[6] = small[7] = 0;
  huge[4] = huge[5] = huge[6] = huge[7] = 0xFF;  // stated 4 GiB
  for (const Bytes& file :
       {Bytes{0x46, 0x57, 0x58, 8, 0, 0, 0, 0}, Bytes{0x5A, 0x57, 0x53, 8},
        Bytes{0x43, 0x57, 0x53, 8, 30, 0, 0, 0, 1, 2, 3}, Bytes{}, small, truncated, huge}) {
    int result = 0;
    parse(file, &result);
    EXPECT_EQ(result, -1);
  }
  EXPECT_TRUE(warnings().empty());
  // A stated size above the real one is accepted; the rest reads as zeros.
  roomy[5] = 0x10;
  int result = -1;
  EXPECT_EQ(parse(roomy, &result)->root->framesRead, 1);
  EXPECT_EQ(result, 0);
}

TEST_F(MovieStreamTest, UnknownBlocksWarnAndSkippedOnesAreSilentBothByLength) {
  // Bodies that would read as ShowFrame headers if they were not skipped.
  Bytes body = swf::concat({swf::block(3, {1, 2}), swf::block(12, {0x40, 0x00}),
                            swf::block(19, {0x40, 0x00, 0x40}), swf::showFrame(),
                            swf::block(200, {0x40, 0, 0x40}, true), swf::showFrame(), swf::end()});
  std::vector<std::pair<int, int>> seen;
  swf::MovieOptions o;
  o.frames = 2;
  ddStream* s = streamOver(swf::movie(body, o));
  s->listenerContext = &seen;
  s->listener = [](void* context, const ddTimeline*, int type, int32_t, ddBlockAction action) {
    static_cast<std::vector<std::pair<int, int>>*>(context)->emplace_back(type, int(action));
  };
  EXPECT_EQ(ddMovie_parse(s), 0);
  EXPECT_EQ(s->root->framesRead, 2);
  ASSERT_GE(seen.size(), 6u);
  const std::vector<std::pair<int, int>> expected = {{3, ddBlockUnknown},   {12, ddBlockSkipped},
                                                     {19, ddBlockSkipped},  {1, ddBlockRead},
                                                     {200, ddBlockUnknown}, {1, ddBlockRead}};
  EXPECT_EQ(std::vector(seen.begin(), seen.begin() + 6), expected);
  EXPECT_EQ(warnings(), (std::vector<std::string>{"Unrecognized block type: 3, length 2\n",
                                                  "Unrecognized block type: 200, length 3\n"}));
}

// The loop stops at an End block, at a long length of 0x80000000 or more, and
// at a header that ends at the stated file length. An export block with two
// entries keeps only the first and reads the second as a header of type 0.
TEST_F(MovieStreamTest, TheLoopStopsAtEndBlocksNegativeLengthsAndExportDesync) {
  swf::MovieOptions o;
  o.frames = 5;
  const Bytes two = {2, 0, 5, 0, 'h', 'e', 'r', 'o', 0, 6, 0, 'b', 0};  // count, id, name, ...
  const Bytes negative = {0xFF, 0x00, 0x00, 0x00, 0x00, 0x80};
  for (const Bytes& body :
       {swf::concat({swf::showFrame(), swf::end(), swf::showFrame()}),
        swf::concat({swf::showFrame(), negative, swf::showFrame()}),
        swf::concat({swf::showFrame(), swf::showFrame()}),
        swf::concat({swf::showFrame(), swf::block(56, two), swf::showFrame(), swf::end()})}) {
    int result = -1;
    ddStream* s = parse(swf::movie(body, o), &result);
    EXPECT_EQ(s->root->framesRead, 1);
    EXPECT_EQ(result, 0);
  }
  const ddTimeline* exported = streams_.back()->root;
  ASSERT_EQ(exported->exportCount, 1);
  EXPECT_EQ(exported->exports[0].id, 5);
  EXPECT_STREQ(exported->exports[0].name, "hero");
}

TEST_F(MovieStreamTest, TruncatedFilesParseWithoutReadingOutside) {
  swf::MovieOptions o;
  o.frames = 3;
  Bytes full = swf::movie(swf::concat({squareShape(1), swf::placeNew(1, 1), swf::showFrame(),
                                       swf::frameLabel("x"), swf::showFrame(), swf::end()}),
                          o);
  for (size_t cut = 9; cut < full.size(); cut++) {
    int result = -1;
    parse(Bytes(full.begin(), full.begin() + long(cut)), &result);
    EXPECT_EQ(result, 0) << "cut at " << cut;
  }
}

}  // namespace
