#pragma once
// The application's console: the one top-level window, its display state, its
// event stream and the graphics object that draws into it.
#include <jni.h>

#include <cstdint>

#include "console/web_views.h"
#include "platform/window_system.h"

namespace vostan {

class D3DGraphics;
class AudioManager;
class JavaEvents;

class WinConsole {
 public:
  using WindowHandle = platform::WindowHandle;

  WinConsole();

  WindowHandle window = 0;
  int32_t clientLeft = 0, clientTop = 0, clientWidth = 0, clientHeight = 0;
  uintptr_t deviceContext = 0;
  uint32_t windowStyle = 0;
  int32_t displayKind = -1;  // -1 none, 0 window, 2 full screen
  int32_t windowFrame = 0;   // 1 sizable, 2 fixed with system menu, else caption only
  bool screenSaverEnabled = true;
  int32_t displayWidth = 0, displayHeight = 0, displayBits = 0, displayRefresh = 0;
  bool minimizedByCall = false;
  D3DGraphics* graphics = nullptr;
  AudioManager* audio = nullptr;
  WebSlot webSlots[10];
  int32_t selectedWebSlot = 0;
  char* consolePropertyName = nullptr;
  int32_t foreground = 1;
  int32_t titleDragX = 0, titleDragY = 0, titleDragging = 0;
  int32_t resizePending = 0;
  int32_t minTrackWidth = 0, minTrackHeight = 0;
  int32_t maxTrackWidth = 10000, maxTrackHeight = 10000;
  platform::CursorHandle cursor = 0;
  int32_t cursorHidden = 0, cursorIsOff = 0;
  int32_t clickCount = 0, mouseDragged = 0, mouseInside = 0, modifiers = 0, buttonMask = 0;
  jobject pendingEvent = nullptr, deliveredEvent = nullptr;
  uint8_t eventDisabled[4000] = {};
  uintptr_t inputContext = 0;
  int32_t inputMethodsEnabled = 1, inputMethodMode = 0;
  int32_t candidateX = 0, candidateY = 0;
  void* dropTarget = nullptr;

  // Lifecycle
  // `title` is in the text code page and names the window's property; the
  // desktop shows `shownTitle` (UTF-8), or `title` converted when it is null.
  bool createWindow(const char* title, int width, int height, int frame,
                    const char* shownTitle = nullptr);
  void createDisplay(int width, int height, int bits, int refresh);
  void destroyDisplay(bool resetMode);
  void updateClientRect();
  void update(JavaEvents& events);
  void minimize(bool restoreMode);
  intptr_t windowProc(WindowHandle, uint32_t message, uintptr_t wParam, intptr_t lParam);
  void sizingClamp(uintptr_t edge, platform::Rect& rect) const;

  // Event pump
  jobject peekEvent(JavaEvents& events);
  void disableEvents(const int32_t* ids, int count);
  void enableDrop(bool enabled);

  // Input methods
  void makeInputContext();
  void destroyInputContext();
  void inputContextMessage(uintptr_t attach);
  void placeCandidates(uint32_t lists);
  jobject compositionEvent(JavaEvents& events, uint32_t changes);

  // Desktop placements kept across a stay in full screen.
  void savePlacements();
  void restorePlacements();

 private:
  void setFullScreenMode();
  jobject handleMessage(JavaEvents& events, const platform::Message& m);
  jobject mouseEvent(JavaEvents& events, int id, int mods, int x, int y, int count, bool popup,
                     int rotation);
  jobject keyEvent(JavaEvents& events, int id, int mods, int code, uint16_t ch);
  jobject applicationEvent(JavaEvents& events, int id);
  jobject dropEvent(JavaEvents& events, const platform::Message& m);
  jobject pressed(JavaEvents& events, int button, int x, int y);
  jobject released(JavaEvents& events, int button, int x, int y, uintptr_t wParam);
  jobject moved(JavaEvents& events, int x, int y, uintptr_t wParam);
  jobject wheel(JavaEvents& events, int x, int y, int delta);
  bool dispatchFilter(const platform::Message& m) const;
};

extern WinConsole* theConsole;

// n_init: window classes, key tables, timer period, then a new console.
WinConsole* initConsole();
// Click-series statics shared by all displays; tests start from a clean slate.
void resetPumpStatics();

}  // namespace vostan
