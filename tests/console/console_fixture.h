#pragma once
// A console on the scripted window system, with its Java events recorded.
#include <gtest/gtest.h>

#include "console/win_console.h"
#include "fake_events.h"
#include "platform/fake/fake_window_system.h"

namespace vostan::test {

class ConsoleFixture : public ::testing::Test {
 protected:
  platform::FakeWindowSystem ws;
  FakeEvents events;
  WinConsole* console = nullptr;

  void SetUp() override {
    platform::setWindowSystem(&ws);
    resetPumpStatics();
    console = initConsole();
  }
  void TearDown() override { platform::setWindowSystem(nullptr); }
};

}  // namespace vostan::test
