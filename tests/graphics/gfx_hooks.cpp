// Test and benchmark helpers for the JVM, in the GL context that the graphics
// device made current on the calling thread: pixels of the back buffer and
// the plain-GL counterpart of immediate-mode quads.
#include <SDL.h>
#include <jni.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include "plain_quads.h"

namespace {

bool drawableSize(int& w, int& h) {
  SDL_Window* window = SDL_GL_GetCurrentWindow();
  if (!window) return false;
  SDL_GL_GetDrawableSize(window, &w, &h);
  return true;
}

}  // namespace

// 0xAARRGGBB of the pixel at x from the left, y from the top; 0 without a context.
extern "C" JNIEXPORT jint JNICALL Java_vostan_test_GfxHooks_pixel(JNIEnv*, jclass, jint x, jint y) {
  int w, h;
  if (!drawableSize(w, h)) return 0;
  uint8_t bgra[4] = {};
  glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  glReadPixels(x, h - 1 - y, 1, 1, GL_BGRA, GL_UNSIGNED_BYTE, bgra);
  return static_cast<jint>(uint32_t{bgra[3]} << 24 | uint32_t{bgra[2]} << 16 |
                           uint32_t{bgra[1]} << 8 | bgra[0]);
}

extern "C" JNIEXPORT jlong JNICALL Java_vostan_test_GfxHooks_plainQuads(JNIEnv*, jclass,
                                                                        jint count) {
  return vostan::test::plainQuads(count);
}

// Nanoseconds for `draws` draws of the mesh by plain GL (see plainIndexed).
extern "C" JNIEXPORT jlong JNICALL Java_vostan_test_GfxHooks_plainIndexed(
    JNIEnv* env, jclass, jfloatArray positions, jintArray colours, jshortArray indices, jint draws,
    jboolean resident) {
  const jsize vertices = env->GetArrayLength(positions) / 3;
  const jsize count = env->GetArrayLength(indices);
  if (env->GetArrayLength(colours) < vertices) return -1;
  jfloat* p = env->GetFloatArrayElements(positions, nullptr);
  jint* c = env->GetIntArrayElements(colours, nullptr);
  jshort* i = env->GetShortArrayElements(indices, nullptr);
  const int64_t ns =
      vostan::test::plainIndexed(p, reinterpret_cast<const uint32_t*>(c), vertices,
                                 reinterpret_cast<const uint16_t*>(i), count, draws, resident);
  env->ReleaseShortArrayElements(indices, i, JNI_ABORT);
  env->ReleaseIntArrayElements(colours, c, JNI_ABORT);
  env->ReleaseFloatArrayElements(positions, p, JNI_ABORT);
  return ns;
}
