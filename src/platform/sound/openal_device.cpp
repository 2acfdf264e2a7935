// The sound device over OpenAL Soft.
//
// A static buffer keeps its data in memory and in OpenAL buffers; every voice
// on it (the original and its duplicates) is a set of OpenAL sources on those
// buffers. A panned voice is two sources that play the left and the right
// channel straight to the outputs, each with its own gain, which gives the
// per-channel attenuation of a pan in decibels exactly. A 3D voice is one
// source on a mono copy of the data, since OpenAL places only mono sources.
//
// A buffer with notification positions is a ring in memory that a feeder
// copies into a short queue of OpenAL buffers; the feeder's place in the ring
// is the play cursor, and passing a notification position calls back.
#define AL_ALEXT_PROTOTYPES
#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/sound/loopback_device.h"
#include "platform/sound/sound_device.h"

namespace vostan::platform::sound {

float volumeToGain(int32_t hundredthsDb) {
  if (hundredthsDb <= kVolumeMin) return 0.0f;
  if (hundredthsDb >= 0) return 1.0f;
  return std::pow(10.0f, static_cast<float>(hundredthsDb) / 2000.0f);
}

namespace {

constexpr uint32_t kOutputRate = 44100;
constexpr uint32_t kRenderStep = 256;          // frames between feeder runs when rendering
constexpr uint32_t kStreamChunkFrames = 1024;  // 23 ms at 44100 Hz
constexpr int kStreamChunks = 4;
constexpr int kStreamQueued = 3;
constexpr float kSpeedOfSound = 343.3f;

class VoiceBase;
class StaticVoice;

using Fired = std::vector<std::pair<NotifyFn, int>>;

// OpenAL's coordinates are right-handed: z points out of the screen.
void alVec(ALuint source, ALenum param, const Vec3& v) {
  alSource3f(source, param, v.x, v.y, -v.z);
}

struct Core {
  enum class Kind { Output, Loopback, Paced };

  Kind kind = Kind::Loopback;
  ALCdevice* device = nullptr;
  ALCcontext* context = nullptr;
  std::recursive_mutex mutex;
  std::vector<VoiceBase*> voices;
  ListenerParams listener;  // what is heard
  ListenerParams pending;   // the latest values, deferred ones included
  bool listenerDirty = false;
  float primaryGain = 1.0f;
  uint32_t window = 0;
  uint32_t level = 0;
  WaveFormat primaryFormat{2, 22050, 8};
  Faults faults;
  std::atomic<uint64_t> rendered{0};
  std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
  std::thread thread;
  std::atomic<bool> quit{false};

  ~Core() { close(); }

  // The context made current on this thread for one scope, and what was there
  // put back: a thread must not end holding a context. A closed core binds
  // none, so late calls on its voices do nothing.
  struct Bind {
    explicit Bind(Core& c) : previous(alcGetThreadContext()), current(c.context) {
      if (previous != current) alcSetThreadContext(current);
    }
    ~Bind() {
      if (previous != current) alcSetThreadContext(previous);
    }
    Bind(const Bind&) = delete;
    Bind& operator=(const Bind&) = delete;
    ALCcontext* previous;
    ALCcontext* current;
  };

  void stopThread() {
    quit = true;
    if (thread.joinable() && thread.get_id() != std::this_thread::get_id()) thread.join();
  }
  void close();
  void applyListener();
  void service();
  void renderSteps(float* out, uint32_t frames);
  void runThread();
};

class VoiceBase : public Buffer {
 public:
  VoiceBase(std::shared_ptr<Core> core, const BufferDesc& desc)
      : core_(std::move(core)), flags_(desc.flags), format_(desc.format) {
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    core_->voices.push_back(this);
  }
  ~VoiceBase() override {
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    auto& v = core_->voices;
    v.erase(std::remove(v.begin(), v.end(), this), v.end());
  }

  Result lock(uint32_t, uint32_t, void**, uint32_t*, void**, uint32_t*) override {
    return err::kInvalidCall;
  }
  Result unlock(void*, uint32_t, void*, uint32_t) override { return err::kInvalidCall; }
  Result getCurrentPosition(uint32_t* play, uint32_t* write) override { return err::kInvalidCall; }
  Result setCurrentPosition(uint32_t) override { return err::kInvalidCall; }
  Result restore() override { return err::kOk; }
  Result setFormat(const WaveFormat&) override { return err::kInvalidCall; }
  Result setNotificationPositions(const uint32_t*, int, NotifyFn) override {
    return err::kControlUnavail;
  }

  Result setVolume(int32_t v) override {
    if (!(flags_ & kCtrlVolume)) return err::kControlUnavail;
    if (v < kVolumeMin || v > kVolumeMax) return err::kInvalidParam;
    Guard g(*this);
    volume_ = v;
    applyGains();
    return err::kOk;
  }
  Result getVolume(int32_t* v) override {
    if (!(flags_ & kCtrlVolume)) return err::kControlUnavail;
    *v = volume_;
    return err::kOk;
  }
  Result setPan(int32_t p) override {
    if (!(flags_ & kCtrlPan)) return err::kControlUnavail;
    if (p < kPanLeft || p > kPanRight) return err::kInvalidParam;
    Guard g(*this);
    pan_ = p;
    applyGains();
    return err::kOk;
  }
  Result getPan(int32_t* p) override {
    if (!(flags_ & kCtrlPan)) return err::kControlUnavail;
    *p = pan_;
    return err::kOk;
  }
  Result setFrequency(uint32_t hz) override {
    if (!(flags_ & kCtrlFrequency)) return err::kControlUnavail;
    if (hz != kFrequencyOriginal && (hz < kFrequencyMin || hz > kFrequencyMax))
      return err::kInvalidParam;
    Guard g(*this);
    frequency_ = hz;
    applyPitch();
    return err::kOk;
  }
  Result getFrequency(uint32_t* hz) override {
    if (!(flags_ & kCtrlFrequency)) return err::kControlUnavail;
    *hz = frequency_ == kFrequencyOriginal ? format_.rate : frequency_;
    return err::kOk;
  }

  bool is3D() const override { return (flags_ & kCtrl3D) != 0; }
  Result setMinDistance(float d, Apply a) override {
    return set3D(a, [d](Params3D& p) { p.minDistance = d; });
  }
  Result setMaxDistance(float d, Apply a) override {
    return set3D(a, [d](Params3D& p) { p.maxDistance = d; });
  }
  Result setPosition(const Vec3& v, Apply a) override {
    return set3D(a, [v](Params3D& p) { p.position = v; });
  }
  Result setVelocity(const Vec3& v, Apply a) override {
    return set3D(a, [v](Params3D& p) { p.velocity = v; });
  }

  // Under the core's lock, with the context bound.
  void commit() {
    if (!dirty3D_) return;
    dirty3D_ = false;
    heard3D_ = pending3D_;
    apply3D();
  }
  virtual void applyGains() {}
  virtual void applyPitch() {}
  virtual void apply3D() {}
  virtual void service(Fired&) {}
  virtual void lose() {}
  // Gives the OpenAL objects back before the context goes.
  virtual void release() {}

 protected:
  struct Params3D {
    Vec3 position, velocity;
    float minDistance = 1.0f;
    float maxDistance = 1e9f;
  };

  // The core's lock with the context bound to this thread for the call: a
  // writer's own thread (the music mixer's) ends holding nothing of OpenAL's.
  struct Guard {
    explicit Guard(VoiceBase& v) : lock(v.core_->mutex), bound(*v.core_) {}
    std::lock_guard<std::recursive_mutex> lock;
    Core::Bind bound;
  };

  template <class F>
  Result set3D(Apply a, F f) {
    if (!is3D()) return err::kControlUnavail;
    Guard g(*this);
    f(pending3D_);
    if (a == Apply::Immediate) {
      f(heard3D_);
      apply3D();
    } else {
      dirty3D_ = true;
    }
    return err::kOk;
  }

  float pitch() const {
    return frequency_ == kFrequencyOriginal ? 1.0f : static_cast<float>(frequency_) / format_.rate;
  }
  // Left and right attenuation of the pan: the far side loses |pan| hundredths of a dB.
  float leftGain() const { return pan_ > 0 ? volumeToGain(-pan_) : 1.0f; }
  float rightGain() const { return pan_ < 0 ? volumeToGain(pan_) : 1.0f; }

  std::shared_ptr<Core> core_;
  uint32_t flags_;
  WaveFormat format_;
  int32_t volume_ = 0;
  int32_t pan_ = 0;
  uint32_t frequency_ = kFrequencyOriginal;
  Params3D heard3D_, pending3D_;
  bool dirty3D_ = false;

  friend class OpenAlDevice;
  friend struct Core;
};

// ---------------------------------------------------------------- primary

class PrimaryBuffer final : public VoiceBase {
 public:
  using VoiceBase::VoiceBase;
  Result play(bool) override { return err::kOk; }
  Result stop() override { return err::kOk; }
  Result getStatus(uint32_t* s) override {
    *s = kStatusPlaying | kStatusLooping;
    return err::kOk;
  }
  Result setFormat(const WaveFormat& f) override {
    if (core_->level < kPriorityLevel) return err::kPrioLevelNeeded;
    if ((f.channels != 1 && f.channels != 2) || (f.bits != 8 && f.bits != 16) ||
        f.rate < kFrequencyMin || f.rate > kFrequencyMax)
      return err::kBadFormat;
    core_->primaryFormat = f;
    return err::kOk;
  }
  void applyGains() override {
    core_->primaryGain = volumeToGain(volume_);
    alListenerf(AL_GAIN, core_->primaryGain);
  }
};

// ----------------------------------------------------------------- static

int16_t sampleAt(const uint8_t* p, uint32_t bits) {
  if (bits == 8) return static_cast<int16_t>((p[0] - 128) * 256);
  return static_cast<int16_t>(p[0] | (p[1] << 8));
}

struct SampleData {
  std::shared_ptr<Core> core;
  WaveFormat format;
  bool mono;  // 3D voices play a mono copy
  std::vector<uint8_t> bytes;
  ALuint al[2] = {0, 0};
  bool lost = false;
  std::vector<StaticVoice*> users;

  SampleData(std::shared_ptr<Core> c, const WaveFormat& f, bool m, uint32_t size)
      : core(std::move(c)), format(f), mono(m), bytes(size, f.bits == 8 ? 0x80 : 0) {
    Core::Bind bound(*core);
    alGenBuffers(mono ? 1 : 2, al);
  }
  ~SampleData() {
    Core::Bind bound(*core);
    release();
  }
  void release() {
    if (al[0] != 0) alDeleteBuffers(mono ? 1 : 2, al);
    al[0] = al[1] = 0;
  }
  uint32_t frames() const { return static_cast<uint32_t>(bytes.size()) / format.blockAlign(); }
  void upload();
};

class StaticVoice final : public VoiceBase {
 public:
  StaticVoice(std::shared_ptr<Core> core, const BufferDesc& desc, std::shared_ptr<SampleData> data)
      : VoiceBase(std::move(core), desc), data_(std::move(data)) {
    Guard g(*this);
    count_ = is3D() ? 1 : 2;
    alGenSources(count_, sources_);
    for (int i = 0; i < count_; ++i) {
      ALuint s = sources_[i];
      if (is3D()) {
        alSourcei(s, AL_SOURCE_RELATIVE, AL_FALSE);
        alSourcef(s, AL_ROLLOFF_FACTOR, core_->listener.rolloffFactor);
      } else {
        alSourcei(s, AL_SOURCE_RELATIVE, AL_TRUE);
        alSource3f(s, AL_POSITION, 0, 0, 0);
        alSourcei(s, AL_DIRECT_CHANNELS_SOFT, AL_TRUE);
        alSourcef(s, AL_ROLLOFF_FACTOR, 0.0f);
      }
      alSourcei(s, AL_BUFFER, static_cast<ALint>(data_->al[i]));
    }
    data_->users.push_back(this);
    apply3D();
    applyGains();
  }
  ~StaticVoice() override {
    Guard g(*this);
    alSourceStopv(count_, sources_);
    alDeleteSources(count_, sources_);
    auto& u = data_->users;
    u.erase(std::remove(u.begin(), u.end(), this), u.end());
  }

  // A duplicate starts with the original's settings.
  void copySettings(const StaticVoice& o) {
    Guard g(*this);
    volume_ = o.volume_;
    pan_ = o.pan_;
    frequency_ = o.frequency_;
    heard3D_ = o.heard3D_;
    pending3D_ = o.pending3D_;
    applyGains();
    applyPitch();
    apply3D();
  }

  // Plain memory: no OpenAL call, so no context to bind.
  Result lock(uint32_t offset, uint32_t bytes, void** p1, uint32_t* n1, void** p2,
              uint32_t* n2) override {
    std::lock_guard<std::recursive_mutex> g(core_->mutex);
    const uint32_t size = static_cast<uint32_t>(data_->bytes.size());
    if (offset >= size || bytes > size) return err::kInvalidParam;
    uint8_t* base = data_->bytes.data();
    *p1 = base + offset;
    *n1 = std::min(bytes, size - offset);
    if (p2) *p2 = bytes > *n1 ? base : nullptr;
    if (n2) *n2 = bytes - *n1;
    return err::kOk;
  }
  Result unlock(void*, uint32_t n1, void*, uint32_t n2) override {
    Guard g(*this);
    if (n1 + n2 > 0) data_->upload();
    return err::kOk;
  }
  Result getCurrentPosition(uint32_t* play, uint32_t* write) override {
    Guard g(*this);
    ALint offset = 0;
    alGetSourcei(sources_[0], AL_SAMPLE_OFFSET, &offset);
    const uint32_t pos = static_cast<uint32_t>(offset) * format_.blockAlign();
    if (play) *play = pos;
    if (write) *write = pos;
    return err::kOk;
  }
  Result setCurrentPosition(uint32_t byteOffset) override {
    Guard g(*this);
    if (byteOffset >= data_->bytes.size()) return err::kInvalidParam;
    const ALint frame = static_cast<ALint>(byteOffset / format_.blockAlign());
    for (int i = 0; i < count_; ++i) alSourcei(sources_[i], AL_SAMPLE_OFFSET, frame);
    return err::kOk;
  }
  Result play(bool looping) override {
    Guard g(*this);
    if (failed(core_->faults.play)) return core_->faults.play;
    if (data_->lost) return err::kBufferLost;
    alGetError();
    for (int i = 0; i < count_; ++i)
      alSourcei(sources_[i], AL_LOOPING, looping ? AL_TRUE : AL_FALSE);
    // Playing a voice that plays changes only its looping.
    if (state() != AL_PLAYING) alSourcePlayv(count_, sources_);
    return alGetError() == AL_NO_ERROR ? err::kOk : err::kGeneric;
  }
  Result stop() override {
    Guard g(*this);
    if (state() == AL_PLAYING) alSourcePausev(count_, sources_);
    return err::kOk;
  }
  Result getStatus(uint32_t* status) override {
    Guard g(*this);
    if (data_->lost) {
      *status = kStatusBufferLost;
      return err::kOk;
    }
    *status = 0;
    if (state() == AL_PLAYING) {
      ALint looping = AL_FALSE;
      alGetSourcei(sources_[0], AL_LOOPING, &looping);
      *status = kStatusPlaying | (looping ? kStatusLooping : 0);
    }
    return err::kOk;
  }
  Result restore() override {
    Guard g(*this);
    if (!data_->lost) return err::kOk;
    if (core_->faults.restoreFails) return err::kBufferLost;
    data_->lost = false;
    return err::kOk;
  }

  void applyGains() override {
    const float g = volumeToGain(volume_);
    if (is3D()) {
      alSourcef(sources_[0], AL_GAIN, muted() ? 0.0f : g);
    } else {
      alSourcef(sources_[0], AL_GAIN, g * leftGain());
      alSourcef(sources_[1], AL_GAIN, g * rightGain());
    }
  }
  void applyPitch() override {
    for (int i = 0; i < count_; ++i) alSourcef(sources_[i], AL_PITCH, pitch());
  }
  void apply3D() override {
    if (!is3D()) return;
    const ALuint s = sources_[0];
    alVec(s, AL_POSITION, heard3D_.position);
    alVec(s, AL_VELOCITY, heard3D_.velocity);
    alSourcef(s, AL_REFERENCE_DISTANCE, heard3D_.minDistance);
    alSourcef(s, AL_MAX_DISTANCE, heard3D_.maxDistance);
    alSourcef(s, AL_ROLLOFF_FACTOR, core_->listener.rolloffFactor);
    applyGains();
  }
  void release() override {
    alSourceStopv(count_, sources_);
    alDeleteSources(count_, sources_);
    count_ = 0;
    data_->release();
  }
  void lose() override {
    if (data_->lost) return;
    alSourceStopv(count_, sources_);
    std::fill(data_->bytes.begin(), data_->bytes.end(), format_.bits == 8 ? 0x80 : 0);
    data_->upload();
    data_->lost = true;
  }

  // Around a new upload of the data, which OpenAL refuses while sources use it.
  struct Held {
    ALint state = AL_INITIAL;
    ALint offset = 0;
  };
  Held detach() {
    Held h;
    h.state = state();
    alGetSourcei(sources_[0], AL_SAMPLE_OFFSET, &h.offset);
    alSourceStopv(count_, sources_);
    for (int i = 0; i < count_; ++i) alSourcei(sources_[i], AL_BUFFER, 0);
    return h;
  }
  void attach(const Held& h) {
    for (int i = 0; i < count_; ++i) {
      alSourcei(sources_[i], AL_BUFFER, static_cast<ALint>(data_->al[i]));
      if (h.state == AL_PLAYING || h.state == AL_PAUSED)
        alSourcei(sources_[i], AL_SAMPLE_OFFSET, h.offset);
    }
    if (h.state == AL_PLAYING) alSourcePlayv(count_, sources_);
  }

  const std::shared_ptr<SampleData>& data() const { return data_; }

 private:
  ALint state() const {
    ALint s = AL_INITIAL;
    alGetSourcei(sources_[0], AL_SOURCE_STATE, &s);
    return s;
  }
  // Beyond its maximum distance a voice made to mute there is silent.
  bool muted() const {
    if (!(flags_ & kMute3DAtMaxDistance)) return false;
    const Vec3& a = heard3D_.position;
    const Vec3& b = core_->listener.position;
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    return dx * dx + dy * dy + dz * dz > heard3D_.maxDistance * heard3D_.maxDistance;
  }

  std::shared_ptr<SampleData> data_;
  ALuint sources_[2] = {0, 0};
  int count_ = 0;
};

void SampleData::upload() {
  std::vector<StaticVoice::Held> held;
  held.reserve(users.size());
  for (StaticVoice* u : users) held.push_back(u->detach());

  const uint32_t n = frames();
  const uint32_t width = format.bits / 8;
  const uint32_t stride = format.blockAlign();
  const uint8_t* src = bytes.data();
  if (mono) {
    std::vector<int16_t> out(n);
    for (uint32_t i = 0; i < n; ++i) {
      const uint8_t* f = src + i * stride;
      int32_t s = sampleAt(f, format.bits);
      if (format.channels == 2) s = (s + sampleAt(f + width, format.bits)) / 2;
      out[i] = static_cast<int16_t>(s);
    }
    alBufferData(al[0], AL_FORMAT_MONO16, out.data(), static_cast<ALsizei>(n * 2),
                 static_cast<ALsizei>(format.rate));
  } else {
    // One buffer per side, the other channel silent.
    std::vector<int16_t> left(2 * n, 0), right(2 * n, 0);
    for (uint32_t i = 0; i < n; ++i) {
      const uint8_t* f = src + i * stride;
      left[2 * i] = sampleAt(f, format.bits);
      right[2 * i + 1] = format.channels == 2 ? sampleAt(f + width, format.bits) : left[2 * i];
    }
    alBufferData(al[0], AL_FORMAT_STEREO16, left.data(), static_cast<ALsizei>(n * 4),
                 static_cast<ALsizei>(format.rate));
    alBufferData(al[1], AL_FORMAT_STEREO16, right.data(), static_cast<ALsizei>(n * 4),
                 static_cast<ALsizei>(format.rate));
  }
  for (size_t i = 0; i < users.size(); ++i) users[i]->attach(held[i]);
}

// ----------------------------------------------------------------- stream

class StreamVoice final : public VoiceBase {
 public:
  StreamVoice(std::shared_ptr<Core> core, const BufferDesc& desc)
      : VoiceBase(std::move(core), desc),
        ring_(desc.bytes, desc.format.bits == 8 ? 0x80 : 0),
        chunkBytes_(kStreamChunkFrames * desc.format.blockAlign()),
        scratch_(2 * kStreamChunkFrames) {
    Guard g(*this);
    alGenSources(1, &source_);
    alGenBuffers(kStreamChunks, chunks_);
    free_.assign(chunks_, chunks_ + kStreamChunks);
    alSourcei(source_, AL_SOURCE_RELATIVE, AL_TRUE);
    alSourcei(source_, AL_DIRECT_CHANNELS_SOFT, AL_TRUE);
    alSourcef(source_, AL_ROLLOFF_FACTOR, 0.0f);
  }
  ~StreamVoice() override {
    Guard g(*this);
    alSourceStop(source_);
    alSourcei(source_, AL_BUFFER, 0);
    alDeleteSources(1, &source_);
    alDeleteBuffers(kStreamChunks, chunks_);
  }

  // Plain memory: no OpenAL call, so no context to bind.
  Result lock(uint32_t offset, uint32_t bytes, void** p1, uint32_t* n1, void** p2,
              uint32_t* n2) override {
    std::lock_guard<std::recursive_mutex> g(core_->mutex);
    const uint32_t size = static_cast<uint32_t>(ring_.size());
    if (offset >= size || bytes > size) return err::kInvalidParam;
    *p1 = ring_.data() + offset;
    *n1 = std::min(bytes, size - offset);
    if (p2) *p2 = bytes > *n1 ? ring_.data() : nullptr;
    if (n2) *n2 = bytes - *n1;
    return err::kOk;
  }
  // The feeder reads the ring when it gets there; nothing to hand over.
  Result unlock(void*, uint32_t, void*, uint32_t) override { return err::kOk; }

  Result getCurrentPosition(uint32_t* play, uint32_t* write) override {
    Guard g(*this);
    if (play) *play = feed_;
    if (write) *write = feed_;
    return err::kOk;
  }
  Result setCurrentPosition(uint32_t byteOffset) override {
    Guard g(*this);
    if (byteOffset >= ring_.size()) return err::kInvalidParam;
    feed_ = byteOffset - byteOffset % format_.blockAlign();
    return err::kOk;
  }
  Result play(bool looping) override {
    Fired fired;
    {
      Guard g(*this);
      if (failed(core_->faults.play)) return core_->faults.play;
      looping_ = looping;
      if (!playing_) {
        playing_ = true;
        ended_ = false;
        feed(fired);
        alSourcePlay(source_);
      }
    }
    for (auto& f : fired) f.first(f.second);
    return err::kOk;
  }
  Result stop() override {
    Guard g(*this);
    playing_ = false;
    alSourceStop(source_);
    alSourcei(source_, AL_BUFFER, 0);
    free_.assign(chunks_, chunks_ + kStreamChunks);
    return err::kOk;
  }
  Result getStatus(uint32_t* status) override {
    Guard g(*this);
    *status = playing_ ? kStatusPlaying | (looping_ ? kStatusLooping : 0) : 0;
    return err::kOk;
  }
  Result setNotificationPositions(const uint32_t* offsets, int count, NotifyFn notify) override {
    if (!(flags_ & kCtrlPositionNotify)) return err::kControlUnavail;
    Guard g(*this);
    if (playing_) return err::kInvalidCall;
    for (int i = 0; i < count; ++i)
      if (offsets[i] >= ring_.size()) return err::kInvalidParam;
    positions_.assign(offsets, offsets + count);
    notify_ = std::move(notify);
    return err::kOk;
  }
  void applyPitch() override { alSourcef(source_, AL_PITCH, pitch()); }
  void release() override {
    playing_ = false;
    if (source_ == 0) return;
    alSourceStop(source_);
    alSourcei(source_, AL_BUFFER, 0);
    alDeleteSources(1, &source_);
    alDeleteBuffers(kStreamChunks, chunks_);
    source_ = 0;
    std::fill(chunks_, chunks_ + kStreamChunks, 0u);
    free_.clear();
  }

  void service(Fired& fired) override {
    if (!playing_) return;
    ALint processed = 0;
    alGetSourcei(source_, AL_BUFFERS_PROCESSED, &processed);
    while (processed-- > 0) {
      ALuint b = 0;
      alSourceUnqueueBuffers(source_, 1, &b);
      free_.push_back(b);
    }
    feed(fired);
    ALint state = AL_STOPPED;
    alGetSourcei(source_, AL_SOURCE_STATE, &state);
    if (state != AL_PLAYING) {
      if (free_.size() < static_cast<size_t>(kStreamChunks))
        alSourcePlay(source_);  // ran dry for a moment: go on
      else
        playing_ = false;  // a buffer played once has ended
    }
  }

 private:
  // Tops the queue up from the ring at the cursor, with volume and pan in the copy.
  void feed(Fired& fired) {
    const uint32_t size = static_cast<uint32_t>(ring_.size());
    const uint32_t stride = format_.blockAlign();
    const uint32_t width = format_.bits / 8;
    const float g = volumeToGain(volume_);
    const float gl = g * leftGain(), gr = g * rightGain();
    while (!free_.empty() && kStreamChunks - static_cast<int>(free_.size()) < kStreamQueued &&
           !ended_) {
      uint32_t bytes = looping_ ? chunkBytes_ : std::min(chunkBytes_, size - feed_);
      const uint32_t frames = bytes / stride;
      if (frames == 0) break;
      for (uint32_t i = 0; i < frames; ++i) {
        const uint8_t* f = ring_.data() + (feed_ + i * stride) % size;
        const float l = sampleAt(f, format_.bits);
        const float r =
            format_.channels == 2
                ? sampleAt(ring_.data() + (feed_ + i * stride + width) % size, format_.bits)
                : l;
        scratch_[2 * i] = static_cast<int16_t>(l * gl);
        scratch_[2 * i + 1] = static_cast<int16_t>(r * gr);
      }
      const ALuint b = free_.back();
      free_.pop_back();
      alBufferData(b, AL_FORMAT_STEREO16, scratch_.data(), static_cast<ALsizei>(frames * 4),
                   static_cast<ALsizei>(format_.rate));
      alSourceQueueBuffers(source_, 1, &b);
      const uint32_t from = feed_;
      const uint32_t to = feed_ + frames * stride;
      // A position is passed when the cursor moves beyond it.
      for (size_t i = 0; i < positions_.size(); ++i) {
        const uint32_t p = positions_[i];
        if ((p > from && p <= to) || (p + size > from && p + size <= to))
          fired.emplace_back(notify_, static_cast<int>(i));
      }
      feed_ = to % size;
      if (!looping_ && to >= size) ended_ = true;
    }
    if (looping_) ended_ = false;
  }

  std::vector<uint8_t> ring_;
  uint32_t chunkBytes_;
  std::vector<int16_t> scratch_;
  ALuint source_ = 0;
  ALuint chunks_[kStreamChunks] = {};
  std::vector<ALuint> free_;
  uint32_t feed_ = 0;
  bool playing_ = false;
  bool looping_ = false;
  bool ended_ = false;
  std::vector<uint32_t> positions_;
  NotifyFn notify_;
};

// --------------------------------------------------------------- listener

void Core::applyListener() {
  const ListenerParams& p = listener;
  alListener3f(AL_POSITION, p.position.x, p.position.y, -p.position.z);
  alListener3f(AL_VELOCITY, p.velocity.x, p.velocity.y, -p.velocity.z);
  const ALfloat orientation[6] = {p.front.x, p.front.y, -p.front.z, p.top.x, p.top.y, -p.top.z};
  alListenerfv(AL_ORIENTATION, orientation);
  alDopplerFactor(p.dopplerFactor);
  alSpeedOfSound(kSpeedOfSound / (p.distanceFactor > 0 ? p.distanceFactor : 1.0f));
  for (VoiceBase* v : voices) v->apply3D();  // roll-off and muting follow the listener
}

void Core::service() {
  Fired fired;
  {
    std::lock_guard<std::recursive_mutex> lock(mutex);
    Bind bound(*this);
    for (VoiceBase* v : voices) v->service(fired);
  }
  for (auto& f : fired)
    if (f.first) f.first(f.second);
}

// Stops the feeder, gives back every voice's sources and buffers, and closes
// the device. Voices that outlive it find no context and do nothing.
void Core::close() {
  stopThread();
  std::lock_guard<std::recursive_mutex> lock(mutex);
  if (context) {
    {
      Bind bound(*this);
      for (VoiceBase* v : voices) v->release();
    }
    if (alcGetCurrentContext() == context) alcMakeContextCurrent(nullptr);
    alcDestroyContext(context);
    context = nullptr;
  }
  if (device) alcCloseDevice(device);
  device = nullptr;
}

void Core::renderSteps(float* out, uint32_t frames) {
  while (frames > 0) {
    service();
    const uint32_t n = std::min(frames, kRenderStep);
    if (device)
      alcRenderSamplesSOFT(device, out, static_cast<ALCsizei>(n));
    else
      std::fill(out, out + 2 * n, 0.0f);
    rendered += n;
    out += 2 * n;
    frames -= n;
  }
}

// The feeder of streams; for a device without output it also renders, at the
// pace of real time, into a buffer nobody hears.
void Core::runThread() {
  std::vector<float> sink(2 * kRenderStep);
  while (!quit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (kind != Kind::Paced) {
      service();
      continue;
    }
    const auto elapsed = std::chrono::steady_clock::now() - started;
    const uint64_t due =
        static_cast<uint64_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()) *
        kOutputRate / 1000000;
    // After a long stall skip ahead rather than race to catch up.
    if (due > rendered + kOutputRate) rendered = due - kOutputRate / 10;
    while (rendered + kRenderStep <= due && !quit) renderSteps(sink.data(), kRenderStep);
  }
}

class ListenerImpl final : public Listener {
 public:
  explicit ListenerImpl(Core& core) : core_(core) {}
  Result getAllParameters(ListenerParams* out) override {
    std::lock_guard<std::recursive_mutex> lock(core_.mutex);
    *out = core_.pending;
    return err::kOk;
  }
  Result setAllParameters(const ListenerParams& p, Apply apply) override {
    std::lock_guard<std::recursive_mutex> lock(core_.mutex);
    core_.pending = p;
    if (apply == Apply::Deferred) {
      core_.listenerDirty = true;
      return err::kOk;
    }
    Core::Bind bound(core_);
    core_.listener = p;
    core_.applyListener();
    return err::kOk;
  }
  Result commitDeferredSettings() override {
    std::lock_guard<std::recursive_mutex> lock(core_.mutex);
    Core::Bind bound(core_);
    alDeferUpdatesSOFT();
    if (core_.listenerDirty) {
      core_.listenerDirty = false;
      core_.listener = core_.pending;
      core_.applyListener();
    }
    for (VoiceBase* v : core_.voices) v->commit();
    alProcessUpdatesSOFT();
    return err::kOk;
  }

 private:
  Core& core_;
};

// ----------------------------------------------------------------- device

class OpenAlDevice final : public LoopbackDevice {
 public:
  explicit OpenAlDevice(std::shared_ptr<Core> core) : core_(std::move(core)), listener_(*core_) {
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    Core::Bind bound(*core_);
    alDistanceModel(AL_INVERSE_DISTANCE_CLAMPED);
    core_->applyListener();
    if (core_->kind != Core::Kind::Loopback)
      core_->thread = std::thread([c = core_.get()] { c->runThread(); });
  }
  ~OpenAlDevice() override { core_->stopThread(); }

  void close() override { core_->close(); }

  Result setCooperativeLevel(uint32_t window, uint32_t level) override {
    if (window == 0 || level < 1 || level > 3) return err::kInvalidParam;
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    core_->window = window;
    core_->level = level;
    return err::kOk;
  }

  Result createBuffer(const BufferDesc& desc, std::unique_ptr<Buffer>* out) override {
    if (failed(core_->faults.createBuffer)) return core_->faults.createBuffer;
    if (!core_->context) return err::kNoDriver;
    if (desc.flags & kPrimaryBuffer) {
      if (desc.bytes != 0) return err::kInvalidParam;
      *out = std::make_unique<PrimaryBuffer>(core_, desc);
      return err::kOk;
    }
    const WaveFormat& f = desc.format;
    if ((f.channels != 1 && f.channels != 2) || (f.bits != 8 && f.bits != 16) ||
        f.rate < kFrequencyMin || f.rate > kFrequencyMax)
      return err::kBadFormat;
    if (desc.bytes < 4 || desc.bytes > 0x0FFFFFFF) return err::kInvalidParam;
    if ((desc.flags & kCtrl3D) && (desc.flags & kCtrlPan)) return err::kInvalidParam;
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    Core::Bind bound(*core_);
    if (desc.flags & kCtrlPositionNotify) {
      *out = std::make_unique<StreamVoice>(core_, desc);
    } else {
      auto data = std::make_shared<SampleData>(core_, f, (desc.flags & kCtrl3D) != 0, desc.bytes);
      data->upload();
      *out = std::make_unique<StaticVoice>(core_, desc, std::move(data));
    }
    return err::kOk;
  }

  Result duplicateBuffer(Buffer& original, std::unique_ptr<Buffer>* out) override {
    if (failed(core_->faults.duplicateBuffer)) return core_->faults.duplicateBuffer;
    if (!core_->context) return err::kNoDriver;
    auto* o = dynamic_cast<StaticVoice*>(&original);
    if (!o) return err::kInvalidCall;
    BufferDesc desc;
    desc.flags = o->flags_;
    desc.format = o->format_;
    auto dup = std::make_unique<StaticVoice>(core_, desc, o->data());
    dup->copySettings(*o);
    *out = std::move(dup);
    return err::kOk;
  }

  Result queryListener(Buffer& primary, Listener** out) override {
    auto* p = dynamic_cast<PrimaryBuffer*>(&primary);
    if (!p || !p->is3D()) return err::kNoInterface;
    *out = &listener_;
    return err::kOk;
  }

  uint32_t timeMillis() override {
    if (core_->kind == Core::Kind::Loopback)
      return 1000u + static_cast<uint32_t>(core_->rendered.load() * 1000 / kOutputRate);
    return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now().time_since_epoch())
                                     .count());
  }

  void render(float* stereo, uint32_t frames) override {
    if (core_->kind == Core::Kind::Loopback) core_->renderSteps(stereo, frames);
  }
  uint64_t renderedFrames() const override { return core_->rendered; }
  void loseBuffers() override {
    std::lock_guard<std::recursive_mutex> lock(core_->mutex);
    Core::Bind bound(*core_);
    for (VoiceBase* v : core_->voices) v->lose();
  }
  Faults& faults() override { return core_->faults; }
  uint32_t window() const override { return core_->window; }
  WaveFormat primaryFormat() const override { return core_->primaryFormat; }

 private:
  std::shared_ptr<Core> core_;
  ListenerImpl listener_;
};

std::shared_ptr<Core> makeCore(Core::Kind kind, ALCdevice* device) {
  if (!device) return nullptr;
  std::vector<ALCint> attrs = {ALC_FREQUENCY,      static_cast<ALCint>(kOutputRate),
                               ALC_MONO_SOURCES,   256,
                               ALC_STEREO_SOURCES, 512,
                               ALC_HRTF_SOFT,      ALC_FALSE};
  if (kind != Core::Kind::Output) {
    attrs.insert(attrs.end(), {ALC_FORMAT_CHANNELS_SOFT, ALC_STEREO_SOFT, ALC_FORMAT_TYPE_SOFT,
                               ALC_FLOAT_SOFT, ALC_OUTPUT_LIMITER_SOFT, ALC_FALSE});
  }
  attrs.push_back(0);
  ALCcontext* context = alcCreateContext(device, attrs.data());
  if (!context) {
    alcCloseDevice(device);
    return nullptr;
  }
  auto core = std::make_shared<Core>();
  core->kind = kind;
  core->device = device;
  core->context = context;
  return core;
}

}  // namespace

Result openDefaultDevice(std::unique_ptr<Device>* out) {
  // Without a sound card OpenAL's chosen backend fails to open; its own null
  // output is reachable only when chosen before first use, so a loopback
  // device that renders at the pace of real time stands in for it.
  std::shared_ptr<Core> core = makeCore(Core::Kind::Output, alcOpenDevice(nullptr));
  if (!core) core = makeCore(Core::Kind::Output, alcOpenDevice("No Output"));
  if (!core && alcIsExtensionPresent(nullptr, "ALC_SOFT_loopback"))
    core = makeCore(Core::Kind::Paced, alcLoopbackOpenDeviceSOFT(nullptr));
  if (!core) return err::kNoDriver;
  *out = std::make_unique<OpenAlDevice>(std::move(core));
  return err::kOk;
}

std::unique_ptr<LoopbackDevice> openLoopbackDevice() {
  if (!alcIsExtensionPresent(nullptr, "ALC_SOFT_loopback")) return nullptr;
  std::shared_ptr<Core> core = makeCore(Core::Kind::Loopback, alcLoopbackOpenDeviceSOFT(nullptr));
  if (!core) return nullptr;
  return std::make_unique<OpenAlDevice>(std::move(core));
}

}  // namespace vostan::platform::sound
