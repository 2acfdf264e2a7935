// Desktop windows on X11, through Xlib on a connection of the library's own.
// Implements: listing the top-level windows in stacking order (the client
// window under a window manager's frame, with its title, class, visibility
// and whether it is transient for another), reading and restoring the frame's
// position, the client's size and whether it is iconified.
// Leaves out: maximised state (the window manager keeps it across a mode
// change by itself), and windows on screens other than the default one.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/desktop_windows.h"

namespace vostan::platform {

namespace {

constexpr int kShowNormal = 1;
constexpr int kShowMinimized = 2;

// Windows come and go while we look at them: an error on one of them must
// not end the process, which is what Xlib's default handler does.
int errorsTrapped = 0;
int trapError(Display*, XErrorEvent*) {
  ++errorsTrapped;
  return 0;
}

class ErrorTrap {
 public:
  explicit ErrorTrap(Display* d) : display_(d), previous_(XSetErrorHandler(trapError)) {
    errorsTrapped = 0;
  }
  ~ErrorTrap() {
    XSync(display_, False);
    XSetErrorHandler(previous_);
  }
  bool failed() {
    XSync(display_, False);
    return errorsTrapped != 0;
  }

 private:
  Display* display_;
  int (*previous_)(Display*, XErrorEvent*);
};

class X11Desktop final : public DesktopWindows {
 public:
  explicit X11Desktop(Display* d)
      : display_(d),
        wmState_(XInternAtom(d, "WM_STATE", False)),
        netWmName_(XInternAtom(d, "_NET_WM_NAME", False)),
        utf8_(XInternAtom(d, "UTF8_STRING", False)) {}
  ~X11Desktop() override { XCloseDisplay(display_); }

  void enumWindows(EnumWindowsProc proc, void* context) override {
    std::vector<Window> tops;
    {
      ErrorTrap trap(display_);
      Window root = 0, parent = 0, *children = nullptr;
      unsigned count = 0;
      if (XQueryTree(display_, DefaultRootWindow(display_), &root, &parent, &children, &count)) {
        tops.assign(children, children + count);
        if (children) XFree(children);
      }
    }
    // Topmost first, as the system lists them.
    for (auto it = tops.rbegin(); it != tops.rend(); ++it) {
      ErrorTrap trap(display_);
      XWindowAttributes a;
      if (!XGetWindowAttributes(display_, *it, &a) || trap.failed()) continue;
      const Window client = clientOf(*it);
      const std::string title = titleOf(client);
      std::string className;
      XClassHint hint{};
      if (XGetClassHint(display_, client, &hint)) {
        if (hint.res_class) className = hint.res_class;
        XFree(hint.res_name);
        XFree(hint.res_class);
      }
      Window owner = 0;
      DesktopWindowInfo info;
      info.handle = client;
      info.title = title.c_str();
      info.className = className.c_str();
      info.visible = a.map_state == IsViewable || iconic(client);
      info.owned = XGetTransientForHint(display_, client, &owner) && owner != 0;
      if (trap.failed()) continue;
      proc(context, info);
    }
  }

  bool getWindowPlacement(DesktopWindow handle, WindowPlacement& out) override {
    ErrorTrap trap(display_);
    const Window client = static_cast<Window>(handle);
    XWindowAttributes frame, own;
    if (!XGetWindowAttributes(display_, frameOf(client), &frame) ||
        !XGetWindowAttributes(display_, client, &own) || trap.failed())
      return false;
    out = WindowPlacement{};
    out.showCommand = iconic(client) ? kShowMinimized : kShowNormal;
    out.normalPosition = {frame.x, frame.y, frame.x + own.width, frame.y + own.height};
    return true;
  }

  void setWindowPlacement(DesktopWindow handle, const WindowPlacement& p) override {
    ErrorTrap trap(display_);
    const Window client = static_cast<Window>(handle);
    const Rect& r = p.normalPosition;
    // A window manager takes the requested place as its frame's, as saved.
    XMoveResizeWindow(display_, client, r.left, r.top, static_cast<unsigned>(r.right - r.left),
                      static_cast<unsigned>(r.bottom - r.top));
    const bool wasIconic = iconic(client);
    if (p.showCommand == kShowMinimized && !wasIconic)
      XIconifyWindow(display_, client, DefaultScreen(display_));
    else if (p.showCommand != kShowMinimized && wasIconic)
      XMapWindow(display_, client);
    XFlush(display_);
  }

 private:
  bool hasWmState(Window w) {
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    const bool found = XGetWindowProperty(display_, w, wmState_, 0, 2, False, AnyPropertyType,
                                          &type, &format, &items, &after, &data) == Success &&
                       type != None;
    if (data) XFree(data);
    return found;
  }

  bool iconic(Window w) {
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    bool result = false;
    if (XGetWindowProperty(display_, w, wmState_, 0, 2, False, wmState_, &type, &format, &items,
                           &after, &data) == Success &&
        data && format == 32 && items > 0)
      result = reinterpret_cast<long*>(data)[0] == IconicState;
    if (data) XFree(data);
    return result;
  }

  // Under a window manager the top-level window is its frame; the client is
  // the window below it that carries WM_STATE. Without one they are the same.
  Window clientOf(Window top) {
    const Window found = findClient(top, 2);
    return found ? found : top;
  }

  Window findClient(Window w, int depth) {
    if (hasWmState(w)) return w;
    if (depth == 0) return 0;
    Window found = 0;
    Window root = 0, parent = 0, *children = nullptr;
    unsigned count = 0;
    if (XQueryTree(display_, w, &root, &parent, &children, &count)) {
      for (unsigned i = 0; i < count && !found; ++i) found = findClient(children[i], depth - 1);
      if (children) XFree(children);
    }
    return found;
  }

  Window frameOf(Window client) {
    Window w = client;
    for (int depth = 0; depth < 8; ++depth) {
      Window root = 0, parent = 0, *children = nullptr;
      unsigned count = 0;
      if (!XQueryTree(display_, w, &root, &parent, &children, &count)) return w;
      if (children) XFree(children);
      if (parent == root || parent == 0) return w;
      w = parent;
    }
    return w;
  }

  std::string titleOf(Window w) {
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    std::string title;
    if (XGetWindowProperty(display_, w, netWmName_, 0, 500, False, utf8_, &type, &format, &items,
                           &after, &data) == Success &&
        data && format == 8)
      title.assign(reinterpret_cast<char*>(data), items);
    if (data) XFree(data);
    if (title.empty()) {
      char* name = nullptr;
      if (XFetchName(display_, w, &name) && name) title = name;
      if (name) XFree(name);
    }
    return title;
  }

  Display* display_;
  Atom wmState_, netWmName_, utf8_;
};

}  // namespace

std::unique_ptr<DesktopWindows> openX11Desktop() {
  Display* d = XOpenDisplay(nullptr);
  if (!d) return nullptr;
  return std::make_unique<X11Desktop>(d);
}

}  // namespace vostan::platform
