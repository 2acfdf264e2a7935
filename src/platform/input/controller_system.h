#pragma once
// Game controllers as the engine sees them: attached devices listed by name,
// each opened to list its objects (axes, buttons, hats, force actuators), to
// read a polled state and to play one constant force. Results keep the values
// of the Windows input API, so the controller code reads the same on every
// backend. Backends: SDL2 joystick + haptic (real) and a scriptable double.
#include <cstdint>
#include <memory>
#include <vector>

namespace vostan::platform::input {

// Negative values are failures.
using Result = int32_t;
inline bool failed(Result r) {
  return r < 0;
}

namespace err {
constexpr Result kOk = 0;
constexpr Result kGeneric = static_cast<Result>(0x80004005);
constexpr Result kAccessDenied = static_cast<Result>(0x80070005);
constexpr Result kInputLost = static_cast<Result>(0x8007001E);
constexpr Result kNotAcquired = static_cast<Result>(0x8007000C);
constexpr Result kUnplugged = static_cast<Result>(0x80040209);
constexpr Result kUnsupported = static_cast<Result>(0x80004001);
}  // namespace err

// Where an axis sits in the polled state: the six main axes, or elsewhere.
enum class AxisKind : uint8_t { X, Y, Z, RX, RY, RZ, Slider };

struct ObjectInfo {
  enum Kind : uint8_t { Axis, Button, Hat } kind = Button;
  AxisKind axis = AxisKind::X;  // for axes
  uint32_t id = 0;              // names the object in setAxisRange
  bool forceActuator = false;
};

struct DeviceInfo {
  uint32_t instance = 0;  // names the device in createDevice
  char name[260] = {};
};

// The polled state: six axes, two sliders, four hats and 128 buttons.
struct ControllerState {
  int32_t axes[6] = {};
  int32_t sliders[2] = {};
  uint32_t hats[4] = {0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu};
  uint8_t buttons[128] = {};
};

// A constant force: direction in -10000..10000 per axis, magnitude 0..10000.
struct ConstantForce {
  int32_t directionX = 0, directionY = 0;
  int32_t magnitude = 0;
  int32_t axes = 0;
};

class ControllerDevice {
 public:
  virtual ~ControllerDevice() = default;
  virtual Result listObjects(std::vector<ObjectInfo>& out) = 0;
  // Axis values then run linearly from `min` to `max`.
  virtual Result setAxisRange(uint32_t objectId, int32_t min, int32_t max) = 0;
  virtual Result setAutoCenter(bool on) = 0;
  virtual Result poll() = 0;
  virtual Result acquire() = 0;
  virtual Result getState(ControllerState& out) = 0;
  // The device's one constant force, made silent and not started.
  virtual Result createConstantForce(int32_t axes) = 0;
  // New parameters for the force, which (re)starts it.
  virtual Result setConstantForce(const ConstantForce& force) = 0;
};

class ControllerSystem {
 public:
  virtual ~ControllerSystem() = default;
  // Brings the service up; false when there is none. Called before each scan.
  virtual bool start() = 0;
  virtual Result listDevices(std::vector<DeviceInfo>& out) = 0;
  virtual std::unique_ptr<ControllerDevice> createDevice(uint32_t instance) = 0;
  // A monotonic millisecond clock.
  virtual uint32_t timeGetTime() = 0;
};

// The backend the library uses; the SDL one unless a test installed another.
ControllerSystem& controllerSystem();
void setControllerSystem(ControllerSystem* system);  // null: back to the default

}  // namespace vostan::platform::input
