#include "platform/input/fake_controller_system.h"

#include <cstdio>

namespace vostan::platform::input {

namespace {

class FakeDevice final : public ControllerDevice {
 public:
  FakeDevice(FakeControllerSystem& system, size_t index) : system_(system), index_(index) {
    device().opened++;
  }
  ~FakeDevice() override {
    device().opened--;
    log("release");
  }

  Result listObjects(std::vector<ObjectInfo>& out) override {
    if (device().failObjects) return err::kGeneric;
    out = device().objects;
    return err::kOk;
  }
  Result setAxisRange(uint32_t id, int32_t min, int32_t max) override {
    log("range " + std::to_string(id) + " " + std::to_string(min) + " " + std::to_string(max));
    return err::kOk;
  }
  Result setAutoCenter(bool on) override {
    log(on ? "autocenter on" : "autocenter off");
    return err::kOk;
  }
  Result poll() override {
    log("poll");
    return device().unplugged ? err::kInputLost : device().pollResult;
  }
  Result acquire() override {
    log("acquire");
    return device().unplugged ? err::kUnplugged : device().acquireResult;
  }
  Result getState(ControllerState& out) override {
    if (device().unplugged) return err::kInputLost;
    out = device().state;
    return err::kOk;
  }
  Result createConstantForce(int32_t axes) override {
    log("effect " + std::to_string(axes));
    return device().failEffect ? err::kGeneric : err::kOk;
  }
  Result setConstantForce(const ConstantForce& f) override {
    log("force " + std::to_string(f.directionX) + " " + std::to_string(f.directionY) + " " +
        std::to_string(f.magnitude) + " " + std::to_string(f.axes));
    return err::kOk;
  }

 private:
  FakeControllerSystem::Device& device() { return system_.devices[index_]; }
  void log(const std::string& what) {
    system_.calls.push_back(std::to_string(index_) + ": " + what);
  }

  FakeControllerSystem& system_;
  size_t index_;
};

}  // namespace

FakeControllerSystem::Device& FakeControllerSystem::addDevice(const std::string& name, int axes,
                                                              int buttons, int hats,
                                                              int actuators) {
  Device d;
  d.name = name;
  for (int i = 0; i < axes; i++) {
    ObjectInfo o;
    o.kind = ObjectInfo::Axis;
    o.axis = i < 6 ? static_cast<AxisKind>(i) : AxisKind::Slider;
    o.id = static_cast<uint32_t>(i);
    o.forceActuator = i < actuators;
    d.objects.push_back(o);
  }
  for (int i = 0; i < buttons; i++) {
    ObjectInfo o;
    o.kind = ObjectInfo::Button;
    o.id = 0x100u + static_cast<uint32_t>(i);
    d.objects.push_back(o);
  }
  for (int i = 0; i < hats; i++) {
    ObjectInfo o;
    o.kind = ObjectInfo::Hat;
    o.id = 0x1000u + static_cast<uint32_t>(i);
    d.objects.push_back(o);
  }
  devices.push_back(d);
  return devices.back();
}

Result FakeControllerSystem::listDevices(std::vector<DeviceInfo>& out) {
  out.clear();
  if (failList) return err::kGeneric;
  for (size_t i = 0; i < devices.size(); i++) {
    DeviceInfo d;
    d.instance = static_cast<uint32_t>(i);
    std::snprintf(d.name, sizeof d.name, "%s", devices[i].name.c_str());
    out.push_back(d);
  }
  return err::kOk;
}

std::unique_ptr<ControllerDevice> FakeControllerSystem::createDevice(uint32_t instance) {
  if (instance >= devices.size() || devices[instance].failCreate) return nullptr;
  return std::make_unique<FakeDevice>(*this, instance);
}

}  // namespace vostan::platform::input
