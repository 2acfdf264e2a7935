// The texture natives of mirelo.gfx.GLGraphics, on theConsole->graphics.
#include <jni.h>

#include "console/win_console.h"
#include "graphics/texture_store.h"

using vostan::D3DGraphics;
using vostan::theConsole;

namespace {

D3DGraphics& g() {
  return *theConsole->graphics;
}

// A Java array's elements in place for the time of one call; null for a null
// array. The release never copies back: the machine is expected to hand out
// the array itself, so even a read into it needs no copy.
class CriticalArray {
 public:
  CriticalArray(JNIEnv* env, jobject array) : env_(env), array_(static_cast<jarray>(array)) {
    if (array_) data_ = env_->GetPrimitiveArrayCritical(array_, nullptr);
  }
  ~CriticalArray() {
    if (data_) env_->ReleasePrimitiveArrayCritical(array_, data_, JNI_ABORT);
  }
  CriticalArray(const CriticalArray&) = delete;
  CriticalArray& operator=(const CriticalArray&) = delete;
  void* data() const { return data_; }

 private:
  JNIEnv* env_;
  jarray array_;
  void* data_ = nullptr;
};

}  // namespace

#define GL_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLGraphics_n_1##name

GL_NATIVE(jint, mglCreateTexture)(JNIEnv*, jclass) {
  return vostan::createTextureSlot(g());
}

GL_NATIVE(void, mglDeleteTexture)(JNIEnv*, jclass, jint handle) {
  vostan::deleteTexture(g(), handle);
}

GL_NATIVE(void, mglBindTexture)(JNIEnv*, jclass, jint handle) {
  vostan::bindTexture(g(), handle);
}

GL_NATIVE(void, mglTexImage2D)
(JNIEnv* env, jclass, jint handle, jint, jint, jint internalFormat, jint width, jint height,
 jint flags, jint format, jint type, jobject pixels) {
  CriticalArray array(env, pixels);
  vostan::texImage2D(g(), handle, internalFormat, width, height, flags, format, type, array.data());
}

GL_NATIVE(void, mglTexSubImage2D)
(JNIEnv* env, jclass, jint, jint, jint x, jint y, jint width, jint height, jint format, jint type,
 jobject pixels) {
  CriticalArray array(env, pixels);
  vostan::texSubImage2D(g(), x, y, width, height, format, type, array.data());
}

GL_NATIVE(void, mglReadPixels)
(JNIEnv* env, jclass, jint x, jint y, jint width, jint height, jint format, jint type,
 jobject pixels) {
  if (!pixels) return;
  CriticalArray array(env, pixels);
  if (!array.data()) return;
  vostan::readPixels(g(), g().backBuffer, x, y, width, height, format, type, array.data());
}
