#include "controller/controller.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace vostan::controller {

namespace input = platform::input;

namespace {

Controller* scannedControllers[kMaxControllers];
int scannedControllerCount = 0;

void freeScan() {
  for (int i = 0; i < scannedControllerCount; i++) {
    delete scannedControllers[i];
    scannedControllers[i] = nullptr;
  }
  scannedControllerCount = 0;
}

// Makes a controller of one device; null when a step fails, which leaves the
// device out without a word.
Controller* open(input::ControllerSystem& system, const input::DeviceInfo& info) {
  auto c = std::make_unique<Controller>();
  std::memcpy(c->name, info.name, sizeof c->name);
  c->name[sizeof c->name - 1] = 0;
  c->device = system.createDevice(info.instance);
  if (!c->device) return nullptr;
  std::vector<input::ObjectInfo> objects;
  if (input::failed(c->device->listObjects(objects))) return nullptr;
  for (const input::ObjectInfo& o : objects) {
    if (o.kind == input::ObjectInfo::Axis) {
      c->device->setAxisRange(o.id, -1000, 1000);
      if (c->numAxes < kMaxAxisTypes) c->axisTypes[c->numAxes] = o.axis;
      c->numAxes++;
    } else if (o.kind == input::ObjectInfo::Button) {
      c->numButtons++;
    }
    if (o.forceActuator && ++c->numForceAxes == 3) c->numForceAxes = 2;
  }
  if (c->numForceAxes > 0) {
    c->device->setAutoCenter(false);
    c->effect = !input::failed(c->device->createConstantForce(c->numForceAxes));
  }
  return c.release();
}

}  // namespace

bool scan() {
  input::ControllerSystem& system = input::controllerSystem();
  if (!system.start()) return false;
  freeScan();
  std::vector<input::DeviceInfo> devices;
  if (input::failed(system.listDevices(devices))) return false;
  for (const input::DeviceInfo& d : devices) {
    if (scannedControllerCount == kMaxControllers) break;
    if (Controller* c = open(system, d)) scannedControllers[scannedControllerCount++] = c;
  }
  return true;
}

int scannedCount() {
  return scannedControllerCount;
}

Controller* scanned(int index) {
  return index >= 0 && index < scannedControllerCount ? scannedControllers[index] : nullptr;
}

Controller* fromHandle(int64_t handle) {
  if (handle == 0) return nullptr;
  for (int i = 0; i < scannedControllerCount; i++)
    if (reinterpret_cast<int64_t>(scannedControllers[i]) == handle) return scannedControllers[i];
  return nullptr;
}

void poll(Controller* c) {
  if (!c || !c->device) {
    std::printf("no device");
    return;
  }
  ControllerDevice& d = *c->device;
  if (input::failed(d.poll())) {
    // Lost input (another user of the device, or unplugged) is taken back here;
    // until then the old state stays and the values freeze.
    if (input::failed(d.acquire())) return;
    d.poll();
  }
  ControllerState fresh;
  if (input::failed(d.getState(fresh))) return;
  c->state = fresh;

  uint32_t now = input::controllerSystem().timeGetTime();
  if (c->forceActive && c->forceEndTime && c->forceEndTime <= now) c->forceActive = 0;
  if (!c->effect) return;
  if (c->forceActive == c->forceApplied && !c->forceDirty) return;

  input::ConstantForce f;
  f.axes = c->numForceAxes;
  if (c->forceActive) {
    f.directionX = static_cast<int32_t>(c->forceX * 10000);
    f.directionY = static_cast<int32_t>(c->forceY * 10000);
    float magnitude = std::sqrt(c->forceX * c->forceX + c->forceY * c->forceY) * 10000;
    f.magnitude = static_cast<int32_t>(std::min(magnitude, 10000.0f));
  }
  d.setConstantForce(f);
  c->forceApplied = c->forceActive;
  c->forceDirty = 0;
}

bool setForceFeedback(Controller* c, float x, float y, int32_t duration) {
  if (!c) return false;
  if (x == 0 && y == 0) {
    c->forceActive = 0;
    return true;
  }
  // Not-a-number reads as no force along that axis.
  auto clamp = [](float v) { return v > 1.0f ? 1.0f : v < -1.0f ? -1.0f : v == v ? v : 0.0f; };
  c->forceX = clamp(x);
  c->forceY = clamp(y);
  c->forceActive = 1;
  c->forceDirty = 1;
  c->forceEndTime =
      duration >= 1 ? input::controllerSystem().timeGetTime() + static_cast<uint32_t>(duration) : 0;
  return true;
}

float axisValue(const Controller& c, int axis) {
  if (axis < 0 || axis > 5) return 0.0f;
  return static_cast<float>(c.state.axes[axis]) * 0.001f;
}

bool isButtonPressed(const Controller& c, int index) {
  // The state holds 128 buttons however many the device says it has.
  return index >= 0 && index < c.numButtons && index < 128 && c.state.buttons[index] != 0;
}

}  // namespace vostan::controller
