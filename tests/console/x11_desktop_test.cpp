// The console's desktop placements on a real X server: another client's
// window that a stay in full screen moved comes back to its place.
// gtest first: Xlib's macros (None, Bool) would break its headers.
#include <gtest/gtest.h>
// clang-format off
#include <X11/Xlib.h>
#include <X11/Xutil.h>
// clang-format on

#include "console/win_console.h"
#include "platform/window_system.h"

namespace vostan {
namespace {

TEST(X11DesktopTest, AnotherClientsWindowComesBackAfterFullScreen) {
  Display* other = XOpenDisplay(nullptr);  // a second X client
  ASSERT_NE(other, nullptr) << "needs an X display";
  auto make = [other](const char* title, Window transientFor = 0) {
    const Window w =
        XCreateSimpleWindow(other, DefaultRootWindow(other), 50, 60, 200, 100, 0, 0, 0);
    if (title) XStoreName(other, w, title);
    if (transientFor) XSetTransientForHint(other, w, transientFor);
    XMapWindow(other, w);
    return w;
  };
  const Window editor = make("editor"), untitled = make(nullptr), dialog = make("find", editor);
  XSync(other, False);

  platform::setWindowSystem(nullptr);  // the real one: SDL on X11
  WinConsole* console = initConsole();
  ASSERT_TRUE(console->createWindow("desktop", 320, 200, 1));
  platform::DisplayMode mode;  // the one mode the screen lists
  ASSERT_TRUE(platform::windowSystem().enumDisplaySettings(0, mode));
  console->createDisplay(mode.width, mode.height, mode.bits, -1);
  ASSERT_EQ(console->displayKind, 2);
  // What a mode change does to the desktop.
  for (Window w : {editor, untitled, dialog}) XMoveResizeWindow(other, w, 300, 310, 150, 90);
  XSync(other, False);

  ASSERT_TRUE(console->createWindow("desktop", 320, 200, 1));
  XSync(other, False);
  // Untitled and transient windows are not the desktop's to keep.
  for (Window w : {editor, untitled, dialog}) {
    XWindowAttributes a{};
    XGetWindowAttributes(other, w, &a);
    const bool kept = w == editor;
    EXPECT_EQ(a.x, kept ? 50 : 300) << w;
    EXPECT_EQ(a.y, kept ? 60 : 310) << w;
    EXPECT_EQ(a.width, kept ? 200 : 150) << w;
    EXPECT_EQ(a.height, kept ? 100 : 90) << w;
  }
  console->destroyDisplay(true);
  XCloseDisplay(other);
}

}  // namespace
}  // namespace vostan
