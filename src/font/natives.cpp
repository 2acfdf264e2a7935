// The natives of mirelo.gfx.font.SystemFont. Font rendering is not built yet:
// no font is made (handle 0), and nothing is measured or drawn.
#include <jni.h>

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_font_SystemFont_##name

NATIVE(jlong, n_1init)(JNIEnv*, jobject, jstring, jint, jint) {
  return 0;
}

NATIVE(void, n_1setAltFont)(JNIEnv*, jobject, jlong, jstring, jint, jint, jint, jint) {}

NATIVE(jlong, n_1activateFont)(JNIEnv*, jclass, jstring) {
  return 0;
}

NATIVE(void, n_1initCharacter)(JNIEnv*, jobject, jlong, jchar, jobject) {}

NATIVE(void, n_1createCache)
(JNIEnv*, jobject, jlong, jchar, jint, jint, jint, jint, jint, jint, jint, jboolean) {}
