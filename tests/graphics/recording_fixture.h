#pragma once
// A D3DGraphics on the recording device, with the console's client height
// and the wait for a lost device under the test's control.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "graphics/d3d_graphics.h"
#include "platform/gfx/recording_device.h"

namespace vostan::test {

inline int32_t gClientHeight = 480;
inline int gWaits = 0;

class RecordingGraphics : public ::testing::Test {
 protected:
  void SetUp() override {
    gfx::setDirect3D(&system);
    D3DGraphics::clientHeightSource = [] { return gClientHeight; };
    D3DGraphics::waitForWindow = [] { ++gWaits; };
    gClientHeight = 480;
    gWaits = 0;
    graphics = std::make_unique<D3DGraphics>();
  }
  void TearDown() override {
    graphics.reset();
    gfx::setDirect3D(nullptr);
  }

  // Makes the device and forgets the calls that made it.
  void create() {
    ::testing::internal::CaptureStdout();
    ASSERT_GE(graphics->createDevice(7, 0), 0);
    ::testing::internal::GetCapturedStdout();
    system.log.clear();
  }
  gfx::RecordingDevice& device() { return *system.lastDevice; }
  uint32_t renderState(uint32_t s) { return device().state().renderStates[s]; }

  // The log lines that start with `prefix`, in order.
  std::vector<std::string> calls(const std::string& prefix) const {
    std::vector<std::string> out;
    for (const auto& line : system.log)
      if (line.rfind(prefix, 0) == 0) out.push_back(line);
    return out;
  }

  gfx::RecordingDirect3D system;
  std::unique_ptr<D3DGraphics> graphics;
};

}  // namespace vostan::test
