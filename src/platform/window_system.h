#pragma once
// The window system as the console sees it: one message queue polled on the
// calling thread, windows with a procedure, cursor, keyboard state and the
// display mode. Backends: SDL2 (real) and a scriptable double for tests.
#include <cstdint>

namespace vostan::platform {

using WindowHandle = uint32_t;  // 0 = no window
using CursorHandle = uintptr_t;

struct Rect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};
struct Point {
  int32_t x = 0, y = 0;
};
struct Message {
  WindowHandle hwnd = 0;
  uint32_t message = 0;
  uintptr_t wParam = 0;
  intptr_t lParam = 0;
};

// The window procedure. `context` is what the class was registered with.
using WindowProc = intptr_t (*)(void* context, WindowHandle, uint32_t, uintptr_t, intptr_t);

struct DisplayMode {
  uint32_t fields = 0;  // DM_* bits
  int32_t width = 0, height = 0, bits = 0, refresh = 0;
};

// Another application's top-level window, as the desktop lists it.
using DesktopWindow = uintptr_t;
struct DesktopWindowInfo {
  DesktopWindow handle = 0;
  const char* title = "";
  const char* className = "";
  bool visible = false;
  bool owned = false;  // has an owner window
};
using InputContext = uintptr_t;  // 0 = none

using EnumWindowsProc = void (*)(void* context, const DesktopWindowInfo&);
struct WindowPlacement {
  int32_t showCommand = 0;
  Point minPosition, maxPosition;
  Rect normalPosition;
};

// Receives files dragged onto a window. The effect results are DROPEFFECT_* values.
class DropTarget {
 public:
  // `files` is null when the drag carries no file list.
  virtual uint32_t dragEnter(const char* const* files, int count, uint32_t keyState,
                             Point screen) = 0;
  virtual uint32_t dragOver(uint32_t keyState, Point screen) = 0;
  virtual void dragLeave() = 0;
  virtual uint32_t drop(uint32_t keyState, Point screen) = 0;

 protected:
  ~DropTarget() = default;
};

class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  // Windows
  virtual bool registerClass(const char* name, WindowProc proc, void* context) = 0;
  // Sends WM_CREATE, WM_SIZE and WM_MOVE to the class's procedure before it
  // returns. The title is UTF-8, as desktops show it.
  virtual WindowHandle createWindow(uint32_t exStyle, const char* className, const char* title,
                                    uint32_t style, int x, int y, int width, int height) = 0;
  virtual void destroyWindow(WindowHandle) = 0;
  virtual void showWindow(WindowHandle, int command) = 0;
  virtual bool isWindowVisible(WindowHandle) = 0;
  virtual void setForegroundWindow(WindowHandle) = 0;
  virtual void setActiveWindow(WindowHandle) = 0;
  virtual bool adjustWindowRect(Rect& rect, uint32_t style) = 0;
  virtual Rect getClientRect(WindowHandle) = 0;
  virtual Rect getWindowRect(WindowHandle) = 0;
  virtual void setWindowPos(WindowHandle, int x, int y, int width, int height, uint32_t flags) = 0;
  virtual void setProp(WindowHandle, const char* name, intptr_t value) = 0;
  virtual void removeProp(WindowHandle, const char* name) = 0;
  virtual uintptr_t getDC(WindowHandle) = 0;
  virtual void releaseDC(WindowHandle, uintptr_t dc) = 0;

  // Message queue of the calling thread
  virtual bool peekMessage(Message& out) = 0;  // removes the message
  virtual void postMessage(WindowHandle, uint32_t message, uintptr_t wParam, intptr_t lParam) = 0;
  virtual void translateMessage(const Message&) = 0;
  virtual intptr_t dispatchMessage(const Message&) = 0;
  virtual intptr_t defWindowProc(WindowHandle, uint32_t message, uintptr_t wParam,
                                 intptr_t lParam) = 0;

  // Cursor and mouse
  virtual Point getCursorPos() = 0;
  virtual void setCursorPos(int x, int y) = 0;
  virtual WindowHandle windowFromPoint(Point) = 0;
  virtual Point screenToClient(WindowHandle, Point) = 0;
  virtual void clipCursor(const Rect* rect) = 0;  // null releases
  virtual WindowHandle getCapture() = 0;
  virtual void setCapture(WindowHandle) = 0;
  virtual void releaseCapture() = 0;
  virtual CursorHandle loadArrowCursor() = 0;
  virtual void setCursor(CursorHandle) = 0;
  virtual int showCursor(bool show) = 0;
  virtual uint32_t getDoubleClickTime() = 0;
  virtual int getDoubleClickWidth() = 0;
  virtual int getDoubleClickHeight() = 0;

  // Keyboard
  virtual int16_t getAsyncKeyState(int virtualKey) = 0;
  virtual void getKeyboardState(uint8_t state[256]) = 0;
  virtual uint32_t getKeyboardLayout() = 0;  // language id in the low 16 bits
  virtual int getKeyboardType() = 0;
  virtual uint32_t mapVirtualKey(uint32_t code) = 0;  // virtual key to scan code
  // The character the key makes in the given key state; 0 when none.
  virtual int toAscii(uint32_t virtualKey, uint32_t scanCode, const uint8_t state[256],
                      uint16_t* out) = 0;
  virtual int16_t vkKeyScan(char ch) = 0;

  // Display mode; null restores the desktop's. 0 on success.
  virtual int32_t changeDisplaySettings(const DisplayMode* mode, uint32_t flags) = 0;
  // Mode `index` of the screen, or the present one for index -1; false past the last.
  virtual bool enumDisplaySettings(int index, DisplayMode& out) = 0;

  // The desktop's top-level windows, and their placements.
  virtual void enumWindows(EnumWindowsProc proc, void* context) = 0;
  virtual bool getWindowPlacement(DesktopWindow, WindowPlacement& out) = 0;
  virtual void setWindowPlacement(DesktopWindow, const WindowPlacement&) = 0;

  // Input method contexts: compositions of text the keys can't type directly.
  // A context attached to a window reports its composition with WM_IME_*
  // messages; the composition is read back from the context by GCS_* kind.
  virtual InputContext immCreateContext() = 0;
  virtual void immDestroyContext(InputContext) = 0;
  virtual void immAssociateContext(WindowHandle, InputContext) = 0;  // 0 detaches
  // Drops the composition in progress, as the user's cancel key would.
  virtual void immCancelComposition(InputContext) = 0;
  // Copies the data of one GCS_* kind into `buffer` (strings are UTF-16
  // units, attributes one byte per unit, clauses 32-bit offsets) and returns
  // its size in bytes; with a null buffer only the size. GCS_CURSORPOS returns
  // the caret in units. Negative when the context has no such data.
  virtual int32_t immGetCompositionString(InputContext, uint32_t kind, void* buffer,
                                          uint32_t size) = 0;
  // Where candidate list `index` shows, in the window's client coordinates.
  virtual void immSetCandidateWindow(InputContext, uint32_t index, Point client) = 0;

  // Files dropped on a window go to its target.
  virtual bool registerDragDrop(WindowHandle, DropTarget* target) = 0;
  virtual void revokeDragDrop(WindowHandle) = 0;

  // Time: a monotonic millisecond clock.
  virtual uint32_t timeGetTime() = 0;
  virtual void timeBeginPeriod(uint32_t ms) = 0;
};

// Whether the screen lists the mode: width and height, and bits and refresh
// where the mode's fields name them.
bool displayModeListed(WindowSystem& system, const DisplayMode& mode);
constexpr int32_t kDisplayChangeBadMode = -2;

// The backend the library uses; the SDL one unless a test installed another.
WindowSystem& windowSystem();
void setWindowSystem(WindowSystem* system);  // null: back to the default

}  // namespace vostan::platform
