#pragma once
// A scriptable web system for tests: views record what is asked of them, and
// a test makes a view "follow a link" by calling its listener.
#include <string>
#include <vector>

#include "platform/web/web_view.h"

namespace vostan::platform {

class FakeWebSystem final : public WebSystem {
 public:
  struct View {
    WindowHandle parent = 0;
    int x = 0, y = 0, width = 0, height = 0;
    WebViewListener* listener = nullptr;
    bool alive = true;
  };

  std::unique_ptr<WebView> create(WindowHandle parent, int x, int y, int width, int height,
                                  WebViewListener* listener) override;
  void pump() override { pumps++; }

  bool noEngine = false;  // create answers null
  int pumps = 0;
  std::vector<View> views;         // every view made, in order
  std::vector<std::string> calls;  // "3 navigate URL", "3 home", "3 destroy" by view number
};

}  // namespace vostan::platform
