// Natives of GLGraphics and GLArray whose work comes with the native arrays
// and render targets. Until then they answer 0 or null and change nothing.
#include <jni.h>

#define GL_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLGraphics_n_1##name
#define ARRAY_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLArray_##name

// Native arrays and indexed drawing
GL_NATIVE(void, mglPointer)(JNIEnv*, jclass, jint, jlong) {}
GL_NATIVE(void, mglDrawIndexed)(JNIEnv*, jclass, jint, jint, jint, jint, jint, jshortArray) {}
GL_NATIVE(void, mglDrawIndexedR)(JNIEnv*, jclass, jint, jint, jint, jint, jint, jlong) {}
ARRAY_NATIVE(jlong, newGLArray__II)(JNIEnv*, jclass, jint, jint) {
  return 0;
}
ARRAY_NATIVE(jlong, newGLArray__IILjava_lang_Object_2)(JNIEnv*, jclass, jint, jint, jobject) {
  return 0;
}
ARRAY_NATIVE(void, deleteGLArray)(JNIEnv*, jclass, jlong) {}
ARRAY_NATIVE(void, compact)(JNIEnv*, jclass) {}
ARRAY_NATIVE(void, dispose)(JNIEnv*, jclass, jlong) {}
ARRAY_NATIVE(void, memcpy__JIJII)(JNIEnv*, jclass, jlong, jint, jlong, jint, jint) {}
ARRAY_NATIVE(void, memcpy__Ljava_lang_Object_2JIII)
(JNIEnv*, jclass, jobject, jlong, jint, jint, jint) {}
ARRAY_NATIVE(void, memcpy__JLjava_lang_Object_2III)
(JNIEnv*, jclass, jlong, jobject, jint, jint, jint) {}

// Render to texture and shadows
GL_NATIVE(void, mglStartRenderTexture)(JNIEnv*, jclass, jint, jint, jint, jint, jint, jint) {}
GL_NATIVE(void, mglFinishRenderTexture)(JNIEnv*, jclass) {}
GL_NATIVE(void, mglSetupShadow)(JNIEnv*, jclass, jint, jfloatArray, jint) {}
GL_NATIVE(void, mglFinishShadow)(JNIEnv*, jclass, jint) {}
