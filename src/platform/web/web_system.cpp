#include "platform/web/web_view.h"

namespace vostan::platform {

// Made by the backend the build chose.
std::unique_ptr<WebSystem> makeDefaultWebSystem();

namespace {
WebSystem* installed = nullptr;
}

WebSystem& webSystem() {
  if (installed) return *installed;
  static WebSystem* made = makeDefaultWebSystem().release();
  return *made;
}

void setWebSystem(WebSystem* system) {
  installed = system;
}

}  // namespace vostan::platform
