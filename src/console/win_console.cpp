#include "console/win_console.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "audio/audio_manager.h"
#include "bridge/bridge.h"
#include "console/drop_target.h"
#include "console/java_events.h"
#include "console/keyboard.h"
#include "graphics/d3d_graphics.h"
#include "platform/codepage.h"
#include "platform/low_memory.h"
#include "platform/win32_defs.h"

namespace vostan {

using platform::Rect;
using platform::windowSystem;

WinConsole* theConsole = nullptr;

namespace {

constexpr int kUseDefault = static_cast<int>(0x80000000u);

// Placements of the desktop's windows, saved before the first full-screen mode.
// A restore leaves the table as it is, so a second restore repeats the first.
struct SavedPlacement {
  platform::DesktopWindow window;
  platform::WindowPlacement placement;
};
SavedPlacement savedPlacements[100];
int savedPlacementCount = 0;

intptr_t consoleProc(void* context, platform::WindowHandle w, uint32_t msg, uintptr_t wp,
                     intptr_t lp) {
  // The procedure always acts on the console of the moment, as the window
  // classes outlive any one console object.
  (void)context;
  if (theConsole == nullptr) return windowSystem().defWindowProc(w, msg, wp, lp);
  return theConsole->windowProc(w, msg, wp, lp);
}

}  // namespace

WinConsole::WinConsole() {
  graphics = new D3DGraphics();
  for (int32_t i = 0; i < 10; i++) webSlots[i].index = i;
}

WinConsole* initConsole() {
  auto& ws = windowSystem();
  for (const char* name : {"console_win", "console_full"}) {
    if (!ws.registerClass(name, consoleProc, nullptr)) {
      std::printf("RegisterClass[%s] failed\n", name);
      break;
    }
  }
  keyboard::buildKeyTables();
  ws.timeBeginPeriod(1);
  // Java keeps the console's address in an int.
  theConsole = platform::lowNew<WinConsole>();
  return theConsole;
}

bool WinConsole::createWindow(const char* title, int width, int height, int frame,
                              const char* shownTitle) {
  auto& ws = windowSystem();
  const int previousKind = displayKind;
  destroyDisplay(false);
  if (previousKind == 2) {
    ws.changeDisplaySettings(nullptr, 0);
    restorePlacements();
  }
  if (title == nullptr) title = "";
  uint32_t style = frame == 1 ? 0xCE0000u : frame == 2 ? 0xCA0000u : 0xC00000u;
  style |= win::WS_CLIPCHILDREN;
  Rect outer{0, 0, width, height};
  if (!ws.adjustWindowRect(outer, style)) return false;
  const std::string utf8 = shownTitle ? shownTitle : platform::codePageToUtf8(textCodePage, title);
  const WindowHandle w =
      ws.createWindow(0, "console_win", utf8.c_str(), style, kUseDefault, kUseDefault,
                      outer.right - outer.left, outer.bottom - outer.top);
  std::free(consolePropertyName);
  const std::size_t nameSize = std::strlen(title) + 50;
  consolePropertyName = static_cast<char*>(std::malloc(nameSize));
  std::snprintf(consolePropertyName, nameSize, "MIRELO_CONSOLE_%s", title);
  ws.setProp(w, consolePropertyName, 1);

  displayKind = 0;
  window = w;
  windowFrame = frame;
  windowStyle = style;
  cursor = ws.loadArrowCursor();
  deviceContext = ws.getDC(w);
  makeInputContext();
  ws.showWindow(w, win::SW_SHOW);
  updateClientRect();
  ws.setForegroundWindow(w);
  // A new display starts with input methods on, whatever the flag says.
  ws.postMessage(w, win::MSG_INPUT_CONTEXT, 1, 0);
  ws.immAssociateContext(w, inputContext);
  foreground = 1;
  if (audio) audio->setWindow(window);
  return true;
}

void WinConsole::setFullScreenMode() {
  platform::DisplayMode mode;
  mode.fields = win::DM_PELSWIDTH | win::DM_PELSHEIGHT;
  if (displayBits != -1) mode.fields |= win::DM_BITSPERPEL;
  if (displayRefresh != -1) mode.fields |= win::DM_DISPLAYFREQUENCY;
  mode.width = displayWidth;
  mode.height = displayHeight;
  mode.bits = displayBits == -1 ? 0 : displayBits;
  mode.refresh = displayRefresh == -1 ? 0 : displayRefresh;
  windowSystem().changeDisplaySettings(
      &mode, displayBits != -1 ? (win::CDS_FULLSCREEN | win::CDS_RESET) : win::CDS_FULLSCREEN);
}

void WinConsole::createDisplay(int width, int height, int bits, int refresh) {
  auto& ws = windowSystem();
  const int previousKind = displayKind;
  destroyDisplay(false);
  // Going from full screen to full screen keeps the placements saved first.
  if (previousKind != 2) savePlacements();
  displayWidth = width;
  displayHeight = height;
  displayBits = bits;
  displayRefresh = refresh;
  setFullScreenMode();
  const WindowHandle w =
      ws.createWindow(win::WS_EX_TOPMOST, "console_full", "",
                      win::WS_POPUP | win::WS_VISIBLE | win::WS_CLIPCHILDREN, 0, 0, width, height);
  displayKind = 2;
  window = w;
  windowStyle = win::WS_POPUP | win::WS_VISIBLE | win::WS_CLIPCHILDREN;
  cursor = ws.loadArrowCursor();
  deviceContext = ws.getDC(w);
  makeInputContext();
  updateClientRect();
  ws.postMessage(w, win::MSG_INPUT_CONTEXT, 1, 0);
  ws.immAssociateContext(w, inputContext);
  foreground = 1;
  if (audio) audio->setWindow(window);
}

void WinConsole::destroyDisplay(bool resetMode) {
  auto& ws = windowSystem();
  if (window) {
    if (deviceContext && graphics->hasDevice()) graphics->disposeDevice();
    ws.releaseDC(window, deviceContext);
    deviceContext = 0;
    if (consolePropertyName) {
      ws.removeProp(window, consolePropertyName);
      std::free(consolePropertyName);
      consolePropertyName = nullptr;
    }
    destroyInputContext();
    web::windowDestroyed(*this);
    ws.destroyWindow(window);
    window = 0;
    cursor = 0;
  }
  if (resetMode) ws.changeDisplaySettings(nullptr, 0);
  displayKind = -1;
}

void WinConsole::updateClientRect() {
  auto& ws = windowSystem();
  const Rect client = ws.getClientRect(window);
  Rect frame = client;
  ws.adjustWindowRect(frame, windowStyle);
  const Rect outer = ws.getWindowRect(window);
  clientLeft = outer.left - frame.left;
  clientTop = outer.top - frame.top;
  clientWidth = client.right - client.left;
  clientHeight = client.bottom - client.top;
  ws.clipCursor(nullptr);
}

void WinConsole::sizingClamp(uintptr_t edge, Rect& r) const {
  const int width = r.right - r.left;
  const int height = r.bottom - r.top;
  auto clamp = [](int size, int lo, int hi) {
    if (size < lo) return lo - size;
    if (size > hi) return hi - size;
    return 0;
  };
  const int dw = clamp(width, minTrackWidth, maxTrackWidth);
  const int dh = clamp(height, minTrackHeight, maxTrackHeight);
  if (edge == 2 || edge == 5 || edge == 8) r.right += dw;
  if (edge == 1 || edge == 4 || edge == 7) r.left -= dw;
  if (edge == 1 || edge == 2) return;
  if (edge == 3 || edge == 4 || edge == 5) r.top -= dh;
  if (edge == 6 || edge == 7 || edge == 8) r.bottom += dh;
}

intptr_t WinConsole::windowProc(WindowHandle w, uint32_t msg, uintptr_t wp, intptr_t lp) {
  auto& ws = windowSystem();
  switch (msg) {
    case win::WM_MOVE:
      if (w == window) updateClientRect();
      break;
    case win::WM_SIZE:
      if (wp == win::SIZE_RESTORED && minimizedByCall && displayKind == 2) {
        setFullScreenMode();
        setFullScreenMode();
        if (graphics->hasDevice()) graphics->resetDevice();
      }
      if (wp == win::SIZE_RESTORED) minimizedByCall = false;
      resizePending = 1;
      break;
    case win::WM_ACTIVATE:
      if (win::loWord(wp) != 0 && wp < 0x10000) {
        ws.postMessage(w, win::MSG_ACTIVATED, 0, 0);
        foreground = 1;
      } else {
        ws.clipCursor(nullptr);
        ws.postMessage(w, win::MSG_DEACTIVATED, 0, 0);
        foreground = 0;
      }
      break;
    case win::WM_CLOSE:
      // The window stays; Java decides what closing means.
      ws.postMessage(w, win::MSG_CLOSE_REQUESTED, 0, 0);
      return 0;
    case win::WM_SETCURSOR: {
      const bool inClient = win::loWord(static_cast<uintptr_t>(lp)) == 1;
      if (cursorIsOff) {
        if (!cursorHidden || !inClient) {
          ws.showCursor(true);
          cursorIsOff = 0;
        }
      } else if (cursorHidden && inClient) {
        ws.showCursor(false);
        cursorIsOff = 1;
      }
      if (cursor) ws.setCursor(cursor);
      break;
    }
    case win::WM_INPUTLANGCHANGE:
      textCodePage = updateTextCodePage(static_cast<uint16_t>(lp & 0xFFFF));
      break;
    case win::WM_SIZING:
      sizingClamp(wp, *reinterpret_cast<Rect*>(lp));
      return 1;
    default:
      break;
  }
  return ws.defWindowProc(w, msg, wp, lp);
}

void WinConsole::update(JavaEvents& events) {
  auto& ws = windowSystem();
  // The web views have no loop of their own: the game's frame feeds them.
  web::pump(*this);
  const platform::Point p = ws.getCursorPos();
  if (titleDragging) {
    const int dx = p.x - titleDragX, dy = p.y - titleDragY;
    if (dx != 0 || dy != 0) {
      const Rect r = ws.getWindowRect(window);
      ws.setWindowPos(window, r.left + dx, r.top + dy, 0, 0,
                      win::SWP_NOSIZE | win::SWP_NOZORDER | win::SWP_NOSENDCHANGING);
      titleDragX = p.x;
      titleDragY = p.y;
      updateClientRect();
    }
    if (ws.getAsyncKeyState(win::VK_LBUTTON) == 0) titleDragging = 0;
  } else {
    const int x = p.x - clientLeft, y = p.y - clientTop;
    const int inside = window != 0 && ws.windowFromPoint(p) == window && x >= 0 &&
                       x < clientWidth && y >= 0 && y < clientHeight;
    if (inside != mouseInside) {
      // Written over whatever the slot holds: an undelivered click is lost.
      const jobject e = mouseEvent(events, inside ? 506 : 507, 0, 0, 0, 0, false, 0);
      pendingEvent = e ? events.newGlobalRef(e) : nullptr;
    }
    mouseInside = inside;
  }
  ws.getKeyboardState(keyboard::keyState);
  modifiers = keyboard::modifierWord(buttonMask);
}

void WinConsole::minimize(bool restoreMode) {
  auto& ws = windowSystem();
  if (window) {
    if (displayKind == 2) {
      ws.changeDisplaySettings(nullptr, 0);
      restorePlacements();
      if (graphics->hasDevice()) graphics->resetDevice();
    }
    ws.showWindow(window, win::SW_MINIMIZE);
  }
  minimizedByCall = restoreMode;
}

void WinConsole::savePlacements() {
  savedPlacementCount = 0;
  windowSystem().enumWindows(
      [](void*, const platform::DesktopWindowInfo& w) {
        if (!w.visible || w.owned || w.title[0] == '\0') return;
        // The enumeration goes on when the table is full: the first 100 are kept.
        if (std::strcmp(w.className, "Progman") == 0 || savedPlacementCount >= 100) return;
        SavedPlacement& entry = savedPlacements[savedPlacementCount];
        windowSystem().getWindowPlacement(w.handle, entry.placement);
        entry.window = w.handle;
        ++savedPlacementCount;
      },
      nullptr);
}

void WinConsole::restorePlacements() {
  windowSystem().enumWindows(
      [](void*, const platform::DesktopWindowInfo& w) {
        for (int i = 0; i < savedPlacementCount; ++i) {
          if (savedPlacements[i].window == w.handle) {
            windowSystem().setWindowPlacement(w.handle, savedPlacements[i].placement);
            return;
          }
        }
      },
      nullptr);
}

void WinConsole::enableDrop(bool enabled) {
  auto& ws = windowSystem();
  if (enabled == (dropTarget != nullptr)) return;
  if (enabled) {
    auto* target = new SimpleDropTarget(window);
    dropTarget = target;
    ws.registerDragDrop(window, target);
  } else {
    auto* target = static_cast<SimpleDropTarget*>(dropTarget);
    ws.revokeDragDrop(window);
    dropTarget = nullptr;
    delete target;
  }
}

}  // namespace vostan
