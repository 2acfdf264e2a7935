// Display modes' effect on the desktop, and files dropped on the window.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "console/drop_target.h"
#include "console/win_console.h"
#include "console_fixture.h"
#include "fake_events.h"
#include "platform/fake/fake_window_system.h"
#include "platform/win32_defs.h"

namespace vostan {
namespace {

using platform::FakeWindowSystem;
using test::FakeEvents;
namespace w = win;

class DesktopTest : public test::ConsoleFixture {
 protected:
  void drain() {
    while (console->peekEvent(events)) {
    }
  }
  const test::EventRecord* next() {
    jobject e = console->peekEvent(events);
    return e ? &events.of(e) : nullptr;
  }
  void addDesktopWindow(platform::DesktopWindow h, const char* title, const char* cls = "App",
                        bool visible = true, bool owned = false) {
    FakeWindowSystem::Desktop d;
    d.title = title;
    d.className = cls;
    d.visible = visible;
    d.owned = owned;
    d.placement.normalPosition = {10, 10, 110, 110};
    ws.desktop[h] = d;
  }
  int placedAt(platform::DesktopWindow h) { return ws.desktop[h].placement.normalPosition.left; }
};

TEST_F(DesktopTest, FullScreenKeepsTheFirstHundredQualifyingWindowsInPlace) {
  for (int i = 1; i <= 101; ++i) addDesktopWindow(1000 + i, "editor");
  addDesktopWindow(10, "", "App");                    // no title
  addDesktopWindow(11, "hidden", "App", false);       // not visible
  addDesktopWindow(12, "dialog", "App", true, true);  // owned
  addDesktopWindow(13, "Program Manager", "Progman");
  ASSERT_TRUE(console->createWindow("game", 320, 200, 0));

  console->createDisplay(800, 600, 32, -1);
  // The mode change throws every window somewhere else.
  for (auto& [h, d] : ws.desktop) d.placement.normalPosition.left = 500;
  console->createDisplay(640, 480, 32, -1);  // full screen to full screen: no new save
  ASSERT_TRUE(console->createWindow("game", 320, 200, 0));

  EXPECT_EQ(placedAt(1001), 10);
  EXPECT_EQ(placedAt(1100), 10);
  EXPECT_EQ(placedAt(1101), 500);  // the 101st did not fit the table
  for (platform::DesktopWindow h : {10, 11, 12, 13}) EXPECT_EQ(placedAt(h), 500) << h;

  // Disposing from full screen gives back the mode but moves no window.
  console->createDisplay(640, 480, 32, -1);
  for (auto& [h, d] : ws.desktop) d.placement.normalPosition.left = 700;
  ws.calls.clear();
  console->destroyDisplay(true);
  EXPECT_FALSE(ws.called("setWindowPlacement"));
  EXPECT_TRUE(ws.called("changeDisplaySettings default"));
}

TEST_F(DesktopTest, PlacementsAreSavedBeforeTheModeAndRestoredBeforeTheNewWindow) {
  ws.modes = {{0, 640, 480, 32, 60}, {0, 800, 600, 16, 75}, {0, 800, 600, 32, 60}};
  addDesktopWindow(1, "mail");
  addDesktopWindow(2, "editor");
  ASSERT_TRUE(console->createWindow("game", 320, 200, 0));
  ws.calls.clear();
  console->createDisplay(800, 600, 32, 60);
  auto at = [this](const std::string& prefix) {
    const auto it = std::find_if(ws.calls.begin(), ws.calls.end(),
                                 [&](const std::string& c) { return c.rfind(prefix, 0) == 0; });
    return it - ws.calls.begin();
  };
  EXPECT_LT(at("getWindowPlacement 1"), at("getWindowPlacement 2"));
  EXPECT_LT(at("getWindowPlacement 2"), at("changeDisplaySettings 800x600"));
  EXPECT_EQ(ws.currentMode.refresh, 60);

  // A mode the screen doesn't list leaves it alone; the console still goes full screen.
  for (const auto& [bits, refresh] : {std::pair{32, 75}, std::pair{24, -1}}) {
    console->createDisplay(800, 600, bits, refresh);
    EXPECT_EQ(console->displayKind, 2);
    EXPECT_EQ(ws.currentMode.refresh, 60) << bits;
  }
  console->createDisplay(640, 480, -1, -1);  // bits and refresh left open: listed
  EXPECT_EQ(ws.currentMode.width, 640);

  for (auto& [h, d] : ws.desktop) d.placement.normalPosition.left = 500;
  ws.calls.clear();
  ASSERT_TRUE(console->createWindow("game", 320, 200, 0));
  EXPECT_LT(at("changeDisplaySettings default"), at("setWindowPlacement 1"));
  EXPECT_LT(at("setWindowPlacement 1"), at("setWindowPlacement 2"));
  EXPECT_LT(at("setWindowPlacement 2"), at("createWindow console_win"));
  EXPECT_EQ(placedAt(1), 10);
  EXPECT_EQ(ws.currentMode.width, 1920);
}

TEST_F(DesktopTest, DroppedFilesArriveAsOneArrayFromEnterToDrop) {
  ASSERT_TRUE(console->createWindow("game", 320, 200, 1));
  drain();
  console->enableDrop(true);
  console->enableDrop(true);
  ASSERT_EQ(ws.dropTargets.size(), 1u);
  platform::DropTarget* target = ws.dropTargets.begin()->second;
  const char* files[] = {"/tmp/a.swf", "/tmp/b.ogg", "/tmp/c.png"};
  const platform::Point over{console->clientLeft + 30, console->clientTop + 40};

  EXPECT_EQ(target->dragEnter(files, 3, 0, over), w::DROPEFFECT_COPY);
  EXPECT_EQ(target->dragOver(w::MK_CONTROL, over), w::DROPEFFECT_MOVE);
  EXPECT_EQ(target->drop(w::MK_CONTROL | w::MK_SHIFT, over), w::DROPEFFECT_LINK);

  const test::EventRecord entered = *next();
  EXPECT_EQ(entered.id, 3000);
  EXPECT_EQ(entered.x, 30);
  EXPECT_EQ(entered.y, 40);
  ASSERT_NE(entered.files, nullptr);
  EXPECT_EQ(events.filesOf(entered.files), (std::vector<std::string>{files, files + 3}));
  const test::EventRecord over1 = *next(), dropped = *next();
  EXPECT_EQ(over1.id, 3002);
  EXPECT_EQ(over1.modifiers, static_cast<int>(w::MK_CONTROL));
  EXPECT_EQ(dropped.id, 3003);
  EXPECT_EQ(dropped.files, entered.files);
  EXPECT_EQ(next(), nullptr);
  EXPECT_EQ(events.globals.count(reinterpret_cast<uintptr_t>(entered.files)), 0u);  // let go
}

TEST_F(DesktopTest, TextDragsAreRefusedAndLeavingReleasesTheFiles) {
  ASSERT_TRUE(console->createWindow("game", 320, 200, 1));
  drain();
  console->enableDrop(true);
  platform::DropTarget* target = ws.dropTargets.begin()->second;
  EXPECT_EQ(target->dragEnter(nullptr, 0, 0, {0, 0}), w::DROPEFFECT_NONE);
  EXPECT_EQ(target->dragOver(0, {0, 0}), w::DROPEFFECT_NONE);
  target->dragLeave();
  EXPECT_EQ(next(), nullptr);

  const char* one[] = {"/tmp/x"};
  target->dragEnter(one, 1, 0, {0, 0});
  target->dragLeave();
  EXPECT_EQ(next()->id, 3000);
  const test::EventRecord left = *next();
  EXPECT_EQ(left.id, 3001);
  EXPECT_TRUE(events.globals.empty());

  // A path longer than 259 bytes comes out cut, never inside a character.
  const std::string stem = "/tmp/" + std::string(253, 'a');
  const std::string longPath = stem + "\xc3\xa9" + "tail", fits = stem + "b.swf";
  const char* long2[] = {longPath.c_str(), fits.c_str()};
  target->dragEnter(long2, 2, 0, {0, 0});
  const std::vector<std::string>& cut = events.filesOf(next()->files);
  EXPECT_EQ(cut[0], stem);
  EXPECT_EQ(cut[1], fits.substr(0, 259));
  target->dragLeave();
  next();

  console->enableDrop(false);
  EXPECT_TRUE(ws.dropTargets.empty());
  EXPECT_EQ(console->dropTarget, nullptr);
}

}  // namespace
}  // namespace vostan
