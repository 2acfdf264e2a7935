// The pump: one window message at a time becomes at most one Java event.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bridge/bridge.h"
#include "console/drop_target.h"
#include "console/java_events.h"
#include "console/keyboard.h"
#include "console/win_console.h"
#include "graphics/d3d_graphics.h"
#include "platform/win32_defs.h"

namespace vostan {

using platform::Message;
using platform::windowSystem;

namespace {

// Click series, shared by all displays for the life of the process.
bool clickMetricsFetched = false;
uint32_t doubleClickTime = 0;
int doubleClickWidth = 0, doubleClickHeight = 0;
uint32_t lastPressTime = 0;
int lastPressX = 0, lastPressY = 0, lastPressButton = 0;
int lastMouseX = 0, lastMouseY = 0;

constexpr uintptr_t kButtonKeys = win::MK_LBUTTON | win::MK_RBUTTON | win::MK_MBUTTON;

int buttonBit(int button) {
  return button == 1 ? 64 : button == 2 ? 256 : 128;
}

// Dropped paths are read into a buffer of 260 bytes: longer ones come out cut,
// at a whole character so that the name stays text.
void cutPath(std::string& path) {
  constexpr std::size_t kMax = 259;
  if (path.size() <= kMax) return;
  std::size_t end = kMax;
  while (end > 0 && (static_cast<uint8_t>(path[end]) & 0xC0) == 0x80) --end;
  path.resize(end);
}

}  // namespace

void resetPumpStatics() {
  clickMetricsFetched = false;
  doubleClickTime = lastPressTime = 0;
  doubleClickWidth = doubleClickHeight = 0;
  lastPressX = lastPressY = lastPressButton = 0;
  lastMouseX = lastMouseY = 0;
  keyboard::resetTypedState();
}

jobject WinConsole::mouseEvent(JavaEvents& events, int id, int mods, int x, int y, int count,
                               bool popup, int rotation) {
  if (eventDisabled[id]) return nullptr;
  return events.mouseEvent(id, mods, x, y, count, popup, rotation);
}

jobject WinConsole::keyEvent(JavaEvents& events, int id, int mods, int code, uint16_t ch) {
  if (eventDisabled[id]) return nullptr;
  return events.keyEvent(id, mods, code, ch);
}

jobject WinConsole::applicationEvent(JavaEvents& events, int id) {
  if (eventDisabled[id]) return nullptr;
  return events.applicationEvent(id);
}

void WinConsole::disableEvents(const int32_t* ids, int count) {
  // Ids are not range-checked on the way in; the table has room for 0..3999.
  for (int i = 0; i < count; ++i) {
    if (ids[i] >= 0 && ids[i] < 4000) eventDisabled[ids[i]] = 255;
  }
}

jobject WinConsole::peekEvent(JavaEvents& events) {
  auto& ws = windowSystem();
  if (resizePending) {
    resizePending = 0;
    updateClientRect();
    std::printf("window resized ....\n");
    if (ws.isWindowVisible(window) && windowFrame == 1 && graphics->hasDevice() &&
        clientWidth > 0 && clientHeight > 0)
      graphics->resetDevice();
    // The queue waits for the next call.
    return applicationEvent(events, 2104);
  }
  for (;;) {
    if (deliveredEvent) {
      events.deleteGlobalRef(deliveredEvent);
      deliveredEvent = nullptr;
    }
    if (pendingEvent) {
      deliveredEvent = pendingEvent;
      pendingEvent = nullptr;
      return deliveredEvent;
    }
    Message m;
    if (!ws.peekMessage(m)) return nullptr;
    if (m.hwnd != window) {
      ws.translateMessage(m);
      ws.dispatchMessage(m);
      continue;
    }
    if (dispatchFilter(m)) {
      ws.translateMessage(m);
      ws.dispatchMessage(m);
    }
    if (jobject e = handleMessage(events, m)) return e;
  }
}

bool WinConsole::dispatchFilter(const Message& m) const {
  const uint32_t msg = m.message;
  if (msg >= win::MSG_PRIVATE_FIRST && msg <= win::MSG_PRIVATE_LAST) return false;
  if (msg == win::WM_SYSKEYDOWN &&
      (m.wParam == win::VK_MENU || m.wParam == win::VK_PAUSE || m.wParam == win::VK_F10))
    return false;
  if ((msg == win::WM_IME_STARTCOMPOSITION || msg == win::WM_IME_ENDCOMPOSITION ||
       msg == win::WM_IME_COMPOSITION) &&
      inputMethodMode == 2)
    return false;
  if (msg == win::WM_CLOSE) return false;
  if (displayKind != 0 || windowFrame != 0 ||
      (msg != win::WM_NCLBUTTONDOWN && msg != win::WM_NCRBUTTONDOWN && msg != win::WM_RBUTTONUP))
    return true;
  // A caption-only window: only the sizing border's hit codes reach the system
  // (the test is on wParam for the right button's release too).
  return m.wParam >= 10 && m.wParam <= 17;
}

jobject WinConsole::handleMessage(JavaEvents& events, const Message& m) {
  const int x = win::loWordSigned(m.lParam);
  const int y = win::hiWordSigned(m.lParam);
  auto& ws = windowSystem();
  switch (m.message) {
    case win::WM_PAINT:
      return applicationEvent(events, 2100);
    case win::WM_NCLBUTTONDOWN:
      if (displayKind == 0 && windowFrame == 0 && !(m.wParam >= 10 && m.wParam <= 17)) {
        titleDragX = x;
        titleDragY = y;
        titleDragging = 1;
        ws.setActiveWindow(window);
      }
      return nullptr;
    case win::WM_KEYDOWN:
    case win::WM_SYSKEYDOWN:
    case win::WM_KEYUP:
    case win::WM_SYSKEYUP: {
      const int id = (m.message == win::WM_KEYDOWN || m.message == win::WM_SYSKEYDOWN) ? 401 : 402;
      const keyboard::KeyResult k = keyboard::keyMessage(static_cast<int>(m.wParam));
      return k.event ? keyEvent(events, id, k.modifiers, k.code, k.character) : nullptr;
    }
    case win::WM_CHAR:
    case win::WM_SYSCHAR: {
      const keyboard::KeyResult k =
          keyboard::typedMessage(static_cast<uint8_t>(m.wParam), win::hiWord(m.lParam),
                                 m.message == win::WM_SYSCHAR, textCodePage);
      return k.event ? keyEvent(events, 400, k.modifiers, 0, k.character) : nullptr;
    }
    case win::WM_IME_COMPOSITION:
      return compositionEvent(events, static_cast<uint32_t>(m.lParam) & 0xFFFF);
    case win::WM_IME_NOTIFY:
      if (m.wParam == win::IMN_OPENCANDIDATE) placeCandidates(static_cast<uint32_t>(m.lParam));
      return nullptr;
    case win::WM_MOUSEMOVE:
      return moved(events, x, y, m.wParam);
    case win::WM_LBUTTONDOWN:
    case win::WM_LBUTTONDBLCLK:
      return pressed(events, 1, x, y);
    case win::WM_LBUTTONUP:
      titleDragging = 0;
      return released(events, 1, x, y, m.wParam);
    case win::WM_RBUTTONDOWN:
    case win::WM_RBUTTONDBLCLK:
      return pressed(events, 3, x, y);
    case win::WM_RBUTTONUP:
      return released(events, 3, x, y, m.wParam);
    case win::WM_MBUTTONDOWN:
    case win::WM_MBUTTONDBLCLK:
      return pressed(events, 2, x, y);
    case win::WM_MBUTTONUP:
      return released(events, 2, x, y, m.wParam);
    case win::WM_MOUSEWHEEL:
      return wheel(events, x, y, win::hiWordSigned(static_cast<intptr_t>(m.wParam)));
    case win::MSG_WHEEL_A:
    case win::MSG_WHEEL_B:
      return wheel(events, x, y, static_cast<int>(static_cast<intptr_t>(m.wParam)));
    case win::MSG_DRAG_ENTERED:
    case win::MSG_DRAGGED_OVER:
    case win::MSG_DRAG_LEFT:
    case win::MSG_DROPPED:
      return dropEvent(events, m);
    case win::MSG_CURSOR_HIDDEN:
      cursorHidden = m.wParam == 0;
      return nullptr;
    case win::MSG_INPUT_CONTEXT:
      inputContextMessage(m.wParam);
      return nullptr;
    case win::MSG_CLOSE_REQUESTED:
      return applicationEvent(events, 2101);
    case win::MSG_ACTIVATED:
      return applicationEvent(events, 2102);
    case win::MSG_DEACTIVATED:
      return applicationEvent(events, 2103);
    case win::MSG_SET_CURSOR:
      cursor = static_cast<platform::CursorHandle>(m.lParam);
      ws.setCursor(cursor);
      return nullptr;
    case win::MSG_RESIZED:
      return applicationEvent(events, 2104);
    default:
      return nullptr;
  }
}

jobject WinConsole::dropEvent(JavaEvents& events, const Message& m) {
  auto* target = static_cast<SimpleDropTarget*>(dropTarget);
  const int keys = static_cast<int>(m.wParam);
  const int x = win::loWordSigned(m.lParam), y = win::hiWordSigned(m.lParam);
  switch (m.message) {
    case win::MSG_DRAG_ENTERED:
      // The file list becomes Java objects here, once per drag.
      if (!target || !target->hasMedium) return nullptr;
      if (target->files) events.deleteGlobalRef(target->files);
      for (std::string& path : target->medium) cutPath(path);
      target->files = events.newFileArray(target->medium);
      target->medium.clear();
      target->hasMedium = false;
      return eventDisabled[3000] ? nullptr
                                 : events.dropTargetEvent(3000, keys, x, y, target->files);
    case win::MSG_DRAGGED_OVER:
      if (!target || !target->files) return nullptr;
      return eventDisabled[3002] ? nullptr
                                 : events.dropTargetEvent(3002, keys, x, y, target->files);
    default: {
      if (!target || !target->files) return nullptr;
      const int id = m.message == win::MSG_DRAG_LEFT ? 3001 : 3003;
      const jobject e =
          eventDisabled[id] ? nullptr : events.dropTargetEvent(id, keys, x, y, target->files);
      // The event holds the array now; the target lets go of it.
      events.deleteGlobalRef(target->files);
      target->files = nullptr;
      return e;
    }
  }
}

jobject WinConsole::pressed(JavaEvents& events, int button, int x, int y) {
  auto& ws = windowSystem();
  if (!clickMetricsFetched) {
    clickMetricsFetched = true;
    doubleClickTime = ws.getDoubleClickTime();
    doubleClickWidth = ws.getDoubleClickWidth();
    doubleClickHeight = ws.getDoubleClickHeight();
  }
  const uint32_t now = ws.timeGetTime();
  if (button == lastPressButton && now - lastPressTime <= doubleClickTime &&
      std::abs(x - lastPressX) <= doubleClickWidth &&
      std::abs(y - lastPressY) <= doubleClickHeight) {
    // The series keeps its first press's position but the time of the last.
    ++clickCount;
  } else {
    clickCount = 1;
    lastPressButton = button;
    lastPressX = x;
    lastPressY = y;
  }
  lastPressTime = now;
  mouseDragged = 0;
  if (ws.getCapture() != window) ws.setCapture(window);
  buttonMask |= buttonBit(button);
  return mouseEvent(events, 501, keyboard::modifierWord(button), x, y, clickCount, false, 0);
}

jobject WinConsole::released(JavaEvents& events, int button, int x, int y, uintptr_t wParam) {
  auto& ws = windowSystem();
  const int mods = keyboard::modifierWord(button);
  if (mouseDragged == 0) {
    const jobject click = mouseEvent(events, 500, mods, x, y, clickCount, false, 0);
    pendingEvent = click ? events.newGlobalRef(click) : nullptr;
  }
  mouseDragged = 0;
  if (ws.getCapture() == window && (wParam & kButtonKeys) == 0) ws.releaseCapture();
  buttonMask &= ~buttonBit(button);
  return mouseEvent(events, 502, mods, x, y, clickCount, button == 3, 0);
}

jobject WinConsole::moved(JavaEvents& events, int x, int y, uintptr_t wParam) {
  if (x == lastMouseX && y == lastMouseY) return nullptr;
  lastMouseX = x;
  lastMouseY = y;
  int id = 503;
  if (wParam & kButtonKeys) {
    mouseDragged = 1;
    id = 504;
  }
  return mouseEvent(events, id, modifiers, x, y, 0, false, 0);
}

jobject WinConsole::wheel(JavaEvents& events, int x, int y, int delta) {
  const platform::Point p = windowSystem().screenToClient(window, {x, y});
  return mouseEvent(events, 505, modifiers, p.x, p.y, 0, false, delta > 0 ? 1 : -1);
}

}  // namespace vostan
