#pragma once
// The window system on SDL2. SDL's events become the messages the console
// logic expects: window changes are sent to the window procedure at once, as
// the system sends size and activation; input is queued in arrival order,
// with the messages the library posts itself.
// Input methods: SDL's text-editing events are the composition (its caret, and
// the selected clause as converted text), its text input the result; the
// candidate list goes where SDL_SetTextInputRect puts it. A detached context
// only stops compositions being reported: SDL has no way to turn the input
// method off and keep typed characters, and no reading strings or clauses.
// Drops: SDL tells only of a finished drop, so a drag enters, passes over and
// drops at once. Desktop windows: X11 only (see desktop_windows.h).
#include <SDL.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/composition.h"
#include "platform/desktop_windows.h"
#include "platform/window_system.h"

namespace vostan::platform {

// What the graphics device needs of a window's OpenGL context (3.3 core,
// 24-bit depth with 8-bit stencil, double buffered); call before a window is
// made.
void requestGlContext();

class SdlWindowSystem : public WindowSystem {
 public:
  SdlWindowSystem();
  ~SdlWindowSystem() override;

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
  uintptr_t getDC(WindowHandle w) override { return w; }
  void releaseDC(WindowHandle, uintptr_t) override {}
  bool peekMessage(Message& out) override;
  void postMessage(WindowHandle, uint32_t message, uintptr_t wParam, intptr_t lParam) override;
  void translateMessage(const Message&) override {}
  intptr_t dispatchMessage(const Message&) override;
  intptr_t defWindowProc(WindowHandle, uint32_t message, uintptr_t, intptr_t lParam) override;
  Point getCursorPos() override;
  void setCursorPos(int x, int y) override;
  WindowHandle windowFromPoint(Point) override;
  Point screenToClient(WindowHandle, Point) override;
  void clipCursor(const Rect* rect) override;
  WindowHandle getCapture() override { return capture_; }
  void setCapture(WindowHandle) override;
  void releaseCapture() override;
  CursorHandle loadArrowCursor() override;
  void setCursor(CursorHandle) override;
  int showCursor(bool show) override;
  uint32_t getDoubleClickTime() override { return 500; }
  int getDoubleClickWidth() override { return 4; }
  int getDoubleClickHeight() override { return 4; }
  int16_t getAsyncKeyState(int vk) override;
  void getKeyboardState(uint8_t state[256]) override;
  uint32_t getKeyboardLayout() override;
  // The keyboard's type isn't told on this platform: a Japanese keyboard (7)
  // is taken to go with a Japanese locale, any other is the enhanced one (4).
  int getKeyboardType() override { return (getKeyboardLayout() & 0xFFFF) == 0x411 ? 7 : 4; }
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
  uint32_t timeGetTime() override;
  void timeBeginPeriod(uint32_t) override {}

  // The SDL key behind a virtual key, and the other way round.
  static int virtualKeyOf(const SDL_Keysym& key);

 private:
  struct Class {
    WindowProc proc;
    void* context;
  };
  struct Window {
    SDL_Window* sdl = nullptr;
    std::string className;
    uint32_t style = 0;
    bool active = false;
    std::map<std::string, intptr_t> props;
  };

  static constexpr int kQueueSize = 1024;
  Message queue_[kQueueSize];
  int head_ = 0, count_ = 0;

  std::map<std::string, Class> classes_;
  std::map<WindowHandle, Window> windows_;
  WindowHandle capture_ = 0;
  uint8_t keys_[256] = {};
  uint32_t buttons_ = 0;  // MK_ bits of the mouse buttons held
  Point cursor_{0, 0};
  bool globalMouse_ = false;
  int cursorCount_ = 0;
  SDL_Cursor* arrow_ = nullptr;
  struct Context {
    Composition composition;
    bool composing = false;
  };
  std::map<InputContext, Context> contexts_;
  InputContext nextContext_ = 1;
  std::map<WindowHandle, InputContext> attached_;
  std::map<WindowHandle, DropTarget*> dropTargets_;
  std::vector<std::string> dropFiles_;
  bool dropText_ = false;
  std::unique_ptr<DesktopWindows> desktop_;
  bool fullScreenMode_ = false;
  SDL_DisplayMode mode_{};

  bool ensureVideo();
  void enqueue(const Message& m);
  intptr_t send(WindowHandle, uint32_t msg, uintptr_t wp, intptr_t lp);
  void translate(const SDL_Event& e);
  void deliverDrop(WindowHandle window);
  void typeCharacters(WindowHandle window, const char16_t* text, std::size_t count);
  void editing(WindowHandle window, const char* utf8, int start, int length);
  void endComposition(WindowHandle window, Context& context, const std::u16string* result);
  Context* attachedContext(WindowHandle window);
  WindowHandle windowOf(InputContext context) const;
  uint32_t dropKeyState() const;
  uintptr_t mouseKeys() const;
  Window* find(WindowHandle h);
  DesktopWindows& desktop();
};

}  // namespace vostan::platform
