// The natives of mirelo.app.win32.AudioManagerWin32 and ClipSoundContextWin32.
// They reach the device through the console without a check: Java calls
// initNative first and stops at its failure.
#include <jni.h>

#include <cstdint>

#include "audio/audio_manager.h"
#include "audio/clip_sound.h"
#include "audio/jni/console_link.h"

using vostan::AudioManager;
using vostan::ClipSound;
using vostan::ClipSoundContext;
using vostan::consoleAudio;

namespace {

template <class T>
T* fromHandle(jlong handle) {
  return reinterpret_cast<T*>(static_cast<intptr_t>(handle));
}
jlong toHandle(const void* p) {
  return static_cast<jlong>(reinterpret_cast<intptr_t>(p));
}

}  // namespace

#define AUDIO(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_AudioManagerWin32_##name
#define CLIP(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_ClipSoundContextWin32_##name

// ------------------------------------------------------------ AudioManager

AUDIO(jboolean, initNative)(JNIEnv*, jobject) {
  // A second start leaves the first device in place, unused.
  std::unique_ptr<AudioManager> audio = AudioManager::create();
  if (!audio) return JNI_FALSE;
  AudioManager* a = audio.release();
  vostan::setConsoleAudio(a);
  a->setWindow(vostan::consoleWindow());
  return JNI_TRUE;
}

// Ends sound for the process: the library's audio threads stop and the device
// closes. Sounds still held go silent; their calls change nothing.
AUDIO(void, closeNative)(JNIEnv*, jobject) {
  if (AudioManager* audio = consoleAudio()) audio->shutdown();
}

AUDIO(jint, commitNative)(JNIEnv*, jobject) {
  return consoleAudio()->commit();
}

AUDIO(jint, setListenerNative)
(JNIEnv*, jobject, jfloat px, jfloat py, jfloat pz, jfloat fx, jfloat fy, jfloat fz, jfloat tx,
 jfloat ty, jfloat tz) {
  const float v[9] = {px, py, pz, fx, fy, fz, tx, ty, tz};
  return consoleAudio()->setListener(v);
}

AUDIO(void, getListenerNative)(JNIEnv* env, jobject, jfloatArray out) {
  float v[9];
  consoleAudio()->getListener(v);
  env->SetFloatArrayRegion(out, 0, 9, v);
}

AUDIO(void, setSpeakerNative)(JNIEnv*, jobject, jint) {}
AUDIO(jint, getSpeakerNative)(JNIEnv*, jobject) {
  return consoleAudio()->speakerConfig;
}
AUDIO(void, setVolumeNative)(JNIEnv*, jobject, jfloat v) {
  consoleAudio()->masterVolume = v;
}
AUDIO(jfloat, getVolumeNative)(JNIEnv*, jobject) {
  return consoleAudio()->masterVolume;
}
AUDIO(jfloat, getPanNative)(JNIEnv*, jobject) {
  return consoleAudio()->masterPan;
}

// -------------------------------------------------------------- Clip sounds

CLIP(jlong, initNative)
(JNIEnv* env, jobject, jfloat frequency, jint bits, jint channels, jobject data, jint size, jint,
 jint mode, jint count) {
  auto* context = new ClipSoundContext(*consoleAudio());
  const void* bytes = env->GetDirectBufferAddress(data);
  if (!context->createBuffers(frequency, bits, channels, bytes, size, mode, count)) {
    delete context;
    return 0;
  }
  return toHandle(context);
}

CLIP(void, disposeNative)(JNIEnv*, jobject, jlong context) {
  delete fromHandle<ClipSoundContext>(context);
}

CLIP(jlong, createSoundNative)
(JNIEnv*, jobject, jlong context, jfloat volume, jfloat pan, jfloat pitch, jfloat minDistance,
 jfloat maxDistance) {
  return toHandle(new ClipSound(*fromHandle<ClipSoundContext>(context), volume, pan, pitch,
                                minDistance, maxDistance));
}

CLIP(void, disposeSoundNative)(JNIEnv*, jobject, jlong sound) {
  delete fromHandle<ClipSound>(sound);
}

CLIP(jint, getFreeBufferIndexNative)(JNIEnv*, jobject, jlong context, jint mode) {
  return fromHandle<ClipSoundContext>(context)->getFreeBufferIndex(mode);
}

CLIP(jboolean, playNative)(JNIEnv*, jobject, jlong sound, jint index, jboolean looping) {
  return fromHandle<ClipSound>(sound)->play(index, looping, vostan::consoleForeground());
}

CLIP(jint, stopNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->stop();
}

CLIP(jint, playingNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->isBound();
}

CLIP(void, setVolumeNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  fromHandle<ClipSound>(sound)->setVolume(v);
}
CLIP(jfloat, getVolumeNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->volume;
}
CLIP(void, setPanNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  fromHandle<ClipSound>(sound)->setPan(v);
}
CLIP(jfloat, getPanNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->pan;
}
CLIP(void, setPitchNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  fromHandle<ClipSound>(sound)->setPitch(v);
}
CLIP(jfloat, getPitchNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->pitch;
}
CLIP(void, setCursorNative)(JNIEnv*, jobject, jlong sound, jint frames) {
  fromHandle<ClipSound>(sound)->setCursor(frames);
}
CLIP(jint, getCursorNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->cursorBytes;
}
CLIP(void, setPositionNative)(JNIEnv*, jobject, jlong sound, jfloat x, jfloat y, jfloat z) {
  fromHandle<ClipSound>(sound)->setPosition(x, y, z);
}
CLIP(void, getPositionNative)(JNIEnv* env, jobject, jlong sound, jfloatArray out) {
  const ClipSound* s = fromHandle<ClipSound>(sound);
  const float v[3] = {s->x, s->y, s->z};
  env->SetFloatArrayRegion(out, 0, 3, v);
}
CLIP(void, setMinDistanceNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  fromHandle<ClipSound>(sound)->setMinDistance(v);
}
CLIP(jfloat, getMinDistanceNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->minDistance;
}
CLIP(void, setMaxDistanceNative)(JNIEnv*, jobject, jlong sound, jfloat v) {
  fromHandle<ClipSound>(sound)->setMaxDistance(v);
}
CLIP(jfloat, getMaxDistanceNative)(JNIEnv*, jobject, jlong sound) {
  return fromHandle<ClipSound>(sound)->maxDistance;
}
