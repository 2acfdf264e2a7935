// The controller logic over the scriptable service: what a scan finds, how
// the state reads, and what reaches the device for force feedback.
#include "controller/controller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/input/fake_controller_system.h"

namespace vostan::controller {
namespace {

using platform::input::FakeControllerSystem;

class ControllerTest : public ::testing::Test {
 protected:
  void SetUp() override { platform::input::setControllerSystem(&fake); }
  void TearDown() override {
    fake.devices.clear();
    scan();  // frees the controllers before the fake goes
    platform::input::setControllerSystem(nullptr);
  }
  // The force calls since the last look.
  std::vector<std::string> forces() {
    std::vector<std::string> out;
    for (const auto& c : fake.calls)
      if (c.find("force") != std::string::npos) out.push_back(c);
    fake.calls.clear();
    return out;
  }
  FakeControllerSystem fake;
};

TEST_F(ControllerTest, ScanCountsObjectsSetsRangesAndMakesTheForceOnlyWithActuators) {
  fake.addDevice("pad", 6, 32, 1, 0);
  fake.addDevice("wheel", 3, 4, 0, 3);  // three actuators count as two
  fake.addDevice("broken", 2, 2).failCreate = true;
  fake.addDevice("no objects", 2, 2).failObjects = true;
  fake.addDevice("many axes", 30, 200);
  ASSERT_TRUE(scan());
  ASSERT_EQ(scannedCount(), 3);

  const Controller& pad = *scanned(0);
  EXPECT_STREQ(pad.name, "pad");
  EXPECT_EQ(pad.numAxes, 6);
  EXPECT_EQ(pad.numButtons, 32);
  EXPECT_EQ(pad.numForceAxes, 0);
  EXPECT_FALSE(pad.effect);
  const Controller& wheel = *scanned(1);
  EXPECT_STREQ(wheel.name, "wheel");
  EXPECT_EQ(wheel.numForceAxes, 2);
  EXPECT_TRUE(wheel.effect);
  EXPECT_EQ(scanned(2)->numAxes, 30);  // counted past the room for their types

  std::vector<std::string> expected;
  for (int i = 0; i < 6; i++) expected.push_back("0: range " + std::to_string(i) + " -1000 1000");
  for (int i = 0; i < 3; i++) expected.push_back("1: range " + std::to_string(i) + " -1000 1000");
  expected.push_back("1: autocenter off");
  expected.push_back("1: effect 2");
  expected.push_back("3: release");  // the device whose objects could not be listed
  std::vector<std::string> got(fake.calls.begin(), fake.calls.begin() + expected.size());
  EXPECT_EQ(got, expected);
  EXPECT_EQ(fake.devices[3].opened, 0);
}

TEST_F(ControllerTest, ARescanReplacesEveryControllerAndOldHandlesNoLongerResolve) {
  fake.addDevice("a", 2, 2);
  ASSERT_TRUE(scan());
  Controller* old = scanned(0);
  int64_t handle = reinterpret_cast<int64_t>(old);
  EXPECT_EQ(fromHandle(handle), old);
  EXPECT_EQ(fromHandle(0), nullptr);
  EXPECT_EQ(fromHandle(handle + 8), nullptr);

  fake.addDevice("b", 1, 1);
  ASSERT_TRUE(scan());
  EXPECT_EQ(scannedCount(), 2);
  EXPECT_EQ(fake.devices[0].opened, 1);  // the first scan's device was released
  for (int i = 0; i < scannedCount(); i++) EXPECT_NE(reinterpret_cast<int64_t>(scanned(i)), 0);

  fake.failList = true;
  EXPECT_FALSE(scan());
  EXPECT_EQ(scannedCount(), 0);
  fake.failList = false;
  fake.failStart = true;
  EXPECT_FALSE(scan());
}

TEST_F(ControllerTest, OnlyAHundredDevicesAreDelivered) {
  for (int i = 0; i < 101; i++) fake.addDevice("pad" + std::to_string(i), 2, 2);
  ASSERT_TRUE(scan());
  EXPECT_EQ(scannedCount(), 100);
  EXPECT_STREQ(scanned(99)->name, "pad99");
  EXPECT_EQ(fake.devices[100].opened, 0);
}

TEST_F(ControllerTest, StateReadsByPositionAndButtonsOnlyInRange) {
  auto& d = fake.addDevice("pad", 6, 130);
  for (int i = 0; i < 6; i++) d.state.axes[i] = -1000 + 400 * i;
  d.state.buttons[3] = 0x80;
  d.state.buttons[127] = 0x80;
  ASSERT_TRUE(scan());
  Controller& c = *scanned(0);
  poll(&c);
  for (int i = 0; i < 6; i++)
    EXPECT_FLOAT_EQ(axisValue(c, i), static_cast<float>(-1000 + 400 * i) * 0.001f);
  EXPECT_EQ(axisValue(c, 6), 0.0f);
  EXPECT_EQ(axisValue(c, -1), 0.0f);
  EXPECT_TRUE(isButtonPressed(c, 3));
  EXPECT_FALSE(isButtonPressed(c, 4));
  EXPECT_TRUE(isButtonPressed(c, 127));
  EXPECT_FALSE(isButtonPressed(c, 128));  // beyond the state though the device has more
  EXPECT_FALSE(isButtonPressed(c, -1));
  c.numButtons = 3;
  EXPECT_FALSE(isButtonPressed(c, 3));
}

TEST_F(ControllerTest, LostInputIsReacquiredAndAnUnpluggedDeviceFreezesItsState) {
  auto& d = fake.addDevice("pad", 2, 1);
  d.state.axes[0] = 500;
  ASSERT_TRUE(scan());
  Controller& c = *scanned(0);
  poll(&c);
  EXPECT_FLOAT_EQ(axisValue(c, 0), 0.5f);

  fake.devices[0].pollResult = platform::input::err::kNotAcquired;
  fake.devices[0].state.axes[0] = -250;
  fake.calls.clear();
  poll(&c);
  EXPECT_EQ(fake.calls, (std::vector<std::string>{"0: poll", "0: acquire", "0: poll"}));
  EXPECT_FLOAT_EQ(axisValue(c, 0), -0.25f);

  fake.devices[0].pollResult = platform::input::err::kOk;
  fake.devices[0].unplugged = true;
  fake.devices[0].state.axes[0] = 1000;
  poll(&c);
  EXPECT_FLOAT_EQ(axisValue(c, 0), -0.25f);
  fake.devices[0].unplugged = false;
  poll(&c);
  EXPECT_FLOAT_EQ(axisValue(c, 0), 1.0f);

  testing::internal::CaptureStdout();
  poll(nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "no device");
}

TEST_F(ControllerTest, ForcesAreClampedAndSentOnlyWhenTheyChange) {
  fake.addDevice("wheel", 2, 1, 0, 2);
  ASSERT_TRUE(scan());
  Controller& c = *scanned(0);
  forces();

  EXPECT_TRUE(setForceFeedback(&c, 1, 1, 0));
  poll(&c);
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 10000 10000 10000 2"}));

  EXPECT_TRUE(setForceFeedback(&c, 5, -5, 0));
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 10000 -10000 10000 2"}));

  EXPECT_TRUE(setForceFeedback(&c, 0.3f, -0.4f, 0));
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 3000 -4000 5000 2"}));

  // Stopping still talks to the device, with nothing in the numbers.
  EXPECT_TRUE(setForceFeedback(&c, 0, 0, 0));
  poll(&c);
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 0 0 0 2"}));

  float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(setForceFeedback(&c, nan, 0.5f, 0));
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 0 5000 5000 2"}));

  EXPECT_FALSE(setForceFeedback(nullptr, 1, 0, 0));
}

TEST_F(ControllerTest, AForceWithADurationEndsAtThePollAfterItsTime) {
  fake.addDevice("wheel", 2, 1, 0, 1);
  ASSERT_TRUE(scan());
  Controller& c = *scanned(0);
  forces();
  setForceFeedback(&c, 0, 1, 1000);
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 0 10000 10000 1"}));
  fake.now += 999;
  poll(&c);
  EXPECT_TRUE(forces().empty());
  fake.now += 1;
  poll(&c);
  EXPECT_EQ(forces(), (std::vector<std::string>{"0: force 0 0 0 1"}));
  EXPECT_EQ(c.forceActive, 0);
}

TEST_F(ControllerTest, WithoutActuatorsForcesAreAcceptedButNeverSent) {
  fake.addDevice("pad", 2, 1);
  fake.addDevice("wheel", 2, 1, 0, 2).failEffect = true;
  ASSERT_TRUE(scan());
  for (int i = 0; i < 2; i++) {
    EXPECT_TRUE(setForceFeedback(scanned(i), 1, 0, 0));
    poll(scanned(i));
  }
  EXPECT_TRUE(forces().empty());
  EXPECT_EQ(scanned(0)->numForceAxes, 0);
  EXPECT_EQ(scanned(1)->numForceAxes, 2);  // has force feedback, though its effect failed
}

}  // namespace
}  // namespace vostan::controller
