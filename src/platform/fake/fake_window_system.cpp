#include "platform/fake/fake_window_system.h"

#include <cstdarg>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "platform/us_keyboard.h"
#include "platform/win32_defs.h"

namespace vostan::platform {

void FakeWindowSystem::record(const char* fmt, ...) {
  char line[256];
  va_list args;
  va_start(args, fmt);
  std::vsnprintf(line, sizeof line, fmt, args);
  va_end(args);
  calls.emplace_back(line);
}

bool FakeWindowSystem::called(const std::string& prefix) const {
  for (const auto& c : calls)
    if (c.compare(0, prefix.size(), prefix) == 0) return true;
  return false;
}

intptr_t FakeWindowSystem::send(WindowHandle w, uint32_t msg, uintptr_t wp, intptr_t lp) {
  auto it = windows.find(w);
  if (it == windows.end()) return 0;
  auto cls = classes_.find(it->second.className);
  if (cls == classes_.end()) return 0;
  return cls->second.proc(cls->second.context, w, msg, wp, lp);
}

bool FakeWindowSystem::registerClass(const char* name, WindowProc proc, void* context) {
  record("registerClass %s", name);
  classes_[name] = {proc, context};
  return true;
}

bool FakeWindowSystem::adjustWindowRect(Rect& r, uint32_t style) {
  if (failAdjust) return false;
  // A 4-pixel sizing border or a 1-pixel fixed one, and a 20-pixel caption.
  const int border = (style & win::WS_THICKFRAME) ? 4 : ((style & win::WS_CAPTION) ? 1 : 0);
  const int caption = ((style & win::WS_CAPTION) == win::WS_CAPTION) ? 20 : 0;
  r.left -= border;
  r.top -= border + caption;
  r.right += border;
  r.bottom += border;
  return true;
}

Rect FakeWindowSystem::clientOf(const Window& w) const {
  Rect frame{};
  const_cast<FakeWindowSystem*>(this)->adjustWindowRect(frame, w.style);
  return {w.outer.left - frame.left, w.outer.top - frame.top, w.outer.right - frame.right,
          w.outer.bottom - frame.bottom};
}

WindowHandle FakeWindowSystem::createWindow(uint32_t exStyle, const char* className,
                                            const char* title, uint32_t style, int x, int y,
                                            int width, int height) {
  record("createWindow %s \"%s\" %08x %08x %dx%d", className, title, exStyle, style, width, height);
  if (!classes_.count(className)) return 0;
  const WindowHandle h = next_++;
  Window& w = windows[h];
  w.className = className;
  w.title = title;
  w.style = style;
  w.exStyle = exStyle;
  if (x == static_cast<int>(0x80000000u)) x = 100, y = 100;  // CW_USEDEFAULT
  w.outer = {x, y, x + width, y + height};
  w.visible = (style & win::WS_VISIBLE) != 0;
  const Rect c = clientOf(w);
  send(h, win::WM_CREATE);
  send(h, win::WM_SIZE, win::SIZE_RESTORED, win::makeLParam(c.right - c.left, c.bottom - c.top));
  send(h, win::WM_MOVE, 0, win::makeLParam(c.left, c.top));
  return h;
}

void FakeWindowSystem::destroyWindow(WindowHandle h) {
  record("destroyWindow %u", h);
  windows.erase(h);
  if (capture == h) capture = 0;
}

void FakeWindowSystem::showWindow(WindowHandle h, int command) {
  record("showWindow %u %d", h, command);
  auto it = windows.find(h);
  if (it == windows.end()) return;
  if (command == win::SW_MINIMIZE) {
    send(h, win::WM_SIZE, win::SIZE_MINIMIZED, 0);
    send(h, win::WM_ACTIVATE, 0x10000, 0);
    return;
  }
  const bool wasVisible = it->second.visible;
  it->second.visible = true;
  if (!wasVisible) send(h, win::WM_ACTIVATE, 1, 0);
}

bool FakeWindowSystem::isWindowVisible(WindowHandle h) {
  auto it = windows.find(h);
  return it != windows.end() && it->second.visible;
}

void FakeWindowSystem::setForegroundWindow(WindowHandle h) {
  record("setForegroundWindow %u", h);
}
void FakeWindowSystem::setActiveWindow(WindowHandle h) {
  record("setActiveWindow %u", h);
}

Rect FakeWindowSystem::getClientRect(WindowHandle h) {
  auto it = windows.find(h);
  if (it == windows.end()) return {};
  const Rect c = clientOf(it->second);
  return {0, 0, c.right - c.left, c.bottom - c.top};
}

Rect FakeWindowSystem::getWindowRect(WindowHandle h) {
  auto it = windows.find(h);
  return it == windows.end() ? Rect{} : it->second.outer;
}

void FakeWindowSystem::setWindowPos(WindowHandle h, int x, int y, int width, int height,
                                    uint32_t flags) {
  record("setWindowPos %u %d %d %d %d %x", h, x, y, width, height, flags);
  auto it = windows.find(h);
  if (it == windows.end()) return;
  Rect& r = it->second.outer;
  const int w = r.right - r.left, hgt = r.bottom - r.top;
  r = {x, y, x + ((flags & win::SWP_NOSIZE) ? w : width),
       y + ((flags & win::SWP_NOSIZE) ? hgt : height)};
}

void FakeWindowSystem::setProp(WindowHandle h, const char* name, intptr_t value) {
  record("setProp %u %s", h, name);
  if (auto it = windows.find(h); it != windows.end()) it->second.props[name] = value;
}

void FakeWindowSystem::removeProp(WindowHandle h, const char* name) {
  record("removeProp %u %s", h, name);
  if (auto it = windows.find(h); it != windows.end()) it->second.props.erase(name);
}

bool FakeWindowSystem::peekMessage(Message& out) {
  if (queue.empty()) return false;
  out = queue.front();
  queue.pop_front();
  return true;
}

void FakeWindowSystem::postMessage(WindowHandle h, uint32_t message, uintptr_t wp, intptr_t lp) {
  record("postMessage %u %04x %lu %ld", h, message, static_cast<unsigned long>(wp),
         static_cast<long>(lp));
  queue.push_back({h, message, wp, lp});
}

intptr_t FakeWindowSystem::dispatchMessage(const Message& m) {
  record("dispatch %04x", m.message);
  return send(m.hwnd, m.message, m.wParam, m.lParam);
}

void FakeWindowSystem::setCursorPos(int x, int y) {
  record("setCursorPos %d %d", x, y);
  cursor = {x, y};
}

WindowHandle FakeWindowSystem::windowFromPoint(Point p) {
  WindowHandle found = 0;
  for (const auto& [h, w] : windows) {
    if (w.visible && p.x >= w.outer.left && p.x < w.outer.right && p.y >= w.outer.top &&
        p.y < w.outer.bottom)
      found = h;
  }
  return found;
}

Point FakeWindowSystem::screenToClient(WindowHandle h, Point p) {
  auto it = windows.find(h);
  if (it == windows.end()) return p;
  const Rect c = clientOf(it->second);
  return {p.x - c.left, p.y - c.top};
}

void FakeWindowSystem::clipCursor(const Rect* rect) {
  record(rect ? "clipCursor" : "clipCursor null");
}

void FakeWindowSystem::setCapture(WindowHandle h) {
  record("setCapture %u", h);
  capture = h;
}

void FakeWindowSystem::releaseCapture() {
  record("releaseCapture");
  capture = 0;
}

void FakeWindowSystem::setCursor(CursorHandle c) {
  record("setCursor %lu", static_cast<unsigned long>(c));
}

int FakeWindowSystem::showCursor(bool show) {
  record("showCursor %d", show ? 1 : 0);
  return show ? ++cursorShowCount : --cursorShowCount;
}

uint32_t FakeWindowSystem::getDoubleClickTime() {
  record("getDoubleClickTime");
  return doubleClickTime;
}

int16_t FakeWindowSystem::getAsyncKeyState(int vk) {
  return static_cast<int16_t>((keys[vk & 0xFF] & 0x80) ? 0x8000 : 0);
}

void FakeWindowSystem::getKeyboardState(uint8_t state[256]) {
  for (int i = 0; i < 256; ++i) state[i] = keys[i];
}

uint32_t FakeWindowSystem::mapVirtualKey(uint32_t code) {
  return us_keyboard::scanCode(code);
}

int FakeWindowSystem::toAscii(uint32_t vk, uint32_t, const uint8_t state[256], uint16_t* out) {
  return us_keyboard::toAscii(vk, state, out);
}

int16_t FakeWindowSystem::vkKeyScan(char ch) {
  return us_keyboard::vkKeyScan(ch);
}

int32_t FakeWindowSystem::changeDisplaySettings(const DisplayMode* mode, uint32_t flags) {
  if (mode)
    record("changeDisplaySettings %dx%d bits %d refresh %d fields %x flags %x", mode->width,
           mode->height, mode->bits, mode->refresh, mode->fields, flags);
  else
    record("changeDisplaySettings default");
  if (!mode) {
    currentMode = desktopMode;
    return 0;
  }
  if (!modes.empty() && !displayModeListed(*this, *mode)) return kDisplayChangeBadMode;
  currentMode = *mode;
  return 0;
}

bool FakeWindowSystem::enumDisplaySettings(int index, DisplayMode& out) {
  if (index == -1) {
    out = currentMode;
    return true;
  }
  if (index < 0 || index >= static_cast<int>(modes.size())) return false;
  out = modes[static_cast<std::size_t>(index)];
  return true;
}

void FakeWindowSystem::enumWindows(EnumWindowsProc proc, void* context) {
  for (const auto& [h, d] : desktop) {
    DesktopWindowInfo info;
    info.handle = h;
    info.title = d.title.c_str();
    info.className = d.className.c_str();
    info.visible = d.visible;
    info.owned = d.owned;
    proc(context, info);
  }
}

bool FakeWindowSystem::getWindowPlacement(DesktopWindow w, WindowPlacement& out) {
  record("getWindowPlacement %lu", static_cast<unsigned long>(w));
  auto it = desktop.find(w);
  if (it == desktop.end()) return false;
  out = it->second.placement;
  return true;
}

void FakeWindowSystem::setWindowPlacement(DesktopWindow w, const WindowPlacement& p) {
  record("setWindowPlacement %lu", static_cast<unsigned long>(w));
  if (auto it = desktop.find(w); it != desktop.end()) it->second.placement = p;
}

InputContext FakeWindowSystem::immCreateContext() {
  const InputContext c = nextContext_++;
  record("immCreateContext %lu", static_cast<unsigned long>(c));
  contexts[c];
  return c;
}

void FakeWindowSystem::immDestroyContext(InputContext c) {
  record("immDestroyContext %lu", static_cast<unsigned long>(c));
  contexts.erase(c);
}

void FakeWindowSystem::immAssociateContext(WindowHandle w, InputContext c) {
  record("immAssociateContext %u %lu", w, static_cast<unsigned long>(c));
  attached[w] = c;
}

void FakeWindowSystem::immCancelComposition(InputContext c) {
  record("immCancelComposition %lu", static_cast<unsigned long>(c));
  if (auto it = contexts.find(c); it != contexts.end()) it->second = Composition{};
}

int32_t FakeWindowSystem::immGetCompositionString(InputContext c, uint32_t kind, void* buffer,
                                                  uint32_t size) {
  if (compositionReadFailure == 1) throw std::bad_alloc();
  if (compositionReadFailure == 2) throw std::runtime_error("unreadable composition");
  auto it = contexts.find(c);
  return it == contexts.end() ? -1 : readComposition(it->second, kind, buffer, size);
}

void FakeWindowSystem::immSetCandidateWindow(InputContext c, uint32_t index, Point client) {
  record("immSetCandidateWindow %lu %u %d %d", static_cast<unsigned long>(c), index, client.x,
         client.y);
}

bool FakeWindowSystem::registerDragDrop(WindowHandle w, DropTarget* target) {
  record("registerDragDrop %u", w);
  dropTargets[w] = target;
  return true;
}

void FakeWindowSystem::revokeDragDrop(WindowHandle w) {
  record("revokeDragDrop %u", w);
  dropTargets.erase(w);
}

void FakeWindowSystem::timeBeginPeriod(uint32_t ms) {
  record("timeBeginPeriod %u", ms);
}

}  // namespace vostan::platform
