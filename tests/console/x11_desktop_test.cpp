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

// A second X client with windows of its own.
class Neighbour {
 public:
  Neighbour() : display_(XOpenDisplay(nullptr)) {}
  ~Neighbour() {
    if (display_) XCloseDisplay(display_);
  }
  bool open() const { return display_ != nullptr; }

  Window make(const char* title, int x, int y, int w, int h, Window transientFor = 0) {
    const Window win =
        XCreateSimpleWindow(display_, DefaultRootWindow(display_), x, y, static_cast<unsigned>(w),
                            static_cast<unsigned>(h), 0, 0, 0);
    if (title) XStoreName(display_, win, title);
    if (transientFor) XSetTransientForHint(display_, win, transientFor);
    XMapWindow(display_, win);
    XSync(display_, False);
    return win;
  }
  void place(Window w, int x, int y, int width, int height) {
    XMoveResizeWindow(display_, w, x, y, static_cast<unsigned>(width),
                      static_cast<unsigned>(height));
    XSync(display_, False);
  }
  XWindowAttributes where(Window w) {
    XSync(display_, False);
    XWindowAttributes a{};
    XGetWindowAttributes(display_, w, &a);
    return a;
  }

 private:
  Display* display_;
};

TEST(X11DesktopTest, AnotherClientsWindowComesBackAfterFullScreen) {
  Neighbour other;
  ASSERT_TRUE(other.open()) << "needs an X display";
  const Window editor = other.make("editor", 50, 60, 200, 100);
  const Window untitled = other.make(nullptr, 70, 80, 120, 90);
  const Window dialog = other.make("find", 90, 100, 100, 50, editor);

  platform::setWindowSystem(nullptr);  // the real one: SDL on X11
  WinConsole* console = initConsole();
  ASSERT_TRUE(console->createWindow("desktop", 320, 200, 1));
  platform::DisplayMode mode;  // the one mode the screen lists
  ASSERT_TRUE(platform::windowSystem().enumDisplaySettings(0, mode));
  console->createDisplay(mode.width, mode.height, mode.bits, -1);
  ASSERT_EQ(console->displayKind, 2);
  // What a mode change does to the desktop.
  for (Window w : {editor, untitled, dialog}) other.place(w, 300, 310, 150, 90);

  ASSERT_TRUE(console->createWindow("desktop", 320, 200, 1));
  const XWindowAttributes back = other.where(editor);
  EXPECT_EQ(back.x, 50);
  EXPECT_EQ(back.y, 60);
  EXPECT_EQ(back.width, 200);
  EXPECT_EQ(back.height, 100);
  // Untitled and transient windows are not the desktop's to keep.
  for (Window w : {untitled, dialog}) {
    EXPECT_EQ(other.where(w).x, 300) << w;
    EXPECT_EQ(other.where(w).width, 150) << w;
  }
  console->destroyDisplay(true);
}

}  // namespace
}  // namespace vostan
