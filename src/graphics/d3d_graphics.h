#pragma once
// The graphics state of the process, reached as theConsole.graphics.
// (Device work lands with the graphics device; until then there is no device.)
#include <cstdint>

namespace vostan {

class D3DGraphics {
 public:
  // Makes the device on the console window; negative on failure.
  int32_t createDevice(uint32_t window, int64_t pixelFormat) { return -1; }
  void disposeDevice() {}
  bool hasDevice() const { return false; }
  int32_t beginScene() { return -1; }
  void endScene() {}
  void swapBuffers() {}
  void resetDevice() {}
};

}  // namespace vostan
