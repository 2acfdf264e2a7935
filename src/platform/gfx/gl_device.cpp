// The OpenGL 3.3 core backend.
#include "platform/gfx/gfx.h"

namespace vostan::gfx {

namespace {

// Not drawing yet: reports no display, so no device is made.
class GLDirect3D : public Direct3D {
 public:
  HRESULT getAdapterDisplayMode(uint32_t, DisplayMode&) override { return kNotAvailable; }
  HRESULT getDeviceCaps(uint32_t, int32_t, Caps&) override { return kNotAvailable; }
  HRESULT checkDeviceType(uint32_t, int32_t, int32_t, int32_t, bool) override {
    return kNotAvailable;
  }
  HRESULT checkDeviceFormat(uint32_t, int32_t, int32_t, uint32_t, int32_t, int32_t) override {
    return kNotAvailable;
  }
  HRESULT createDevice(uint32_t, int32_t, uint32_t, uint32_t, PresentParameters&,
                       Device** out) override {
    *out = nullptr;
    return kNotAvailable;
  }
};

}  // namespace

Direct3D* createOpenGLDirect3D() {
  return new GLDirect3D();
}

}  // namespace vostan::gfx
