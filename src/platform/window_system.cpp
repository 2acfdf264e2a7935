#include "platform/window_system.h"

#include "platform/sdl/sdl_window_system.h"

namespace vostan::platform {

namespace {
WindowSystem* installed = nullptr;
}

WindowSystem& windowSystem() {
  if (installed) return *installed;
  // Made on first use and kept: the console's windows live to the end of the process.
  static SdlWindowSystem* sdl = new SdlWindowSystem();
  return *sdl;
}

void setWindowSystem(WindowSystem* system) {
  installed = system;
}

}  // namespace vostan::platform
