#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "console/keyboard.h"
#include "console/win_console.h"
#include "console_fixture.h"
#include "fake_events.h"
#include "platform/fake/fake_window_system.h"
#include "platform/win32_defs.h"

namespace vostan {
namespace {

using platform::FakeWindowSystem;
using platform::Rect;
using test::EventRecord;
using test::FakeEvents;
namespace w = win;

class ConsoleTest : public test::ConsoleFixture {
 protected:
  // A caption-only window whose client area starts at (101, 121) on the screen.
  void openWindow(int frame = 0) {
    ASSERT_TRUE(console->createWindow("Test", 640, 480, frame));
    drain();
  }
  const EventRecord* next() {
    jobject e = console->peekEvent(events);
    return e ? &events.of(e) : nullptr;
  }
  int nextId() {
    const EventRecord* r = next();
    return r ? r->id : 0;
  }
  std::vector<int> drain() {
    std::vector<int> ids;
    while (const EventRecord* r = next()) ids.push_back(r->id);
    return ids;
  }
  void mouse(uint32_t msg, int x, int y, uintptr_t keys = 0) {
    ws.push(console->window, msg, keys, w::makeLParam(x, y));
  }
  void click(int x, int y, uint32_t down = w::WM_LBUTTONDOWN, uint32_t up = w::WM_LBUTTONUP) {
    mouse(down, x, y, w::MK_LBUTTON);
    mouse(up, x, y);
  }
  bool dispatched(uint32_t msg) const {
    char line[32];
    std::snprintf(line, sizeof line, "dispatch %04x", msg);
    return ws.called(line);
  }
};

TEST_F(ConsoleTest, NewDisplayReportsResizeFirstThenActivation) {
  ASSERT_TRUE(console->createWindow("Game", 640, 480, 1));
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(nextId(), 2104);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "window resized ....\n");
  EXPECT_EQ(nextId(), 2102);
  EXPECT_EQ(nextId(), 0);
  EXPECT_EQ(console->clientWidth, 640);
  EXPECT_EQ(console->clientHeight, 480);
  // Sizable frame: 4-pixel border and the caption lie before the client origin.
  const Rect outer = ws.getWindowRect(console->window);
  EXPECT_EQ(console->clientLeft, outer.left + 4);
  EXPECT_EQ(console->clientTop, outer.top + 24);
  EXPECT_EQ(ws.windows[console->window].props.count("MIRELO_CONSOLE_Game"), 1u);
}

TEST_F(ConsoleTest, ResizePathReturnsNullWhenDisabledAndLeavesTheQueue) {
  const int32_t ids[] = {2104};
  console->disableEvents(ids, 1);
  ASSERT_TRUE(console->createWindow(nullptr, 320, 200, 0));
  EXPECT_EQ(ws.windows[console->window].props.count("MIRELO_CONSOLE_"), 1u);
  EXPECT_EQ(nextId(), 0);     // the resize, disabled
  EXPECT_EQ(nextId(), 2102);  // the queue is still there
}

TEST_F(ConsoleTest, ClickSeriesCountsByButtonTimeAndFirstPressPosition) {
  openWindow();
  click(10, 10);
  EXPECT_EQ(drain(), (std::vector<int>{501, 502, 500}));
  EXPECT_EQ(events.made.back().clickCount, 1);

  ws.now += 300;
  click(14, 13);  // within 4 of the first press
  drain();
  EXPECT_EQ(events.made.back().clickCount, 2);

  ws.now += 300;
  click(13, 14);  // outside 4 of the second press, inside 4 of the first
  drain();
  EXPECT_EQ(events.made.back().clickCount, 3);

  ws.now += 300;
  click(13, 14, w::WM_RBUTTONDOWN, w::WM_RBUTTONUP);
  const std::vector<int> ids = drain();
  EXPECT_EQ(ids, (std::vector<int>{501, 502, 500}));
  EXPECT_EQ(events.made.back().clickCount, 1);
  // The right button's release is the popup trigger; the click is not.
  EXPECT_TRUE(events.made.back().popup);
  EXPECT_FALSE(events.made[events.made.size() - 2].popup);

  ws.now += 501;  // too late for the series
  click(13, 14, w::WM_RBUTTONDOWN, w::WM_RBUTTONUP);
  drain();
  EXPECT_EQ(events.made.back().clickCount, 1);
}

TEST_F(ConsoleTest, PressDragReleaseGivesNoClick) {
  openWindow();
  mouse(w::WM_LBUTTONDOWN, 5, 5, w::MK_LBUTTON);
  mouse(w::WM_MOUSEMOVE, 9, 5, w::MK_LBUTTON);
  mouse(w::WM_LBUTTONUP, 9, 5);
  EXPECT_EQ(drain(), (std::vector<int>{501, 504, 502}));
  EXPECT_EQ(ws.capture, 0u);
  // The next plain move is a move again, and a move to the same place is nothing.
  mouse(w::WM_MOUSEMOVE, 10, 5);
  mouse(w::WM_MOUSEMOVE, 10, 5);
  EXPECT_EQ(drain(), (std::vector<int>{503}));
}

TEST_F(ConsoleTest, DisabledEventsAreSkippedWithinOneCall) {
  openWindow();
  const int32_t ids[] = {503, 500};
  console->disableEvents(ids, 2);
  mouse(w::WM_MOUSEMOVE, 1, 1);
  mouse(w::WM_MOUSEMOVE, 2, 2);
  click(3, 3);
  EXPECT_EQ(nextId(), 501);
  EXPECT_EQ(nextId(), 502);
  EXPECT_EQ(nextId(), 0);  // no click: event 500 is off and the slot stays empty
  for (const EventRecord& r : events.made) EXPECT_NE(r.id, 503);
}

TEST_F(ConsoleTest, EnterWrittenOverAnUndeliveredClickWins) {
  openWindow();
  click(20, 20);
  EXPECT_EQ(nextId(), 501);
  EXPECT_EQ(nextId(), 502);  // the click now waits in the slot
  ws.cursor = {console->clientLeft + 20, console->clientTop + 20};
  console->update(events);
  EXPECT_EQ(nextId(), 506);
  EXPECT_EQ(nextId(), 0);
  // Leaving gives the exit event.
  ws.cursor = {console->clientLeft - 5, console->clientTop + 20};
  console->update(events);
  EXPECT_EQ(nextId(), 507);
  EXPECT_EQ(nextId(), 0);
  // The delivered references were released at the next call; the lost click was not.
  EXPECT_EQ(events.deleted.size(), 2u);
  EXPECT_EQ(events.globals.size(), 1u);
}

TEST_F(ConsoleTest, QueuedCloseIsHeldBackAndSentCloseBecomesAnEvent) {
  openWindow();
  ws.push(console->window, w::WM_CLOSE);
  EXPECT_EQ(nextId(), 0);
  EXPECT_FALSE(dispatched(w::WM_CLOSE));
  ws.send(console->window, w::WM_CLOSE);
  EXPECT_EQ(nextId(), 2101);
  EXPECT_NE(console->window, 0u);
  EXPECT_FALSE(ws.called("destroyWindow"));
}

TEST_F(ConsoleTest, CaptionOnlyWindowDragsItselfFrameByFrame) {
  openWindow(0);
  const Rect before = ws.getWindowRect(console->window);
  ws.push(console->window, w::WM_NCLBUTTONDOWN, 2, w::makeLParam(300, 110));
  EXPECT_EQ(nextId(), 0);
  EXPECT_FALSE(dispatched(w::WM_NCLBUTTONDOWN));  // no system move loop
  ASSERT_EQ(console->titleDragging, 1);
  ws.keys[w::VK_LBUTTON] = 0x80;
  ws.cursor = {330, 150};
  console->update(events);
  Rect after = ws.getWindowRect(console->window);
  EXPECT_EQ(after.left - before.left, 30);
  EXPECT_EQ(after.top - before.top, 40);
  EXPECT_EQ(console->clientLeft, after.left + 1);
  ws.keys[w::VK_LBUTTON] = 0;
  console->update(events);
  EXPECT_EQ(console->titleDragging, 0);
  // The sizing border's hit codes go to the system instead.
  ws.push(console->window, w::WM_NCLBUTTONDOWN, 10, w::makeLParam(300, 110));
  EXPECT_EQ(nextId(), 0);
  EXPECT_TRUE(dispatched(w::WM_NCLBUTTONDOWN));
  EXPECT_EQ(console->titleDragging, 0);
}

TEST_F(ConsoleTest, RightPressOnFixedCaptionIsNeitherDispatchedNorAnEvent) {
  openWindow(0);
  ws.push(console->window, w::WM_NCRBUTTONDOWN, 2, w::makeLParam(110, 105));
  EXPECT_EQ(nextId(), 0);
  EXPECT_FALSE(dispatched(w::WM_NCRBUTTONDOWN));
  // A sizable window lets it through.
  ASSERT_TRUE(console->createWindow("S", 100, 100, 1));
  drain();
  ws.push(console->window, w::WM_NCRBUTTONDOWN, 2, w::makeLParam(110, 105));
  EXPECT_EQ(nextId(), 0);
  EXPECT_TRUE(dispatched(w::WM_NCRBUTTONDOWN));
}

TEST_F(ConsoleTest, SystemKeysAreEventsWithoutReachingTheWindow) {
  openWindow();
  ws.push(console->window, w::WM_SYSKEYDOWN, w::VK_F10, 0);
  const EventRecord* r = next();
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->id, 401);
  EXPECT_EQ(r->keyCode, 121);
  EXPECT_FALSE(dispatched(w::WM_SYSKEYDOWN));
  // Private messages never reach the window either.
  ws.push(console->window, w::MSG_CURSOR_HIDDEN, 0, 0);
  EXPECT_EQ(nextId(), 0);
  EXPECT_EQ(console->cursorHidden, 1);
  EXPECT_FALSE(dispatched(w::MSG_CURSOR_HIDDEN));
}

TEST_F(ConsoleTest, WheelIsOneStepInClientCoordinates) {
  openWindow();
  const int sx = console->clientLeft + 7, sy = console->clientTop + 9;
  ws.push(console->window, w::WM_MOUSEWHEEL, uintptr_t(0xFF88) << 16, w::makeLParam(sx, sy));
  ws.push(console->window, w::WM_MOUSEWHEEL, 0, w::makeLParam(sx, sy));
  ws.push(console->window, w::MSG_WHEEL_A, 240, w::makeLParam(sx, sy));
  const EventRecord a = *next(), b = *next(), c = *next();
  EXPECT_EQ(a.id, 505);
  EXPECT_EQ(a.rotation, -1);
  EXPECT_EQ(a.x, 7);
  EXPECT_EQ(a.y, 9);
  EXPECT_EQ(b.rotation, -1);  // a delta of 0 still counts as a step down
  EXPECT_EQ(c.rotation, 1);
}

TEST_F(ConsoleTest, SizingClampHoldsTheTrackLimits) {
  struct Case {
    uintptr_t edge;
    Rect in, out;
  };
  const Case cases[] = {
      {2, {0, 0, 12000, 50}, {0, 0, 10000, 50}},          // right edge, too wide
      {1, {100, 0, 10200, 50}, {200, 0, 10200, 50}},      // left edge moves in
      {2, {0, 0, 50, 20000}, {0, 0, 50, 20000}},          // side edges leave the height
      {6, {0, 0, 50, 10500}, {0, 0, 50, 10000}},          // bottom edge
      {4, {0, -20000, 10001, 0}, {1, -10000, 10001, 0}},  // top-left: both
      {8, {0, 0, 50, 60}, {0, 0, 50, 60}},                // inside the limits
  };
  for (const Case& c : cases) {
    Rect r = c.in;
    EXPECT_EQ(console->windowProc(0, w::WM_SIZING, c.edge, reinterpret_cast<intptr_t>(&r)), 1);
    EXPECT_EQ(r.left, c.out.left) << "edge " << c.edge;
    EXPECT_EQ(r.top, c.out.top) << "edge " << c.edge;
    EXPECT_EQ(r.right, c.out.right) << "edge " << c.edge;
    EXPECT_EQ(r.bottom, c.out.bottom) << "edge " << c.edge;
  }
}

TEST_F(ConsoleTest, DisplayStatesChangeTheScreenModeOnlyWhereTheyMust) {
  openWindow();
  EXPECT_EQ(console->displayKind, 0);
  ws.calls.clear();

  console->createDisplay(800, 600, 32, -1);
  EXPECT_EQ(console->displayKind, 2);
  EXPECT_TRUE(
      ws.called("changeDisplaySettings 800x600 bits 32 refresh 0 fields 1c0000 flags 80000004"));
  EXPECT_TRUE(ws.called("createWindow console_full \"\" 00000008 92000000 800x600"));
  EXPECT_FALSE(ws.called("changeDisplaySettings default"));

  ws.calls.clear();
  console->createDisplay(1024, 768, -1, 60);
  EXPECT_TRUE(ws.called("changeDisplaySettings 1024x768 bits 0 refresh 60 fields 580000 flags 4"));

  ws.calls.clear();
  ASSERT_TRUE(console->createWindow("Back", 320, 240, 2));
  EXPECT_EQ(console->displayKind, 0);
  EXPECT_TRUE(ws.called("changeDisplaySettings default"));
  EXPECT_TRUE(ws.called("createWindow console_win \"Back\" 00000000 02ca0000"));

  ws.calls.clear();
  console->destroyDisplay(true);
  EXPECT_EQ(console->displayKind, -1);
  EXPECT_EQ(console->window, 0u);
  EXPECT_TRUE(ws.called("removeProp"));
  EXPECT_TRUE(ws.called("changeDisplaySettings default"));
  EXPECT_TRUE(ws.windows.empty());
}

TEST_F(ConsoleTest, FailedFrameAdjustmentMakesNoWindow) {
  ws.failAdjust = true;
  EXPECT_FALSE(console->createWindow("X", 10, 10, 1));
  EXPECT_FALSE(ws.called("createWindow"));
  EXPECT_EQ(console->displayKind, -1);
}

TEST_F(ConsoleTest, MinimizeByCallRestoresTheModeOnlyWhenAsked) {
  console->createDisplay(640, 480, -1, -1);
  drain();
  console->minimize(false);
  EXPECT_FALSE(console->minimizedByCall);
  ws.calls.clear();
  ws.send(console->window, w::WM_SIZE, w::SIZE_RESTORED, w::makeLParam(640, 480));
  EXPECT_FALSE(ws.called("changeDisplaySettings"));

  console->minimize(true);
  EXPECT_TRUE(console->minimizedByCall);
  ws.calls.clear();
  ws.send(console->window, w::WM_SIZE, w::SIZE_RESTORED, w::makeLParam(640, 480));
  EXPECT_EQ(std::count_if(ws.calls.begin(), ws.calls.end(),
                          [](const std::string& c) {
                            return c.rfind("changeDisplaySettings 640x480", 0) == 0;
                          }),
            2);
  EXPECT_FALSE(console->minimizedByCall);
}

TEST_F(ConsoleTest, ActivationFollowsTheWindow) {
  openWindow();
  ws.send(console->window, w::WM_ACTIVATE, 0, 0);
  EXPECT_EQ(console->foreground, 0);
  EXPECT_EQ(nextId(), 2103);
  // Active but minimised counts as inactive.
  ws.send(console->window, w::WM_ACTIVATE, 0x10001, 0);
  EXPECT_EQ(nextId(), 2103);
  ws.send(console->window, w::WM_ACTIVATE, 2, 0);
  EXPECT_EQ(console->foreground, 1);
  EXPECT_EQ(nextId(), 2102);
}

TEST_F(ConsoleTest, UpdateCarriesTheButtonMaskIntoTheModifiers) {
  openWindow();
  mouse(w::WM_LBUTTONDOWN, 5, 5, w::MK_LBUTTON);
  drain();
  ws.keys[w::VK_CONTROL] = 0x80;
  console->update(events);
  EXPECT_EQ(console->modifiers, 64 | 2);
  // The left button's own event reads as shift too.
  const auto press = std::find_if(events.made.begin(), events.made.end(),
                                  [](const EventRecord& r) { return r.id == 501; });
  ASSERT_NE(press, events.made.end());
  EXPECT_EQ(press->modifiers, 64 | 1);
}

}  // namespace
}  // namespace vostan
