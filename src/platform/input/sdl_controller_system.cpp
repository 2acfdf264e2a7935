// Game controllers over SDL2's joystick and haptic subsystems.
// Implements: listing attached joysticks by name, axes (in SDL's order, the
// first six as X, Y, Z, RX, RY, RZ, the rest as sliders), buttons, hats,
// polling with unplugging reported as lost input, linear axis ranges, and one
// constant force with a cartesian direction where the device has haptics.
// Leaves out: exclusive access (SDL has none: acquiring only checks the device
// is still attached), axis types reported by the device, and the joystick
// event queue (devices are polled).
#include <SDL.h>
#include <time.h>

#include <cstdio>
#include <cstring>

#include "platform/input/controller_system.h"

namespace vostan::platform::input {

namespace {

class SdlControllerDevice final : public ControllerDevice {
 public:
  explicit SdlControllerDevice(SDL_Joystick* joystick) : joystick_(joystick) {
    if (SDL_WasInit(SDL_INIT_HAPTIC) && SDL_JoystickIsHaptic(joystick_) == SDL_TRUE) {
      haptic_ = SDL_HapticOpenFromJoystick(joystick_);
      if (haptic_ && !(SDL_HapticQuery(haptic_) & SDL_HAPTIC_CONSTANT)) {
        SDL_HapticClose(haptic_);
        haptic_ = nullptr;
      }
    }
    int axes = SDL_JoystickNumAxes(joystick_);
    for (int i = 0; i < axes && i < kMaxAxes; i++) ranges_[i] = {-32768, 32767};
  }

  ~SdlControllerDevice() override {
    if (haptic_) {
      if (effect_ >= 0) SDL_HapticDestroyEffect(haptic_, effect_);
      SDL_HapticClose(haptic_);
    }
    SDL_JoystickClose(joystick_);
  }

  Result listObjects(std::vector<ObjectInfo>& out) override {
    out.clear();
    int axes = SDL_JoystickNumAxes(joystick_);
    int actuators = haptic_ ? SDL_HapticNumAxes(haptic_) : 0;
    for (int i = 0; i < axes && i < kMaxAxes; i++) {
      ObjectInfo o;
      o.kind = ObjectInfo::Axis;
      o.axis = i < 6 ? static_cast<AxisKind>(i) : AxisKind::Slider;
      o.id = static_cast<uint32_t>(i);
      o.forceActuator = i < actuators;
      out.push_back(o);
    }
    for (int i = 0; i < SDL_JoystickNumButtons(joystick_); i++) {
      ObjectInfo o;
      o.kind = ObjectInfo::Button;
      o.id = kButtonIds + static_cast<uint32_t>(i);
      out.push_back(o);
    }
    for (int i = 0; i < SDL_JoystickNumHats(joystick_); i++) {
      ObjectInfo o;
      o.kind = ObjectInfo::Hat;
      o.id = kHatIds + static_cast<uint32_t>(i);
      out.push_back(o);
    }
    return err::kOk;
  }

  Result setAxisRange(uint32_t objectId, int32_t min, int32_t max) override {
    if (objectId >= kMaxAxes || min >= max) return err::kGeneric;
    ranges_[objectId] = {min, max};
    return err::kOk;
  }

  Result setAutoCenter(bool on) override {
    if (!haptic_ || !(SDL_HapticQuery(haptic_) & SDL_HAPTIC_AUTOCENTER)) return err::kUnsupported;
    return SDL_HapticSetAutocenter(haptic_, on ? 100 : 0) == 0 ? err::kOk : err::kGeneric;
  }

  Result poll() override {
    SDL_JoystickUpdate();
    return SDL_JoystickGetAttached(joystick_) ? err::kOk : err::kInputLost;
  }

  Result acquire() override {
    return SDL_JoystickGetAttached(joystick_) ? err::kOk : err::kUnplugged;
  }

  Result getState(ControllerState& out) override {
    if (!SDL_JoystickGetAttached(joystick_)) return err::kInputLost;
    out = ControllerState{};
    int axes = SDL_JoystickNumAxes(joystick_);
    int sliders = 0;
    for (int i = 0; i < axes && i < kMaxAxes; i++) {
      int32_t v = scaled(i, SDL_JoystickGetAxis(joystick_, i));
      if (i < 6)
        out.axes[i] = v;
      else if (sliders < 2)
        out.sliders[sliders++] = v;
    }
    int hats = SDL_JoystickNumHats(joystick_);
    for (int i = 0; i < hats && i < 4; i++)
      out.hats[i] = hatAngle(SDL_JoystickGetHat(joystick_, i));
    int buttons = SDL_JoystickNumButtons(joystick_);
    for (int i = 0; i < buttons && i < 128; i++)
      out.buttons[i] = SDL_JoystickGetButton(joystick_, i) ? 0x80 : 0;
    return err::kOk;
  }

  Result createConstantForce(int32_t axes) override {
    if (!haptic_) return err::kUnsupported;
    SDL_HapticEffect e = constant(0, 0, 0);
    effect_ = SDL_HapticNewEffect(haptic_, &e);
    return effect_ >= 0 ? err::kOk : err::kGeneric;
  }

  Result setConstantForce(const ConstantForce& force) override {
    if (!haptic_ || effect_ < 0) return err::kGeneric;
    SDL_HapticEffect e = constant(force.directionX, force.directionY, force.magnitude);
    if (SDL_HapticUpdateEffect(haptic_, effect_, &e) != 0) return err::kGeneric;
    return SDL_HapticRunEffect(haptic_, effect_, 1) == 0 ? err::kOk : err::kGeneric;
  }

 private:
  static constexpr int kMaxAxes = 32;
  static constexpr uint32_t kButtonIds = 0x100;
  static constexpr uint32_t kHatIds = 0x1000;
  struct Range {
    int32_t min = -32768, max = 32767;
  };

  int32_t scaled(int axis, int16_t raw) const {
    const Range& r = ranges_[axis];
    int64_t span = static_cast<int64_t>(r.max) - r.min;
    return static_cast<int32_t>(r.min + (static_cast<int64_t>(raw) + 32768) * span / 65535);
  }

  // Hats as hundredths of a degree clockwise from north; centred is all ones.
  static uint32_t hatAngle(Uint8 hat) {
    switch (hat) {
      case SDL_HAT_UP:
        return 0;
      case SDL_HAT_RIGHTUP:
        return 4500;
      case SDL_HAT_RIGHT:
        return 9000;
      case SDL_HAT_RIGHTDOWN:
        return 13500;
      case SDL_HAT_DOWN:
        return 18000;
      case SDL_HAT_LEFTDOWN:
        return 22500;
      case SDL_HAT_LEFT:
        return 27000;
      case SDL_HAT_LEFTUP:
        return 31500;
      default:
        return 0xFFFFFFFFu;
    }
  }

  static SDL_HapticEffect constant(int32_t x, int32_t y, int32_t magnitude) {
    SDL_HapticEffect e;
    std::memset(&e, 0, sizeof e);
    e.type = SDL_HAPTIC_CONSTANT;
    e.constant.direction.type = SDL_HAPTIC_CARTESIAN;
    e.constant.direction.dir[0] = x;
    e.constant.direction.dir[1] = y;
    e.constant.length = SDL_HAPTIC_INFINITY;
    e.constant.level = static_cast<Sint16>(magnitude * 32767 / 10000);
    return e;
  }

  SDL_Joystick* joystick_;
  SDL_Haptic* haptic_ = nullptr;
  int effect_ = -1;
  Range ranges_[kMaxAxes];
};

class SdlControllerSystem final : public ControllerSystem {
 public:
  bool start() override {
    if (!SDL_WasInit(SDL_INIT_JOYSTICK)) {
      if (SDL_InitSubSystem(SDL_INIT_JOYSTICK) != 0) return false;
      // Controllers are polled; their events would only fill the queue.
      SDL_JoystickEventState(SDL_IGNORE);
    }
    // Force feedback is a bonus: without haptics the joysticks still work.
    if (!SDL_WasInit(SDL_INIT_HAPTIC) && !hapticTried_) {
      hapticTried_ = true;
      SDL_InitSubSystem(SDL_INIT_HAPTIC);
    }
    return true;
  }

  Result listDevices(std::vector<DeviceInfo>& out) override {
    out.clear();
    int count = SDL_NumJoysticks();
    if (count < 0) return err::kGeneric;
    for (int i = 0; i < count; i++) {
      DeviceInfo d;
      d.instance = static_cast<uint32_t>(SDL_JoystickGetDeviceInstanceID(i));
      const char* name = SDL_JoystickNameForIndex(i);
      std::snprintf(d.name, sizeof d.name, "%s", name ? name : "");
      out.push_back(d);
    }
    return err::kOk;
  }

  std::unique_ptr<ControllerDevice> createDevice(uint32_t instance) override {
    int count = SDL_NumJoysticks();
    for (int i = 0; i < count; i++) {
      if (static_cast<uint32_t>(SDL_JoystickGetDeviceInstanceID(i)) != instance) continue;
      SDL_Joystick* j = SDL_JoystickOpen(i);
      if (!j) return nullptr;
      return std::make_unique<SdlControllerDevice>(j);
    }
    return nullptr;
  }

  uint32_t timeGetTime() override {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<uint32_t>(static_cast<uint64_t>(t.tv_sec) * 1000u + t.tv_nsec / 1000000);
  }

 private:
  bool hapticTried_ = false;
};

ControllerSystem* installed = nullptr;

}  // namespace

ControllerSystem& controllerSystem() {
  if (installed) return *installed;
  static SdlControllerSystem* sdl = new SdlControllerSystem();
  return *sdl;
}

void setControllerSystem(ControllerSystem* system) {
  installed = system;
}

}  // namespace vostan::platform::input
