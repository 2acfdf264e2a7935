#include "platform/gfx/gfx.h"

#include "platform/gfx/gl_device.h"

namespace vostan::gfx {

namespace {
Direct3D* installed = nullptr;
}

Direct3D& direct3D() {
  if (installed) return *installed;
  static Direct3D* openGL = createOpenGLDirect3D();
  return *openGL;
}

void setDirect3D(Direct3D* system) {
  installed = system;
}

}  // namespace vostan::gfx
