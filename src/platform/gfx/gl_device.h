#pragma once
// The OpenGL 3.3 core backend: devices in the GL context of an SDL window
// made with SDL_WINDOW_OPENGL, found by its window ID.
#include "platform/gfx/gfx.h"

namespace vostan::gfx {

Direct3D* createOpenGLDirect3D();

}  // namespace vostan::gfx
