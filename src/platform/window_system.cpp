#include "platform/window_system.h"

#include "platform/sdl/sdl_window_system.h"
#include "platform/win32_defs.h"

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

bool displayModeListed(WindowSystem& system, const DisplayMode& mode) {
  DisplayMode listed;
  for (int i = 0; system.enumDisplaySettings(i, listed); ++i) {
    if (listed.width != mode.width || listed.height != mode.height) continue;
    if ((mode.fields & win::DM_BITSPERPEL) && listed.bits != mode.bits) continue;
    if ((mode.fields & win::DM_DISPLAYFREQUENCY) && listed.refresh != mode.refresh) continue;
    return true;
  }
  return false;
}

void setWindowSystem(WindowSystem* system) {
  installed = system;
}

}  // namespace vostan::platform
