#pragma once
// A scriptable controller service for tests: devices are described in plain
// fields, can fail at each step or be unplugged between polls, and every call
// that talks to a device is recorded in order.
#include <string>
#include <vector>

#include "platform/input/controller_system.h"

namespace vostan::platform::input {

class FakeControllerSystem final : public ControllerSystem {
 public:
  struct Device {
    std::string name;
    std::vector<ObjectInfo> objects;
    ControllerState state;  // what getState hands out, already in the set range
    bool failCreate = false;
    bool failObjects = false;
    bool failEffect = false;
    bool unplugged = false;  // poll, acquire and getState fail
    Result acquireResult = err::kOk;
    Result pollResult = err::kOk;  // while plugged in
    int opened = 0;                // devices made on it and still alive
  };

  // A device with the given numbers of axes, buttons, hats and force actuators.
  Device& addDevice(const std::string& name, int axes, int buttons, int hats = 0,
                    int actuators = 0);

  bool start() override { return !failStart; }
  Result listDevices(std::vector<DeviceInfo>& out) override;
  std::unique_ptr<ControllerDevice> createDevice(uint32_t instance) override;
  uint32_t timeGetTime() override { return now; }

  std::vector<Device> devices;
  std::vector<std::string> calls;
  uint32_t now = 5000;
  bool failStart = false;
  bool failList = false;
};

}  // namespace vostan::platform::input
