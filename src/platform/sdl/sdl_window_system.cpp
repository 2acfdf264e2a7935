#include "platform/sdl/sdl_window_system.h"

#include <time.h>

#include <cstdio>
#include <cstring>
#include <iterator>

#include "platform/codepage.h"
#include "platform/us_keyboard.h"
#include "platform/win32_defs.h"

namespace vostan::platform {

void requestGlContext() {
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
  SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
  SDL_GL_SetAttribute(SDL_GL_STENCIL_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
}

namespace {

// Virtual keys by SDL scan code, for the keys whose code does not depend on
// the layout's letters.
int virtualKeyOfScancode(SDL_Scancode s) {
  if (s >= SDL_SCANCODE_1 && s <= SDL_SCANCODE_9) return '1' + (s - SDL_SCANCODE_1);
  if (s == SDL_SCANCODE_0) return '0';
  if (s >= SDL_SCANCODE_F1 && s <= SDL_SCANCODE_F12) return 112 + (s - SDL_SCANCODE_F1);
  if (s >= SDL_SCANCODE_F13 && s <= SDL_SCANCODE_F24) return 124 + (s - SDL_SCANCODE_F13);
  if (s >= SDL_SCANCODE_KP_1 && s <= SDL_SCANCODE_KP_9) return 97 + (s - SDL_SCANCODE_KP_1);
  switch (s) {
    case SDL_SCANCODE_KP_0:
      return 96;
    case SDL_SCANCODE_KP_MULTIPLY:
      return 106;
    case SDL_SCANCODE_KP_PLUS:
      return 107;
    case SDL_SCANCODE_KP_ENTER:
      return 13;
    case SDL_SCANCODE_KP_MINUS:
      return 109;
    case SDL_SCANCODE_KP_PERIOD:
      return 110;
    case SDL_SCANCODE_KP_DIVIDE:
      return 111;
    case SDL_SCANCODE_KP_COMMA:
    case SDL_SCANCODE_SEPARATOR:
      return 108;
    case SDL_SCANCODE_CANCEL:
      return 3;
    case SDL_SCANCODE_CLEAR:
    case SDL_SCANCODE_KP_CLEAR:
      return 12;
    case SDL_SCANCODE_INTERNATIONAL2:  // katakana/hiragana key
    case SDL_SCANCODE_LANG4:
      return 242;
    case SDL_SCANCODE_LANG3:
      return 241;
    case SDL_SCANCODE_LANG5:  // zenkaku/hankaku
      return 243;
    case SDL_SCANCODE_RETURN:
      return 13;
    case SDL_SCANCODE_ESCAPE:
      return 27;
    case SDL_SCANCODE_BACKSPACE:
      return 8;
    case SDL_SCANCODE_TAB:
      return 9;
    case SDL_SCANCODE_SPACE:
      return 32;
    case SDL_SCANCODE_MINUS:
      return 189;
    case SDL_SCANCODE_EQUALS:
      return 187;
    case SDL_SCANCODE_LEFTBRACKET:
      return 219;
    case SDL_SCANCODE_RIGHTBRACKET:
      return 221;
    case SDL_SCANCODE_BACKSLASH:
      return 220;
    case SDL_SCANCODE_SEMICOLON:
      return 186;
    case SDL_SCANCODE_APOSTROPHE:
      return 222;
    case SDL_SCANCODE_GRAVE:
      return 192;
    case SDL_SCANCODE_COMMA:
      return 188;
    case SDL_SCANCODE_PERIOD:
      return 190;
    case SDL_SCANCODE_SLASH:
      return 191;
    case SDL_SCANCODE_CAPSLOCK:
      return 20;
    case SDL_SCANCODE_PRINTSCREEN:
      return 44;
    case SDL_SCANCODE_SCROLLLOCK:
      return 145;
    case SDL_SCANCODE_PAUSE:
      return 19;
    case SDL_SCANCODE_INSERT:
      return 45;
    case SDL_SCANCODE_HOME:
      return 36;
    case SDL_SCANCODE_PAGEUP:
      return 33;
    case SDL_SCANCODE_DELETE:
      return 46;
    case SDL_SCANCODE_END:
      return 35;
    case SDL_SCANCODE_PAGEDOWN:
      return 34;
    case SDL_SCANCODE_RIGHT:
      return 39;
    case SDL_SCANCODE_LEFT:
      return 37;
    case SDL_SCANCODE_DOWN:
      return 40;
    case SDL_SCANCODE_UP:
      return 38;
    case SDL_SCANCODE_NUMLOCKCLEAR:
      return 144;
    case SDL_SCANCODE_HELP:
      return 47;
    case SDL_SCANCODE_LCTRL:
    case SDL_SCANCODE_RCTRL:
      return 17;
    case SDL_SCANCODE_LSHIFT:
    case SDL_SCANCODE_RSHIFT:
      return 16;
    case SDL_SCANCODE_LALT:
    case SDL_SCANCODE_RALT:
      return 18;
    case SDL_SCANCODE_LANG1:
      return 21;
    case SDL_SCANCODE_LANG2:
      return 25;
    case SDL_SCANCODE_INTERNATIONAL4:
      return 28;
    case SDL_SCANCODE_INTERNATIONAL5:
      return 29;
    default:
      return 0;
  }
}

int padNavigationKey(SDL_Scancode s) {
  // Insert, end, down, page down, left, clear, right, home, up, page up: under 0 to 9.
  static constexpr int kUnderDigit[10] = {45, 35, 40, 34, 37, 12, 39, 36, 38, 33};
  if (s >= SDL_SCANCODE_KP_1 && s <= SDL_SCANCODE_KP_9)
    return kUnderDigit[1 + (s - SDL_SCANCODE_KP_1)];
  if (s == SDL_SCANCODE_KP_0) return kUnderDigit[0];
  if (s == SDL_SCANCODE_KP_PERIOD) return 46;  // delete
  return 0;
}

uint32_t monotonicMillis() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<uint32_t>(static_cast<uint64_t>(ts.tv_sec) * 1000u +
                               static_cast<uint64_t>(ts.tv_nsec) / 1000000u);
}

}  // namespace

int SdlWindowSystem::virtualKeyOf(const SDL_Keysym& key) {
  if (key.sym >= SDLK_a && key.sym <= SDLK_z) return 'A' + (key.sym - SDLK_a);
  if (!(key.mod & KMOD_NUM)) {
    // Without num lock the pad's keys are the ones printed under their digits.
    if (const int navigation = padNavigationKey(key.scancode)) return navigation;
  }
  return virtualKeyOfScancode(key.scancode);
}

SdlWindowSystem::SdlWindowSystem() = default;

SdlWindowSystem::~SdlWindowSystem() = default;

bool SdlWindowSystem::ensureVideo() {
  if (SDL_WasInit(SDL_INIT_VIDEO)) return true;
  // Inside a JVM: the VM owns the signals.
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
  SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
  // Compositions of any length, rather than cut at the event's buffer.
  SDL_SetHint(SDL_HINT_IME_SUPPORT_EXTENDED_TEXT, "1");
  if (SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0) {
    std::printf("SDL_Init failed: %s\n", SDL_GetError());
    return false;
  }
  const char* driver = SDL_GetCurrentVideoDriver();
  globalMouse_ = driver && std::strcmp(driver, "x11") == 0;
  return true;
}

SdlWindowSystem::Window* SdlWindowSystem::find(WindowHandle h) {
  auto it = windows_.find(h);
  return it == windows_.end() ? nullptr : &it->second;
}

intptr_t SdlWindowSystem::send(WindowHandle h, uint32_t msg, uintptr_t wp, intptr_t lp) {
  Window* w = find(h);
  if (!w) return 0;
  auto cls = classes_.find(w->className);
  if (cls == classes_.end()) return 0;
  return cls->second.proc(cls->second.context, h, msg, wp, lp);
}

bool SdlWindowSystem::registerClass(const char* name, WindowProc proc, void* context) {
  if (!ensureVideo()) return false;
  classes_[name] = {proc, context};
  return true;
}

WindowHandle SdlWindowSystem::createWindow(uint32_t exStyle, const char* className,
                                           const char* title, uint32_t style, int x, int y,
                                           int width, int height) {
  if (!ensureVideo() || !classes_.count(className)) return 0;
  requestGlContext();
  uint32_t flags = SDL_WINDOW_OPENGL;
  if (!(style & win::WS_VISIBLE)) flags |= SDL_WINDOW_HIDDEN;
  if (style & win::WS_THICKFRAME) flags |= SDL_WINDOW_RESIZABLE;
  if (style & win::WS_POPUP) {
    flags |= SDL_WINDOW_BORDERLESS;
    if (fullScreenMode_) flags |= SDL_WINDOW_FULLSCREEN;
  }
  if (x == static_cast<int>(0x80000000u)) x = y = static_cast<int>(SDL_WINDOWPOS_UNDEFINED);
  SDL_Window* sdl = SDL_CreateWindow(title, x, y, width, height, flags);
  if (!sdl) {
    std::printf("SDL_CreateWindow failed: %s\n", SDL_GetError());
    return 0;
  }
  if (fullScreenMode_ && (style & win::WS_POPUP)) SDL_SetWindowDisplayMode(sdl, &mode_);
  const WindowHandle h = SDL_GetWindowID(sdl);
  Window& w = windows_[h];
  w.sdl = sdl;
  w.className = className;
  w.style = style;
  int cw = 0, ch = 0, wx = 0, wy = 0;
  SDL_GetWindowSize(sdl, &cw, &ch);
  SDL_GetWindowPosition(sdl, &wx, &wy);
  send(h, win::WM_CREATE, 0, 0);
  send(h, win::WM_SIZE, win::SIZE_RESTORED, win::makeLParam(cw, ch));
  send(h, win::WM_MOVE, 0, win::makeLParam(wx, wy));
  if (style & win::WS_VISIBLE) showWindow(h, win::SW_SHOW);
  return h;
}

void SdlWindowSystem::destroyWindow(WindowHandle h) {
  Window* w = find(h);
  if (!w) return;
  SDL_DestroyWindow(w->sdl);
  windows_.erase(h);
  if (capture_ == h) releaseCapture();
  // Messages still queued for the window go nowhere.
  for (int i = 0; i < count_; ++i) {
    Message& m = queue_[(head_ + i) % kQueueSize];
    if (m.hwnd == h) m.hwnd = 0, m.message = 0;
  }
}

void SdlWindowSystem::showWindow(WindowHandle h, int command) {
  Window* w = find(h);
  if (!w) return;
  if (command == win::SW_MINIMIZE) {
    SDL_MinimizeWindow(w->sdl);
    return;
  }
  SDL_ShowWindow(w->sdl);
  if (!w->active) {
    // Showing activates, as the system does; a later focus event is then no news.
    w->active = true;
    send(h, win::WM_ACTIVATE, 1, 0);
  }
}

bool SdlWindowSystem::isWindowVisible(WindowHandle h) {
  Window* w = find(h);
  return w && (SDL_GetWindowFlags(w->sdl) & SDL_WINDOW_SHOWN) &&
         !(SDL_GetWindowFlags(w->sdl) & SDL_WINDOW_HIDDEN);
}

void SdlWindowSystem::setForegroundWindow(WindowHandle h) {
  if (Window* w = find(h)) SDL_RaiseWindow(w->sdl);
}

void SdlWindowSystem::setActiveWindow(WindowHandle h) {
  if (Window* w = find(h)) SDL_RaiseWindow(w->sdl);
}

bool SdlWindowSystem::adjustWindowRect(Rect&, uint32_t) {
  // Frames belong to the window manager and lie outside the rectangles SDL reports.
  return true;
}

Rect SdlWindowSystem::getClientRect(WindowHandle h) {
  Window* w = find(h);
  if (!w) return {};
  int cw = 0, ch = 0;
  SDL_GetWindowSize(w->sdl, &cw, &ch);
  return {0, 0, cw, ch};
}

Rect SdlWindowSystem::getWindowRect(WindowHandle h) {
  Window* w = find(h);
  if (!w) return {};
  int x = 0, y = 0, cw = 0, ch = 0;
  SDL_GetWindowPosition(w->sdl, &x, &y);
  SDL_GetWindowSize(w->sdl, &cw, &ch);
  return {x, y, x + cw, y + ch};
}

void SdlWindowSystem::setWindowPos(WindowHandle h, int x, int y, int width, int height,
                                   uint32_t flags) {
  Window* w = find(h);
  if (!w) return;
  SDL_SetWindowPosition(w->sdl, x, y);
  if (!(flags & win::SWP_NOSIZE)) SDL_SetWindowSize(w->sdl, width, height);
}

void SdlWindowSystem::setProp(WindowHandle h, const char* name, intptr_t value) {
  if (Window* w = find(h)) w->props[name] = value;
}

void SdlWindowSystem::removeProp(WindowHandle h, const char* name) {
  if (Window* w = find(h)) w->props.erase(name);
}

void SdlWindowSystem::enqueue(const Message& m) {
  if (count_ == kQueueSize) return;  // a full queue drops, as a full system queue does
  queue_[(head_ + count_) % kQueueSize] = m;
  ++count_;
}

void SdlWindowSystem::postMessage(WindowHandle h, uint32_t message, uintptr_t wp, intptr_t lp) {
  enqueue({h, message, wp, lp});
}

bool SdlWindowSystem::peekMessage(Message& out) {
  if (count_ == 0 && SDL_WasInit(SDL_INIT_VIDEO)) {
    // Pump and peek rather than SDL_PollEvent, whose end-of-round marker would
    // hide an event pushed after the previous round.
    SDL_PumpEvents();
    SDL_Event e;
    while (count_ == 0 && SDL_PeepEvents(&e, 1, SDL_GETEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) > 0)
      translate(e);
  }
  while (count_ > 0) {
    out = queue_[head_];
    head_ = (head_ + 1) % kQueueSize;
    --count_;
    if (out.message != 0) return true;
  }
  return false;
}

intptr_t SdlWindowSystem::dispatchMessage(const Message& m) {
  return send(m.hwnd, m.message, m.wParam, m.lParam);
}

uintptr_t SdlWindowSystem::mouseKeys() const {
  uintptr_t k = buttons_;
  if (keys_[win::VK_SHIFT] & 0x80) k |= win::MK_SHIFT;
  if (keys_[win::VK_CONTROL] & 0x80) k |= win::MK_CONTROL;
  return k;
}

void SdlWindowSystem::translate(const SDL_Event& e) {
  switch (e.type) {
    case SDL_WINDOWEVENT: {
      const WindowHandle h = e.window.windowID;
      Window* w = find(h);
      if (!w) return;
      switch (e.window.event) {
        case SDL_WINDOWEVENT_SIZE_CHANGED:
          send(h, win::WM_SIZE, win::SIZE_RESTORED,
               win::makeLParam(e.window.data1, e.window.data2));
          break;
        case SDL_WINDOWEVENT_MINIMIZED:
          send(h, win::WM_SIZE, win::SIZE_MINIMIZED, 0);
          break;
        case SDL_WINDOWEVENT_RESTORED:
        case SDL_WINDOWEVENT_MAXIMIZED: {
          int cw = 0, ch = 0;
          SDL_GetWindowSize(w->sdl, &cw, &ch);
          send(h, win::WM_SIZE, win::SIZE_RESTORED, win::makeLParam(cw, ch));
          break;
        }
        case SDL_WINDOWEVENT_MOVED:
          send(h, win::WM_MOVE, 0, win::makeLParam(e.window.data1, e.window.data2));
          break;
        case SDL_WINDOWEVENT_FOCUS_GAINED:
          if (!w->active) {
            w->active = true;
            send(h, win::WM_ACTIVATE, 1, 0);
          }
          break;
        case SDL_WINDOWEVENT_FOCUS_LOST:
          if (w->active) {
            w->active = false;
            send(h, win::WM_ACTIVATE, 0, 0);
          }
          break;
        case SDL_WINDOWEVENT_LEAVE:
          // Outside the client area the system's cursor shows again.
          send(h, win::WM_SETCURSOR, h, win::makeLParam(0, static_cast<int>(win::WM_MOUSEMOVE)));
          break;
        case SDL_WINDOWEVENT_CLOSE:
          send(h, win::WM_CLOSE, 0, 0);
          break;
        case SDL_WINDOWEVENT_EXPOSED:
          enqueue({h, win::WM_PAINT, 0, 0});
          break;
        default:
          break;
      }
      break;
    }
    case SDL_MOUSEMOTION: {
      Window* w = find(e.motion.windowID);
      if (!w) return;
      int wx = 0, wy = 0;
      SDL_GetWindowPosition(w->sdl, &wx, &wy);
      cursor_ = {wx + e.motion.x, wy + e.motion.y};
      // The system asks the window for its cursor as the pointer moves over the client area.
      send(e.motion.windowID, win::WM_SETCURSOR, e.motion.windowID,
           win::makeLParam(1, static_cast<int>(win::WM_MOUSEMOVE)));
      enqueue({e.motion.windowID, win::WM_MOUSEMOVE, mouseKeys(),
               win::makeLParam(e.motion.x, e.motion.y)});
      break;
    }
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: {
      const bool down = e.type == SDL_MOUSEBUTTONDOWN;
      uint32_t msg = 0;
      uintptr_t bit = 0;
      switch (e.button.button) {
        case SDL_BUTTON_LEFT:
          msg = down ? win::WM_LBUTTONDOWN : win::WM_LBUTTONUP;
          bit = win::MK_LBUTTON;
          break;
        case SDL_BUTTON_RIGHT:
          msg = down ? win::WM_RBUTTONDOWN : win::WM_RBUTTONUP;
          bit = win::MK_RBUTTON;
          break;
        case SDL_BUTTON_MIDDLE:
          msg = down ? win::WM_MBUTTONDOWN : win::WM_MBUTTONUP;
          bit = win::MK_MBUTTON;
          break;
        default:
          return;
      }
      buttons_ = down ? (buttons_ | bit) : (buttons_ & ~bit);
      if (Window* w = find(e.button.windowID)) {
        int wx = 0, wy = 0;
        SDL_GetWindowPosition(w->sdl, &wx, &wy);
        cursor_ = {wx + e.button.x, wy + e.button.y};
      }
      enqueue({e.button.windowID, msg, mouseKeys(), win::makeLParam(e.button.x, e.button.y)});
      break;
    }
    case SDL_MOUSEWHEEL: {
      if (e.wheel.y == 0) return;
      const int delta = e.wheel.y * (e.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -120 : 120);
      const uintptr_t wp =
          (static_cast<uintptr_t>(static_cast<uint16_t>(delta)) << 16) | (mouseKeys() & 0xFFFF);
      enqueue({e.wheel.windowID, win::WM_MOUSEWHEEL, wp, win::makeLParam(cursor_.x, cursor_.y)});
      break;
    }
    case SDL_KEYDOWN:
    case SDL_KEYUP: {
      const int vk = virtualKeyOf(e.key.keysym);
      if (vk == 0) return;
      const bool down = e.type == SDL_KEYDOWN;
      const bool wasDown = keys_[vk] & 0x80;
      if (down) {
        keys_[vk] |= 0x80;
      } else {
        keys_[vk] &= 0x7F;
      }
      // The lock keys' toggles as the keyboard has them, also when they were
      // set before the window had the focus.
      const auto toggle = [this, &e](int key, int mod) {
        keys_[key] = static_cast<uint8_t>((keys_[key] & 0x80) | ((e.key.keysym.mod & mod) ? 1 : 0));
      };
      toggle(20, KMOD_CAPS);
      toggle(144, KMOD_NUM);
      toggle(145, KMOD_SCROLL);
      const bool alt = (e.key.keysym.mod & KMOD_ALT) != 0;
      const uint32_t scan = us_keyboard::scanCode(static_cast<uint32_t>(vk));
      intptr_t lp = 1 | (static_cast<intptr_t>(scan) << 16);
      if (alt) lp |= intptr_t(1) << 29;
      if (wasDown) lp |= intptr_t(1) << 30;
      if (!down) lp |= intptr_t(3) << 30;
      const bool system = alt || vk == win::VK_F10 || vk == win::VK_MENU;
      const uint32_t msg = down ? (system ? win::WM_SYSKEYDOWN : win::WM_KEYDOWN)
                                : (system ? win::WM_SYSKEYUP : win::WM_KEYUP);
      enqueue({e.key.windowID, msg, static_cast<uintptr_t>(vk), lp & 0xFFFFFFFF});
      break;
    }
    case SDL_TEXTINPUT: {
      char16_t wide[SDL_TEXTINPUTEVENT_TEXT_SIZE];
      const std::size_t n = multiByteToWide(65001, e.text.text, std::strlen(e.text.text), wide,
                                            SDL_TEXTINPUTEVENT_TEXT_SIZE);
      Context* context = attachedContext(e.text.windowID);
      if (context && context->composing) {
        // The input method committed its composition.
        const std::u16string result(wide, n);
        endComposition(e.text.windowID, *context, &result);
      } else {
        typeCharacters(e.text.windowID, wide, n);
      }
      break;
    }
    case SDL_TEXTEDITING:
      editing(e.edit.windowID, e.edit.text, e.edit.start, e.edit.length);
      break;
    case SDL_TEXTEDITING_EXT:
      // A composition longer than the event's own buffer.
      editing(e.editExt.windowID, e.editExt.text ? e.editExt.text : "", e.editExt.start,
              e.editExt.length);
      SDL_free(e.editExt.text);
      break;
    case SDL_DROPBEGIN:
      dropFiles_.clear();
      dropText_ = false;
      break;
    case SDL_DROPFILE:
      if (e.drop.file) {
        dropFiles_.emplace_back(e.drop.file);
        SDL_free(e.drop.file);
      }
      break;
    case SDL_DROPTEXT:
      dropText_ = true;
      SDL_free(e.drop.file);
      break;
    case SDL_DROPCOMPLETE:
      deliverDrop(e.drop.windowID);
      break;
    default:
      break;
  }
}

void SdlWindowSystem::typeCharacters(WindowHandle window, const char16_t* wide, std::size_t n) {
  // Characters arrive as bytes of the keyboard's code page, one message each.
  // Typed keys fit the stack; only a long committed composition needs the heap.
  char small[SDL_TEXTINPUTEVENT_TEXT_SIZE * 3];
  std::vector<char> large;
  char* bytes = small;
  std::size_t capacity = sizeof small;
  if (n * 3 > capacity) {
    large.resize(n * 3);
    bytes = large.data();
    capacity = large.size();
  }
  const std::size_t m =
      wideToMultiByte(ansiCodePageOfLanguage(getKeyboardLayout()), wide, n, bytes, capacity);
  const SDL_Keymod mod = SDL_GetModState();
  const bool altGraph = (mod & (KMOD_MODE | KMOD_RALT)) != 0;
  const bool system = !altGraph && (mod & KMOD_LALT) != 0;
  const intptr_t flags = (altGraph || system) ? (intptr_t(0x2000) << 16) : 0;
  for (std::size_t i = 0; i < m; ++i) {
    enqueue({window, system ? win::WM_SYSCHAR : win::WM_CHAR, static_cast<uint8_t>(bytes[i]),
             flags | 1});
  }
}

SdlWindowSystem::Context* SdlWindowSystem::attachedContext(WindowHandle window) {
  auto a = attached_.find(window);
  if (a == attached_.end()) return nullptr;
  auto c = contexts_.find(a->second);
  return c == contexts_.end() ? nullptr : &c->second;
}

WindowHandle SdlWindowSystem::windowOf(InputContext context) const {
  for (const auto& [window, attached] : attached_) {
    if (attached == context) return window;
  }
  return 0;
}

void SdlWindowSystem::editing(WindowHandle window, const char* utf8, int start, int length) {
  Context* context = attachedContext(window);
  // Without an attached context the input method's reports go nowhere.
  if (!context) return;
  std::u16string text(std::strlen(utf8) + 1, u'\0');
  text.resize(multiByteToWide(65001, utf8, std::strlen(utf8), text.data(), text.size()));
  if (text.empty()) {
    // An empty composition: the user cancelled it.
    if (context->composing) endComposition(window, *context, nullptr);
    return;
  }
  if (!context->composing) {
    context->composing = true;
    enqueue({window, win::WM_IME_STARTCOMPOSITION, 0, 0});
    // The candidate list opens with the composition; the console places it.
    enqueue({window, win::WM_IME_NOTIFY, win::IMN_OPENCANDIDATE, 1});
  }
  // SDL counts the caret and the selected clause in characters; surrogate
  // pairs make them units.
  auto unitOf = [&text](int character) {
    std::size_t unit = 0;
    for (int c = 0; c < character && unit < text.size(); ++c) {
      const bool pair = text[unit] >= 0xD800 && text[unit] < 0xDC00 && unit + 1 < text.size();
      unit += pair ? 2 : 1;
    }
    return unit;
  };
  Composition& c = context->composition;
  c.text = text;
  c.cursor = static_cast<int32_t>(unitOf(start < 0 ? 0 : start));
  c.attributes.assign(text.size(), win::ATTR_INPUT);
  if (length > 0) {
    const std::size_t to = unitOf(start + length);
    for (std::size_t i = static_cast<std::size_t>(c.cursor); i < to; ++i)
      c.attributes[i] = win::ATTR_TARGET_CONVERTED;
  }
  enqueue({window, win::WM_IME_COMPOSITION, text[0],
           win::GCS_COMPSTR | win::GCS_COMPATTR | win::GCS_CURSORPOS});
}

void SdlWindowSystem::endComposition(WindowHandle window, Context& context,
                                     const std::u16string* result) {
  context.composing = false;
  context.composition.text.clear();
  context.composition.attributes.clear();
  context.composition.cursor = 0;
  if (result) {
    context.composition.result = *result;
    enqueue({window, win::WM_IME_COMPOSITION, 0, win::GCS_RESULTSTR | win::GCS_RESULTCLAUSE});
  } else {
    enqueue({window, win::WM_IME_COMPOSITION, 0, 0});
  }
  enqueue({window, win::WM_IME_ENDCOMPOSITION, 0, 0});
}

intptr_t SdlWindowSystem::defWindowProc(WindowHandle window, uint32_t message, uintptr_t,
                                        intptr_t lParam) {
  // What the system does with a committed composition that the window did not
  // take for itself: it types the text.
  if (message == win::WM_IME_COMPOSITION && (lParam & win::GCS_RESULTSTR)) {
    if (Context* context = attachedContext(window)) {
      const std::u16string& result = context->composition.result;
      typeCharacters(window, result.data(), result.size());
    }
  }
  return 0;
}

InputContext SdlWindowSystem::immCreateContext() {
  const InputContext handle = nextContext_++;
  contexts_[handle];
  return handle;
}

void SdlWindowSystem::immDestroyContext(InputContext context) {
  contexts_.erase(context);
  for (auto it = attached_.begin(); it != attached_.end();) {
    it = it->second == context ? attached_.erase(it) : std::next(it);
  }
}

void SdlWindowSystem::immAssociateContext(WindowHandle window, InputContext context) {
  if (context == 0 || !contexts_.count(context)) {
    attached_.erase(window);
    return;
  }
  attached_[window] = context;
}

void SdlWindowSystem::immCancelComposition(InputContext context) {
  auto it = contexts_.find(context);
  if (it == contexts_.end() || !it->second.composing) return;
  if (SDL_WasInit(SDL_INIT_VIDEO)) SDL_ClearComposition();
  endComposition(windowOf(context), it->second, nullptr);
}

int32_t SdlWindowSystem::immGetCompositionString(InputContext context, uint32_t kind, void* buffer,
                                                 uint32_t size) {
  auto it = contexts_.find(context);
  return it == contexts_.end() ? -1 : readComposition(it->second.composition, kind, buffer, size);
}

void SdlWindowSystem::immSetCandidateWindow(InputContext context, uint32_t, Point client) {
  if (!SDL_WasInit(SDL_INIT_VIDEO) || windowOf(context) == 0) return;
  // The input method shows its candidates below the text input rectangle.
  SDL_Rect rect{client.x, client.y, 0, 0};
  SDL_SetTextInputRect(&rect);
}

uint32_t SdlWindowSystem::dropKeyState() const {
  uint32_t k = static_cast<uint32_t>(mouseKeys());
  if (keys_[win::VK_MENU] & 0x80) k |= 0x20;  // MK_ALT
  return k;
}

void SdlWindowSystem::deliverDrop(WindowHandle window) {
  // SDL reports a finished drop only: the target sees it enter, pass over and
  // drop at once, where the pointer is (the drag's own motion never reaches us).
  auto it = dropTargets_.find(window);
  if (it == dropTargets_.end() || !it->second) return;
  std::vector<const char*> names;
  for (const std::string& f : dropFiles_) names.push_back(f.c_str());
  const bool files = !names.empty();
  const Point at = getCursorPos();
  DropTarget* target = it->second;
  const uint32_t effect = target->dragEnter(files ? names.data() : nullptr,
                                            static_cast<int>(names.size()), dropKeyState(), at);
  if (effect != win::DROPEFFECT_NONE) {
    target->dragOver(dropKeyState(), at);
    target->drop(dropKeyState(), at);
  } else {
    target->dragLeave();
  }
  dropFiles_.clear();
  dropText_ = false;
}

bool SdlWindowSystem::registerDragDrop(WindowHandle w, DropTarget* target) {
  if (!ensureVideo()) return false;
  SDL_EventState(SDL_DROPFILE, SDL_ENABLE);
  SDL_EventState(SDL_DROPTEXT, SDL_ENABLE);
  dropTargets_[w] = target;
  return true;
}

void SdlWindowSystem::revokeDragDrop(WindowHandle w) {
  dropTargets_.erase(w);
}

bool SdlWindowSystem::enumDisplaySettings(int index, DisplayMode& out) {
  if (!ensureVideo()) return false;
  SDL_DisplayMode m{};
  if (index == -1) {
    if (SDL_GetCurrentDisplayMode(0, &m) != 0) return false;
  } else if (index < 0 || index >= SDL_GetNumDisplayModes(0) ||
             SDL_GetDisplayMode(0, index, &m) != 0) {
    return false;
  }
  out.fields =
      win::DM_PELSWIDTH | win::DM_PELSHEIGHT | win::DM_BITSPERPEL | win::DM_DISPLAYFREQUENCY;
  out.width = m.w;
  out.height = m.h;
  // A four-byte pixel counts as 32 bits, as display settings report it.
  out.bits =
      SDL_BYTESPERPIXEL(m.format) == 4 ? 32 : static_cast<int32_t>(SDL_BITSPERPIXEL(m.format));
  out.refresh = m.refresh_rate;
  return true;
}

DesktopWindows& SdlWindowSystem::desktop() {
  if (!desktop_) {
    // Other applications' windows are the window system's own to list: X11 has
    // them for any client, elsewhere they stay where the mode change puts them.
    ensureVideo();
    const char* driver = SDL_WasInit(SDL_INIT_VIDEO) ? SDL_GetCurrentVideoDriver() : nullptr;
    if (driver && std::strcmp(driver, "x11") == 0) desktop_ = openX11Desktop();
    if (!desktop_) {
      const std::string where = std::string("the ") + (driver ? driver : "missing") + " display";
      desktop_ = noDesktopWindows(where.c_str());
    }
  }
  return *desktop_;
}

void SdlWindowSystem::enumWindows(EnumWindowsProc proc, void* context) {
  desktop().enumWindows(proc, context);
}

bool SdlWindowSystem::getWindowPlacement(DesktopWindow w, WindowPlacement& out) {
  return desktop().getWindowPlacement(w, out);
}

void SdlWindowSystem::setWindowPlacement(DesktopWindow w, const WindowPlacement& p) {
  desktop().setWindowPlacement(w, p);
}

Point SdlWindowSystem::getCursorPos() {
  if (globalMouse_) {
    int x = 0, y = 0;
    SDL_GetGlobalMouseState(&x, &y);
    return {x, y};
  }
  return cursor_;
}

void SdlWindowSystem::setCursorPos(int x, int y) {
  cursor_ = {x, y};
  if (SDL_WasInit(SDL_INIT_VIDEO)) SDL_WarpMouseGlobal(x, y);
}

WindowHandle SdlWindowSystem::windowFromPoint(Point p) {
  SDL_Window* focus = SDL_WasInit(SDL_INIT_VIDEO) ? SDL_GetMouseFocus() : nullptr;
  for (auto& [h, w] : windows_) {
    const Rect r = getWindowRect(h);
    const bool inside = p.x >= r.left && p.x < r.right && p.y >= r.top && p.y < r.bottom;
    // Without a real pointer (offscreen), the tracked position alone decides.
    if (inside && (!globalMouse_ || focus == w.sdl)) return h;
  }
  return 0;
}

Point SdlWindowSystem::screenToClient(WindowHandle h, Point p) {
  const Rect r = getWindowRect(h);
  return {p.x - r.left, p.y - r.top};
}

void SdlWindowSystem::clipCursor(const Rect* rect) {
  for (auto& [h, w] : windows_) {
    if (!rect) {
      SDL_SetWindowMouseRect(w.sdl, nullptr);
      continue;
    }
    const Rect r = getWindowRect(h);
    SDL_Rect local{rect->left - r.left, rect->top - r.top, rect->right - rect->left,
                   rect->bottom - rect->top};
    SDL_SetWindowMouseRect(w.sdl, &local);
  }
}

void SdlWindowSystem::setCapture(WindowHandle h) {
  capture_ = h;
  SDL_CaptureMouse(SDL_TRUE);
}

void SdlWindowSystem::releaseCapture() {
  capture_ = 0;
  SDL_CaptureMouse(SDL_FALSE);
}

CursorHandle SdlWindowSystem::loadArrowCursor() {
  if (!arrow_ && SDL_WasInit(SDL_INIT_VIDEO))
    arrow_ = SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_ARROW);
  return reinterpret_cast<CursorHandle>(arrow_);
}

void SdlWindowSystem::setCursor(CursorHandle c) {
  if (c) SDL_SetCursor(reinterpret_cast<SDL_Cursor*>(c));
}

int SdlWindowSystem::showCursor(bool show) {
  // A display count, as the system keeps one: shown while it is not negative.
  cursorCount_ += show ? 1 : -1;
  SDL_ShowCursor(cursorCount_ >= 0 ? SDL_ENABLE : SDL_DISABLE);
  return cursorCount_;
}

int16_t SdlWindowSystem::getAsyncKeyState(int vk) {
  bool down = false;
  switch (vk) {
    case win::VK_LBUTTON:
      down = buttons_ & win::MK_LBUTTON;
      break;
    case win::VK_RBUTTON:
      down = buttons_ & win::MK_RBUTTON;
      break;
    case win::VK_MBUTTON:
      down = buttons_ & win::MK_MBUTTON;
      break;
    default:
      down = keys_[vk & 0xFF] & 0x80;
      break;
  }
  return static_cast<int16_t>(down ? 0x8000 : 0);
}

void SdlWindowSystem::getKeyboardState(uint8_t state[256]) {
  std::memcpy(state, keys_, 256);
  if (buttons_ & win::MK_LBUTTON) state[win::VK_LBUTTON] |= 0x80;
  if (buttons_ & win::MK_RBUTTON) state[win::VK_RBUTTON] |= 0x80;
  if (buttons_ & win::MK_MBUTTON) state[win::VK_MBUTTON] |= 0x80;
}

uint32_t SdlWindowSystem::getKeyboardLayout() {
  static const uint16_t language = localeLanguageId();
  return language;
}

uint32_t SdlWindowSystem::mapVirtualKey(uint32_t code) {
  return us_keyboard::scanCode(code);
}

int SdlWindowSystem::toAscii(uint32_t vk, uint32_t, const uint8_t state[256], uint16_t* out) {
  return us_keyboard::toAscii(vk, state, out);
}

int16_t SdlWindowSystem::vkKeyScan(char ch) {
  return us_keyboard::vkKeyScan(ch);
}

int32_t SdlWindowSystem::changeDisplaySettings(const DisplayMode* mode, uint32_t) {
  if (!mode) {
    fullScreenMode_ = false;
    for (auto& [h, w] : windows_) {
      if (w.style & win::WS_POPUP) SDL_SetWindowFullscreen(w.sdl, 0);
    }
    return 0;
  }
  // A mode the screen doesn't list is refused, and the screen stays as it is.
  if (!displayModeListed(*this, *mode)) {
    std::printf("display mode %dx%d refused: the screen doesn't list it\n", mode->width,
                mode->height);
    return kDisplayChangeBadMode;
  }
  fullScreenMode_ = true;
  mode_ = SDL_DisplayMode{};
  mode_.w = mode->width;
  mode_.h = mode->height;
  mode_.refresh_rate = mode->refresh;
  for (auto& [h, w] : windows_) {
    if (!(w.style & win::WS_POPUP)) continue;
    SDL_SetWindowDisplayMode(w.sdl, &mode_);
    SDL_SetWindowFullscreen(w.sdl, SDL_WINDOW_FULLSCREEN);
  }
  return 0;
}

uint32_t SdlWindowSystem::timeGetTime() {
  return monotonicMillis();
}

}  // namespace vostan::platform
