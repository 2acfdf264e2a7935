// The natives of mirelo.gfx.GLGraphics for bulk geometry and render targets:
// arrays bound by mglPointer, the two indexed draws, render textures and the
// shadow switch. Before the device exists they do nothing.
#include <jni.h>

#include "console/win_console.h"
#include "graphics/d3d_graphics.h"
#include "graphics/java_arrays.h"

using vostan::D3DGraphics;
using vostan::guardedNative;
using vostan::HeldArray;

namespace {

D3DGraphics* withDevice() {
  D3DGraphics* g = vostan::theConsole ? vostan::theConsole->graphics : nullptr;
  return g && g->device ? g : nullptr;
}

// A short[]'s elements, fetched only while the draw copies them.
class JavaIndices final : public D3DGraphics::IndexSource {
 public:
  JavaIndices(JNIEnv* env, jshortArray array) : env_(env), array_(array) {}
  ~JavaIndices() { release(); }
  JavaIndices(const JavaIndices&) = delete;
  JavaIndices& operator=(const JavaIndices&) = delete;
  const uint16_t* acquire() override {
    data_ = env_->GetPrimitiveArrayCritical(array_, nullptr);
    return static_cast<const uint16_t*>(data_);
  }
  void release() override {
    if (data_) env_->ReleasePrimitiveArrayCritical(array_, data_, JNI_ABORT);
    data_ = nullptr;
  }

 private:
  JNIEnv* env_;
  jshortArray array_;
  void* data_ = nullptr;
};

}  // namespace

#define GL_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLGraphics_n_1##name

GL_NATIVE(void, mglPointer)(JNIEnv*, jclass, jint kind, jlong handle) {
  D3DGraphics* g = vostan::theConsole ? vostan::theConsole->graphics : nullptr;
  if (!g) return;
  vostan::GLArrayRecord* r = g->arrays.find(handle);
  if (handle == 0 || r) g->pointer(kind, r);
}

GL_NATIVE(void, mglDrawIndexed)
(JNIEnv* env, jclass, jint, jint start, jint end, jint count, jint, jshortArray indices) {
  D3DGraphics* g = withDevice();
  if (!g || !indices || count < 0 || count > env->GetArrayLength(indices)) return;
  guardedNative(env, [&] {
    JavaIndices source(env, indices);
    g->drawIndexed(start, end, count, source);
  });
}

GL_NATIVE(void, mglDrawIndexedR)
(JNIEnv* env, jclass, jint, jint start, jint end, jint count, jint, jlong handle) {
  D3DGraphics* g = withDevice();
  if (!g) return;
  vostan::GLArrayRecord* r = g->arrays.find(handle);
  guardedNative(env, [&] { g->drawIndexedResident(start, end, count, r); });
}

GL_NATIVE(void, mglStartRenderTexture)
(JNIEnv* env, jclass, jint texture, jint x, jint y, jint width, jint height, jint) {
  D3DGraphics* g = withDevice();
  if (!g) return;
  guardedNative(env,
                [&] { g->startRenderTexture(g->liveTextureEntry(texture), x, y, width, height); });
}

GL_NATIVE(void, mglFinishRenderTexture)(JNIEnv*, jclass) {
  if (D3DGraphics* g = withDevice()) g->finishRenderTexture();
}

GL_NATIVE(void, mglSetupShadow)(JNIEnv* env, jclass, jint texture, jfloatArray matrix, jint rgba) {
  D3DGraphics* g = withDevice();
  if (!g || !matrix || env->GetArrayLength(matrix) < 16) return;
  float copy[16];
  env->GetFloatArrayRegion(matrix, 0, 16, copy);
  g->setupShadow(g->liveTextureEntry(texture), copy, static_cast<uint32_t>(rgba));
}

GL_NATIVE(void, mglFinishShadow)(JNIEnv*, jclass, jint) {
  if (D3DGraphics* g = withDevice()) g->finishShadow();
}
