#pragma once
// The music system's meeting point: the Java thread posts commands and feeds
// a ring of samples; the mixer thread carries the commands out and keeps the
// device's looping stream buffer full, a quarter at a time. The stream
// buffer, with a wake-up per quarter, is the only thing it asks of the
// platform.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "audio/mdj/mdj_controller.h"
#include "audio/mdj/mdj_event.h"
#include "audio/mdj/mdj_mixer.h"
#include "platform/sound/sound_device.h"

namespace vostan {

// A mixed sample as the stream carries it. An overshoot collapses to one step
// from zero instead of saturating: that is how the stream sounds.
inline int16_t toStreamSample(float v) {
  if (v < -1.0f) return -1;
  if (v > 1.0f) return 1;
  return static_cast<int16_t>(v * 30000.0f);
}

class MDJSoundContext {
 public:
  static constexpr uint32_t kStreamBytes = 65536;
  static constexpr uint32_t kQuarterBytes = kStreamBytes / 4;
  static constexpr int32_t kQuarterFrames = kQuarterBytes / 4;
  static constexpr int32_t kControlStep = 512;
  static constexpr size_t kEventCapacity = 1000;
  static constexpr int32_t kRingFloats = 88200;  // one second of interleaved stereo

  // Each quarter exactly as written to the stream, on the mixer thread.
  using Tap = std::function<void(const int16_t* stereo, int32_t frames)>;

  // Makes the stream buffer on `device` and starts the mixer thread, which
  // plays silence until a song is asked for; returns once the stream plays.
  // Null when the buffer or its notifications can't be had.
  static std::unique_ptr<MDJSoundContext> start(platform::sound::Device& device);
  MDJSoundContext(const MDJSoundContext&) = delete;
  MDJSoundContext& operator=(const MDJSoundContext&) = delete;
  virtual ~MDJSoundContext();

  // Ends the mixer thread and lets go of the stream buffer; no notification
  // reaches the context afterwards, and commands are refused. Idempotent;
  // the destructor calls it.
  void shutdown();
  bool running() const;

  // Opens `path` on the mixer thread as the song that the next trick uses.
  // False when the command queue is full or the thread has ended.
  bool postSong(const char* path);
  bool postTrick(int32_t trick);

  void setVolume(float value) { mixer->setVolume(value); }
  float getVolume() const { return mixer->getVolume(); }

  // Floats queued by writeStream and not yet mixed, two per frame.
  int32_t streamSize();
  // Appends interleaved stereo to the ring, mixed on top of the songs. An odd
  // count, or more than the ring holds, is ignored.
  bool writeStream(const float* data, int32_t count);

  void setTap(Tap tap);
  // Waits until the mixer thread has handled every command and every
  // quarter's wake-up given so far. False on timeout or after shutdown.
  bool waitIdle(std::chrono::milliseconds timeout);
  uint64_t quartersMixed() const;
  // For measuring the thread's own processor time.
  std::thread::native_handle_type threadHandle() { return thread.native_handle(); }

  // Runs `f` under the mixing lock, for a look at the mixer between quarters.
  template <class F>
  void inspect(F f) {
    std::lock_guard<std::recursive_mutex> lock(mixLock);
    f(*mixer, controllers);
  }

 private:
  struct Wake;

  MDJSoundContext();
  void threadMain();
  bool postEvent(std::unique_ptr<MDJEvent> event);
  std::unique_ptr<MDJEvent> takeEvent();
  void handleEvent(MDJEvent& event);
  void mixQuarter(int32_t quarter);
  void releaseSongs();

  std::unique_ptr<platform::sound::Buffer> streamBuffer;
  std::shared_ptr<Wake> wake;
  std::thread thread;
  MDJSong* pendingSong = nullptr;
  MDJSong* previousSong = nullptr;
  std::unique_ptr<MDJMixer> mixer;
  MDJControllerQueue controllers;
  std::unique_ptr<float[]> mixBlock[2];
  std::unique_ptr<float[]> streamRing;
  int32_t writeIndex = 0;  // in floats
  int32_t readPos = 0;
  std::mutex tapLock;
  Tap tap;

  // Around the mixing of a quarter, a trick, the ring; recursive since a
  // trick runs the controllers that the mixing runs too.
  std::recursive_mutex mixLock;
  // Around the event queue only; never held together with mixLock.
  std::mutex eventLock;
  std::deque<std::unique_ptr<MDJEvent>> events;
  std::mutex shutdownLock;
  bool stopped = false;
};

}  // namespace vostan
