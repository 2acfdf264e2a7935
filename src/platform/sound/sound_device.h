#pragma once
// The sound device as the audio code sees it: buffers of PCM data that play as
// voices, duplicates that share one buffer's data, a 3D listener, and rings
// with notification positions for streamed output. Results and flag words keep
// the values of the Windows sound API, so logs and callers read the same on
// every backend.
#include <cstdint>
#include <functional>
#include <memory>

namespace vostan::platform::sound {

// Negative values are failures.
using Result = int32_t;
inline bool failed(Result r) {
  return r < 0;
}

namespace err {
constexpr Result kOk = 0;
constexpr Result kAllocated = static_cast<Result>(0x8878000A);
constexpr Result kControlUnavail = static_cast<Result>(0x8878001E);
constexpr Result kInvalidParam = static_cast<Result>(0x80070057);
constexpr Result kInvalidCall = static_cast<Result>(0x88780032);
constexpr Result kGeneric = static_cast<Result>(0x80004005);
constexpr Result kPrioLevelNeeded = static_cast<Result>(0x88780046);
constexpr Result kBadFormat = static_cast<Result>(0x88780064);
constexpr Result kBufferLost = static_cast<Result>(0x88780096);
constexpr Result kNoInterface = static_cast<Result>(0x80004002);
constexpr Result kUnsupported = static_cast<Result>(0x80004001);
constexpr Result kOutOfMemory = static_cast<Result>(0x8007000E);
constexpr Result kNoDriver = static_cast<Result>(0x88780078);
}  // namespace err

// Buffer capabilities.
constexpr uint32_t kPrimaryBuffer = 0x1;
constexpr uint32_t kStatic = 0x2;
constexpr uint32_t kCtrl3D = 0x10;
constexpr uint32_t kCtrlFrequency = 0x20;
constexpr uint32_t kCtrlPan = 0x40;
constexpr uint32_t kCtrlVolume = 0x80;
constexpr uint32_t kCtrlPositionNotify = 0x100;
constexpr uint32_t kGlobalFocus = 0x8000;
constexpr uint32_t kGetCurrentPosition2 = 0x10000;
constexpr uint32_t kMute3DAtMaxDistance = 0x20000;

// Status bits of getStatus.
constexpr uint32_t kStatusPlaying = 0x1;
constexpr uint32_t kStatusBufferLost = 0x2;
constexpr uint32_t kStatusLooping = 0x4;

// Volume and pan are in hundredths of a decibel.
constexpr int32_t kVolumeMin = -10000;
constexpr int32_t kVolumeMax = 0;
constexpr int32_t kPanLeft = -10000;
constexpr int32_t kPanRight = 10000;
constexpr uint32_t kFrequencyOriginal = 0;
constexpr uint32_t kFrequencyMin = 100;
constexpr uint32_t kFrequencyMax = 200000;

constexpr uint32_t kPriorityLevel = 2;

// How a 3D voice is rendered; backends without a choice render all alike.
enum class Algorithm { Default, NoVirtualization, HrtfLight, HrtfFull };

// Immediate settings are heard at once; deferred ones wait for
// Listener::commitDeferredSettings.
enum class Apply { Immediate, Deferred };

struct WaveFormat {
  uint16_t channels = 2;
  uint32_t rate = 44100;
  uint16_t bits = 16;
  uint32_t blockAlign() const { return (bits >> 3) * channels; }
};

struct BufferDesc {
  uint32_t flags = 0;
  uint32_t bytes = 0;  // 0 for the primary buffer
  WaveFormat format;
  Algorithm algorithm = Algorithm::Default;
};

// Left-handed coordinates: x right, y up, z into the screen.
struct Vec3 {
  float x = 0, y = 0, z = 0;
};

struct ListenerParams {
  Vec3 position;
  Vec3 velocity;
  Vec3 front{0, 0, 1};
  Vec3 top{0, 1, 0};
  float distanceFactor = 1.0f;  // metres per unit
  float rolloffFactor = 1.0f;
  float dopplerFactor = 1.0f;
};

// Called on the device's own thread, outside every lock of the device, with
// the index of the position that the play cursor has just passed.
using NotifyFn = std::function<void(int index)>;

class Buffer {
 public:
  virtual ~Buffer() = default;

  // Direct access to the data: up to two regions when the range wraps.
  virtual Result lock(uint32_t offset, uint32_t bytes, void** p1, uint32_t* n1, void** p2,
                      uint32_t* n2) = 0;
  virtual Result unlock(void* p1, uint32_t n1, void* p2, uint32_t n2) = 0;

  virtual Result getCurrentPosition(uint32_t* play, uint32_t* write) = 0;
  virtual Result setCurrentPosition(uint32_t byteOffset) = 0;
  virtual Result play(bool looping) = 0;
  // Stops without rewinding: the next play goes on from the same place.
  virtual Result stop() = 0;
  virtual Result getStatus(uint32_t* status) = 0;
  // Gives the memory of a lost buffer back; its contents must be written anew.
  virtual Result restore() = 0;

  virtual Result setVolume(int32_t hundredthsDb) = 0;
  virtual Result getVolume(int32_t* hundredthsDb) = 0;
  virtual Result setPan(int32_t pan) = 0;
  virtual Result getPan(int32_t* pan) = 0;
  virtual Result setFrequency(uint32_t hz) = 0;
  virtual Result getFrequency(uint32_t* hz) = 0;

  // Primary buffer only.
  virtual Result setFormat(const WaveFormat& format) = 0;

  // 3D voices only (kCtrl3D): otherwise kControlUnavail.
  virtual bool is3D() const = 0;
  virtual Result setMinDistance(float distance, Apply apply) = 0;
  virtual Result setMaxDistance(float distance, Apply apply) = 0;
  virtual Result setPosition(const Vec3& position, Apply apply) = 0;
  virtual Result setVelocity(const Vec3& velocity, Apply apply) = 0;

  // Buffers made with kCtrlPositionNotify only, while stopped.
  virtual Result setNotificationPositions(const uint32_t* offsets, int count, NotifyFn notify) = 0;
};

class Listener {
 public:
  virtual ~Listener() = default;
  virtual Result getAllParameters(ListenerParams* out) = 0;
  virtual Result setAllParameters(const ListenerParams& params, Apply apply) = 0;
  // Applies every deferred listener and voice setting at one instant.
  virtual Result commitDeferredSettings() = 0;
};

class Device {
 public:
  virtual ~Device() = default;

  // Binds the device to a window; a primary format needs kPriorityLevel.
  virtual Result setCooperativeLevel(uint32_t window, uint32_t level) = 0;
  virtual Result createBuffer(const BufferDesc& desc, std::unique_ptr<Buffer>* out) = 0;
  // A second voice on the same data, with the original's settings.
  virtual Result duplicateBuffer(Buffer& original, std::unique_ptr<Buffer>* out) = 0;
  // The listener of a primary buffer made with kCtrl3D; owned by the device.
  virtual Result queryListener(Buffer& primary, Listener** out) = 0;

  // Milliseconds of a clock that runs with the device's output.
  virtual uint32_t timeMillis() = 0;

  // Stops the device's own threads and gives the output back. Buffers that
  // still exist go silent and their calls change nothing. A device without
  // threads or a system resource has nothing to do here.
  virtual void close() {}
};

// The default output device. When no output exists this is a device that
// plays to nowhere at the pace of real time, so the engine runs on.
Result openDefaultDevice(std::unique_ptr<Device>* out);

// Gain of a volume in hundredths of a decibel; the minimum is silence.
float volumeToGain(int32_t hundredthsDb);

}  // namespace vostan::platform::sound
