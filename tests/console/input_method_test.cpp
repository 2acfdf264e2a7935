// Input methods on the scripted window system: the context's life, the
// candidate list, and compositions as Java events.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console/win_console.h"
#include "console_fixture.h"
#include "fake_events.h"
#include "platform/win32_defs.h"

namespace vostan {
namespace {

namespace w = win;
using test::EventRecord;

class InputMethodTest : public test::ConsoleFixture {
 protected:
  void SetUp() override {
    ConsoleFixture::SetUp();
    ASSERT_TRUE(console->createWindow("ime", 320, 200, 1));
    while (console->peekEvent(events)) {
    }
  }
  platform::Composition& context() { return ws.contexts.at(console->inputContext); }
  void compose(const std::u16string& text, std::vector<uint8_t> attributes, int cursor,
               const std::u16string& result = u"") {
    context().text = text;
    context().attributes = std::move(attributes);
    context().cursor = cursor;
    context().result = result;
  }
  const EventRecord* composition(uint32_t changes) {
    ws.push(console->window, w::WM_IME_COMPOSITION, 0, changes);
    jobject e = console->peekEvent(events);
    return e ? &events.of(e) : nullptr;
  }
};

constexpr uint32_t kComposition = w::GCS_COMPSTR | w::GCS_COMPATTR | w::GCS_CURSORPOS;
constexpr uint32_t kResult = w::GCS_RESULTSTR | w::GCS_RESULTCLAUSE;

TEST_F(InputMethodTest, ContextFollowsTheDisplayAndTheSwitch) {
  const platform::InputContext first = console->inputContext;
  ASSERT_NE(first, 0u);
  EXPECT_EQ(ws.attached[console->window], first);

  // Switching off goes through the pump: the composition is cancelled, then detached.
  console->inputMethodsEnabled = 0;
  ws.calls.clear();
  ws.postMessage(console->window, w::MSG_INPUT_CONTEXT, 0, 0);
  EXPECT_EQ(console->peekEvent(events), nullptr);
  ASSERT_GE(ws.calls.size(), 3u);
  EXPECT_EQ(ws.calls[1].rfind("immCancelComposition", 0), 0u) << ws.calls[1];
  EXPECT_EQ(ws.calls[2].rfind("immAssociateContext", 0), 0u) << ws.calls[2];
  EXPECT_EQ(ws.attached[console->window], 0u);

  // A new display starts with input methods on, whatever the flag says; the old context goes.
  ASSERT_TRUE(console->createWindow("again", 320, 200, 1));
  EXPECT_EQ(ws.contexts.count(first), 0u);
  EXPECT_EQ(ws.attached[console->window], console->inputContext);
  console->destroyDisplay(true);
  EXPECT_TRUE(ws.contexts.empty());
  EXPECT_EQ(console->inputContext, 0u);
}

TEST_F(InputMethodTest, CandidateListsOpenBelowJavasPoint) {
  console->candidateX = 40;
  console->candidateY = 50;
  ws.calls.clear();
  ws.push(console->window, w::WM_IME_NOTIFY, w::IMN_OPENCANDIDATE, 0x80000005);
  ws.push(console->window, w::WM_IME_NOTIFY, 4, 1);  // another notification: nothing
  EXPECT_EQ(console->peekEvent(events), nullptr);
  std::vector<std::string> placed;
  for (const std::string& c : ws.calls)
    if (c.rfind("immSetCandidateWindow", 0) == 0) placed.push_back(c.substr(c.find(' ', 22) + 1));
  EXPECT_EQ(placed, (std::vector<std::string>{"0 43 82", "2 43 82", "31 43 82"}));
}

// (Composing, committing and cancelling alone are checked through SDL in the JVM.)
TEST_F(InputMethodTest, CommitsWithANewCompositionJoinTheirTexts) {
  console->inputMethodMode = 2;
  // Committed text first, converted; the caret counts in the composition alone and
  // stops at its end.
  compose(u"xy", {0, 1}, 7, u"\u6f22\u5b57");
  const EventRecord mixed = *composition(kResult | kComposition);
  EXPECT_EQ(mixed.text, u"\u6f22\u5b57xy");
  EXPECT_EQ(mixed.attributes, (std::vector<int32_t>{2, 2, 0, 1}));
  EXPECT_EQ(mixed.committedCount, 2);
  EXPECT_EQ(mixed.caret, 2);
  // Attributes of another length than the text make no runs: only the committed run
  // stays, and a composition alone has none.
  compose(u"xy", {1}, 0, u"ab");
  EXPECT_EQ(composition(kResult | kComposition)->attributes, (std::vector<int32_t>{2, 2, 0, 0}));
  const EventRecord noRuns = *composition(kComposition);
  EXPECT_TRUE(noRuns.hasText);
  EXPECT_FALSE(noRuns.hasAttributes);
}

TEST_F(InputMethodTest, FailedReadsLeaveAnExceptionAndNoEvent) {
  console->inputMethodMode = 2;
  compose(u"a", {0}, 1);
  ws.compositionReadFailure = 1;
  EXPECT_EQ(composition(kComposition), nullptr);
  EXPECT_EQ(events.outOfMemoryThrown, 1);
  ws.compositionReadFailure = 2;
  EXPECT_EQ(composition(kComposition), nullptr);
  EXPECT_EQ(events.internalThrown, 1);
  ws.compositionReadFailure = 0;
  EXPECT_EQ(composition(kComposition)->text, u"a");
}

}  // namespace
}  // namespace vostan
