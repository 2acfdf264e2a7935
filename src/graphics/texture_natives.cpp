// The texture natives of mirelo.gfx.GLGraphics, on theConsole->graphics.
#include <jni.h>

#include "bridge/native_guard.h"
#include "graphics/graphics_access.h"
#include "graphics/texture_store.h"

using vostan::ArrayKind;
using vostan::D3DGraphics;
using vostan::PinnedArray;
using vostan::readyGraphics;

namespace {

// Bytes a width x height transfer of this format and type needs, -1 when no
// Java array could hold them.
int64_t transferBytes(jint width, jint height, jint format, jint type) {
  const int32_t pixel = vostan::memoryPixelBytes(format, type);
  if (pixel == 0) return 0;
  return vostan::imageBytes(width, height, pixel);
}

}  // namespace

#define GL_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLGraphics_n_1##name

// Pixels are any primitive array holding the whole rectangle; another kind
// or a shorter array refuses the call. No pixels (null) is allowed where a
// texture starts empty.
GL_NATIVE(jint, mglCreateTexture)(JNIEnv*, jclass) {
  D3DGraphics* g = readyGraphics();
  return g ? vostan::createTextureSlot(*g) : 0;
}

GL_NATIVE(void, mglDeleteTexture)(JNIEnv*, jclass, jint handle) {
  if (D3DGraphics* g = readyGraphics()) vostan::deleteTexture(*g, handle);
}

GL_NATIVE(void, mglBindTexture)(JNIEnv*, jclass, jint handle) {
  if (D3DGraphics* g = readyGraphics()) vostan::bindTexture(*g, handle);
}

GL_NATIVE(void, mglTexImage2D)
(JNIEnv* env, jclass, jint handle, jint, jint, jint internalFormat, jint width, jint height,
 jint flags, jint format, jint type, jobject pixels) {
  D3DGraphics* g = readyGraphics();
  if (!g) return;
  vostan::guardedVoid(env, [&] {
    if (!pixels) {
      vostan::texImage2D(*g, handle, internalFormat, width, height, flags, format, type, nullptr);
      return;
    }
    const int64_t bytes = transferBytes(width, height, format, type);
    if (bytes < 0) return;
    PinnedArray array(env, pixels, ArrayKind::AnyPrimitive, bytes);
    if (!array.data()) return;
    vostan::texImage2D(*g, handle, internalFormat, width, height, flags, format, type,
                       array.data());
  });
}

GL_NATIVE(void, mglTexSubImage2D)
(JNIEnv* env, jclass, jint, jint, jint x, jint y, jint width, jint height, jint format, jint type,
 jobject pixels) {
  D3DGraphics* g = readyGraphics();
  if (!g) return;
  vostan::guardedVoid(env, [&] {
    if (!pixels) {
      vostan::texSubImage2D(*g, x, y, width, height, format, type, nullptr);
      return;
    }
    const int64_t bytes = transferBytes(width, height, format, type);
    if (bytes < 0) return;
    PinnedArray array(env, pixels, ArrayKind::AnyPrimitive, bytes);
    if (!array.data()) return;
    vostan::texSubImage2D(*g, x, y, width, height, format, type, array.data());
  });
}

GL_NATIVE(void, mglReadPixels)
(JNIEnv* env, jclass, jint x, jint y, jint width, jint height, jint format, jint type,
 jobject pixels) {
  D3DGraphics* g = readyGraphics();
  if (!g || !pixels || !g->backBuffer) return;
  vostan::guardedVoid(env, [&] {
    const int64_t bytes = transferBytes(width, height, format, type);
    if (bytes < 0) return;
    PinnedArray array(env, pixels, ArrayKind::AnyPrimitive, bytes, /*writes=*/true);
    if (!array.data()) return;
    vostan::readPixels(*g, g->backBuffer, x, y, width, height, format, type, array.data());
  });
}
