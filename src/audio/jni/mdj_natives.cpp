// The natives of mirelo.app.win32.MDJSoundContextWin32. They only post
// commands to the mixer thread, or touch the ring of samples Java feeds.
// Handles are checked against the live contexts; null arguments, arrays of a
// wrong length and dead handles do nothing.
#include <jni.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <unordered_map>
#include <vector>

#include "audio/audio_manager.h"
#include "audio/jni/console_link.h"
#include "audio/jni/mdj_registry.h"
#include "bridge/bridge.h"

namespace vostan {

namespace {

struct Entry {
  std::unique_ptr<MDJSoundContext> context;
  AudioManager* audio = nullptr;
  int32_t userId = 0;
};

std::unordered_map<MDJSoundContext*, Entry>& contexts() {
  static auto* map = new std::unordered_map<MDJSoundContext*, Entry>;
  return *map;
}

MDJSoundContext* fromHandle(jlong handle) {
  return reinterpret_cast<MDJSoundContext*>(static_cast<intptr_t>(handle));
}

}  // namespace

std::mutex& musicContextsLock() {
  static auto* lock = new std::mutex;
  return *lock;
}

MDJSoundContext* findMusicContext(jlong handle) {
  auto it = contexts().find(fromHandle(handle));
  return it == contexts().end() ? nullptr : it->first;
}

}  // namespace vostan

using vostan::MDJSoundContext;
using vostan::withMusicContext;

#define MDJ(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_MDJSoundContextWin32_##name

MDJ(jlong, n_1init)(JNIEnv* env, jobject) {
  try {
    vostan::AudioManager* audio = vostan::consoleAudio();
    if (!audio || !audio->directSound) return 0;
    std::unique_ptr<MDJSoundContext> context = MDJSoundContext::start(*audio->directSound);
    if (!context) return 0;
    MDJSoundContext* c = context.get();
    std::lock_guard<std::mutex> lock(vostan::musicContextsLock());
    vostan::Entry& entry = vostan::contexts()[c];
    entry.context = std::move(context);
    entry.audio = audio;
    // The mixer thread ends before the device closes.
    entry.userId = audio->addDeviceUser([c] { c->shutdown(); });
    return static_cast<jlong>(reinterpret_cast<intptr_t>(c));
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the music context");
  } catch (...) {
  }
  return 0;
}

// Ends the mixer thread and frees the context; the handle is dead afterwards.
MDJ(void, n_1dispose)(JNIEnv*, jobject, jlong handle) {
  vostan::Entry entry;
  {
    std::lock_guard<std::mutex> lock(vostan::musicContextsLock());
    auto it = vostan::contexts().find(vostan::fromHandle(handle));
    if (it == vostan::contexts().end()) return;
    entry = std::move(it->second);
    vostan::contexts().erase(it);
  }
  // Waits for a stop of the device that may be running, then frees.
  entry.audio->removeDeviceUser(entry.userId);
  entry.context.reset();
}

MDJ(jboolean, n_1setMDJSongFile)(JNIEnv* env, jobject, jlong handle, jstring path) {
  if (!path) return JNI_FALSE;
  try {
    std::unique_ptr<char[]> bytes(vostan::getMultiByteString(env, path));
    return withMusicContext(handle, JNI_FALSE, [&](MDJSoundContext& c) {
      return c.postSong(bytes.get()) ? JNI_TRUE : JNI_FALSE;
    });
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the song's path");
  } catch (...) {
  }
  return JNI_FALSE;
}

MDJ(jboolean, n_1setMDJTrick)(JNIEnv* env, jobject, jlong handle, jint trick) {
  try {
    return withMusicContext(handle, JNI_FALSE, [&](MDJSoundContext& c) {
      return c.postTrick(trick) ? JNI_TRUE : JNI_FALSE;
    });
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the trick");
  }
  return JNI_FALSE;
}

// The flag is not looked at: playing is trick 0, and songs always loop.
MDJ(jboolean, n_1play)(JNIEnv* env, jobject, jlong handle, jboolean) {
  try {
    return withMusicContext(handle, JNI_FALSE, [&](MDJSoundContext& c) {
      return c.postTrick(vostan::kTrickPlay) ? JNI_TRUE : JNI_FALSE;
    });
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the trick");
  }
  return JNI_FALSE;
}

// Stopping is trick 1; these two answer the same whatever plays.
MDJ(jboolean, n_1stop)(JNIEnv*, jobject, jlong) {
  return JNI_FALSE;
}
MDJ(jboolean, n_1playing)(JNIEnv*, jobject, jlong) {
  return JNI_FALSE;
}

MDJ(void, n_1setVolume)(JNIEnv*, jobject, jlong handle, jfloat volume) {
  withMusicContext(handle, 0, [&](MDJSoundContext& c) {
    c.setVolume(volume);
    return 0;
  });
}

// Named for the pitch, answers the volume.
MDJ(jfloat, n_1getPitch)(JNIEnv*, jobject, jlong handle) {
  return withMusicContext(handle, 0.0f, [](MDJSoundContext& c) { return c.getVolume(); });
}

MDJ(jfloat, n_1getStreamSize)(JNIEnv*, jobject, jlong handle) {
  return withMusicContext(handle, 0.0f,
                          [](MDJSoundContext& c) { return static_cast<jfloat>(c.streamSize()); });
}

MDJ(void, n_1writeStream)(JNIEnv* env, jobject, jlong handle, jfloatArray samples) {
  if (!samples) return;
  const jsize n = env->GetArrayLength(samples);
  if (n <= 0 || n % 2 != 0 || n > MDJSoundContext::kRingFloats) return;
  try {
    // Copied out first: the ring's lock may wait for a whole quarter's
    // mixing, which must not happen with the Java heap held.
    std::vector<float> copy(static_cast<size_t>(n));
    env->GetFloatArrayRegion(samples, 0, n, copy.data());
    if (env->ExceptionCheck()) return;
    withMusicContext(handle, 0, [&](MDJSoundContext& c) {
      c.writeStream(copy.data(), n);
      return 0;
    });
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the stream's samples");
  }
}
