#pragma once
// Up to ten web views inside the console window. Java picks a slot, then
// shows, hides or navigates the view in it; a view is made anew at each
// showing and starts from the slot's last URL.
#include <cstdint>
#include <memory>
#include <string>

#include "platform/web/web_view.h"

namespace vostan {

class WinConsole;

struct WebSlot final : platform::WebViewListener {
  int32_t index = 0;
  bool shown = false;                       // the slot's view stands in the window
  std::unique_ptr<platform::WebView> view;  // null while hidden, or with no web engine
  bool hasUrl = false;
  std::u16string url;  // where the view is, or goes next
  int32_t x = 0, y = 0, width = 0, height = 0;

  void beforeNavigate(const std::u16string& target) override {
    url = target;
    hasUrl = true;
  }
};

namespace web {
void select(WinConsole& console, int32_t slot);
// A shown view keeps its place: showing it again does nothing.
void show(WinConsole& console, int32_t x, int32_t y, int32_t width, int32_t height);
void hide(WinConsole& console);
// Null forgets the URL. A shown view goes there at once.
void setUrl(WinConsole& console, const char16_t* url, std::size_t length);
// Null when the slot has no URL.
const std::u16string* url(const WinConsole& console);
// The console window goes: the views in it go with it, though their slots stay
// shown until hidden.
void windowDestroyed(WinConsole& console);
// Once a frame, while any view stands.
void pump(WinConsole& console);
}  // namespace web

}  // namespace vostan
