// The natives of mirelo.app.VorbisSong: an Ogg Vorbis file handed over as a
// byte array, decoded in ranges into a direct buffer.
#include <jni.h>

#include <cstdint>
#include <cstdio>
#include <memory>

#include "audio/vorbis/memory_source.h"
#include "bridge/native_guard.h"

using vostan::audio::MemorySource;

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_VorbisSong_##name

// A handle that names no live song, a range that is not ascending, or a
// buffer that is not direct or too small: the call does nothing.
NATIVE(jlong, n_1init)(JNIEnv* env, jobject song, jbyteArray file) {
  if (!file || !song) return 0;
  static bool looked = false;
  static jfieldID freq, samplebits, channel, frames;
  if (!looked) {
    jclass cls = env->GetObjectClass(song);
    freq = env->GetFieldID(cls, "freq", "F");
    samplebits = env->GetFieldID(cls, "samplebits", "I");
    channel = env->GetFieldID(cls, "channel", "I");
    frames = env->GetFieldID(cls, "frames", "I");
    env->DeleteLocalRef(cls);
    if (!freq || !samplebits || !channel || !frames) return 0;
    looked = true;
  }
  return vostan::guarded(env, jlong{0}, [&]() -> jlong {
    const jsize length = env->GetArrayLength(file);
    auto source = std::make_unique<MemorySource>(static_cast<uint32_t>(length));
    env->GetByteArrayRegion(file, 0, length, reinterpret_cast<jbyte*>(source->data()));
    if (!source->open()) {
      std::printf("ov_open_callbacks failed\n");
      // The copy is kept, as it always has been; Java sees only the 0.
      static_cast<void>(source.release());
      return 0;
    }
    env->SetFloatField(song, freq, static_cast<jfloat>(source->rate()));
    env->SetIntField(song, samplebits, 16);
    env->SetIntField(song, channel, source->channels());
    env->SetIntField(song, frames, static_cast<jint>(source->totalFrames()));
    vostan::live::add(source.get());
    return vostan::live::handleOf(source.release());
  });
}

NATIVE(void, n_1decode)
(JNIEnv* env, jobject, jlong handle, jint first, jint end, jfloat gain, jobject buffer) {
  MemorySource* source = vostan::live::find<MemorySource>(handle);
  if (!source || first < 0 || end < first) return;
  const int64_t bytes = (int64_t{end} - first) * source->pcmStride();
  if (void* out = vostan::directBuffer(env, buffer, bytes)) source->decode(first, end, gain, out);
}

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong handle) {
  delete vostan::live::take<MemorySource>(handle);
}
