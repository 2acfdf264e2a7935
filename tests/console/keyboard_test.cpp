#include "console/keyboard.h"

#include <gtest/gtest.h>

#include "platform/codepage.h"
#include "platform/fake/fake_window_system.h"
#include "platform/win32_defs.h"

namespace vostan::keyboard {
namespace {

class KeyboardTest : public ::testing::Test {
 protected:
  platform::FakeWindowSystem ws;
  void SetUp() override {
    platform::setWindowSystem(&ws);
    buildKeyTables();
    resetTypedState();
    for (auto& k : keyState) k = 0;
  }
  void TearDown() override { platform::setWindowSystem(nullptr); }
  KeyResult key(int vk) { return keyMessage(vk); }
};

TEST_F(KeyboardTest, PollingReadsTheKeyBehindTheCode) {
  keyState[13] = 0x80;
  EXPECT_TRUE(isKeyPressed(10));  // enter is virtual key 13
  EXPECT_FALSE(isKeyPressed(13));
  // Codes out of range read virtual key 0, which nothing presses.
  keyState[124] = 0x80;
  EXPECT_FALSE(isKeyPressed(-1));
  EXPECT_FALSE(isKeyPressed(300));
  EXPECT_FALSE(isKeyPressed(61440));
  keyState[0] = 0x80;
  EXPECT_TRUE(isKeyPressed(300));
  // Entry 0 of the reverse table is the last key without a code.
  EXPECT_EQ(virtualKeyTable[0], 255);
}

TEST_F(KeyboardTest, CodesFollowTheJapaneseLayoutTable) {
  EXPECT_FALSE(key(186).event);  // US semicolon has no code
  EXPECT_EQ(key(124).code, 61440);
  EXPECT_EQ(key(243).code, 244);
  EXPECT_EQ(key(244).code, 243);
  EXPECT_EQ(key(222).code, 514);
  EXPECT_EQ(key(13).code, 10);
  EXPECT_FALSE(key(win::VK_PROCESSKEY).event);
  ws.keys[win::VK_MENU] = 0x80;
  EXPECT_EQ(key(28).code, 256);
  ws.keys[win::VK_SHIFT] = 0x80;
  EXPECT_EQ(key(28).code, 257);  // shift wins over alt
  ws.keyboardLayout = 0x411;
  ws.keyboardType = 7;
  EXPECT_EQ(key(21).code, 262);
}

TEST_F(KeyboardTest, CharactersComeFromTheLayoutWithTheStatedFallbacks) {
  EXPECT_EQ(key('A').character, u'a');
  ws.keys[win::VK_SHIFT] = 0x80;
  EXPECT_EQ(key('A').character, u'A');
  EXPECT_EQ(key('A').modifiers, 1);
  ws.keys[win::VK_SHIFT] = 0;
  ws.keys[win::VK_CONTROL] = 0x80;
  EXPECT_EQ(key('A').character, 1);
  ws.keys[win::VK_CONTROL] = 0;
  // Delete is code 127, which the layout turns into nothing.
  EXPECT_EQ(key(46).code, 127);
  EXPECT_EQ(key(46).character, 65535);
  // The period key is code 46: it reads the layout as delete, which gives nothing, so 127.
  EXPECT_EQ(key(190).code, 46);
  EXPECT_EQ(key(190).character, 127);
  // Alt with a pad key gives the code minus 48.
  ws.keys[win::VK_MENU] = 0x80;
  EXPECT_EQ(key(101).character, 53);
  // Enter is always a line feed.
  EXPECT_EQ(keyCharacter(13, 0), 10);
}

TEST_F(KeyboardTest, ControlCharactersSetTheControlKeyByScanState) {
  // Control-shift-6 is character 30: its scan state asks for control.
  EXPECT_EQ(keyCharacter('6', 2 | 1), 30);
  EXPECT_NE(keyState[win::VK_CONTROL] & 0x80, 0);
  for (auto& k : keyState) k = 0;
  // Code 91 names no key of 27..31 (the bracket key is virtual key 219): control stays off.
  EXPECT_EQ(keyCharacter(91, 2), 65535);
  EXPECT_EQ(keyState[win::VK_CONTROL] & 0x80, 0);
  EXPECT_EQ(keyCharacter('C', 2), 3);
}

TEST_F(KeyboardTest, TypedCharactersBridgeDoubleByteInput) {
  // Shift-JIS: 0x82 0xA0 is HIRAGANA LETTER A. A control byte in between is dropped
  // but leaves the lead byte waiting.
  EXPECT_FALSE(typedMessage(0x82, 0, false, 932).event);
  EXPECT_FALSE(typedMessage(0x0D, 0, false, 932).event);
  KeyResult r = typedMessage(0xA0, 0, false, 932);
  ASSERT_TRUE(r.event);
  EXPECT_EQ(r.character, 0x3042);
  r = typedMessage('x', 0, false, 932);
  EXPECT_EQ(r.character, u'x');
  // Alt held on a character that is not a system one is alt-graph.
  ws.keys[win::VK_MENU] = 0x80;
  ws.keys[win::VK_CONTROL] = 0x80;
  r = typedMessage(0xE9, 0x2000, false, 1252);
  EXPECT_EQ(r.modifiers, 32);
  EXPECT_EQ(r.character, 0xE9);
  r = typedMessage('q', 0x2000, true, 1252);
  EXPECT_EQ(r.modifiers, 8 | 2);
}

TEST(CodePageTest, ConversionsKeepTheAllocationAndNullRules) {
  const char16_t text[] = {u'a', 0x3042, u'b'};
  char out[8] = {};
  // A character the page lacks becomes '?'.
  ASSERT_EQ(platform::wideToMultiByte(1252, text, 3, out, sizeof out), 3u);
  EXPECT_STREQ(out, "a?b");
  ASSERT_EQ(platform::wideToMultiByte(932, text, 3, out, sizeof out), 4u);
  EXPECT_EQ(static_cast<uint8_t>(out[1]), 0x82);
  char16_t back[4] = {};
  ASSERT_EQ(platform::multiByteToWide(932, out, 4, back, 4), 3u);
  EXPECT_EQ(back[1], 0x3042);
  EXPECT_EQ(platform::multiByteToWide(932, nullptr, 0, nullptr, 0), 0u);
  EXPECT_EQ(platform::ansiCodePageOfLanguage(0x411), 932);
  EXPECT_EQ(platform::ansiCodePageOfLanguage(0x409), 1252);
  EXPECT_EQ(platform::ansiCodePageOfLanguage(0x804), 936);
}

}  // namespace
}  // namespace vostan::keyboard
