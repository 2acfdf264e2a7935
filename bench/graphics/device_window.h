#pragma once
// A hidden window with a graphics device on it, for the benchmark programs
// that draw or upload through the device without a console.
#include <SDL.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "graphics/d3d_graphics.h"
#include "platform/sdl/sdl_window_system.h"

namespace vostan::bench {

inline int32_t deviceWindowHeight = 0;

struct DeviceWindow {
  SDL_Window* window = nullptr;
  std::unique_ptr<D3DGraphics> graphics;

  DeviceWindow(const char* title, int width, int height) {
    SDL_InitSubSystem(SDL_INIT_VIDEO);
    platform::requestGlContext();
    window = SDL_CreateWindow(title, 0, 0, width, height, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
    deviceWindowHeight = height;
    D3DGraphics::clientHeightSource = [] { return deviceWindowHeight; };
    graphics = std::make_unique<D3DGraphics>();
    if (!window || graphics->createDevice(SDL_GetWindowID(window), 0) < 0) {
      std::fprintf(stderr, "no graphics device: %s\n", SDL_GetError());
      std::exit(1);
    }
  }
};

}  // namespace vostan::bench
