#pragma once
// A scriptable window system for tests: windows are records, the queue is a
// list the test fills, time and cursor are set by hand, and every call that
// changes something is recorded as a line of text.
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/composition.h"
#include "platform/window_system.h"

namespace vostan::platform {

class FakeWindowSystem : public WindowSystem {
 public:
  struct Window {
    std::string className, title;
    uint32_t style = 0, exStyle = 0;
    Rect outer;  // screen coordinates
    bool visible = false;
    std::map<std::string, intptr_t> props;
  };

  // Script
  std::deque<Message> queue;
  std::vector<std::string> calls;
  uint32_t now = 1000;
  Point cursor{0, 0};
  uint8_t keys[256] = {};
  uint32_t doubleClickTime = 500;
  int doubleClickWidth = 4, doubleClickHeight = 4;
  uint32_t keyboardLayout = 0x409;
  int keyboardType = 4;
  bool failAdjust = false;
  WindowHandle capture = 0;
  int cursorShowCount = 0;
  std::map<WindowHandle, Window> windows;
  std::vector<DisplayMode> modes;
  // The desktop's mode, and the present one; an empty `modes` list takes any mode.
  DisplayMode desktopMode{0, 1920, 1080, 32, 60};
  DisplayMode currentMode = desktopMode;
  struct Desktop {
    std::string title, className;
    bool visible = true, owned = false;
    WindowPlacement placement;
  };
  std::map<DesktopWindow, Desktop> desktop;
  std::map<WindowHandle, DropTarget*> dropTargets;
  // Input contexts by handle, and which one each window has attached.
  std::map<InputContext, Composition> contexts;
  std::map<WindowHandle, InputContext> attached;
  // Reads of a composition fail: 1 out of memory, 2 any other error.
  int compositionReadFailure = 0;

  void push(WindowHandle w, uint32_t msg, uintptr_t wp = 0, intptr_t lp = 0) {
    queue.push_back({w, msg, wp, lp});
  }
  bool called(const std::string& prefix) const;
  // Sends a message straight to the window procedure, as the system does for
  // size, activation and close.
  intptr_t send(WindowHandle, uint32_t msg, uintptr_t wp = 0, intptr_t lp = 0);

  bool registerClass(const char* name, WindowProc proc, void* context) override;
  WindowHandle createWindow(uint32_t exStyle, const char* className, const char* title,
                            uint32_t style, int x, int y, int width, int height) override;
  void destroyWindow(WindowHandle) override;
  void showWindow(WindowHandle, int command) override;
  bool isWindowVisible(WindowHandle) override;
  void setForegroundWindow(WindowHandle) override;
  void setActiveWindow(WindowHandle) override;
  bool adjustWindowRect(Rect& rect, uint32_t style) override;
  Rect getClientRect(WindowHandle) override;
  Rect getWindowRect(WindowHandle) override;
  void setWindowPos(WindowHandle, int x, int y, int width, int height, uint32_t flags) override;
  void setProp(WindowHandle, const char* name, intptr_t value) override;
  void removeProp(WindowHandle, const char* name) override;
  uintptr_t getDC(WindowHandle w) override { return w ? 0x1000 + w : 0; }
  void releaseDC(WindowHandle, uintptr_t) override {}
  bool peekMessage(Message& out) override;
  void postMessage(WindowHandle, uint32_t message, uintptr_t wParam, intptr_t lParam) override;
  void translateMessage(const Message&) override {}
  intptr_t dispatchMessage(const Message&) override;
  intptr_t defWindowProc(WindowHandle, uint32_t, uintptr_t, intptr_t) override { return 0; }
  Point getCursorPos() override { return cursor; }
  void setCursorPos(int x, int y) override;
  WindowHandle windowFromPoint(Point) override;
  Point screenToClient(WindowHandle, Point) override;
  void clipCursor(const Rect* rect) override;
  WindowHandle getCapture() override { return capture; }
  void setCapture(WindowHandle w) override;
  void releaseCapture() override;
  CursorHandle loadArrowCursor() override { return 32512; }
  void setCursor(CursorHandle) override;
  int showCursor(bool show) override;
  uint32_t getDoubleClickTime() override;
  int getDoubleClickWidth() override { return doubleClickWidth; }
  int getDoubleClickHeight() override { return doubleClickHeight; }
  int16_t getAsyncKeyState(int vk) override;
  void getKeyboardState(uint8_t state[256]) override;
  uint32_t getKeyboardLayout() override { return keyboardLayout; }
  int getKeyboardType() override { return keyboardType; }
  uint32_t mapVirtualKey(uint32_t code) override;
  int toAscii(uint32_t vk, uint32_t scan, const uint8_t state[256], uint16_t* out) override;
  int16_t vkKeyScan(char ch) override;
  int32_t changeDisplaySettings(const DisplayMode* mode, uint32_t flags) override;
  bool enumDisplaySettings(int index, DisplayMode& out) override;
  void enumWindows(EnumWindowsProc proc, void* context) override;
  bool getWindowPlacement(DesktopWindow, WindowPlacement& out) override;
  void setWindowPlacement(DesktopWindow, const WindowPlacement&) override;
  InputContext immCreateContext() override;
  void immDestroyContext(InputContext) override;
  void immAssociateContext(WindowHandle, InputContext) override;
  void immCancelComposition(InputContext) override;
  int32_t immGetCompositionString(InputContext, uint32_t kind, void* buffer,
                                  uint32_t size) override;
  void immSetCandidateWindow(InputContext, uint32_t index, Point client) override;
  bool registerDragDrop(WindowHandle, DropTarget* target) override;
  void revokeDragDrop(WindowHandle) override;
  uint32_t timeGetTime() override { return now; }
  void timeBeginPeriod(uint32_t ms) override;

 private:
  struct Class {
    WindowProc proc;
    void* context;
  };
  std::map<std::string, Class> classes_;
  WindowHandle next_ = 0x100;
  InputContext nextContext_ = 0x500;
  Rect clientOf(const Window&) const;
  void record(const char* fmt, ...);
};

}  // namespace vostan::platform
