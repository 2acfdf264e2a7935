#pragma once
// Web pages inside the game window, as the console sees them: a view made in a
// window at a rectangle, navigated or sent home, telling the target of each
// navigation before it happens, and destroyed. Backends: WebKitGTK (real, an
// optional component), one that makes no view where there is no web engine,
// and a scriptable double for tests.
#include <memory>
#include <string>

#include "platform/window_system.h"

namespace vostan::platform {

class WebViewListener {
 public:
  // The view is about to go to `url` (links followed in the page included).
  virtual void beforeNavigate(const std::u16string& url) = 0;

 protected:
  ~WebViewListener() = default;
};

class WebView {
 public:
  // Destroys the view and its window.
  virtual ~WebView() = default;
  virtual void navigate(const std::u16string& url) = 0;
  virtual void goHome() = 0;
};

class WebSystem {
 public:
  virtual ~WebSystem() = default;
  // A view inside `parent`'s client area; null when no web engine can make one.
  virtual std::unique_ptr<WebView> create(WindowHandle parent, int x, int y, int width, int height,
                                          WebViewListener* listener) = 0;
  // Lets the views do their pending work; called from the pump, never blocks.
  virtual void pump() = 0;
};

// The backend the library uses: WebKitGTK when built with it, else none.
WebSystem& webSystem();
void setWebSystem(WebSystem* system);  // null: back to the default

}  // namespace vostan::platform
