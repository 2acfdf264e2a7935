#include "console/web_views.h"

#include "console/win_console.h"

namespace vostan::web {

namespace {
WebSlot& selected(WinConsole& c) {
  return c.webSlots[c.selectedWebSlot];
}
}  // namespace

void select(WinConsole& console, int32_t slot) {
  if (slot >= 0 && slot <= 9) console.selectedWebSlot = slot;
}

void show(WinConsole& console, int32_t x, int32_t y, int32_t width, int32_t height) {
  WebSlot& s = selected(console);
  if (s.shown) return;
  s.x = x;
  s.y = y;
  s.width = width;
  s.height = height;
  s.shown = true;
  s.view = platform::webSystem().create(console.window, x, y, width, height, &s);
  if (!s.view) return;
  if (s.hasUrl)
    s.view->navigate(s.url);
  else
    s.view->goHome();
}

void hide(WinConsole& console) {
  WebSlot& s = selected(console);
  if (!s.shown) return;
  s.view.reset();
  s.shown = false;
}

void setUrl(WinConsole& console, const char16_t* url, std::size_t length) {
  WebSlot& s = selected(console);
  s.hasUrl = url != nullptr;
  s.url = url ? std::u16string(url, length) : std::u16string();
  if (s.shown && s.hasUrl && s.view) s.view->navigate(s.url);
}

const std::u16string* url(const WinConsole& console) {
  const WebSlot& s = console.webSlots[console.selectedWebSlot];
  return s.hasUrl ? &s.url : nullptr;
}

void windowDestroyed(WinConsole& console) {
  for (WebSlot& s : console.webSlots) s.view.reset();
}

void pump(WinConsole& console) {
  for (const WebSlot& s : console.webSlots) {
    if (s.view) {
      platform::webSystem().pump();
      return;
    }
  }
}

}  // namespace vostan::web
