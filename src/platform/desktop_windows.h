#pragma once
// The other applications' top-level windows, listed and put back in place
// around a change of screen mode. SDL knows only its own windows, so the SDL
// backend hands these operations to this service. Backends: X11 (Xlib), and
// one for every other display that lists nothing.
#include <memory>

#include "platform/window_system.h"

namespace vostan::platform {

class DesktopWindows {
 public:
  virtual ~DesktopWindows() = default;
  virtual void enumWindows(EnumWindowsProc proc, void* context) = 0;
  virtual bool getWindowPlacement(DesktopWindow, WindowPlacement& out) = 0;
  virtual void setWindowPlacement(DesktopWindow, const WindowPlacement&) = 0;
};

// The X server's windows through a connection of our own; null when no X
// display can be opened.
std::unique_ptr<DesktopWindows> openX11Desktop();
// Lists no window and so keeps no placement; says so once in the log, naming `where`.
std::unique_ptr<DesktopWindows> noDesktopWindows(const char* where);

}  // namespace vostan::platform
