#include "platform/gfx/gfx.h"

namespace vostan::gfx {

Direct3D* createOpenGLDirect3D();

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
