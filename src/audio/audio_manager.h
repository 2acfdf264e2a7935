#pragma once
// The sound device's owner: the device, its primary buffer, the 3D listener
// and the master volume of clip sounds. One per process; the console hands it
// each new window.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "platform/sound/sound_device.h"

namespace vostan {

class AudioManager {
 public:
  using Opener = platform::sound::Result (*)(std::unique_ptr<platform::sound::Device>*);

  // Opens the device with its primary buffer and listener. On failure prints
  // why and returns null.
  static std::unique_ptr<AudioManager> create(Opener open = platform::sound::openDefaultDevice);
  AudioManager();
  // Shuts down: no thread of ours runs into a closed device.
  virtual ~AudioManager();
  AudioManager(const AudioManager&) = delete;
  AudioManager& operator=(const AudioManager&) = delete;

  // Whatever feeds the device from a thread of its own (the music mixer)
  // registers how to stop; stopDeviceUsers runs all of them. removeDeviceUser
  // waits for a stop that is running.
  int32_t addDeviceUser(std::function<void()> stop);
  void removeDeviceUser(int32_t id);
  void stopDeviceUsers();

  // The one place where sound ends: the device's users stop, so every thread
  // that feeds the device has ended; then the device closes. The object
  // stays, so contexts made on it keep a valid owner and their calls change
  // nothing. Runs once; process exit runs it for every manager still open,
  // before the sound library tears itself down.
  void shutdown();
  bool isClosed() const { return closed; }

  // Virtual so that the console calls it without linking the sound code.
  // Window 0 drops the window and keeps the device.
  virtual void setWindow(uint32_t window);

  int32_t setPrimaryFormat(int channels, int rate, int bits);
  int32_t commit();
  // Position, front and top, x y z each.
  int32_t setListener(const float values[9]);
  void getListener(float values[9]) const;
  uint32_t timeMillis() { return directSound->timeMillis(); }

  uint32_t windowHandle = 0;
  std::unique_ptr<platform::sound::Device> directSound;
  std::unique_ptr<platform::sound::Buffer> primaryBuffer;
  platform::sound::Listener* listener = nullptr;
  float masterVolume = 1.0f;
  float masterPan = 1.0f;
  int32_t speakerConfig = 1;
  platform::sound::ListenerParams listenerParameters;
  uint32_t lastListenerTime = 0;

 private:
  std::mutex usersLock;
  std::map<int32_t, std::function<void()>> deviceUsers;
  int32_t nextUser = 1;
  bool closed = false;
};

// Shuts every open manager down; process exit calls it.
void shutdownAllAudio();

// Prints the name of a device result on standard output.
void describeResult(int32_t result);

}  // namespace vostan
