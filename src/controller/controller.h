#pragma once
// Game controllers: one scan makes a Controller per attached device (at most
// 100), each polled once a frame into a cached state, with one constant force
// that is sent to the device only when it changes.
#include <cstdint>
#include <memory>

#include "platform/input/controller_system.h"

namespace vostan::controller {

using platform::input::ControllerDevice;
using platform::input::ControllerState;

constexpr int kMaxControllers = 100;
constexpr int kMaxAxisTypes = 21;

struct Controller {
  std::unique_ptr<ControllerDevice> device;
  bool effect = false;  // the constant force was made
  char name[260] = {};
  int32_t numAxes = 0;
  platform::input::AxisKind axisTypes[kMaxAxisTypes] = {};
  int32_t numButtons = 0;
  int32_t numForceAxes = 0;
  ControllerState state;
  float forceX = 0, forceY = 0;
  int32_t forceActive = 0;
  int32_t forceApplied = 0;
  int32_t forceDirty = 0;
  uint32_t forceEndTime = 0;
};

// Frees the former scan and lists the attached devices anew; false when the
// service can't start or can't list (the former controllers are gone either way
// once listing was tried).
bool scan();
int scannedCount();
Controller* scanned(int index);
// The controller a Java handle names, or null for one that is not in the
// present scan (zero, made up, or from an earlier scan).
Controller* fromHandle(int64_t handle);

void poll(Controller* c);
bool setForceFeedback(Controller* c, float x, float y, int32_t duration);
float axisValue(const Controller& c, int axis);
bool isButtonPressed(const Controller& c, int index);

}  // namespace vostan::controller
