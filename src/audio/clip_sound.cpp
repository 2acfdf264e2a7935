#include "audio/clip_sound.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace vostan {

namespace snd = platform::sound;

namespace {

// Device values from float arithmetic, truncated; past the type's range they
// saturate and NaN gives 0, so that no setting from Java is undefined.
int32_t toInt32(double v) {
  if (std::isnan(v)) return 0;
  return static_cast<int32_t>(std::clamp(v, -2147483648.0, 2147483647.0));
}
uint32_t toUint32(double v) {
  if (!(v > 0)) return 0;
  return static_cast<uint32_t>(std::min(v, 4294967295.0));
}

// Hundredths of a decibel; silence at 0.
int32_t decibels(float x) {
  if (x == 0.0f) return snd::kVolumeMin;
  return toInt32(std::log10(x) * 20.0 * 100.0);
}

snd::Algorithm algorithmOf(int mode) {
  switch (mode) {
    case 0:
      return snd::Algorithm::Default;
    case 2:
      return snd::Algorithm::HrtfLight;
    case 3:
      return snd::Algorithm::HrtfFull;
    default:
      return snd::Algorithm::NoVirtualization;
  }
}

bool copyInto(snd::Buffer& buffer, const uint8_t* data, int size) {
  void* p1 = nullptr;
  void* p2 = nullptr;
  uint32_t n1 = 0, n2 = 0;
  if (snd::failed(buffer.lock(0, static_cast<uint32_t>(size), &p1, &n1, &p2, &n2))) return false;
  std::memcpy(p1, data, std::min(static_cast<uint32_t>(size), n1));
  buffer.unlock(p1, n1, p2, n2);
  return true;
}

}  // namespace

float clampPitch(float pitch) {
  if (pitch > 2.0f) return 2.0f;
  if (pitch < 0.5f) return 0.5f;
  return pitch;
}

bool ClipSoundContext::createBuffers(float frequency, int bits, int channelCount, const void* data,
                                     int size, int mode, int count) {
  waveFrequency = frequency;
  sampleBits = bits;
  channels = channelCount;
  waveData = static_cast<const uint8_t*>(data);
  waveSize = size;
  mode3D = mode;
  bufferCount = count;
  // A pool of none still has the voice that holds the data, and plays on it.
  const size_t slots = static_cast<size_t>(std::max(count, 1));
  soundBuffers.resize(slots);
  bufferOwners.assign(slots, nullptr);
  if (mode3D != 0) buffers3D.assign(slots, nullptr);

  snd::BufferDesc desc;
  desc.format.channels = static_cast<uint16_t>(channels);
  desc.format.rate = toUint32(waveFrequency);
  desc.format.bits = static_cast<uint16_t>(sampleBits);
  desc.flags = mode3D == 0 ? snd::kCtrlVolume | snd::kCtrlPan | snd::kCtrlFrequency
                           : snd::kMute3DAtMaxDistance | snd::kCtrlVolume | snd::kCtrlFrequency |
                                 snd::kCtrl3D | snd::kStatic;
  desc.algorithm = algorithmOf(mode3D);
  desc.bytes = static_cast<uint32_t>(waveSize);
  snd::Device& device = *audio.directSound;
  if (snd::failed(device.createBuffer(desc, &soundBuffers[0]))) return false;
  copyInto(*soundBuffers[0], waveData, waveSize);
  for (size_t i = 1; i < slots; ++i)
    if (snd::failed(device.duplicateBuffer(*soundBuffers[0], &soundBuffers[i]))) return false;
  if (mode3D != 0) {
    for (size_t i = 0; i < slots; ++i) {
      if (!soundBuffers[i]->is3D()) return false;
      buffers3D[i] = soundBuffers[i].get();
    }
  }
  return true;
}

int ClipSoundContext::getFreeBufferIndex(int mode) {
  for (int i = 0; i < bufferCount; ++i) {
    ClipSound* owner = bufferOwners[i];
    if (!owner || owner->isBound() == -1) return i;
  }
  if (bufferCount == 0) return 0;
  if (mode != 1) return -1;
  // Voice 0 is the first candidate even when it loops, so a pool of looping
  // sounds gives up voice 0.
  int best = 0;
  uint32_t bestTime = bufferOwners[0]->startTime;
  for (int i = 1; i < bufferCount; ++i) {
    const ClipSound* owner = bufferOwners[i];
    if (!owner->looping && owner->startTime < bestTime) {
      best = i;
      bestTime = owner->startTime;
    }
  }
  return best;
}

ClipSound::ClipSound(ClipSoundContext& context, float volume, float pan, float pitch,
                     float minDistance, float maxDistance)
    : context(context),
      volume(volume),
      pan(pan),
      pitch(clampPitch(pitch)),
      minDistance(minDistance),
      maxDistance(maxDistance) {}

int32_t ClipSound::volumeToDirectSound(float master) const {
  if (volume == 0.0f || master == 0.0f) return snd::kVolumeMin;
  return toInt32(std::log10(volume * master) * 20.0 * 100.0);
}

int32_t ClipSound::stereoPan() const {
  const float c = 2.0f * pan - 1.0f;
  if (c == 0.0f) return 0;
  // The threshold is 0.5 and not 0: pans from the centre up to 0.75 lean
  // gently, and from 0.75 on they jump towards the right.
  if (c < 0.5f) return decibels(c + 1.0f);
  return -decibels(1.0f - c);
}

snd::Buffer* ClipSound::bound3D() const {
  if (context.buffers3D.empty()) return nullptr;
  return context.buffers3D[bufferIndex];
}

int ClipSound::isBound() {
  if (bufferIndex < 0) return -1;
  if (context.bufferOwners[bufferIndex] != this) {
    bufferIndex = -1;
    return -1;
  }
  uint32_t status = 0;
  context.soundBuffers[bufferIndex]->getStatus(&status);
  if (status & snd::kStatusPlaying) return bufferIndex;
  // A finished sound gives its voice back here; nothing tells us sooner.
  context.bufferOwners[bufferIndex] = nullptr;
  bufferIndex = -1;
  return -1;
}

bool ClipSound::refillBuffer(snd::Buffer& buffer) {
  return copyInto(buffer, context.waveData, context.waveSize);
}

bool ClipSound::play(int index, bool looping, bool foreground) {
  // Sounds don't start while the window isn't in front.
  if (index < 0 || !foreground) return false;
  snd::Buffer& buffer = *context.soundBuffers[index];
  snd::Buffer* buffer3D = context.buffers3D.empty() ? nullptr : context.buffers3D[index];

  if (ClipSound* owner = context.bufferOwners[index]) {
    buffer.stop();
    owner->bufferIndex = -1;
    context.bufferOwners[index] = nullptr;
  }
  uint32_t status = 0;
  buffer.getStatus(&status);
  if (status & snd::kStatusBufferLost) {
    buffer.restore();
    buffer.getStatus(&status);
    if (status & snd::kStatusBufferLost) return false;
    refillBuffer(buffer);
  }
  buffer.setCurrentPosition(static_cast<uint32_t>(cursorBytes));
  buffer.setVolume(-9999);
  buffer.setVolume(volumeToDirectSound(context.audio.masterVolume));
  buffer.setFrequency(toUint32(pitch * context.waveFrequency));
  if (buffer3D) {
    buffer3D->setMinDistance(minDistance, snd::Apply::Immediate);
    buffer3D->setMaxDistance(maxDistance, snd::Apply::Immediate);
    buffer3D->setVelocity({0, 0, 0}, snd::Apply::Immediate);
    buffer3D->setPosition({x, y, z}, snd::Apply::Immediate);
  } else {
    buffer.setPan(stereoPan());
  }
  const uint32_t t = context.audio.timeMillis();
  lastPositionTime = t;
  startTime = t;
  const snd::Result r = buffer.play(looping);
  if (snd::failed(r)) {
    std::fputs("Playing Sound failed:", stdout);
    std::fflush(stdout);
    describeResult(r);
    return false;
  }
  bufferIndex = index;
  this->looping = looping;
  context.bufferOwners[index] = this;
  return true;
}

int ClipSound::stop() {
  if (bufferIndex < 0) return -1;
  context.soundBuffers[bufferIndex]->stop();
  context.bufferOwners[bufferIndex] = nullptr;
  bufferIndex = -1;
  return -1;
}

void ClipSound::setVolume(float value) {
  volume = value;
  if (bufferIndex < 0) return;
  context.soundBuffers[bufferIndex]->setVolume(volumeToDirectSound(context.audio.masterVolume));
}

void ClipSound::setPan(float value) {
  pan = value;
  if (bufferIndex < 0) return;
  context.soundBuffers[bufferIndex]->setPan(stereoPan());
}

void ClipSound::setPitch(float value) {
  pitch = clampPitch(value);
  if (bufferIndex < 0) return;
  const int rate = toInt32(context.waveFrequency);
  context.soundBuffers[bufferIndex]->setFrequency(toUint32(rate * pitch));
}

void ClipSound::setCursor(int frames) {
  // A 32-bit product, wrapping as it always has.
  cursorBytes = static_cast<int32_t>(static_cast<uint32_t>(frames) *
                                     static_cast<uint32_t>(context.bytesPerFrame()));
  if (bufferIndex < 0) return;
  // The playing voice is given the frame count as a byte offset: it jumps to
  // a fraction of the place where the next play starts. Games rely on it.
  context.soundBuffers[bufferIndex]->setCurrentPosition(static_cast<uint32_t>(frames));
}

void ClipSound::setPosition(float nx, float ny, float nz) {
  const uint32_t t = context.audio.timeMillis();
  snd::Vec3 velocity;
  if (lastPositionTime != 0) {
    // As for the listener: the velocity is a product with the elapsed time.
    const float dt = std::max(static_cast<float>(t - lastPositionTime) * 0.001f, 0.001f);
    velocity = {(nx - x) * dt, (ny - y) * dt, (nz - z) * dt};
    lastPositionTime = t;
  }
  x = nx;
  y = ny;
  z = nz;
  if (bufferIndex < 0) return;
  if (snd::Buffer* b = bound3D()) {
    b->setPosition({x, y, z}, snd::Apply::Deferred);
    b->setVelocity(velocity, snd::Apply::Deferred);
  }
}

void ClipSound::setMinDistance(float value) {
  minDistance = value;
  if (bufferIndex < 0) return;
  if (snd::Buffer* b = bound3D()) b->setMinDistance(value, snd::Apply::Deferred);
}

void ClipSound::setMaxDistance(float value) {
  maxDistance = value;
  if (bufferIndex < 0) return;
  if (snd::Buffer* b = bound3D()) b->setMaxDistance(value, snd::Apply::Deferred);
}

}  // namespace vostan
