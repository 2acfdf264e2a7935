#pragma once
// The sound device's owner. The console hands it each new window.
#include <cstdint>

namespace vostan {

class AudioManager {
 public:
  virtual ~AudioManager() = default;
  virtual void setWindow(uint32_t window) {}
};

}  // namespace vostan
