#pragma once
// An AudioManager on a loopback device that the test renders.
#include <gtest/gtest.h>

#include <memory>

#include "audio/audio_manager.h"
#include "platform/sound/loopback_device.h"

namespace vostan::test {

// The device that the next AudioManager::create is given.
inline std::unique_ptr<platform::sound::LoopbackDevice>& nextDevice() {
  static std::unique_ptr<platform::sound::LoopbackDevice> device;
  return device;
}

inline platform::sound::Result openNextDevice(std::unique_ptr<platform::sound::Device>* out) {
  if (!nextDevice()) return platform::sound::err::kNoDriver;
  *out = std::move(nextDevice());
  return platform::sound::err::kOk;
}

class AudioFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    nextDevice() = platform::sound::openLoopbackDevice();
    ASSERT_TRUE(nextDevice());
    device = nextDevice().get();
    audio = AudioManager::create(openNextDevice);
    ASSERT_TRUE(audio);
    audio->setWindow(1);
  }

  platform::sound::LoopbackDevice* device = nullptr;
  std::unique_ptr<AudioManager> audio;
};

}  // namespace vostan::test
