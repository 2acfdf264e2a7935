// The natives of mirelo.gfx.GLGraphics of the device, its render state and
// immediate geometry. All are static and act on theConsole->graphics.
#include <jni.h>

#include "bridge/native_guard.h"
#include "console/win_console.h"
#include "graphics/d3d_graphics.h"
#include "graphics/graphics_access.h"

using vostan::batchGraphics;
using vostan::D3DGraphics;
using vostan::readyGraphics;
using vostan::theConsole;

namespace {

// The console's client area is what the viewport and scissor flip against.
const bool kClientHeightHooked = [] {
  D3DGraphics::clientHeightSource = [] { return theConsole ? theConsole->clientHeight : 0; };
  return true;
}();

}  // namespace

#define GL_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLGraphics_n_1##name

GL_NATIVE(jstring, mglGetString)(JNIEnv* env, jclass, jint name) {
  D3DGraphics* g = readyGraphics();
  return g ? env->NewStringUTF(g->getString(name)) : nullptr;
}

GL_NATIVE(void, mglSetEnable)(JNIEnv*, jclass, jint cap, jboolean value) {
  if (D3DGraphics* g = readyGraphics()) g->setEnable(cap, value);
}
GL_NATIVE(void, mglSetBlend)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->setBlend(mode);
}
GL_NATIVE(void, mglAlphaFunc)(JNIEnv*, jclass, jint function, jfloat reference) {
  if (D3DGraphics* g = readyGraphics()) g->alphaFunc(function, reference);
}
GL_NATIVE(void, mglDepthFunc)(JNIEnv*, jclass, jint function) {
  if (D3DGraphics* g = readyGraphics()) g->depthFunc(function);
}
GL_NATIVE(void, mglDepthMask)(JNIEnv*, jclass, jboolean value) {
  if (D3DGraphics* g = readyGraphics()) g->depthMask(value);
}
GL_NATIVE(void, mglStencilFunc)(JNIEnv*, jclass, jint function, jint reference, jint mask) {
  if (D3DGraphics* g = readyGraphics()) g->stencilFunc(function, reference, mask);
}
GL_NATIVE(void, mglStencilOp)(JNIEnv*, jclass, jint fail, jint depthFail, jint pass) {
  if (D3DGraphics* g = readyGraphics()) g->stencilOp(fail, depthFail, pass);
}
GL_NATIVE(void, mglColorMask)(JNIEnv*, jclass, jboolean value) {
  if (D3DGraphics* g = readyGraphics()) g->colorMask(value);
}
GL_NATIVE(void, mglCullFace)(JNIEnv*, jclass, jint face) {
  if (D3DGraphics* g = readyGraphics()) g->cullFace(face);
}
GL_NATIVE(void, mglFillMode)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->fillMode(mode);
}
GL_NATIVE(void, mglShadeModel)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->shadeModel(mode);
}
GL_NATIVE(void, mglPolygonOffset)(JNIEnv*, jclass, jfloat bias) {
  if (D3DGraphics* g = readyGraphics()) g->polygonOffset(bias);
}
GL_NATIVE(void, mglScissor)(JNIEnv*, jclass, jint x, jint y, jint w, jint h) {
  if (D3DGraphics* g = readyGraphics()) g->scissor(x, y, w, h);
}
GL_NATIVE(void, mglViewPort)(JNIEnv*, jclass, jint x, jint y, jint w, jint h) {
  if (D3DGraphics* g = readyGraphics()) g->viewPort(x, y, w, h);
}
GL_NATIVE(void, mglClearColor)(JNIEnv*, jclass, jfloat r, jfloat gr, jfloat b, jfloat a) {
  if (D3DGraphics* g = readyGraphics()) g->setClearColor(r, gr, b, a);
}
GL_NATIVE(void, mglClear__I)(JNIEnv*, jclass, jint mask) {
  if (D3DGraphics* g = readyGraphics()) g->clear(mask);
}
GL_NATIVE(void, mglClear__IIIII)(JNIEnv*, jclass, jint mask, jint, jint, jint, jint) {
  if (D3DGraphics* g = readyGraphics()) g->clear(mask);
}
GL_NATIVE(void, mglPushAttrib)(JNIEnv*, jclass, jint) {
  if (D3DGraphics* g = readyGraphics()) g->pushAttrib();
}
GL_NATIVE(void, mglPopAttrib)(JNIEnv*, jclass) {
  if (D3DGraphics* g = readyGraphics()) g->popAttrib();
}

// A matrix is 16 floats; a shorter array, or none, sets nothing.
GL_NATIVE(void, mglSetMatrix)(JNIEnv* env, jclass, jint which, jfloatArray array) {
  D3DGraphics* g = readyGraphics();
  if (!g) return;
  vostan::PinnedArray m(env, array, vostan::ArrayKind::Float, 16);
  if (m.data()) g->setMatrix(which, m.as<float>());
}

GL_NATIVE(void, mglTexGen)(JNIEnv* env, jclass, jint, jfloatArray array) {
  D3DGraphics* g = readyGraphics();
  if (!g) return;
  float copy[16];
  {
    vostan::PinnedArray m(env, array, vostan::ArrayKind::Float, 16);
    if (!m.data()) return;
    for (int i = 0; i < 16; ++i) copy[i] = m.as<float>()[i];
  }
  g->texGen(copy);
}

GL_NATIVE(void, mglTextureStageState)(JNIEnv*, jclass, jint name, jint value) {
  if (D3DGraphics* g = readyGraphics()) g->textureStageState(name, value);
}
GL_NATIVE(jint, mglGetTextureStageState)(JNIEnv*, jclass, jint name) {
  D3DGraphics* g = readyGraphics();
  return g ? g->getTextureStageState(name) : 0;
}
GL_NATIVE(void, mglLightingColor)(JNIEnv*, jclass, jfloat r, jfloat gr, jfloat b, jfloat a) {
  if (D3DGraphics* g = readyGraphics()) g->setLightingColor(r, gr, b, a);
}
GL_NATIVE(void, mglRenderMode)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->setRenderMode(mode);
}
GL_NATIVE(void, mglDepthWrite)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->depthWrite(mode);
}

GL_NATIVE(void, mglColor4ub)(JNIEnv*, jclass, jbyte r, jbyte gr, jbyte b, jbyte a) {
  if (D3DGraphics* g = readyGraphics())
    g->color4ub(static_cast<uint8_t>(r), static_cast<uint8_t>(gr), static_cast<uint8_t>(b),
                static_cast<uint8_t>(a));
}
GL_NATIVE(void, mglColor1ui)(JNIEnv*, jclass, jint rgba) {
  if (D3DGraphics* g = readyGraphics()) g->color1ui(static_cast<uint32_t>(rgba));
}
GL_NATIVE(void, mglColor4f)(JNIEnv*, jclass, jfloat r, jfloat gr, jfloat b, jfloat a) {
  if (D3DGraphics* g = readyGraphics()) g->color4f(r, gr, b, a);
}
GL_NATIVE(void, mglColor3f)(JNIEnv*, jclass, jfloat r, jfloat gr, jfloat b) {
  if (D3DGraphics* g = readyGraphics()) g->color3f(r, gr, b);
}

// Calls that OpenGL has and this layer needs no work for.
GL_NATIVE(void, mglPointSize)(JNIEnv*, jclass, jfloat) {}
GL_NATIVE(void, mglLineWidth)(JNIEnv*, jclass, jfloat) {}
GL_NATIVE(void, mglReadBuffer)(JNIEnv*, jclass, jint) {}
GL_NATIVE(void, mglFlush)(JNIEnv*, jclass) {}
GL_NATIVE(void, mglTextureStage)(JNIEnv*, jclass, jint) {}
GL_NATIVE(void, mglUnpackMode)(JNIEnv*, jclass, jint, jint, jint, jint) {}

// Immediate geometry
GL_NATIVE(void, mglBegin)(JNIEnv*, jclass, jint mode) {
  if (D3DGraphics* g = readyGraphics()) g->begin(mode);
}
GL_NATIVE(void, mglEnd)(JNIEnv*, jclass) {
  if (D3DGraphics* g = readyGraphics()) g->end();
}
// The vertex calls only fill the batch, which lives as long as the console:
// they need no device, so the hot path checks one pointer less.
GL_NATIVE(void, mglTexCoord2f)(JNIEnv*, jclass, jfloat u, jfloat v) {
  if (D3DGraphics* g = batchGraphics()) g->texCoord2f(u, v);
}
GL_NATIVE(void, mglVertex2f)(JNIEnv*, jclass, jfloat x, jfloat y) {
  if (D3DGraphics* g = batchGraphics()) g->vertex2f(x, y);
}
GL_NATIVE(void, mglVertex3f)(JNIEnv*, jclass, jfloat x, jfloat y, jfloat z) {
  if (D3DGraphics* g = batchGraphics()) g->vertex3f(x, y, z);
}
GL_NATIVE(void, mglT2fV2f)(JNIEnv*, jclass, jfloat u, jfloat v, jfloat x, jfloat y) {
  if (D3DGraphics* g = batchGraphics()) g->t2fV2f(u, v, x, y);
}

// The back-buffer formats for WinConsole, made by its static factory.
extern "C" JNIEXPORT jobjectArray JNICALL
Java_mirelo_app_win32_WinConsole_n_1getPixelFormatList(JNIEnv* env, jclass cls) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory =
        env->GetStaticMethodID(cls, "createPixelFormat", "(JIIIIIII)Lmirelo/gfx/PixelFormat;");
  if (!factory) return nullptr;
  // Asked before the device is made, to choose its format: the console is enough.
  if (!theConsole || !theConsole->graphics) return nullptr;
  vostan::PixelFormatRow rows[5];
  const int32_t n = theConsole->graphics->pixelFormatRows(rows);
  if (n < 0) return nullptr;
  jclass pixelFormat = env->FindClass("mirelo/gfx/PixelFormat");
  if (!pixelFormat) return nullptr;
  jobjectArray list = env->NewObjectArray(n, pixelFormat, nullptr);
  env->DeleteLocalRef(pixelFormat);
  if (!list) return nullptr;
  for (int32_t i = 0; i < n; ++i) {
    const auto& r = rows[i];
    jobject format =
        env->CallStaticObjectMethod(cls, factory, static_cast<jlong>(r.format), r.colorBits, r.red,
                                    r.green, r.blue, r.alpha, 24, 8);
    if (env->ExceptionCheck()) return nullptr;
    env->SetObjectArrayElement(list, i, format);
    env->DeleteLocalRef(format);
  }
  return list;
}
