#include "platform/desktop_windows.h"

#include <cstdio>
#include <string>

namespace vostan::platform {

namespace {

class NoDesktopWindows final : public DesktopWindows {
 public:
  explicit NoDesktopWindows(const char* where) : where_(where ? where : "") {}
  void enumWindows(EnumWindowsProc, void*) override {
    if (told_) return;
    told_ = true;
    std::printf("desktop windows: not listed on %s, their places are not kept\n", where_.c_str());
  }
  bool getWindowPlacement(DesktopWindow, WindowPlacement&) override { return false; }
  void setWindowPlacement(DesktopWindow, const WindowPlacement&) override {}

 private:
  std::string where_;
  bool told_ = false;
};

}  // namespace

std::unique_ptr<DesktopWindows> noDesktopWindows(const char* where) {
  return std::make_unique<NoDesktopWindows>(where);
}

}  // namespace vostan::platform
