// The web system of a build without a web engine.
// Implements: nothing but saying so, once, in the log.
// Leaves out: every view (none is ever made).
#include <cstdio>

#include "platform/web/web_view.h"

namespace vostan::platform {

std::unique_ptr<WebSystem> makeDefaultWebSystem();

namespace {
class NoWebSystem final : public WebSystem {
 public:
  std::unique_ptr<WebView> create(WindowHandle, int, int, int, int, WebViewListener*) override {
    if (!said_) std::printf("no web engine in this build: web views stay empty\n");
    said_ = true;
    return nullptr;
  }
  void pump() override {}

 private:
  bool said_ = false;
};
}  // namespace

std::unique_ptr<WebSystem> makeDefaultWebSystem() {
  return std::make_unique<NoWebSystem>();
}

}  // namespace vostan::platform
