#pragma once
// A sound device whose stream buffers play only when a test says so: the play
// cursor moves by advance(), which calls the notifications it passes on the
// caller's thread. Implements the stream operations (lock, unlock, play,
// stop, position, notifications) and records calls; leaves out the primary
// buffer, static clips, duplicates, the listener and 3D, which answer
// kUnsupported. No sound is made and no library is needed.
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/sound/sound_device.h"

namespace vostan::platform::sound {

// What became of the streams a device made, readable after they are gone.
struct StreamJournal {
  std::mutex mutex;
  int made = 0;
  int released = 0;
  bool playingAtRelease = false;       // of the last one released
  bool notificationAtRelease = false;  // a callback was still set
};

class ScriptedStream final : public Buffer {
 public:
  explicit ScriptedStream(const BufferDesc& desc, std::shared_ptr<StreamJournal> journal = nullptr);
  ~ScriptedStream() override;

  // Set to a failure to have notifications refused.
  Result notifyFault = err::kOk;

  // Moves the cursor on by `bytes` while playing and calls back for each
  // notification position passed, as the cursor moves beyond it.
  void advance(uint32_t bytes);
  // A copy of `bytes` of the data from `offset`, wrapping around.
  std::vector<uint8_t> read(uint32_t offset, uint32_t bytes);
  uint32_t size() const { return static_cast<uint32_t>(data_.size()); }
  bool isPlaying();
  bool hasNotification();
  int lockCount();

  Result lock(uint32_t offset, uint32_t bytes, void** p1, uint32_t* n1, void** p2,
              uint32_t* n2) override;
  Result unlock(void* p1, uint32_t n1, void* p2, uint32_t n2) override;
  Result getCurrentPosition(uint32_t* play, uint32_t* write) override;
  Result setCurrentPosition(uint32_t byteOffset) override;
  Result play(bool looping) override;
  Result stop() override;
  Result getStatus(uint32_t* status) override;
  Result restore() override { return err::kOk; }
  Result setVolume(int32_t) override { return err::kOk; }
  Result getVolume(int32_t* v) override;
  Result setPan(int32_t) override { return err::kOk; }
  Result getPan(int32_t* p) override;
  Result setFrequency(uint32_t) override { return err::kOk; }
  Result getFrequency(uint32_t* hz) override;
  Result setFormat(const WaveFormat&) override { return err::kInvalidCall; }
  bool is3D() const override { return false; }
  Result setMinDistance(float, Apply) override { return err::kControlUnavail; }
  Result setMaxDistance(float, Apply) override { return err::kControlUnavail; }
  Result setPosition(const Vec3&, Apply) override { return err::kControlUnavail; }
  Result setVelocity(const Vec3&, Apply) override { return err::kControlUnavail; }
  Result setNotificationPositions(const uint32_t* offsets, int count, NotifyFn notify) override;

 private:
  std::mutex mutex_;
  std::vector<uint8_t> data_;
  uint32_t flags_;
  uint32_t rate_;
  uint32_t cursor_ = 0;
  bool playing_ = false;
  int locks_ = 0;
  std::vector<uint32_t> positions_;
  NotifyFn notify_;
  std::shared_ptr<StreamJournal> journal_;
};

class ScriptedStreamDevice final : public Device {
 public:
  // Set to a failure to have the next buffers refused.
  Result createFault = err::kOk;
  Result notifyFault = err::kOk;
  // The last stream made; owned by whoever asked for it.
  ScriptedStream* lastStream = nullptr;
  std::shared_ptr<StreamJournal> journal = std::make_shared<StreamJournal>();

  Result setCooperativeLevel(uint32_t, uint32_t) override { return err::kOk; }
  Result createBuffer(const BufferDesc& desc, std::unique_ptr<Buffer>* out) override;
  Result duplicateBuffer(Buffer&, std::unique_ptr<Buffer>*) override { return err::kUnsupported; }
  Result queryListener(Buffer&, Listener**) override { return err::kUnsupported; }
  uint32_t timeMillis() override { return 0; }
};

}  // namespace vostan::platform::sound
