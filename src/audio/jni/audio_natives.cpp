// The natives of mirelo.app.win32.AudioManagerWin32 and ClipSoundContextWin32.
// Before AudioManagerWin32.initNative has made the device they do nothing and
// answer their "nothing" value; contexts and sounds are live from their
// making to their disposal, and a sound only as long as its context.
#include <jni.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "audio/audio_manager.h"
#include "audio/clip_sound.h"
#include "audio/jni/console_link.h"
#include "bridge/native_guard.h"

using vostan::AudioManager;
using vostan::ClipSound;
using vostan::ClipSoundContext;
using vostan::consoleAudio;

namespace {

ClipSoundContext* contextOf(jlong handle) {
  return vostan::live::find<ClipSoundContext>(handle);
}

// Live sounds and whether their context still is: a disposed context leaves
// its sounds orphaned (false) until they are disposed, so that a context made
// later at the same address is never taken for theirs.
std::mutex soundsLock;
std::unordered_map<const ClipSound*, bool>& sounds() {
  static auto* all = new std::unordered_map<const ClipSound*, bool>;
  return *all;
}

ClipSound* soundOf(jlong handle) {
  const auto* sound = static_cast<const ClipSound*>(vostan::live::addressOf(handle));
  std::lock_guard<std::mutex> hold(soundsLock);
  const auto it = sounds().find(sound);
  return it != sounds().end() && it->second ? const_cast<ClipSound*>(sound) : nullptr;
}

// Voices a context may ask for; far more than any device mixes.
constexpr jint kMaxVoices = 4096;

}  // namespace

#define AUDIO(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_AudioManagerWin32_##name
#define CLIP(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_ClipSoundContextWin32_##name
// A sound native on a handle that names no live sound, or a sound whose
// context was disposed, does nothing and answers `none`.
#define WITH_SOUND(none)         \
  ClipSound* s = soundOf(sound); \
  if (!s) return none

// ------------------------------------------------------------ AudioManager

AUDIO(jboolean, initNative)(JNIEnv* env, jobject) {
  return vostan::guarded(env, jboolean{JNI_FALSE}, [&]() -> jboolean {
    // A second start leaves the first device in place, unused.
    std::unique_ptr<AudioManager> audio = AudioManager::create();
    if (!audio) return JNI_FALSE;
    AudioManager* a = audio.release();
    vostan::setConsoleAudio(a);
    a->setWindow(vostan::consoleWindow());
    return JNI_TRUE;
  });
}

// Ends sound for the process: the library's audio threads stop and the device
// closes. Sounds still held go silent; their calls change nothing.
AUDIO(void, closeNative)(JNIEnv*, jobject) {
  if (AudioManager* audio = consoleAudio()) audio->shutdown();
}

AUDIO(jint, commitNative)(JNIEnv*, jobject) {
  AudioManager* a = consoleAudio();
  return a ? a->commit() : 0;
}

AUDIO(jint, setListenerNative)
(JNIEnv*, jobject, jfloat px, jfloat py, jfloat pz, jfloat fx, jfloat fy, jfloat fz, jfloat tx,
 jfloat ty, jfloat tz) {
  AudioManager* a = consoleAudio();
  if (!a) return 0;
  const float v[9] = {px, py, pz, fx, fy, fz, tx, ty, tz};
  return a->setListener(v);
}

AUDIO(void, getListenerNative)(JNIEnv* env, jobject, jfloatArray out) {
  AudioManager* a = consoleAudio();
  if (!a || vostan::arrayElements(env, out, vostan::ArrayKind::Float) < 9) return;
  float v[9];
  a->getListener(v);
  env->SetFloatArrayRegion(out, 0, 9, v);
}

AUDIO(void, setSpeakerNative)(JNIEnv*, jobject, jint) {}
AUDIO(jint, getSpeakerNative)(JNIEnv*, jobject) {
  AudioManager* a = consoleAudio();
  return a ? a->speakerConfig : 0;
}
AUDIO(void, setVolumeNative)(JNIEnv*, jobject, jfloat v) {
  if (AudioManager* a = consoleAudio()) a->masterVolume = v;
}
AUDIO(jfloat, getVolumeNative)(JNIEnv*, jobject) {
  AudioManager* a = consoleAudio();
  return a ? a->masterVolume : 0.0f;
}
AUDIO(jfloat, getPanNative)(JNIEnv*, jobject) {
  AudioManager* a = consoleAudio();
  return a ? a->masterPan : 0.0f;
}

// -------------------------------------------------------------- Clip sounds

// The data is a direct buffer holding at least `size` bytes; anything else
// makes no context.
CLIP(jlong, initNative)
(JNIEnv* env, jobject, jfloat frequency, jint bits, jint channels, jobject data, jint size, jint,
 jint mode, jint count) {
  AudioManager* audio = consoleAudio();
  if (!audio || size < 0 || count < 0 || count > kMaxVoices) return 0;
  const void* bytes = vostan::directBuffer(env, data, size);
  if (!bytes) return 0;
  return vostan::guarded(env, jlong{0}, [&]() -> jlong {
    auto context = std::make_unique<ClipSoundContext>(*audio);
    if (!context->createBuffers(frequency, bits, channels, bytes, size, mode, count)) return 0;
    vostan::live::add(context.get());
    return vostan::live::handleOf(context.release());
  });
}

CLIP(void, disposeNative)(JNIEnv*, jobject, jlong context) {
  ClipSoundContext* c = vostan::live::take<ClipSoundContext>(context);
  if (!c) return;
  {
    std::lock_guard<std::mutex> hold(soundsLock);
    for (auto& [sound, live] : sounds())
      if (&sound->context == c) live = false;
  }
  delete c;
}

CLIP(jlong, createSoundNative)
(JNIEnv* env, jobject, jlong context, jfloat volume, jfloat pan, jfloat pitch, jfloat minDistance,
 jfloat maxDistance) {
  ClipSoundContext* c = contextOf(context);
  if (!c) return 0;
  return vostan::guarded(env, jlong{0}, [&]() -> jlong {
    auto* s = new ClipSound(*c, volume, pan, pitch, minDistance, maxDistance);
    std::lock_guard<std::mutex> hold(soundsLock);
    sounds()[s] = true;
    return vostan::live::handleOf(s);
  });
}

CLIP(void, disposeSoundNative)(JNIEnv*, jobject, jlong sound) {
  const auto* s = static_cast<const ClipSound*>(vostan::live::addressOf(sound));
  {
    std::lock_guard<std::mutex> hold(soundsLock);
    const auto it = sounds().find(s);
    if (it == sounds().end()) return;
    // A voice it still holds is no longer owned by anyone: nothing may reach
    // the sound through the pool afterwards.
    if (it->second)
      for (ClipSound*& owner : s->context.bufferOwners)
        if (owner == s) owner = nullptr;
    sounds().erase(it);
  }
  delete s;
}

CLIP(jint, getFreeBufferIndexNative)(JNIEnv*, jobject, jlong context, jint mode) {
  ClipSoundContext* c = contextOf(context);
  return c ? c->getFreeBufferIndex(mode) : -1;
}

CLIP(jboolean, playNative)(JNIEnv*, jobject, jlong sound, jint index, jboolean looping) {
  WITH_SOUND(JNI_FALSE);
  // Only the context's voices can play.
  if (index >= static_cast<jint>(s->context.soundBuffers.size())) return JNI_FALSE;
  return s->play(index, looping, vostan::consoleForeground());
}

CLIP(jint, stopNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(-1);
  return s->stop();
}

CLIP(jint, playingNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(-1);
  return s->isBound();
}

CLIP(void, setVolumeNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  WITH_SOUND();
  s->setVolume(v);
}
CLIP(jfloat, getVolumeNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0.0f);
  return s->volume;
}
CLIP(void, setPanNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  WITH_SOUND();
  s->setPan(v);
}
CLIP(jfloat, getPanNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0.0f);
  return s->pan;
}
CLIP(void, setPitchNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  WITH_SOUND();
  s->setPitch(v);
}
CLIP(jfloat, getPitchNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0.0f);
  return s->pitch;
}
CLIP(void, setCursorNative)(JNIEnv*, jobject, jlong sound, jint frames) {
  WITH_SOUND();
  s->setCursor(frames);
}
CLIP(jint, getCursorNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0);
  return s->cursorBytes;
}
CLIP(void, setPositionNative)(JNIEnv*, jobject, jlong sound, jfloat x, jfloat y, jfloat z) {
  WITH_SOUND();
  s->setPosition(x, y, z);
}
CLIP(void, getPositionNative)(JNIEnv* env, jobject, jlong sound, jfloatArray out) {
  WITH_SOUND();
  if (vostan::arrayElements(env, out, vostan::ArrayKind::Float) < 3) return;
  const float v[3] = {s->x, s->y, s->z};
  env->SetFloatArrayRegion(out, 0, 3, v);
}
CLIP(void, setMinDistanceNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  WITH_SOUND();
  s->setMinDistance(v);
}
CLIP(jfloat, getMinDistanceNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0.0f);
  return s->minDistance;
}
CLIP(void, setMaxDistanceNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  WITH_SOUND();
  s->setMaxDistance(v);
}
CLIP(jfloat, getMaxDistanceNative)(JNIEnv*, jobject, jlong sound) {
  WITH_SOUND(0.0f);
  return s->maxDistance;
}
