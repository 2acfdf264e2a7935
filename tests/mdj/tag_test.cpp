#include <gtest/gtest.h>

#include <string>

#include "audio/mdj/mdj_song.h"

namespace vostan {
namespace {

bool parse(MDJInfo& info, const std::string& text) {
  return info.parse(text.c_str(), text.size());
}

TEST(MDJTag, ParsesHeadAndSections) {
  MDJInfo info;
  ASSERT_TRUE(parse(info, "30000,90000,5,2,66150,9000000,8,1,-100,12050000,4,259"));
  EXPECT_EQ(info.loopStart, 30000);
  EXPECT_EQ(info.loopEnd, 90000);
  EXPECT_EQ(info.reservedField, 5);
  ASSERT_EQ(info.sectionCount, 2);
  EXPECT_EQ(info.sections[0].startFrame, 66150);
  EXPECT_EQ(info.sections[0].tempo, 90.0f);
  EXPECT_EQ(info.sections[0].syncBeats, 8);
  EXPECT_EQ(info.sections[1].startFrame, -100);
  EXPECT_EQ(info.sections[1].tempo, static_cast<float>(12050000 / 100000.0));
  EXPECT_EQ(info.sections[1].sectionFlag, 3);  // low eight bits of 259
}

TEST(MDJTag, TerminatorsAndOddCharacters) {
  MDJInfo info;
  // A blank ends a number as a comma does, and so does the end of the text,
  // where one empty number more reads as 0 (the missing section flag here).
  ASSERT_TRUE(parse(info, "1 2,0,1,0,6000000,4,"));
  EXPECT_EQ(info.loopEnd, 2);
  EXPECT_EQ(info.sections[0].tempo, 60.0f);
  // A comma and a blank in a row make an extra 0 that shifts the rest along.
  ASSERT_TRUE(parse(info, "1,2, 0,1,0,6000000,4,0"));
  EXPECT_EQ(info.sectionCount, 0);
  // Any other character counts as a digit, with 32-bit wrap-around.
  ASSERT_TRUE(parse(info, "1a,4294967297,-0,0"));
  EXPECT_EQ(info.loopStart, 10 + ('a' - 48));
  EXPECT_EQ(info.loopEnd, 1);
}

TEST(MDJTag, RefusesCountsTheTextCantHold) {
  for (const char* text : {"0,0,0,-1", "0,0,0,2,0,12000000,4,0", "0,0,0,1,10,12000000,",
                           "0,0,0,2147483647,1,2,3,4", "0,0,0", ""}) {
    MDJInfo info;
    info.loopStart = 77;
    EXPECT_FALSE(parse(info, text)) << text;
    EXPECT_EQ(info.loopStart, 77) << "a refused tag leaves the fields alone: " << text;
  }
}

TEST(MDJTag, FindSectionTakesTheFirstStartedRecord) {
  MDJInfo info;
  ASSERT_TRUE(parse(info, "0,0,0,3,200,1,1,0,100,2,2,0,10,3,3,0"));
  EXPECT_EQ(info.findSection(500)->syncBeats, 1);
  EXPECT_EQ(info.findSection(200)->syncBeats, 1);
  EXPECT_EQ(info.findSection(199)->syncBeats, 2);
  EXPECT_EQ(info.findSection(10)->syncBeats, 3);
  EXPECT_EQ(info.findSection(-1000)->syncBeats, 3);  // before all: the last record
  // The search never sorts: listed in ascending order, the first record
  // answers for every frame once its start has passed.
  ASSERT_TRUE(parse(info, "0,0,0,2,10,3,3,0,200,1,1,0"));
  EXPECT_EQ(info.findSection(500)->syncBeats, 3);
  EXPECT_EQ(info.findSection(5)->syncBeats, 1);
}

}  // namespace
}  // namespace vostan
