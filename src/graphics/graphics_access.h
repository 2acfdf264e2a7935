#pragma once
// How the graphics natives reach the graphics state: only once the console
// and its device exist. Before n_init, before n_createGraphics and after
// n_disposeGraphics a native does nothing and answers its "nothing" value.
#include "console/win_console.h"
#include "graphics/d3d_graphics.h"

namespace vostan {

inline D3DGraphics* readyGraphics() {
  const WinConsole* console = theConsole;
  if (!console) return nullptr;
  D3DGraphics* g = console->graphics;
  return g && g->device ? g : nullptr;
}

// The graphics state with or without a device: for the calls that only fill
// the immediate batch.
inline D3DGraphics* batchGraphics() {
  const WinConsole* console = theConsole;
  return console ? console->graphics : nullptr;
}

}  // namespace vostan
