#pragma once
// A sound device that renders only when asked, into memory the caller reads:
// the same OpenAL mixing as the real output, without a sound card and without
// real time. Its clock is the time rendered so far.
#include <cstdint>
#include <memory>

#include "platform/sound/sound_device.h"

namespace vostan::platform::sound {

// Failures that a test can make the device report.
struct Faults {
  Result createBuffer = err::kOk;
  Result duplicateBuffer = err::kOk;
  Result play = err::kOk;
  bool restoreFails = false;  // a lost buffer stays lost
};

class LoopbackDevice : public Device {
 public:
  static constexpr uint32_t kRate = 44100;

  // Renders interleaved stereo floats; the device's clock advances with them.
  virtual void render(float* stereo, uint32_t frames) = 0;
  virtual uint64_t renderedFrames() const = 0;
  // Every buffer of sample data loses its memory, as when another program
  // takes the device.
  virtual void loseBuffers() = 0;
  virtual Faults& faults() = 0;
  virtual uint32_t window() const = 0;
  virtual WaveFormat primaryFormat() const = 0;
};

// Null if OpenAL has no loopback support.
std::unique_ptr<LoopbackDevice> openLoopbackDevice();

}  // namespace vostan::platform::sound
