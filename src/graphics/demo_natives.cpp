// The demo's picture of a frame: the back buffer as it stands, as a PNG.
#include <jni.h>

#include "console/win_console.h"
#include "graphics/d3d_graphics.h"
#include "platform/gfx/frame_png.h"

extern "C" JNIEXPORT jboolean JNICALL Java_vostan_demo_QuadScene_writeFramePng(JNIEnv* env, jclass,
                                                                               jstring path) {
  using vostan::theConsole;
  if (!theConsole || !theConsole->graphics->device || !path) return JNI_FALSE;
  const char* p = env->GetStringUTFChars(path, nullptr);
  if (!p) return JNI_FALSE;
  const bool ok = vostan::gfx::writeBackBufferPng(*theConsole->graphics->device, p);
  env->ReleaseStringUTFChars(path, p);
  return ok ? JNI_TRUE : JNI_FALSE;
}
