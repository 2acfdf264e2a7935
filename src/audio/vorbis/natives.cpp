// The natives of mirelo.app.VorbisSong: an Ogg Vorbis file handed over as a
// byte array, decoded in ranges into a direct buffer.
#include <jni.h>

#include <cstdint>
#include <cstdio>
#include <memory>

#include "audio/vorbis/memory_source.h"

using vostan::audio::MemorySource;

namespace {

MemorySource* fromHandle(jlong handle) {
  return reinterpret_cast<MemorySource*>(static_cast<intptr_t>(handle));
}

}  // namespace

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_VorbisSong_##name

NATIVE(jlong, n_1init)(JNIEnv* env, jobject song, jbyteArray file) {
  static bool looked = false;
  static jfieldID freq, samplebits, channel, frames;
  if (!looked) {
    jclass cls = env->GetObjectClass(song);
    freq = env->GetFieldID(cls, "freq", "F");
    samplebits = env->GetFieldID(cls, "samplebits", "I");
    channel = env->GetFieldID(cls, "channel", "I");
    frames = env->GetFieldID(cls, "frames", "I");
    env->DeleteLocalRef(cls);
    looked = true;
  }
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
  return static_cast<jlong>(reinterpret_cast<intptr_t>(source.release()));
}

NATIVE(void, n_1decode)
(JNIEnv* env, jobject, jlong handle, jint first, jint end, jfloat gain, jobject buffer) {
  void* out = env->GetDirectBufferAddress(buffer);
  fromHandle(handle)->decode(first, end, gain, out);
}

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong handle) {
  delete fromHandle(handle);
}
