#include "platform/web/fake_web_system.h"

namespace vostan::platform {

namespace {

std::string narrow(const std::u16string& s) {
  std::string out;
  for (char16_t c : s) out += c < 128 ? static_cast<char>(c) : '?';
  return out;
}

class FakeWebView final : public WebView {
 public:
  FakeWebView(FakeWebSystem& system, size_t index) : system_(system), index_(index) {}
  ~FakeWebView() override {
    system_.views[index_].alive = false;
    log("destroy");
  }
  void navigate(const std::u16string& url) override {
    log("navigate " + narrow(url));
    // A real view is told of its own navigation too.
    system_.views[index_].listener->beforeNavigate(url);
  }
  void goHome() override { log("home"); }

 private:
  void log(const std::string& what) {
    system_.calls.push_back(std::to_string(index_) + " " + what);
  }
  FakeWebSystem& system_;
  size_t index_;
};

}  // namespace

std::unique_ptr<WebView> FakeWebSystem::create(WindowHandle parent, int x, int y, int width,
                                               int height, WebViewListener* listener) {
  if (noEngine) return nullptr;
  views.push_back(View{parent, x, y, width, height, listener, true});
  calls.push_back(std::to_string(views.size() - 1) + " create");
  return std::make_unique<FakeWebView>(*this, views.size() - 1);
}

}  // namespace vostan::platform
