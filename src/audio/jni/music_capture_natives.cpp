// The natives of vostan.MusicCapture: a copy of what the mixer writes to the
// device, quarter by quarter, for a game that records its music, a demo that
// nobody listens to and tests that compare samples.
#include <jni.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "audio/jni/mdj_registry.h"
#include "bridge/bridge.h"

namespace {

struct Capture {
  std::mutex lock;
  std::vector<int16_t> samples;  // interleaved stereo
  size_t limit = 0;              // in samples
};

// Captures by context handle; kept apart from the contexts so that a capture
// outlives the context it listened to.
std::mutex capturesLock;
std::map<jlong, std::shared_ptr<Capture>> captures;

}  // namespace

using vostan::MDJSoundContext;

extern "C" JNIEXPORT jboolean JNICALL Java_vostan_MusicCapture_start(JNIEnv* env, jclass,
                                                                     jlong handle, jint maxFrames) {
  if (maxFrames <= 0) return JNI_FALSE;
  try {
    auto capture = std::make_shared<Capture>();
    capture->limit = static_cast<size_t>(maxFrames) * 2;
    capture->samples.reserve(capture->limit);
    const bool live = vostan::withMusicContext(handle, false, [&](MDJSoundContext& c) {
      c.setTap([capture](const int16_t* stereo, int32_t frames) {
        std::lock_guard<std::mutex> lock(capture->lock);
        const size_t n =
            std::min(static_cast<size_t>(frames) * 2, capture->limit - capture->samples.size());
        capture->samples.insert(capture->samples.end(), stereo, stereo + n);
      });
      return true;
    });
    if (!live) return JNI_FALSE;
    std::lock_guard<std::mutex> lock(capturesLock);
    captures[handle] = capture;
    return JNI_TRUE;
  } catch (const std::bad_alloc&) {
    vostan::throwOutOfMemoryError(env, "no memory for the capture");
  }
  return JNI_FALSE;
}

extern "C" JNIEXPORT jshortArray JNICALL Java_vostan_MusicCapture_stop(JNIEnv* env, jclass,
                                                                       jlong handle) {
  vostan::withMusicContext(handle, 0, [](MDJSoundContext& c) {
    c.setTap(nullptr);
    return 0;
  });
  std::shared_ptr<Capture> capture;
  {
    std::lock_guard<std::mutex> lock(capturesLock);
    auto it = captures.find(handle);
    if (it == captures.end()) return nullptr;
    capture = std::move(it->second);
    captures.erase(it);
  }
  std::lock_guard<std::mutex> lock(capture->lock);
  const auto n = static_cast<jsize>(capture->samples.size());
  jshortArray out = env->NewShortArray(n);
  if (!out) return nullptr;  // OutOfMemoryError is pending
  env->SetShortArrayRegion(out, 0, n, capture->samples.data());
  return out;
}
